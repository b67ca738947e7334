#include "audio/midi_recording.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include "audio/texts.h"
#include "audio/wave_file.h"
#include "audio/wave_stream.h"
#include "midi/midi_capture.h"
#include "midi/midi_sequence.h"
#include "midi/midi_sequencer.h"
#include "platform/base/text.h"
#include "platform/sound/audio_in.h"
#include "platform/sound/midi_out.h"
#include "platform/sound/sample_fifo.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kFifoSeconds = 4;
constexpr auto kPoll = 10ms;
constexpr std::uint32_t kLeastRate = 8000;
constexpr std::uint32_t kSettledParts = 10;  // of a second that has come: the input gives samples
constexpr auto kStartPatience = 5s;
constexpr auto kTail = 1s;  // what still sounds behind the last event

std::string NameAt(const std::vector<std::string>& names, std::int32_t index) {
  return index >= 0 && std::cmp_less(index, names.size()) ? names[static_cast<std::size_t>(index)]
                                                          : std::string();
}

// Moves what has come from the device's thread into the file.
class Recorder {
 public:
  Recorder(PcmSink& sink, const WaveFormat& format)
      : sink_(sink),
        fifo_(std::size_t{format.sampleRate} * format.channels * kFifoSeconds),
        settled_(std::size_t{format.sampleRate} * format.channels / kSettledParts) {}

  // On the device's thread.
  void Take(std::span<const float> block) {
    if (fifo_.Put(block) < block.size()) overrun_ = true;
  }
  // Until samples flow: sound servers give a first block at once and the next when the device has settled,
  // which may take a second. What has come so far does not count.
  Outcome AwaitStart(const WorkWatch& watch) {
    const auto until = std::chrono::steady_clock::now() + kStartPatience;
    while (fifo_.Size() < settled_) {
      if (watch.cancelled && watch.cancelled()) return Outcome::Cancelled;
      if (std::chrono::steady_clock::now() >= until) return Outcome::EncoderNotStarted;
      std::this_thread::sleep_for(kPoll);
    }
    fifo_.Drop();
    return Outcome::Success;
  }
  Outcome Drain() {
    if (overrun_) return Outcome::EncoderFailed;
    taken_.resize(fifo_.Size());
    taken_.resize(fifo_.Take(taken_));
    if (taken_.empty()) return Outcome::Success;
    samples_.assign(taken_.begin(), taken_.end());
    return sink_.Write(samples_);
  }

 private:
  PcmSink& sink_;
  SampleFifo fifo_;
  std::size_t settled_;
  std::atomic<bool> overrun_ = false;
  std::vector<float> taken_;
  std::vector<double> samples_;
};

}  // namespace

std::string RecordingSource(const std::vector<std::string>& inputs, std::string_view sum) {
  if (sum.empty()) return {};
  const std::string wanted = ToLower(sum);
  const auto found = std::ranges::find_if(
      inputs, [&](const std::string& name) { return ToLower(name).find(wanted) != std::string::npos; });
  return found == inputs.end() ? std::string() : *found;
}

std::optional<TextId> MixerProblem(const MidiToWaveParameters& parameters,
                                   const std::vector<std::string>& inputs, const Settings& settings) {
  if (parameters.Method() != MidiWaveMethod::SoundCard || !parameters.configureMixer) return std::nullopt;
  if (inputs.empty()) {
    return settings.askForDeviceConnectNoMixer ? std::optional(texts::MidiWaveNoMixer) : std::nullopt;
  }
  if (!settings.askForDeviceConnectError || !RecordingSource(inputs, settings.recordMixerName).empty())
    return std::nullopt;
  return texts::MidiWaveMixerNotSet;
}

void ForgetMixerProblem(TextId problem, Settings& settings) {
  (problem == texts::MidiWaveNoMixer ? settings.askForDeviceConnectNoMixer
                                     : settings.askForDeviceConnectError) = false;
}

void TakeRecordingSum(std::string_view sum, const std::vector<std::string>& inputs, Settings& settings) {
  settings.recordMixerPosition = -1;
  settings.recordMixerName = FirstCharacters(sum, kMaxMixerNameCharacters);
  const auto found = std::ranges::find(inputs, RecordingSource(inputs, sum));
  if (found == inputs.end() || CharacterCount(*found) > kMaxMixerNameCharacters) return;
  settings.recordMixerPosition = static_cast<std::int32_t>(found - inputs.begin());
  settings.recordMixerName = *found;
}

std::vector<WaveNumbers> RecordingFormatsOf(const std::string& input) {
  const AudioInputAbility ability = AbilityOfAudioInput(input);
  std::vector<WaveNumbers> formats;
  for (const std::uint32_t rate : ability.rates) {
    if (rate < kLeastRate) continue;
    for (const std::int32_t bits : {8, 16}) {
      for (std::int32_t channels = 1; channels <= std::min<std::int32_t>(2, ability.channels); ++channels)
        formats.push_back({static_cast<std::int32_t>(rate), channels, bits});
    }
  }
  return formats;
}

RecordingDevices RecordingDevicesOf(const MidiToWaveParameters& parameters, std::string_view sum,
                                    const RecordingDevices& given) {
  RecordingDevices devices = given;
  if (devices.midi.empty()) devices.midi = NameAt(MidiOutputDevices(), parameters.midiDevice);
  if (!devices.input.empty()) return devices;
  const auto inputs = AudioInputDevices();
  if (parameters.configureMixer) devices.input = RecordingSource(inputs, sum);
  if (devices.input.empty()) devices.input = NameAt(inputs, parameters.waveDevice);
  return devices;
}

Outcome CheckRecording(const RecordingDevices& devices, const WaveFormat& format) {
  if (!OpenMidiDevice(devices.midi)) return Outcome::MidiDeviceFailed;
  const AudioFormat wanted{format.sampleRate, format.channels};
  return OpenAudioInput(devices.input, wanted, [](std::span<const float>) {}) ? Outcome::Success
                                                                              : Outcome::ConverterNotOpened;
}

Outcome RecordMidi(const std::string& source, StagedFile& target, const WaveFormat& format,
                   const RecordingDevices& devices, const WorkWatch& watch) {
  const auto file = ReadFile(source);
  if (!file) return file.error();
  const auto sequence = MidiSequence::FromFile(*file);
  if (!sequence) return sequence.error();

  const PcmShape shape{.sampleRate = format.sampleRate, .channels = format.channels};
  auto wave = WaveFile::CreateIn(target, format);
  if (!wave) return wave.error();
  auto sink = WaveSink(*std::move(wave), shape);
  if (!sink) return sink.error();
  Recorder recorder(**sink, format);
  auto output = OpenMidiDevice(devices.midi);
  if (!output) return Outcome::MidiDeviceFailed;
  auto input = OpenAudioInput(devices.input, {format.sampleRate, format.channels},
                              [&recorder](std::span<const float> block) { recorder.Take(block); });
  if (!input) return Outcome::ConverterNotOpened;
  if (Failed((*input)->Start())) return Outcome::EncoderNotStarted;
  if (const Outcome started = recorder.AwaitStart(watch); Failed(started)) return started;

  MidiSequencer sequencer(*sequence, **output);
  std::atomic<bool> ended = false;
  Outcome played = Outcome::Success;
  std::jthread player([&] {
    played = sequencer.Run();
    ended = true;
  });
  Outcome recorded = Outcome::Success;
  const auto record = [&](auto goOn) {
    while (Succeeded(recorded) && goOn()) {
      std::this_thread::sleep_for(kPoll);
      recorded = recorder.Drain();
      if (Succeeded(recorded) && watch.cancelled && watch.cancelled()) recorded = Outcome::Cancelled;
      if (Succeeded(recorded) && !(*input)->Alive()) recorded = Outcome::EncoderFailed;
      if (watch.progress && sequence->Duration() > 0ns) {
        watch.progress(std::min(1.0, static_cast<double>(sequencer.Position().count()) /
                                         static_cast<double>(sequence->Duration().count())));
      }
    }
  };
  record([&] { return !ended.load(); });
  sequencer.Stop();
  player.join();
  const auto end = std::chrono::steady_clock::now() + kTail;
  if (Succeeded(played)) record([end] { return std::chrono::steady_clock::now() < end; });
  (*input)->Stop();
  if (Succeeded(recorded)) recorded = recorder.Drain();
  const Outcome closed = (*output)->Close();
  if (Failed(recorded)) return recorded;
  if (Failed(played)) return played == Outcome::WriteFailed ? Outcome::ConverterFailed : played;
  if (Failed(closed)) return closed;
  return (*sink)->Finish();
}

}  // namespace ts5
