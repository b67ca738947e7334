// One title of the audio player: it is decoded ahead of what sounds, on the thread that plays it.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "audio/played_frames.h"
#include "audio/player_stream.h"
#include "frame/player_run.h"
#include "platform/media/pcm_stream.h"
#include "platform/media/tempo_change.h"

namespace ts5 {

class AudioTitle final : public PlayedTitle {
 public:
  // The source has the shape of the device's stream. name: "" for the name of the file.
  AudioTitle(std::unique_ptr<PcmSource> source, PlayerSoundDevice& sound, std::string name);

  // Shows the outline of a file; a disc would have to be in two places for it.
  void ReportWaveform(std::string path, PlayerControl& control);

  Outcome Play(std::chrono::nanoseconds end) override;
  void Stop() override { stop_ = true; }
  void Pause() override;
  void Resume() override;
  void Seek(std::chrono::nanoseconds position) override;
  void Practise(const Practice& practice) override;
  std::chrono::nanoseconds Position() const override;
  std::chrono::nanoseconds Duration() const override { return TimeOf(frames_); }
  std::string Name() const override { return name_; }

 private:
  struct Passage {
    std::uint64_t from = 0;
    std::uint64_t to = 0;
  };

  [[nodiscard]] std::chrono::nanoseconds TimeOf(std::uint64_t frame) const;
  [[nodiscard]] std::uint64_t FrameAt(std::chrono::nanoseconds time) const;
  [[nodiscard]] std::uint64_t PlayedFrame() const;
  // What was asked for since the last time: a place to go to, and the practice that holds from there.
  [[nodiscard]] std::optional<std::uint64_t> TakeOrders();
  void GoTo(std::uint64_t frame);
  // The next block of the title into the stream, through the tempo change where there is one. Nothing at its
  // end.
  [[nodiscard]] Result<bool> Feed(std::uint64_t last);
  [[nodiscard]] bool EndOfPassage();
  // From what the tempo change has ready; false when there is nothing.
  bool Forward();

  std::unique_ptr<PcmSource> source_;
  PlayerSoundDevice& sound_;
  std::string name_;
  std::uint64_t frames_ = 0;
  std::atomic<bool> stop_ = false;
  std::atomic<bool> paused_ = false;
  mutable std::mutex mutex_;
  std::optional<std::uint64_t> seek_;
  std::optional<Practice> wanted_;
  mutable PlayedFrames played_;

  // the playing thread's own
  std::uint64_t next_ = 0;  // the frame that is decoded next
  double speed_ = 1;
  double fed_ = 0;  // frames for the device since it was sent somewhere
  std::optional<Passage> passage_;
  bool jumped_ = false;  // the next block begins a passage anew
  std::optional<TempoChange> tempo_;
  std::vector<double> block_;
  std::vector<float> samples_;

  std::jthread overview_;
};

}  // namespace ts5
