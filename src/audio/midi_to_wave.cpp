#include "audio/midi_to_wave.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "audio/audio_remarks.h"
#include "audio/midi_recording.h"
#include "audio/synthesis.h"
#include "audio/synthesizer_config.h"
#include "audio/texts.h"
#include "audio/wave_file.h"
#include "audio/wave_stream.h"
#include "frame/item_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "midi/midi_file.h"
#include "midi/midi_item.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "platform/media/media_engine.h"

namespace ts5 {
namespace {

using namespace texts;

// What this filter says otherwise than the audio filters do in common.
constexpr Remark kOwnRemarks[] = {
    {Code(Outcome::NotNecessary), NormaliseNotNecessary},
    {Code(Outcome::LibraryNotLoaded), MidiWaveSynthFailed},
    {Code(Outcome::LibraryFailed), MidiWaveSynthFailed},
    {Code(Outcome::MidiDeviceFailed), MidiWaveDeviceFailed},
    {Code(Outcome::ConverterFailed), MidiWaveDeviceNotStarted},
    {Code(Outcome::ConverterNotOpened), MidiWaveRecordingFailed},
    {Code(Outcome::EncoderNotStarted), MidiWaveInputNotStarted},
    {Code(Outcome::EncoderFailed), MidiWaveInputGone},
    {Code(Outcome::WrongFormat), RemarkWrongFormat},
    {Code(Outcome::DamagedMidi), RemarkDamagedMidi},
    {Code(Outcome::LongSilence), MidiWaveLongSilence},
};

std::span<const Remark> AllRemarks() {
  static const std::vector<Remark> remarks = BeforeAudioRemarks(kOwnRemarks);
  return remarks;
}

// The whole source as it is played. Codes of ReadFile and MidiSequence::FromFile.
Result<MidiSequence> ReadSequence(const std::string& source) {
  const auto file = ReadFile(source);
  if (!file) return Failure(file.error());
  return MidiSequence::FromFile(*file);
}

// "2:05:30"
std::string HoursText(std::chrono::nanoseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
  return Format("%i:%02i:%02i", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

// Tells how loud what goes through it is, and makes it louder or softer.
class LevelSource final : public PcmSource {
 public:
  LevelSource(std::unique_ptr<PcmSource> source, double gain) : source_(std::move(source)), gain_(gain) {}

  const PcmShape& Shape() const override { return source_->Shape(); }
  std::optional<std::uint64_t> Frames() const override { return source_->Frames(); }
  Outcome Seek(std::uint64_t frame) override { return source_->Seek(frame); }
  Result<std::size_t> Read(std::span<double> out) override {
    const auto got = source_->Read(out);
    if (!got) return got;
    for (double& sample : out.first(*got * Shape().channels)) {
      sample *= gain_;
      peak_ = std::max(peak_, std::abs(sample));
    }
    return got;
  }
  [[nodiscard]] double Peak() const { return peak_; }

 private:
  std::unique_ptr<PcmSource> source_;
  double gain_;
  double peak_ = 0;
};

// Takes samples and forgets them.
class NoSink final : public PcmSink {
 public:
  Outcome Write(std::span<const double> /*interleaved*/) override { return Outcome::Success; }
  Outcome Finish() override { return Outcome::Success; }
};

WorkWatch PartOf(const WorkWatch& watch, double from, double to) {
  WorkWatch part = watch;
  if (watch.progress)
    part.progress = [&watch, from, to](double fraction) { watch.progress(from + (to - from) * fraction); };
  return part;
}

class Rendering {
 public:
  Rendering(const MidiSequence& sequence, const WaveFormat& format, std::string soundFont)
      : sequence_(sequence), format_(format), soundFont_(std::move(soundFont)) {}

  // Into nothing, to hear how loud it becomes.
  Result<double> Measure(const WorkWatch& watch) {
    auto source = Open(1);
    if (!source) return Failure(source.error());
    NoSink sink;
    if (const Outcome moved = CopyPcm(**source, sink, watch); Failed(moved)) return Failure(moved);
    return (*source)->Peak();
  }

  // The loudest sample that came, in parts of full scale: more than 1 was clipped.
  Result<double> Write(StagedFile& target, double gain, const WorkWatch& watch) {
    auto source = Open(gain);
    if (!source) return Failure(source.error());
    auto wave = WaveFile::CreateIn(target, format_);
    if (!wave) return Failure(wave.error());
    auto sink = WaveSink(*std::move(wave), PcmShape{.sampleRate = format_.sampleRate, .channels = 2});
    if (!sink) return Failure(sink.error());
    if (const Outcome moved = CopyPcm(**source, **sink, watch); Failed(moved)) return Failure(moved);
    return (*source)->Peak();
  }

 private:
  Result<std::unique_ptr<LevelSource>> Open(double gain) {
    auto synthesis = SynthesisSource(sequence_, format_.sampleRate, soundFont_);
    if (!synthesis)
      return Failure(synthesis.error() == Outcome::DamagedMidi ? Outcome::DamagedMidi
                                                               : Outcome::LibraryNotLoaded);
    auto converted = Converted(*std::move(synthesis), format_.sampleRate, format_.channels);
    if (!converted) return Failure(converted.error());
    return std::make_unique<LevelSource>(*std::move(converted), gain);
  }

  const MidiSequence& sequence_;
  WaveFormat format_;
  std::string soundFont_;
};

class MidiToWaveRun {
 public:
  MidiToWaveRun(Run& run, const MidiToWaveParameters& parameters) : run_(run), parameters_(parameters) {}

  void Execute() {
    if (parameters_.Method() == MidiWaveMethod::SoundCard) {
      if (const Outcome ready = PrepareRecording(); Failed(ready)) return EndAtOnce(ready);
    }
    ItemFilter filter;
    filter.independent = parameters_.Method() == MidiWaveMethod::Synthesis;
    AskAboutSilence();
    filter.prepare = [this](const std::string& source) { return Prepare(source); };
    filter.convert = [this](ItemWork& work) { return ConvertItem(work); };
    RunItems(run_, filter);
    if (parameters_.Normalising() == NormaliseMode::Project) NormaliseProject();
    if (notNecessary_) run_.AddCode(Outcome::NotNecessary);
    run_.Result().remarks = run_.Remarks();
    if (failed_) run_.Result().remarks.emplace_back(Text(NormaliseFailed));
  }

 private:
  Outcome PrepareRecording() {
    if (!parameters_.HasRecordingFormat() &&
        run_.Ask({.text = std::string(Text(MidiWaveAskNoFormat))}) != Answer::Yes)
      return Outcome::Cancelled;
    const std::string& sum = run_.GetSettings().recordMixerName;
    const RunDevices& given = run_.Devices();
    devices_ = RecordingDevicesOf(parameters_, sum, {given.output, given.input});
    const bool found = ToLower(devices_.input).find(ToLower(sum)) != std::string::npos;
    if (parameters_.configureMixer && given.input.empty() && (sum.empty() || !found))
      run_.ProtocolLine(Format(Text(MidiWaveSumNotFound), sum, devices_.input));
    return CheckRecording(devices_, parameters_.RecordingFormat());
  }

  // One question for all of them, before anything is made: a bit that flipped turns a small file into hours.
  void AskAboutSilence() {
    std::size_t longest = 0;
    std::chrono::nanoseconds silence{0};
    for (std::size_t i = 0; i < run_.ItemCount() && !run_.Cancelled(); ++i) {
      const std::string source = run_.Source(i);
      const auto sequence = ReadSequence(source);
      const auto found = sequence ? LongSilence(*sequence) : std::nullopt;
      if (!found) continue;
      silent_.insert(source);
      if (*found > silence) longest = i;
      silence = std::max(silence, *found);
    }
    if (silent_.empty()) return;
    const std::string question = Format(Text(MidiWaveAskSilence), silent_.size(), HoursText(silence),
                                        FileNameOf(run_.Source(longest)));
    if (run_.Ask({.text = question, .icon = MessageIcon::Exclamation, .preset = Answer::No}) == Answer::Yes)
      silent_.clear();
  }

  [[nodiscard]] Result<std::unique_ptr<PreparedItem>> Prepare(const std::string& source) const {
    if (silent_.contains(source)) return Failure(Outcome::LongSilence);
    return OpenMidiItem(source);
  }

  // Nothing is converted: the user has said so, or a device is missing.
  void EndAtOnce(Outcome reason) {
    run_.AddCode(reason, Code(reason));
    run_.Result().cancelled = reason == Outcome::Cancelled;
    for (std::size_t i = 0; i < run_.ItemCount(); ++i)
      run_.Result().items.push_back({run_.Source(i), "", Code(reason)});
    CountItems(run_.Result(), run_.ItemCount());
    run_.Result().remarks = run_.Remarks();
  }

  Outcome ConvertItem(ItemWork& work) {
    const std::string_view name = FileNameOf(work.source);
    work.run.StatusText(Format(Text(MidiWaveStart), name));
    const bool each = parameters_.Normalising() == NormaliseMode::Each;
    Outcome outcome = Convert(work, Watch(work, 0, each ? kConvertingPart : 1));
    work.run.StatusText(Format(Text(Succeeded(outcome) ? MidiWaveDone : MidiWaveFailed), name));
    if (Failed(outcome) || !each) return outcome;
    work.run.StatusText(Format(Text(NormaliseFileStart), name));
    outcome = NormaliseStaged(work.target, Watch(work, kConvertingPart, 1));
    return Book(outcome) ? outcome : Outcome::Success;
  }

  [[nodiscard]] Outcome Convert(ItemWork& work, const WorkWatch& watch) const {
    if (parameters_.Method() == MidiWaveMethod::SoundCard)
      return RecordMidi(work.source, work.target, parameters_.RecordingFormat(), devices_, watch);
    return RenderMidi(work.Prepared<MidiItem>().file, work.target, parameters_.SynthesisFormat(),
                      run_.GetSettings().synthesizerDirectory, watch);
  }

  static WorkWatch Watch(ItemWork& work, double from, double to) {
    return {[&work] { return work.Cancelled(); },
            [&work, from, to](double fraction) { work.progress(from + (to - from) * fraction); }};
  }

  void NormaliseProject() {
    std::vector<RunItem*> converted;
    std::vector<std::string> files;
    for (RunItem& item : run_.Result().items) {
      if (item.code < 0 || item.destination.empty()) continue;
      converted.push_back(&item);
      files.push_back(item.destination);
    }
    if (files.empty() || run_.Cancelled()) return;
    run_.StatusText(Text(NormaliseProjectStart));
    const WorkWatch watch{[this] { return run_.Cancelled(); },
                          [this](double fraction) { run_.Progress(1, 1, fraction); }};
    const Outcome outcome = Normalise(files, {}, kWholeProject, files.size(), watch);
    for (const std::string& file : files) run_.Changed(file);
    if (!Book(outcome)) return;
    if (outcome == Outcome::Cancelled) {
      run_.AddCode(outcome);
      run_.Result().cancelled = true;
      return;
    }
    for (RunItem* item : converted) item->code = Code(outcome);
    CountItems(run_.Result(), run_.ItemCount());
  }

  // What normalising said; whether it spoils the conversion. From any thread.
  bool Book(Outcome outcome) {
    if (Succeeded(outcome)) return false;
    if (outcome == Outcome::NotNecessary) {
      notNecessary_ = true;
      return false;
    }
    if (outcome != Outcome::Cancelled) failed_ = true;
    return true;
  }

  static constexpr double kConvertingPart = 0.9;  // of the work on an item

  Run& run_;
  const MidiToWaveParameters& parameters_;
  RecordingDevices devices_;
  std::set<std::string> silent_;  // sources that are not converted for their long rests
  std::atomic<bool> notNecessary_ = false;
  std::atomic<bool> failed_ = false;
};

}  // namespace

Outcome RenderMidi(ByteView midi, StagedFile& target, const WaveFormat& format, const std::string& folder,
                   const WorkWatch& watch) {
  const auto sequence = MidiSequence::FromFile(midi);
  if (!sequence) return sequence.error();
  // A folder that cannot be written keeps nobody from converting.
  (void)EnsureSynthesizerConfig(folder);
  Rendering rendering(*sequence, format, ConfiguredSoundFont(folder));
  const double top = 1 - std::ldexp(1.0, 1 - format.bitsPerSample);
  double gain = 1;
  double done = 0;
  if (format.bitsPerSample == 8) {
    // 256 steps are few: the loudest passage gets them all.
    const auto peak = rendering.Measure(PartOf(watch, 0, 0.5));
    if (!peak) return peak.error();
    if (*peak > 0) gain = top / *peak;
    done = 0.5;
  }
  const std::uint64_t start = target.Size();
  const auto peak = rendering.Write(target, gain, PartOf(watch, done, 1));
  if (!peak) return peak.error();
  if (*peak <= top || gain != 1) return Outcome::Success;
  // Once more, softer, so that nothing is clipped.
  if (const Outcome emptied = target.Shorten(start); Failed(emptied)) return emptied;
  const auto softer = rendering.Write(target, top / *peak, watch);
  return softer ? Outcome::Success : softer.error();
}

Outcome RenderMidiFile(const std::string& source, const std::string& target, const WaveFormat& format,
                       const std::string& folder, const WorkWatch& watch) {
  const auto midi = ReadFile(source);
  if (!midi) return midi.error();
  const std::string name = target.empty() ? std::string(WithoutExtension(source)) + ".wav" : target;
  auto file = StagedFile::Create(name);
  if (!file) return file.error();
  if (const Outcome rendered = RenderMidi(*midi, *file, format, folder, watch); Failed(rendered))
    return rendered;
  return file->Commit();
}

FilterModule MidiToWaveModule() {
  using P = MidiToWaveParameters;
  ModuleOf<P> module;
  module.id = FilterId::MidiToWave;
  module.fields = MidiToWaveFields();
  module.run = [](Run& run, const P& own) { MidiToWaveRun(run, own).Execute(); };
  module.remarks = AllRemarks();
  module.target = [](const P&, const std::string&) {
    return TargetRule{.extension = "wav", .formatKept = false};
  };
  module.stop.status = Stopping;
  module.midiDevice = [](const P& parameters, const Job&) -> std::optional<std::int32_t> {
    if (parameters.Method() == MidiWaveMethod::Synthesis) return std::nullopt;
    return parameters.midiDevice;
  };
  module.sharesMidiDevice = false;  // what others play would be recorded
  module.missing = [](const P& parameters) -> std::optional<TextId> {
    if (parameters.Method() == MidiWaveMethod::Synthesis && !parameters.HasSynthesisFormat())
      return MidiWaveChooseRate;
    return std::nullopt;
  };
  return MakeModule(std::move(module));
}

}  // namespace ts5
