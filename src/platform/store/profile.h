// Profile files: sections of "key=value" lines, read and written by the rules of private profile strings.
//
//   auto profile = Profile::Load(path);
//   const std::int32_t files = profile->ReadInteger("sts5 Filelist", "Files", -1);
//   profile->Write("sts5 Filelist", "1", path);
//   profile->Save(path);
//
// Reading: sections and keys are found without regard to case; the first section of a name and the first line
// of a key in it count. Blanks around keys and values are not part of them, nor is one pair of quotes (' or
// ") around a value. Lines that begin with ';' are comments. A line belongs to a key that it begins with,
// followed by '=', so that even a key made of '=' characters is found. Writing: a key that is there is
// rewritten in its line and keeps its spelling; a new key is added behind the last line of its section, a new
// section at the end. All other lines stay as they are. On disk the text is Windows-1252 with CR LF; files
// with LF, and files in UTF-8 or UTF-16 that begin with its mark, are read too (they stay what they are).
// Here all texts are UTF-8.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/text.h"

namespace ts5 {

inline constexpr std::uint64_t kMaxProfileSize = std::uint64_t{64} << 20;
inline constexpr std::size_t kMaxProfileLines = 500'000;

enum class TextEncoding : std::uint8_t { Windows1252, Utf8, Utf16Le, Utf16Be };

class Profile {
 public:
  Profile();

  // An empty one that is written in this encoding.
  explicit Profile(TextEncoding encoding);
  [[nodiscard]] TextEncoding Encoding() const { return encoding_; }

  // Any bytes are a profile; WrongFormat only when there are too many lines.
  [[nodiscard]] static Result<Profile> Parse(ByteView bytes);
  // SourceFailed, ReadFailed, WrongFormat.
  [[nodiscard]] static Result<Profile> Load(const std::string& path);
  [[nodiscard]] Bytes Serialise() const;
  [[nodiscard]] Outcome Save(
      const std::string& path) const;  // through a staged file: TargetFailed, WriteFailed

  [[nodiscard]] std::vector<std::string> Sections() const;                      // in the order of the file
  [[nodiscard]] std::vector<std::string> Keys(std::string_view section) const;  // likewise

  // The value, "" for a key without one; nothing when the key is missing.
  [[nodiscard]] std::optional<std::string> Find(std::string_view section, std::string_view key) const;
  // The value, or otherwise when the key is missing.
  [[nodiscard]] std::string ReadText(std::string_view section, std::string_view key,
                                     std::string_view otherwise = {}) const;
  // The number at the start of the value (0 without digits); otherwise when the value is missing or empty.
  [[nodiscard]] std::int32_t ReadInteger(std::string_view section, std::string_view key,
                                         std::int32_t otherwise) const;

  // Line ends and NULs in the texts have no place in a line and become '?'.
  void Write(std::string_view section, std::string_view key, std::string_view value);
  void WriteInteger(std::string_view section, std::string_view key, std::int64_t value);
  bool Erase(std::string_view section, std::string_view key);  // false when there is none

 private:
  struct Section {
    std::string header;  // the whole line; "" for what stands before the first section
    std::string name;
    std::vector<std::string> lines;
    std::map<std::string, std::size_t, LessIgnoringCase> index;  // key -> its first line
  };
  [[nodiscard]] const Section* FindSection(std::string_view name) const;
  Section& AddSection(std::string name, std::string header);
  static void AddLine(Section& section, std::string line);
  static std::optional<std::size_t> FindLine(const Section& section, std::string_view key);
  static void Reindex(Section& section);

  std::vector<Section> sections_;  // the first is what stands before all sections
  std::map<std::string, std::size_t, LessIgnoringCase> index_;  // name -> the first section of it
  TextEncoding encoding_ = TextEncoding::Windows1252;
};

}  // namespace ts5
