#include "search/note_stream.h"

#include <algorithm>

namespace ts5 {
namespace {

constexpr unsigned kDrumChannel = 9;
constexpr unsigned kNoChannel = 0xFF;
constexpr int kEventsPerPoll = 1 << 16;
constexpr std::uint64_t kMaxOffset = std::uint64_t{1} << 30;

}  // namespace

bool NoteStream::NextBlock() {
  if (last_) return false;
  last_ = !DecodeBlock();
  settled_ = 0;
  if (size_ > 0 && offsets_[size_ - 1] > static_cast<std::int32_t>(kChordTicks)) {
    const auto* const begin = offsets_.data();
    const auto end = static_cast<std::int32_t>(offsets_[size_ - 1] - static_cast<std::int32_t>(kChordTicks));
    settled_ = static_cast<std::size_t>(std::lower_bound(begin, begin + size_, end) - begin);
  }
  settled_ = std::min(settled_, Size());
  if (measures_) Measure();
  return true;
}

// False at the end of the track or of the stream.
bool NoteStream::DecodeBlock() {
  std::uint64_t base = cursor_.Tick();
  std::size_t size = 0;
  std::size_t stop = 0;
  const unsigned drums = stopAtDrums_ ? kDrumChannel : kNoChannel;
  unsigned watched = drums;
  std::int16_t* const keys = keys_.data();
  std::int32_t* const offsets = offsets_.data();
  const auto take = [&](std::uint64_t tick, unsigned status, std::uint8_t key, unsigned velocity) {
    if ((status & 0x0F) == watched) [[unlikely]] {
      stop = size;
      watched = kNoChannel;
    }
    // Written always and kept only for a note-on: what comes next cannot be predicted.
    keys[size] = key;
    offsets[size] = static_cast<std::int32_t>(tick - base);
    size += static_cast<std::size_t>((status & 0xF0) == 0x90 && velocity != 0);
  };
  bool more = true;
  MidiEventCursor cursor = cursor_;
  for (std::size_t events = 0; more && events < kBlock;) {
    events += cursor.TakeShortMessages(kBlock - events, take);
    if (events == kBlock) break;
    const MidiEventCursor before = cursor;
    MidiEvent event;
    more = cursor.Next(event);
    if (more && event.tick - base > kMaxOffset) {
      // Such a distance needs a block of its own.
      if (events > 0) {
        cursor = before;
        break;
      }
      base = event.tick;
    }
    if (more && event.IsChannelMessage()) take(event.tick, event.status, event.data1, event.data2);
    ++events;
  }
  cursor_ = cursor;
  base_ = base;
  size_ = size;
  if (watched == drums) return more;
  stopped_ = true;
  stop_ = stop;
  return false;
}

// Without branches, so that the compiler measures many notes at once.
void NoteStream::Measure() {
  constexpr auto kChord = static_cast<std::int32_t>(kChordTicks);
  if (size_ > 0) std::fill_n(offsets_.begin() + static_cast<std::ptrdiff_t>(size_), 3, offsets_[size_ - 1]);
  const std::int32_t* const offsets = offsets_.data();
  for (std::size_t i = 0; i < size_; ++i) {
    const std::int32_t one = offsets[i + 1] - offsets[i];
    const std::int32_t two = offsets[i + 2] - offsets[i];
    const std::int32_t three = offsets[i + 3] - offsets[i];
    const std::int32_t behind = two > kChord ? two : three > kChord ? three : 0;
    gaps_[i] = one;
    distances_[i] = one > kChord ? one : behind;
  }
}

std::optional<std::uint64_t> NoteStream::LookAhead(std::size_t note, Look& look) const {
  const std::uint64_t tick = Tick(note);
  look.ahead = std::max(look.ahead, note + 1);
  while (look.ahead < size_ && Tick(look.ahead) - tick <= kChordTicks) ++look.ahead;
  if (look.ahead < size_) return Tick(look.ahead) - tick;
  return NextOnsetBehindBlock(tick, look);
}

std::optional<std::uint64_t> NoteStream::NextOnsetBehindBlock(std::uint64_t tick, Look& look) const {
  if (!look.farUsed || look.far.Remaining() >= cursor_.Remaining()) {
    look.far = cursor_;
    look.farUsed = true;
    look.farNote = false;
  }
  for (int untilPoll = kEventsPerPoll; !look.farNote || look.farTick - tick <= kChordTicks; --untilPoll) {
    if (untilPoll == 0) {
      if (cancelled_ && cancelled_()) return std::nullopt;
      untilPoll = kEventsPerPoll;
    }
    MidiEvent event;
    if (!look.far.Next(event)) {
      look.farNote = false;
      if (look.far.Damaged()) return std::nullopt;
      return std::max(look.far.Tick() - tick, kChordTicks);
    }
    if (event.IsNoteOn()) {
      look.farNote = true;
      look.farTick = event.tick;
    }
  }
  return look.farTick - tick;
}

}  // namespace ts5
