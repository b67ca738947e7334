#include "score/score_image.h"

#include <atomic>

namespace ts5 {
namespace {

std::atomic<ScoreImageReader> installed = nullptr;

}  // namespace

void SetScoreImageReader(ScoreImageReader reader) {
  installed = reader;
}

Result<Bytes> ScoreImage(Bytes file, const CancelCheck& cancelled) {
  const ScoreImageReader reader = installed;
  if (reader == nullptr) return file;
  return reader(std::move(file), cancelled);
}

}  // namespace ts5
