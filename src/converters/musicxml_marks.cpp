#include "converters/musicxml_marks.h"

#include <algorithm>
#include <array>
#include <tuple>

#include "converters/texts.h"
#include "converters/xml_signs.h"
#include "platform/base/text.h"

namespace ts5::converters::musicxml {
namespace {

constexpr unsigned kMostNumbers = 16;

// Two that last at once have different numbers. As voices are written one after another, of two voices the
// bars count, not the places.
class Numbers {
 public:
  unsigned Take(std::size_t staff, std::size_t voice, Fraction from, Fraction to, std::uint32_t firstBar,
                std::uint32_t lastBar) {
    std::array<bool, kMostNumbers> used{};
    for (const Line& line : lines_) {
      const bool same = line.staff == staff && line.voice == voice;
      const bool meets =
          same ? line.from <= to && from <= line.to : line.firstBar <= lastBar && firstBar <= line.lastBar;
      if (meets) used[line.number - 1] = true;
    }
    const auto free = std::ranges::find(used, false);
    const unsigned number =
        free == used.end() ? kMostNumbers : static_cast<unsigned>(free - used.begin()) + 1;
    std::erase_if(lines_,
                  [firstBar](const Line& line) { return line.lastBar + 1 < firstBar && firstBar > 0; });
    lines_.push_back({staff, voice, from, to, firstBar, lastBar, number});
    return number;
  }

 private:
  struct Line {
    std::size_t staff = 0;
    std::size_t voice = 0;
    Fraction from;
    Fraction to;
    std::uint32_t firstBar = 0;
    std::uint32_t lastBar = 0;
    unsigned number = 1;
  };
  std::vector<Line> lines_;
};

// One event in its place, to be gone through by bars.
struct EventAt {
  std::size_t staff = 0;
  std::size_t voice = 0;
  std::size_t event = 0;
};

class Collector {
 public:
  Collector(const ScoreMusic& music, std::size_t firstStaff, std::size_t staves, LossReport& losses)
      : music_(music), firstStaff_(firstStaff), losses_(losses), marks_(staves) {}

  PartMarks Collect() {
    std::vector<EventAt> all;
    for (std::size_t staff = 0; staff < marks_.size(); ++staff) {
      const auto& voices = music_.voices[firstStaff_ + staff];
      marks_[staff].resize(voices.size());
      for (std::size_t voice = 0; voice < voices.size(); ++voice) {
        for (std::size_t i = 0; i < voices[voice].size(); ++i) {
          if (!voices[voice][i].item->drawings.empty()) all.push_back({staff, voice, i});
        }
      }
    }
    std::ranges::stable_sort(all, {}, [this](const EventAt& at) { return EventOf(at).start; });
    for (const EventAt& at : all) {
      for (const DrawingItem& drawing : EventOf(at).item->drawings) Take(at, drawing);
    }
    for (auto& staff : marks_) {
      for (VoiceMarks& voice : staff)
        std::ranges::stable_sort(voice.directions, {},
                                 [](const Direction& d) { return std::tuple(d.at, !d.endsBar, !d.stop); });
    }
    return std::move(marks_);
  }

 private:
  [[nodiscard]] const std::vector<ScoreEvent>& EventsOf(const EventAt& at) const {
    return music_.voices[firstStaff_ + at.staff][at.voice];
  }
  [[nodiscard]] const ScoreEvent& EventOf(const EventAt& at) const { return EventsOf(at)[at.event]; }
  VoiceMarks& MarksOf(const EventAt& at) { return marks_[at.staff][at.voice]; }

  void Take(const EventAt& at, const DrawingItem& drawing) {
    for (const DrawingItem& nested : drawing.nested) Take(at, nested);
    const ScoreEvent& event = EventOf(at);
    const Fraction place = event.start + drawing.offset;
    if (drawing.Is(DrawingKind::FourPointCurve)) return TakeSlur(at, drawing);
    if (drawing.Is(DrawingKind::Hairpin)) return TakeLasting(at, drawing, place, hairpins_);
    if (drawing.sign == "octave-shift") return TakeLasting(at, drawing, place, octaves_);
    if (drawing.Is(DrawingKind::Volta) || drawing.Is(DrawingKind::Group) ||
        drawing.Is(DrawingKind::FlaggedGroup))
      return;
    if (!drawing.Is(DrawingKind::Text)) {
      losses_.Add(texts::LossObject, static_cast<int>(event.bar), static_cast<int>(firstStaff_ + at.staff));
      return;
    }
    const XmlSign* sign = FindSign(drawing.sign);
    const bool within = sign != nullptr && sign->group != SignGroup::Direction;
    if (within || IsNotationText(drawing)) return;
    const bool endsBar = !drawing.offset.IsZero() && event.bar < music_.bars.size() &&
                         place == music_.bars[event.bar].start + music_.bars[event.bar].length;
    MarksOf(at).directions.push_back({.at = place, .drawing = &drawing, .endsBar = endsBar});
  }

  // A text that is a sign of the chord, not beside it.
  static bool IsNotationText(const DrawingItem& drawing) {
    if (!drawing.sign.empty()) return false;
    DrawnMarks marks;
    ApplyDrawing(DrawingKind::Text, {0, 0, drawing.text}, marks);
    return marks.articulation != 0 || marks.marked || WordsOf(drawing) == "tr";
  }

  void TakeSlur(const EventAt& at, const DrawingItem& drawing) {
    const auto& events = EventsOf(at);
    const std::size_t end = SpanEnd(events, at.event, drawing.span);
    if (end == at.event) {
      losses_.Add(texts::LossSlur, static_cast<int>(events[at.event].bar),
                  static_cast<int>(firstStaff_ + at.staff));
      return;
    }
    const unsigned number = slurs_.Take(at.staff, at.voice, events[at.event].start, events[end].start,
                                        events[at.event].bar, events[end].bar);
    MarksOf(at).slurs[at.event].push_back({true, number, drawing.placement});
    MarksOf(at).slurs[end].push_back({false, number, 0});
  }

  void TakeLasting(const EventAt& at, const DrawingItem& drawing, Fraction place, Numbers& numbers) {
    const auto& events = EventsOf(at);
    Fraction end = place + drawing.extent;
    if (drawing.extent.IsZero()) {
      const ScoreEvent& last = events[SpanEnd(events, at.event, drawing.span)];
      end = last.start > place ? last.start : last.start + last.length;
    }
    end = std::min(end, music_.length);
    const unsigned number =
        numbers.Take(at.staff, at.voice, place, end, BarAt(music_, place), BarAt(music_, end));
    MarksOf(at).directions.push_back({.at = place, .drawing = &drawing, .number = number});
    MarksOf(at).directions.push_back({.at = end, .drawing = &drawing, .stop = true, .number = number});
  }

  const ScoreMusic& music_;
  std::size_t firstStaff_;
  LossReport& losses_;
  PartMarks marks_;
  Numbers slurs_;
  Numbers hairpins_;
  Numbers octaves_;
};

}  // namespace

PartMarks CollectMarks(const ScoreMusic& music, std::size_t firstStaff, std::size_t staves,
                       LossReport& losses) {
  return Collector(music, firstStaff, staves, losses).Collect();
}

}  // namespace ts5::converters::musicxml
