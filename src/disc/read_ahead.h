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

  // What there is, whole sectors; none at the end, or where the source failed; nothing when the source takes
  // its time, so that who waits can be stopped. Drop says that they are not needed any more.
  [[nodiscard]] std::optional<ByteView> Next() { return pipe_.NextSome(kTogether); }
  void Drop(ByteView sectors) { pipe_.Drop(sectors.size()); }
  // Behind the last byte: whether the source failed.
  [[nodiscard]] Outcome End() const { return end_; }

 private:
  static constexpr std::size_t kTogether = 8 * kPortion;  // that are written at once when the source is fast

  SoundSource& sound_;
  SectorPipe pipe_;
  Outcome end_ = Outcome::Success;
  std::jthread thread_;
};

}  // namespace ts5::disc
