#include "converters/assembly_bars.h"

#include <numeric>

#include "converters/assembly_spans.h"

namespace ts5::converters::musicxml {
namespace {

// Where the group's flags do not say what its notes have.
void KeepNoteTies(Group& group) {
  const ScoreGroup& whole = group.item.group;
  const std::uint32_t all = AllNotes(group);
  const TiedNotes ties = group.ties;
  if (ties.fromBefore == (whole.tieFromBefore ? all : 0) && ties.onward == (whole.tieOnward ? all : 0))
    return;
  for (std::size_t n = 0; n < group.item.pitches.size(); ++n) {
    group.item.noteTies.push_back(static_cast<std::uint8_t>((ties.fromBefore >> n & 1U) * kTieFromBefore |
                                                            (ties.onward >> n & 1U) * kTieOnward));
  }
}

bool IsFlagged(const ScoreItem& item) {
  constexpr std::uint8_t kEighth = 3;
  constexpr std::uint8_t kShortest = 8;
  return !item.group.isRest && item.group.durationCode >= kEighth && item.group.durationCode <= kShortest;
}

// The notes of a chord from low to high.
void SortChord(Group& group) {
  auto& pitches = group.item.pitches;
  group.item.courtesy = group.shown;
  group.item.bracketed = group.bracketed;
  const auto low = [](const SpelledPitch& a, const SpelledPitch& b) { return a.Key() < b.Key(); };
  if (std::ranges::is_sorted(pitches, low)) return;
  std::vector<std::size_t> order(pitches.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, {}, [&](std::size_t i) { return pitches[i].Key(); });
  const auto sorted = [&order](const auto& values) {
    std::remove_cvref_t<decltype(values)> result;
    for (const std::size_t i : order) result.push_back(values[i]);
    return result;
  };
  pitches = sorted(pitches);
  group.item.group.notes = sorted(group.item.group.notes);
  const auto moved = [&order](std::uint32_t bits) {
    std::uint32_t result = 0;
    for (std::size_t i = 0; i < order.size(); ++i) result |= (bits >> order[i] & 1U) << i;
    return result;
  };
  group.ties = {moved(group.ties.fromBefore), moved(group.ties.onward)};
  group.item.courtesy = moved(group.shown);
  group.item.bracketed = moved(group.bracketed);
}

void FillVoice(Part& part, std::span<const std::size_t> groups, bool hasBeams, VoiceItems& items) {
  Fraction now;
  items.reserve(groups.size());
  for (const std::size_t index : groups) {
    Group& group = part.groups[index];
    if (group.start > now) {
      std::ranges::move(GapItems(group.start - now), std::back_inserter(items));
      now = group.start;
    }
    SortChord(group);
    if (hasBeams && group.item.beams.empty() && IsFlagged(group.item)) group.item.beams = "-";
    KeepNoteTies(group);
    items.push_back(std::move(group.item));
    now += group.length;
  }
}

// The item of a staff at a place: one that begins there, else the one that lasts over it, else the last.
struct ItemAt {
  std::size_t voice = 0;
  std::size_t index = 0;
  Fraction start;
};
std::optional<ItemAt> FindItem(const std::vector<VoiceItems>& voices, Fraction at,
                               std::optional<std::size_t> wanted, ScoreTimeSignature time) {
  std::optional<ItemAt> over;
  for (std::size_t v = 0; v < voices.size(); ++v) {
    if (wanted && *wanted != v) continue;
    Fraction now;
    std::optional<ItemAt> last;
    for (std::size_t i = 0; i < voices[v].size(); ++i) {
      if (!voices[v][i].IsGroup()) continue;
      if (now == at && !voices[v][i].IsGrace()) return ItemAt{v, i, now};
      if (now <= at) last = ItemAt{v, i, now};
      now += LengthOf(voices[v][i], time);
    }
    if (last && (!over || last->start > over->start)) over = last;
  }
  return over;
}

void PlaceMarks(const PartToPlace& place, const PartVoices& voices, std::size_t measure, BarColumn& bar) {
  for (Mark& mark : place.part.measures[measure].marks) {
    auto& staff = bar.staves[place.part.firstStaff + mark.staff];
    std::optional<ItemAt> found;
    if (!mark.voice.empty())
      found = FindItem(staff, mark.at, voices.SlotOf(mark.staff, mark.voice), bar.time);
    if (!found) found = FindItem(staff, mark.at, std::nullopt, bar.time);
    if (!found) {
      std::ranges::move(GapItems(place.bars.lengths[measure]), std::back_inserter(staff[0]));
      found = FindItem(staff, mark.at, std::nullopt, bar.time);
      if (!found) continue;
    }
    ScoreItem& item = staff[found->voice][found->index];
    mark.drawing.offset = mark.at - found->start;
    if (mark.end != SIZE_MAX) {
      const MarkHome home{place.bars.starts[measure] + found->start, found->voice, item.group.isRest};
      ExtendMark(place, voices, measure, home, mark);
    }
    item.drawings.push_back(std::move(mark.drawing));
  }
}

// Before the item of the first voice that begins at its place or behind it.
void PlaceSigns(const PartToPlace& place, std::size_t measure, BarColumn& bar) {
  for (Sign& sign : place.part.measures[measure].signs) {
    VoiceItems& voice = bar.staves[place.part.firstStaff + sign.staff][0];
    Fraction now;
    std::size_t index = 0;
    while (index < voice.size() && (now < sign.at || !voice[index].IsGroup())) {
      now += LengthOf(voice[index], bar.time);
      ++index;
    }
    if (now < sign.at) {
      auto gap = GapItems(sign.at - now);
      index += gap.size();
      std::ranges::move(gap, std::back_inserter(voice));
    }
    voice.insert(voice.begin() + static_cast<std::ptrdiff_t>(std::min(index, voice.size())),
                 std::move(sign.item));
  }
}

}  // namespace

void FillBar(const PartToPlace& place, const PartVoices& voices, std::size_t measure, bool hasBeams,
             BarColumn& bar) {
  for (std::size_t staff = 0; staff < place.part.staves; ++staff) {
    auto& columns = bar.staves[place.part.firstStaff + staff];
    columns.resize(voices.Count(staff));
    for (std::size_t slot = 0; slot < columns.size(); ++slot)
      FillVoice(place.part, voices.Groups(measure, staff, slot), hasBeams, columns[slot]);
  }
  // Marks find what there is; they change nothing of it.
  PlaceSigns(place, measure, bar);
  PlaceMarks(place, voices, measure, bar);
}

}  // namespace ts5::converters::musicxml
