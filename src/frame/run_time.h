// How long a run takes: what is left of it, from what was done. Work is measured in items and bytes, as a
// file costs something by itself and something by its size; which counts how much comes out while it is done.
//
// Pure: the times are handed in. Not thread-safe.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace ts5 {

class RunTime {
 public:
  using Time = std::chrono::steady_clock::time_point;

  explicit RunTime(Time start) : start_(start), resumed_(start) {}

  // The sizes of all items in bytes; without them all items count the same.
  void SetSizes(const std::vector<std::uint64_t>& sizes);

  // While the run waits for an answer or is paused it does no work. A second Pause changes nothing.
  void Pause(Time now);
  void Resume(Time now);

  // item: number of the item at work, from 1; fraction of it, 0 to 1.
  void Reached(std::uint32_t item, std::uint32_t items, double fraction, Time now);
  // The same for a run whose work is not that of its items: 0 to 1.
  void Reached(double whole, Time now);

  // Since the start, waiting included.
  [[nodiscard]] std::chrono::milliseconds Elapsed(Time now) const;
  // What the rest will take. Nothing as long as that is uncertain: in the first seconds and percents, and
  // while one estimate contradicts the next.
  [[nodiscard]] std::optional<std::chrono::milliseconds> Remaining() const;

 private:
  struct Work {
    double items = 0;
    double bytes = 0;  // in units of the mean size, so that both are of one magnitude
  };
  struct Estimate {
    double worked;  // seconds
    double total;
  };

  [[nodiscard]] double Worked(Time now) const;  // seconds without the waiting
  [[nodiscard]] Work DoneAt(std::uint32_t item, double fraction) const;
  void Take(const Work& done, const Work& all, Time now);
  [[nodiscard]] double SecondsOf(const Work& work) const;
  void Learn(const Work& step, double seconds);

  Time start_;
  Time resumed_;
  double workedBefore_ = 0;
  bool paused_ = false;
  std::vector<double> bytesBefore_;  // of each item, and behind it the sum

  Work sampled_;  // up to the last sample
  double sampledAt_ = 0;
  // Sums over the samples, for the least squares of seconds = a * items + b * bytes.
  double ii_ = 0, ib_ = 0, bb_ = 0, it_ = 0, bt_ = 0;
  std::deque<Estimate> estimates_;
  double share_ = 0;  // done of the whole
};

// "0:42" or "1:02:07"; with what is left behind it, ", noch etwa 1:20", rounded as an estimate should be.
[[nodiscard]] std::string TimeText(std::chrono::milliseconds elapsed,
                                   std::optional<std::chrono::milliseconds> remaining);
// What is left alone: "noch etwa 1:20", "noch wenige Sekunden"; "" when it is not known.
[[nodiscard]] std::string RemainingText(std::optional<std::chrono::milliseconds> remaining);

}  // namespace ts5
