#include "artworker/layout_file.h"

#include <algorithm>
#include <bit>
#include <type_traits>
#include <utility>

#include "artworker/layout_fields.h"
#include "frame/guarded_profile.h"
#include "platform/base/text.h"

namespace ts5::artworker {
namespace {

constexpr std::string_view kHead = "sd4 Layout File";
// A line break and a tab as they are stored, so that a text is one line in every form.
constexpr std::string_view kStoredBreak = "\xC2\xA8";
constexpr std::string_view kStoredTab = "\xC2\xA1";
// The shortest element of a record: more elements than fit into it cannot be there.
constexpr std::size_t kLeastElement = 38;

std::string Replaced(std::string text, std::string_view what, std::string_view by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
    text.replace(at, what.size(), by);
  return text;
}

// A character that means a break or a tab in a stored text has no place there as itself.
std::string Stored(std::string_view text) {
  std::string stored = Replaced(Replaced(std::string(text), kStoredBreak, "?"), kStoredTab, "?");
  return Replaced(Replaced(std::move(stored), "\n", kStoredBreak), "\t", kStoredTab);
}

// The text of a buffer of so many bytes.
std::string Restored(std::string_view windows1252, std::int32_t length) {
  windows1252 = windows1252.substr(0, std::min(windows1252.find('\0'), windows1252.size()));
  windows1252 = windows1252.substr(0, static_cast<std::size_t>(std::max(0, length - 1)));
  const std::string text = Replaced(Utf8FromWindows1252(windows1252), "\r\n", "\n");
  return Replaced(Replaced(text, kStoredBreak, "\n"), kStoredTab, "\t");
}

std::string UntilNul(ByteView bytes) {
  const std::string_view text = AsText(bytes);
  return Utf8FromWindows1252(text.substr(0, std::min(text.find('\0'), text.size())));
}

// Quotes keep what a reader of profile files would take off the ends of a value.
std::string Kept(std::string_view value) {
  const auto wouldGo = [](char c) { return c == ' ' || c == '\t' || c == '"' || c == '\''; };
  const bool quote = !value.empty() && (wouldGo(value.front()) || wouldGo(value.back()));
  return quote ? '"' + std::string(value) + '"' : std::string(value);
}

template <typename T>
std::int32_t Plain(T value) {
  return static_cast<std::int32_t>(value);
}

bool Fits(std::int64_t value, NumberRange range) {
  return value >= range.least && value <= range.most;
}

class ProfileWriter {
 public:
  [[nodiscard]] Profile Release() { return std::move(profile_); }
  [[nodiscard]] static bool Ok() { return true; }
  [[nodiscard]] std::size_t Elements() const { return elements_; }
  static const ArtworkElement& Element(const std::vector<ArtworkElement>& elements, std::size_t index) {
    return elements[index];
  }

  void Head() {
    section_ = kHead;
    WriteGuard(profile_, section_);
  }
  void Section(std::string name) { section_ = std::move(name); }
  template <typename T>
  void Number(std::string_view key, T value, NumberRange /*range*/) {
    profile_.WriteInteger(section_, key, Plain(value));
  }
  void Count(std::string_view key, const std::vector<ArtworkElement>& elements) {
    elements_ = elements.size();
    profile_.WriteInteger(section_, key, static_cast<std::int64_t>(elements_));
  }
  template <typename... T>
  void Numbers(std::string_view key, NumberRange /*range*/, T... values) {
    std::string text;
    ((text += (text.empty() ? "" : " ") + std::to_string(values)), ...);
    profile_.Write(section_, key, text);
  }
  void Byte(std::string_view key, std::uint8_t value, std::uint8_t /*absent*/) {
    profile_.WriteInteger(section_, key, value);
  }
  void Flag(std::string_view key, bool value, bool /*absent*/) {
    profile_.WriteInteger(section_, key, value ? 1 : 0);
  }
  void Text(std::string_view lengthKey, std::string_view key, std::int32_t length, std::string_view text) {
    profile_.WriteInteger(section_, lengthKey, length);
    if (length != 0) profile_.Write(section_, key, Kept(Stored(text)));
  }
  void Name(std::string_view key, std::size_t /*bytes*/, std::string_view text, bool /*optional*/) {
    profile_.Write(section_, key, Kept(text));
  }

 private:
  Profile profile_;
  std::string section_;
  std::size_t elements_ = 0;
};

// What both readers share: whether all is well, and the elements that come into being one after another.
class Reader {
 public:
  [[nodiscard]] bool Ok() const { return ok_; }
  [[nodiscard]] std::size_t Elements() const { return elements_; }
  static ArtworkElement& Element(std::vector<ArtworkElement>& elements, std::size_t /*index*/) {
    return elements.emplace_back();
  }

 protected:
  void Fail() { ok_ = false; }
  void Require(bool fits) { ok_ = ok_ && fits; }
  void ExpectElements(std::int64_t count) {
    Require(count >= 0);
    elements_ = ok_ ? static_cast<std::size_t>(count) : 0;
  }
  // A length needs no bytes in a file, but so many of them wherever its text is packed.
  void TakeRoom(std::int32_t length) {
    Require(length >= 0 && length <= room_);
    if (ok_) room_ -= length;
  }

 private:
  bool ok_ = true;
  std::size_t elements_ = 0;
  std::int32_t room_ = kMaxTextBytes;
};

class ProfileReader : public Reader {
 public:
  explicit ProfileReader(const Profile& profile) : profile_(profile) {}

  void Head() {
    section_ = kHead;
    Require(HasGuard(profile_, section_));
  }
  void Section(std::string name) { section_ = std::move(name); }
  template <typename T>
  void Number(std::string_view key, T& value, NumberRange range) {
    std::int64_t number = range.absent.value_or(0);
    if (const auto text = profile_.Find(section_, key)) {
      const auto parsed = ParseInteger(Trim(*text));
      Require(parsed && Fits(*parsed, range));
      number = parsed.value_or(0);
    } else {
      Require(range.absent.has_value());
    }
    if (Ok()) value = static_cast<T>(number);
  }
  void Count(std::string_view key, const std::vector<ArtworkElement>& /*elements*/) {
    std::int32_t count = 0;
    Number(key, count, NumberRange{0, kMaxElements, 0});
    ExpectElements(count);
  }
  template <typename... T>
  void Numbers(std::string_view key, NumberRange range, T&... values) {
    const std::string text = profile_.ReadText(section_, key);
    std::vector<std::string_view> parts = Split(Trim(text), ' ');
    std::erase(parts, std::string_view());
    Require(parts.size() == sizeof...(values));
    if (!Ok()) return;
    auto part = parts.begin();
    const auto take = [&](std::int32_t& value) {
      const auto parsed = ParseInteger(*part++);
      Require(parsed && Fits(*parsed, range));
      if (Ok()) value = static_cast<std::int32_t>(*parsed);
    };
    (take(values), ...);
  }
  void Byte(std::string_view key, std::uint8_t& value, std::uint8_t absent) {
    if (absent == kUncheckedByte) {
      value = static_cast<std::uint8_t>(profile_.ReadInteger(section_, key, absent));
    } else {
      Number(key, value, NumberRange{0, std::numeric_limits<std::uint8_t>::max(), absent});
    }
  }
  // One that counts as set is, unless 0 says that it is not.
  void Flag(std::string_view key, bool& value, bool absent) {
    if (absent) {
      value = profile_.ReadInteger(section_, key, 1) != 0;
    } else {
      std::int32_t number = 0;
      Number(key, number, NumberRange{.absent = 0});
      value = number != 0;
    }
  }
  void Text(std::string_view lengthKey, std::string_view key, std::int32_t& length, std::string& text) {
    Number(lengthKey, length, NumberRange{});
    TakeRoom(length);
    if (!Ok() || length == 0) return;
    const auto value = profile_.Find(section_, key);
    Require(value.has_value());
    if (value) text = Restored(Windows1252FromUtf8(*value), length);
  }
  void Name(std::string_view key, std::size_t bytes, std::string& text, bool optional) {
    const auto value = profile_.Find(section_, key);
    Require(optional || value.has_value());
    const std::string stored = Windows1252FromUtf8(value.value_or(std::string()));
    text = Utf8FromWindows1252(std::string_view(stored).substr(0, bytes));
  }

 private:
  const Profile& profile_;
  std::string section_;
};

class RecordWriter {
 public:
  [[nodiscard]] Bytes Release() { return out_.Release(); }
  [[nodiscard]] static bool Ok() { return true; }
  [[nodiscard]] std::size_t Elements() const { return elements_; }
  static const ArtworkElement& Element(const std::vector<ArtworkElement>& elements, std::size_t index) {
    return elements[index];
  }

  static void Head() {}
  static void Section(std::string_view /*name*/) {}
  template <typename T>
  void Number(std::string_view /*key*/, T value, NumberRange /*range*/) {
    out_.U32Le(std::bit_cast<std::uint32_t>(Plain(value)));
  }
  void Count(std::string_view /*key*/, const std::vector<ArtworkElement>& elements) {
    elements_ = elements.size();
    out_.U32Le(static_cast<std::uint32_t>(elements_));
  }
  template <typename... T>
  void Numbers(std::string_view key, NumberRange range, T... values) {
    (Number(key, values, range), ...);
  }
  void Byte(std::string_view /*key*/, std::uint8_t value, std::uint8_t /*absent*/) { out_.U8(value); }
  void Flag(std::string_view /*key*/, bool value, bool /*absent*/) { out_.U8(value ? 1 : 0); }
  void Text(std::string_view /*lengthKey*/, std::string_view /*key*/, std::int32_t length,
            std::string_view text) {
    out_.U32Le(static_cast<std::uint32_t>(length));
    Padded(Windows1252FromUtf8(Stored(text)), static_cast<std::size_t>(length));
  }
  void Name(std::string_view /*key*/, std::size_t bytes, std::string_view text, bool /*optional*/) {
    Padded(Windows1252FromUtf8(text), bytes);
  }

 private:
  void Padded(std::string_view text, std::size_t bytes) {
    text = text.substr(0, bytes);
    out_.Append(text);
    out_.Fill(bytes - text.size(), 0);
  }

  ByteWriter out_;
  std::size_t elements_ = 0;
};

class RecordReader : public Reader {
 public:
  explicit RecordReader(ByteView record) : in_(record) {}

  [[nodiscard]] bool Complete() const { return Ok() && in_.Ok(); }

  static void Head() {}
  static void Section(std::string_view /*name*/) {}
  template <typename T>
  void Number(std::string_view /*key*/, T& value, NumberRange range) {
    const std::int32_t number = in_.I32Le();
    Require(in_.Ok() && Fits(number, range));
    if (Ok()) value = static_cast<T>(number);
  }
  void Count(std::string_view /*key*/, const std::vector<ArtworkElement>& /*elements*/) {
    const std::int32_t count = in_.I32Le();
    Require(std::cmp_less_equal(count, std::min(kMaxElements, in_.Remaining() / kLeastElement)));
    ExpectElements(count);
  }
  template <typename... T>
  void Numbers(std::string_view key, NumberRange range, T&... values) {
    (Number(key, values, range), ...);
  }
  void Byte(std::string_view /*key*/, std::uint8_t& value, std::uint8_t /*absent*/) { value = in_.U8(); }
  void Flag(std::string_view /*key*/, bool& value, bool /*absent*/) { value = in_.U8() != 0; }
  void Text(std::string_view /*lengthKey*/, std::string_view /*key*/, std::int32_t& length,
            std::string& text) {
    length = in_.I32Le();
    TakeRoom(length);
    if (!Ok()) return;
    text = Restored(AsText(in_.Take(static_cast<std::size_t>(length))), length);
  }
  void Name(std::string_view /*key*/, std::size_t bytes, std::string& text, bool /*optional*/) {
    text = UntilNul(in_.Take(bytes));
  }

 private:
  ByteReader in_;
};

}  // namespace

Profile LayoutProfile(const ArtworkLayout& layout) {
  ProfileWriter writer;
  WalkLayout(writer, layout);
  return writer.Release();
}

Result<ArtworkLayout> LayoutFromProfile(const Profile& profile) {
  ArtworkLayout layout;
  ProfileReader reader(profile);
  WalkLayout(reader, layout);
  if (!reader.Ok()) return Failure(Outcome::SourceFailed);
  return layout;
}

Bytes LayoutRecord(const ArtworkLayout& layout) {
  RecordWriter writer;
  WalkLayout(writer, layout);
  return writer.Release();
}

Result<ArtworkLayout> LayoutFromRecord(ByteView record) {
  ArtworkLayout layout;
  RecordReader reader(record);
  WalkLayout(reader, layout);
  if (!reader.Complete()) return Failure(Outcome::SourceFailed);
  return layout;
}

Outcome SaveLayout(const ArtworkLayout& layout, const std::string& path) {
  return Failed(LayoutProfile(layout).Save(path)) ? Outcome::WriteFailed : Outcome::Success;
}

Result<ArtworkLayout> LoadLayout(const std::string& path) {
  const auto profile = Profile::Load(path);
  if (!profile)
    return Failure(profile.error() == Outcome::WrongFormat ? Outcome::SourceFailed : profile.error());
  return LayoutFromProfile(*profile);
}

}  // namespace ts5::artworker
