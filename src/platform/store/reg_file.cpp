#include "platform/store/reg_file.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/base/texts.h"
#include "platform/base/utf16_bytes.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

constexpr std::string_view kOldSignature = "REGEDIT4";
constexpr std::string_view kNewSignature = "Windows Registry Editor Version 5.00";
constexpr std::size_t kLineWidth = 76;  // where lines of hex bytes are broken

// --- characters

// The file as UTF-8 text, whatever it is written in.
std::string Decode(ByteView bytes) {
  const std::string_view raw = AsText(bytes);
  if (raw.starts_with("\xFF\xFE")) return Utf8FromUtf16Bytes(bytes.subspan(2), false);
  if (raw.starts_with("\xFE\xFF")) return Utf8FromUtf16Bytes(bytes.subspan(2), true);
  if (raw.starts_with("\xEF\xBB\xBF")) return std::string(raw.substr(3));
  if (raw.size() >= 2 && raw[1] == '\0') return Utf8FromUtf16Bytes(bytes, false);
  if (!raw.starts_with(kOldSignature) && IsUtf8(raw)) return std::string(raw);
  return Utf8FromWindows1252(raw);
}

// --- the parts of a line

struct Quoted {
  std::string text;
  std::string_view rest;  // behind the closing quote
};

// A text in quotes with its escapes; nothing when it does not end.
std::optional<Quoted> TakeQuoted(std::string_view line) {
  if (!line.starts_with('"')) return std::nullopt;
  Quoted quoted;
  for (std::size_t i = 1; i < line.size(); ++i) {
    if (line[i] == '"') {
      quoted.rest = Trim(line.substr(i + 1));
      return quoted;
    }
    if (line[i] == '\\' && i + 1 < line.size()) {
      const char escaped = line[++i];
      quoted.text += escaped == 'n' ? '\n' : escaped == 'r' ? '\r' : escaped;
    } else {
      quoted.text += line[i];
    }
  }
  return std::nullopt;
}

bool IsEndOfLine(std::string_view rest) {
  return rest.empty() || rest.starts_with(';');
}

template <typename Number>
std::optional<Number> ParseHex(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// "01,ff, 3" -> its bytes.
std::optional<std::string> ParseHexBytes(std::string_view text) {
  std::string bytes;
  text = Trim(text.substr(0, text.find(';')));
  while (!text.empty()) {
    const std::size_t comma = std::min(text.find(','), text.size());
    const auto byte = ParseHex<std::uint8_t>(Trim(text.substr(0, comma)));
    if (!byte) return std::nullopt;
    bytes += static_cast<char>(*byte);
    text = Trim(text.substr(std::min(comma + 1, text.size())));
  }
  return bytes;
}

RegistryValue TextValue(std::string text) {
  return {RegistryValue::Kind::Text, std::move(text)};
}

// The bytes of a typed value as what they stand for.
RegistryValue ValueOfType(unsigned type, std::string bytes, bool wide) {
  const auto text = [&] {
    return wide ? Utf8FromUtf16Bytes(AsBytes(bytes), false) : Utf8FromWindows1252(bytes);
  };
  switch (type) {
    case 1:
    case 2: {
      const std::string whole = text();
      return TextValue(whole.substr(0, whole.find('\0')));
    }
    case 7: {  // texts that end in NULs, and one more NUL: here one line each
      std::string whole = text();
      while (whole.ends_with('\0')) whole.pop_back();
      std::ranges::replace(whole, '\0', '\n');
      return TextValue(std::move(whole));
    }
    case 4:
      if (bytes.size() == 4) return TextValue(std::to_string(ByteReader(AsBytes(bytes)).U32Le()));
      break;
    case 11:
      if (bytes.size() == 8) return TextValue(std::to_string(ByteReader(AsBytes(bytes)).U64Le()));
      break;
    default:
      break;
  }
  return {RegistryValue::Kind::Binary, std::move(bytes)};
}

// What stands behind the '=' of a value line; nothing when it cannot be understood.
std::optional<RegistryValue> ParseData(std::string_view data, bool wide) {
  if (auto quoted = TakeQuoted(data)) {
    if (!IsEndOfLine(quoted->rest)) return std::nullopt;
    return TextValue(std::move(quoted->text));
  }
  const std::size_t colon = data.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::string kind = ToLower(data.substr(0, colon));
  data.remove_prefix(colon + 1);
  if (kind == "dword") {
    const auto number = ParseHex<std::uint32_t>(Trim(data.substr(0, data.find(';'))));
    return number ? std::optional(TextValue(std::to_string(*number))) : std::nullopt;
  }
  std::optional<unsigned> type;
  if (kind == "hex") type = 3;
  if (kind.starts_with("hex(") && kind.ends_with(')'))
    type = ParseHex<unsigned>(kind.substr(4, kind.size() - 5));
  auto bytes = ParseHexBytes(data);
  if (!type || !bytes) return std::nullopt;
  return ValueOfType(*type, std::move(*bytes), wide);
}

// --- keys

struct Moved {
  std::string_view from;
  std::string_view to;
};
// Applied one after the other.
constexpr Moved kMovedKeys[] = {
    {"HKEY_CURRENT_USER\\Software\\Classes\\VirtualStore\\MACHINE", "HKEY_LOCAL_MACHINE"},
    {"HKEY_LOCAL_MACHINE\\Software\\Wow6432Node", "HKEY_LOCAL_MACHINE\\Software"},
};

std::string AtItsPlace(std::string key) {
  for (const Moved& moved : kMovedKeys) {
    const std::size_t size = moved.from.size();
    if (EqualsIgnoringCase(std::string_view(key).substr(0, size), moved.from) &&
        (key.size() == size || key[size] == '\\')) {
      key.replace(0, size, moved.to);
    }
  }
  return key;
}

bool IsForeignRoot(std::string_view key) {
  const std::string_view root = key.substr(0, key.find('\\'));
  constexpr std::string_view kForeign[] = {"HKEY_CLASSES_ROOT", "HKEY_USERS", "HKEY_CURRENT_CONFIG",
                                           "HKEY_DYN_DATA"};
  return std::ranges::any_of(kForeign,
                             [&](std::string_view foreign) { return EqualsIgnoringCase(root, foreign); });
}

// --- the import

class Import {
 public:
  Import(std::string_view text, Registry& registry) : text_(text), registry_(registry) {}

  Outcome Run() {
    std::string_view signature;
    while (signature.empty() && !text_.empty()) signature = Trim(TakeLine());
    wide_ = signature == kNewSignature;
    if (!wide_ && signature != kOldSignature) return Outcome::WrongFormat;
    while (!text_.empty()) {
      std::string_view line = Trim(TakeLine());
      if (line.empty() || line.starts_with(';')) continue;
      const Outcome done = line.starts_with('[') ? TakeKey(line) : TakeValue(line);
      if (Failed(done)) return done;
    }
    return StoreKey();
  }

  RegFileReport report;

 private:
  std::string_view TakeLine() {
    ++line_;
    const std::size_t end = std::min(text_.find('\n'), text_.size());
    const std::string_view line = text_.substr(0, end);
    text_.remove_prefix(std::min(end + 1, text_.size()));
    return line;
  }

  Outcome Complain(TextId what, std::size_t line) {
    ++report.errorCount;
    if (report.errors.size() < kMaxRegFileErrors) report.errors.push_back({line, std::string(Text(what))});
    return Outcome::Success;
  }

  // What was gathered for the current key becomes its values.
  Outcome StoreKey() {
    if (!key_) return Outcome::Success;
    ++report.keys;
    return registry_.Write(*std::exchange(key_, std::nullopt), values_);
  }

  Outcome TakeKey(std::string_view line) {
    if (const Outcome stored = StoreKey(); Failed(stored)) return stored;
    ignoring_ = true;
    const std::size_t end = line.rfind(']');
    if (end == std::string_view::npos || !IsEndOfLine(Trim(line.substr(end + 1))))
      return Complain(texts::RegFileBadLine, line_);
    std::string_view name = line.substr(1, end - 1);
    const bool deletes = name.starts_with('-');
    if (deletes) name.remove_prefix(1);
    const auto known = NormalisedKey(name);
    if (!known) {
      if (!IsForeignRoot(name)) return Complain(texts::RegFileUnknownKey, line_);
      ++report.skipped;
      return Outcome::Success;
    }
    const std::string key = AtItsPlace(*known);
    if (deletes) {
      ++report.keys;
      return registry_.DeleteKey(key);
    }
    auto values = registry_.Read(key);
    if (!values) return values.error();
    values_ = std::move(*values);
    key_ = key;
    ignoring_ = false;
    return Outcome::Success;
  }

  Outcome TakeValue(std::string_view line) {
    const std::size_t number = line_;
    std::string whole(line);
    // Only bytes go on in the next line; a '\' at the end of a text is part of it.
    if (whole.find("=hex") != std::string::npos || whole.find("= hex") != std::string::npos) {
      while (whole.ends_with('\\') && !text_.empty()) {
        whole.pop_back();
        whole += Trim(TakeLine());
      }
    }
    if (!key_) return ignoring_ ? Outcome::Success : Complain(texts::RegFileNoKey, number);

    Quoted name;
    if (whole.starts_with('@')) {
      name.rest = Trim(std::string_view(whole).substr(1));
    } else if (auto quoted = TakeQuoted(whole)) {
      name = std::move(*quoted);
    } else {
      return Complain(texts::RegFileBadLine, number);
    }
    if (!name.rest.starts_with('=')) return Complain(texts::RegFileBadLine, number);
    std::string_view data = Trim(name.rest.substr(1));
    if (whole.size() == line.size() && data.starts_with('"') && !TakeQuoted(data))
      data = WithTheLinesOfItsText(line.substr(static_cast<std::size_t>(data.data() - whole.data())));
    // A NUL ends a text wherever it goes from here.
    if (whole.find('\0') != std::string::npos || data.find('\0') != std::string_view::npos)
      return Complain(texts::RegFileBadLine, number);
    if (data.starts_with('-') && IsEndOfLine(Trim(data.substr(1)))) {
      values_.Erase(name.text);
    } else if (auto value = ParseData(data, wide_)) {
      values_.Set(name.text, std::move(*value));
    } else {
      return Complain(texts::RegFileBadData, number);
    }
    ++report.values;
    return Outcome::Success;
  }

  // A text that holds line ends goes on in the next lines up to its closing quote; `start` is its opening
  // one. Where that quote does not end its line, or a key comes first, the text was never closed: then it is
  // `start` to the end of its own line.
  std::string_view WithTheLinesOfItsText(std::string_view start) {
    const std::string_view all(start.data(),
                               static_cast<std::size_t>(text_.data() - start.data()) + text_.size());
    std::size_t quote = 1;
    while (quote < all.size() && all[quote] != '"' && !all.substr(quote).starts_with("\n["))
      quote += all[quote] == '\\' ? 2 : 1;
    if (quote >= all.size() || all[quote] != '"') return start;
    const std::size_t end = std::min(all.find('\n', quote), all.size());
    if (!IsEndOfLine(Trim(all.substr(quote + 1, end - quote - 1)))) return start;
    line_ += static_cast<std::size_t>(std::ranges::count(all.substr(0, end), '\n'));
    text_ = all.substr(std::min(end + 1, all.size()));
    return all.substr(0, end);
  }

  std::string_view text_;
  Registry& registry_;
  bool wide_ = false;
  std::size_t line_ = 0;
  std::optional<std::string> key_;
  RegistryValues values_;
  bool ignoring_ = false;  // the values below a key that was not taken
};

// --- the export

// In quotes, with the escapes that TakeQuoted takes away.
std::string Escaped(std::string_view text) {
  std::string escaped = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\' || c == '\n' || c == '\r') escaped += '\\';
    escaped += c == '\n' ? 'n' : c == '\r' ? 'r' : c;
  }
  return escaped += '"';
}

std::string HexLines(std::string start, ByteView bytes) {
  std::string lines = std::move(start);
  std::size_t column = lines.size();
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (column > kLineWidth) {
      lines += "\\\r\n  ";
      column = 2;
    }
    lines += Format("%02x", bytes[i]);
    if (i + 1 < bytes.size()) lines += ',';
    column += 3;
  }
  return lines;
}

std::string ValueLine(const std::string& name, const RegistryValue& value) {
  const std::string start = (name.empty() ? "@" : Escaped(name)) + "=";
  if (value.kind == RegistryValue::Kind::Binary) return HexLines(start + "hex:", AsBytes(value.data));
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  if (std::ranges::none_of(value.data, isControl)) return start + Escaped(value.data);
  ByteWriter bytes;
  AppendUtf16(bytes, value.data, false);
  bytes.U16Le(0);
  return HexLines(start + "hex(1):", bytes.View());
}

}  // namespace

Result<RegFileReport> ImportRegText(ByteView content, Registry& registry) {
  const std::string text = Decode(content);
  Import import(text, registry);
  const Outcome done = registry.Transaction([&] { return import.Run(); });
  if (Failed(done)) return Failure(done);
  return std::move(import.report);
}

Result<RegFileReport> ImportRegFile(const std::string& path, Registry& registry) {
  const auto content = ReadFile(path, kMaxRegFileSize);
  if (!content) return Failure(content.error());
  return ImportRegText(*content, registry);
}

Result<Bytes> ExportRegText(const Registry& registry, std::string_view key) {
  const auto start = NormalisedKey(key);
  if (!start) return Failure(Outcome::WrongFormat);
  std::string text = std::string(kNewSignature) + "\r\n";
  std::vector<std::string> open{*start};
  while (!open.empty()) {
    const std::string current = std::move(open.back());
    open.pop_back();
    const auto values = registry.Read(current);
    const auto subkeys = registry.Subkeys(current);
    if (!values) return Failure(values.error());
    if (!subkeys) return Failure(subkeys.error());
    text += "\r\n[" + current + "]\r\n";
    for (const auto& [name, value] : values->All()) text += ValueLine(name, value) + "\r\n";
    for (auto subkey = subkeys->rbegin(); subkey != subkeys->rend(); ++subkey)
      open.push_back(current + "\\" + *subkey);
  }
  ByteWriter out;
  out.Reserve(2 * text.size() + 2);
  out.U16Le(0xFEFF);
  AppendUtf16(out, text, false);
  return out.Release();
}

Outcome ExportRegFile(const Registry& registry, std::string_view key, const std::string& path) {
  const auto text = ExportRegText(registry, key);
  return text ? WriteFile(path, *text) : text.error();
}

}  // namespace ts5
