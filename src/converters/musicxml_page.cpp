#include "converters/musicxml_page.h"

#include <algorithm>
#include <cmath>

#include "platform/base/text.h"

namespace ts5::converters::musicxml {
namespace {

constexpr double kTenths = 10;      // of a space
constexpr double kStaffSpaces = 4;  // high
constexpr double kShortSide = 210;  // of the paper, millimetres
constexpr double kLongSide = 297;
constexpr double kMostSpaces = 100;

std::optional<double> NumberIn(pugi::xml_node node) {
  const auto number = ParseNumber(Trim(node.text().get()));
  return number && std::isfinite(*number) ? number : std::nullopt;
}

// Tenths as whole spaces.
std::uint8_t Spaces(double tenths) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(tenths / kTenths, 0.0, kMostSpaces)));
}

std::string Decimal(double value) {
  std::string text = Format("%.2f", value);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text;
}

}  // namespace

void ReadPage(pugi::xml_node root, ScoreDocument& document) {
  const pugi::xml_node defaults = root.child("defaults");
  const pugi::xml_node paper = defaults.child("page-layout");
  const auto width = NumberIn(paper.child("page-width"));
  const auto height = NumberIn(paper.child("page-height"));
  document.landscape = width && height && *width > *height;
  ScorePageLayout& page = document.page;
  const pugi::xml_node scaling = defaults.child("scaling");
  const auto millimetres = NumberIn(scaling.child("millimeters"));
  const auto tenths = NumberIn(scaling.child("tenths"));
  if (millimetres && tenths && *millimetres > 0 && *tenths > 0) {
    page.given = true;
    const double line = *millimetres / *tenths * kTenths * 100;
    page.normalLines = static_cast<std::uint16_t>(std::lround(std::clamp(line, 0.0, 1000.0)));
  }
  double between = 0;
  if (const auto distance = NumberIn(defaults.child("staff-layout").child("staff-distance"))) {
    page.given = true;
    page.above = static_cast<std::uint8_t>(Spaces(*distance) / 2);
    page.below = static_cast<std::uint8_t>(Spaces(*distance) - page.above);
  }
  between = (page.above + page.below) * kTenths;
  const pugi::xml_node system = defaults.child("system-layout");
  if (const auto distance = NumberIn(system.child("system-distance"))) {
    page.given = true;
    page.betweenSystems = Spaces(*distance - between);
  }
  if (const auto distance = NumberIn(system.child("top-system-distance"))) {
    page.given = true;
    page.beforeFirst = Spaces(*distance - page.above * kTenths);
  }
  const pugi::xml_node divider = system.child("system-dividers").child("left-divider");
  page.slashes = divider && std::string_view(divider.attribute("print-object").value()) != "no";
}

void WritePage(XmlOut& out, const ScoreDocument& document) {
  const ScorePageLayout& page = document.page;
  if (!page.given && !document.landscape) return;
  const double line = std::max<double>(page.normalLines, 1) / 100;  // millimetres a space
  const auto tenths = [line](double millimetres) { return Decimal(millimetres / line * kTenths); };
  const auto spaces = [](int count) { return Decimal(count * kTenths); };
  out.Open("defaults");
  out.Open("scaling");
  out.Leaf("millimeters", Decimal(line * kStaffSpaces));
  out.Leaf("tenths", Decimal(kStaffSpaces * kTenths));
  out.Close();
  out.Open("page-layout");
  out.Leaf("page-height", tenths(document.landscape ? kShortSide : kLongSide));
  out.Leaf("page-width", tenths(document.landscape ? kLongSide : kShortSide));
  out.Close();
  out.Open("system-layout");
  out.Leaf("system-distance", spaces(page.above + page.below + page.betweenSystems));
  out.Leaf("top-system-distance", spaces(page.above + page.beforeFirst));
  if (page.slashes) {
    out.Open("system-dividers");
    out.Empty("left-divider", {{"print-object", "yes"}});
    out.Empty("right-divider", {{"print-object", "no"}});
    out.Close();
  }
  out.Close();
  out.Open("staff-layout");
  out.Leaf("staff-distance", spaces(page.above + page.below));
  out.Close();
  out.Close();
}

}  // namespace ts5::converters::musicxml
