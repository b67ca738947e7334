#include "midi/midi_capture.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "midi/midi_events.h"
#include "midi/midi_file.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kMicrosecondsPerQuarter = 1'000'000;
constexpr std::uint64_t kTicksPerSecond = kCaptureDivision;
// A recording that grows beyond this is not continued (days of dense music).
constexpr std::size_t kMaxCapture = std::size_t{256} << 20;

std::chrono::nanoseconds SteadyTime() {
  return std::chrono::steady_clock::now().time_since_epoch();
}

class MidiCapture final : public MidiOutput {
 public:
  MidiCapture(StagedFile file, CaptureClock clock)
      : file_(std::move(file)), clock_(std::move(clock)), start_(clock_()) {
    track_.U8(0);
    track_.U8(kMetaStatus);
    track_.U8(kMetaSetTempo);
    track_.U8(3);
    track_.U24Be(kMicrosecondsPerQuarter);
  }

  Outcome Send(std::uint32_t message) override {
    if (!Begin()) return Outcome::WriteFailed;
    for (std::size_t i = 0; i < ShortMidiLength(message); ++i)
      track_.U8(static_cast<std::uint8_t>(message >> (8 * i)));
    return Outcome::Success;
  }
  Outcome SendSystemExclusive(ByteView message) override {
    if (message.size() < 2 || message.front() != kSysExStatus) return Outcome::Success;
    if (!Begin()) return Outcome::WriteFailed;
    track_.U8(kSysExStatus);
    if (!WriteVarLen(message.size() - 1, track_)) return Outcome::WriteFailed;
    track_.Append(message.subspan(1));
    return Outcome::Success;
  }
  Outcome Reset() override { return Outcome::Success; }  // nothing sounds here

  Outcome Close() override {
    if (!file_) return Outcome::Success;
    track_.U8(0);
    track_.U8(kMetaStatus);
    track_.U8(kMetaEndOfTrack);
    track_.U8(0);

    ByteWriter header;
    header.Append(kSmfMagic);
    header.U32Be(6);
    header.U16Be(0);
    header.U16Be(1);
    header.U16Be(kCaptureDivision);
    header.Append(kTrackMagic);
    header.U32Be(static_cast<std::uint32_t>(track_.Size()));

    Outcome result = file_->Write(header.View());
    if (Succeeded(result)) result = file_->Write(track_.View());
    if (Succeeded(result)) result = file_->Commit();
    file_.reset();
    return result;
  }

 private:
  // Writes the delta time of the next message.
  [[nodiscard]] bool Begin() {
    if (!file_ || track_.Size() > kMaxCapture) return false;
    const auto elapsed = static_cast<std::uint64_t>(std::max<std::int64_t>((clock_() - start_).count(), 0));
    const std::uint64_t tick = std::max(elapsed / (1'000'000'000 / kTicksPerSecond), lastTick_);
    const bool written = WriteVarLen(std::min<std::uint64_t>(tick - lastTick_, kMaxVarLen), track_);
    lastTick_ = tick;
    return written;
  }

  std::optional<StagedFile> file_;
  CaptureClock clock_;
  std::chrono::nanoseconds start_;
  ByteWriter track_;
  std::uint64_t lastTick_ = 0;
};

}  // namespace

Result<std::unique_ptr<MidiOutput>> OpenMidiCapture(const std::string& path, CaptureClock clock) {
  auto file = StagedFile::Create(path);
  if (!file) return Failure(file.error());
  return std::make_unique<MidiCapture>(*std::move(file), clock ? std::move(clock) : SteadyTime);
}

Result<std::unique_ptr<MidiOutput>> OpenMidiDevice(std::string_view device, std::string_view audioDevice) {
  if (device.starts_with(kCapturePrefix))
    return OpenMidiCapture(std::string(device.substr(kCapturePrefix.size())));
  return OpenMidiOutput(device, audioDevice);
}

}  // namespace ts5
