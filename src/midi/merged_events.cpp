#include "midi/merged_events.h"

#include <algorithm>
#include <array>
#include <functional>

namespace ts5 {

namespace {

// Meta events in the order in which they go before everything else at their tick.
constexpr std::uint8_t kMetaOrder[] = {0x03, 0x02, 0x58, 0x59, 0x51, 0x04, 0x54, 0x7F,
                                       0x01, 0x07, 0x00, 0x06, 0x21, 0x05, 0x20};

// Behind them: system exclusive, then channel messages, then everything else.
enum ChannelOrder : std::uint8_t {
  kSysEx = std::size(kMetaOrder),
  kBankSelect,
  kProgramChange,
  kControlChange,
  kNoteOff,
  kNoteOn,
  kChannelPressure,
  kKeyPressure,
  kPitchBend,
  kOther,
};

constexpr std::array<std::uint8_t, 256> kMetaClass = [] {
  std::array<std::uint8_t, 256> classes{};
  classes.fill(kOther);
  std::uint8_t place = 0;
  for (const std::uint8_t type : kMetaOrder) classes[type] = place++;
  return classes;
}();

constexpr unsigned kTrackBits = 32;

}  // namespace

unsigned MergeClass(const MidiEvent& event) {
  if (event.status == kMetaStatus) return kMetaClass[event.metaType];
  switch (event.MessageType()) {
    case 0x80:
      return kNoteOff;
    case 0x90:
      return event.data2 == 0 ? kNoteOff : kNoteOn;
    case 0xA0:
      return kKeyPressure;
    case 0xB0:
      return event.data1 == 0 || event.data1 == 32 ? kBankSelect : kControlChange;
    case 0xC0:
      return kProgramChange;
    case 0xD0:
      return kChannelPressure;
    case 0xE0:
      return kPitchBend;
    default:
      return event.status == kSysExStatus ? kSysEx : kOther;
  }
}

MergedEvents::MergedEvents(std::span<const ByteView> tracks)
    : cursors_(tracks.begin(), tracks.end()), pending_(tracks.size()) {
  heap_.reserve(tracks.size());
  for (std::size_t track = 0; track < tracks.size(); ++track) {
    bytesTotal_ += tracks[track].size();
    Advance(track);
  }
}

void MergedEvents::Advance(std::size_t track) {
  MidiEvent& event = pending_[track];
  if (!cursors_[track].Next(event)) {
    damaged_ = damaged_ || cursors_[track].Damaged();
    return;
  }
  heap_.emplace_back(event.tick, std::uint64_t{MergeClass(event)} << kTrackBits | track);
  std::ranges::push_heap(heap_, std::greater<>());
}

bool MergedEvents::Next(MidiEvent& event) {
  if (heap_.empty() || damaged_) return false;
  std::ranges::pop_heap(heap_, std::greater<>());
  const auto track = static_cast<std::uint32_t>(heap_.back().second);
  heap_.pop_back();
  event = pending_[track];
  bytesDone_ += event.encoded.size() + 1;
  Advance(track);
  return true;
}

}  // namespace ts5
