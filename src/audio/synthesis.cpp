#include "audio/synthesis.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "platform/sound/midi_out.h"
#include "platform/sound/synthesizer.h"

namespace ts5 {
namespace {

constexpr float kSilence = 0.5F / 32768;
constexpr float kNoise = 1e-6F;            // of the reverberation by itself, which dither would make audible
constexpr std::uint32_t kSilentParts = 5;  // of a second
constexpr std::size_t kBlockFrames = 1024;
constexpr std::uint8_t kSustain = 64;
constexpr std::uint8_t kAllNotesOff = 123;

bool IsBelow(std::span<const float> block, float level) {
  return std::ranges::all_of(block, [level](float sample) { return std::abs(sample) < level; });
}

class Synthesis final : public PcmSource {
 public:
  Synthesis(MidiSequence sequence, std::uint32_t sampleRate, std::unique_ptr<Synthesizer> synthesizer)
      : sequence_(std::move(sequence)), synthesizer_(std::move(synthesizer)), end_(0) {
    shape_ = {.sampleRate = sampleRate, .channels = 2, .channelMask = 3, .bits = 0};
    end_ = FrameOf(sequence_.Duration());
  }

  const PcmShape& Shape() const override { return shape_; }
  // Without the decay, which only rendering tells.
  std::optional<std::uint64_t> Frames() const override { return end_; }

  Result<std::size_t> Read(std::span<double> out) override {
    const std::size_t wanted = out.size() / 2;
    std::size_t done = 0;
    while (done < wanted && !over_) {
      SendDue();
      std::size_t count = std::min(wanted - done, kBlockFrames);
      const auto messages = sequence_.Messages();
      if (next_ < messages.size()) {
        count = std::min<std::uint64_t>(count, FrameOf(messages[next_].time) - frame_);
      } else if (frame_ < end_) {
        count = std::min<std::uint64_t>(count, end_ - frame_);
      }
      const std::span<float> block = std::span(block_).first(count * 2);
      synthesizer_->Render(block);
      if (IsBelow(block, kNoise)) std::ranges::fill(block, 0.0F);
      std::ranges::copy(block, out.begin() + static_cast<std::ptrdiff_t>(done * 2));
      frame_ += count;
      done += count;
      if (frame_ > end_) Watch(block);
    }
    return done;
  }

  Outcome Seek(std::uint64_t frame) override {
    if (frame != 0) return Outcome::SourceFailed;
    synthesizer_->Reset();
    next_ = 0;
    frame_ = quiet_ = 0;
    released_ = over_ = false;
    return Outcome::Success;
  }

 private:
  [[nodiscard]] std::uint64_t FrameOf(std::chrono::nanoseconds time) const {
    return static_cast<std::uint64_t>(
        std::llround(static_cast<double>(time.count()) / 1e9 * shape_.sampleRate));
  }

  void SendDue() {
    const auto messages = sequence_.Messages();
    for (; next_ < messages.size() && FrameOf(messages[next_].time) <= frame_; ++next_) {
      if (messages[next_].message == 0) {
        synthesizer_->SystemExclusive(sequence_.Exclusive(messages[next_]));
      } else {
        synthesizer_->ShortMessage(messages[next_].message);
      }
    }
    if (released_ || next_ < messages.size() || frame_ < end_) return;
    released_ = true;
    for (std::uint8_t channel = 0; channel < 16; ++channel) {
      const auto status = static_cast<std::uint8_t>(0xB0 | channel);
      synthesizer_->ShortMessage(ShortMidiMessage(status, kSustain));
      synthesizer_->ShortMessage(ShortMidiMessage(status, kAllNotesOff));
    }
  }

  void Watch(std::span<const float> block) {
    quiet_ = IsBelow(block, kSilence) ? quiet_ + block.size() / 2 : 0;
    over_ = quiet_ >= shape_.sampleRate / kSilentParts ||
            frame_ >= end_ + std::uint64_t{kLongestDecaySeconds} * shape_.sampleRate;
  }

  MidiSequence sequence_;
  std::unique_ptr<Synthesizer> synthesizer_;
  PcmShape shape_;
  std::uint64_t end_;        // of the last event
  std::uint64_t frame_ = 0;  // that is rendered next
  std::size_t next_ = 0;     // message
  std::uint64_t quiet_ = 0;  // frames of silence up to here, behind the end
  bool released_ = false;
  bool over_ = false;
  std::array<float, kBlockFrames * 2> block_{};
};

}  // namespace

std::optional<std::chrono::nanoseconds> LongSilence(const MidiSequence& sequence) {
  std::chrono::nanoseconds longest{0};
  std::chrono::nanoseconds last{0};
  for (const SequenceMessage& message : sequence.Messages()) {
    if (!message.IsNote()) continue;
    if (message.time - last > kLongRest) longest = std::max(longest, message.time - last);
    last = message.time;
  }
  const std::chrono::nanoseconds end = sequence.Duration() - last;
  if (end > kLongEnd) longest = std::max(longest, end);
  if (longest.count() == 0) return std::nullopt;
  return longest;
}

Result<std::unique_ptr<PcmSource>> SynthesisSource(MidiSequence sequence, std::uint32_t sampleRate,
                                                   const std::string& soundFont) {
  if (sequence.Duration() > kLongestSynthesis) return Failure(Outcome::DamagedMidi);
  auto synthesizer = Synthesizer::Create(sampleRate, soundFont);
  if (!synthesizer) return Failure(synthesizer.error());
  return std::unique_ptr<PcmSource>(
      std::make_unique<Synthesis>(std::move(sequence), sampleRate, *std::move(synthesizer)));
}

}  // namespace ts5
