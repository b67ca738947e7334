// The SQLite file behind the registry: its tables, settings and prepared statements.
#pragma once

#include <sqlite3.h>

#include <array>
#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/store/registry_query.h"
#include "platform/store/registry_salvage.h"

namespace ts5 {

class RegistryDatabase {
 public:
  enum class Sql : std::uint8_t { Begin, Commit, Rollback, Read, Subkeys, Make, Write, Delete, All, Paths };
  static constexpr std::size_t kStatements = 10;

  RegistryDatabase() = default;
  RegistryDatabase(const RegistryDatabase&) = delete;
  RegistryDatabase& operator=(const RegistryDatabase&) = delete;
  ~RegistryDatabase();

  // WrongFormat: a database of someone else, or one in which a page or a key is not as it was written.
  [[nodiscard]] Outcome Open(const std::string& path, bool writing, std::chrono::milliseconds patience);
  // A new file of these rows and the keys above them.
  [[nodiscard]] Outcome OpenFilled(const std::string& path, const std::vector<RegistryRow>& rows);
  void SetPatience(std::chrono::milliseconds patience);

  [[nodiscard]] RegistryQuery Use(Sql sql) {
    return RegistryQuery(statements_[static_cast<std::size_t>(sql)]);
  }
  // The keys above a key, where they are missing; lower: the same in lower case.
  [[nodiscard]] Outcome MakeAbove(std::string_view key, std::string_view lower);

  std::string notice;
  bool inTransaction = false;

 private:
  Outcome Execute(const char* sql);
  Result<std::string> Ask(const char* sql);
  Outcome MakeTables(bool writing);
  Outcome Check();
  Outcome Fill(const std::vector<RegistryRow>& rows);

  sqlite3* connection_ = nullptr;
  std::array<sqlite3_stmt*, kStatements> statements_{};
};

}  // namespace ts5
