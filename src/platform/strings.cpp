#include "platform/strings.h"

#include <algorithm>
#include <array>

namespace ts5 {
namespace {

constexpr auto kTexts = [] {
  auto rows = std::to_array<TextRow>({
#define TEXT(name, number, text) TextRow{TextId::name, text},
#include "resources/strings.def"
#undef TEXT
  });
  std::ranges::sort(rows, {}, &TextRow::id);
  return rows;
}();

static_assert(std::ranges::adjacent_find(kTexts, {}, &TextRow::id) == kTexts.end(), "a text number stands twice");

}  // namespace

std::optional<std::string_view> TextByNumber(int number) {
  const auto row = std::ranges::lower_bound(kTexts, number, {}, [](const TextRow& r) { return static_cast<int>(r.id); });
  if (row == kTexts.end() || static_cast<int>(row->id) != number) return std::nullopt;
  return row->text;
}

std::string_view Text(TextId id) { return TextByNumber(static_cast<int>(id)).value_or(std::string_view{}); }

std::span<const TextRow> AllTexts() { return kTexts; }

}  // namespace ts5
