#include "converters/assembly_ties.h"

#include "converters/texts.h"

namespace ts5::converters::musicxml {
namespace {

constexpr std::size_t kChordsBetween = 1024;  // two looks at the stop

bool HasTies(const Part& part) {
  for (std::size_t i = 0; i < part.groups.Size(); ++i) {
    if ((part.groups[i].ties.fromBefore | part.groups[i].ties.onward) != 0) return true;
  }
  return false;
}

class Ties {
 public:
  Ties(const PartToPlace& place, const PartVoices& voices)
      : place_(place),
        voices_(voices),
        found_(place.part.groups.Size()),
        next_(place.part.groups.Size(), SIZE_MAX) {
    for (std::size_t staff = 0; staff < place.part.staves; ++staff) {
      for (std::size_t slot = 0; slot < voices.Count(staff); ++slot) {
        const auto& chords = voices.Chords(staff, slot);
        all_.insert(all_.end(), chords.begin(), chords.end());
      }
    }
    std::ranges::sort(all_, {}, [](const ChordAt& chord) { return std::pair(chord.at, chord.group); });
  }

  bool Resolve(const CancelCheck& cancelled) {
    std::size_t linked = 0;
    for (const ChordAt& chord : all_) {
      if (++linked % kChordsBetween == 0 && cancelled && cancelled()) return false;
      Link(chord);
    }
    for (const ChordAt& chord : all_) {
      Group& group = GroupOf(chord);
      const std::uint32_t all = AllNotes(group);
      group.ties = found_[chord.group];
      group.item.group.tieFromBefore = all != 0 && group.ties.fromBefore == all;
      group.item.group.tieOnward = all != 0 && group.ties.onward == all;
    }
    for (const ChordAt& chord : all_) Close(GroupOf(chord), next_[chord.group]);
    return true;
  }

 private:
  Group& GroupOf(const ChordAt& chord) { return place_.part.groups[chord.group]; }

  void Link(const ChordAt& chord) {
    const Group& group = GroupOf(chord);
    for (std::size_t n = 0; n < group.item.pitches.size(); ++n) {
      if ((group.ties.onward >> n & 1U) != 0 && !LinkNote(chord, n))
        place_.Lose(texts::LossTieEnd, place_.MeasureOf(chord.group), group.staff);
    }
  }

  bool LinkNote(const ChordAt& chord, std::size_t n) {
    const auto key = GroupOf(chord).item.pitches[n].Key();
    const Fraction end = chord.at + GroupOf(chord).length;
    for (auto other = std::ranges::lower_bound(all_, end, {}, &ChordAt::at);
         other != all_.end() && other->at == end; ++other) {
      if (other->group <= chord.group && other->at == chord.at) continue;
      const auto& pitches = GroupOf(*other).item.pitches;
      for (std::size_t k = 0; k < pitches.size(); ++k) {
        if (pitches[k].Key() != key || (found_[other->group].fromBefore >> k & 1U) != 0) continue;
        found_[other->group].fromBefore |= 1U << k;
        found_[chord.group].onward |= 1U << n;
        next_[chord.group] = other->group;
        return true;
      }
    }
    return false;
  }

  // A chord is tied as a whole only to the chord that follows it in its voice, when that one is as a whole
  // too.
  void Close(Group& group, std::size_t next) {
    const auto& chords = voices_.Chords(group.staff, group.slot);
    Group* follower = group.chord + 1 < chords.size() ? &GroupOf(chords[group.chord + 1]) : nullptr;
    const bool whole = group.item.group.tieOnward && follower != nullptr &&
                       chords[group.chord + 1].group == next && follower->item.group.tieFromBefore;
    if (whole) return;
    group.item.group.tieOnward = false;
    if (follower != nullptr) follower->item.group.tieFromBefore = false;
  }

  const PartToPlace& place_;
  const PartVoices& voices_;
  std::vector<ChordAt> all_;
  std::vector<TiedNotes> found_;   // of each group
  std::vector<std::size_t> next_;  // of each group: the one that all its notes go on to
};

}  // namespace

bool ResolveTies(const PartToPlace& place, const PartVoices& voices, const CancelCheck& cancelled) {
  if (!HasTies(place.part)) return true;
  return Ties(place, voices).Resolve(cancelled);
}

}  // namespace ts5::converters::musicxml
