// "ts5-batch registry": what the program remembers, for scripts and for those who bring it from elsewhere.
#include <array>

#include "batch/arguments.h"
#include "batch/command_line.h"
#include "batch/command_target.h"
#include "batch/commands.h"
#include "batch/store.h"
#include "batch/texts.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/store/reg_file.h"

namespace ts5::batch {
namespace {

// Said when the registry could not be read or saved.
int StoreFailed(Console& console, Outcome outcome) {
  PrintError(console, RegistryFailureText(outcome, DefaultRegistryPath()));
  return kExitFailed;
}

std::string ValueText(const RegistryValue& value) {
  if (value.kind == RegistryValue::Kind::Text) return value.data;
  std::string hex;
  for (const char byte : value.data) {
    hex += (hex.empty() ? "" : " ") + Format("%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
  }
  return hex;
}

// A line of "registry list": texts in quotes, so that blanks at the end are seen.
std::string ValueLine(std::string_view name, const RegistryValue& value) {
  const bool text = value.kind == RegistryValue::Kind::Text;
  return std::string(name) + " = " + (text ? "\"" + value.data + "\"" : "hex: " + ValueText(value));
}

// Does something with a key of the registry, after saying what is wrong with it. needed: it has to be there.
template <typename Action>
int WithKey(Console& console, std::string_view text, RegistryAccess access, bool needed,
            const Action& action) {
  const auto key = KeyOf(text);
  if (!key) {
    PrintError(console, Format(Text(texts::BatchKeyWrong), text));
    return kExitUsage;
  }
  auto registry = OpenRegistry(console, access);
  if (!registry) return kExitFailed;
  const auto exists = registry->Exists(*key);
  if (!exists) return StoreFailed(console, exists.error());
  if (needed && !*exists) {
    PrintError(console, Format(Text(texts::BatchKeyMissing), *key));
    return kExitFailed;
  }
  return action(*registry, *key);
}

int StatusOf(Console& console, Outcome outcome) {
  return Succeeded(outcome) ? kExitSuccess : StoreFailed(console, outcome);
}

// Prints a key, and all below it when recursive.
Outcome PrintKey(Console& console, const Registry& registry, const std::string& key, bool recursive) {
  const auto values = registry.Read(key);
  if (!values) return values.error();
  const auto subkeys = registry.Subkeys(key);
  if (!subkeys) return subkeys.error();
  console.out << '[' << Printable(key) << "]\n";
  for (const auto& [name, value] : values->All()) console.out << Printable(ValueLine(name, value)) << '\n';
  for (const std::string& subkey : *subkeys) {
    const std::string below = key + "\\" + subkey;
    if (!recursive) {
      console.out << '[' << Printable(below) << "]\n";
      continue;
    }
    if (const Outcome outcome = PrintKey(console, registry, below, true); Failed(outcome)) return outcome;
  }
  return Outcome::Success;
}

int ListCommand(CommandLine line, Console& console) {
  std::optional<std::string> keyText;
  bool recursive = false;
  Arguments arguments("registry list", texts::BatchRegistryListSummary, texts::BatchRegistryListExamples);
  arguments.Flag("--recursive", recursive, texts::BatchHelpRecursive);
  arguments.Optional("SCHLÜSSEL", keyText, texts::BatchHelpKey);
  if (const auto status = arguments.Read(line, console)) return *status;
  return WithKey(console, keyText.value_or(""), RegistryAccess::ReadOnly, keyText.has_value(),
                 [&](const Registry& registry, const std::string& key) -> int {
                   return StatusOf(console, PrintKey(console, registry, key, recursive));
                 });
}

int GetCommand(CommandLine line, Console& console) {
  std::string keyText;
  std::string name;
  Arguments arguments("registry get", texts::BatchRegistryGetSummary, texts::BatchRegistryGetExamples);
  arguments.Required("SCHLÜSSEL", keyText, texts::BatchHelpKey);
  arguments.Required("NAME", name, texts::BatchHelpValueName);
  if (const auto status = arguments.Read(line, console)) return *status;
  return WithKey(console, keyText, RegistryAccess::ReadOnly, false,
                 [&](const Registry& registry, const std::string& key) -> int {
                   const auto values = registry.Read(key);
                   if (!values) return StoreFailed(console, values.error());
                   const RegistryValue* const value = values->Find(name);
                   if (value != nullptr) {
                     console.out << ValueText(*value) << '\n';
                     return kExitSuccess;
                   }
                   PrintError(console, Format(Text(texts::BatchValueMissing), name, key));
                   return kExitFailed;
                 });
}

int SetCommand(CommandLine line, Console& console) {
  std::string keyText;
  std::string name;
  std::string valueText;
  bool binary = false;
  Arguments arguments("registry set", texts::BatchRegistrySetSummary, texts::BatchRegistrySetExamples);
  arguments.Flag("--binary", binary, texts::BatchHelpBinary);
  arguments.Required("SCHLÜSSEL", keyText, texts::BatchHelpKey);
  arguments.Required("NAME", name, texts::BatchHelpValueName);
  arguments.Required("WERT", valueText, texts::BatchHelpValue);
  if (const auto status = arguments.Read(line, console)) return *status;
  RegistryValue value{RegistryValue::Kind::Text, valueText};
  if (binary) {
    const auto bytes = ParseHexBytes(valueText);
    if (!bytes) return WrongUsage(console, "registry set", Format(Text(texts::BatchHexWrong), valueText));
    value = {RegistryValue::Kind::Binary, *bytes};
  }
  return WithKey(console, keyText, RegistryAccess::ReadWrite, false,
                 [&](Registry& registry, const std::string& key) -> int {
                   return StatusOf(console, registry.SetValue(key, name, value));
                 });
}

int DeleteCommand(CommandLine line, Console& console) {
  std::string keyText;
  std::optional<std::string> name;
  Arguments arguments("registry delete", texts::BatchRegistryDeleteSummary,
                      texts::BatchRegistryDeleteExamples);
  arguments.Required("SCHLÜSSEL", keyText, texts::BatchHelpKey);
  arguments.Optional("NAME", name, texts::BatchHelpValueName);
  if (const auto status = arguments.Read(line, console)) return *status;
  return WithKey(console, keyText, RegistryAccess::ReadWrite, !name,
                 [&](Registry& registry, const std::string& key) -> int {
                   if (!name) return StatusOf(console, registry.DeleteKey(key));
                   const auto values = registry.Read(key);
                   if (!values) return StoreFailed(console, values.error());
                   if (values->Find(*name) != nullptr)
                     return StatusOf(console, registry.DeleteValue(key, *name));
                   PrintError(console, Format(Text(texts::BatchValueMissing), *name, key));
                   return kExitFailed;
                 });
}

int ImportCommand(CommandLine line, Console& console) {
  std::string path;
  Arguments arguments("registry import", texts::BatchRegistryImportSummary,
                      texts::BatchRegistryImportExamples);
  arguments.Required("DATEI.reg", path, texts::BatchHelpRegFile);
  if (const auto status = arguments.Read(line, console)) return *status;
  auto registry = OpenRegistry(console, RegistryAccess::ReadWrite);
  if (!registry) return kExitFailed;

  const auto content = ReadFile(path, kMaxRegFileSize);
  if (!content) {
    PrintError(console, Format(Text(texts::BatchFileUnreadable), path));
    return kExitFailed;
  }
  const auto report = ImportRegText(*content, *registry);
  if (!report) {
    if (report.error() != Outcome::WrongFormat) return StoreFailed(console, report.error());
    PrintError(console, Format(Text(texts::BatchNotARegFile), path));
    return kExitFailed;
  }
  for (const RegFileError& error : report->errors) {
    PrintError(console, Format(Text(texts::BatchRegLine), path, error.line, error.text));
  }
  if (report->errorCount > report->errors.size()) {
    PrintError(console, Format(Text(texts::BatchRegMoreLines), report->errorCount - report->errors.size()));
  }
  console.out << Format(Text(texts::BatchImported), report->keys, report->values) << '\n';
  if (report->skipped > 0) console.out << Format(Text(texts::BatchSkipped), report->skipped) << '\n';
  return report->errorCount > 0 ? kExitFailed : kExitSuccess;
}

int ExportCommand(CommandLine line, Console& console) {
  std::string path;
  std::optional<std::string> keyText;
  std::optional<std::string> overwrite;
  Arguments arguments("registry export", texts::BatchRegistryExportSummary,
                      texts::BatchRegistryExportExamples);
  arguments.Required("DATEI.reg", path, texts::BatchHelpRegFile);
  arguments.Optional("SCHLÜSSEL", keyText, texts::BatchHelpKey);
  AddOverwrite(arguments, overwrite);
  if (const auto status = arguments.Read(line, console)) return *status;
  const auto policy = TakeOverwrite(overwrite, "registry export", console);
  if (!policy) return kExitUsage;
  return WithKey(console, keyText.value_or(""), RegistryAccess::ReadOnly, true,
                 [&](const Registry& registry, const std::string& key) -> int {
                   const auto text = ExportRegText(registry, key);
                   if (!text) return StoreFailed(console, text.error());
                   return WriteCommandFile(console, path, {}, *text, *policy);
                 });
}

constexpr std::array kCommands{
    Command{"list", texts::BatchRegistryListSummary, ListCommand},
    Command{"get", texts::BatchRegistryGetSummary, GetCommand},
    Command{"set", texts::BatchRegistrySetSummary, SetCommand},
    Command{"delete", texts::BatchRegistryDeleteSummary, DeleteCommand},
    Command{"import", texts::BatchRegistryImportSummary, ImportCommand},
    Command{"export", texts::BatchRegistryExportSummary, ExportCommand},
};
constexpr CommandGroup kGroup{"registry", kCommands, texts::BatchRegistrySummary,
                              texts::BatchRegistryOverviewExamples};

}  // namespace

int RegistryCommand(CommandLine line, Console& console) {
  return Dispatch(kGroup, line, console);
}

}  // namespace ts5::batch
