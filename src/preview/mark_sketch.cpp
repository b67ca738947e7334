#include "preview/mark_sketch.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "converters/xml_signs.h"
#include "platform/base/text.h"

namespace ts5::preview {
namespace {

constexpr double kWords = 2.0;  // sizes of texts
constexpr double kDynamic = 2.4;
constexpr double kSmall = 1.7;
constexpr double kLyricLine = 2.3;

bool IsKind(const DrawingItem& drawing, DrawingKind kind) {
  return drawing.kind == static_cast<std::uint8_t>(kind);
}

// Marks that have a sign of their own here; others are told by a short text.
struct DrawnMark {
  std::string_view name;
  Sign sign;
};
constexpr DrawnMark kMarks[] = {
    {"staccato", Sign::Dot},           {"tenuto", Sign::Tenuto},
    {"accent", Sign::Accent},          {"strong-accent", Sign::StrongAccent},
    {"stress", Sign::StrongAccent},    {"staccatissimo", Sign::Staccatissimo},
    {"spiccato", Sign::Staccatissimo}, {"fermata", Sign::Fermata},
    {"soft-accent", Sign::Accent},
};
struct WrittenMark {
  std::string_view name;
  std::string_view text;
};
constexpr WrittenMark kWritten[] = {
    {"trill-mark", "tr"},         {"turn", "\u223D"}, {"mordent", "\u2A4D"},  {"inverted-mordent", "\u2A4E"},
    {"breath-mark", "\u2019"},    {"caesura", "//"},  {"up-bow", "\u2228"},   {"down-bow", "\u2293"},
    {"open-string", "o"},         {"harmonic", "o"},  {"stopped", "+"},       {"tremolo", "trem."},
    {"snap-pizzicato", "\u03D5"}, {"segno", "Segno"}, {"coda", "Coda"},       {"pedal", "Ped."},
    {"string-mute", "con sord."}, {"arpeggiate", ""}, {"non-arpeggiate", ""},
};

// What a tempo mark shows: the note value and the number.
std::string TempoText(std::string_view words) {
  struct Unit {
    std::string_view name;
    std::string_view text;
  };
  constexpr Unit kUnits[] = {{"whole", "Ganze"},   {"half", "Halbe"},       {"quarter", "Viertel"},
                             {"eighth", "Achtel"}, {"16th", "Sechzehntel"}, {"breve", "Brevis"}};
  const std::size_t equal = words.find('=');
  if (equal == std::string_view::npos) return "Viertel = " + std::string(words);
  std::string_view unit = words.substr(0, equal);
  bool dotted = false;
  for (; unit.ends_with('.'); unit.remove_suffix(1)) dotted = true;
  const auto* const found = std::ranges::find(kUnits, unit, &Unit::name);
  const std::string name(found == std::end(kUnits) ? unit : found->text);
  return (dotted ? "punktierte " : "") + name + " = " + std::string(words.substr(equal + 1));
}

class MarkSketcher {
 public:
  MarkSketcher(const Engraving& engraving, const SystemPlaces& places, std::size_t staff, bool first,
               const std::vector<PlacedVoice>& voices, Canvas& canvas)
      : engraving_(engraving),
        places_(places),
        staff_(staff),
        first_(first),
        voices_(voices),
        canvas_(canvas),
        from_(engraving.music.bars[places.first].start),
        to_(engraving.music.bars[places.last - 1].start + engraving.music.bars[places.last - 1].length) {}

  void Sketch() {
    for (std::size_t v = 0; v < voices_.size(); ++v) {
      DrawTies(v);
      for (const PlacedSlice& placed : voices_[v]) DrawSignsOf(placed);
    }
    for (std::size_t v = 0; v < voices_.size(); ++v) DrawSlurs(v);
    for (std::size_t v = 0; v < voices_.size(); ++v) DrawTexts(v);
    DrawLyrics();
    if (first_) {
      DrawTempos();
      DrawEndings();
    }
  }

 private:
  [[nodiscard]] const PlacedSlice* Find(std::size_t voice, std::size_t event, bool last) const {
    const PlacedSlice* found = nullptr;
    for (const PlacedSlice& placed : voices_[voice]) {
      if (placed.slice->index != event) continue;
      found = &placed;
      if (!last) break;
    }
    return found;
  }

  // --- ties

  static std::uint8_t TiesOf(const NotationSlice& slice, std::size_t note) {
    const ScoreItem& item = *slice.event->item;
    if (item.group.isRest) return 0;
    std::uint8_t ties = static_cast<std::uint8_t>((item.group.tieFromBefore ? kTieFromBefore : 0) |
                                                  (item.group.tieOnward ? kTieOnward : 0));
    if (note < item.noteTies.size()) ties = item.noteTies[note];
    if (!slice.first) ties |= kTieFromBefore;
    if (!slice.last) ties |= kTieOnward;
    return ties;
  }

  void DrawTies(std::size_t v) {
    const PlacedVoice& voice = voices_[v];
    for (std::size_t i = 0; i < voice.size(); ++i) {
      const PlacedSlice& placed = voice[i];
      for (std::size_t n = 0; n < placed.steps.size(); ++n) {
        const std::uint8_t ties = TiesOf(*placed.slice, n);
        const double y = 4 - placed.steps[n] / 2.0;
        const bool over = placed.shared             ? placed.up
                          : placed.steps.size() > 1 ? n * 2 >= placed.steps.size()
                                                    : !placed.up;
        const double bow = over ? -1 : 1;
        const double lift = y + bow * 0.75;
        const double from = placed.x + kHeadWidth * placed.size + 0.1;
        if ((ties & kTieOnward) != 0) {
          const double to = TieEnd(i, v, placed.steps[n]);
          canvas_.Curve(from, lift, std::max(to, from + 1), lift,
                        bow * std::clamp((to - from) * 0.12, 0.5, 1.4));
        }
        const bool comesIn = (ties & kTieFromBefore) != 0 && FirstOf(v, i);
        if (comesIn) canvas_.Curve(placed.x - 2.2, lift, placed.x - 0.1, lift, bow * 0.6);
      }
    }
  }

  // Whether nothing stands before a slice in this system, apart from grace notes.
  [[nodiscard]] bool FirstOf(std::size_t v, std::size_t index) const {
    for (std::size_t i = 0; i < index; ++i) {
      if (!voices_[v][i].slice->grace) return false;
    }
    return true;
  }

  [[nodiscard]] double TieEnd(std::size_t index, std::size_t v, int step) const {
    const PlacedVoice& voice = voices_[v];
    for (std::size_t i = index + 1; i < voice.size(); ++i) {
      if (std::ranges::find(voice[i].steps, step) != voice[i].steps.end()) return voice[i].x - 0.1;
      if (!voice[i].slice->grace) break;
    }
    return places_.right - 0.3;
  }

  // --- slurs

  void DrawSlurs(std::size_t v) {
    const auto& events = engraving_.music.voices[staff_][v];
    for (const std::size_t i : engraving_.marked[staff_][v]) {
      if (events[i].start >= to_) break;
      for (const DrawingItem& drawing : events[i].item->drawings) {
        if (!IsKind(drawing, DrawingKind::FourPointCurve)) continue;
        const std::size_t end = SpanEnd(events, i, drawing.span);
        if (end == i || events[end].start < from_) continue;
        DrawSlur(v, i, end, drawing.placement);
      }
    }
  }

  void DrawSlur(std::size_t v, std::size_t first, std::size_t last, int placement) {
    const PlacedSlice* start = Find(v, first, false);
    const PlacedSlice* end = Find(v, last, false);
    if (start == nullptr && end == nullptr && voices_[v].empty()) return;
    const PlacedSlice& lead = start != nullptr ? *start : end != nullptr ? *end : voices_[v].front();
    const bool over = placement != 0 ? placement > 0 : !lead.up;
    const auto edge = [over](const PlacedSlice& placed) {
      return over ? placed.top - 0.5 : placed.bottom + 0.5;
    };
    const double x1 = start != nullptr ? start->Middle() : places_.bars.front() - 0.5;
    const double x2 = end != nullptr ? end->Middle() : places_.right - 0.3;
    if (x2 <= x1) return;
    const double y1 = start != nullptr ? edge(*start) : edge(lead);
    const double y2 = end != nullptr ? edge(*end) : edge(lead);
    // High enough for what lies between.
    const double between = over ? canvas_.Above(x1 + 0.5, x2 - 0.5) : canvas_.Below(x1 + 0.5, x2 - 0.5);
    const double middle = (y1 + y2) / 2;
    double height = std::clamp((x2 - x1) * 0.1, 1.0, 2.6);
    const double obstacle = over ? middle - between : between - middle;
    height = std::min(std::max(height, obstacle + 0.3), 7.0);
    canvas_.Curve(x1, y1, x2, y2, over ? -height : height);
    const double peak = middle + (over ? -height : height) * 0.75;
    canvas_.Take(x1 + 1, std::min(peak, middle), x2 - 1, std::max(peak, middle));
  }

  // --- signs of a chord

  void DrawSignsOf(PlacedSlice placed) {
    const NotationSlice& slice = *placed.slice;
    if (!slice.first) return;
    const ScoreItem& item = *slice.event->item;
    if (const XmlSign* sign = SignOfArticulation(item.group.articulation); sign != nullptr)
      DrawMark(placed, sign->name, {});
    for (const DrawingItem& drawing : item.drawings) DrawMarksIn(placed, drawing);
  }

  void DrawMarksIn(const PlacedSlice& placed, const DrawingItem& drawing) {
    for (const DrawingItem& nested : drawing.nested) DrawMarksIn(placed, nested);
    if (!IsKind(drawing, DrawingKind::Text)) return;
    if (const XmlSign* sign = FindSign(drawing.sign); sign != nullptr) {
      if (sign->group != SignGroup::Direction) DrawMark(placed, sign->name, drawing.words);
      return;
    }
    DrawnMarks marks;
    ApplyDrawing(DrawingKind::Text, {0, 0, drawing.text}, marks);
    if (marks.dynamic != 0) return;
    if (const XmlSign* sign = SignOfArticulation(marks.articulation); sign != nullptr)
      DrawMark(placed, sign->name, {});
    if (marks.marked) DrawMark(placed, "fermata", {});
  }

  void DrawMark(const PlacedSlice& placed, std::string_view name, const std::string& words) {
    if (name == "arpeggiate") return DrawArpeggio(placed);
    if (name == "fingering" || name == "pluck" || name == "string") return DrawLabel(placed, words);
    const auto* const mark = std::ranges::find(kMarks, name, &DrawnMark::name);
    const auto* const written = std::ranges::find(kWritten, name, &WrittenMark::name);
    if (mark == std::end(kMarks)) {
      if (written == std::end(kWritten)) return DrawLabel(placed, std::string(name));
      if (!written->text.empty()) DrawLabel(placed, std::string(written->text));
      return;
    }
    // A fermata stands above, the others at the head.
    const bool over = mark->sign == Sign::Fermata || mark->sign == Sign::StrongAccent || !placed.up;
    const double left = placed.x - 0.2;
    const double right = placed.x + kHeadWidth + 0.2;
    const double place = Free(over, left, right, placed, mark->sign == Sign::Fermata ? 1.4 : 0.7);
    canvas_.Put(mark->sign, placed.Middle(), place, 1, mark->sign == Sign::Fermata && !over);
    canvas_.Take(left, place - 0.5, right, place + 0.5);
  }

  // Beside the head or stem, behind what stands there already; dots and strokes may stand within the staff.
  [[nodiscard]] double Free(bool over, double left, double right, const PlacedSlice& placed,
                            double distance) const {
    if (over) {
      const double above = canvas_.Above(left, right);
      return (above < 0 ? std::min(above, placed.top) : std::min(placed.top, 0.0)) - distance;
    }
    const double below = canvas_.Below(left, right);
    return (below > 4 ? std::max(below, placed.bottom) : std::max(placed.bottom, 4.0)) + distance;
  }

  void DrawLabel(const PlacedSlice& placed, const std::string& text) {
    if (text.empty()) return;
    const double half = TextWidth(text, kSmall) / 2 + 0.1;
    const double y =
        std::min(canvas_.Above(placed.Middle() - half, placed.Middle() + half), placed.top) - 0.5;
    canvas_.Text({placed.Middle(), y, text, kSmall, TextStyle::Italic, TextAlign::Centre});
  }

  void DrawArpeggio(const PlacedSlice& placed) {
    if (placed.steps.empty()) return;
    const auto [low, high] = std::ranges::minmax(placed.steps);
    const bool accidentals = engraving_.accidentals[staff_][0].size() > placed.slice->index &&
                             placed.slice->first && placed.steps.size() > 1;
    const double x = placed.x - (accidentals ? 1.5 : 1.0);
    for (double y = 4 - high / 2.0 - 0.5; y < 4 - low / 2.0 + 0.4; y += 1) canvas_.Put(Sign::Arpeggio, x, y);
  }

  // --- texts beside the notes

  void DrawTexts(std::size_t v) {
    const auto& events = engraving_.music.voices[staff_][v];
    for (const std::size_t i : engraving_.marked[staff_][v]) {
      const ScoreEvent& event = events[i];
      if (event.start >= to_) break;
      for (const DrawingItem& drawing : event.item->drawings) {
        if (IsKind(drawing, DrawingKind::Hairpin)) DrawHairpin(events, i, drawing);
        if (event.start >= from_ && event.start < to_) DrawText(event, drawing);
      }
    }
  }

  void DrawHairpin(const std::vector<ScoreEvent>& events, std::size_t i, const DrawingItem& drawing) {
    const Fraction start = events[i].start + drawing.offset;
    Fraction end = start + drawing.extent;
    if (drawing.extent.IsZero()) end = events[SpanEnd(events, i, drawing.span)].start;
    if (end <= start || end <= from_ || start >= to_) return;
    const double x1 = start < from_ ? places_.bars.front() + 0.5 : places_.X(engraving_, start);
    const double x2 = end >= to_ ? places_.right - 0.5 : places_.X(engraving_, end) - 0.3;
    if (x2 - x1 < 0.5) return;
    const double y = (drawing.placement > 0 ? canvas_.Above(x1, x2) - 1.4 : canvas_.Below(x1, x2) + 1.6);
    const bool less = (drawing.value & 0x80) != 0;
    const double open = 0.75;
    canvas_.Line(x1, y - (less ? open : 0), x2, y - (less ? 0 : open), 0.13);
    canvas_.Line(x1, y + (less ? open : 0), x2, y + (less ? 0 : open), 0.13);
    canvas_.Take(x1, y - open, x2, y + open);
  }

  void DrawText(const ScoreEvent& event, const DrawingItem& drawing) {
    for (const DrawingItem& nested : drawing.nested) DrawText(event, nested);
    if (!IsKind(drawing, DrawingKind::Text)) return;
    const Fraction at = event.start + drawing.offset;
    const double x = places_.X(engraving_, std::min(at, to_));
    const std::string_view dynamic =
        drawing.sign == "dynamics" ? std::string_view(drawing.words) : DynamicOfSymbols(AsText(drawing.text));
    if (!dynamic.empty()) {
      const double half = TextWidth(std::string(dynamic), kDynamic, TextStyle::BoldItalic) / 2;
      const double middle = x + kHeadWidth / 2;
      const double y = drawing.placement > 0 ? canvas_.Above(middle - half, middle + half) - 0.6
                                             : canvas_.Below(middle - half, middle + half) + 2.1;
      return canvas_.Text(
          {middle, y, std::string(dynamic), kDynamic, TextStyle::BoldItalic, TextAlign::Centre});
    }
    if (drawing.sign == "tempo" || drawing.sign == "octave-shift") return DrawDirection(x, drawing);
    std::string text = WordsOf(drawing);
    const XmlSign* sign = FindSign(drawing.sign);
    if (sign != nullptr && sign->group != SignGroup::Direction) return;
    if (text.empty() && sign != nullptr) {
      const auto* const written = std::ranges::find(kWritten, sign->name, &WrittenMark::name);
      if (written != std::end(kWritten)) text = written->text;
      if (drawing.sign == "pedal" && drawing.words.starts_with("stop")) text = "*";
    }
    if (text.empty() || text == "tr") return;
    std::ranges::replace(text, '\n', ' ');
    const bool below = drawing.placement < 0 || drawing.sign == "pedal";
    const bool loud = drawing.sign == "rehearsal" || drawing.sign == "harmony" || drawing.sign == "segno" ||
                      drawing.sign == "coda";
    const TextStyle style = loud ? TextStyle::Bold : TextStyle::Italic;
    const double width = TextWidth(text, kWords, style);
    const double y = below ? canvas_.Below(x, x + width) + 2.0 : canvas_.Above(x, x + width) - 0.7;
    canvas_.Text({.x = x,
                  .y = y,
                  .text = text,
                  .size = kWords,
                  .style = style,
                  .framed = drawing.sign == "rehearsal"});
  }

  void DrawDirection(double x, const DrawingItem& drawing) {
    std::string text;
    if (drawing.sign == "tempo") {
      // What is heard and not shown stands at the start of the score all the same.
      if (drawing.words.find('=') == std::string::npos) return;
      text = TempoText(drawing.words);
    } else {
      text = drawing.words.starts_with("up") ? "8vb" : "8va";
    }
    const double y = canvas_.Above(x, x + TextWidth(text, kWords, TextStyle::Bold)) - 0.7;
    canvas_.Text({x, y, text, kWords, TextStyle::Bold});
  }

  // --- lyrics: verses on lines of their own

  void DrawLyrics() {
    std::vector<std::vector<const PlacedSlice*>> verses;
    for (const PlacedVoice& voice : voices_) {
      for (const PlacedSlice& placed : voice) {
        const auto& lyrics = placed.slice->event->item->lyrics;
        if (!placed.slice->first) continue;
        for (std::size_t verse = 0; verse < lyrics.size(); ++verse) {
          if (lyrics[verse].syllable.empty()) continue;
          if (verses.size() <= verse) verses.resize(verse + 1);
          verses[verse].push_back(&placed);
        }
      }
    }
    if (verses.empty()) return;
    double y = std::max(canvas_.Bottom() + 0.6, 6.5) + 1.4;
    for (std::size_t verse = 0; verse < verses.size(); ++verse, y += kLyricLine)
      DrawVerse(verses[verse], verse, y);
  }

  void DrawVerse(std::vector<const PlacedSlice*> slices, std::size_t verse, double y) {
    std::ranges::stable_sort(slices, {}, &PlacedSlice::x);
    for (std::size_t i = 0; i < slices.size(); ++i) {
      const LyricItem& lyric = slices[i]->slice->event->item->lyrics[verse];
      std::string text = lyric.syllable;
      bool hyphen = (lyric.flags & kLyricHyphen) != 0;
      if (text.size() > 1 && text.ends_with('-')) {
        text.pop_back();
        hyphen = true;
      }
      const double middle = slices[i]->Middle();
      const double half = TextWidth(text, kLyricSize) / 2;
      canvas_.Text({middle, y, text, kLyricSize, TextStyle::Plain, TextAlign::Centre});
      const double next =
          i + 1 < slices.size()
              ? slices[i + 1]->Middle() -
                    TextWidth(slices[i + 1]->slice->event->item->lyrics[verse].syllable, kLyricSize) / 2
              : places_.right;
      if (hyphen && next - middle - half > 0.5)
        canvas_.Text({(middle + half + next) / 2, y, "-", kLyricSize, TextStyle::Plain, TextAlign::Centre});
      if ((lyric.flags & kLyricExtender) != 0 && next - middle - half > 1.5)
        canvas_.Line(middle + half + 0.3, y, next - 0.6, y, 0.1);
    }
  }

  // --- what is of the whole score

  void DrawTempos() {
    double shown = 0;
    for (const ScoreTempo& tempo : engraving_.music.tempos) {
      const bool here = tempo.at >= from_ && tempo.at < to_;
      const bool changes = std::abs(tempo.quarters - shown) > 0.5;
      shown = tempo.quarters;
      if (!here || !changes || HasOwnMark(tempo.at)) continue;
      const double x = tempo.at == from_ ? places_.left : places_.X(engraving_, tempo.at);
      const std::string text = Format("Viertel = %d", static_cast<int>(std::lround(tempo.quarters)));
      canvas_.Text({x, canvas_.Above(x, x + TextWidth(text, kWords, TextStyle::Bold)) - 1.0, text, kWords,
                    TextStyle::Bold});
    }
  }

  [[nodiscard]] bool HasOwnMark(Fraction at) const {
    for (const auto& staff : engraving_.music.voices) {
      for (const auto& events : staff) {
        auto event = std::ranges::lower_bound(events, at, {}, &ScoreEvent::start);
        for (; event != events.end() && event->start == at; ++event) {
          for (const DrawingItem& drawing : event->item->drawings) {
            if (drawing.sign == "tempo" && drawing.words.find('=') != std::string::npos) return true;
          }
        }
      }
    }
    return false;
  }

  void DrawEndings() {
    for (const ScoreEnding& ending : engraving_.music.endings) {
      if (ending.last < places_.first || ending.first >= places_.last) continue;
      const bool begins = ending.first >= places_.first;
      const bool ends = ending.last < places_.last;
      const double x1 = begins ? places_.bars[ending.first - places_.first] + 0.2 : places_.bars.front();
      const double x2 = ends ? places_.bars[ending.last - places_.first + 1] - 0.3 : places_.right;
      const double y = std::min(canvas_.Above(x1, x2) - 1.2, -4.0);
      canvas_.Line(x1, y, x2, y, 0.13);
      if (begins) canvas_.Line(x1, y, x1, y + 1.8, 0.13);
      const bool open = ending.drawing != nullptr && ending.drawing->words == "discontinue";
      if (ends && !open) canvas_.Line(x2, y, x2, y + 1.8, 0.13);
      std::string numbers;
      for (unsigned n = ending.from; n <= ending.to; ++n)
        numbers += (numbers.empty() ? "" : " ") + std::to_string(n) + ".";
      canvas_.Take(x1, y - 0.2, x2, y + 1.8);
      if (begins) canvas_.Text({x1 + 0.5, y + 1.8, numbers, kSmall});
    }
  }

  const Engraving& engraving_;
  const SystemPlaces& places_;
  std::size_t staff_;
  bool first_;
  const std::vector<PlacedVoice>& voices_;
  Canvas& canvas_;
  Fraction from_;
  Fraction to_;
};

}  // namespace

void SketchMarks(const Engraving& engraving, const SystemPlaces& places, std::size_t staff, bool first,
                 const std::vector<PlacedVoice>& voices, Canvas& canvas) {
  MarkSketcher(engraving, places, staff, first, voices, canvas).Sketch();
}

}  // namespace ts5::preview
