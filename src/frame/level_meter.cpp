#include "frame/level_meter.h"

#include <algorithm>
#include <cmath>

namespace ts5 {
namespace {

constexpr double kRmsSeconds = 0.3;
constexpr double kFall = 20;  // dB per second
constexpr double kHoldSeconds = 1.5;
constexpr double kOverSeconds = 2;
constexpr float kOver = 0.99997F;  // the greatest 16-bit sample counts as full scale

}  // namespace

double Decibels(double amplitude) {
  return amplitude <= 0 ? kMeterFloor : std::max(20 * std::log10(amplitude), kMeterFloor);
}

double MeterPlace(double decibels) {
  return std::clamp(1 - decibels / kMeterFloor, 0.0, 1.0);
}

void LevelTap::Add(std::span<const float> interleaved, std::uint32_t channels, std::uint32_t sampleRate) {
  if (channels == 0 || sampleRate == 0) return;
  const std::size_t frames = interleaved.size() / channels;
  if (frames == 0) return;
  const auto keep = static_cast<float>(std::exp(-static_cast<double>(frames) / (kRmsSeconds * sampleRate)));
  for (std::size_t channel = 0; channel < kMeterChannels; ++channel) {
    float peak = 0;
    float sum = 0;
    for (std::size_t i = std::min<std::size_t>(channel, channels - 1); i < interleaved.size();
         i += channels) {
      const float sample = interleaved[i];
      peak = std::max(peak, std::abs(sample));
      sum += sample * sample;
    }
    float before = peak_[channel].load(std::memory_order_relaxed);
    while (before < peak && !peak_[channel].compare_exchange_weak(before, peak, std::memory_order_relaxed)) {
    }
    const float square = square_[channel].load(std::memory_order_relaxed);
    const float mean = sum / static_cast<float>(frames);
    square_[channel].store(square * keep + mean * (1 - keep), std::memory_order_relaxed);
  }
}

void LevelTap::Silence() {
  for (auto& peak : peak_) peak = 0;
  for (auto& square : square_) square = 0;
}

LevelReading LevelTap::Take() {
  LevelReading reading;
  for (std::size_t channel = 0; channel < kMeterChannels; ++channel) {
    reading.peak[channel] = peak_[channel].exchange(0, std::memory_order_relaxed);
    reading.rms[channel] = std::sqrt(square_[channel].load(std::memory_order_relaxed));
  }
  return reading;
}

bool MeterBallistics::Update(const LevelReading& reading, std::chrono::duration<double> elapsed) {
  const Shown before = shown_;
  const double seconds = elapsed.count();
  for (std::size_t i = 0; i < kMeterChannels; ++i) {
    Channel& channel = shown_[i];
    const double peak = Decibels(reading.peak[i]);
    const auto fallen = [seconds](double level) { return std::max(level - kFall * seconds, kMeterFloor); };
    channel.peak = std::max(peak, fallen(channel.peak));
    channel.rms = Decibels(reading.rms[i]);
    if (peak >= channel.hold) {
      channel.hold = peak;
      holdLeft_[i] = peak > kMeterFloor ? kHoldSeconds : 0;
    } else if ((holdLeft_[i] -= seconds) <= 0) {
      channel.hold = std::max(fallen(channel.hold), channel.peak);
    }
    overLeft_[i] = reading.peak[i] >= kOver ? kOverSeconds : std::max(overLeft_[i] - seconds, 0.0);
    channel.over = overLeft_[i] > 0;
  }
  return shown_ != before;
}

}  // namespace ts5
