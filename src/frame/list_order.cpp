#include "frame/list_order.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "frame/file_columns.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kByName = "Name";
constexpr std::string_view kByDirectory = "Directory";

std::string_view NameOfColumn(FileColumn column) {
  if (const FactColumn* const fact = FindFactColumn(column)) return fact->name;
  return column == FileColumn::Directory ? kByDirectory : kByName;
}

std::optional<FileColumn> ColumnOfName(std::string_view name) {
  if (name == kByName) return FileColumn::Name;
  if (name == kByDirectory) return FileColumn::Directory;
  const auto columns = FactColumns();
  const auto found = std::ranges::find(columns, name, &FactColumn::name);
  return found == columns.end() ? std::nullopt : std::optional(found->column);
}

// --- the filter

std::vector<std::string> WordsOf(std::string_view filter) {
  std::vector<std::string> words;
  for (const std::string_view word : Split(filter, ' ')) {
    if (!word.empty()) words.push_back(ToLower(word));
  }
  return words;
}

bool HasAll(const std::string& path, std::string_view root, const std::vector<std::string>& words) {
  std::string_view shown = path;
  if (!root.empty() && shown.starts_with(root)) shown.remove_prefix(root.size());
  const std::string text = ToLower(shown);
  return std::ranges::all_of(words, [&](const std::string& word) { return text.find(word) != text.npos; });
}

// --- the order

// What an entry is sorted by: a number, or a text behind which the name decides.
struct Key {
  std::uint32_t entry = 0;
  bool has = false;
  double number = 0;
  std::string text = {};
};

Key KeyOf(std::uint32_t index, const FileListEntry& entry, FileColumn column, const FactColumn* fact,
          const FileFacts* facts) {
  Key key{.entry = index};
  if (fact == nullptr) {
    key.has = true;
    key.text = SortKey(column == FileColumn::Directory ? DirectoryOf(entry.path) : FileNameOf(entry.path));
  } else if (facts != nullptr && fact->value != nullptr) {
    const auto number = fact->value(*facts);
    key.has = number.has_value();
    key.number = number.value_or(0);
  } else if (facts != nullptr) {
    key.text = SortKey(fact->text(*facts));
    key.has = !key.text.empty();
  }
  return key;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// The number at the start, without leading zeros, taken off the text.
std::string_view TakeNumber(std::string_view& text) {
  std::size_t end = 0;
  while (end < text.size() && IsDigit(text[end])) ++end;
  std::string_view number = text.substr(0, end);
  text.remove_prefix(end);
  while (number.size() > 1 && number.front() == '0') number.remove_prefix(1);
  return number;
}

}  // namespace

std::string StoredSorting(const ListOrder& order) {
  if (!order.column) return {};
  return (order.descending ? "-" : "") + std::string(NameOfColumn(*order.column));
}

ListOrder SortingFrom(std::string_view stored) {
  ListOrder order;
  order.descending = stored.starts_with('-');
  if (order.descending) stored.remove_prefix(1);
  order.column = ColumnOfName(stored);
  return order;
}

std::string SortKey(std::string_view name) {
  // Umlauts stand with their letters.
  constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kLetters{
      {{"ä", "a"}, {"ö", "o"}, {"ü", "u"}, {"ß", "ss"}}};
  const std::string lower = ToLower(name);
  if (std::ranges::all_of(lower, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) return lower;
  std::string key;
  for (std::size_t i = 0; i < lower.size();) {
    const auto* const letter = std::ranges::find_if(
        kLetters, [&](const auto& one) { return std::string_view(lower).substr(i).starts_with(one.first); });
    if (letter != kLetters.end()) {
      key += letter->second;
      i += letter->first.size();
    } else {
      key += lower[i++];
    }
  }
  return key;
}

int CompareKeys(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    if (IsDigit(a.front()) && IsDigit(b.front())) {
      const std::string_view left = TakeNumber(a);
      const std::string_view right = TakeNumber(b);
      if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
      if (const int order = left.compare(right); order != 0) return order;
      continue;
    }
    const auto left = static_cast<unsigned char>(a.front());
    const auto right = static_cast<unsigned char>(b.front());
    if (left != right) return left < right ? -1 : 1;
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  return a.empty() == b.empty() ? 0 : a.empty() ? -1 : 1;
}

std::vector<std::uint32_t> ShownEntries(std::span<const FileListEntry> entries, const ListOrder& order,
                                        std::string_view root, const EntryFacts& facts) {
  std::vector<std::uint32_t> shown(entries.size());
  std::iota(shown.begin(), shown.end(), 0U);
  if (const auto words = WordsOf(order.filter); !words.empty())
    std::erase_if(shown, [&](std::uint32_t i) { return !HasAll(entries[i].path, root, words); });
  if (!order.column) return shown;

  const FactColumn* const fact = FindFactColumn(*order.column);
  std::vector<Key> keys;
  keys.reserve(shown.size());
  for (const std::uint32_t i : shown)
    keys.push_back(KeyOf(i, entries[i], *order.column, fact, fact != nullptr ? facts(i) : nullptr));
  std::ranges::stable_sort(keys, [&](const Key& a, const Key& b) {
    if (a.has != b.has) return a.has;
    const Key& first = order.descending ? b : a;
    const Key& second = order.descending ? a : b;
    if (first.number != second.number) return first.number < second.number;
    return CompareKeys(first.text, second.text) < 0;
  });
  std::ranges::transform(keys, shown.begin(), &Key::entry);
  return shown;
}

}  // namespace ts5
