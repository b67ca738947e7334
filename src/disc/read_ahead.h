// A source of sound that is read on a thread of its own, some seconds ahead of who takes it: reading and
// writing share two cores.
#pragma once

#include <optional>
#include <span>
#include <thread>

#include "disc/sector_pipe.h"
#include "disc/sound_source.h"

namespace ts5 {
class Crc32;
}

namespace ts5::disc {

class ReadAhead {
 public:
  // Whole sectors, until the source ends or fails. The source, and the sum of all that it gives, belong to
  // the thread for as long as this lives.
  ReadAhead(SoundSource& sound, Crc32* crc);
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;
  ~ReadAhead();

  // What there is, whole sectors; 0 at the end, or where the source failed; nothing when the source takes its
  // time, so that who waits can be stopped.
  [[nodiscard]] std::optional<std::size_t> Read(std::span<std::uint8_t> out) { return pipe_.ReadSome(out); }
  // Behind the last byte: whether the source failed.
  [[nodiscard]] Outcome End() const { return end_; }

 private:
  SoundSource& sound_;
  SectorPipe pipe_;
  Outcome end_ = Outcome::Success;
  std::jthread thread_;
};

}  // namespace ts5::disc
