#include "score/score_filter.h"

#include <memory>

#include "frame/item_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "score/score_at_hand.h"
#include "score/score_midi.h"
#include "score/texts.h"

namespace ts5 {
namespace {

constexpr Remark kRemarks[] = {
    {-1, texts::RemarkLibraryFailed},    {-2, texts::RemarkOutOfMemory},
    {-5, texts::RemarkCancelled},        {-6, texts::ScoreRemarkUnexpected},
    {-7, texts::ScoreRemarkNotDone},     {-12, texts::ScoreRemarkNoPlayingTime},
    {-100, texts::RemarkReadFailed},     {-101, texts::RemarkWriteFailed},
    {-103, texts::ScoreRemarkNotOpened}, {-104, texts::RemarkWrongFormat},
    {-1001, texts::RemarkWrongFormat},   {-200, texts::ScoreRemarkTargetFailed},
    {-300, texts::RemarkSourceFailed},   {-602, texts::ScoreRemarkMidiDevice},
    {-1000, texts::ScoreRemarkDamaged},
};

constexpr std::string_view kMidiExtension = "mid";

Outcome CheckItem(const ScoreToMidiParameters& own, const std::string& source, const CancelCheck& cancelled) {
  PlaybackParameters playback = own.playback;
  const auto score = OpenAndScan(source, playback, own.playRepeats, cancelled);
  if (!score) return score.error();
  return score->scan.time == 0 ? Outcome::NoPlayingTime : Outcome::Success;
}

Outcome ConvertItem(ItemWork& work) {
  const auto& own = static_cast<const ScoreToMidiParameters&>(work.parameters);
  work.run.StatusText(Format(Text(texts::ScoreReading), FileNameOf(work.source)));
  ScoreParameters parameters = own.For(work.source);
  const CancelCheck cancelled = [&work] { return work.Cancelled(); };
  const auto score = OpenAndScan(work.source, parameters.playback, own.playRepeats, cancelled);
  if (!score) return score.error();
  if (Failed(LoadAutomaticSet(work.run.GetSettings().playbackParameterDirectory, work.source, score->voices,
                              parameters)))
    work.run.Notice(Text(texts::ParameterSetNotLoaded));

  const WorkWatch watch{cancelled, work.progress};
  ScoreOptions options;
  options.repeats = own.playRepeats;
  options.silentStaves = parameters.silentStaves;
  const auto midi = ScoreToMidi(*score, parameters.playback, options, watch);
  return midi ? work.target.Write(*midi) : midi.error();
}

}  // namespace

std::span<const Remark> ScoreRemarks() {
  return kRemarks;
}

std::vector<ParameterField> ScoreToMidiFields() {
  using P = ScoreToMidiParameters;
  FieldTable<P> table;
  table.Integer("NewMethod", &P::method, INT32_MIN, INT32_MAX)
      .Flag("Lyrics", &P::lyrics)
      .Integer("NoteValue%", &P::noteValue, 0, 100)
      .Flag("Invisible", &P::invisible)
      .Flag("Repeats", &P::repeats);
  AddScoreFields(table);
  return table.Build();
}

void RunScoreToMidi(Run& run) {
  ItemFilter filter;
  filter.independent = true;
  filter.check = [&run](const FilterParameters& parameters, const std::string& source) {
    return CheckItem(static_cast<const ScoreToMidiParameters&>(parameters), source,
                     [&run] { return run.Cancelled(); });
  };
  filter.convert = ConvertItem;
  RunItems(run, filter);
}

FilterModule ScoreToMidiModule() {
  FilterModule module;
  module.id = FilterId::ScoreToMidi;
  module.create = [] { return std::make_unique<ScoreToMidiParameters>(); };
  module.fields = ScoreToMidiFields();
  module.run = RunScoreToMidi;
  module.remarks = ScoreRemarks();
  module.target = [](const FilterParameters&, const std::string&) {
    return TargetRule{std::string(kMidiExtension), false};
  };
  module.stop.status = texts::Stopping;
  module.missing = [](const Job& job) -> std::optional<TextId> {
    const auto* parameters = dynamic_cast<const ScoreToMidiParameters*>(job.parameters.Get());
    if (parameters == nullptr || parameters->UsesEngine()) return std::nullopt;
    return texts::ScoreLibraryMethodMissing;
  };
  return module;
}

}  // namespace ts5
