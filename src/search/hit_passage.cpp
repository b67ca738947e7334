#include "search/hit_passage.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "converters/score_formats.h"
#include "midi/conductor.h"
#include "midi/midi_events.h"
#include "midi/midi_file.h"
#include "platform/files/input_file.h"
#include "score/score_midi.h"
#include "search/midi_search.h"
#include "search/note_stream.h"
#include "search/score_items.h"
#include "search/track_matcher.h"

namespace ts5 {
namespace {

// The bars of a file, in ticks.
struct Bars {
  TimeSignatureMap signatures;
  std::uint16_t division = 0;

  [[nodiscard]] std::uint64_t Of(std::uint64_t tick) const { return BarOf(signatures, division, tick); }
  // Where a bar begins.
  [[nodiscard]] std::uint64_t TickOf(std::uint64_t bar) const {
    const auto after = std::ranges::upper_bound(signatures, bar, {}, &TimeSignatureEntry::bars);
    if (after == signatures.begin()) return 0;
    const TimeSignatureEntry& entry = *std::prev(after);
    return entry.tick + (bar - entry.bars) * BarTicks(division, entry.numerator, entry.denominator);
  }
  // The bars that what sounds from onset up to end lies in.
  [[nodiscard]] HitPassage Around(std::uint64_t onset, std::uint64_t end) const {
    return {TickOf(Of(onset)), onset, TickOf(Of(std::max(end, onset + 1) - 1) + 1)};
  }
};

struct MidiTrack {
  ByteView bytes;
  std::uint32_t tempo = kDefaultTempo;  // the first of the file
  Bars bars;
};

// number: in the file, from 0.
Result<MidiTrack> TrackOf(ByteView file, const MidiFileHeader& header, std::size_t number) {
  MidiTrackReader tracks(MidiBytesOf(file), header.trackCount);
  MidiTrack found;
  found.bars.division = header.division;
  for (std::size_t i = 0; i <= number; ++i) {
    if (!tracks.Next(found.bytes)) return Failure(Outcome::DamagedMidi);
    if (i > 0) continue;
    auto conductor = ScanConductorTrack(found.bytes, header.division);
    if (!conductor) return Failure(conductor.error());
    found.tempo = conductor->tempo.value_or(kDefaultTempo);
    found.bars.signatures = std::move(conductor->signatures);
  }
  return found;
}

// A score sounds as the MIDI file that is made of it, straight through as the search counts its bars.
struct SoundingScore {
  OpenScore score;
  Bytes midi;
};

Result<SoundingScore> MidiOfScore(Bytes file, const CancelCheck& cancelled) {
  auto image = converters::ScoreImageOf(std::move(file), cancelled);
  if (!image) return Failure(image.error());
  PlaybackParameters parameters;
  auto score = OpenAndScan(std::move(*image), parameters, false, cancelled);
  if (!score) return Failure(score.error());
  ScoreOptions options;
  options.repeats = false;
  auto midi = ScoreToMidi(*score, parameters, std::move(options), {.cancelled = cancelled});
  if (!midi) return Failure(midi.error());
  return SoundingScore{std::move(*score), std::move(*midi)};
}

Result<HitPassage> FindScorePassage(const SoundingScore& sounding, const SearchHit& hit,
                                    const CancelCheck& cancelled) {
  const auto lines = ReadScoreItems(sounding.score.file, sounding.score.info, cancelled);
  if (!lines) return Failure(lines.error());
  if (hit.track < 0 || std::cmp_greater_equal(hit.track, lines->size()) || hit.voice < 0 ||
      std::cmp_greater_equal(hit.voice, kMaxVoices))
    return Failure(Outcome::DamagedScore);
  const auto& items = (*lines)[static_cast<std::size_t>(hit.track)][static_cast<std::size_t>(hit.voice)];
  const auto at = [](std::int32_t system, std::int32_t object) {
    return [=](const ScoreSearchItem& item) { return item.system == system && item.object == object; };
  };
  const auto first = std::ranges::find_if(items, at(hit.firstSystem, hit.firstObject));
  const auto last = std::find_if(first, items.end(), at(hit.lastSystem, hit.lastObject));
  if (last == items.end()) return Failure(Outcome::DamagedScore);
  const auto conductor = TrackOf(sounding.midi, DetectMidiKind(sounding.midi).header, 0);
  if (!conductor) return Failure(conductor.error());
  const auto tick = [&](std::int64_t units) {
    constexpr std::int64_t kTicksPerUnit = kScoreTicksPerQuarter / kMelodyQuarter;
    return sounding.score.scan.leadIn + static_cast<std::uint64_t>(units * kTicksPerUnit);
  };
  return conductor->bars.Around(tick(first->onset), tick(last->onset + last->duration));
}

}  // namespace

Result<HitPassage> FindHitPassage(ByteView file, const SearchHit& hit, std::size_t notes) {
  const MidiFileInfo info = DetectMidiKind(file);
  if (info.kind == MidiFileKind::None || info.header.division == 0) return Failure(Outcome::WrongFormat);
  // The search counts from the track behind the conductor.
  const std::size_t number =
      static_cast<std::size_t>(std::max(hit.track, 0)) + (info.header.trackCount < 2 ? 0 : 1);
  const auto found = TrackOf(file, info.header, number);
  if (!found) return Failure(found.error());
  MidiEventCursor cursor(found->bytes);
  MidiEvent event;
  const auto nextNote = [&] {
    while (cursor.Next(event)) {
      if (event.IsNoteOn()) return true;
    }
    return false;
  };
  // The hit knows its time in whole milliseconds: the first note of that time and bar.
  const auto isFirst = [&] {
    return HitTime(event.tick, found->bars.division, found->tempo) == hit.time &&
           std::cmp_equal(found->bars.Of(event.tick), hit.bar);
  };
  do {
    if (!nextNote()) return Failure(Outcome::DamagedMidi);
  } while (!isFirst());

  const std::uint64_t onset = event.tick;
  // The notes of a melody follow each other in the track without another one between them.
  for (std::size_t i = 1; i < notes && nextNote();) ++i;
  const std::uint64_t last = event.tick;
  while (nextNote() && event.tick <= last + kChordTicks) continue;
  return found->bars.Around(onset, std::max(cursor.Tick(), last + 1));
}

Result<PlayableHit> LoadPlayableHit(const SearchHit& hit, std::size_t notes, const CancelCheck& cancelled) {
  const auto input = InputFile::Open(hit.file);
  if (!input) return Failure(input.error());
  auto file = input->ReadAll(std::max<std::uint64_t>(kMaxSequenceFile, kMaxScoreFile), cancelled);
  if (!file) return Failure(file.error());
  Result<HitPassage> passage;
  if (DetectMidiKind(*file).kind == MidiFileKind::None) {
    auto sounding = MidiOfScore(std::move(*file), cancelled);
    if (!sounding) return Failure(sounding.error());
    passage = FindScorePassage(*sounding, hit, cancelled);
    *file = std::move(sounding->midi);
  } else {
    passage = FindHitPassage(*file, hit, notes);
  }
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
