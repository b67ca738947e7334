// The text form of the registry (".reg"): what the registry editor exports and imports.
//
// Read: "REGEDIT4" files (8-bit, Windows-1252) and "Windows Registry Editor Version 5.00" files (UTF-16 with
// mark, also UTF-8), with texts and their escapes, dword (becomes a decimal text), hex and hex(n) values (1,
// 2 and 7 become texts, 4 and b decimal texts, all others binary values), lines continued with '\', texts
// that hold line ends, comments, the default value '@', and the deletion forms [-KEY] and "name"=-. Two
// places where newer systems kept the keys of a 32-bit program are taken as HKEY_LOCAL_MACHINE\Software\...:
// HKEY_LOCAL_MACHINE\Software\Wow6432Node\... and HKEY_CURRENT_USER\Software\Classes\VirtualStore\MACHINE\...
// Written: version 5.00 in UTF-16 LE with mark.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/store/registry.h"

namespace ts5 {

inline constexpr std::uint64_t kMaxRegFileSize = std::uint64_t{256} << 20;
inline constexpr std::size_t kMaxRegFileErrors = 1000;  // more are counted, not listed

struct RegFileError {
  std::size_t line = 0;  // from 1
  std::string text;      // for the user
};

struct RegFileReport {
  std::size_t keys = 0;     // keys written or deleted
  std::size_t values = 0;   // values set or deleted
  std::size_t skipped = 0;  // keys of other roots (HKEY_CLASSES_ROOT and the like), which have no place here
  std::size_t errorCount = 0;
  std::vector<RegFileError> errors;  // the lines that were left out; all others count
};

// All that the text says, as one save; a line with an error is left out and reported. WrongFormat: not such a
// file at all. Otherwise the failures of the registry, and nothing is changed.
[[nodiscard]] Result<RegFileReport> ImportRegText(ByteView content, Registry& registry);
[[nodiscard]] Result<RegFileReport> ImportRegFile(const std::string& path, Registry& registry);

// The key with everything below it.
[[nodiscard]] Result<Bytes> ExportRegText(const Registry& registry, std::string_view key);
[[nodiscard]] Outcome ExportRegFile(const Registry& registry, std::string_view key, const std::string& path);

}  // namespace ts5
