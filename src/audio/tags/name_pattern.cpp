#include "audio/tags/name_pattern.h"

#include <algorithm>

#include "audio/tags/tag_file.h"
#include "audio/texts.h"
#include "platform/base/text.h"

namespace ts5::tags {
namespace {

constexpr std::size_t kMostBytes = 200;
constexpr char kMark = '%';

constexpr NameWord kWords[] = {
    {"track", "WM/TrackNumber"},       {"title", "Title"},          {"artist", "Author"},
    {"album", "WM/AlbumTitle"},        {"year", "WM/Year"},         {"genre", "WM/Genre"},
    {"albumartist", "WM/AlbumArtist"}, {"composer", "WM/Composer"},
};

// Calls text(std::string_view) and word(const NameWord&) for the parts of a pattern; false at a fault.
template <typename OnText, typename OnWord>
bool Walk(std::string_view pattern, OnText text, OnWord word) {
  while (!pattern.empty()) {
    const std::size_t mark = pattern.find(kMark);
    text(pattern.substr(0, mark));
    if (mark == std::string_view::npos) return true;
    pattern.remove_prefix(mark + 1);
    const std::size_t end = pattern.find(kMark);
    if (end == std::string_view::npos) return false;
    const std::string_view name = pattern.substr(0, end);
    pattern.remove_prefix(end + 1);
    if (name.empty()) {
      text(std::string_view(&kMark, 1));
      continue;
    }
    const auto* const found = std::ranges::find_if(
        kWords, [name](const NameWord& one) { return EqualsIgnoringCase(one.word, name); });
    if (found == std::end(kWords)) return false;
    word(*found);
  }
  return true;
}

// "3/12" and "3" as "03", so that names sort as the tracks do.
std::string TrackText(std::string_view value) {
  const std::string_view number = Trim(value.substr(0, value.find('/')));
  const auto track = ParseInteger(number);
  return track && *track >= 0 && *track < 10000 ? Format("%02i", *track) : std::string(number);
}

std::string ValueOf(const NameWord& word, const Attributes& attributes) {
  const Attribute* const attribute = FindAttribute(attributes, word.attribute);
  if (attribute == nullptr) return {};
  return word.word == "track" ? TrackText(attribute->value) : std::string(Trim(attribute->value));
}

std::string Safe(std::string_view name) {
  constexpr std::string_view kSpecial = "/\\:*?\"<>|";
  std::string safe(name);
  for (char& c : safe) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || kSpecial.find(c) != std::string_view::npos) c = '_';
  }
  if (safe.size() > kMostBytes) {
    std::size_t end = kMostBytes;
    while (end > 0 && (static_cast<unsigned char>(safe[end]) & 0xC0U) == 0x80U) --end;
    safe.resize(end);
  }
  // Names that begin with a dot are hidden, those that end with one or with a blank are not taken everywhere.
  const std::size_t first = safe.find_first_not_of(" .");
  if (first == std::string::npos) return {};
  const std::size_t last = safe.find_last_not_of(" .");
  return safe.substr(first, last - first + 1);
}

}  // namespace

std::span<const NameWord> NameWords() {
  return kWords;
}

std::optional<TextId> NamePatternFault(std::string_view pattern) {
  if (Trim(pattern).empty()) return std::nullopt;
  bool anyWord = false;
  const bool whole = Walk(
      pattern, [](std::string_view) {}, [&](const NameWord&) { anyWord = true; });
  if (!whole || !IsUtf8(pattern) || CharacterCount(pattern) > kMostNamePattern)
    return texts::NamePatternUnknownWord;
  if (!anyWord) return texts::NamePatternNoWord;
  return std::nullopt;
}

std::string NameOf(std::string_view pattern, const Attributes& attributes) {
  std::string name;
  std::string between;
  bool skipped = false;  // the last word: what stands behind it goes with it
  const bool whole = Walk(
      pattern,
      [&](std::string_view text) {
        if (!skipped) between += text;
      },
      [&](const NameWord& word) {
        const std::string value = ValueOf(word, attributes);
        skipped = value.empty();
        if (!skipped) name += between + value;
        if (!skipped || name.empty()) between.clear();
      });
  if (!whole || name.empty()) return {};
  return Safe(skipped ? name : name + between);
}

std::string FileNameFor(std::string_view pattern, const std::string& source, const Attributes& job,
                        std::string_view extension) {
  if (Trim(pattern).empty()) return {};
  Attributes all;
  for (const Attribute& attribute : job) {
    if (attribute.ToBeWritten()) all.push_back(attribute);
  }
  if (auto own = ReadAttributes(source)) std::ranges::move(*own, std::back_inserter(all));
  const std::string name = NameOf(pattern, all);
  return name.empty() ? name : name + "." + std::string(extension);
}

}  // namespace ts5::tags
