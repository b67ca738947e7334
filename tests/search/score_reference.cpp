#include "score_reference.h"

#include <algorithm>
#include <cmath>

#include "search/search_melody.h"

namespace ts5::test {
namespace {

constexpr int kQuarter = 240;

struct Item {
  SearchHit place;  // of one item: first and last are the same
  bool rest = false;
  bool tie = false;
  int first = 0;
  int last = 0;
  std::int64_t duration = 0;
};

// Something that changes in the first voice of a staff: at which time, and by which object.
template <typename Value>
struct Change {
  std::int64_t at = 0;
  int object = -1;
  Value value;
};
// What holds at an object: of its own voice what stands before it, of another one what has come by then.
template <typename Value>
Value At(const std::vector<Change<Value>>& changes, bool own, int object, std::int64_t time,
         Value otherwise) {
  for (const auto& change : changes) {
    if (own ? change.object < object : change.at <= time) otherwise = change.value;
  }
  return otherwise;
}
template <typename Value>
Value Last(const std::vector<Change<Value>>& changes, Value otherwise) {
  return changes.empty() ? otherwise : changes.back().value;
}

bool IsKind(const ScoreItem& item, ObjectKind kind) {
  return item.kind == static_cast<std::uint8_t>(kind);
}
bool IsGroup(const ScoreItem& item) {
  return IsKind(item, ObjectKind::Rest) || IsKind(item, ObjectKind::Chord);
}

std::int64_t Length(const ScoreItem& item, ScoreTimeSignature time) {
  ScoreGroup group = item.group;
  group.isRest = IsKind(item, ObjectKind::Rest);
  return GroupDuration(group, kQuarter, time);
}

std::vector<Change<ScoreTimeSignature>> TimesOf(const SystemItems& system, ScoreTimeSignature time) {
  std::vector<Change<ScoreTimeSignature>> times;
  const auto take = [&](std::int64_t at, int object, ScoreTimeSignature next) {
    if (next.numerator == 0 || next.power < 0 || next.power > 12) return;
    time = next;
    times.push_back({at, object, next});
  };
  take(0, -1, system.staves[0].time);
  std::int64_t at = 0;
  int object = 0;
  for (const ScoreItem& item : system.staves[0].voices[0]) {
    if (IsKind(item, ObjectKind::Time)) take(at, object, item.time);
    if (IsGroup(item)) at += Length(item, time);
    ++object;
  }
  return times;
}

// All items of one voice of one line.
std::vector<Item> ItemsOf(const ScoreDocument& score, std::size_t line, std::size_t voice) {
  std::vector<Item> items;
  ScoreTimeSignature time;
  ScoreClef clef;
  int key = 0;
  std::int64_t bar = 1;
  std::int64_t position = 0;
  bool upbeat = false;
  std::int64_t vertical = 0;
  for (std::size_t s = 0; s < score.systems.size(); ++s) {
    const SystemItems& system = score.systems[s];
    const auto times = TimesOf(system, time);
    for (const StaffItems& staff : system.staves) {
      const std::int64_t top = vertical;
      vertical += score.staves[staff.layout].spacing;
      if (staff.layout != line) continue;
      const bool firstStaff = &staff == system.staves.data();
      std::vector<Change<ScoreClef>> clefs;
      std::int64_t at = 0;
      int index = 0;
      for (const ScoreItem& item : staff.voices[0]) {
        if (IsKind(item, ObjectKind::Clef)) clefs.push_back({at, index, item.clef});
        if (IsGroup(item)) at += Length(item, At(times, firstStaff, index, at, time));
        ++index;
      }
      at = 0;
      const bool has = voice < staff.voices.size();
      for (std::size_t o = 0; has && o < staff.voices[voice].size(); ++o) {
        const ScoreItem& object = staff.voices[voice][o];
        index = static_cast<int>(o);
        const ScoreTimeSignature now = At(times, firstStaff && voice == 0, index, at, time);
        const std::int64_t beatLength = std::max(960 >> now.power, 1);
        const std::int64_t barLength = beatLength * now.numerator;
        if (IsKind(object, ObjectKind::Key)) key = object.key;
        const bool ends = IsKind(object, ObjectKind::BarLine) && (object.barLine == 0 || object.barLine == 4);
        if (ends && !upbeat && bar == 1 && position > 0) {
          upbeat = true;
          std::int64_t start = barLength - position;
          for (Item& item : items) {
            item.place.bar = -1;
            item.place.time = static_cast<std::int32_t>(start / beatLength);
            start += item.duration;
          }
          position = 0;
        }
        if (!IsGroup(object)) continue;
        Item item;
        item.rest = IsKind(object, ObjectKind::Rest);
        item.tie = object.group.tieOnward;
        item.duration = Length(object, now);
        item.place.firstSystem = item.place.lastSystem = static_cast<std::int32_t>(s);
        item.place.firstObject = item.place.lastObject = static_cast<std::int32_t>(o);
        item.place.verticalPosition = static_cast<std::int32_t>(top);
        item.place.track = static_cast<std::int32_t>(line);
        item.place.voice = static_cast<std::int32_t>(voice);
        item.place.bar = static_cast<std::int32_t>(bar - 1);
        item.place.time = static_cast<std::int32_t>(position / beatLength);
        if (!item.rest) {
          const auto sounding = [&](const ScoreNote& note) {
            return (NoteKey(note, At(clefs, voice == 0, index, at, clef), key) +
                    score.staves[line].transpose) &
                   0xFF;
          };
          item.first = sounding(object.group.notes.front());
          item.last = sounding(object.group.notes.back());
        }
        position += item.duration;
        at += item.duration;
        for (; position >= barLength; ++bar) position -= barLength;

        Item* const before = items.empty() ? nullptr : &items.back();
        const bool sameRest = before != nullptr && before->rest && item.rest;
        const bool sameNote = before != nullptr && !before->rest && !item.rest && before->tie &&
                              object.group.tieFromBefore && before->first == item.first;
        if (sameRest || sameNote) {
          before->duration += item.duration;
          before->tie = item.tie;
        } else {
          items.push_back(item);
        }
      }
      clef = Last(clefs, clef);
    }
    vertical += score.systemSpacing;
    time = Last(times, time);
  }
  return items;
}

int KeyOfElement(const MelodyElement& element) {
  return IsRest(element) ? 0 : KeyOf(element.pitch);
}

// How many elements of the melody the items from here on agree with.
std::size_t Agreeing(const std::vector<Item>& items, std::size_t from,
                     const std::vector<MelodyElement>& melody, const SearchOptions& options) {
  float factor = 1;
  for (std::size_t k = 0; k < melody.size(); ++k) {
    if (from + k == items.size()) return k;
    const Item& item = items[from + k];
    if (k == 0) {
      if (item.rest) return 0;
      const int key = KeyOf(melody[0].pitch);
      if (options.pitch == PitchMode::Absolute && item.last != key) return 0;
      if (options.pitch == PitchMode::AnyOctave && (item.last > 127 || item.last % 12 != key % 12)) return 0;
      if (options.rhythm == RhythmMode::Relative)
        factor = static_cast<float>(melody[0].duration) / static_cast<float>(item.duration);
    } else if (options.pitch != PitchMode::Ignore && !(IsRest(melody[k]) && item.rest)) {
      const int wanted = KeyOfElement(melody[k]) - KeyOfElement(melody[k - 1]);
      const int found = item.first - items[from + k - 1].first;
      if (((wanted - found) & 0xFF) != 0) return k;
    }
    if (options.rhythm == RhythmMode::Any) continue;
    const double scaled = static_cast<double>(item.duration) * static_cast<double>(factor);
    if (!(std::floor(scaled) == melody[k].duration)) return k;
  }
  return melody.size();
}

}  // namespace

std::vector<SearchHit> ReferenceScoreSearch(const ScoreDocument& score, const MelodyQuery& query) {
  std::vector<SearchHit> hits;
  for (std::size_t line = 0; line < score.staves.size(); ++line) {
    if (line > 0 && query.options.firstTrackOnly) break;
    if (score.staves[line].usesNoteMap && !query.options.drumTrack) continue;
    for (std::size_t voice = 0; voice < 6; ++voice) {
      const std::vector<Item> items = ItemsOf(score, line, voice);
      std::size_t from = 0;
      while (from < items.size()) {
        const std::size_t length = Agreeing(items, from, query.elements, query.options);
        if (length == query.elements.size()) {
          SearchHit hit = items[from].place;
          hit.lastSystem = items[from + length - 1].place.lastSystem;
          hit.lastObject = items[from + length - 1].place.lastObject;
          hits.push_back(hit);
        }
        from += std::max<std::size_t>(length, 1);
      }
    }
  }
  return hits;
}

}  // namespace ts5::test
