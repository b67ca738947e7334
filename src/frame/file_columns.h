// The columns of a list that show facts of its files, as one table: titles, texts, what they sort by, and the
// names under which the settings keep which of them are shown.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "frame/file_facts.h"
#include "frame/file_view.h"

namespace ts5 {

struct FactColumn {
  FileColumn column;
  TextId title;
  std::string_view name;    // in the settings
  std::string_view sample;  // as wide as most of its texts
  bool number = false;      // stands at the right
  std::string (*text)(const FileFacts& facts);
  // What it is sorted by; nothing where the file has no such fact. Columns without a number sort by text.
  std::optional<double> (*value)(const FileFacts& facts);
};

[[nodiscard]] std::span<const FactColumn> FactColumns();
// nullptr for a column that is always there.
[[nodiscard]] const FactColumn* FindFactColumn(FileColumn column);

// "1:02:03", "3:05": hours, minutes and seconds, rounded down.
[[nodiscard]] std::string LengthText(std::chrono::milliseconds length);
// The same for a sum: "4 h 12 min", "12 min", "25 s".
[[nodiscard]] std::string SumText(std::chrono::milliseconds length);

// What the settings keep of the columns: the names of those that are shown with blanks between, "-" for none,
// and behind a name how wide the user made it, in pixels: "Length=80 Key Name=300". What is none of them is
// passed over.
using ShownColumns = std::set<FileColumn>;
using ColumnWidths = std::map<FileColumn, int>;
[[nodiscard]] ShownColumns ColumnsFrom(std::string_view stored);
[[nodiscard]] ColumnWidths WidthsFrom(std::string_view stored);
[[nodiscard]] std::string NamesOf(const ShownColumns& columns, const ColumnWidths& widths = {});
// Whether a column has a width of the user's; others are as wide as their texts.
[[nodiscard]] bool KeepsWidth(FileColumn column);

}  // namespace ts5
