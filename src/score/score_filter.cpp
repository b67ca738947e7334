#include "score/score_filter.h"

#include <memory>

#include "frame/item_run.h"
#include "frame/run.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "score/score_at_hand.h"
#include "score/score_midi.h"

namespace ts5 {
namespace {

constexpr Remark kRemarks[] = {
    {-1, TextId::RemarkLibraryFailed},    {-2, TextId::RemarkOutOfMemory},
    {-5, TextId::RemarkCancelled},        {-6, TextId::ScoreRemarkUnexpected},
    {-7, TextId::ScoreRemarkNotDone},     {-12, TextId::ScoreRemarkNoPlayingTime},
    {-100, TextId::RemarkReadFailed},     {-101, TextId::RemarkWriteFailed},
    {-103, TextId::ScoreRemarkNotOpened}, {-104, TextId::RemarkWrongFormat},
    {-1001, TextId::RemarkWrongFormat},   {-200, TextId::ScoreRemarkTargetFailed},
    {-300, TextId::RemarkSourceFailed},   {-602, TextId::ScoreRemarkMidiDevice},
    {-1000, TextId::ScoreRemarkDamaged},
};

constexpr std::string_view kMidiExtension = "mid";

Outcome CheckItem(const FilterParameters& parameters, const std::string& source) {
  const auto& own = static_cast<const ScoreToMidiParameters&>(parameters);
  PlaybackParameters playback = own.playback;
  const auto score = OpenAndScan(source, playback, own.playRepeats);
  if (!score) return score.error();
  return score->scan.time == 0 ? Outcome::NoPlayingTime : Outcome::Success;
}

Outcome ConvertItem(ItemWork& work) {
  const auto& own = static_cast<const ScoreToMidiParameters&>(work.parameters);
  work.run.StatusText(Format(Text(TextId::ScoreReading), FileNameOf(work.source)));
  ScoreParameters parameters = own.For(work.source);
  const auto score = OpenAndScan(work.source, parameters.playback, own.playRepeats);
  if (!score) return score.error();
  if (Failed(LoadAutomaticSet(work.run.GetSettings().playbackParameterDirectory, work.source, score->voices,
                              parameters)))
    work.run.Notice(Text(TextId::ParameterSetNotLoaded));

  const WorkWatch watch{[&work] { return work.Cancelled(); }, work.progress};
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
  filter.check = CheckItem;
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
  module.stop.status = TextId::Stopping;
  module.missing = [](const Job& job) -> std::optional<TextId> {
    const auto* parameters = dynamic_cast<const ScoreToMidiParameters*>(job.parameters.Get());
    if (parameters == nullptr || parameters->UsesEngine()) return std::nullopt;
    return TextId::ScoreLibraryMethodMissing;
  };
  return module;
}

}  // namespace ts5
