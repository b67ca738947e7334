// What an audio device plays: the thread that decodes puts samples in, the device's thread takes them out.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>

#include "frame/level_meter.h"
#include "frame/player_control.h"
#include "platform/sound/audio_out.h"
#include "platform/sound/sample_fifo.h"

namespace ts5 {

inline constexpr std::uint32_t kPlayerChannels = 2;

class PlayerStream {
 public:
  PlayerStream(std::uint32_t sampleRate, LevelTap& levels);

  // On the device's thread.
  void Render(std::span<float> out);

  // From any thread. Decibels as loudness controls have them: the balance takes from the other side.
  void SetSound(PlayerSound sound);
  void SetPaused(bool paused) { paused_ = paused; }

  // By the thread that decodes. Forgets what was put in and waits until the device has let go of it.
  void Restart(const AudioOutput& output);
  SampleFifo& Fifo() { return fifo_; }
  [[nodiscard]] bool HasEnoughToBegin() const;
  [[nodiscard]] std::uint32_t Rate() const { return rate_; }
  [[nodiscard]] std::uint64_t Played() const { return played_; }  // frames since the last Restart

 private:
  std::uint32_t rate_;
  LevelTap& levels_;
  SampleFifo fifo_;
  std::atomic<bool> flush_ = false;
  std::atomic<bool> paused_ = false;
  std::atomic<float> left_ = 1;
  std::atomic<float> right_ = 1;
  float gain_[kPlayerChannels] = {1, 1};
  std::atomic<std::uint64_t> played_ = 0;
};

// An open device with the stream that it plays.
struct PlayerSoundDevice {
  PlayerSoundDevice(std::uint32_t sampleRate, LevelTap& levels) : stream(sampleRate, levels) {}
  // The device begins when there is something to play.
  [[nodiscard]] bool Start() {
    if (!started) started = Succeeded(output->Start());
    return started;
  }
  // What was decoded and has not been played.
  void Forget() { started ? stream.Restart(*output) : stream.Fifo().Drop(); }

  PlayerStream stream;
  std::unique_ptr<AudioOutput> output;  // dies first
  bool started = false;
};

}  // namespace ts5
