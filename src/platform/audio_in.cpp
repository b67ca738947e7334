#include "platform/audio_in.h"

#include <rtaudio/RtAudio.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>

#include "platform/device_pace.h"
#include "platform/quiet.h"

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

// Tells the quiet library from a broken one: its warnings are of no use to a musician.
void IgnoreAudioMessage(RtAudioError::Type /*type*/, const std::string& /*text*/) {}

std::optional<RtAudio::DeviceInfo> InputAt(RtAudio& audio, unsigned index) {
  try {
    RtAudio::DeviceInfo info = audio.getDeviceInfo(index);
    if (info.probed && info.inputChannels > 0) return info;
  } catch (const RtAudioError&) {
  }
  return std::nullopt;
}

class SoundCardInput final : public AudioInput {
 public:
  SoundCardInput(AudioFormat format, AudioTake take)
      : format_(format), take_(std::move(take)), pace_(format.sampleRate) {
    audio_.showWarnings(false);
  }
  ~SoundCardInput() override { SoundCardInput::Stop(); }

  Outcome Open(std::string_view device) {
    try {
      for (unsigned index = 0; index < audio_.getDeviceCount(); ++index) {
        const auto info = InputAt(audio_, index);
        if (!info || (!device.empty() && info->name != device)) continue;
        RtAudio::StreamParameters parameters;
        parameters.deviceId = device.empty() ? audio_.getDefaultInputDevice() : index;
        parameters.nChannels = format_.channels;
        unsigned frames = kBlockFrames;
        audio_.openStream(nullptr, &parameters, RTAUDIO_FLOAT32, format_.sampleRate, &frames, &Callback, this,
                          nullptr, &IgnoreAudioMessage);
        return audio_.isStreamOpen() ? Outcome::Success : Outcome::SourceFailed;
      }
    } catch (const RtAudioError&) {
    }
    return Outcome::SourceFailed;
  }

  Outcome Start() override {
    try {
      audio_.startStream();
    } catch (const RtAudioError&) {
      return Outcome::SourceFailed;
    }
    return Outcome::Success;
  }
  void Stop() override {
    try {
      if (audio_.isStreamRunning()) audio_.stopStream();
      if (audio_.isStreamOpen()) audio_.closeStream();
    } catch (const RtAudioError&) {
    }
  }
  bool Alive() const override { return pace_.Alive(); }

 private:
  static int Callback(void* /*output*/, void* input, unsigned frames, double /*time*/,
                      RtAudioStreamStatus /*status*/, void* self) {
    auto* const in = static_cast<SoundCardInput*>(self);
    in->pace_.Moved(frames);
    in->take_({static_cast<const float*>(input), std::size_t{frames} * in->format_.channels});
    return 0;
  }

  AudioFormat format_;
  AudioTake take_;
  DevicePace pace_;
  RtAudio audio_;
};

}  // namespace

std::vector<std::string> AudioInputDevices() {
  const QuietLibraries quiet;
  std::vector<std::string> names;
  RtAudio audio;
  audio.showWarnings(false);
  for (unsigned index = 0; index < audio.getDeviceCount(); ++index) {
    if (const auto info = InputAt(audio, index)) names.push_back(info->name);
  }
  return names;
}

AudioInputAbility AbilityOfAudioInput(std::string_view device) {
  const QuietLibraries quiet;
  RtAudio audio;
  audio.showWarnings(false);
  for (unsigned index = 0; index < audio.getDeviceCount(); ++index) {
    const auto info = InputAt(audio, index);
    if (!info || info->name != device) continue;
    AudioInputAbility ability{{info->sampleRates.begin(), info->sampleRates.end()},
                              static_cast<std::int32_t>(info->inputChannels)};
    std::ranges::sort(ability.rates);
    return ability;
  }
  return {};
}

Result<std::unique_ptr<AudioInput>> OpenAudioInput(std::string_view device, AudioFormat format,
                                                   AudioTake take) {
  if (device == kNullDevice) return std::make_unique<SilentInput>(format, std::move(take));
  const QuietLibraries quiet;
  auto card = std::make_unique<SoundCardInput>(format, std::move(take));
  if (const Outcome opened = card->Open(device); Failed(opened)) return Failure(opened);
  return card;
}

}  // namespace ts5
