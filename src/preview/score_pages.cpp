#include "preview/score_pages.h"

#include <algorithm>

#include "preview/engraving.h"
#include "preview/hit_line.h"
#include "preview/staff_sketch.h"
#include "score/music_rows.h"

namespace ts5::preview {
namespace {

constexpr double kMarginMillimetres = 15;
constexpr double kShortSide = 210;
constexpr double kLongSide = 297;
constexpr double kUsualSpace = 1.75;  // millimetres, where the score says nothing
constexpr double kLeastSpace = 0.8;
constexpr double kMostSpace = 4;
constexpr double kStaffHeight = 4;
constexpr double kClear = 0.8;    // between what two staves have drawn
constexpr double kSystemGap = 4;  // between systems at least
constexpr double kHead = 12;      // of the first page: title and names
constexpr double kNameSize = 1.9;
constexpr double kBarWidth = 0.16;
constexpr double kThick = 0.5;
constexpr double kLooseLine = 0.6;  // a last system that is shorter than this part of the line stays so

struct System {
  SystemPlaces places;
  std::vector<StaffSketch> staves;
  std::vector<double> tops;  // of each staff's lines, from the top of the system
  double above = 0;          // what stands above the first staff's lines
  double height = 0;         // with that
};
// Which bars, and how high they come out.
struct SystemRow {
  std::size_t first = 0;
  std::size_t last = 0;
  double height = 0;
};
struct PageRows {
  std::size_t first = 0;  // systems
  std::size_t last = 0;
};

}  // namespace

struct ScorePages::Inside {
  Engraving engraving;
  PageSize size;
  double space = kUsualSpace;
  double margin = 0;
  double names = 0;  // width of the staves' names before the first system
  double later = 0;  // and of the others
  std::vector<SystemRow> rows;
  std::vector<PageRows> pages;

  void Measure();
  void Break(const CancelCheck& cancelled);
  void Fill(const CancelCheck& cancelled);
  [[nodiscard]] System Build(std::size_t row) const;
  // The staves of a part in a system that is drawn at y.
  struct PartPlace {
    const ScorePart& part;
    std::size_t first = 0;
    std::size_t last = 0;
    double top = 0;
    double bottom = 0;
  };
  [[nodiscard]] std::vector<PartPlace> PlacesOfParts(const System& system, double y) const;
  [[nodiscard]] bool BreaksBefore(std::size_t bar, std::size_t first) const;
  // Where the systems of a page begin, and how much lies between them.
  struct Layout {
    std::vector<double> tops;
    double gap = 0;
  };
  [[nodiscard]] Layout LayOut(std::size_t page) const;
  void DrawSystem(Sketch& page, const System& system, double y, bool named) const;
  void DrawBarLines(Sketch& page, const System& system, double y) const;
  void DrawParts(Sketch& page, const System& system, double y, bool named) const;
  void DrawHead(Sketch& page) const;
  [[nodiscard]] double Least(std::size_t staff) const;
};

void ScorePages::Inside::Measure() {
  const ScoreDocument& document = engraving.document;
  const ScorePageLayout& page = document.page;
  if (page.given && page.normalLines > 0)
    space = std::clamp(page.normalLines / 100.0, kLeastSpace, kMostSpace);
  const double width = document.landscape ? kLongSide : kShortSide;
  const double height = document.landscape ? kShortSide : kLongSide;
  // More staves than the page can hold make them smaller.
  const double needed = static_cast<double>(document.staves.size()) * 9 + 20;
  space = std::max(std::min(space, (height - 2 * kMarginMillimetres) / needed), 0.3);
  size = {width / space, height / space};
  margin = kMarginMillimetres / space;
  for (const ScorePart& part : engraving.parts) {
    names = std::max(names, TextWidth(part.name, kNameSize));
    later = std::max(later, TextWidth(part.abbreviation, kNameSize));
  }
  const double most = (size.width - 2 * margin) * 0.25;
  names = std::min(names, most) + 2.5;
  later = std::min(later, most) + 2.5;
}

bool ScorePages::Inside::BreaksBefore(std::size_t bar, std::size_t first) const {
  const auto& bars = engraving.music.bars;
  const ScoreDocument& document = engraving.document;
  if (bar < document.bars.size() && document.bars[bar].newPage) return true;
  if (!document.page.given || document.page.barsPerSystem == 0) return false;
  return bars[bar].system != bars[first].system;
}

// Bars to systems: as many as the line holds.
void ScorePages::Inside::Break(const CancelCheck& cancelled) {
  const std::size_t count = engraving.bars.size();
  for (std::size_t bar = 0; bar < count;) {
    if (cancelled && cancelled()) return;
    SystemRow row;
    row.first = bar;
    const double room = size.width - 2 * margin - (rows.empty() ? names : later);
    double width = PrefixWidth(engraving, bar) + engraving.bars[bar].width - engraving.bars[bar].prefix;
    for (++bar; bar < count && !BreaksBefore(bar, row.first); ++bar) {
      if (width + engraving.bars[bar].width > room) break;
      width += engraving.bars[bar].width;
    }
    row.last = bar;
    rows.push_back(row);
  }
}

// The space that a staff keeps above itself.
double ScorePages::Inside::Least(std::size_t staff) const {
  const ScorePageLayout& page = engraving.document.page;
  const double usual = staff == 0 ? 3 : 5.5;
  return page.given ? std::max<double>(usual, page.above + (staff == 0 ? 0 : page.below) - kStaffHeight)
                    : usual;
}

System ScorePages::Inside::Build(std::size_t index) const {
  const SystemRow& row = rows[index];
  System system;
  SystemPlaces& places = system.places;
  places.first = row.first;
  places.last = row.last;
  places.left = margin + (index == 0 ? names : later);
  places.right = size.width - margin;
  const double prefix = PrefixWidth(engraving, row.first);
  double fixed = 0;
  double loose = 0;
  for (std::size_t bar = row.first; bar < row.last; ++bar) {
    const double own = bar == row.first ? 0.0 : engraving.bars[bar].prefix;
    fixed += own;
    loose += engraving.bars[bar].width - engraving.bars[bar].prefix;
  }
  const double room = places.right - places.left - prefix - fixed;
  places.stretch = loose > 0 ? room / loose : 1;
  const bool last = row.last == engraving.bars.size();
  if (last && loose < kLooseLine * room) places.stretch = std::min(places.stretch, 1.25);
  double x = places.left + prefix;
  for (std::size_t bar = row.first; bar < row.last; ++bar) {
    places.bars.push_back(x);
    const BarWidth& width = engraving.bars[bar];
    x += (bar == row.first ? 0.0 : width.prefix) + (width.width - width.prefix) * places.stretch;
  }
  places.bars.push_back(x);
  places.right = x;
  double y = 0;
  double bottom = 0;
  for (std::size_t staff = 0; staff < engraving.slices.size(); ++staff) {
    StaffSketch sketch = SketchStaff(engraving, places, staff, staff == 0);
    if (staff == 0) {
      system.above = std::max(-sketch.top, Least(0));
      y = system.above;
    } else {
      y = std::max(bottom + kClear - sketch.top, system.tops.back() + kStaffHeight + Least(staff));
    }
    system.tops.push_back(y);
    bottom = y + sketch.bottom;
    system.staves.push_back(std::move(sketch));
  }
  system.height = bottom;
  return system;
}

// Systems to pages: as many as are high enough together.
void ScorePages::Inside::Fill(const CancelCheck& cancelled) {
  const ScorePageLayout& layout = engraving.document.page;
  const double gap = kSystemGap + (layout.given ? layout.betweenSystems : 0);
  double y = 0;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (cancelled && cancelled()) return pages.clear();
    rows[row].height = Build(row).height;
    const double room = size.height - 2 * margin - (pages.size() <= 1 ? kHead : 0.0);
    const std::size_t bar = rows[row].first;
    const bool forced =
        row > 0 && bar < engraving.document.bars.size() && engraving.document.bars[bar].newPage;
    const bool full = !pages.empty() && y + rows[row].height > room;
    if (pages.empty() || full || forced) {
      pages.push_back({row, row});
      y = layout.given ? layout.beforeFirst : 0;
    }
    pages.back().last = row + 1;
    y += rows[row].height + gap;
  }
}

std::vector<ScorePages::Inside::PartPlace> ScorePages::Inside::PlacesOfParts(const System& system,
                                                                             double y) const {
  std::vector<PartPlace> places;
  std::size_t first = 0;
  for (const ScorePart& part : engraving.parts) {
    const std::size_t last = std::min(first + part.staves, system.tops.size());
    if (first >= last) break;
    places.push_back({part, first, last, y + system.tops[first], y + system.tops[last - 1] + kStaffHeight});
    first = last;
  }
  return places;
}

void ScorePages::Inside::DrawBarLines(Sketch& page, const System& system, double y) const {
  const double left = system.places.left;
  const double top = y + system.tops.front();
  const double bottom = y + system.tops.back() + kStaffHeight;
  if (system.tops.size() > 1) page.lines.push_back({left, top, left, bottom, kBarWidth});
  // Lines go through the staves of a part.
  for (const PartPlace& part : PlacesOfParts(system, y)) {
    const auto line = [&](double x, double width) {
      page.lines.push_back({x, part.top, x, part.bottom, width});
    };
    const auto dots = [&](double x) {
      for (std::size_t s = part.first; s < part.last; ++s) {
        for (const double between : {1.5, 2.5})
          page.signs.push_back({Sign::Dot, x, y + system.tops[s] + between});
      }
    };
    for (std::size_t bar = system.places.first; bar < system.places.last; ++bar) {
      const ScoreBar& own = engraving.music.bars[bar];
      const std::size_t index = bar - system.places.first;
      const double start = system.places.bars[index];
      const double x = system.places.bars[index + 1] - 0.1;
      if (own.repeatStart) {
        line(start + 0.25, kThick);
        line(start + 0.75, kBarWidth);
        dots(start + 1.25);
      }
      const bool final = own.line == kBarLineFinal || own.repeatEnd || own.lineStyle == "light-heavy";
      if (own.repeatEnd) dots(x - 1.5);
      if (final) {
        line(x - 1, kBarWidth);
        line(x - 0.2, kThick);
      } else if (own.line == kBarLineDouble || own.lineStyle == "light-light") {
        line(x - 0.5, kBarWidth);
        line(x, kBarWidth);
      } else if (own.lineStyle != "none") {
        const bool dashed = own.lineStyle == "dashed" || own.lineStyle == "dotted";
        page.lines.push_back({x, part.top, x, part.bottom, kBarWidth, dashed});
      }
    }
  }
}

void ScorePages::Inside::DrawParts(Sketch& page, const System& system, double y, bool named) const {
  const double left = system.places.left;
  for (const PartPlace& part : PlacesOfParts(system, y)) {
    if (part.last - part.first > 1)
      page.signs.push_back({Sign::Brace, left - 0.4, part.top, 1, part.bottom - part.top});
    std::string name = named ? part.part.name : part.part.abbreviation;
    std::ranges::replace(name, '\n', ' ');
    if (!name.empty())
      page.texts.push_back({left - 2, (part.top + part.bottom) / 2 + 0.6, name, kNameSize, TextStyle::Plain,
                            TextAlign::Right});
  }
}

void ScorePages::Inside::DrawSystem(Sketch& page, const System& system, double y, bool named) const {
  for (std::size_t staff = 0; staff < system.staves.size(); ++staff)
    page.Add(system.staves[staff].sketch, 0, y + system.tops[staff]);
  DrawBarLines(page, system, y);
  DrawParts(page, system, y, named);
}

void ScorePages::Inside::DrawHead(Sketch& page) const {
  const ScoreDocument& document = engraving.document;
  const double width = size.width - 2 * margin;
  // A long text is written smaller.
  const auto put = [&page](TextMark text, double space) {
    text.size *= std::min(1.0, space / std::max(TextWidth(text.text, text.size, text.style), 1.0));
    page.texts.push_back(std::move(text));
  };
  put({size.width / 2, margin + 3.2, TitleOf(document.credits), 4, TextStyle::Bold, TextAlign::Centre},
      width);
  put({size.width - margin, margin + 6.5, document.author, 2.2, TextStyle::Italic, TextAlign::Right},
      width / 2 - 1);
  put({margin, margin + 6.5, document.credits.lyricist, 2.2, TextStyle::Italic, TextAlign::Left},
      width / 2 - 1);
}

ScorePages::ScorePages(ScoreDocument document, const CancelCheck& cancelled)
    : inside_(std::make_unique<Inside>()) {
  Engrave(std::move(document), inside_->engraving, cancelled);
  if (cancelled && cancelled()) return;
  inside_->Measure();
  inside_->Break(cancelled);
  inside_->Fill(cancelled);
}
ScorePages::~ScorePages() = default;
ScorePages::ScorePages(ScorePages&&) noexcept = default;
ScorePages& ScorePages::operator=(ScorePages&&) noexcept = default;

std::size_t ScorePages::Count() const {
  return inside_->pages.size();
}
PageSize ScorePages::Size() const {
  return inside_->size;
}

ScorePages::Inside::Layout ScorePages::Inside::LayOut(std::size_t index) const {
  const PageRows& own = pages[index];
  const ScorePageLayout& given = engraving.document.page;
  double y = margin + (index == 0 ? kHead : 0) + (given.given ? given.beforeFirst : 0);
  double filled = 0;
  for (std::size_t row = own.first; row < own.last; ++row) filled += rows[row].height;
  const auto gaps = static_cast<double>(own.last - own.first - 1);
  Layout layout{.tops = {}, .gap = kSystemGap + (given.given ? given.betweenSystems : 0)};
  // Systems are spread over the page, where the score wants it and there is something to spread.
  const bool lastPage = index + 1 == pages.size();
  const int justify = given.given ? given.justify : 1;
  const double left = size.height - margin - y - filled;
  if (gaps > 0 && (justify == 2 || (justify == 1 && !lastPage)))
    layout.gap = std::max(layout.gap, left / gaps);
  for (std::size_t row = own.first; row < own.last; ++row) {
    layout.tops.push_back(y);
    y += rows[row].height + layout.gap;
  }
  return layout;
}

Sketch ScorePages::Draw(std::size_t index) const {
  const Inside& in = *inside_;
  const PageRows& rows = in.pages[index];
  const bool slashes = in.engraving.document.page.given && in.engraving.document.page.slashes;
  Sketch page;
  if (index == 0) in.DrawHead(page);
  const Inside::Layout layout = in.LayOut(index);
  for (std::size_t row = rows.first; row < rows.last; ++row) {
    in.DrawSystem(page, in.Build(row), layout.tops[row - rows.first], row == 0);
    if (!slashes || row + 1 == rows.last) continue;
    const double y = layout.tops[row + 1 - rows.first] - layout.gap / 2;
    for (const double shift : {0.0, 1.2})
      page.lines.push_back({in.margin + shift, y + 1, in.margin + 3 + shift, y - 1, 0.6});
  }
  if (in.pages.size() > 1)
    page.texts.push_back({in.size.width / 2, in.size.height - in.margin / 2, std::to_string(index + 1), 1.8,
                          TextStyle::Plain, TextAlign::Centre});
  return page;
}

SystemPlace ScorePages::PlaceOf(std::size_t bar) const {
  const auto& in = *inside_;
  for (std::size_t page = 0; page < in.pages.size(); ++page) {
    const PageRows& own = in.pages[page];
    for (std::size_t row = own.first; row < own.last; ++row) {
      if (in.rows[row].last <= bar && row + 1 < in.rows.size()) continue;
      const double top = in.LayOut(page).tops[row - own.first];
      return {page, top, top + in.rows[row].height};
    }
  }
  return {};
}

SystemPlace ScorePages::PlaceOf(const SearchHit& hit) const {
  return PlaceOf(BarOfHit(inside_->engraving.music, hit).value_or(0));
}

std::pair<std::string, std::string> ScorePages::Bars(std::size_t page) const {
  const auto& in = *inside_;
  const auto number = [&](std::size_t bar) { return in.engraving.music.bars[bar].number; };
  return {number(in.rows[in.pages[page].first].first), number(in.rows[in.pages[page].last - 1].last - 1)};
}

}  // namespace ts5::preview
