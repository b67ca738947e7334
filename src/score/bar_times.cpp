#include "score/bar_times.h"

#include <algorithm>
#include <utility>

namespace ts5 {

std::vector<std::chrono::nanoseconds> BarTimes(const OpenScore& score, const PlaybackParameters& parameters,
                                               bool repeats, const CancelCheck& cancelled) {
  std::vector<std::chrono::nanoseconds> bars;
  ScoreOptions options;
  options.repeats = repeats;
  options.leadIn = score.scan.leadIn;
  ScoreEngine engine(score.file, score.info, score.voices, parameters, std::move(options), nullptr);
  if (Failed(engine.Begin())) return bars;
  std::uint64_t last = 0;  // 100 ns, as all of the engine's times
  bars.emplace_back(0);
  std::uint32_t bar = engine.Position().bar;
  while (!engine.AtEnd() && bars.size() < kMostBarTimes && !(cancelled && cancelled())) {
    if (Failed(engine.Step())) break;
    const ScorePosition now = engine.Position();
    if (now.bar == bar) continue;
    // Where nothing happens several bars go by at once, all of the same length.
    const std::uint64_t crossed = now.bar > bar ? now.bar - bar : 1;
    // A step may last a part of a unit longer: rather a little early than behind the first note of the bar.
    const std::uint64_t within = now.tick * (std::uint64_t{StepTime(engine.Tempo())} + 1) / kScoreStep;
    const std::uint64_t begin = std::max(last, engine.ScoreTime() - std::min(within, engine.ScoreTime()));
    for (std::uint64_t i = 1; i <= crossed && bars.size() < kMostBarTimes; ++i)
      bars.emplace_back(static_cast<std::int64_t>((last + (begin - last) * i / crossed) * 100));
    last = begin;
    bar = now.bar;
  }
  return bars;
}

}  // namespace ts5
