#include "platform/audio_out.h"

#include <rtaudio/RtAudio.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>

#include "platform/device_pace.h"
#include "platform/files.h"
#include "platform/quiet.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kBlockFrames = 512;
constexpr std::uint32_t kWaveHeaderSize = 44;
// The data of a plain RIFF file ends here; what comes later is not written.
constexpr std::uint64_t kMaxWaveData = 0xFFFFFFFFU - kWaveHeaderSize;

// Pulls block after block in real time and hands each on. The schedule is absolute, so it does not drift.
class ClockedOutput : public AudioOutput {
 public:
  using Consume = std::function<void(std::span<const float>)>;

  ClockedOutput(AudioFormat format, AudioRender render) : format_(format), render_(std::move(render)) {}
  ~ClockedOutput() override { Halt(); }

  Outcome Start() override {
    if (!thread_.joinable()) thread_ = std::jthread([this](const std::stop_token& stop) { Pull(stop); });
    return Outcome::Success;
  }
  Outcome Stop() override {
    Halt();
    return Outcome::Success;
  }
  bool Alive() const override { return true; }

 protected:
  virtual void Take(std::span<const float> /*block*/) {}
  void Halt() {
    thread_.request_stop();
    if (thread_.joinable()) thread_.join();
  }

 private:
  void Pull(const std::stop_token& stop) {
    std::vector<float> block(std::size_t{kBlockFrames} * format_.channels);
    const auto start = std::chrono::steady_clock::now();
    for (std::uint64_t frames = 0; !stop.stop_requested(); frames += kBlockFrames) {
      render_(block);
      Take(block);
      const std::chrono::nanoseconds due((frames + kBlockFrames) * 1'000'000'000 / format_.sampleRate);
      std::this_thread::sleep_until(start + due);
    }
  }

  AudioFormat format_;
  AudioRender render_;
  std::jthread thread_;
};

class WaveFileOutput final : public ClockedOutput {
 public:
  WaveFileOutput(AudioFormat format, AudioRender render, StagedFile file)
      : ClockedOutput(format, std::move(render)), format_(format), file_(std::move(file)) {}
  ~WaveFileOutput() override { Halt(); }

  Outcome Begin() { return file_->Write(Header(0)); }
  bool Alive() const override { return !failed_; }

  Outcome Stop() override {
    Halt();
    if (!file_) return result_;
    if (result_ == Outcome::Success) result_ = file_->WriteAt(0, Header(dataSize_));
    if (result_ == Outcome::Success) result_ = file_->Commit();
    file_.reset();
    return result_;
  }

 private:
  void Take(std::span<const float> block) override {
    const std::uint64_t size = block.size() * sizeof(std::int16_t);
    if (result_ != Outcome::Success || dataSize_ + size > kMaxWaveData) return;
    ByteWriter samples;
    samples.Reserve(size);
    for (const float sample : block) {
      const float limited = std::clamp(sample, -1.0F, 1.0F);
      samples.U16Le(static_cast<std::uint16_t>(std::lrint(limited * 32767.0F)));
    }
    result_ = file_->Write(samples.View());
    failed_ = Failed(result_);
    dataSize_ += size;
  }

  [[nodiscard]] Bytes Header(std::uint64_t dataSize) const {
    const std::uint32_t frameSize = format_.channels * 2;
    ByteWriter header;
    header.Append("RIFF");
    header.U32Le(static_cast<std::uint32_t>(dataSize) + kWaveHeaderSize - 8);
    header.Append("WAVEfmt ");
    header.U32Le(16);
    header.U16Le(1);
    header.U16Le(static_cast<std::uint16_t>(format_.channels));
    header.U32Le(format_.sampleRate);
    header.U32Le(format_.sampleRate * frameSize);
    header.U16Le(static_cast<std::uint16_t>(frameSize));
    header.U16Le(16);
    header.Append("data");
    header.U32Le(static_cast<std::uint32_t>(dataSize));
    return header.Release();
  }

  AudioFormat format_;
  std::optional<StagedFile> file_;
  std::uint64_t dataSize_ = 0;
  std::atomic<bool> failed_ = false;
  Outcome result_ = Outcome::Success;  // written by the pulling thread, read after it has ended
};

// Tells the quiet library from a broken one: its warnings are of no use to a musician.
void IgnoreAudioMessage(RtAudioError::Type /*type*/, const std::string& /*text*/) {}

std::optional<RtAudio::DeviceInfo> DeviceAt(RtAudio& audio, unsigned index) {
  try {
    RtAudio::DeviceInfo info = audio.getDeviceInfo(index);
    if (info.probed && info.outputChannels > 0) return info;
  } catch (const RtAudioError&) {
  }
  return std::nullopt;
}

class SoundCardOutput final : public AudioOutput {
 public:
  SoundCardOutput(AudioFormat format, AudioRender render)
      : format_(format), render_(std::move(render)), pace_(format.sampleRate) {
    audio_.showWarnings(false);
  }
  ~SoundCardOutput() override { (void)Stop(); }

  Outcome Open(std::string_view device) {
    try {
      for (unsigned index = 0; index < audio_.getDeviceCount(); ++index) {
        const auto info = DeviceAt(audio_, index);
        if (!info || (!device.empty() && info->name != device)) continue;
        RtAudio::StreamParameters parameters;
        parameters.deviceId = device.empty() ? audio_.getDefaultOutputDevice() : index;
        parameters.nChannels = format_.channels;
        unsigned frames = kBlockFrames;
        audio_.openStream(&parameters, nullptr, RTAUDIO_FLOAT32, format_.sampleRate, &frames, &Callback, this,
                          nullptr, &IgnoreAudioMessage);
        return audio_.isStreamOpen() ? Outcome::Success : Outcome::TargetFailed;
      }
    } catch (const RtAudioError&) {
    }
    return Outcome::TargetFailed;
  }

  Outcome Start() override {
    try {
      audio_.startStream();
    } catch (const RtAudioError&) {
      return Outcome::TargetFailed;
    }
    return Outcome::Success;
  }
  Outcome Stop() override {
    try {
      if (audio_.isStreamRunning()) audio_.stopStream();
      if (audio_.isStreamOpen()) audio_.closeStream();
    } catch (const RtAudioError&) {
    }
    return Outcome::Success;
  }
  bool Alive() const override { return pace_.Alive(); }

 private:
  static int Callback(void* output, void* /*input*/, unsigned frames, double /*time*/,
                      RtAudioStreamStatus /*status*/, void* self) {
    auto* const out = static_cast<SoundCardOutput*>(self);
    out->pace_.Moved(frames);
    out->render_({static_cast<float*>(output), std::size_t{frames} * out->format_.channels});
    return 0;
  }

  AudioFormat format_;
  AudioRender render_;
  DevicePace pace_;
  RtAudio audio_;
};

}  // namespace

std::vector<std::string> AudioOutputDevices() {
  const QuietLibraries quiet;
  std::vector<std::string> names;
  RtAudio audio;
  audio.showWarnings(false);
  for (unsigned index = 0; index < audio.getDeviceCount(); ++index) {
    if (const auto info = DeviceAt(audio, index)) names.push_back(info->name);
  }
  return names;
}

Result<std::unique_ptr<AudioOutput>> OpenAudioOutput(std::string_view device, AudioFormat format,
                                                     AudioRender render) {
  if (device.starts_with(kWavePrefix)) {
    auto file = StagedFile::Create(std::string(device.substr(kWavePrefix.size())));
    if (!file) return Failure(file.error());
    auto output = std::make_unique<WaveFileOutput>(format, std::move(render), *std::move(file));
    if (const Outcome begun = output->Begin(); Failed(begun)) return Failure(begun);
    return output;
  }
  const bool silent = device == kNullDevice || (device.empty() && AudioOutputDevices().empty());
  if (silent) return std::make_unique<ClockedOutput>(format, std::move(render));

  const QuietLibraries quiet;
  auto card = std::make_unique<SoundCardOutput>(format, std::move(render));
  if (const Outcome opened = card->Open(device); Failed(opened)) return Failure(opened);
  return card;
}

}  // namespace ts5
