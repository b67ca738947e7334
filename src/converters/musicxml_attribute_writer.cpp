#include "converters/musicxml_attribute_writer.h"

#include <algorithm>
#include <array>

namespace ts5::converters::musicxml {
namespace {

constexpr int kOctave = 12;

const ScoreItem* LastOf(const std::vector<const ScoreItem*>& items, ObjectKind kind) {
  const auto found =
      std::find_if(items.rbegin(), items.rend(), [kind](const ScoreItem* i) { return i->Is(kind); });
  return found == items.rend() ? nullptr : *found;
}

}  // namespace

AttributeWriter::AttributeWriter(XmlOut& out, const PartToWrite& part, Divisions divisions)
    : out_(out), part_(part), divisions_(divisions), next_(part.part.staves) {}

const std::vector<ScoreChange>& AttributeWriter::ChangesOf(std::size_t staff) const {
  return part_.music.changes[part_.firstStaff + staff];
}

AttributeWriter::Changes AttributeWriter::Take(std::size_t staff, Fraction to) {
  Changes taken;
  const auto& changes = ChangesOf(staff);
  std::size_t& next = next_[staff];
  for (; next < changes.size() && changes[next].at <= to; ++next) taken.push_back(changes[next].item);
  return taken;
}

std::optional<Fraction> AttributeWriter::NextBefore(std::size_t staff, Fraction end) const {
  const auto& changes = ChangesOf(staff);
  const std::size_t next = next_[staff];
  if (next == changes.size() || changes[next].at >= end) return std::nullopt;
  return changes[next].at;
}

void AttributeWriter::WriteAtBar(std::size_t index) {
  const ScoreBar& bar = part_.Bar(index);
  const std::size_t staves = part_.part.staves;
  std::vector<Changes> changes;
  for (std::size_t staff = 0; staff < staves; ++staff) changes.push_back(Take(staff, bar.start));
  const bool start = index == 0;
  const ScoreItem* time = LastOf(changes[0], ObjectKind::Time);
  const bool newTime =
      start || !(bar.time == part_.Bar(index - 1).time) || (time != nullptr && time->time == bar.time);
  const bool any = std::ranges::any_of(changes, [](const Changes& list) {
    return LastOf(list, ObjectKind::Key) != nullptr || LastOf(list, ObjectKind::Clef) != nullptr;
  });
  if (!newTime && !any) return;
  out_.Open("attributes");
  if (start) out_.Leaf("divisions", divisions_.ofQuarter);
  WriteKeys(changes, start);
  if (newTime) WriteTime(bar.time, time == nullptr ? std::string_view() : std::string_view(time->style));
  if (start && staves > 1) out_.Leaf("staves", staves);
  const ScoreItem usual = ClefItem(kClefG);
  for (std::size_t staff = 0; staff < staves; ++staff) {
    const ScoreItem* clef = LastOf(changes[staff], ObjectKind::Clef);
    if (clef == nullptr && start) clef = &usual;
    if (clef != nullptr) WriteClef(*clef, staff);
  }
  if (start) WriteTranspositions();
  out_.Close();
}

void AttributeWriter::WriteWithin(std::size_t staff, Fraction to) {
  for (const ScoreItem* item : Take(staff, to)) {
    out_.Open("attributes");
    if (item->Is(ObjectKind::Clef)) WriteClef(*item, staff);
    if (item->Is(ObjectKind::Key)) WriteKey(*item, part_.StaffNumber(staff));
    if (item->Is(ObjectKind::Time)) WriteTime(item->time, item->style);
    out_.Close();
  }
}

// One key for all staves where they agree.
void AttributeWriter::WriteKeys(const std::vector<Changes>& changes, bool start) {
  const ScoreItem none = KeyItem(0);
  std::vector<const ScoreItem*> keys;
  for (const Changes& list : changes) {
    const ScoreItem* key = LastOf(list, ObjectKind::Key);
    keys.push_back(key == nullptr && start ? &none : key);
  }
  const auto same = [&](const ScoreItem* key) {
    return key != nullptr && keys[0] != nullptr && key->key == keys[0]->key && key->style == keys[0]->style;
  };
  const bool shared = std::ranges::all_of(keys, same);
  for (std::size_t staff = 0; staff < keys.size(); ++staff) {
    if (keys[staff] == nullptr || (shared && staff > 0)) continue;
    WriteKey(*keys[staff], shared ? std::string() : part_.StaffNumber(staff));
  }
}

void AttributeWriter::WriteKey(const ScoreItem& key, const std::string& staff) {
  out_.Open("key", {{"number", staff}});
  out_.Leaf("fifths", key.key);
  if (!key.style.empty()) out_.Leaf("mode", key.style);
  out_.Close();
}

void AttributeWriter::WriteTime(ScoreTimeSignature time, std::string_view style) {
  const bool sum = style.find('+') != std::string_view::npos;
  out_.Open("time", {{"symbol", sum ? std::string_view() : style}});
  out_.Leaf("beats", sum ? std::string(style) : std::to_string(time.numerator));
  out_.Leaf("beat-type", std::int64_t{1} << std::clamp<int>(time.power, 0, 12));
  out_.Close();
}

void AttributeWriter::WriteClef(const ScoreItem& item, std::size_t staff) {
  constexpr std::array<std::string_view, 5> kSigns = {"G", "C", "F", "percussion", "G"};
  const ScoreClef clef = item.clef;
  const std::size_t form = std::min<std::size_t>(clef.form, kSigns.size() - 1);
  // Lines are counted from the bottom one, 0; of a G or an F clef that says the usual one.
  const bool usual = clef.line == 0 && form != kClefC;
  const std::uint8_t line = usual ? ClefItem(clef.form).clef.line : clef.line;
  out_.Open("clef", {{"number", part_.StaffNumber(staff)}});
  out_.Leaf("sign", item.style == "TAB" ? "TAB" : kSigns[form]);
  const bool told = form != kClefPercussion || line != ClefItem(kClefPercussion).clef.line;
  if (told) out_.Leaf("line", line + 1);
  if (clef.octave != 1) out_.Leaf("clef-octave-change", clef.octave == 0 ? 1 : -1);
  out_.Close();
}

void AttributeWriter::WriteTranspositions() {
  for (std::size_t staff = 0; staff < part_.part.staves; ++staff) {
    const int transpose = std::clamp(part_.Layout(staff).transpose, -120, 120);
    if (transpose == 0) continue;
    const int octaves = transpose / kOctave;
    const int diatonic = part_.part.diatonic - 7 * octaves;
    out_.Open("transpose", {{"number", part_.StaffNumber(staff)}});
    out_.Leaf("diatonic", part_.part.diatonic != 0 ? diatonic : (transpose % kOctave) * 7 / kOctave);
    out_.Leaf("chromatic", transpose % kOctave);
    if (octaves != 0) out_.Leaf("octave-change", octaves);
    out_.Close();
  }
}

}  // namespace ts5::converters::musicxml
