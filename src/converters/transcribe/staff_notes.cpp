#include "converters/transcribe/staff_notes.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "converters/transcribe/lengths.h"
#include "converters/transcribe/staves.h"
#include "converters/transcribe/texts.h"
#include "platform/base/strings.h"

namespace ts5::transcribe {
namespace {

constexpr std::size_t kMostStaves = 200;
constexpr double kHumanSpread = 0.022;  // seconds
constexpr int kFirstSound = 32'000;     // text of the first General MIDI program

bool IsKeyboard(std::uint8_t program) {
  constexpr std::uint8_t kHarp = 46;
  return program < 24 || program == kHarp;
}

class StaffPlacer {
 public:
  StaffPlacer(const Performance& performance, const BeatMap& beats, bool words, const CancelCheck& cancelled)
      : performance_(performance), beats_(beats), words_(words), cancelled_(cancelled) {}

  StaffNotes Place() {
    MakeStaves();
    QuantiseStaves();
    return std::move(result_);
  }

 private:
  [[nodiscard]] bool Stopped() const { return cancelled_ && cancelled_(); }

  void MakeStaves() {
    std::map<std::uint8_t, int> sameChannel;
    for (const PlayedPart& part : performance_.parts) ++sameChannel[part.channel];
    for (std::size_t i = 0; i < performance_.parts.size(); ++i) {
      if (Stopped()) return;
      const PlayedPart& part = performance_.parts[i];
      if (result_.staves.size() + 2 > kMostStaves) {
        result_.staffless += static_cast<std::uint32_t>(part.notes.size());
        continue;
      }
      std::vector<Note> notes;
      std::vector<HandNote> heard;
      for (const PlayedNote& played : part.notes) {
        Note note{.start = beats_.Quarters(played.start),
                  .end = beats_.Quarters(played.end),
                  .tick = played.start,
                  .key = played.key};
        heard.push_back({note.start, note.end, note.key});
        notes.push_back(std::move(note));
      }
      AddWords(part, notes);
      const std::string name = !part.name.empty() ? part.name
                               : part.drums
                                   ? std::string(Text(texts::TranscribedDrums))
                                   : std::string(TextByNumber(kFirstSound + part.program).value_or(""));
      // Tracks of one channel, and keyboards one after the other, are the hands of one player already.
      const auto same = [&](std::size_t other) {
        return other < performance_.parts.size() && performance_.parts[other].program == part.program &&
               !performance_.parts[other].drums;
      };
      const bool hands = IsKeyboard(part.program) && (same(i + 1) || (i > 0 && same(i - 1)));
      const bool divided = sameChannel[part.channel] > 1 || hands;
      if (part.drums || divided || !NeedsTwoStaves(heard, IsKeyboard(part.program))) {
        result_.staves.push_back({.part = i, .name = name, .notes = std::move(notes), .drums = part.drums});
        continue;
      }
      const std::vector<bool> lower = LowerHand(heard, cancelled_);
      Staff right{.part = i, .name = name};
      Staff left{.part = i, .name = name};
      for (std::size_t n = 0; n < notes.size(); ++n)
        (lower[n] ? left : right).notes.push_back(std::move(notes[n]));
      result_.staves.push_back(std::move(right));
      result_.staves.push_back(std::move(left));
    }
  }

  // Each syllable to the note that begins nearest to it.
  void AddWords(const PlayedPart& part, std::vector<Note>& notes) {
    if (!words_) return;
    for (const SungText& word : part.words) {
      auto note = std::ranges::lower_bound(notes, word.at, {}, &Note::tick);
      if (note != notes.begin() &&
          (note == notes.end() || note->tick - word.at > word.at - std::prev(note)->tick))
        --note;
      if (note == notes.end() || std::abs(note->tick - word.at) > performance_.division / 2) {
        ++result_.lostWords;
        continue;
      }
      if (!note->lyrics.empty()) {
        note->lyrics[0].syllable += " " + word.text;
      } else {
        note->lyrics.push_back({word.text, word.onward ? kLyricHyphen : std::uint8_t{0}});
      }
    }
  }

  // --- places

  // Twice: the second look knows which places the piece uses.
  void QuantiseStaves() {
    std::vector<std::int64_t> places;
    for (Staff& staff : result_.staves) {
      if (Stopped()) return;
      Prepare(staff);
      const std::vector<std::int64_t> found =
          QuantiseOnsets(OnsetsOf(staff), staff.timing, {}, cancelled_).places;
      places.insert(places.end(), found.begin(), found.end());
    }
    const PlaceCosts costs(places);
    for (Staff& staff : result_.staves) {
      if (Stopped()) return;
      Quantise(staff, costs);
    }
  }

  void Prepare(Staff& staff) {
    const double tick = beats_.Found() ? 0.001 : 1.0 / static_cast<double>(performance_.division);
    std::ranges::stable_sort(staff.notes, {}, &Note::start);
    double seconds = 0;
    for (const Note& note : staff.notes) seconds += performance_.QuarterSeconds(note.tick);
    seconds /= static_cast<double>(std::max<std::size_t>(staff.notes.size(), 1));
    staff.timing = MeasureTiming(OnsetsOf(staff), tick, kHumanSpread / std::max(seconds, 0.05));
    TakeGraces(staff, seconds);
  }

  void Quantise(Staff& staff, const PlaceCosts& costs) {
    QuantisedOnsets quantised =
        QuantiseOnsets(OnsetsOf(staff), staff.timing, staff.timing.exact ? PlaceCosts() : costs, cancelled_);
    for (std::size_t i = 0; i < staff.notes.size(); ++i)
      staff.notes[i].place = std::max<std::int64_t>(quantised.places[i], 0);
    staff.divisions = std::move(quantised.divisions);
    std::ranges::stable_sort(staff.notes, {},
                             [](const Note& note) { return std::tuple(note.place, note.key); });
    for (std::size_t i = 1; i < staff.notes.size(); ++i) {
      Note& before = staff.notes[i - 1];
      Note& note = staff.notes[i];
      if (before.place != note.place || before.key != note.key) continue;
      note.end = std::max(note.end, before.end);
      if (note.lyrics.empty()) note.lyrics = std::move(before.lyrics);
      if (note.graceKeys.empty()) note.graceKeys = std::move(before.graceKeys);
      before.gone = true;
      ++result_.doubled;
    }
    std::erase_if(staff.notes, [](const Note& note) { return note.gone; });
    std::vector<Sounded> sounded;
    for (const Note& note : staff.notes) sounded.push_back({note.start, note.end});
    MeasureLegato(sounded, staff.timing);
  }

  static std::vector<RawOnset> OnsetsOf(const Staff& staff) {
    std::vector<RawOnset> onsets;
    for (const Note& note : staff.notes) onsets.push_back({note.start, note.key});
    return onsets;
  }

  // Very short notes right before another one: grace notes of it.
  static void TakeGraces(Staff& staff, double secondsOfQuarter) {
    if (staff.drums) return;
    std::vector<Sounded> sounded;
    std::vector<std::uint8_t> keys;
    for (const Note& note : staff.notes) {
      sounded.push_back({note.start, note.end});
      keys.push_back(note.key);
    }
    for (const Grace& grace : FindGraces(sounded, keys, secondsOfQuarter)) {
      Note& main = staff.notes[grace.main];
      const double moved = grace.onTheBeat ? staff.notes[grace.chords.front().front()].start : main.start;
      for (const auto& chord : grace.chords) {
        auto& chordKeys = main.graceKeys.emplace_back();
        for (const std::size_t i : chord) {
          chordKeys.push_back(staff.notes[i].key);
          staff.notes[i].gone = true;
        }
      }
      const double old = main.start;
      std::size_t first = grace.main;
      while (first > 0 && old - staff.notes[first - 1].start < kTogether) --first;
      for (std::size_t i = first; i < staff.notes.size() && staff.notes[i].start - old < kTogether; ++i)
        staff.notes[i].start = moved;
    }
    std::erase_if(staff.notes, [](const Note& note) { return note.gone; });
    std::ranges::stable_sort(staff.notes, {}, &Note::start);
  }

  const Performance& performance_;
  const BeatMap& beats_;
  bool words_;
  const CancelCheck& cancelled_;
  StaffNotes result_;
};

}  // namespace

StaffNotes PlaceOnStaves(const Performance& performance, const BeatMap& beats, bool words,
                         const CancelCheck& cancelled) {
  return StaffPlacer(performance, beats, words, cancelled).Place();
}

}  // namespace ts5::transcribe
