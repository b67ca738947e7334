// The buffer of a virtual recorder that takes its time: sectors go in as they come and out at the speed of
// writing. Without a clock of its own, so that tests turn it.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace ts5 {

class RecorderBuffer {
 public:
  using Time = std::chrono::steady_clock::time_point;
  enum class Taken : std::uint8_t { Yes, Full, RanDry };

  static constexpr double kBytes = 2.0 * 1024 * 1024;

  // bytesPerSecond: of writing.
  void Start(double bytesPerSecond) {
    *this = {};
    rate_ = bytesPerSecond;
  }
  // Data that arrive. RanDry: the laser had nothing to write since the last ones, and stopped.
  Taken Put(double bytes, Time now) {
    const bool ranDry = Drain(now);
    if (ranDry) writing_ = false;
    if (fill_ + bytes > kBytes) {
      writing_ = true;
      return Taken::Full;
    }
    fill_ += bytes;
    // The laser begins when there is a reserve.
    if (fill_ > kBytes / 2) writing_ = true;
    return ranDry ? Taken::RanDry : Taken::Yes;
  }
  // After the last data: what is left until all is on the disc.
  [[nodiscard]] std::chrono::duration<double> Rest(Time now) {
    writing_ = true;
    (void)Drain(now);
    return std::chrono::duration<double>(rate_ > 0 ? fill_ / rate_ : 0);
  }
  [[nodiscard]] double Blank() const { return kBytes - fill_; }

 private:
  // Whether the buffer ran empty on the way.
  bool Drain(Time now) {
    const double wanted = writing_ ? std::chrono::duration<double>(now - last_).count() * rate_ : 0;
    last_ = now;
    const bool ranDry = writing_ && wanted > fill_ && fill_ >= 0 && started_;
    if (writing_) started_ = true;
    fill_ = std::max(0.0, fill_ - wanted);
    return ranDry;
  }

  double rate_ = 0;
  double fill_ = 0;
  bool writing_ = false;
  bool started_ = false;
  Time last_ = {};
};

}  // namespace ts5
