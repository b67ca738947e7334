#include "converters/transcribe/midi_to_score.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>

#include "converters/item_losses.h"
#include "converters/score_formats.h"
#include "converters/texts.h"
#include "converters/transcribe/texts.h"
#include "frame/item_run.h"
#include "frame/loss_remarks.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "midi/midi_item.h"
#include "platform/base/casts.h"
#include "score/score_writer.h"

namespace ts5::transcribe {
namespace {

using P = MidiToScoreParameters;

constexpr std::uint64_t kMostBytes = std::uint64_t{64} << 20;
constexpr std::string_view kScoreExtension = "stv";

constexpr std::array<NumberRange, 9> kNumbers = {{
    {"BarsPerSystem", &P::barsPerSystem, 0, 10},
    {"NoZeiDistEng", &P::narrowLines, 0, 1000},
    {"NoZeiDistNorm", &P::normalLines, 0, 1000},
    {"NoZeiDistOben", &P::above, 0, 100},
    {"NoZeiDistUnten", &P::below, 0, 100},
    {"InterSysDist", &P::betweenSystems, 0, 100},
    {"TopSysDist", &P::beforeFirstSystem, 0, 100},
    {"AdjustVert", &P::justify, 0, 2},
    {"Balkensetzung", &P::beaming, 0, 4},
}};

void AddNumber(FieldTable<P>& table, std::string_view name) {
  const auto* const row = std::ranges::find(kNumbers, name, &NumberRange::name);
  table.Integer(std::string(row->name), row->member, row->least, row->most);
}

std::vector<ParameterField> Fields() {
  FieldTable<P> table;
  AddNumber(table, "BarsPerSystem");
  table.Flag("Lyrics", &P::lyrics).Flag("PrintLandscape", &P::landscape);
  for (const std::string_view name :
       {"NoZeiDistEng", "NoZeiDistNorm", "NoZeiDistOben", "NoZeiDistUnten", "InterSysDist", "TopSysDist"})
    AddNumber(table, name);
  table.Flag("SystemSep", &P::slashes);
  AddNumber(table, "AdjustVert");
  table.Flag("ShowBarCount", &P::barNumbers);
  AddNumber(table, "Balkensetzung");
  return table.Build();
}

TranscriptionOptions OptionsOf(const MidiToScoreParameters& parameters) {
  TranscriptionOptions options;
  options.lyrics = parameters.lyrics;
  options.landscape = parameters.landscape;
  ScorePageLayout& page = options.page;
  page.narrowLines = ClampTo<std::uint16_t>(parameters.narrowLines);
  page.normalLines = ClampTo<std::uint16_t>(parameters.normalLines);
  page.above = ClampTo<std::uint8_t>(parameters.above);
  page.below = ClampTo<std::uint8_t>(parameters.below);
  page.betweenSystems = ClampTo<std::uint8_t>(parameters.betweenSystems);
  page.beforeFirst = ClampTo<std::uint8_t>(parameters.beforeFirstSystem);
  page.slashes = parameters.slashes;
  page.justify = ClampTo<std::uint8_t>(parameters.justify);
  page.barNumbers = parameters.barNumbers;
  page.barsPerSystem = ClampTo<std::uint8_t>(parameters.barsPerSystem);
  page.beaming = ClampTo<std::uint8_t>(parameters.beaming);
  return options;
}

// What the score does not say as the MIDI file did.
std::vector<ItemLoss> LossesOf(const Transcription& made) {
  std::vector<ItemLoss> losses;
  const auto add = [&losses](TextId kind, std::uint32_t count) {
    if (count == 0) return;
    const std::string text(Text(kind));
    losses.push_back({.kind = text, .count = count, .line = std::to_string(count) + " " + text});
  };
  add(texts::LossDoubledNotes, made.doubled);
  add(texts::LossRespelledNotes, made.respelled);
  add(texts::LossWords, made.lostWords);
  add(texts::LossStaffless, made.staffless);
  constexpr std::pair<LeftOut, TextId> kLeftOut[] = {
      {LeftOut::Velocities, texts::LossVelocities},   {LeftOut::Bends, texts::LossBends},
      {LeftOut::Controllers, texts::LossControllers}, {LeftOut::Pressures, texts::LossPressures},
      {LeftOut::Programs, texts::LossPrograms},       {LeftOut::Exclusive, texts::LossExclusive},
      {LeftOut::Texts, texts::LossMidiTexts}};
  for (const auto& [kind, text] : kLeftOut) add(text, made.leftOut.Of(kind));
  return losses;
}

Outcome ConvertItem(const P& parameters, ItemWork& work) {
  const WorkWatch watch{[&work] { return work.Cancelled(); }, work.progress};
  const auto& midi = work.Prepared<MidiItem>();
  auto made = TranscribeMidi(midi.file, OptionsOf(parameters), watch);
  if (!made) {
    // A damaged file is told as such. Of format 0 it has that code too: its tracks are taken apart first.
    if (made.error() != Outcome::DamagedMidi || midi.kind == MidiFileKind::Format0) return made.error();
    work.line = std::string(Text(texts::RemarkDamagedMidi));
    return Outcome::SourceFailed;
  }
  converters::LossReport report;
  const converters::ScoreFormat format =
      converters::ScoreFormatOfName(work.targetName).value_or(converters::ScoreFormat::Score);
  const auto written = converters::WriteAnyScore(made->score, format, report, {watch.cancelled, {}});
  if (!written) return written.error();
  std::vector<ItemLoss> losses = LossesOf(*made);
  std::ranges::move(converters::ItemLosses(report), std::back_inserter(losses));
  return WriteWithLosses(work, *written, std::move(losses));
}

void RunMidiToScore(Run& run, const P& parameters) {
  ItemFilter filter;
  filter.independent = true;
  filter.prepare = [](const std::string& source) { return OpenMidiItem(source, kMostBytes); };
  filter.convert = [&parameters](ItemWork& work) { return ConvertItem(parameters, work); };
  RunItems(run, filter);
  AddLossRemarks(run.Result());
}

}  // namespace

std::span<const NumberRange> MidiToScoreNumbers() {
  return kNumbers;
}

Result<Bytes> ConvertMIDToSTV(ByteView midi, const MidiToScoreParameters& parameters,
                              const WorkWatch& watch) {
  const auto made = TranscribeMidi(midi, OptionsOf(parameters), watch);
  if (!made) return Failure(made.error());
  return WriteScore(made->score);
}

FilterModule MidiToScoreModule() {
  ModuleOf<P> module;
  module.id = FilterId::MidiToScore;
  module.fields = Fields();
  module.run = RunMidiToScore;
  module.target = [](const P&, const std::string&) {
    return TargetRule{.extension = std::string(kScoreExtension), .fileTypes = texts::FileFilterToScore};
  };
  module.stop.status = texts::Stopping;
  return MakeModule(std::move(module));
}

}  // namespace ts5::transcribe
