#include "audio/midi_to_wave.h"

#include <memory>
#include <utility>

#include "audio/midi_recording.h"
#include "audio/synthesis.h"
#include "audio/synthesizer_config.h"
#include "audio/wave_file.h"
#include "audio/wave_stream.h"
#include "frame/item_run.h"
#include "frame/run.h"
#include "midi/midi_file.h"
#include "platform/casts.h"
#include "platform/media_engine.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace ts5 {
namespace {

using enum TextId;

constexpr Remark kRemarks[] = {
    {Code(Outcome::OutOfMemory), RemarkOutOfMemory},
    {Code(Outcome::Cancelled), RemarkCancelled},
    {Code(Outcome::NotNecessary), NormaliseNotNecessary},
    {Code(Outcome::LibraryNotLoaded), MidiWaveSynthFailed},
    {Code(Outcome::LibraryFailed), MidiWaveSynthFailed},
    {Code(Outcome::ConverterNotOpened), MidiWaveDeviceFailed},
    {Code(Outcome::ConverterFailed), MidiWaveDeviceNotStarted},
    {Code(Outcome::EncoderNotStarted), MidiWaveInputNotStarted},
    {Code(Outcome::ReadFailed), RemarkReadFailed},
    {Code(Outcome::WriteFailed), RemarkWriteFailed},
    {Code(Outcome::WrongFormat), RemarkWrongFormat},
    {Code(Outcome::TargetFailed), RemarkTargetFailed},
    {Code(Outcome::SourceFailed), RemarkSourceFailed},
    {Code(Outcome::DamagedMidi), RemarkDamagedMidi},
};

Outcome CheckSource(const FilterParameters& /*parameters*/, const std::string& source) {
  const auto info = ReadMidiFileHeader(source);
  return info ? Outcome::Success : info.error();
}

Outcome ConvertItem(ItemWork& work) {
  const auto& parameters = static_cast<const MidiToWaveParameters&>(work.parameters);
  const std::string_view name = FileNameOf(work.source);
  work.run.StatusText(Format(Text(MidiWaveStart), name));
  const WorkWatch watch{[&work] { return work.Cancelled(); }, work.progress};
  const Outcome outcome =
      parameters.Method() == MidiWaveMethod::Synthesis
          ? RenderMidi(work.source, work.target, parameters.SynthesisFormat(), watch)
          : RecordMidi(work.source, work.target, parameters.RecordingFormat(),
                       RecordingDevicesOf(parameters, work.run.Devices().output, work.run.Devices().input),
                       watch);
  work.run.StatusText(Format(Text(Succeeded(outcome) ? MidiWaveDone : MidiWaveFailed), name));
  return outcome;
}

// What became of normalising goes into the items that it concerns.
class Normalising {
 public:
  explicit Normalising(Run& run) : run_(run), watch_{[&run] { return run.Cancelled(); }, {}} {}

  void Execute(NormaliseMode mode) {
    for (std::size_t i = 0; i < run_.Result().items.size(); ++i) {
      if (run_.Result().items[i].code >= 0 && !run_.Result().items[i].destination.empty()) {
        converted_.push_back(i);
        files_.push_back(run_.Result().items[i].destination);
      }
    }
    if (files_.empty() || run_.Cancelled()) return;
    if (mode == NormaliseMode::Project) {
      run_.StatusText(Text(NormaliseProjectStart));
      Book(Normalise(files_, {}, kWholeProject, files_.size(), Watch(0, 1)), converted_);
    } else {
      for (std::size_t i = 0; i < files_.size() && !cancelled_; ++i) {
        run_.StatusText(Format(Text(NormaliseFileStart), FileNameOf(files_[i])));
        Book(Normalise(files_, {}, static_cast<int>(i), 1, Watch(i, files_.size())),
             std::span(converted_).subspan(i, 1));
      }
    }
  }

 private:
  WorkWatch Watch(std::size_t index, std::size_t count) {
    WorkWatch watch = watch_;
    watch.progress = [this, index, count](double fraction) {
      run_.Progress(ClampTo<std::uint32_t>(index + 1), ClampTo<std::uint32_t>(count), fraction);
    };
    return watch;
  }

  void Book(Outcome outcome, std::span<const std::size_t> items) {
    if (outcome == Outcome::Cancelled) {
      cancelled_ = true;
      run_.AddCode(outcome);
      run_.Result().cancelled = true;
    } else if (outcome == Outcome::NotNecessary) {
      run_.AddCode(outcome);
    } else if (Failed(outcome)) {
      for (const std::size_t item : items) run_.Result().items[item].code = Code(outcome);
      run_.Result().lines[0].count -= ClampTo<std::uint32_t>(items.size());
      run_.Result().lines[1].count += ClampTo<std::uint32_t>(items.size());
      failed_ = true;
    }
    run_.Result().remarks = run_.Remarks(kRemarks);
    if (failed_) run_.Result().remarks.emplace_back(Text(NormaliseFailed));
  }

  Run& run_;
  WorkWatch watch_;
  std::vector<std::size_t> converted_;  // indices of the items of files_
  std::vector<std::string> files_;
  bool cancelled_ = false;
  bool failed_ = false;
};

void RunMidiToWave(Run& run) {
  const auto& parameters = run.Parameters<MidiToWaveParameters>();
  const bool synthesis = parameters.Method() == MidiWaveMethod::Synthesis;
  if (!synthesis && !parameters.HasRecordingFormat() &&
      run.Ask({.text = std::string(Text(MidiWaveAskNoFormat))}) != Answer::Yes) {
    run.AddCode(Outcome::Cancelled);
    run.Result().cancelled = true;
    run.Result().lines[1].count = ClampTo<std::uint32_t>(run.ItemCount());
    run.Result().remarks = run.Remarks(kRemarks);
    return;
  }
  ItemFilter filter;
  filter.independent = synthesis;
  filter.check = CheckSource;
  filter.convert = ConvertItem;
  filter.remarks = kRemarks;
  RunItems(run, filter);
  if (parameters.Normalising() != NormaliseMode::None) Normalising(run).Execute(parameters.Normalising());
}

}  // namespace

Outcome RenderMidi(const std::string& source, StagedFile& target, const WaveFormat& format,
                   const WorkWatch& watch) {
  const auto file = ReadFile(source);
  if (!file) return file.error();
  auto sequence = MidiSequence::FromFile(*file);
  if (!sequence) return sequence.error();
  const std::string folder = SynthesizerFolder();
  // A folder that cannot be written keeps nobody from converting.
  (void)EnsureSynthesizerConfig(folder);
  auto synthesis = SynthesisSource(*std::move(sequence), format.sampleRate, ConfiguredSoundFont(folder));
  if (!synthesis) {
    return synthesis.error() == Outcome::DamagedMidi ? Outcome::DamagedMidi : Outcome::LibraryNotLoaded;
  }
  const PcmShape shape = (*synthesis)->Shape();
  auto converted = Converted(*std::move(synthesis), format.sampleRate, format.channels);
  if (!converted) return converted.error();
  auto wave = WaveFile::CreateIn(target, format);
  if (!wave) return wave.error();
  auto sink = WaveSink(*std::move(wave), shape);
  if (!sink) return sink.error();
  return CopyPcm(**converted, **sink, watch);
}

Outcome RenderMidiFile(const std::string& source, const std::string& target, const WaveFormat& format,
                       const WorkWatch& watch) {
  const std::string name = target.empty() ? std::string(WithoutExtension(source)) + ".wav" : target;
  auto file = StagedFile::Create(name);
  if (!file) return file.error();
  if (const Outcome rendered = RenderMidi(source, *file, format, watch); Failed(rendered)) return rendered;
  return file->Commit();
}

FilterModule MidiToWaveModule() {
  FilterModule module;
  module.id = FilterId::MidiToWave;
  module.create = [] { return std::make_unique<MidiToWaveParameters>(); };
  module.fields = MidiToWaveFields();
  module.run = RunMidiToWave;
  module.target = [](const FilterParameters& /*parameters*/, const std::string& /*source*/) {
    return TargetRule{.extension = "wav", .formatKept = false};
  };
  module.stop.status = Stopping;
  module.midiDevice = [](const Job& job) -> std::optional<std::int32_t> {
    const auto& parameters = static_cast<const MidiToWaveParameters&>(*job.parameters);
    if (parameters.Method() == MidiWaveMethod::Synthesis) return std::nullopt;
    return parameters.midiDevice;
  };
  module.missing = [](const Job& job) -> std::optional<TextId> {
    const auto& parameters = static_cast<const MidiToWaveParameters&>(*job.parameters);
    if (parameters.Method() == MidiWaveMethod::Synthesis && !parameters.HasSynthesisFormat())
      return MidiWaveChooseRate;
    return std::nullopt;
  };
  return module;
}

}  // namespace ts5
