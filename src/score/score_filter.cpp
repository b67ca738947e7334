#include "score/score_filter.h"

#include <memory>

#include "frame/item_run.h"
#include "frame/loss_remarks.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "score/parameter_set.h"
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

struct PreparedScore : PreparedItem {
  OpenScore score;
  ScoreParameters parameters;
};

Result<std::unique_ptr<PreparedItem>> OpenItem(const ScoreToMidiParameters& own, const std::string& source,
                                               const CancelCheck& cancelled) {
  auto item = std::make_unique<PreparedScore>();
  item->parameters = own.For(source);
  auto score = OpenAndScan(source, item->parameters.playback, own.playRepeats, cancelled);
  if (!score) return Failure(score.error());
  if (score->scan.time == 0) return Failure(Outcome::NoPlayingTime);
  item->score = *std::move(score);
  return item;
}

Result<Bytes> ByEngine(const OpenScore& score, const ScoreParameters& parameters, const WorkWatch& watch) {
  ScoreOptions options;
  options.repeats = parameters.playRepeats;
  options.silentStaves = parameters.silentStaves;
  return ScoreToMidi(score, parameters.playback, options, watch);
}

Outcome ConvertItem(const ScoreToMidiParameters& own, ItemWork& work) {
  work.run.StatusText(Format(Text(texts::ScoreReading), FileNameOf(work.source)));
  const WorkWatch watch{[&work] { return work.Cancelled(); }, work.progress};
  auto& item = work.Prepared<PreparedScore>();
  OpenScore& score = item.score;
  ScoreParameters& parameters = item.parameters;
  const std::string& sets = work.run.GetSettings().playbackParameterDirectory;
  if (Failed(LoadAutomaticSet(sets, work.source, score.voices, parameters)))
    work.run.Notice(SetFailure(AutomaticParameterSet(sets, work.source)));
  ScoreImage& image = score.image;
  const bool ofOtherFormat = image.document != nullptr;
  if (own.UsesEngine()) image.document.reset();  // which has all in the file
  const auto midi = own.UsesEngine() ? ByEngine(score, parameters, watch)
                    : image.document ? PlainMidi(*image.document, LibraryOptions(own, parameters), watch)
                                     : ConvertSTVToMID(score.file, LibraryOptions(own, parameters), watch);
  if (!midi) return midi.error();
  if (!ofOtherFormat) return work.target.Write(*midi);
  std::vector<ItemLoss> losses = std::move(image.losses);
  if (own.UsesEngine()) losses.insert(losses.end(), image.engineLosses.begin(), image.engineLosses.end());
  return WriteWithLosses(work, *midi, std::move(losses));
}

}  // namespace

PlainMidiOptions LibraryOptions(const ScoreToMidiParameters& own, const ScoreParameters& parameters) {
  return {.lyrics = own.lyrics,
          .repeats = own.repeats,
          .invisible = own.invisible,
          .noteValue = own.noteValue,
          .silentStaves = parameters.silentStaves,
          .playback = parameters.playback};
}

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

namespace {

void RunScoreToMidi(Run& run, const ScoreToMidiParameters& own) {
  ItemFilter filter;
  filter.independent = true;
  filter.prepare = [&run, &own](const std::string& source) {
    return OpenItem(own, source, [&run] { return run.Cancelled(); });
  };
  filter.convert = [&own](ItemWork& work) { return ConvertItem(own, work); };
  RunItems(run, filter);
  AddLossRemarks(run.Result());
}

}  // namespace

FilterModule ScoreToMidiModule() {
  using P = ScoreToMidiParameters;
  ModuleOf<P> module;
  module.id = FilterId::ScoreToMidi;
  module.fields = ScoreToMidiFields();
  module.run = RunScoreToMidi;
  module.remarks = ScoreRemarks();
  module.target = [](const P&, const std::string&) { return TargetRule{std::string(kMidiExtension), false}; };
  module.stop.status = texts::Stopping;
  return MakeModule(std::move(module));
}

}  // namespace ts5
