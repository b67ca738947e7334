// The registry: a tree of keys with text and binary values, kept in one SQLite file.
//
//   auto registry = Registry::Open(DefaultRegistryPath());
//   if (!registry) Complain(RegistryFailureText(registry.error(), path));
//   if (!registry->Notice().empty()) Tell(registry->Notice());
//   const auto values = registry->Read("HKEY_LOCAL_MACHINE\\software\\qlw");
//   registry->Transaction([&] { return registry->Write(key, values); });
//
// A key is written with its root first: HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER (short HKLM, HKCU), parts
// separated by '\', without regard to case; it keeps the spelling it was first given. Every change is a
// transaction: after a kill at any moment the file holds the state before or the state after.
// An object is used by one thread at a time. Outcomes: WrongFormat for a text that is no key and for a key
// whose bytes are damaged, InUse when another program keeps the file locked, SourceFailed (it may not be
// read), WriteFailed (also a full disk), TargetFailed (no permission), ReadFailed, OutOfMemory.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/store/registry_key.h"
#include "platform/store/registry_values.h"

namespace ts5 {

class RegistryDatabase;

inline constexpr const char* kRegistryInMemory = ":memory:";

// $STAVORA_REGISTRY, else registry.sqlite in the configuration directory.
[[nodiscard]] std::string DefaultRegistryPath();

enum class RegistryAccess : std::uint8_t {
  ReadOnly,  // for commands that look: no file is made, mended or renamed
  ReadWrite,
};

// What to tell the user when the file cannot be opened or saved.
[[nodiscard]] std::string RegistryFailureText(Outcome outcome, const std::string& path);

class Registry {
 public:
  // How long a file that is locked by another program is waited for.
  static constexpr std::chrono::milliseconds kPatience{3000};

  // Opens the file; for writing it is made with its directory when it is missing, for reading a missing one
  // is empty. Of a damaged file all keys that can still be read are there, and Notice() says so: for writing
  // it is mended, and the damaged one kept beside it (".defekt"); for reading it stays as it is. WrongFormat:
  // no registry at all. Such a file stays as it is, unless it lies at the program's own place and was opened
  // for writing: then it is put beside, and a new one is begun.
  [[nodiscard]] static Result<Registry> Open(const std::string& path,
                                             RegistryAccess access = RegistryAccess::ReadWrite,
                                             std::chrono::milliseconds patience = kPatience);
  Registry(Registry&&) noexcept;
  Registry& operator=(Registry&&) noexcept;
  ~Registry();

  // "" when the file was in order.
  [[nodiscard]] const std::string& Notice() const;
  void SetPatience(std::chrono::milliseconds patience);

  // A key that does not exist has no values and no subkeys.
  [[nodiscard]] Result<RegistryValues> Read(std::string_view key) const;
  [[nodiscard]] Result<std::vector<std::string>> Subkeys(std::string_view key) const;  // last parts, in order
  [[nodiscard]] Result<bool> Exists(std::string_view key) const;

  // Makes the key and all above it; its values are replaced by these. Unchanged values cost no writing.
  [[nodiscard]] Outcome Write(std::string_view key, const RegistryValues& values);
  // The key with everything below it; success when there is none.
  [[nodiscard]] Outcome DeleteKey(std::string_view key);
  [[nodiscard]] Outcome SetValue(std::string_view key, std::string_view name, RegistryValue value);
  [[nodiscard]] Outcome DeleteValue(std::string_view key,
                                    std::string_view name);  // success when there is none
  // Every key of the other registry, with its values: each value that is missing here, or has another
  // content.
  [[nodiscard]] Outcome TakeAll(const Registry& other);

  // All changes made inside are saved as one, or, when the function or the saving fails, none of them.
  // A transaction inside another one is part of it.
  [[nodiscard]] Outcome Transaction(const std::function<Outcome()>& changes);

 private:
  explicit Registry(std::unique_ptr<RegistryDatabase> database);
  std::unique_ptr<RegistryDatabase> database_;
};

}  // namespace ts5
