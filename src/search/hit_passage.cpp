#include "search/hit_passage.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "midi/conductor.h"
#include "midi/midi_events.h"
#include "midi/midi_file.h"
#include "platform/files.h"
#include "search/midi_search.h"
#include "search/note_stream.h"
#include "search/track_matcher.h"

namespace ts5 {
namespace {

struct HitTrack {
  ByteView track;
  Conductor conductor;
  std::uint16_t division = 0;

  [[nodiscard]] std::uint64_t Bar(std::uint64_t tick) const {
    return BarOf(conductor.signatures, division, tick);
  }
  // Where a bar begins.
  [[nodiscard]] std::uint64_t TickOf(std::uint64_t bar) const {
    const TimeSignatureMap& map = conductor.signatures;
    const auto after = std::ranges::upper_bound(map, bar, {}, &TimeSignatureEntry::bars);
    if (after == map.begin()) return 0;
    const TimeSignatureEntry& entry = *std::prev(after);
    return entry.tick + (bar - entry.bars) * BarTicks(division, entry.numerator, entry.denominator);
  }
};

// The track that the hit names, as the search counts them.
Result<HitTrack> TrackOf(ByteView file, const SearchHit& hit) {
  const MidiFileInfo info = DetectMidiKind(file);
  if (info.kind == MidiFileKind::None || info.header.division == 0) return Failure(Outcome::WrongFormat);
  const std::size_t wanted =
      static_cast<std::size_t>(std::max(hit.track, 0)) + (info.header.trackCount < 2 ? 0 : 1);
  HitTrack found;
  found.division = info.header.division;
  MidiTrackReader tracks(MidiBytesOf(file), info.header.trackCount);
  ByteView track;
  for (std::size_t i = 0; i <= wanted; ++i) {
    if (!tracks.Next(track)) return Failure(Outcome::DamagedMidi);
    if (i > 0) continue;
    auto conductor = ScanConductorTrack(track, found.division);
    if (!conductor) return Failure(conductor.error());
    found.conductor = std::move(*conductor);
  }
  found.track = track;
  return found;
}

}  // namespace

Result<HitPassage> FindHitPassage(ByteView file, const SearchHit& hit, std::size_t notes) {
  const auto found = TrackOf(file, hit);
  if (!found) return Failure(found.error());
  const std::uint32_t tempo = found->conductor.tempo.value_or(kDefaultTempo);

  MidiEventCursor cursor(found->track);
  MidiEvent event;
  const auto nextNote = [&] {
    while (cursor.Next(event)) {
      if (event.IsNoteOn()) return true;
    }
    return false;
  };
  // The hit knows its time in whole milliseconds: the first note of that time and bar.
  const auto isFirst = [&] {
    return HitTime(event.tick, found->division, tempo) == hit.time &&
           std::cmp_equal(found->Bar(event.tick), hit.bar);
  };
  do {
    if (!nextNote()) return Failure(Outcome::DamagedMidi);
  } while (!isFirst());

  HitPassage passage;
  passage.onset = event.tick;
  passage.bar = found->TickOf(found->Bar(event.tick));
  // The notes of a melody follow each other in the track without another one between them.
  for (std::size_t i = 1; i < notes && nextNote();) ++i;
  const std::uint64_t last = event.tick;
  while (nextNote() && event.tick <= last + kChordTicks) continue;
  const std::uint64_t end = std::max(cursor.Tick(), last + 1);
  passage.end = found->TickOf(found->Bar(end - 1) + 1);
  return passage;
}

Result<PlayableHit> LoadPlayableHit(const SearchHit& hit, std::size_t notes) {
  const auto file = ReadFile(hit.file, kMaxSequenceFile);
  if (!file) return Failure(file.error());
  const auto passage = FindHitPassage(*file, hit, notes);
  if (!passage) return Failure(passage.error());
  auto sequence = MidiSequence::FromFile(*file);
  if (!sequence) return Failure(sequence.error());
  PlayableHit playable;
  playable.bar = sequence->TimeOf(passage->bar);
  playable.onset = sequence->TimeOf(passage->onset);
  playable.end = std::min(sequence->TimeOf(passage->end), sequence->Duration());
  playable.sequence = std::move(*sequence);
  return playable;
}

}  // namespace ts5
