#include "platform/store/registry_database.h"

#include <utility>

#include "platform/store/registry_blob.h"
#include "platform/store/registry_key.h"

namespace ts5 {
namespace {

constexpr int kApplicationId = 0x54533552;  // "TS5R", tells our files from other databases
static_assert(kRegistryPage == 4096);
// What is deleted is wiped, so that nothing old is found when a damaged file is mended.
constexpr const char* kSettings =
    "PRAGMA trusted_schema=OFF;"
    "PRAGMA cell_size_check=ON;"
    "PRAGMA page_size=4096;"
    "PRAGMA secure_delete=ON;"
    "PRAGMA synchronous=EXTRA;";
constexpr const char* kWritingSettings = "PRAGMA journal_mode=DELETE;";
constexpr const char* kReadingSettings = "PRAGMA query_only=ON;";

// path: the key in lower case, by which it is found; parent: the same of the key above, "" for a root; name:
// the last part as it was first spelled; checksum: of data, since SQLite has none of its own.
constexpr const char* kSchema =
    "CREATE TABLE keys(path TEXT PRIMARY KEY, parent TEXT NOT NULL, name TEXT NOT NULL, checksum INTEGER NOT "
    "NULL,"
    " data BLOB NOT NULL);"
    "CREATE INDEX subkeys ON keys(parent, path);"
    "PRAGMA application_id=1414739282;";
static_assert(kApplicationId == 1414739282);

// In the order of Sql.
constexpr std::array kStatementTexts = {
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "SELECT data, checksum FROM keys WHERE path=?1",
    "SELECT name FROM keys WHERE parent=?1 ORDER BY path",
    "INSERT OR IGNORE INTO keys VALUES(?1, ?2, ?3, ?4, x'')",
    "INSERT INTO keys VALUES(?1, ?2, ?3, ?4, ?5) ON CONFLICT(path) DO UPDATE"
    " SET checksum=excluded.checksum, data=excluded.data WHERE data<>excluded.data",
    // ']' follows '\' in the order of bytes: all paths between lie below the key.
    "DELETE FROM keys WHERE path=?1 OR (path>?1||'\\' AND path<?1||']')",
    "SELECT path, parent, name, checksum, data FROM keys",
    "SELECT path FROM keys ORDER BY path",
};
static_assert(kStatementTexts.size() == RegistryDatabase::kStatements);

}  // namespace

RegistryDatabase::~RegistryDatabase() {
  for (sqlite3_stmt* const statement : statements_) sqlite3_finalize(statement);
  sqlite3_close_v2(connection_);
}

Outcome RegistryDatabase::Open(const std::string& path, bool writing, std::chrono::milliseconds patience) {
  int status = sqlite3_open_v2(path.c_str(), &connection_,
                               SQLITE_OPEN_READWRITE | (writing ? SQLITE_OPEN_CREATE : 0), nullptr);
  if (status != SQLITE_OK) return SqlOutcome(status);
  sqlite3_extended_result_codes(connection_, 1);
  SetPatience(patience);
  sqlite3_limit(connection_, SQLITE_LIMIT_LENGTH, static_cast<int>(kMaxValuesInMemory));
  for (const auto& [option, value] : {std::pair{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                      {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                      {SQLITE_DBCONFIG_ENABLE_VIEW, 0}}) {
    sqlite3_db_config(connection_, option, value, nullptr);
  }
  if (const Outcome set = Execute(kSettings); Failed(set)) return set;
  if (const Outcome made = MakeTables(writing); Failed(made)) return made;
  if (const Outcome set = Execute(writing ? kWritingSettings : kReadingSettings); Failed(set)) return set;
  for (std::size_t i = 0; i < kStatementTexts.size(); ++i) {
    status = sqlite3_prepare_v3(connection_, kStatementTexts[i], -1, SQLITE_PREPARE_PERSISTENT,
                                &statements_[i], nullptr);
    if (status != SQLITE_OK) return SqlOutcome(status);
  }
  return Check();
}

void RegistryDatabase::SetPatience(std::chrono::milliseconds patience) {
  sqlite3_busy_timeout(connection_, static_cast<int>(patience.count()));
}

// The rows of a damaged file, and the keys above them that it has lost.
Outcome RegistryDatabase::Fill(const std::vector<RegistryRow>& rows) {
  Outcome filled = Use(Sql::Begin).Run();
  for (auto row = rows.begin(); row != rows.end() && Succeeded(filled); ++row) {
    filled = MakeAbove(row->path, row->path);
    if (Failed(filled)) break;
    RegistryQuery write = Use(Sql::Write);
    write.Text(1, row->path).Text(2, row->parent).Text(3, row->name);
    filled = write.Integer(4, RegistryChecksum(row->data)).Blob(5, row->data).Run();
  }
  return Succeeded(filled) ? Use(Sql::Commit).Run() : filled;
}

Outcome RegistryDatabase::MakeAbove(std::string_view key, std::string_view lower) {
  for (std::string_view above = ParentOf(key), low = ParentOf(lower); !above.empty();
       above = ParentOf(above), low = ParentOf(low)) {
    RegistryQuery make = Use(Sql::Make);
    make.Text(1, low).Text(2, ParentOf(low)).Text(3, LastPartOf(above)).Integer(4, RegistryChecksum({}));
    if (const Outcome made = make.Run(); Failed(made)) return made;
  }
  return Outcome::Success;
}

Outcome RegistryDatabase::OpenFilled(const std::string& path, const std::vector<RegistryRow>& rows) {
  const Outcome opened = Open(path, true, {});
  return Failed(opened) ? opened : Fill(rows);
}

Outcome RegistryDatabase::Execute(const char* sql) {
  return SqlOutcome(sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr));
}

// The single text that a statement gives, e.g. of a PRAGMA.
Result<std::string> RegistryDatabase::Ask(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  const int status = sqlite3_prepare_v2(connection_, sql, -1, &statement, nullptr);
  if (status != SQLITE_OK) return Failure(SqlOutcome(status));
  Result<std::string> answer;
  {
    RegistryQuery query(statement);
    if (query.Step()) answer = std::string(query.TextAt(0));
    if (Failed(query.Status())) answer = Failure(query.Status());
  }
  sqlite3_finalize(statement);
  return answer;
}

// Gives an empty file its tables; a database of someone else is no registry.
Outcome RegistryDatabase::MakeTables(bool writing) {
  const auto tables = Ask("SELECT count(*) FROM sqlite_schema");
  if (!tables) return tables.error();
  if (*tables != "0") {
    const auto id = Ask("PRAGMA application_id");
    if (!id) return id.error();
    return *id == std::to_string(kApplicationId) ? Outcome::Success : Outcome::WrongFormat;
  }
  if (!writing) return Outcome::WrongFormat;
  if (const Outcome begun = Execute("BEGIN IMMEDIATE"); Failed(begun)) return begun;
  // Another program may have been faster.
  const auto now = Ask("SELECT count(*) FROM sqlite_schema");
  Outcome made = now ? Outcome::Success : now.error();
  if (now && *now == "0") made = Execute(kSchema);
  if (Succeeded(made)) made = Execute("COMMIT");
  if (Failed(made)) (void)Execute("ROLLBACK");
  return made;
}

// Whether every page and every key is as it was written.
Outcome RegistryDatabase::Check() {
  const auto pages = Ask("PRAGMA integrity_check(1)");
  if (!pages) return pages.error();
  if (*pages != "ok") return Outcome::WrongFormat;
  RegistryQuery all = Use(Sql::All);
  while (all.Step()) {
    const bool sound = NamesAgree(all.TextAt(0), all.TextAt(1), all.TextAt(2)) &&
                       RegistryChecksum(all.BytesAt(4)) == all.IntegerAt(3);
    if (!sound) return Outcome::WrongFormat;
  }
  return all.Status();
}

}  // namespace ts5
