#include "converters/heard_score.h"

#include <algorithm>
#include <span>

#include "converters/item_losses.h"
#include "converters/score_formats.h"
#include "converters/texts.h"
#include "score/score_writer.h"

namespace ts5 {
namespace {

// What a reader leaves out of the sound, and what a score file does.
constexpr TextId kUnheard[] = {texts::LossTieEnd,    texts::LossMicrotone,   texts::LossVoice,
                               texts::LossTranspose, texts::LossInstruments, texts::LossLength,
                               texts::LossStaffTime};
constexpr TextId kUnheardOfFile[] = {texts::LossTempo,   texts::LossTempoRounded, texts::LossTuplet,
                                     texts::LossNoteTie, texts::LossDynamic,      texts::LossRepeats};

std::vector<ItemLoss> LossesOf(const LossReport& report, std::span<const TextId> kinds) {
  LossReport heard;
  heard.Add(report);  // with the names of its places
  heard.Keep([kinds](const ScoreLoss& loss) { return std::ranges::find(kinds, loss.kind) != kinds.end(); });
  return ItemLosses(heard);
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
  if (cancelled && cancelled()) return Failure(Outcome::Cancelled);
  SayTimesInWords(score->document);
  ScoreImage image{WriteScore(score->document)};
  image.losses = LossesOf(score->losses, kUnheard);
  image.engineLosses = LossesOf(ofFile, kUnheardOfFile);
  image.document = std::make_shared<const ScoreDocument>(std::move(score->document));
  return image;
}

}  // namespace ts5
