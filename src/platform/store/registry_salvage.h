// What can still be read of a registry file that is damaged: its keys, each proved by its own checksum.
//
// The file is one SQLite database (file format 3, pages of kRegistryPage bytes); a key is one row of the
// table "keys". Nothing of the structure around the rows is believed: every place of the file where a row
// could begin is tried, and a row counts when its parts agree and its checksum is right. So a damage costs
// the keys whose own bytes it hit, whatever else it hit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"

namespace ts5 {

inline constexpr std::size_t kRegistryPage = 4096;

// One row of the table: path is parent, '\' and the name in lower case; parent is "" for a root.
struct RegistryRow {
  std::string path;
  std::string parent;
  std::string name;
  Bytes data;

  bool operator==(const RegistryRow&) const = default;
};

// FNV-1a, 64 bits.
[[nodiscard]] std::int64_t RegistryChecksum(ByteView bytes);
// Whether the three names of a row belong together.
[[nodiscard]] bool NamesAgree(std::string_view path, std::string_view parent, std::string_view name);

struct RegistrySalvage {
  std::vector<RegistryRow> rows;     // in the order of their paths, each path once
  std::vector<std::string> damaged;  // paths of which only the names can still be read
};
// Time and memory in proportion to the file.
[[nodiscard]] RegistrySalvage SalvageRegistry(ByteView file);

}  // namespace ts5
