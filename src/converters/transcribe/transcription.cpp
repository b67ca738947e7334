#include "converters/transcribe/transcription.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>
#include <utility>

#include "converters/transcribe/beats.h"
#include "converters/transcribe/drums.h"
#include "converters/transcribe/engraving.h"
#include "converters/transcribe/lengths.h"
#include "converters/transcribe/performance.h"
#include "converters/transcribe/spelling.h"
#include "converters/transcribe/staff_notes.h"
#include "converters/transcribe/voices.h"

namespace ts5::transcribe {
namespace {

constexpr std::int64_t kWhole = 4 * kUnits;
constexpr std::int64_t kMostBars = 40'000;
// Bars of staves; one longer than a whole note counts as several.
constexpr std::int64_t kFreeCells = 20'000;
constexpr std::int64_t kCellsPerNote = 64;

class Transcriber {
 public:
  Transcriber(const TranscriptionOptions& options, const WorkWatch& watch)
      : options_(options), watch_(watch) {}

  Result<Transcription> Transcribe(ByteView file) {
    auto performance = ReadPerformance(file, watch_);
    if (!performance) return Failure(performance.error());
    performance_ = std::move(*performance);
    if (performance_.parts.empty()) return Failure(Outcome::SourceFailed);
    if (Stop(0.1)) return Failure(Outcome::Cancelled);
    const BeatMap beats = MapBeats(performance_, watch_.cancelled);
    result_.beatsFound = beats.Found();
    StaffNotes placed = PlaceOnStaves(performance_, beats, options_.lyrics, watch_.cancelled);
    staves_ = std::move(placed.staves);
    result_.leftOut = performance_.leftOut;
    result_.lostWords = placed.lostWords;
    result_.doubled = placed.doubled;
    result_.staffless = placed.staffless;
    if (Stop(0.4)) return Failure(Outcome::Cancelled);
    if (!MakeBars(beats)) return Failure(Outcome::SourceFailed);
    for (Staff& staff : staves_) {
      if (Stop(0.5)) return Failure(Outcome::Cancelled);
      Separate(staff);
    }
    if (Stop(0.7)) return Failure(Outcome::Cancelled);
    FindKeys();
    SpellNotes();
    for (Staff& staff : staves_) {
      if (Stop(0.8)) return Failure(Outcome::Cancelled);
      MakeChords(staff);
    }
    ShortenLastBar(beats);
    result_.respelled =
        Engrave({performance_, beats, staves_, bars_, keys_}, options_, result_.score, watch_.cancelled);
    if (Stop(0.9)) return Failure(Outcome::Cancelled);
    return std::move(result_);
  }

 private:
  [[nodiscard]] bool Stop(double progress) const {
    if (watch_.progress) watch_.progress(progress);
    return watch_.cancelled && watch_.cancelled();
  }

  // --- bars

  [[nodiscard]] std::int64_t UnitsOf(const BeatMap& beats, std::int64_t tick) const {
    return std::llround(beats.Quarters(tick) * static_cast<double>(kUnits));
  }

  [[nodiscard]] bool MakeBars(const BeatMap& beats) {
    std::int64_t end = 0;
    std::int64_t first = INT64_MAX;
    std::int64_t notes = 0;
    for (const Staff& staff : staves_) {
      notes += std::ssize(staff.notes);
      for (const Note& note : staff.notes) {
        end = std::max(end, note.place + 1);
        first = std::min(first, note.place);
      }
    }
    // A file says how far its music goes; rests at the end count for a few bars.
    constexpr std::int64_t kMostRests = 16 * kUnits;
    if (!beats.Found())
      end = std::max(end, std::min(UnitsOf(beats, performance_.end) - kUnits / 8, end + kMostRests));
    struct Change {
      std::int64_t place = 0;
      ScoreTimeSignature time;
    };
    std::vector<Change> changes = {{0, {}}};
    for (const SignatureChange& change : performance_.signatures) {
      if (beats.Found() && change.at > 0) break;
      std::int64_t place = UnitsOf(beats, change.at);
      place = (place + kUnits / 16) / (kUnits / 8) * (kUnits / 8);
      if (changes.back().place == place) changes.pop_back();
      changes.push_back({place, change.time});
    }
    // Bars without end come from one damaged time; so many notes do not make so many.
    const std::int64_t cells = kFreeCells + kCellsPerNote * notes;
    std::int64_t cellsLeft = std::min(kMostBars, cells / std::ssize(staves_));
    std::size_t next = 0;
    ScoreTimeSignature time = changes[0].time;
    for (std::int64_t at = 0; at < end;) {
      while (next < changes.size() && changes[next].place <= at) time = changes[next++].time;
      std::int64_t length = std::max<std::int64_t>((kWhole >> time.power) * time.numerator, 1);
      if (next < changes.size()) length = std::min(length, changes[next].place - at);
      bars_.push_back({at, length, time, 0});
      at += length;
      cellsLeft -= std::max<std::int64_t>(length / kWhole, 1);
      if (cellsLeft < 0) return false;
    }
    if (bars_.empty()) return false;
    // Silence up to the middle of the first bar or beyond: the music begins with an upbeat.
    BarSpan& upbeat = bars_.front();
    if (bars_.size() > 1 && first >= (upbeat.length + 1) / 2 && first < upbeat.length) {
      upbeat = {first, upbeat.length - first, upbeat.time, first};
    }
    return true;
  }

  // --- voices, keys, letters

  // The strokes of drums are as long as it happens, unless a score was played.
  static bool HasLengths(const Staff& staff) {
    constexpr double kLeast = 0.7;
    return !staff.drums || staff.timing.legato >= kLeast;
  }

  void Separate(Staff& staff) const {
    std::vector<StaffNote> notes;
    for (const Note& note : staff.notes) {
      const double played = (note.end - note.start) * static_cast<double>(kUnits);
      notes.push_back({note.place, HasLengths(staff) ? played / staff.timing.legato : 1.0, note.key});
    }
    const std::vector<std::uint8_t> voices = SeparateVoices(notes, staff.timing, watch_.cancelled);
    for (std::size_t i = 0; i < voices.size(); ++i) staff.notes[i].voice = voices[i];
  }

  void FindKeys() {
    keys_.assign(bars_.size(), 0);
    if (performance_.keys.empty()) {
      std::vector<WeightedKey> notes;
      for (const Staff& staff : staves_) {
        if (staff.drums) continue;
        for (const Note& note : staff.notes)
          notes.push_back({note.key, std::min(note.end - note.start, 4.0)});
      }
      std::ranges::fill(keys_, FindKey(notes));
      return;
    }
    std::vector<std::optional<int>> changed(bars_.size());
    for (const KeyChange& change : performance_.keys) {
      const double quarters =
          result_.beatsFound ? 0
                             : static_cast<double>(change.at) / static_cast<double>(performance_.division);
      changed[BarAt(bars_, std::llround(quarters * static_cast<double>(kUnits)))] = change.sharps;
    }
    int now = 0;
    for (std::size_t bar = 0; bar < bars_.size(); ++bar) keys_[bar] = now = changed[bar].value_or(now);
  }

  void SpellNotes() {
    std::vector<Note*> order;
    for (Staff& staff : staves_) {
      if (staff.drums) continue;
      for (Note& note : staff.notes) order.push_back(&note);
    }
    std::ranges::stable_sort(order, {}, [](const Note* note) { return std::tuple(note->place, note->key); });
    std::vector<NoteToSpell> notes;
    for (const Note* note : order) {
      const auto sharps = static_cast<std::int8_t>(keys_[BarAt(bars_, note->place)]);
      for (const auto& chord : note->graceKeys) {
        for (const std::uint8_t key : chord) notes.push_back({key, sharps});
      }
      notes.push_back({note->key, sharps});
    }
    const std::vector<SpelledPitch> pitches = Spell(notes);
    std::size_t next = 0;
    for (Note* note : order) {
      for (const auto& chord : note->graceKeys) {
        auto& graces = note->graces.emplace_back();
        for (std::size_t i = 0; i < chord.size(); ++i) graces.push_back(pitches[next++]);
        std::ranges::sort(graces, {}, [](const SpelledPitch& pitch) { return pitch.Key(); });
      }
      note->pitch = pitches[next++];
    }
  }

  // --- chords with the lengths that they are written with

  static void MakeChords(Staff& staff) {
    staff.voices.resize(kMostVoices);
    if (staff.drums) SpellDrums(staff);
    for (std::uint8_t voice = 0; voice < kMostVoices; ++voice) {
      std::vector<VoiceChord>& chords = staff.voices[voice];
      std::vector<double> lengths;  // as played, units, the sum over the notes
      std::vector<std::size_t> counts;
      for (const Note& note : staff.notes) {
        if (note.voice != voice) continue;
        if (chords.empty() || chords.back().place != note.place) {
          chords.push_back({.place = note.place});
          lengths.push_back(0);
          counts.push_back(0);
        }
        VoiceChord& chord = chords.back();
        chord.pitches.push_back(note.pitch);
        for (const auto& grace : note.graces) chord.graces.push_back(grace);
        if (chord.lyrics.empty()) chord.lyrics = note.lyrics;
        lengths.back() += (note.end - note.start) * static_cast<double>(kUnits);
        ++counts.back();
      }
      for (std::size_t i = 0; i < chords.size(); ++i) {
        const std::int64_t next = i + 1 < chords.size() ? chords[i + 1].place : INT64_MAX;
        const double played = lengths[i] / static_cast<double>(counts[i]);
        chords[i].end = HasLengths(staff)
                            ? WrittenEnd(chords[i].place, played, next, staff.divisions, staff.timing)
                            : DrumEnd(chords[i].place, next);
        std::ranges::sort(chords[i].pitches, {}, [](const SpelledPitch& pitch) { return pitch.Key(); });
      }
    }
    while (staff.voices.size() > 1 && staff.voices.back().empty()) staff.voices.pop_back();
  }

  // The last bar lacks what the upbeat has, as is the custom, when nothing is written there.
  void ShortenLastBar(const BeatMap& beats) {
    const BarSpan& upbeat = bars_.front();
    BarSpan& last = bars_.back();
    if (upbeat.offset == 0 || bars_.size() < 2 || last.length <= upbeat.length) return;
    std::int64_t end = beats.Found() ? 0 : UnitsOf(beats, performance_.end) - kUnits / 8;
    for (const Staff& staff : staves_) {
      for (const auto& chords : staff.voices) {
        if (!chords.empty()) end = std::max(end, chords.back().end);
      }
    }
    if (end <= last.start + last.length - upbeat.length) last.length -= upbeat.length;
  }

  // A stroke lasts to the next one, within its beat.
  static std::int64_t DrumEnd(std::int64_t place, std::int64_t next) {
    return std::min(next, (place / kUnits + 1) * kUnits);
  }

  static void SpellDrums(Staff& staff) {
    std::vector<std::uint8_t> keys;
    for (const Note& note : staff.notes) keys.push_back(note.key);
    const DrumMap map(keys);
    for (Note& note : staff.notes) note.pitch = map.PitchOf(note.key);
  }

  const TranscriptionOptions& options_;
  const WorkWatch& watch_;
  Performance performance_;
  std::vector<Staff> staves_;
  std::vector<BarSpan> bars_;
  std::vector<int> keys_;  // of each bar
  Transcription result_;
};

}  // namespace

Result<Transcription> TranscribeMidi(ByteView file, const TranscriptionOptions& options,
                                     const WorkWatch& watch) {
  return Transcriber(options, watch).Transcribe(file);
}

}  // namespace ts5::transcribe
