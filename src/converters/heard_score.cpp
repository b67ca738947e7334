#include "converters/heard_score.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "converters/item_losses.h"
#include "converters/score_formats.h"
#include "converters/tempo_systems.h"
#include "converters/texts.h"
#include "score/score_bars.h"
#include "score/score_writer.h"

namespace ts5::converters {
namespace {

// What a reader leaves out of the sound, and what a score file does.
constexpr TextId kUnheard[] = {texts::LossTieEnd,    texts::LossMicrotone,   texts::LossVoice,
                               texts::LossTranspose, texts::LossInstruments, texts::LossLength,
                               texts::LossStaffTime};
constexpr TextId kUnheardOfFile[] = {texts::LossTuplet, texts::LossNoteTie, texts::LossDynamic,
                                     texts::LossRepeats};

bool IsOneOf(const ScoreLoss& loss, std::span<const TextId> kinds) {
  return std::ranges::find(kinds, loss.kind) != kinds.end();
}

bool BeginsSystem(const ScoreMusic& music, Fraction at) {
  const std::uint32_t bar = BarAt(music, at);
  return bar < music.bars.size() && music.bars[bar].start == at &&
         (bar == 0 || music.bars[bar].system != music.bars[bar - 1].system);
}

// The score file, with its tempos where they are written; those that it cannot have so are added to the
// report.
Bytes FileOf(const ScoreDocument& document, const ScoreMusic& music, LossReport& losses) {
  const auto isWithin = [&music](const ScoreTempo& tempo) { return !BeginsSystem(music, tempo.at); };
  std::vector<ScoreTempo> left;
  Bytes file;
  if (std::ranges::any_of(music.tempos, isWithin)) {
    ScoreDocument divided = document;
    left = BeginSystemsAtTempos(divided, music);
    file = WriteScore(divided);
  } else {
    file = WriteScore(document);
  }
  for (const ScoreTempo& tempo : music.tempos) {
    const auto bar = static_cast<int>(BarAt(music, tempo.at));
    if (std::ranges::find(left, tempo.at, &ScoreTempo::at) != left.end()) {
      losses.Add(texts::LossTempo, bar);
    } else if (std::abs(tempo.quarters - std::round(tempo.quarters)) > 1e-6) {
      losses.Add(texts::LossTempoRounded, bar);
    }
  }
  return file;
}

}  // namespace

Result<ScoreImage> HeardScore(Bytes file, const CancelCheck& cancelled) {
  const auto format = ScoreFormatOf(file);
  if (!format || *format == ScoreFormat::Score) return ScoreImage{std::move(file)};
  auto score = ReadAnyScore(file, cancelled, ScoreDetail::Music);
  if (!score) return Failure(score.error().code);
  file = {};
  LossReport ofFile;
  ReportScoreFileLosses(score->document, ofFile, cancelled);
  ofFile.Keep([](const ScoreLoss& loss) { return IsOneOf(loss, kUnheardOfFile); });
  SayTimesInWords(score->document);
  const ScoreMusic music = ReadMusic(score->document, cancelled);
  if (cancelled && cancelled()) return Failure(Outcome::Cancelled);
  ScoreImage image{FileOf(score->document, music, ofFile)};
  score->losses.Keep([](const ScoreLoss& loss) { return IsOneOf(loss, kUnheard); });
  score->losses.NamePlaces(score->document, music);
  image.losses = ItemLosses(score->losses);
  image.engineLosses = ItemLosses(ofFile);
  image.document = std::make_shared<const ScoreDocument>(std::move(score->document));
  return image;
}

}  // namespace ts5::converters
