#include "platform/audio_out.h"

#include <rtaudio/RtAudio.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stop_token>
#include <thread>
#include <utility>

#include "platform/device_pace.h"
#include "platform/quiet.h"
#include "platform/wave_sink.h"

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
    auto sink =
        WaveSink::Create(std::string(device.substr(kWavePrefix.size())), format.sampleRate, format.channels);
    if (!sink) return Failure(sink.error());
    return std::make_unique<WaveFileOutput>(format, std::move(render), *std::move(sink));
  }
  const bool silent = device == kNullDevice || (device.empty() && AudioOutputDevices().empty());
  if (silent) return std::make_unique<ClockedOutput>(format, std::move(render));

  const QuietLibraries quiet;
  auto card = std::make_unique<SoundCardOutput>(format, std::move(render));
  if (const Outcome opened = card->Open(device); Failed(opened)) return Failure(opened);
  return card;
}

}  // namespace ts5
