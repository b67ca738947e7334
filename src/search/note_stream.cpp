#include "search/note_stream.h"

#include <algorithm>

namespace ts5 {
namespace {

constexpr std::uint8_t kDrumChannel = 9;

}  // namespace

bool NoteStream::NextBlock() {
  if (last_) return false;
  ahead_ = 0;
  std::size_t size = 0;
  bool watchDrums = stopAtDrums_ && !stopped_;
  MidiEventCursor cursor = cursor_;
  MidiEvent event;
  for (std::size_t events = 0; events < kBlock; ++events) {
    if (!cursor.Next(event)) {
      last_ = true;
      break;
    }
    if (watchDrums && event.Channel() == kDrumChannel && event.IsChannelMessage()) [[unlikely]] {
      stopped_ = last_ = true;
      stop_ = size;
      watchDrums = false;
    }
    // Written always and kept only for a note-on: what comes next cannot be predicted.
    keys_[size] = event.data1;
    ticks_[size] = event.tick;
    size += static_cast<std::size_t>(event.IsNoteOn());
  }
  cursor_ = cursor;
  size_ = size;
  settled_ = 0;
  if (size > 0 && ticks_[size - 1] > kChordTicks) {
    const auto* const begin = ticks_.data();
    settled_ = static_cast<std::size_t>(
        std::lower_bound(begin, begin + size, ticks_[size - 1] - kChordTicks) - begin);
  }
  settled_ = std::min(settled_, Size());
  return true;
}

std::optional<std::uint64_t> NoteStream::NextOnset(std::size_t note) {
  const std::uint64_t tick = ticks_[note];
  ahead_ = std::max(ahead_, note + 1);
  while (ahead_ < size_ && ticks_[ahead_] - tick <= kChordTicks) ++ahead_;
  if (ahead_ < size_) return ticks_[ahead_] - tick;
  return NextOnsetBehindBlock(tick);
}

std::optional<std::uint64_t> NoteStream::NextOnsetBehindBlock(std::uint64_t tick) {
  if (!farUsed_ || far_.Remaining() >= cursor_.Remaining()) {
    far_ = cursor_;
    farUsed_ = true;
    farNote_ = false;
  }
  while (!farNote_ || farTick_ - tick <= kChordTicks) {
    MidiEvent event;
    if (!far_.Next(event)) {
      farNote_ = false;
      if (far_.Damaged()) return std::nullopt;
      return std::max(far_.Tick() - tick, kChordTicks);
    }
    if (event.IsNoteOn()) {
      farNote_ = true;
      farTick_ = event.tick;
    }
  }
  return farTick_ - tick;
}

}  // namespace ts5
