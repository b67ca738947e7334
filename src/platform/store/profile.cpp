#include "platform/store/profile.h"

#include <algorithm>
#include <array>

#include "platform/base/utf16_bytes.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

struct Mark {
  std::string_view bytes;
  TextEncoding encoding;
};
constexpr std::array kMarks = {Mark{"\xEF\xBB\xBF", TextEncoding::Utf8},
                               Mark{"\xFF\xFE", TextEncoding::Utf16Le},
                               Mark{"\xFE\xFF", TextEncoding::Utf16Be}};
constexpr std::string_view kLineEnd = "\r\n";

bool IsComment(std::string_view line) {
  return Trim(line).starts_with(';');
}

// The name in a section's header line; nothing for any other line.
std::optional<std::string_view> SectionName(std::string_view line) {
  line = Trim(line);
  const std::size_t end = line.find(']');
  if (!line.starts_with('[') || end == std::string_view::npos) return std::nullopt;
  return Trim(line.substr(1, end - 1));
}

// The key of a line as it stands before the first '='; nothing for comments and blank lines.
std::optional<std::string_view> KeyOf(std::string_view line) {
  line = Trim(line);
  if (line.empty() || IsComment(line)) return std::nullopt;
  return Trim(line.substr(0, line.find('=')));
}

// What a line says behind a key that it begins with; nothing when it belongs to another key.
std::optional<std::string_view> ValueBehind(std::string_view line, std::string_view key) {
  line = Trim(line);
  if (IsComment(line) || line.size() < key.size() || !EqualsIgnoringCase(line.substr(0, key.size()), key)) {
    return std::nullopt;
  }
  line = Trim(line.substr(key.size()));
  if (line.empty()) return line;
  if (line.front() != '=') return std::nullopt;
  return Trim(line.substr(1));
}

std::string_view WithoutQuotes(std::string_view value) {
  const bool quoted =
      value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

std::string OneLine(std::string_view text) {
  std::string line(text);
  std::ranges::replace_if(
      line, [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, '?');
  return line;
}

}  // namespace

Profile::Profile() : sections_(1) {}
Profile::Profile(TextEncoding encoding) : sections_(1), encoding_(encoding) {}

void Profile::AddLine(Section& section, std::string line) {
  if (const auto key = KeyOf(line)) section.index.try_emplace(std::string(*key), section.lines.size());
  section.lines.push_back(std::move(line));
}

void Profile::Reindex(Section& section) {
  std::vector<std::string> lines = std::exchange(section.lines, {});
  section.index.clear();
  for (std::string& line : lines) AddLine(section, std::move(line));
}

Result<Profile> Profile::Parse(ByteView bytes) {
  Profile profile;
  std::string_view text = AsText(bytes);
  for (const Mark& mark : kMarks) {
    if (!text.starts_with(mark.bytes)) continue;
    profile.encoding_ = mark.encoding;
    text.remove_prefix(mark.bytes.size());
    break;
  }
  const bool bigEndian = profile.encoding_ == TextEncoding::Utf16Be;
  std::string decoded;
  if (bigEndian || profile.encoding_ == TextEncoding::Utf16Le) {
    decoded = Utf8FromUtf16Bytes(AsBytes(text), bigEndian);
    text = decoded;
  }
  const bool is8Bit = profile.encoding_ == TextEncoding::Windows1252;
  if (std::cmp_greater_equal(std::ranges::count(text, '\n'), kMaxProfileLines))
    return Failure(Outcome::WrongFormat);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view raw = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (raw.ends_with('\r')) raw.remove_suffix(1);
    std::string line = is8Bit ? Utf8FromWindows1252(raw) : std::string(raw);
    if (const auto name = SectionName(line)) {
      profile.AddSection(std::string(*name), std::move(line));
    } else {
      AddLine(profile.sections_.back(), std::move(line));
    }
  }
  return profile;
}

Result<Profile> Profile::Load(const std::string& path) {
  const auto content = ReadFile(path, kMaxProfileSize);
  if (!content) return Failure(content.error());
  return Parse(*content);
}

Bytes Profile::Serialise() const {
  ByteWriter out;
  for (const Mark& mark : kMarks) {
    if (mark.encoding == encoding_) out.Append(mark.bytes);
  }
  const auto put = [&](std::string line) {
    line += kLineEnd;
    switch (encoding_) {
      case TextEncoding::Windows1252:
        return out.Append(Windows1252FromUtf8(line));
      case TextEncoding::Utf8:
        return out.Append(line);
      case TextEncoding::Utf16Le:
      case TextEncoding::Utf16Be:
        return AppendUtf16(out, line, encoding_ == TextEncoding::Utf16Be);
    }
  };
  for (const Section& section : sections_) {
    if (&section != &sections_.front()) put(section.header);
    for (const std::string& line : section.lines) put(line);
  }
  return out.Release();
}

Outcome Profile::Save(const std::string& path) const {
  return WriteFile(path, Serialise());
}

const Profile::Section* Profile::FindSection(std::string_view name) const {
  const auto found = index_.find(Trim(name));
  return found == index_.end() ? nullptr : &sections_[found->second];
}

Profile::Section& Profile::AddSection(std::string name, std::string header) {
  index_.try_emplace(name, sections_.size());
  Section& section = sections_.emplace_back();
  section.name = std::move(name);
  section.header = std::move(header);
  return section;
}

std::optional<std::size_t> Profile::FindLine(const Section& section, std::string_view key) {
  key = Trim(key);
  if (key.find('=') == std::string_view::npos) {
    const auto found = section.index.find(key);
    return found == section.index.end() ? std::nullopt : std::optional(found->second);
  }
  const auto line = std::ranges::find_if(section.lines,
                                         [&](std::string_view l) { return ValueBehind(l, key).has_value(); });
  if (line == section.lines.end()) return std::nullopt;
  return static_cast<std::size_t>(line - section.lines.begin());
}

std::vector<std::string> Profile::Sections() const {
  std::vector<std::string> names;
  for (auto section = sections_.begin() + 1; section != sections_.end(); ++section)
    names.push_back(section->name);
  return names;
}

std::vector<std::string> Profile::Keys(std::string_view section) const {
  std::vector<std::string> keys;
  if (const Section* const found = FindSection(section)) {
    for (const std::string& line : found->lines) {
      if (const auto key = KeyOf(line)) keys.emplace_back(*key);
    }
  }
  return keys;
}

std::optional<std::string> Profile::Find(std::string_view section, std::string_view key) const {
  const Section* const found = FindSection(section);
  if (found == nullptr) return std::nullopt;
  const auto line = FindLine(*found, key);
  if (!line) return std::nullopt;
  return std::string(WithoutQuotes(ValueBehind(found->lines[*line], Trim(key)).value_or(std::string_view{})));
}

std::string Profile::ReadText(std::string_view section, std::string_view key,
                              std::string_view otherwise) const {
  return Find(section, key).value_or(std::string(otherwise));
}

std::int32_t Profile::ReadInteger(std::string_view section, std::string_view key,
                                  std::int32_t otherwise) const {
  const auto value = Find(section, key);
  return value && !Trim(*value).empty() ? LeadingInteger(*value) : otherwise;
}

void Profile::Write(std::string_view section, std::string_view key, std::string_view value) {
  const std::string name = OneLine(Trim(section));
  const std::string cleanKey = OneLine(Trim(key));
  auto* target = const_cast<Section*>(FindSection(name));
  if (target == nullptr) target = &AddSection(name, "[" + name + "]");
  if (const auto at = FindLine(*target, cleanKey)) {
    std::string& line = target->lines[*at];
    const std::string spelling(Trim(line).substr(0, cleanKey.size()));
    line = spelling + "=" + OneLine(value);
    return;
  }
  // Blank lines that set the section off from the next stay at its end.
  std::size_t blanks = 0;
  while (blanks < target->lines.size() && Trim(target->lines[target->lines.size() - 1 - blanks]).empty())
    ++blanks;
  target->lines.resize(target->lines.size() - blanks);
  AddLine(*target, cleanKey + "=" + OneLine(value));
  target->lines.resize(target->lines.size() + blanks);
}

void Profile::WriteInteger(std::string_view section, std::string_view key, std::int64_t value) {
  Write(section, key, std::to_string(value));
}

bool Profile::Erase(std::string_view section, std::string_view key) {
  auto* const target = const_cast<Section*>(FindSection(section));
  const auto at = target == nullptr ? std::nullopt : FindLine(*target, key);
  if (!at) return false;
  target->lines.erase(target->lines.begin() + static_cast<std::ptrdiff_t>(*at));
  Reindex(*target);
  return true;
}

}  // namespace ts5
