#include "platform/sound/audio_out.h"

#include <atomic>
#include <chrono>
#include <stop_token>
#include <thread>
#include <utility>

#include "platform/media/wave_sink.h"
#include "platform/sound/sound_card.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kBlockFrames = 512;

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
  WaveFileOutput(AudioFormat format, AudioRender render, WaveSink sink)
      : ClockedOutput(format, std::move(render)), sink_(std::move(sink)) {}
  ~WaveFileOutput() override { Halt(); }

  bool Alive() const override { return !failed_; }
  Outcome Stop() override {
    Halt();
    return sink_.Finish();
  }

 private:
  void Take(std::span<const float> block) override {
    sink_.Write(block);
    failed_ = Failed(sink_.State());
  }

  WaveSink sink_;  // the pulling thread's while it runs
  std::atomic<bool> failed_ = false;
};

class SoundCardOutput final : public AudioOutput {
 public:
  bool Open(std::string_view device, AudioFormat format, AudioRender render) {
    return card_.Open(SoundDirection::Output, device, format, std::move(render));
  }
  Outcome Start() override { return card_.Start() ? Outcome::Success : Outcome::TargetFailed; }
  Outcome Stop() override {
    card_.Stop();
    return Outcome::Success;
  }
  bool Alive() const override { return card_.Alive(); }

 private:
  SoundCard card_;
};

}  // namespace

std::vector<std::string> AudioOutputDevices() {
  std::vector<std::string> names;
  for (SoundCardInfo& card : SoundCards(SoundDirection::Output)) names.push_back(std::move(card.name));
  return names;
}

std::array<std::uint32_t, 4> RatesToTry(std::uint32_t wanted) {
  return {wanted, 48'000, 44'100, 96'000};
}

Result<std::unique_ptr<AudioOutput>> OpenAudioOutput(std::string_view device, AudioFormat format,
                                                     AudioRender render) {
  if (device.starts_with(kWavePrefix)) {
    auto sink =
        WaveSink::Create(std::string(device.substr(kWavePrefix.size())), format.sampleRate, format.channels);
    if (!sink) return Failure(sink.error());
    return std::make_unique<WaveFileOutput>(format, std::move(render), *std::move(sink));
  }
  const bool silent = device == kNullDevice || (device.empty() && AudioOutputDevices().empty());
  if (silent) return std::make_unique<ClockedOutput>(format, std::move(render));

  auto card = std::make_unique<SoundCardOutput>();
  if (!card->Open(device, format, std::move(render))) return Failure(Outcome::TargetFailed);
  return card;
}

}  // namespace ts5
