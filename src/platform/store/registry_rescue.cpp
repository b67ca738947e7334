#include "platform/store/registry_rescue.h"

#include <unistd.h>

#include <array>

#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/store/registry_database.h"

namespace ts5 {
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

}  // namespace

Result<std::string> SetRegistryAside(const std::string& path) {
  auto aside = NameBeside(path);
  if (!aside) return aside;
  if (const Outcome moved = MoveCompanions(path, *aside); Failed(moved)) return Failure(moved);
  if (const Outcome moved = RenameFile(path, *aside); Failed(moved)) return Failure(moved);
  return aside;
}

Result<std::string> MendRegistry(const std::string& path, const std::vector<RegistryRow>& rows) {
  const auto fresh = TemporaryFile::Create(kTemporaryPrefix, std::string(DirectoryOf(path)), "sqlite");
  if (!fresh) return Failure(fresh.error());
  {
    RegistryDatabase database;
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

}  // namespace ts5
