#include "audio/midi_to_wave.h"

#include <atomic>
#include <memory>
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
#include "platform/casts.h"
#include "platform/media_engine.h"
#include "platform/paths.h"
#include "platform/text.h"

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
};

std::span<const Remark> AllRemarks() {
  static const std::vector<Remark> remarks = [] {
    std::vector<Remark> all(std::begin(kOwnRemarks), std::end(kOwnRemarks));
    all.insert(all.end(), AudioRemarks().begin(), AudioRemarks().end());
    return all;
  }();
  return remarks;
}

Outcome CheckSource(const FilterParameters& /*parameters*/, const std::string& source) {
  const auto info = ReadMidiFileHeader(source);
  return info ? Outcome::Success : info.error();
}

class MidiToWaveRun {
 public:
  explicit MidiToWaveRun(Run& run) : run_(run), parameters_(run.Parameters<MidiToWaveParameters>()) {}

  void Execute() {
    if (parameters_.Method() == MidiWaveMethod::SoundCard) {
      if (const Outcome ready = PrepareRecording(); Failed(ready)) return EndAtOnce(ready);
    }
    ItemFilter filter;
    filter.independent = parameters_.Method() == MidiWaveMethod::Synthesis;
    filter.check = CheckSource;
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

  // Nothing is converted: the user has said so, or a device is missing.
  void EndAtOnce(Outcome reason) {
    run_.AddCode(reason, Code(reason));
    run_.Result().cancelled = reason == Outcome::Cancelled;
    run_.Result().lines[1].count = ClampTo<std::uint32_t>(run_.ItemCount());
    run_.Result().remarks = run_.Remarks();
    for (std::size_t i = 0; i < run_.ItemCount(); ++i)
      run_.Result().items.push_back({run_.Source(i), "", Code(reason)});
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
    return RenderMidi(work.source, work.target, parameters_.SynthesisFormat(),
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
    if (!Book(outcome)) return;
    if (outcome == Outcome::Cancelled) {
      run_.AddCode(outcome);
      run_.Result().cancelled = true;
      return;
    }
    for (RunItem* item : converted) item->code = Code(outcome);
    run_.Result().lines[0].count -= ClampTo<std::uint32_t>(converted.size());
    run_.Result().lines[1].count += ClampTo<std::uint32_t>(converted.size());
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
  std::atomic<bool> notNecessary_ = false;
  std::atomic<bool> failed_ = false;
};

}  // namespace

Outcome RenderMidi(const std::string& source, StagedFile& target, const WaveFormat& format,
                   const std::string& folder, const WorkWatch& watch) {
  const auto file = ReadFile(source);
  if (!file) return file.error();
  auto sequence = MidiSequence::FromFile(*file);
  if (!sequence) return sequence.error();
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
                       const std::string& folder, const WorkWatch& watch) {
  const std::string name = target.empty() ? std::string(WithoutExtension(source)) + ".wav" : target;
  auto file = StagedFile::Create(name);
  if (!file) return file.error();
  if (const Outcome rendered = RenderMidi(source, *file, format, folder, watch); Failed(rendered))
    return rendered;
  return file->Commit();
}

FilterModule MidiToWaveModule() {
  FilterModule module;
  module.id = FilterId::MidiToWave;
  module.create = [] { return std::make_unique<MidiToWaveParameters>(); };
  module.fields = MidiToWaveFields();
  module.run = [](Run& run) { MidiToWaveRun(run).Execute(); };
  module.remarks = AllRemarks();
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
