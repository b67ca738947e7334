#include "preview/engraving.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>

#include "preview/sketch.h"
#include "score/score_parts.h"

namespace ts5::preview {
namespace {

constexpr double kPad = 0.9;  // behind a bar line, and before one
constexpr double kDotWidth = 0.7;

// What the slices that begin at one place need.
struct Need {
  double lead = 0;
  double body = kHeadWidth;
  double lyric = 0;  // width of the widest syllable
};

bool HasSecond(const ScoreEvent& event) {
  const auto& notes = event.item->group.notes;
  for (std::size_t i = 1; i < notes.size(); ++i) {
    if (std::abs(notes[i].position - notes[i - 1].position) == 1) return true;
  }
  return false;
}

class Spacer {
 public:
  explicit Spacer(Engraving& engraving) : engraving_(engraving) {
    next_.resize(engraving.slices.size());
    for (std::size_t s = 0; s < next_.size(); ++s) next_[s].resize(engraving.slices[s].size());
    nextChange_.resize(next_.size());
    signs_.resize(next_.size());
    engraving.signs.resize(next_.size());
  }

  BarWidth Space(std::size_t bar) {
    needs_.clear();
    const ScoreBar& own = engraving_.music.bars[bar];
    needs_[own.start];
    for (std::size_t staff = 0; staff < engraving_.slices.size(); ++staff) {
      for (std::size_t v = 0; v < engraving_.slices[staff].size(); ++v) Take(staff, v, bar);
    }
    BarWidth width;
    width.prefix = TakeChanges(own, bar);
    const Need& first = needs_.begin()->second;
    double x = width.prefix + std::max(kPad + first.lead, (first.lyric - kHeadWidth) / 2 + 0.3);
    const Fraction end = own.start + own.length;
    for (auto need = needs_.begin(); need != needs_.end(); ++need) {
      const auto following = std::next(need);
      width.columns.push_back({need->first, x, need->second.lead});
      const Fraction until = following == needs_.end() ? end : following->first;
      x += Distance(need->second, following == needs_.end() ? nullptr : &following->second,
                    until - need->first);
    }
    width.width = x + kPad * 0.5;
    return width;
  }

 private:
  static double Distance(const Need& need, const Need* following, Fraction length) {
    const double whole = static_cast<double>(length.Numerator()) / static_cast<double>(length.Denominator());
    double distance = 1.6 + 1.1 * std::max(std::log2(std::max(whole, 1.0 / 64) * 32), 0.0);
    const double lead = following == nullptr ? 0 : following->lead;
    distance = std::max(distance, need.body + lead + 0.45);
    if (need.lyric > 0) {
      const double other = following == nullptr ? 0 : following->lyric;
      distance = std::max(distance, (need.lyric + other) / 2 + 0.9);
    }
    return distance;
  }

  void Take(std::size_t staff, std::size_t v, std::size_t bar) {
    const auto& slices = engraving_.slices[staff][v];
    std::size_t& next = next_[staff][v];
    std::size_t graces = 0;
    for (; next < slices.size() && slices[next].bar <= bar; ++next) {
      const converters::NotationSlice& slice = slices[next];
      if (slice.bar < bar || slice.event->IsGap()) continue;
      if (slice.grace) {
        ++graces;
        continue;
      }
      Need& need = needs_[slice.start];
      const std::uint32_t shown = ShownAccidentals(staff, v, slice);
      int accidentals = 0;
      for (std::uint32_t bits = shown; bits != 0; bits &= bits - 1) ++accidentals;
      double lead = accidentals == 0 ? 0 : kAccidentalWidth * std::min(accidentals, 3) + 0.15;
      lead += static_cast<double>(graces) * kGraceWidth + (graces > 0 ? 0.4 : 0.0);
      need.lead = std::max(need.lead, lead);
      double body = kHeadWidth + kDotWidth * slice.value.dots;
      if (!slice.event->IsRest() && HasSecond(*slice.event)) body += kHeadWidth;
      if (slice.beams.empty() && slice.value.code >= 3 && slice.value.code < 9) body += 0.7;
      need.body = std::max(need.body, body);
      if (slice.first) {
        for (const LyricItem& lyric : slice.event->item->lyrics)
          need.lyric = std::max(need.lyric, TextWidth(lyric.syllable, kLyricSize) +
                                                ((lyric.flags & kLyricHyphen) != 0 ? 0.8 : 0.0));
      }
      graces = 0;
    }
  }

  [[nodiscard]] std::uint32_t ShownAccidentals(std::size_t staff, std::size_t v,
                                               const converters::NotationSlice& slice) const {
    if (slice.event->IsRest() || !slice.first || engraving_.document.staves[staff].usesNoteMap) return 0;
    return engraving_.accidentals[staff][v][slice.index] | slice.event->item->courtesy;
  }

  // The width of what changes at the start of the bar. Clefs within it stand before their place.
  double TakeChanges(const ScoreBar& bar, std::size_t index) {
    double clef = 0;
    double key = 0;
    double time = 0;
    for (std::size_t staff = 0; staff < engraving_.slices.size(); ++staff) {
      StaffSigns& now = signs_[staff];
      const auto& changes = engraving_.music.changes[staff];
      std::size_t& next = nextChange_[staff];
      // What stands at the very start is what the first system begins with.
      if (index == 0) next = Follow(changes, next, bar.start, now);
      engraving_.signs[staff].push_back(now);
      for (; next < changes.size() && changes[next].at < bar.start + bar.length; ++next) {
        const ScoreItem& item = *changes[next].item;
        if (changes[next].at > bar.start) {
          if (item.Is(ObjectKind::Clef)) needs_[changes[next].at].lead += kClefWidth * 0.75;
        } else {
          if (item.Is(ObjectKind::Clef)) clef = kClefWidth;
          if (item.Is(ObjectKind::Key)) key = std::max(key, KeyWidth(item.key, now.key));
          if (item.Is(ObjectKind::Time)) time = kTimeWidth;
        }
        Apply(item, now);
      }
    }
    return clef + key + time + (bar.repeatStart && index > 0 ? 1.2 : 0.0);
  }

  static void Apply(const ScoreItem& item, StaffSigns& signs) {
    if (item.Is(ObjectKind::Clef)) signs.clef = item.clef;
    if (item.Is(ObjectKind::Key)) signs.key = item.key;
  }
  static std::size_t Follow(const std::vector<ScoreChange>& changes, std::size_t next, Fraction to,
                            StaffSigns& signs) {
    for (; next < changes.size() && changes[next].at <= to; ++next) Apply(*changes[next].item, signs);
    return next;
  }

  Engraving& engraving_;
  std::vector<std::vector<std::size_t>> next_;  // slice of each staff and voice
  std::vector<std::size_t> nextChange_;
  std::vector<StaffSigns> signs_;
  std::map<Fraction, Need> needs_;
};

std::vector<std::size_t> MarkedIn(const std::vector<ScoreEvent>& events) {
  std::vector<std::size_t> marked;
  for (std::size_t i = 0; i < events.size(); ++i) {
    if (!events[i].item->drawings.empty()) marked.push_back(i);
  }
  return marked;
}

}  // namespace

std::span<const converters::NotationSlice> Engraving::SlicesOf(std::size_t staff, std::size_t voice,
                                                               std::size_t bar) const {
  const auto& all = slices[staff][voice];
  const auto number = static_cast<std::uint32_t>(bar);
  const auto first = std::ranges::lower_bound(all, number, {}, &converters::NotationSlice::bar);
  const auto last = std::ranges::upper_bound(all, number, {}, &converters::NotationSlice::bar);
  return std::span(all).subspan(static_cast<std::size_t>(first - all.begin()),
                                static_cast<std::size_t>(last - first));
}

void Engrave(ScoreDocument document, Engraving& engraving, const CancelCheck& cancelled) {
  engraving.document = std::move(document);
  engraving.music = ReadMusic(engraving.document, cancelled);
  engraving.parts = PartsOf(engraving.document);
  const bool own = HasBeams(engraving.music);
  const auto stopped = [&cancelled] { return cancelled && cancelled(); };
  for (std::size_t staff = 0; staff < engraving.music.voices.size() && !stopped(); ++staff) {
    auto& voices = engraving.slices.emplace_back();
    auto& marked = engraving.marked.emplace_back();
    for (const auto& events : engraving.music.voices[staff]) {
      voices.push_back(converters::SliceVoice(events, engraving.music, !own));
      marked.push_back(MarkedIn(events));
    }
    engraving.accidentals.push_back(NeededAccidentals(engraving.music, staff));
  }
  if (stopped()) return;
  Spacer spacer(engraving);
  for (std::size_t bar = 0; bar < engraving.music.bars.size(); ++bar) {
    if (bar % 64 == 0 && stopped()) return;
    engraving.bars.push_back(spacer.Space(bar));
  }
}

double KeyWidth(int key, int before) {
  const int count = key != 0 ? std::abs(key) : std::abs(before);  // naturals take back
  return count == 0 ? 0.0 : 0.6 + 1.05 * count;
}

int ClefLine(ScoreClef clef) {
  const bool usual = clef.line == 0 && clef.form != kClefC;
  return usual ? ClefItem(clef.form).clef.line : clef.line;
}

int StepOn(SpelledPitch pitch, ScoreClef clef) {
  constexpr int kSteps = 7;
  constexpr int kG4 = 4 + kSteps * 4;
  constexpr int kC4 = kSteps * 4;
  constexpr int kF3 = 3 + kSteps * 3;
  const int reference = clef.form == kClefC ? kC4 : clef.form == kClefF ? kF3 : kG4;
  const int octave = clef.octave == 0 ? kSteps : clef.octave == 2 ? -kSteps : 0;
  const int line = clef.form == kClefPercussion ? 1 : ClefLine(clef);
  return pitch.step + kSteps * pitch.octave - octave - reference + 2 * line;
}

std::vector<int> KeySteps(int key, ScoreClef clef) {
  // In the treble clef; other clefs lie lower by their difference, within the staff.
  constexpr std::array<int, 7> kSharps = {8, 5, 9, 6, 3, 7, 4};
  constexpr std::array<int, 7> kFlats = {4, 7, 3, 6, 2, 5, 1};
  int shift = 0;
  if (clef.form == kClefF) shift = -2 + 2 * (ClefLine(clef) - 3);
  if (clef.form == kClefC) shift = -1 + 2 * (ClefLine(clef) - 2);
  if (clef.form == kClefG) shift = 2 * (ClefLine(clef) - 1);
  std::vector<int> steps;
  for (int i = 0; i < std::min(std::abs(key), 7); ++i) {
    int step = (key > 0 ? kSharps : kFlats)[static_cast<std::size_t>(i)] + shift;
    if (step < 0) step += 7;
    if (step > 9) step -= 7;
    steps.push_back(step);
  }
  return steps;
}

}  // namespace ts5::preview
