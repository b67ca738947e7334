// The level meter of the players: peak and RMS of both channels, measured where the stream passes and shown
// with the ballistics of a peak programme meter.
//
// Levels are in decibels of full scale; a full-scale square wave has a peak and an RMS of 0 dB.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ts5 {

inline constexpr std::size_t kMeterChannels = 2;
inline constexpr double kMeterFloor = -60;  // the low end of the scale; silence is shown there

// 0 to 1 along the scale.
[[nodiscard]] double MeterPlace(double decibels);
[[nodiscard]] double Decibels(double amplitude);  // kMeterFloor at the least

struct LevelReading {
  std::array<float, kMeterChannels> peak{};  // amplitude since the last reading, may exceed 1
  std::array<float, kMeterChannels> rms{};   // amplitude, over the last 300 ms
};

// One thread adds, another reads; neither waits for the other.
class LevelTap {
 public:
  // Interleaved samples of so many channels (1 or 2; mono counts for both).
  void Add(std::span<const float> interleaved, std::uint32_t channels, std::uint32_t sampleRate);
  // Nothing sounds any more.
  void Silence();
  [[nodiscard]] LevelReading Take();

 private:
  std::array<std::atomic<float>, kMeterChannels> peak_{};
  std::array<std::atomic<float>, kMeterChannels> square_{};  // smoothed
};

// What a meter shows: it rises at once and falls at 20 dB a second; the greatest peak stays for 1.5 s, then
// falls as well. Full scale and above is remembered for 2 s.
class MeterBallistics {
 public:
  struct Channel {
    double peak = kMeterFloor;
    double rms = kMeterFloor;
    double hold = kMeterFloor;
    bool over = false;
    bool operator==(const Channel&) const = default;
  };
  using Shown = std::array<Channel, kMeterChannels>;

  // True when what is shown has changed.
  bool Update(const LevelReading& reading, std::chrono::duration<double> elapsed);
  [[nodiscard]] const Shown& Levels() const { return shown_; }

 private:
  Shown shown_{};
  std::array<double, kMeterChannels> holdLeft_{};  // seconds
  std::array<double, kMeterChannels> overLeft_{};
};

}  // namespace ts5
