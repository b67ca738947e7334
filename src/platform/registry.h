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
// An object is used by one thread at a time. Outcomes: WrongFormat for a text that is no key, InUse when
// another program keeps the file locked, WriteFailed (also a full disk), TargetFailed (no permission),
// ReadFailed, OutOfMemory.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/outcome.h"
#include "platform/registry_values.h"

namespace ts5 {

inline constexpr std::string_view kLocalMachine = "HKEY_LOCAL_MACHINE";
inline constexpr std::string_view kCurrentUser = "HKEY_CURRENT_USER";
inline constexpr const char* kRegistryInMemory = ":memory:";
inline constexpr std::size_t kMaxKeyPart = 255;   // characters of one part of a key
inline constexpr std::size_t kMaxKeyDepth = 512;  // parts, the root included

// $STAVORA_REGISTRY, else registry.sqlite in the configuration directory.
[[nodiscard]] std::string DefaultRegistryPath();

// The key with the full name of its root and single separators; nothing when it has no known root, or a part
// that is too long, too deep or no text.
[[nodiscard]] std::optional<std::string> NormalisedKey(std::string_view key);

// What to tell the user when the file cannot be opened or saved.
[[nodiscard]] std::string RegistryFailureText(Outcome outcome, const std::string& path);

class Registry {
 public:
  // How long a file that is locked by another program is waited for.
  static constexpr std::chrono::milliseconds kPatience{3000};

  // Opens the file, or makes it with its directory. A file that is not a registry, was cut short or is
  // damaged is renamed beside its old place, a new one is begun, and Notice() says so.
  [[nodiscard]] static Result<Registry> Open(const std::string& path,
                                             std::chrono::milliseconds patience = kPatience);
  Registry(Registry&&) noexcept;
  Registry& operator=(Registry&&) noexcept;
  ~Registry();

  // "" when the file was in order.
  [[nodiscard]] const std::string& Notice() const;

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

  // All changes made inside are saved as one, or, when the function or the saving fails, none of them.
  // A transaction inside another one is part of it.
  [[nodiscard]] Outcome Transaction(const std::function<Outcome()>& changes);

 private:
  class Database;
  explicit Registry(std::unique_ptr<Database> database);
  std::unique_ptr<Database> database_;
};

}  // namespace ts5
