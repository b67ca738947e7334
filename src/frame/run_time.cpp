#include "frame/run_time.h"

#include <algorithm>
#include <cmath>

#include "frame/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

using std::chrono::duration;
using std::chrono::milliseconds;

constexpr double kFirstSeconds = 2;     // of work before anything is said
constexpr double kFirstShare = 0.02;    // likewise of the whole
constexpr double kSampleSeconds = 0.1;  // what comes closer together is one sample
// Estimates that came in the last part of the time so far must agree so far.
constexpr double kRecentPart = 0.4;
constexpr double kAgreement = 1.25;
constexpr double kItemsForBoth = 20;

double Seconds(RunTime::Time::duration time) {
  return duration<double>(time).count();
}

std::string ClockText(std::int64_t seconds) {
  const std::int64_t hours = seconds / 3600;
  if (hours > 0) return Format("%i:%02i:%02i", hours, seconds / 60 % 60, seconds % 60);
  return Format("%i:%02i", seconds / 60, seconds % 60);
}

}  // namespace

void RunTime::SetSizes(const std::vector<std::uint64_t>& sizes) {
  double sum = 0;
  for (const std::uint64_t size : sizes) sum += static_cast<double>(size);
  bytesBefore_.clear();
  if (sum <= 0) return;
  const double mean = sum / static_cast<double>(sizes.size());
  bytesBefore_.reserve(sizes.size() + 1);
  double before = 0;
  for (const std::uint64_t size : sizes) {
    bytesBefore_.push_back(before);
    before += static_cast<double>(size) / mean;
  }
  bytesBefore_.push_back(before);
}

double RunTime::Worked(Time now) const {
  return workedBefore_ + (paused_ ? 0 : Seconds(now - resumed_));
}

void RunTime::Pause(Time now) {
  if (paused_) return;
  workedBefore_ = Worked(now);
  paused_ = true;
}

void RunTime::Resume(Time now) {
  if (!paused_) return;
  paused_ = false;
  resumed_ = now;
}

RunTime::Work RunTime::DoneAt(std::uint32_t item, double fraction) const {
  if (item == 0) return {};
  Work done{.items = item - 1 + fraction};
  if (item < bytesBefore_.size()) {
    const double before = bytesBefore_[item - 1];
    done.bytes = before + (bytesBefore_[item] - before) * fraction;
  }
  return done;
}

void RunTime::Reached(std::uint32_t item, std::uint32_t items, double fraction, Time now) {
  if (items == 0) return;
  Take(DoneAt(item, fraction), DoneAt(items, 1), now);
}

void RunTime::Reached(double whole, Time now) {
  Take({.items = whole}, {.items = 1}, now);
}

void RunTime::Take(const Work& done, const Work& all, Time now) {
  const double worked = Worked(now);
  share_ = all.items > 0 ? done.items / all.items : 0;
  if (worked - sampledAt_ < kSampleSeconds) return;
  Learn({done.items - sampled_.items, done.bytes - sampled_.bytes}, worked - sampledAt_);
  sampled_ = done;
  sampledAt_ = worked;
  const double told = SecondsOf(done);
  if (told <= 0) return;
  // What was learned tells how the rest compares with what is done, whose time is known.
  estimates_.push_back({worked, worked * SecondsOf(all) / told});
  while (estimates_.front().worked < worked * (1 - kRecentPart)) estimates_.pop_front();
}

void RunTime::Learn(const Work& step, double seconds) {
  ii_ += step.items * step.items;
  ib_ += step.items * step.bytes;
  bb_ += step.bytes * step.bytes;
  it_ += step.items * seconds;
  bt_ += step.bytes * seconds;
}

double RunTime::SecondsOf(const Work& work) const {
  // A few items do not tell what a file costs by itself: then size is all.
  if (sampled_.items < kItemsForBoth && bb_ > 0) return bt_ / bb_ * work.bytes;
  const double determinant = ii_ * bb_ - ib_ * ib_;
  double perItem = ii_ > 0 ? it_ / ii_ : 0;
  double perByte = 0;
  // Sizes that are all alike tell nothing of what size costs.
  if (determinant > 1e-3 * ii_ * bb_) {
    perItem = (it_ * bb_ - bt_ * ib_) / determinant;
    perByte = (bt_ * ii_ - it_ * ib_) / determinant;
    if (perItem < 0) {
      perItem = 0;
      perByte = bt_ / bb_;
    } else if (perByte < 0) {
      perItem = it_ / ii_;
      perByte = 0;
    }
  }
  return perItem * work.items + perByte * work.bytes;
}

milliseconds RunTime::Elapsed(Time now) const {
  return std::chrono::duration_cast<milliseconds>(now - start_);
}

std::optional<milliseconds> RunTime::Remaining() const {
  if (estimates_.empty() || share_ < kFirstShare) return std::nullopt;
  const Estimate& last = estimates_.back();
  if (last.worked < kFirstSeconds) return std::nullopt;
  const auto [least, most] = std::ranges::minmax(estimates_, {}, &Estimate::total);
  if (most.total > kAgreement * least.total) return std::nullopt;
  return milliseconds(std::llround(1000 * std::max(0.0, last.total - last.worked)));
}

std::string RemainingText(std::optional<milliseconds> remaining) {
  if (!remaining) return {};
  const std::int64_t seconds = (remaining->count() + 999) / 1000;
  if (seconds <= 5) return std::string(Text(texts::RunSecondsLeft));
  const std::int64_t step = seconds < 60 ? 5 : seconds < 600 ? 10 : 60;
  return Format(Text(texts::RunTimeLeft), ClockText((seconds + step - 1) / step * step));
}

std::string TimeText(milliseconds elapsed, std::optional<milliseconds> remaining) {
  std::string text = ClockText(elapsed.count() / 1000);
  if (const std::string left = RemainingText(remaining); !left.empty()) text.append(", ").append(left);
  return text;
}

}  // namespace ts5
