#include "converters/assembly_ties.h"

#include "converters/texts.h"

namespace ts5::musicxml {
namespace {

constexpr std::size_t kChordsBetween = 1024;  // two looks at the stop

bool All(const std::vector<std::uint8_t>& ties, std::uint8_t bit) {
  return !ties.empty() && std::ranges::all_of(ties, [bit](std::uint8_t tie) { return (tie & bit) != 0; });
}

class Ties {
 public:
  Ties(const PartToPlace& place, const PartVoices& voices)
      : place_(place),
        voices_(voices),
        found_(place.part.groups.size()),
        next_(place.part.groups.size(), SIZE_MAX) {
    for (std::size_t staff = 0; staff < place.part.staves; ++staff) {
      for (std::size_t slot = 0; slot < kMaxVoices; ++slot) {
        const auto& chords = voices.Chords(staff, slot);
        all_.insert(all_.end(), chords.begin(), chords.end());
      }
    }
    std::ranges::sort(all_, {}, [](const ChordAt& chord) { return std::pair(chord.at, chord.group); });
    for (const ChordAt& chord : all_) found_[chord.group].resize(GroupOf(chord).ties.size());
  }

  bool Resolve(const CancelCheck& cancelled) {
    std::size_t linked = 0;
    for (const ChordAt& chord : all_) {
      if (++linked % kChordsBetween == 0 && cancelled && cancelled()) return false;
      Link(chord);
    }
    for (const ChordAt& chord : all_) {
      Group& group = GroupOf(chord);
      group.ties = found_[chord.group];
      group.item.group.tieFromBefore = All(group.ties, kTieFromBefore);
      group.item.group.tieOnward = All(group.ties, kTieOnward);
    }
    for (const ChordAt& chord : all_) Close(GroupOf(chord), next_[chord.group]);
    return true;
  }

 private:
  Group& GroupOf(const ChordAt& chord) { return place_.part.groups[chord.group]; }

  void Link(const ChordAt& chord) {
    const Group& group = GroupOf(chord);
    for (std::size_t n = 0; n < group.ties.size(); ++n) {
      if ((group.ties[n] & kTieOnward) != 0 && !LinkNote(chord, n))
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
        std::uint8_t& tie = found_[other->group][k];
        if (pitches[k].Key() != key || (tie & kTieFromBefore) != 0) continue;
        tie |= kTieFromBefore;
        found_[chord.group][n] |= kTieOnward;
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
  std::vector<std::vector<std::uint8_t>> found_;  // of each group, of each note
  std::vector<std::size_t> next_;                 // of each group: the one that all its notes go on to
};

}  // namespace

bool ResolveTies(const PartToPlace& place, const PartVoices& voices, const CancelCheck& cancelled) {
  return Ties(place, voices).Resolve(cancelled);
}

}  // namespace ts5::musicxml
