#include "preview/voice_sketch.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>

#include "platform/base/text.h"
#include "preview/group_sketch.h"

namespace ts5::preview {
namespace {

constexpr double kStem = 3.5;
constexpr double kLedger = 0.12;
constexpr std::uint8_t kFirstFlag = 3;
constexpr std::uint8_t kBreve = 9;

int Flags(std::uint8_t code) {
  return code >= kFirstFlag && code < kBreve ? code - kFirstFlag + 1 : 0;
}

Sign HeadOf(std::uint8_t code, std::uint8_t form) {
  constexpr std::array<Sign, 7> kForms = {Sign::FilledHead,   Sign::CrossHead, Sign::DiamondHead,
                                          Sign::TriangleHead, Sign::SlashHead, Sign::CrossHead,
                                          Sign::SlashHead};
  if (form > 0 && form < kForms.size()) return kForms[form];
  return code == kBreve ? Sign::BreveHead
         : code == 0    ? Sign::WholeHead
         : code == 1    ? Sign::HalfHead
                        : Sign::FilledHead;
}

Sign AccidentalSign(int alter) {
  return alter <= -2   ? Sign::DoubleFlat
         : alter == -1 ? Sign::Flat
         : alter == 0  ? Sign::Natural
         : alter == 1  ? Sign::Sharp
                       : Sign::DoubleSharp;
}

class VoiceSketcher {
 public:
  VoiceSketcher(const Engraving& engraving, const SystemPlaces& places, std::size_t staff, std::size_t voice,
                Canvas& canvas)
      : engraving_(engraving), places_(places), staff_(staff), voice_(voice), canvas_(canvas) {}

  PlacedVoice Sketch() {
    for (std::size_t bar = places_.first; bar < places_.last; ++bar) Place(bar);
    Direct();
    for (PlacedSlice& placed : placed_) {
      if (placed.slice->event->IsRest()) {
        DrawRest(placed);
      } else {
        DrawChord(placed);
      }
    }
    for (const Run& run : runs_)
      SketchBeams(canvas_, std::span(placed_).subspan(run.first, run.last - run.first + 1));
    SketchTuplets(canvas_, placed_);
    return std::move(placed_);
  }

 private:
  struct Run {  // of slices under one beam
    std::size_t first = 0;
    std::size_t last = 0;
  };

  void Place(std::size_t bar) {
    const bool shared = Shares(bar);
    std::vector<std::size_t> graces;
    for (const converters::NotationSlice& slice : engraving_.SlicesOf(staff_, voice_, bar)) {
      if (slice.event->IsGap()) continue;
      if ((slice.event->item->group.flags & kGroupInvisible) != 0) continue;
      PlacedSlice placed;
      placed.slice = &slice;
      placed.x = places_.X(engraving_, slice.start);
      placed.size = slice.grace ? kGraceSize : 1;
      placed.shared = shared;
      for (const ScoreNote& note : slice.event->item->group.notes)
        placed.steps.push_back(StepOn(PitchOf(note, slice.event->clef, slice.event->key), slice.event->clef));
      if (slice.grace) graces.push_back(placed_.size());
      placed_.push_back(std::move(placed));
      if (slice.grace) continue;
      ShiftGraces(graces, placed_.back());
      graces.clear();
    }
    if (!graces.empty()) ShiftGraces(graces, placed_.back());
  }

  // Grace notes stand before what they lead to and its accidentals.
  void ShiftGraces(const std::vector<std::size_t>& graces, const PlacedSlice& main) {
    double x = main.x - 0.4 - AccidentalRoom(main);
    for (auto grace = graces.rbegin(); grace != graces.rend(); ++grace) {
      x -= kGraceWidth;
      placed_[*grace].x = x;
    }
  }

  [[nodiscard]] std::uint32_t Shown(const converters::NotationSlice& slice) const {
    if (slice.event->IsRest() || !slice.first || engraving_.document.staves[staff_].usesNoteMap) return 0;
    return engraving_.accidentals[staff_][voice_][slice.index] | slice.event->item->courtesy;
  }
  [[nodiscard]] double AccidentalRoom(const PlacedSlice& placed) const {
    return Shown(*placed.slice) == 0 ? 0.0 : kAccidentalWidth;
  }

  // Whether other voices have music in a bar.
  [[nodiscard]] bool Shares(std::size_t bar) const {
    const auto& voices = engraving_.slices[staff_];
    std::size_t count = 0;
    for (std::size_t v = 0; v < voices.size(); ++v) {
      const auto slices = engraving_.SlicesOf(staff_, v, bar);
      count += std::ranges::any_of(slices, [](const converters::NotationSlice& slice) {
        return !slice.event->IsGap() && (slice.event->item->group.flags & kGroupInvisible) == 0;
      });
    }
    return count > 1;
  }

  // --- stems and the runs of beams

  void Direct() {
    for (std::size_t i = 0; i < placed_.size();) {
      std::size_t last = i;
      const auto begins = [&](std::size_t k) { return placed_[k].slice->beams.starts_with('b'); };
      if (begins(i)) {
        while (last + 1 < placed_.size() && !placed_[last].slice->beams.starts_with('e')) ++last;
        if (placed_[last].slice->beams.starts_with('e') && last > i) {
          runs_.push_back({i, last});
          const bool up = Upward(i, last);
          for (std::size_t k = i; k <= last; ++k) {
            placed_[k].up = up;
            placed_[k].beamed = !placed_[k].slice->event->IsRest() && !placed_[k].slice->beams.empty();
          }
          i = last + 1;
          continue;
        }
      }
      placed_[i].up = Upward(i, i);
      ++i;
    }
  }

  [[nodiscard]] bool Upward(std::size_t first, std::size_t last) const {
    const char stem = placed_[first].slice->event->item->stem;
    if (stem == 'u' || stem == 'd') return stem == 'u';
    if (placed_[first].slice->grace) return true;
    if (placed_[first].shared) return voice_ % 2 == 0;
    int low = 100;
    int high = -100;
    for (std::size_t i = first; i <= last; ++i) {
      for (const int step : placed_[i].steps) {
        low = std::min(low, step);
        high = std::max(high, step);
      }
    }
    constexpr int kMiddle = 4;
    return low + high < 2 * kMiddle;
  }

  // --- chords

  void DrawChord(PlacedSlice& placed) {
    const converters::NotationSlice& slice = *placed.slice;
    const auto [low, high] = std::ranges::minmax(placed.steps);
    DrawLedgers(placed, low, high);
    DrawHeads(placed);
    DrawAccidentals(placed);
    placed.top = YOf(high) - 0.5;
    placed.bottom = YOf(low) + 0.5;
    const bool stem = slice.value.code != 0 && slice.value.code != kBreve && slice.event->item->stem != 'n';
    placed.tip = placed.up ? placed.top : placed.bottom;
    if (stem) {
      const int flags = Flags(slice.value.code);
      const double length = (kStem + (flags > 2 ? 0.75 * (flags - 2) : 0.0)) * placed.size;
      placed.tip = placed.up ? YOf(high) - length : YOf(low) + length;
      // Far from the staff a stem reaches back to its middle.
      if (!slice.grace && placed.up) placed.tip = std::min(placed.tip, 2.0);
      if (!slice.grace && !placed.up) placed.tip = std::max(placed.tip, 2.0);
      if (!placed.beamed) SketchStem(canvas_, placed, flags);
      placed.top = std::min(placed.top, placed.tip);
      placed.bottom = std::max(placed.bottom, placed.tip);
    }
    canvas_.Take(placed.x, placed.top, placed.x + kHeadWidth * placed.size, placed.bottom);
  }

  void DrawLedgers(const PlacedSlice& placed, int low, int high) {
    const double left = placed.x - 0.4 * placed.size;
    const double right = placed.x + (kHeadWidth + 0.4) * placed.size;
    constexpr int kMost = 60;
    for (int step = -2; step >= std::max(low, -kMost); step -= 2)
      canvas_.Line(left, YOf(step), right, YOf(step), kLedger);
    for (int step = 10; step <= std::min(high, kMost); step += 2)
      canvas_.Line(left, YOf(step), right, YOf(step), kLedger);
  }

  void DrawHeads(const PlacedSlice& placed) {
    const converters::NotationSlice& slice = *placed.slice;
    const auto& notes = slice.event->item->group.notes;
    std::vector<std::size_t> order(placed.steps.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    // From the end of the stem where the first head stands right.
    std::ranges::sort(order, {},
                      [&](std::size_t i) { return placed.up ? placed.steps[i] : -placed.steps[i]; });
    int before = 1000;
    bool moved = false;
    double right = 0;
    for (const std::size_t i : order) {
      const int step = placed.steps[i];
      moved = std::abs(step - before) == 1 && !moved;
      before = step;
      const double shift = moved ? (placed.up ? kHeadWidth - 0.1 : 0.1 - kHeadWidth) * placed.size : 0.0;
      canvas_.Put(HeadOf(slice.value.code, i < notes.size() ? notes[i].value : std::uint8_t{0}),
                  placed.x + shift, YOf(step), placed.size);
      right = std::max(right, shift);
    }
    for (std::size_t i = 0; i < placed.steps.size(); ++i) {
      const int step = placed.steps[i];
      for (unsigned dot = 0; dot < slice.value.dots; ++dot) {
        const double x = placed.x + (kHeadWidth + 0.45 + 0.6 * dot) * placed.size + right;
        canvas_.Put(Sign::Dot, x, YOf(step % 2 == 0 ? step + 1 : step), placed.size);
      }
    }
  }

  void DrawAccidentals(const PlacedSlice& placed) {
    const converters::NotationSlice& slice = *placed.slice;
    const std::uint32_t shown = Shown(slice);
    if (shown == 0) return;
    const auto& notes = slice.event->item->group.notes;
    // From the top; each goes to the first row that is free there.
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < notes.size() && i < kMaxChordKeys; ++i) {
      if ((shown >> i & 1U) != 0) order.push_back(i);
    }
    std::ranges::sort(order, std::greater<>(), [&](std::size_t i) { return placed.steps[i]; });
    std::vector<int> lowest;  // step of the last one in each row
    for (const std::size_t i : order) {
      constexpr int kHigh = 6;  // steps that an accidental needs
      const int step = placed.steps[i];
      std::size_t row = 0;
      while (row < lowest.size() && lowest[row] - step < kHigh) ++row;
      if (row == lowest.size()) lowest.push_back(step);
      lowest[row] = step;
      const int alter = PitchOf(notes[i], slice.event->clef, slice.event->key).alter;
      const double x = placed.x - (kAccidentalWidth * static_cast<double>(row + 1) + 0.05) * placed.size;
      canvas_.Put(AccidentalSign(alter), x, YOf(step), placed.size);
      if ((slice.event->item->bracketed >> i & 1U) != 0) {
        canvas_.Text({x - 0.55, YOf(step) + 0.8, "(", 2.2});
        canvas_.Text({x + 0.85, YOf(step) + 0.8, ")", 2.2});
      }
      canvas_.Take(x, YOf(step) - 1.3, placed.x, YOf(step) + 1.3);
    }
  }

  // --- rests

  void DrawRest(PlacedSlice& placed) {
    const converters::NotationSlice& slice = *placed.slice;
    double y = 2;
    if (placed.shared) y += voice_ % 2 == 0 ? -2 : 2;
    Sign sign = Sign::WholeRest;
    if (slice.measureRest) {
      const std::size_t bar = slice.bar - places_.first;
      placed.x = (places_.bars[bar] + places_.bars[bar + 1]) / 2 - 0.65;
    } else {
      constexpr std::array<Sign, 6> kRests = {Sign::WholeRest,  Sign::HalfRest,      Sign::QuarterRest,
                                              Sign::EighthRest, Sign::SixteenthRest, Sign::ThirtySecondRest};
      sign = slice.value.code == kBreve ? Sign::WholeRest
                                        : kRests[std::min<std::size_t>(slice.value.code, kRests.size() - 1)];
    }
    canvas_.Put(sign, placed.x, y, placed.size);
    for (unsigned dot = 0; dot < slice.value.dots && !slice.measureRest; ++dot)
      canvas_.Put(Sign::Dot, placed.x + kHeadWidth + 0.5 + 0.6 * dot, y - 0.5);
    placed.top = y - 1.5;
    placed.bottom = y + 1.5;
    placed.tip = y;
    canvas_.Take(placed.x, placed.top, placed.x + kHeadWidth, placed.bottom);
  }

  const Engraving& engraving_;
  const SystemPlaces& places_;
  std::size_t staff_;
  std::size_t voice_;
  Canvas& canvas_;
  PlacedVoice placed_;
  std::vector<Run> runs_;
};

}  // namespace

std::vector<PlacedVoice> SketchVoices(const Engraving& engraving, const SystemPlaces& places,
                                      std::size_t staff, Canvas& canvas) {
  std::vector<PlacedVoice> voices;
  for (std::size_t v = 0; v < engraving.slices[staff].size(); ++v)
    voices.push_back(VoiceSketcher(engraving, places, staff, v, canvas).Sketch());
  return voices;
}

}  // namespace ts5::preview
