#include "platform/sound/audio_in.h"

#include <algorithm>
#include <chrono>
#include <stop_token>
#include <thread>
#include <utility>

#include "platform/sound/sound_card.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kBlockFrames = 512;

class SilentInput final : public AudioInput {
 public:
  SilentInput(AudioFormat format, AudioTake take) : format_(format), take_(std::move(take)) {}
  ~SilentInput() override { Stop(); }

  Outcome Start() override {
    if (!thread_.joinable()) thread_ = std::jthread([this](const std::stop_token& stop) { Give(stop); });
    return Outcome::Success;
  }
  void Stop() override {
    thread_.request_stop();
    if (thread_.joinable()) thread_.join();
  }
  bool Alive() const override { return true; }

 private:
  void Give(const std::stop_token& stop) const {
    const std::vector<float> block(std::size_t{kBlockFrames} * format_.channels);
    const auto start = std::chrono::steady_clock::now();
    for (std::uint64_t frames = kBlockFrames; !stop.stop_requested(); frames += kBlockFrames) {
      std::this_thread::sleep_until(start +
                                    std::chrono::nanoseconds(frames * 1'000'000'000 / format_.sampleRate));
      take_(block);
    }
  }

  AudioFormat format_;
  AudioTake take_;
  std::jthread thread_;
};

class SoundCardInput final : public AudioInput {
 public:
  bool Open(std::string_view device, AudioFormat format, AudioTake take) {
    return card_.Open(SoundDirection::Input, device, format,
                      [take = std::move(take)](std::span<float> block) { take(block); });
  }
  Outcome Start() override { return card_.Start() ? Outcome::Success : Outcome::SourceFailed; }
  void Stop() override { card_.Stop(); }
  bool Alive() const override { return card_.Alive(); }

 private:
  SoundCard card_;
};

}  // namespace

std::vector<std::string> AudioInputDevices() {
  std::vector<std::string> names;
  for (SoundCardInfo& card : SoundCards(SoundDirection::Input)) names.push_back(std::move(card.name));
  return names;
}

AudioInputAbility AbilityOfAudioInput(std::string_view device) {
  auto cards = SoundCards(SoundDirection::Input);
  const auto card = std::ranges::find(cards, device, &SoundCardInfo::name);
  if (card == cards.end()) return {};
  std::ranges::sort(card->rates);
  return {std::move(card->rates), static_cast<std::int32_t>(card->channels)};
}

Result<std::unique_ptr<AudioInput>> OpenAudioInput(std::string_view device, AudioFormat format,
                                                   AudioTake take) {
  if (device == kNullDevice) return std::make_unique<SilentInput>(format, std::move(take));
  auto card = std::make_unique<SoundCardInput>();
  if (!card->Open(device, format, std::move(take))) return Failure(Outcome::SourceFailed);
  return card;
}

}  // namespace ts5
