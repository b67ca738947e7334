#include "frame/file_columns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "platform/base/clock.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

using std::chrono::milliseconds;

constexpr std::string_view kChanges = " …";  // behind the first of several values

std::string FirstOf(const std::string& value, bool changes) {
  return value.empty() ? value : value + std::string(changes ? kChanges : "");
}

// In the unit in which it has one to three digits before the comma.
std::string SizeText(const FileFacts& facts) {
  constexpr double kStep = 1000;
  constexpr std::array<std::string_view, 4> kUnits{"kB", "MB", "GB", "TB"};
  if (facts.size < 1000) return Format(Text(texts::SizeInBytes), facts.size);
  double size = static_cast<double>(facts.size) / kStep;
  std::size_t unit = 0;
  while (std::round(size) >= kStep && unit + 1 < kUnits.size()) {
    size /= kStep;
    ++unit;
  }
  std::string number = Format(size < 10 ? "%.1f" : "%.0f", size);
  std::ranges::replace(number, '.', ',');
  return number + " " + std::string(kUnits.at(unit));
}

std::string DateText(const FileFacts& facts) {
  const auto moment =
      std::chrono::system_clock::time_point(std::chrono::duration_cast<std::chrono::system_clock::duration>(
          std::chrono::nanoseconds(facts.written)));
  const CivilTime time = LocalTime(moment);
  return Format(Text(texts::DayOfFile), time.day, time.month, time.year);
}

std::string TempoText(const FileFacts& facts) {
  return facts.tempo > 0 ? FirstOf(std::to_string(std::lround(facts.tempo)), facts.tempoChanges)
                         : std::string();
}

std::string VoicesText(const FileFacts& facts) {
  if (facts.channels == 1) return std::string(Text(texts::Mono));
  if (facts.channels == 2) return std::string(Text(texts::Stereo));
  if (facts.channels > 2) return Format(Text(texts::ManyChannels), facts.channels);
  if (facts.voices == 0) return {};
  return facts.voices == 1 ? std::string(Text(texts::OneVoice))
                           : Format(Text(texts::ManyVoices), facts.voices);
}

std::optional<double> Positive(double value) {
  return value > 0 ? std::optional(value) : std::nullopt;
}

constexpr std::array kColumns{
    FactColumn{FileColumn::Length, texts::FileColumnLength, "Length", "00:00:00", true,
               [](const FileFacts& f) { return f.length ? LengthText(*f.length) : std::string(); },
               [](const FileFacts& f) {
                 return f.length ? std::optional(static_cast<double>(f.length->count())) : std::nullopt;
               }},
    FactColumn{FileColumn::Key, texts::FileColumnKey, "Key", "D-Dur/h-Moll …", false,
               [](const FileFacts& f) { return FirstOf(f.key, f.keyChanges); }, nullptr},
    FactColumn{FileColumn::Metre, texts::FileColumnMetre, "Metre", "12/8 …", false,
               [](const FileFacts& f) { return FirstOf(f.metre, f.metreChanges); }, nullptr},
    FactColumn{FileColumn::Tempo, texts::FileColumnTempo, "Tempo", "Tempo …", true, TempoText,
               [](const FileFacts& f) { return Positive(f.tempo); }},
    FactColumn{FileColumn::Voices, texts::FileColumnVoices, "Voices", "16 Stimmen", false, VoicesText,
               [](const FileFacts& f) { return Positive(f.channels > 0 ? f.channels : f.voices); }},
    FactColumn{FileColumn::Size, texts::FileColumnSize, "Size", "888 MB", true, SizeText,
               [](const FileFacts& f) { return std::optional(static_cast<double>(f.size)); }},
    FactColumn{FileColumn::Date, texts::FileColumnDate, "Date", "30.12.2026", true, DateText,
               [](const FileFacts& f) { return std::optional(static_cast<double>(f.written)); }},
};

constexpr std::array kNamedColumns{std::pair{FileColumn::Name, std::string_view("Name")},
                                   std::pair{FileColumn::Directory, std::string_view("Directory")}};

std::optional<FileColumn> ColumnNamed(std::string_view name) {
  for (const auto& [column, own] : kNamedColumns) {
    if (own == name) return column;
  }
  const auto* const fact = std::ranges::find(kColumns, name, &FactColumn::name);
  return fact == kColumns.end() ? std::nullopt : std::optional(fact->column);
}

}  // namespace

std::span<const FactColumn> FactColumns() {
  return kColumns;
}

const FactColumn* FindFactColumn(FileColumn column) {
  const auto* const found = std::ranges::find(kColumns, column, &FactColumn::column);
  return found == kColumns.end() ? nullptr : found;
}

std::string LengthText(milliseconds length) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(length).count();
  return seconds < 3600
             ? Format(Text(texts::MinutesAndSeconds), seconds / 60, seconds % 60)
             : Format(Text(texts::HoursMinutesSeconds), seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::string SumText(milliseconds length) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(length).count();
  if (seconds < 60) return Format(Text(texts::SumSeconds), seconds);
  const auto minutes = std::chrono::round<std::chrono::minutes>(length).count();
  if (minutes < 60) return Format(Text(texts::SumMinutes), minutes);
  return Format(Text(texts::SumHours), minutes / 60, minutes % 60);
}

ShownColumns ColumnsFrom(std::string_view stored) {
  ShownColumns columns;
  for (const std::string_view part : Split(stored, ' ')) {
    const auto column = ColumnNamed(part.substr(0, part.find('=')));
    if (column && FindFactColumn(*column) != nullptr) columns.insert(*column);
  }
  return columns;
}

ColumnWidths WidthsFrom(std::string_view stored) {
  constexpr std::int64_t kWidest = 10'000;
  ColumnWidths widths;
  for (const std::string_view part : Split(stored, ' ')) {
    const std::size_t sign = part.find('=');
    if (sign == std::string_view::npos) continue;
    const auto column = ColumnNamed(part.substr(0, sign));
    const auto width = ParseInteger(part.substr(sign + 1));
    if (column && width && *width > 0 && *width <= kWidest) widths[*column] = static_cast<int>(*width);
  }
  return widths;
}

std::string NamesOf(const ShownColumns& columns, const ColumnWidths& widths) {
  std::string names = columns.empty() ? "-" : "";
  const auto add = [&](FileColumn column, std::string_view name) {
    const auto width = widths.find(column);
    names += (names.empty() ? "" : " ") + std::string(name);
    if (width != widths.end()) names += "=" + std::to_string(width->second);
  };
  for (const FactColumn& column : kColumns) {
    if (columns.contains(column.column)) add(column.column, column.name);
  }
  for (const auto& [column, name] : kNamedColumns) {
    if (widths.contains(column)) add(column, name);
  }
  return names;
}

bool KeepsWidth(FileColumn column) {
  return FindFactColumn(column) != nullptr ||
         std::ranges::any_of(kNamedColumns, [&](const auto& named) { return named.first == column; });
}

}  // namespace ts5
