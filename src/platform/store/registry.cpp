#include "platform/store/registry.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "platform/base/strings.h"
#include "platform/base/texts.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/store/registry_blob.h"
#include "platform/store/registry_salvage.h"

namespace ts5 {
namespace {

constexpr std::uint64_t kMaxRegistryFile = std::uint64_t{256} << 20;  // a longer one is not searched for keys
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

enum class Sql : std::uint8_t { Begin, Commit, Rollback, Read, Subkeys, Make, Write, Delete, All, Paths };
constexpr std::array kStatements = {
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

Outcome OutcomeOf(int code) {
  switch (code & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
      return Outcome::Success;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Outcome::InUse;
    case SQLITE_NOMEM:
      return Outcome::OutOfMemory;
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
    case SQLITE_ERROR:  // a table that is not ours
      return Outcome::WrongFormat;
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return Outcome::TargetFailed;
    case SQLITE_IOERR:
      return code == SQLITE_IOERR_READ || code == SQLITE_IOERR_SHORT_READ ? Outcome::ReadFailed
                                                                          : Outcome::WriteFailed;
    default:
      return Outcome::WriteFailed;
  }
}

// One use of a prepared statement; it is free for the next use afterwards.
class Query {
 public:
  explicit Query(sqlite3_stmt* statement) : statement_(statement) {}
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  ~Query() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  }

  Query& Text(int place, std::string_view text) {
    // A null pointer would bind NULL.
    const char* const data = text.empty() ? "" : text.data();
    sqlite3_bind_text64(statement_, place, data, text.size(), SQLITE_STATIC, SQLITE_UTF8);
    return *this;
  }
  Query& Integer(int place, std::int64_t value) {
    sqlite3_bind_int64(statement_, place, value);
    return *this;
  }
  Query& Blob(int place, ByteView bytes) {
    static constexpr std::uint8_t kNothing = 0;  // a null pointer would bind NULL
    const void* const data = bytes.empty() ? &kNothing : bytes.data();
    sqlite3_bind_blob64(statement_, place, data, bytes.size(), SQLITE_STATIC);
    return *this;
  }

  // True while there is a row; then Status() is the result.
  bool Step() {
    status_ = sqlite3_step(statement_);
    return status_ == SQLITE_ROW;
  }
  Outcome Run() {
    while (Step()) {
    }
    return OutcomeOf(status_);
  }
  [[nodiscard]] Outcome Status() const { return OutcomeOf(status_); }

  [[nodiscard]] std::int64_t IntegerAt(int column) const { return sqlite3_column_int64(statement_, column); }
  // The bytes of a column, valid until the next step.
  [[nodiscard]] ByteView BytesAt(int column) const {
    const auto* const data = static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, column));
    const int size = sqlite3_column_bytes(statement_, column);
    return data == nullptr ? ByteView{} : ByteView{data, static_cast<std::size_t>(size)};
  }
  [[nodiscard]] std::string_view TextAt(int column) const { return AsText(BytesAt(column)); }

 private:
  sqlite3_stmt* statement_;
  int status_ = SQLITE_OK;
};

std::string_view ParentOf(std::string_view key) {
  const std::size_t separator = key.rfind('\\');
  return separator == std::string_view::npos ? std::string_view{} : key.substr(0, separator);
}

std::string_view LastPartOf(std::string_view key) {
  return key.substr(key.rfind('\\') + 1);
}

bool IsKeyPart(std::string_view part) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  return IsUtf8(part) && std::ranges::none_of(part, isControl) && CharacterCount(part) <= kMaxKeyPart;
}

std::optional<std::string_view> RootOf(std::string_view name) {
  constexpr std::pair<std::string_view, std::string_view> kRoots[] = {{kLocalMachine, kLocalMachine},
                                                                      {"HKLM", kLocalMachine},
                                                                      {kCurrentUser, kCurrentUser},
                                                                      {"HKCU", kCurrentUser}};
  for (const auto& [known, full] : kRoots) {
    if (EqualsIgnoringCase(name, known)) return full;
  }
  return std::nullopt;
}

}  // namespace

class Registry::Database {
 public:
  Database() = default;
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database() {
    for (sqlite3_stmt* const statement : statements_) sqlite3_finalize(statement);
    sqlite3_close_v2(connection_);
  }

  Outcome Open(const std::string& path, RegistryAccess access, std::chrono::milliseconds patience) {
    const bool writing = access == RegistryAccess::ReadWrite;
    int status = sqlite3_open_v2(path.c_str(), &connection_,
                                 SQLITE_OPEN_READWRITE | (writing ? SQLITE_OPEN_CREATE : 0), nullptr);
    if (status != SQLITE_OK) return OutcomeOf(status);
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
    for (std::size_t i = 0; i < kStatements.size(); ++i) {
      status = sqlite3_prepare_v3(connection_, kStatements[i], -1, SQLITE_PREPARE_PERSISTENT, &statements_[i],
                                  nullptr);
      if (status != SQLITE_OK) return OutcomeOf(status);
    }
    return Check();
  }

  void SetPatience(std::chrono::milliseconds patience) {
    sqlite3_busy_timeout(connection_, static_cast<int>(patience.count()));
  }

  // The rows of a damaged file, and the keys above them that it has lost.
  Outcome Fill(const std::vector<RegistryRow>& rows) {
    Outcome filled = Use(Sql::Begin).Run();
    for (auto row = rows.begin(); row != rows.end() && Succeeded(filled); ++row) {
      filled = MakeAbove(row->path, row->path);
      if (Failed(filled)) break;
      Query write = Use(Sql::Write);
      write.Text(1, row->path).Text(2, row->parent).Text(3, row->name);
      filled = write.Integer(4, RegistryChecksum(row->data)).Blob(5, row->data).Run();
    }
    return Succeeded(filled) ? Use(Sql::Commit).Run() : filled;
  }

  // The keys above a key, where they are missing; lower: the same in lower case.
  Outcome MakeAbove(std::string_view key, std::string_view lower) {
    for (std::string_view above = ParentOf(key), low = ParentOf(lower); !above.empty();
         above = ParentOf(above), low = ParentOf(low)) {
      Query make = Use(Sql::Make);
      make.Text(1, low).Text(2, ParentOf(low)).Text(3, LastPartOf(above)).Integer(4, RegistryChecksum({}));
      if (const Outcome made = make.Run(); Failed(made)) return made;
    }
    return Outcome::Success;
  }

  // A new file of these rows.
  Outcome OpenFilled(const std::string& path, const std::vector<RegistryRow>& rows) {
    const Outcome opened = Open(path, RegistryAccess::ReadWrite, kPatience);
    return Failed(opened) ? opened : Fill(rows);
  }

  Query Use(Sql sql) { return Query(statements_[static_cast<std::size_t>(sql)]); }

  std::string notice;
  bool inTransaction = false;

 private:
  Outcome Execute(const char* sql) {
    return OutcomeOf(sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr));
  }

  // The single text that a statement gives, e.g. of a PRAGMA.
  Result<std::string> Ask(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    const int status = sqlite3_prepare_v2(connection_, sql, -1, &statement, nullptr);
    if (status != SQLITE_OK) return Failure(OutcomeOf(status));
    Result<std::string> answer;
    {
      Query query(statement);
      if (query.Step()) answer = std::string(query.TextAt(0));
      if (Failed(query.Status())) answer = Failure(query.Status());
    }
    sqlite3_finalize(statement);
    return answer;
  }

  // Gives an empty file its tables; a database of someone else is no registry.
  Outcome MakeTables(bool writing) {
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
  Outcome Check() {
    const auto pages = Ask("PRAGMA integrity_check(1)");
    if (!pages) return pages.error();
    if (*pages != "ok") return Outcome::WrongFormat;
    Query all = Use(Sql::All);
    while (all.Step()) {
      const bool sound = NamesAgree(all.TextAt(0), all.TextAt(1), all.TextAt(2)) &&
                         RegistryChecksum(all.BytesAt(4)) == all.IntegerAt(3);
      if (!sound) return Outcome::WrongFormat;
    }
    return all.Status();
  }

  sqlite3* connection_ = nullptr;
  std::array<sqlite3_stmt*, kStatements.size()> statements_{};
};

namespace {

constexpr std::array kCompanions = {"-journal", "-wal", "-shm"};

// A name beside the file that is free for it when it is put away.
Result<std::string> NameBeside(const std::string& path) {
  for (int number = 1; number < 1000; ++number) {
    const std::string mark = number == 1 ? ".defekt" : Format(".defekt-%i", number);
    std::string aside = std::string(WithoutExtension(path)) + mark +
                        (HasExtension(path) ? "." + std::string(ExtensionOf(path)) : "");
    if (!FileExists(aside)) return aside;
  }
  return Failure(Outcome::TargetFailed);
}

// What SQLite may have left beside a file: left behind, its journal would be played into the new one.
Outcome MoveCompanions(const std::string& path, const std::string& aside) {
  for (const char* const companion : kCompanions) {
    if (!FileExists(path + companion)) continue;
    if (const Outcome moved = RenameFile(path + companion, aside + companion); Failed(moved)) return moved;
  }
  return Outcome::Success;
}

// The new name of a file that makes room for a new one.
Result<std::string> SetAside(const std::string& path) {
  auto aside = NameBeside(path);
  if (!aside) return aside;
  if (const Outcome moved = MoveCompanions(path, *aside); Failed(moved)) return Failure(moved);
  if (const Outcome moved = RenameFile(path, *aside); Failed(moved)) return Failure(moved);
  return aside;
}

std::string OwnRegistryPath() {
  return JoinPath(ConfigurationDirectory(), "registry.sqlite");
}

// What tells one state of a file from the next.
struct FileState {
  explicit FileState(const std::string& path) {
    if (::stat(path.c_str(), &state_) != 0) state_ = {};
  }
  bool operator==(const FileState& other) const {
    return state_.st_dev == other.state_.st_dev && state_.st_ino == other.state_.st_ino &&
           state_.st_mtim.tv_sec == other.state_.st_mtim.tv_sec &&
           state_.st_mtim.tv_nsec == other.state_.st_mtim.tv_nsec;
  }

 private:
  struct stat state_ {};
};

bool IsEmptyOrMissing(const std::string& path) {
  struct stat state {};
  return ::stat(path.c_str(), &state) == 0 ? state.st_size == 0 : errno == ENOENT;
}

// How a file that cannot be opened fails: whether it may be read is for the file system to say.
Outcome WhyNotOpened(const std::string& path, Outcome outcome) {
  const bool hidden =
      outcome == Outcome::TargetFailed && FileExists(path) && ::access(path.c_str(), R_OK) != 0;
  return hidden ? Outcome::SourceFailed : outcome;
}

std::string Lost(const RegistrySalvage& salvage) {
  std::string names;
  for (const std::string& path : salvage.damaged)
    names += (names.empty() ? "\"" : ", \"") + std::string(LastPartOf(path)) + "\"";
  return names.empty() ? names : "\n" + Format(Text(texts::RegistryKeysLost), names);
}

}  // namespace

std::string DefaultRegistryPath() {
  const char* const chosen = std::getenv("STAVORA_REGISTRY");
  if (chosen != nullptr && chosen[0] != '\0') {
    std::error_code error;
    const auto whole = std::filesystem::absolute(chosen, error);
    return error ? chosen : whole.string();
  }
  return OwnRegistryPath();
}

std::optional<std::string> NormalisedKey(std::string_view key) {
  std::string normalised;
  std::size_t depth = 0;
  for (const std::string_view part : Split(key, '\\')) {
    if (part.empty()) continue;
    if (++depth > kMaxKeyDepth || !IsKeyPart(part)) return std::nullopt;
    if (depth == 1) {
      const auto root = RootOf(part);
      if (!root) return std::nullopt;
      normalised = *root;
    } else {
      (normalised += '\\') += part;
    }
  }
  if (depth == 0) return std::nullopt;
  return normalised;
}

std::string RegistryFailureText(Outcome outcome, const std::string& path) {
  switch (outcome) {
    case Outcome::InUse:
      return Format(Text(texts::RegistryInUse), path);
    case Outcome::WriteFailed:
    case Outcome::TargetFailed:
      return Format(Text(texts::RegistryNotWritten), path, Code(outcome));
    case Outcome::WrongFormat:
      return Format(Text(texts::RegistryForeign), path);
    case Outcome::SourceFailed:
      return Format(Text(texts::RegistryNotReadable), path);
    default:
      return Format(Text(texts::RegistryNotRead), path, Code(outcome));
  }
}

Registry::Registry(std::unique_ptr<Database> database) : database_(std::move(database)) {}
Registry::Registry(Registry&&) noexcept = default;
Registry& Registry::operator=(Registry&&) noexcept = default;
Registry::~Registry() = default;

Result<Registry> Registry::Open(const std::string& path, RegistryAccess access,
                                std::chrono::milliseconds patience) {
  const bool inMemory = path == kRegistryInMemory;
  const bool reading = access == RegistryAccess::ReadOnly;
  if (!inMemory) {
    if (path.empty() || path.find('\0') != std::string::npos || IsDirectory(path))
      return Failure(reading ? Outcome::SourceFailed : Outcome::TargetFailed);
    if (reading && IsEmptyOrMissing(path)) return Open(kRegistryInMemory);
    const std::string directory(DirectoryOf(path));
    if (!reading && !directory.empty()) {
      if (const Outcome made = MakeDirectories(directory); Failed(made)) return Failure(made);
    }
  }
  const FileState before(path);
  auto database = std::make_unique<Database>();
  const Outcome opened = database->Open(path, access, patience);
  if (Succeeded(opened)) return Registry(std::move(database));
  if (opened != Outcome::WrongFormat || inMemory) return Failure(WhyNotOpened(path, opened));
  database = nullptr;  // let go of the file before it is renamed

  const auto content = ReadFile(path, kMaxRegistryFile);
  if (!content && content.error() == Outcome::OutOfMemory) return Failure(content.error());
  const RegistrySalvage salvage = content ? SalvageRegistry(*content) : RegistrySalvage{};
  std::string notice;
  std::string place = kRegistryInMemory;
  if (!salvage.rows.empty() && reading) {
    database = std::make_unique<Database>();
    if (const Outcome filled = database->OpenFilled(place, salvage.rows); Failed(filled))
      return Failure(filled);
    notice = Format(Text(texts::RegistryDamaged), path) + Lost(salvage);
  } else if (!salvage.rows.empty()) {
    if (!(FileState(path) == before)) return Open(path, access, patience);  // another program was faster
    const auto aside = Mend(path, salvage.rows);
    if (!aside) return Failure(aside.error());
    notice = Format(Text(texts::RegistryMended), path, *aside) + Lost(salvage);
    place = path;
  } else if (!reading && path == OwnRegistryPath()) {
    const auto aside = SetAside(path);
    if (!aside) return Failure(aside.error());
    notice = Format(Text(texts::RegistrySetAside), path, *aside);
    place = path;
  } else {
    return Failure(Outcome::WrongFormat);
  }
  if (database == nullptr) {
    database = std::make_unique<Database>();
    if (const Outcome again = database->Open(place, access, patience); Failed(again)) return Failure(again);
  }
  database->notice = std::move(notice);
  return Registry(std::move(database));
}

// Puts a sound file of the rows in the place of a damaged one, in one step; where that is kept.
Result<std::string> Registry::Mend(const std::string& path, const std::vector<RegistryRow>& rows) {
  const auto fresh = TemporaryFile::Create(kTemporaryPrefix, std::string(DirectoryOf(path)), "sqlite");
  if (!fresh) return Failure(fresh.error());
  {
    Database database;
    const Outcome filled = database.OpenFilled(fresh->Path(), rows);
    if (Failed(filled)) return Failure(filled);
  }
  auto aside = NameBeside(path);
  if (!aside) return aside;
  if (::link(path.c_str(), aside->c_str()) != 0) {
    // A file system without links: a copy.
    const auto damaged = ReadFile(path, kMaxRegistryFile);
    if (!damaged) return Failure(damaged.error());
    if (const Outcome copied = WriteFile(*aside, *damaged); Failed(copied)) return Failure(copied);
  }
  if (const Outcome moved = MoveCompanions(path, *aside); Failed(moved)) return Failure(moved);
  if (::rename(fresh->Path().c_str(), path.c_str()) != 0) return Failure(Outcome::TargetFailed);
  return aside;
}

const std::string& Registry::Notice() const {
  return database_->notice;
}

void Registry::SetPatience(std::chrono::milliseconds patience) {
  database_->SetPatience(patience);
}

Result<RegistryValues> Registry::Read(std::string_view key) const {
  const auto path = NormalisedKey(key);
  if (!path) return Failure(Outcome::WrongFormat);
  const std::string lower = ToLower(*path);
  Query query = database_->Use(Sql::Read);
  if (query.Text(1, lower).Step()) {
    const ByteView data = query.BytesAt(0);
    if (RegistryChecksum(data) != query.IntegerAt(1)) return Failure(Outcome::WrongFormat);
    return UnpackValues(data);
  }
  if (Failed(query.Status())) return Failure(query.Status());
  return RegistryValues{};
}

Result<std::vector<std::string>> Registry::Subkeys(std::string_view key) const {
  const auto path = NormalisedKey(key);
  if (!path) return Failure(Outcome::WrongFormat);
  const std::string lower = ToLower(*path);
  std::vector<std::string> names;
  Query query = database_->Use(Sql::Subkeys);
  query.Text(1, lower);
  while (query.Step()) names.emplace_back(query.TextAt(0));
  if (Failed(query.Status())) return Failure(query.Status());
  return names;
}

Result<bool> Registry::Exists(std::string_view key) const {
  const auto path = NormalisedKey(key);
  if (!path) return Failure(Outcome::WrongFormat);
  const std::string lower = ToLower(*path);
  Query query = database_->Use(Sql::Read);
  const bool found = query.Text(1, lower).Step();
  if (Failed(query.Status())) return Failure(query.Status());
  return found || ParentOf(lower).empty();  // the roots are always there
}

Outcome Registry::Write(std::string_view key, const RegistryValues& values) {
  const auto path = NormalisedKey(key);
  if (!path) return Outcome::WrongFormat;
  if (SizeInMemory(values) > kMaxValuesInMemory) return Outcome::WriteFailed;  // it could not be read again
  return Transaction([&] {
    const std::string lower = ToLower(*path);
    if (const Outcome made = database_->MakeAbove(*path, lower); Failed(made)) return made;
    const Bytes data = PackValues(values);
    Query write = database_->Use(Sql::Write);
    write.Text(1, lower).Text(2, ParentOf(lower)).Text(3, LastPartOf(*path));
    return write.Integer(4, RegistryChecksum(data)).Blob(5, data).Run();
  });
}

Outcome Registry::DeleteKey(std::string_view key) {
  const auto path = NormalisedKey(key);
  if (!path) return Outcome::WrongFormat;
  return Transaction([&] { return database_->Use(Sql::Delete).Text(1, ToLower(*path)).Run(); });
}

Outcome Registry::SetValue(std::string_view key, std::string_view name, RegistryValue value) {
  return Transaction([&] {
    auto values = Read(key);
    if (!values) return values.error();
    values->Set(name, std::move(value));
    return Write(key, *values);
  });
}

Outcome Registry::DeleteValue(std::string_view key, std::string_view name) {
  return Transaction([&] {
    auto values = Read(key);
    if (!values) return values.error();
    return values->Erase(name) ? Write(key, *values) : Outcome::Success;
  });
}

Outcome Registry::TakeAll(const Registry& other) {
  return Transaction([&]() -> Outcome {
    std::vector<std::string> paths;
    {
      Query all = other.database_->Use(Sql::Paths);
      while (all.Step()) paths.emplace_back(all.TextAt(0));
      if (Failed(all.Status())) return all.Status();
    }
    for (const std::string& path : paths) {
      const auto theirs = other.Read(path);
      auto values = Read(path);
      if (!theirs || !values) return theirs ? values.error() : theirs.error();
      for (const auto& [name, value] : theirs->All()) {
        std::string free = name;
        const RegistryValue* there = values->Find(free);
        for (int number = 2; there != nullptr && !(*there == value); ++number) {
          free = name + Format(" (%i)", number);
          there = values->Find(free);
        }
        values->Set(free, value);
      }
      if (const Outcome written = Write(path, *values); Failed(written)) return written;
    }
    return Outcome::Success;
  });
}

Outcome Registry::Transaction(const std::function<Outcome()>& changes) {
  if (database_->inTransaction) return changes();
  if (const Outcome begun = database_->Use(Sql::Begin).Run(); Failed(begun)) return begun;
  database_->inTransaction = true;
  Outcome done = Outcome::OutOfMemory;
  try {
    done = changes();
  } catch (const std::bad_alloc&) {
    done = Outcome::OutOfMemory;
  }
  database_->inTransaction = false;
  if (Succeeded(done)) done = database_->Use(Sql::Commit).Run();
  // A commit that failed may have undone everything already; then this changes nothing.
  if (Failed(done)) (void)database_->Use(Sql::Rollback).Run();
  return done;
}

}  // namespace ts5
