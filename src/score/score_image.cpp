#include "score/score_image.h"

#include <atomic>

namespace ts5 {
namespace {

std::atomic<ScoreImageReader> installed = nullptr;

}  // namespace

void SetScoreImageReader(ScoreImageReader reader) {
  installed = reader;
}

Result<ScoreImage> ReadScoreImage(Bytes file, const CancelCheck& cancelled) {
  const ScoreImageReader reader = installed;
  if (reader == nullptr) return ScoreImage{std::move(file)};
  return reader(std::move(file), cancelled);
}

}  // namespace ts5
