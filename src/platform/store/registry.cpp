#include "platform/store/registry.h"

#include <sys/stat.h>
#include <unistd.h>

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
#include "platform/store/registry_database.h"
#include "platform/store/registry_rescue.h"
#include "platform/store/registry_salvage.h"

namespace ts5 {
namespace {

using Sql = RegistryDatabase::Sql;

std::string OwnRegistryPath() {
  return JoinPath(ConfigurationDirectory(), "registry.sqlite");
}

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

Registry::Registry(std::unique_ptr<RegistryDatabase> database) : database_(std::move(database)) {}
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
  auto database = std::make_unique<RegistryDatabase>();
  const Outcome opened = database->Open(path, !reading, patience);
  if (Succeeded(opened)) return Registry(std::move(database));
  if (opened != Outcome::WrongFormat || inMemory) return Failure(WhyNotOpened(path, opened));
  database = nullptr;  // let go of the file before it is renamed

  const auto content = ReadFile(path, kMaxRegistryFile);
  if (!content && content.error() == Outcome::OutOfMemory) return Failure(content.error());
  const RegistrySalvage salvage = content ? SalvageRegistry(*content) : RegistrySalvage{};
  std::string notice;
  std::string place = kRegistryInMemory;
  if (!salvage.rows.empty() && reading) {
    database = std::make_unique<RegistryDatabase>();
    if (const Outcome filled = database->OpenFilled(place, salvage.rows); Failed(filled))
      return Failure(filled);
    notice = Format(Text(texts::RegistryDamaged), path) + Lost(salvage);
  } else if (!salvage.rows.empty()) {
    if (!(FileState(path) == before)) return Open(path, access, patience);  // another program was faster
    const auto aside = MendRegistry(path, salvage.rows);
    if (!aside) return Failure(aside.error());
    notice = Format(Text(texts::RegistryMended), path, *aside) + Lost(salvage);
    place = path;
  } else if (!reading && path == OwnRegistryPath()) {
    const auto aside = SetRegistryAside(path);
    if (!aside) return Failure(aside.error());
    notice = Format(Text(texts::RegistrySetAside), path, *aside);
    place = path;
  } else {
    return Failure(Outcome::WrongFormat);
  }
  if (database == nullptr) {
    database = std::make_unique<RegistryDatabase>();
    if (const Outcome again = database->Open(place, !reading, patience); Failed(again)) return Failure(again);
  }
  database->notice = std::move(notice);
  return Registry(std::move(database));
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
  RegistryQuery query = database_->Use(Sql::Read);
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
  RegistryQuery query = database_->Use(Sql::Subkeys);
  query.Text(1, lower);
  while (query.Step()) names.emplace_back(query.TextAt(0));
  if (Failed(query.Status())) return Failure(query.Status());
  return names;
}

Result<bool> Registry::Exists(std::string_view key) const {
  const auto path = NormalisedKey(key);
  if (!path) return Failure(Outcome::WrongFormat);
  const std::string lower = ToLower(*path);
  RegistryQuery query = database_->Use(Sql::Read);
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
    RegistryQuery write = database_->Use(Sql::Write);
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
      RegistryQuery all = other.database_->Use(Sql::Paths);
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
