#include "platform/sound/midi_out.h"

#include <rtmidi/RtMidi.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <functional>
#include <utility>

#include "platform/base/quiet.h"
#include "platform/media/wave_sink.h"
#include "platform/sound/audio_out.h"
#include "platform/sound/live_level.h"
#include "platform/sound/midi_in.h"
#include "platform/sound/midi_ports.h"
#include "platform/sound/synthesizer.h"

namespace ts5 {
namespace {

constexpr int kChannels = 16;
constexpr std::uint8_t kSustain = 64;
constexpr std::uint8_t kAllSoundOff = 120;
constexpr std::uint8_t kResetControllers = 121;
constexpr std::uint8_t kAllNotesOff = 123;
// How often an open port is looked for among the ports of the system.
constexpr auto kPresenceInterval = std::chrono::milliseconds(500);
constexpr std::uint32_t kSynthesizerRate = 44100;

class NullMidiOutput final : public MidiOutput {
 public:
  Outcome Send(std::uint32_t /*message*/) override { return Outcome::Success; }
  Outcome SendSystemExclusive(ByteView /*message*/) override { return Outcome::Success; }
};

class SynthesizerOutput final : public MidiOutput {
 public:
  static Result<std::unique_ptr<MidiOutput>> Open(std::string_view audioDevice) {
    Outcome failure = Outcome::TargetFailed;
    for (const std::uint32_t rate : RatesToTry(kSynthesizerRate)) {
      auto synthesizer = Synthesizer::Create(rate);
      if (!synthesizer) return Failure(synthesizer.error());
      auto output = std::make_unique<SynthesizerOutput>(*std::move(synthesizer));
      auto audio = OpenAudioOutput(
          audioDevice, {rate, 2},
          [synth = output->synthesizer_.get(), level = LiveLevel()](std::span<float> block) mutable {
            synth->Render(block);
            level.Apply(block);
          });
      if (!audio) {
        failure = audio.error();
        continue;
      }
      output->audio_ = *std::move(audio);
      if (const Outcome started = output->audio_->Start(); Failed(started)) return Failure(started);
      return output;
    }
    return Failure(failure);
  }
  explicit SynthesizerOutput(std::unique_ptr<Synthesizer> synthesizer)
      : synthesizer_(std::move(synthesizer)) {}

  Outcome Send(std::uint32_t message) override {
    synthesizer_->ShortMessage(message);
    return audio_->Alive() ? Outcome::Success : Outcome::WriteFailed;
  }
  Outcome SendSystemExclusive(ByteView message) override {
    synthesizer_->SystemExclusive(message);
    return audio_->Alive() ? Outcome::Success : Outcome::WriteFailed;
  }
  bool Alive() override { return audio_->Alive(); }
  Outcome Reset() override {
    synthesizer_->Reset();
    return audio_->Alive() ? Outcome::Success : Outcome::WriteFailed;
  }
  Outcome Close() override {
    const Outcome reset = Reset();
    const Outcome stopped = audio_->Stop();
    return Failed(stopped) ? stopped : reset;
  }

 private:
  std::unique_ptr<Synthesizer> synthesizer_;
  std::unique_ptr<AudioOutput> audio_;  // dies first: it renders from the synthesiser
};

// Renders into a file as the music goes on. Where the music ends, it goes on until what still sounds has died
// away.
class SynthesizerFile final : public MidiOutput {
 public:
  static Result<std::unique_ptr<MidiOutput>> Open(const std::string& path) {
    auto synthesizer = Synthesizer::Create(kSynthesizerRate);
    if (!synthesizer) return Failure(synthesizer.error());
    auto sink = WaveSink::Create(path, kSynthesizerRate, 2);
    if (!sink) return Failure(sink.error());
    return std::make_unique<SynthesizerFile>(*std::move(synthesizer), *std::move(sink));
  }
  SynthesizerFile(std::unique_ptr<Synthesizer> synthesizer, WaveSink sink)
      : synthesizer_(std::move(synthesizer)), sink_(std::move(sink)) {}

  Outcome Send(std::uint32_t message) override {
    synthesizer_->ShortMessage(message);
    return sink_.State();
  }
  Outcome SendSystemExclusive(ByteView message) override {
    synthesizer_->SystemExclusive(message);
    return sink_.State();
  }
  bool KeepsTime() const override { return true; }
  void Elapse(std::chrono::nanoseconds time) override {
    time_ += time;
    const auto end = static_cast<std::uint64_t>(time_.count()) * kSynthesizerRate / 1'000'000'000;
    while (frame_ < end && Succeeded(sink_.State()))
      (void)Render(static_cast<std::size_t>(std::min<std::uint64_t>(end - frame_, kBlock)));
  }
  Outcome Reset() override {
    RingOut();
    synthesizer_->Reset();
    return sink_.State();
  }
  Outcome Close() override {
    RingOut();
    return sink_.Finish();
  }

 private:
  static constexpr std::size_t kBlock = 1024;
  static constexpr std::uint32_t kQuiet = kSynthesizerRate / 5;
  static constexpr std::uint32_t kLongestDecay = kSynthesizerRate * 30;
  static constexpr float kSilence = 0.5F / 32768;

  // True when nothing is to be heard.
  bool Render(std::size_t frames) {
    const std::span<float> block = std::span(block_).first(frames * 2);
    synthesizer_->Render(block);
    sink_.Write(block);
    frame_ += frames;
    return std::ranges::all_of(block, [](float s) { return std::abs(s) < kSilence; });
  }
  void RingOut() {
    for (std::uint8_t channel = 0; channel < kChannels; ++channel) {
      for (const std::uint8_t controller : {kSustain, kAllNotesOff})
        synthesizer_->ShortMessage(ShortMidiMessage(static_cast<std::uint8_t>(0xB0 | channel), controller));
    }
    const std::uint64_t start = frame_;
    for (std::uint64_t quiet = 0; quiet < kQuiet && frame_ - start < kLongestDecay;)
      quiet = Render(kBlock) ? quiet + kBlock : 0;
    time_ = std::chrono::nanoseconds(frame_ * 1'000'000'000 / kSynthesizerRate);
  }

  std::unique_ptr<Synthesizer> synthesizer_;
  WaveSink sink_;
  std::chrono::nanoseconds time_{};
  std::uint64_t frame_ = 0;  // that is rendered next
  std::array<float, kBlock * 2> block_{};
};

// The error text is for the log of a developer; the caller learns of an error by the port that has gone.
void IgnoreMidiMessage(RtMidiError::Type /*type*/, const std::string& /*text*/, void* failed) {
  *static_cast<bool*>(failed) = true;
}

class PortOutput final : public MidiOutput {
 public:
  PortOutput(std::unique_ptr<RtMidiOut> port, std::string name)
      : port_(std::move(port)), name_(std::move(name)) {
    port_->setErrorCallback(&IgnoreMidiMessage, &failed_);
  }
  ~PortOutput() override { (void)Reset(); }

  Outcome Send(std::uint32_t message) override {
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(message),
                                  static_cast<std::uint8_t>(message >> 8 & 0x7F),
                                  static_cast<std::uint8_t>(message >> 16 & 0x7F)};
    return SendSystemExclusive({bytes, ShortMidiLength(message)});
  }
  Outcome SendSystemExclusive(ByteView message) override {
    if (!Alive()) return Outcome::WriteFailed;
    port_->sendMessage(message.data(), message.size());
    return failed_ ? Outcome::WriteFailed : Outcome::Success;
  }
  bool Alive() override { return !failed_ && Present(); }

 private:
  // A port that has gone takes messages without a word, so it is looked for now and then.
  bool Present() {
    const auto now = std::chrono::steady_clock::now();
    if (now - lastLook_ < kPresenceInterval) return true;
    lastLook_ = now;
    for (unsigned i = 0; i < port_->getPortCount(); ++i) {
      if (port_->getPortName(i) == name_) return true;
    }
    failed_ = true;
    return false;
  }

  bool failed_ = false;
  std::unique_ptr<RtMidiOut> port_;
  std::string name_;
  std::chrono::steady_clock::time_point lastLook_ = std::chrono::steady_clock::now();
};

Result<std::unique_ptr<MidiOutput>> OpenPort(std::string_view device) {
  auto service = MidiService<RtMidiOut>();
  if (!service) return Failure(Outcome::TargetFailed);
  const auto names = PortNames(*service);
  const auto found = std::ranges::find(names, device);
  if (found == names.end()) return Failure(Outcome::TargetFailed);
  try {
    const QuietLibraries quiet;
    service->openPort(static_cast<unsigned>(found - names.begin()), std::string(device));
  } catch (const RtMidiError&) {
    return Failure(Outcome::TargetFailed);
  }
  if (!service->isPortOpen()) return Failure(Outcome::TargetFailed);
  return std::make_unique<PortOutput>(std::move(service), std::string(device));
}

}  // namespace

Outcome MidiOutput::Reset() {
  for (std::uint8_t channel = 0; channel < kChannels; ++channel) {
    const auto status = static_cast<std::uint8_t>(0xB0 | channel);
    for (const std::uint8_t controller : {kSustain, kAllSoundOff, kResetControllers, kAllNotesOff}) {
      if (const Outcome sent = Send(ShortMidiMessage(status, controller)); Failed(sent)) return sent;
    }
  }
  return Outcome::Success;
}

std::vector<std::string> MidiOutputsOf(std::vector<std::string> ports, bool synthesizer) {
  std::erase_if(ports, IsOwnPort);
  const auto through = std::stable_partition(ports.begin(), ports.end(), std::not_fn(IsThroughPort));
  if (synthesizer) ports.insert(through, std::string(kSynthesizerName));
  return ports;
}

std::vector<std::string> MidiOutputDevices() {
  const auto service = MidiService<RtMidiOut>();
  return MidiOutputsOf(service ? PortNames(*service) : std::vector<std::string>{},
                       !Synthesizer::InstalledSoundFont().empty());
}

Result<std::unique_ptr<MidiOutput>> OpenMidiOutput(std::string_view device, std::string_view audioDevice) {
  if (device == kNullDevice) return std::make_unique<NullMidiOutput>();
  if (device.empty()) {
    const auto names = MidiOutputDevices();
    if (names.empty()) return Failure(Outcome::TargetFailed);
    // A keyboard that is there to play on has a port, but seldom a sound.
    const bool heard = std::ranges::find(names, kSynthesizerName) != names.end() &&
                       (!audioDevice.empty() || !AudioOutputDevices().empty());
    return OpenMidiOutput(heard ? std::string(kSynthesizerName) : names.front(), audioDevice);
  }
  if (device.starts_with(kSynthesisPrefix))
    return SynthesizerFile::Open(std::string(device.substr(kSynthesisPrefix.size())));
  if (device == kSynthesizerName) return SynthesizerOutput::Open(audioDevice);
  return OpenPort(device);
}

}  // namespace ts5
