#include "converters/transcribe/beats.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>

#include "converters/transcribe/quantise.h"

namespace ts5::transcribe {
namespace {

constexpr double kFrame = 0.01;          // seconds
constexpr double kLongest = 4 * 3600.0;  // what is tracked, seconds
constexpr double kUsualBeat = 0.55;      // seconds, about 110 a minute
constexpr double kShortestBeat = 0.30;
constexpr double kLongestBeat = 1.2;
constexpr double kTightness = 400;
constexpr std::size_t kFewestNotes = 16;
constexpr std::size_t kReach = 4;    // frames around an onset that it is heard in
constexpr std::size_t kTail = 100;   // frames behind the last onset
constexpr std::size_t kPause = 400;  // frames of silence behind them that the beat is followed through
constexpr std::size_t kFramesBetween = 1U << 14;  // two looks at the stop

// Onsets and ends over the seconds of the file's own tempo.
class Clock {
 public:
  explicit Clock(const Performance& performance) : division_(static_cast<double>(performance.division)) {
    points_.push_back({0, 0, TempoChange{}.quarter / 1e6});
    for (const TempoChange& change : performance.tempos) {
      const double at = static_cast<double>(change.at);
      points_.push_back({at, Seconds(at), change.quarter / 1e6});
    }
  }
  [[nodiscard]] double Seconds(double tick) const {
    auto point = std::ranges::upper_bound(points_, tick, {}, &Point::tick);
    if (point != points_.begin()) --point;
    return point->seconds + (tick - point->tick) / division_ * point->quarter;
  }
  [[nodiscard]] double Tick(double seconds) const {
    auto point = std::ranges::upper_bound(points_, seconds, {}, &Point::seconds);
    if (point != points_.begin()) --point;
    return point->tick + (seconds - point->seconds) / point->quarter * division_;
  }

 private:
  struct Point {
    double tick = 0;
    double seconds = 0;
    double quarter = 0.5;
  };
  double division_;
  std::vector<Point> points_;
};

// How strongly notes begin at each frame. What long silence parts is a stretch of its own, so that the work
// follows the notes and not the hours between them.
struct Stretch {
  std::size_t first = 0;  // frame
  std::vector<double> strength;

  [[nodiscard]] std::size_t End() const { return first + strength.size(); }
};

struct Onset {
  double at = 0;  // frames
  double weight = 0;
};

std::vector<Onset> OnsetsOf(const Performance& performance, const Clock& clock) {
  std::vector<Onset> onsets;
  for (const PlayedPart& part : performance.parts) {
    for (const PlayedNote& note : part.notes) {
      const double at = clock.Seconds(static_cast<double>(note.start)) / kFrame;
      if (at > kLongest / kFrame) break;
      const double length = clock.Seconds(static_cast<double>(note.end)) / kFrame - at;
      // Long, loud and low notes stand on beats more often.
      onsets.push_back({at, (0.5 + note.velocity / 127.0) * (0.6 + std::min(length, 100.0) / 100.0) *
                                (note.key < 55 ? 1.3 : 1.0)});
    }
  }
  std::ranges::stable_sort(onsets, {}, &Onset::at);
  return onsets;
}

std::vector<Stretch> StretchesOf(const std::vector<Onset>& onsets) {
  std::vector<Stretch> stretches;
  for (const Onset& onset : onsets) {
    const auto centre = static_cast<std::size_t>(onset.at);
    if (stretches.empty() || centre > stretches.back().End() + kPause) {
      const std::size_t before = stretches.empty() ? kPause : kReach;
      stretches.push_back({centre - std::min(centre, before), {}});
    }
    Stretch& stretch = stretches.back();
    stretch.strength.resize(centre - stretch.first + kTail);
    for (std::size_t i = centre - std::min(centre, kReach); i <= centre + kReach; ++i) {
      const double distance = static_cast<double>(i) - onset.at;
      stretch.strength[i - stretch.first] += onset.weight * std::exp(-distance * distance / 4.5);
    }
  }
  return stretches;
}

// Frames between beats: where the strengths agree most with themselves, weighted by what is usual.
std::size_t BeatDistance(const std::vector<Stretch>& stretches, const CancelCheck& cancelled) {
  const auto shortest = static_cast<std::size_t>(kShortestBeat / kFrame);
  const auto longest = static_cast<std::size_t>(kLongestBeat / kFrame);
  std::vector<double> agreement(longest * 2 + 2);
  for (const Stretch& stretch : stretches) {
    const std::vector<double>& strength = stretch.strength;
    for (std::size_t i = shortest; i < strength.size(); ++i) {
      if (i % kFramesBetween == 0 && cancelled && cancelled()) return shortest;
      if (strength[i] == 0) continue;
      for (std::size_t lag = shortest; lag < agreement.size() && lag <= i; ++lag)
        agreement[lag] += strength[i] * strength[i - lag];
    }
  }
  std::size_t best = shortest;
  double most = 0;
  for (std::size_t lag = shortest; lag <= longest; ++lag) {
    const double octaves = std::log2(static_cast<double>(lag) * kFrame / kUsualBeat);
    const double whole =
        agreement[lag] + 0.5 * agreement[lag * 2] + 0.25 * (agreement[lag * 2 - 1] + agreement[lag * 2 + 1]);
    const double score = whole * std::exp(-0.5 * octaves * octaves / (0.8 * 0.8));
    if (score > most) {
      most = score;
      best = lag;
    }
  }
  return best;
}

double ScaleOf(const std::vector<Stretch>& stretches) {
  double squares = 0;
  double count = 0;
  for (const Stretch& stretch : stretches) {
    for (const double value : stretch.strength) squares += value * value;
    count += static_cast<double>(stretch.strength.size());
  }
  return 1 / std::max(std::sqrt(squares / count), 1e-9);
}

// A beat with the strength there.
struct Beat {
  std::size_t frame = 0;
  double strength = 0;
};

class BeatFinder {
 public:
  BeatFinder(std::size_t distance, double scale)
      : distance_(distance), scale_(scale), penalty_(distance * 2 + 1) {
    for (std::size_t lag = distance / 2; lag < penalty_.size(); ++lag) {
      const double change = std::log(static_cast<double>(lag) / static_cast<double>(distance));
      penalty_[lag] = -kTightness * change * change / 4;
    }
  }

  // Behind the beats so far; the silence between is counted through.
  [[nodiscard]] bool Add(const Stretch& stretch, const CancelCheck& cancelled) {
    const std::vector<double>& strength = stretch.strength;
    std::vector<double> score(strength.size());
    std::vector<std::int64_t> before(strength.size(), -1);
    for (std::size_t i = 0; i < strength.size(); ++i) {
      if (i % kFramesBetween == 0 && cancelled && cancelled()) return false;
      double best = 0;
      for (std::size_t lag = distance_ / 2; lag < penalty_.size() && lag <= i; ++lag) {
        const double value = score[i - lag] + penalty_[lag];
        if (value > best) {
          best = value;
          before[i] = static_cast<std::int64_t>(i - lag);
        }
      }
      score[i] = best + strength[i] * scale_;
    }
    const std::size_t tail = std::min(score.size(), distance_);
    const auto last = std::max_element(score.end() - static_cast<std::ptrdiff_t>(tail), score.end());
    std::vector<Beat> found;
    for (std::int64_t i = last - score.begin(); i >= 0; i = before[static_cast<std::size_t>(i)])
      found.push_back({stretch.first + static_cast<std::size_t>(i), strength[static_cast<std::size_t>(i)]});
    if (!beats_.empty()) CountTo(found.back().frame);
    beats_.insert(beats_.end(), found.rbegin(), found.rend());
    return true;
  }

  [[nodiscard]] const std::vector<Beat>& Beats() const { return beats_; }

 private:
  void CountTo(std::size_t frame) {
    const std::size_t from = beats_.back().frame;
    if (frame < from + distance_) beats_.pop_back();
    const std::size_t beats = (frame - from + distance_ / 2) / distance_;
    for (std::size_t i = 1; i < beats; ++i) beats_.push_back({from + (frame - from) * i / beats, 0});
  }

  std::size_t distance_;
  double scale_;
  std::vector<double> penalty_;
  std::vector<Beat> beats_;
};

// How far the strengths at beats b, b + period, ... stand out: the first beat of the bar.
std::size_t Downbeat(const std::vector<Beat>& beats, std::size_t period) {
  std::vector<double> sums(period);
  for (std::size_t i = 0; i < beats.size(); ++i) sums[i % period] += beats[i].strength;
  return static_cast<std::size_t>(std::ranges::max_element(sums) - sums.begin());
}

}  // namespace

double BeatMap::Quarters(std::int64_t tick) const {
  if (beats_.empty()) return static_cast<double>(tick) / static_cast<double>(division_);
  const double at = static_cast<double>(tick);
  auto next = std::ranges::upper_bound(beats_, at);
  next = std::clamp(next, beats_.begin() + 1, beats_.end() - 1);
  const double from = *std::prev(next);
  return static_cast<double>(std::prev(next) - beats_.begin()) + (at - from) / std::max(*next - from, 1e-9);
}

double BeatMap::Tempo(std::size_t beat) const {
  const std::size_t to = std::min(beat + 8, seconds_.size() - 1);
  const double seconds = to <= beat ? 0 : seconds_[to] - seconds_[beat];
  return seconds <= 0 ? 120 : 60 * static_cast<double>(to - beat) / seconds;
}

bool KeepsToTicks(const Performance& performance, const CancelCheck& cancelled) {
  std::vector<RawOnset> onsets;
  for (const PlayedPart& part : performance.parts) {
    for (const PlayedNote& note : part.notes)
      onsets.push_back(
          {static_cast<double>(note.start) / static_cast<double>(performance.division), note.key});
  }
  if (MeasureTiming(onsets, 1 / static_cast<double>(performance.division), 1).exact) return true;
  // Onsets as angles within parts of a quarter note: they point the same way when they keep to it.
  constexpr std::array<double, 5> kParts = {1, 2, 3, 4, 6};
  double best = 0;
  std::size_t count = 0;
  for (const double parts : kParts) {
    std::complex<double> sum;
    count = 0;
    for (const PlayedPart& part : performance.parts) {
      if (cancelled && cancelled()) return true;
      for (const PlayedNote& note : part.notes) {
        const double place = static_cast<double>(note.start % performance.division) /
                             static_cast<double>(performance.division);
        sum += std::polar(1.0, 2 * std::numbers::pi * parts * place);
        ++count;
      }
    }
    if (count > 0) best = std::max(best, std::abs(sum) / static_cast<double>(count));
  }
  return count < kFewestNotes || best > 0.2 + 2 / std::sqrt(static_cast<double>(count));
}

std::vector<double> FindBeats(const Performance& performance, const CancelCheck& cancelled) {
  std::size_t notes = 0;
  for (const PlayedPart& part : performance.parts) notes += part.notes.size();
  if (notes < kFewestNotes) return {};
  const Clock clock(performance);
  const std::vector<Stretch> stretches = StretchesOf(OnsetsOf(performance, clock));
  if (stretches.empty()) return {};
  BeatFinder finder(BeatDistance(stretches, cancelled), ScaleOf(stretches));
  for (const Stretch& stretch : stretches) {
    if (!finder.Add(stretch, cancelled)) return {};
  }
  const std::vector<Beat>& row = finder.Beats();
  if (row.size() < 4) return {};
  const ScoreTimeSignature time =
      performance.signatures.empty() ? ScoreTimeSignature{} : performance.signatures.front().time;
  const std::size_t period = time.power == 2 && time.numerator > 1 ? time.numerator : 4U;
  const std::size_t down = Downbeat(row, std::min<std::size_t>(period, row.size()));
  // Beats before the first downbeat get a bar of their own.
  std::vector<double> beats;
  const auto first = static_cast<double>(row[0].frame);
  const double distance = static_cast<double>(row[1].frame - row[0].frame);
  for (std::size_t i = down == 0 ? 0 : period - down; i > 0; --i)
    beats.push_back(clock.Tick((first - static_cast<double>(i) * distance) * kFrame));
  for (const Beat& beat : row) beats.push_back(clock.Tick((static_cast<double>(beat.frame) + 0.5) * kFrame));
  return beats;
}

BeatMap MapBeats(const Performance& performance, const CancelCheck& cancelled) {
  if (!KeepsToTicks(performance, cancelled)) {
    if (std::vector<double> beats = FindBeats(performance, cancelled); beats.size() > 1) {
      const Clock clock(performance);
      std::vector<double> seconds;
      for (const double tick : beats) seconds.push_back(clock.Seconds(tick));
      return {std::move(beats), std::move(seconds)};
    }
  }
  return BeatMap(performance.division);
}

}  // namespace ts5::transcribe
