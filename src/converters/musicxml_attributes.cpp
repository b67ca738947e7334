// What is in force in a part: divisions, keys, times, clefs, staves, transposition.
#include <algorithm>
#include <cmath>

#include "converters/musicxml_cursor.h"
#include "converters/texts.h"
#include "platform/base/text.h"

namespace ts5::converters::musicxml {
namespace {

class AttributeReader {
 public:
  explicit AttributeReader(PartCursor& at) : at_(at) {}

  void Read(pugi::xml_node attributes) {
    if (const pugi::xml_node node = attributes.child("divisions")) {
      const auto divisions = DivisionsOf(node.text().get());
      if (!divisions || divisions->IsZero() || *divisions > Fraction(kMostDivisions)) return at_.Fail();
      at_.divisions = *divisions;
    }
    if (const auto staves = WholeNumber(attributes.child("staves").text().get()); staves && *staves > 0)
      at_.GrowStaves(static_cast<std::size_t>(std::min<std::int64_t>(*staves, kMostStaves)));
    for (const pugi::xml_node child : attributes.children()) {
      const std::string_view name = child.name();
      if (name == "key") ReadKey(child);
      if (name == "time") ReadTime(child);
      if (name == "clef") ReadClef(child);
      if (name == "transpose") ReadTranspose(child);
      if (name == "measure-style" && !child.child("multiple-rest"))
        at_.Lose(texts::LossSign, 0, child.first_child().name());
      if (name == "staff-details" && child.child("staff-tuning")) at_.Lose(texts::LossTab);
    }
  }

 private:
  void AddSign(ScoreItem item, Fraction at, std::optional<std::size_t> staff) {
    if (staff) return at_.Now().signs.push_back({std::move(item), at, *staff});
    for (std::size_t i = 0; i < at_.part.staves; ++i) at_.Now().signs.push_back({item, at, i});
  }

  void ReadKey(pugi::xml_node node) {
    const auto staff = at_.NumberedStaff(node);
    const auto fifths = WholeNumber(node.child("fifths").text().get());
    if (!fifths) {
      if (node.child("fifths")) return at_.Fail(staff.value_or(0));
      return at_.Lose(texts::LossKey, staff.value_or(0));
    }
    if (*fifths < -7 || *fifths > 7) return at_.Lose(texts::LossKey, staff.value_or(0));
    if (!at_.now.IsZero()) at_.Lose(texts::LossKeyPlace, staff.value_or(0));
    ScoreItem item = KeyItem(static_cast<int>(*fifths));
    item.style = node.child("mode").text().get();
    AddSign(std::move(item), {}, staff);
  }

  void ReadTime(pugi::xml_node node) {
    const auto staff = at_.NumberedStaff(node);
    if (staff && *staff != 0) {
      return at_.Lose(texts::LossStaffTime, *staff);
    }
    if (node.child("senza-misura")) return at_.Lose(texts::LossTime, 0, "senza misura");
    std::int64_t beats = 0;
    std::string shown;
    for (const std::string_view part : Split(node.child("beats").text().get(), '+')) {
      const auto number = WholeNumber(part);
      if (!number || *number < 1 || *number > 255) return at_.Fail();
      beats += *number;
      shown += (shown.empty() ? "" : "+") + std::to_string(*number);
    }
    const auto unit = WholeNumber(node.child("beat-type").text().get());
    if (!unit || *unit < 1) return at_.Fail();
    int power = 0;
    while (power < 12 && (std::int64_t{1} << power) < *unit) ++power;
    if ((std::int64_t{1} << power) != *unit || beats > 255 || node.child("beats").next_sibling("beats"))
      return at_.Lose(texts::LossTime, 0, shown + "/" + std::to_string(*unit));
    ScoreItem item = TimeItem(static_cast<std::uint16_t>(beats), static_cast<std::int16_t>(power));
    item.style = node.attribute("symbol").value();
    if (item.style == "normal") item.style.clear();
    if (shown.find('+') != std::string::npos) item.style = shown;
    at_.time = item.time;
    AddSign(std::move(item), at_.now, std::nullopt);
  }

  void ReadClef(pugi::xml_node node) {
    const std::size_t staff = at_.NumberedStaff(node).value_or(0);
    const std::string_view sign = Trim(node.child("sign").text().get());
    const auto line = WholeNumber(node.child("line").text().get());
    const auto change = WholeNumber(node.child("clef-octave-change").text().get()).value_or(0);
    constexpr NamedCode kClefs[] = {
        {"G", kClefG}, {"C", kClefC}, {"F", kClefF}, {"percussion", kClefPercussion}, {"TAB", kClefG}};
    const auto* const found = std::ranges::find(kClefs, sign, &NamedCode::name);
    if (found == std::end(kClefs) || change < -1 || change > 1)
      at_.Lose(texts::LossClef, staff, std::string(sign));
    if (found == std::end(kClefs)) return;
    const std::uint8_t octave = change > 0 ? 0 : change < 0 ? 2 : 1;
    ScoreItem item = ClefItem(found->code, octave);
    if (line && *line >= 1 && *line <= 5) item.clef.line = static_cast<std::uint8_t>(*line - 1);
    if (sign == "TAB") {
      at_.Lose(texts::LossTab, staff);
      item.style = "TAB";
      item.clef.line = 1;
    }
    AddSign(std::move(item), at_.now, staff);
  }

  void ReadTranspose(pugi::xml_node node) {
    constexpr int kOctave = 12;
    const auto chromatic = ParseNumber(Trim(node.child("chromatic").text().get()));
    const auto diatonic = WholeNumber(node.child("diatonic").text().get()).value_or(0);
    const auto octaves = WholeNumber(node.child("octave-change").text().get()).value_or(0);
    if (!chromatic || std::abs(*chromatic) > 60 || std::abs(octaves) > 5 || std::abs(diatonic) > 40)
      return at_.Fail();
    const Transposition found{static_cast<int>(std::lround(*chromatic)) + kOctave * static_cast<int>(octaves),
                              static_cast<int>(diatonic + 7 * octaves)};
    const auto staff = at_.NumberedStaff(node);
    for (std::size_t i = staff.value_or(0); i < (staff ? *staff + 1 : at_.part.staves); ++i)
      SetTransposition(found, i);
  }

  void SetTransposition(Transposition found, std::size_t staff) {
    auto& first = at_.part.transpositions[staff];
    if (!at_.begun[staff]) {
      first = found;
      return;
    }
    const Transposition before = first.value_or(Transposition{});
    if (at_.shifts.size() <= staff) at_.shifts.resize(staff + 1);
    const Transposition shift{found.chromatic - before.chromatic, found.diatonic - before.diatonic};
    if (!(shift == at_.shifts[staff])) at_.Lose(texts::LossTranspose, staff);
    at_.shifts[staff] = shift;
  }

  PartCursor& at_;
};

}  // namespace

void ReadAttributes(PartCursor& at, pugi::xml_node attributes) {
  AttributeReader(at).Read(attributes);
}

}  // namespace ts5::converters::musicxml
