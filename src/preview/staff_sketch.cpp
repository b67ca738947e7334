#include "preview/staff_sketch.h"

#include <algorithm>
#include <string>

#include "preview/canvas.h"
#include "preview/mark_sketch.h"
#include "preview/voice_sketch.h"

namespace ts5::preview {
namespace {

constexpr double kLine = 0.11;

double YOf(int step) {
  return 4 - step / 2.0;
}

class StaffSketcher {
 public:
  StaffSketcher(const Engraving& engraving, const SystemPlaces& places, std::size_t staff, bool first)
      : engraving_(engraving), places_(places), staff_(staff), first_(first) {}

  StaffSketch Sketch() {
    for (int line = 0; line < 5; ++line) canvas_.Line(places_.left, line, places_.right, line, kLine);
    DrawSystemSigns();
    DrawChanges();
    const std::vector<PlacedVoice> voices = SketchVoices(engraving_, places_, staff_, canvas_);
    if (first_) DrawNumber();
    SketchMarks(engraving_, places_, staff_, first_, voices, canvas_);
    StaffSketch made;
    made.top = canvas_.Top();
    made.bottom = canvas_.Bottom();
    made.sketch = canvas_.Release();
    return made;
  }

 private:
  [[nodiscard]] const ScoreBar& Bar(std::size_t bar) const { return engraving_.music.bars[bar]; }

  // The changes of this staff at the start of a bar, or within it.
  template <typename Take>
  void ForChanges(std::size_t bar, bool within, const Take& take) const {
    const Fraction start = Bar(bar).start;
    const auto& changes = engraving_.music.changes[staff_];
    auto change = std::ranges::lower_bound(changes, start, {}, &ScoreChange::at);
    for (; change != changes.end() && change->at < start + Bar(bar).length; ++change) {
      if ((change->at > start) == within) take(*change);
    }
  }

  void DrawSystemSigns() {
    StaffSigns signs = engraving_.signs[staff_][places_.first];
    const ScoreItem* time = nullptr;
    ForChanges(places_.first, false, [&](const ScoreChange& change) {
      if (change.item->Is(ObjectKind::Clef)) signs.clef = change.item->clef;
      if (change.item->Is(ObjectKind::Key)) signs.key = change.item->key;
      if (change.item->Is(ObjectKind::Time)) time = change.item;
    });
    double x = places_.left + kSystemStart;
    DrawClef(x, signs.clef, 1);
    x += kClefWidth;
    DrawKey(x, signs.key, 0, signs.clef);
    x += KeyWidth(signs.key, 0);
    if (time == nullptr && places_.first > 0) return;
    DrawTime(x, time != nullptr ? time->time : Bar(places_.first).time,
             time != nullptr ? time->style : std::string());
  }

  void DrawChanges() {
    for (std::size_t bar = places_.first; bar < places_.last; ++bar) {
      StaffSigns signs = engraving_.signs[staff_][bar];
      double x = places_.bars[bar - places_.first] + (Bar(bar).repeatStart ? 1.6 : 0.6);
      if (bar > places_.first) {
        ForChanges(bar, false, [&](const ScoreChange& change) {
          const ScoreItem& item = *change.item;
          if (item.Is(ObjectKind::Clef)) {
            signs.clef = item.clef;
            DrawClef(x, item.clef, 0.8);
            x += kClefWidth;
          } else if (item.Is(ObjectKind::Key)) {
            DrawKey(x, item.key, signs.key, signs.clef);
            x += KeyWidth(item.key, signs.key);
            signs.key = item.key;
          } else if (item.Is(ObjectKind::Time)) {
            DrawTime(x, item.time, item.style);
            x += kTimeWidth;
          }
        });
      }
      ForChanges(bar, true, [&](const ScoreChange& change) {
        if (!change.item->Is(ObjectKind::Clef)) return;
        DrawClef(places_.X(engraving_, change.at) - kClefWidth * 0.72, change.item->clef, 0.75);
      });
    }
  }

  void DrawClef(double x, ScoreClef clef, double size) {
    if (clef.form == kClefPercussion) return canvas_.Put(Sign::PercussionClef, x + 0.4, 2, size);
    const Sign sign = clef.form == kClefF   ? Sign::BassClef
                      : clef.form == kClefC ? Sign::AltoClef
                                            : Sign::TrebleClef;
    const double y = 4 - ClefLine(clef);
    canvas_.Put(sign, x, y, size);
    const double top = sign == Sign::TrebleClef ? y - 4.6 * size : y - 1.2;
    const double bottom = sign == Sign::TrebleClef ? y + 2.8 * size : y + 2.8;
    canvas_.Take(x, top, x + 2.6 * size, bottom);
    if (clef.octave == 1) return;
    canvas_.Text({x + 1.2, clef.octave == 0 ? top - 0.1 : bottom + 1.2, "8", 1.6, TextStyle::Italic,
                  TextAlign::Centre});
  }

  void DrawKey(double x, int key, int before, ScoreClef clef) {
    if (clef.form == kClefPercussion) return;
    const int shown = key != 0 ? key : before;
    const Sign sign = key > 0 ? Sign::Sharp : key < 0 ? Sign::Flat : Sign::Natural;
    for (const int step : KeySteps(shown, clef)) {
      canvas_.Put(sign, x, YOf(step));
      canvas_.Take(x, YOf(step) - 1.3, x + 1, YOf(step) + 1.2);
      x += 1.05;
    }
  }

  void DrawTime(double x, ScoreTimeSignature time, const std::string& style) {
    const double middle = x + kTimeWidth / 2 - 0.3;
    if (style == "common" || style == "cut") {
      canvas_.Text({middle, 3.0, "C", 3.4, TextStyle::Bold, TextAlign::Centre});
      if (style == "cut") canvas_.Line(middle, 0.6, middle, 3.4, 0.15);
      return;
    }
    const std::string above = style.find('+') != std::string::npos ? style : std::to_string(time.numerator);
    canvas_.Text({middle, 1.95, above, 2.7, TextStyle::Bold, TextAlign::Centre});
    canvas_.Text({middle, 3.95, std::to_string(std::int64_t{1} << std::clamp<int>(time.power, 0, 12)), 2.7,
                  TextStyle::Bold, TextAlign::Centre});
  }

  void DrawNumber() {
    const std::string& number = Bar(places_.first).number;
    if (places_.first == 0 || number.empty()) return;
    // A score that has its numbers as texts needs no others.
    const auto& events = engraving_.music.voices[staff_];
    if (!events.empty()) {
      const auto at = std::ranges::lower_bound(events[0], Bar(places_.first).start, {}, &ScoreEvent::start);
      if (at != events[0].end()) {
        for (const DrawingItem& drawing : at->item->drawings) {
          if (WordsOf(drawing) == number) return;
        }
      }
    }
    const double y = canvas_.Above(places_.left, places_.left + 2) - 0.5;
    canvas_.Text({places_.left, y, number, 1.6});
  }

  const Engraving& engraving_;
  const SystemPlaces& places_;
  std::size_t staff_;
  bool first_;
  Canvas canvas_;
};

}  // namespace

StaffSketch SketchStaff(const Engraving& engraving, const SystemPlaces& places, std::size_t staff,
                        bool first) {
  return StaffSketcher(engraving, places, staff, first).Sketch();
}

}  // namespace ts5::preview
