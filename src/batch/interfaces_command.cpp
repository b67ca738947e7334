// "ts5-batch interfaces": the encoders of the command line that are plugged in, adding and removing them, and
// those that could be.
#include <array>
#include <charconv>
#include <optional>

#include "audio/interfaces/encoder_interface.h"
#include "audio/interfaces/known_encoders.h"
#include "audio/texts.h"
#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "platform/base/text.h"

namespace ts5::batch {
namespace {

Json JsonInterface(std::size_t number, const interfaces::EncoderInterface& interface) {
  Json row{{"number", number},
           {"name", interface.name},
           {"encoder", interface.encoder},
           {"extension", interface.extension},
           {"available", interface.Available()},
           {"sets", Json::array()}};
  for (std::size_t set = 0; set < interface.sets.size(); ++set) {
    const interfaces::ParameterSet& values = interface.sets[set];
    row["sets"].push_back({{"number", set},
                           {"template", values.parameters},
                           {"bitrate", values.bitRate},
                           {"vbr", values.vbr},
                           {"mono", values.mono},
                           {"crc", values.crc},
                           {"copyright", values.copyright},
                           {"original", values.original},
                           {"deemphasis", static_cast<std::uint32_t>(values.deemphasis)}});
  }
  return row;
}

// Numbers count from 0, as CodingObject and CodingFormat do.
void Print(Console& console, const interfaces::EncoderInterfaces& interfaces, bool json) {
  Json rows = Json::array();
  for (std::size_t i = 0; i < interfaces.size(); ++i) {
    const interfaces::EncoderInterface& interface = interfaces[i];
    if (json) {
      rows.push_back(JsonInterface(i, interface));
      continue;
    }
    const std::string_view lost =
        interface.Available() ? std::string_view() : Text(texts::InterfaceUnknownPlace);
    console.out << i << "  " << interface.name << " (." << interface.extension << "): " << interface.encoder
                << lost << '\n';
    for (std::size_t set = 0; set < interface.sets.size(); ++set)
      console.out << "   " << set << "  " << interface.sets[set].parameters << '\n';
  }
  if (json) {
    console.out << JsonText({{"interfaces", rows}});
  } else if (interfaces.empty()) {
    console.out << Text(texts::InterfacesNone) << '\n';
  }
}

int ListCommand(CommandLine line, Console& console) {
  bool json = false;
  Arguments arguments("interfaces list", texts::BatchInterfacesListSummary,
                      texts::BatchInterfacesListExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  if (const auto status = arguments.Read(line, console)) return *status;
  Print(console, interfaces::LoadInterfaces(interfaces::InterfacesPath()), json);
  return kExitSuccess;
}

int FindCommand(CommandLine line, Console& console) {
  bool json = false;
  bool add = false;
  Arguments arguments("interfaces find", texts::BatchInterfacesFindSummary,
                      texts::BatchInterfacesFindExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  arguments.Flag("--add", add, texts::BatchHelpInterfaceFindAdd);
  if (const auto status = arguments.Read(line, console)) return *status;
  const interfaces::EncoderInterfaces found = interfaces::FindEncoders();
  Print(console, found, json);
  if (!add) return kExitSuccess;
  interfaces::EncoderInterfaces all = interfaces::LoadInterfaces(interfaces::InterfacesPath());
  for (const interfaces::EncoderInterface& one : found) {
    if (std::ranges::find(all, one.encoder, &interfaces::EncoderInterface::encoder) == all.end())
      all.push_back(one);
  }
  if (Succeeded(interfaces::SaveInterfaces(interfaces::InterfacesPath(), all))) return kExitSuccess;
  PrintError(console, Text(texts::InterfacesNotSaved));
  return kExitFailed;
}

// --- add: options behind a template describe it, so they are taken off the line with their places

struct SetOption {
  std::string_view name;
  bool interfaces::ParameterSet::*flag;  // nullptr: the option has a number
};
constexpr std::array kSetOptions{SetOption{"--bitrate", nullptr},
                                 SetOption{"--deemphasis", nullptr},
                                 SetOption{"--vbr", &interfaces::ParameterSet::vbr},
                                 SetOption{"--mono", &interfaces::ParameterSet::mono},
                                 SetOption{"--crc", &interfaces::ParameterSet::crc},
                                 SetOption{"--copyright", &interfaces::ParameterSet::copyright},
                                 SetOption{"--original", &interfaces::ParameterSet::original}};

// "--name=value" as "--name", "value".
std::vector<std::string> Separated(CommandLine line) {
  std::vector<std::string> words;
  for (const std::string& word : line) {
    const std::size_t equals = word.find('=');
    if (word.starts_with("--") && equals != std::string::npos) {
      words.push_back(word.substr(0, equals));
      words.push_back(word.substr(equals + 1));
    } else {
      words.push_back(word);
    }
  }
  return words;
}

bool SetNumber(interfaces::ParameterSet& set, std::string_view option, std::string_view text) {
  const auto number = ParseInteger(text);
  if (!number) return false;
  if (option == "--deemphasis") {
    if (*number < 0 || *number > static_cast<int>(interfaces::Deemphasis::Ccitt)) return false;
    set.deemphasis = static_cast<interfaces::Deemphasis>(*number);
    return true;
  }
  if (std::ranges::find(interfaces::kInterfaceBitRates, *number) == interfaces::kInterfaceBitRates.end())
    return false;
  set.bitRate = static_cast<std::uint32_t>(*number);
  return true;
}

// Takes templates with what describes them off the line; the rest stays. What is wrong, or nothing.
std::optional<std::string> TakeSets(CommandLine line, std::vector<interfaces::ParameterSet>& sets,
                                    std::vector<std::string>& rest) {
  const std::vector<std::string> words = Separated(line);
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const auto option = std::ranges::find(kSetOptions, word, &SetOption::name);
    const bool isSet = word == "--template";
    if (!isSet && option == kSetOptions.end()) {
      rest.push_back(word);
      // The value of an option is never one of these, whatever it looks like.
      if ((word == "--encoder" || word == "--name" || word == "--extension") && i + 1 < words.size())
        rest.push_back(words[++i]);
      continue;
    }
    if (!isSet && sets.empty()) return Format(Text(texts::BatchInterfaceOptionFirst), word);
    if (!isSet && option->flag != nullptr) {
      sets.back().*option->flag = true;
      continue;
    }
    if (i + 1 == words.size()) return Format(Text(texts::BatchInterfaceValueMissing), word);
    const std::string& value = words[++i];
    if (isSet) {
      sets.push_back({.parameters = std::string(Trim(value)), .bitRate = 128});
    } else if (!SetNumber(sets.back(), word, value)) {
      return Format(Text(texts::BatchInterfaceNumberWrong), value, word);
    }
  }
  return std::nullopt;
}

std::optional<TextId> FaultOf(const interfaces::EncoderInterface& interface) {
  if (const auto fault = interfaces::EncoderFault(interface.encoder)) return fault;
  if (const auto fault = interfaces::InterfaceNameFault(interface.name)) return fault;
  if (const auto fault = interfaces::ExtensionFault(interface.extension)) return fault;
  if (interface.sets.empty()) return texts::InterfaceAskParameters;
  for (const interfaces::ParameterSet& set : interface.sets) {
    if (const auto fault = interfaces::ParametersFault(set.parameters)) return fault;
  }
  return std::nullopt;
}

int AddCommand(CommandLine line, Console& console) {
  interfaces::EncoderInterface interface;
  std::vector<std::string> rest;
  const auto wrong = TakeSets(line, interface.sets, rest);
  std::optional<std::string> encoder;
  std::optional<std::string> name;
  std::optional<std::string> extension;
  std::vector<std::string> unused;
  bool flag = false;
  Arguments arguments("interfaces add", texts::BatchInterfacesAddSummary, texts::BatchInterfacesAddExamples);
  arguments.Option("--encoder", "DATEI", encoder, texts::BatchHelpInterfaceEncoder);
  arguments.Option("--name", "TEXT", name, texts::BatchHelpInterfaceName);
  arguments.Option("--extension", "EXT", extension, texts::BatchHelpInterfaceExtension);
  arguments.Repeated("--template", "TEXT", unused, texts::BatchHelpInterfaceTemplate);
  arguments.Repeated("--bitrate", "N", unused, texts::BatchHelpInterfaceBitRate);
  arguments.Repeated("--deemphasis", "0|1|2", unused, texts::BatchHelpInterfaceDeemphasis);
  for (const SetOption& option : kSetOptions) {
    if (option.flag != nullptr) arguments.Flag(option.name, flag, texts::BatchHelpInterfaceFlag);
  }
  if (const auto status = arguments.Read(rest, console)) return *status;
  if (wrong) return WrongUsage(console, "interfaces add", *wrong);
  interface.encoder = Trim(encoder.value_or(""));
  interface.name = Trim(name.value_or(""));
  interface.extension = Trim(extension.value_or(""));
  if (const auto fault = FaultOf(interface)) {
    PrintError(console, Text(*fault));
    return kExitUsage;
  }
  interfaces::EncoderInterfaces all = interfaces::LoadInterfaces(interfaces::InterfacesPath());
  all.push_back(std::move(interface));
  if (Succeeded(interfaces::SaveInterfaces(interfaces::InterfacesPath(), all))) return kExitSuccess;
  PrintError(console, Text(texts::InterfacesNotSaved));
  return kExitFailed;
}

int RemoveCommand(CommandLine line, Console& console) {
  std::string number;
  Arguments arguments("interfaces remove", texts::BatchInterfacesRemoveSummary,
                      texts::BatchInterfacesRemoveExamples);
  arguments.Required("NUMMER", number, texts::BatchHelpInterfaceNumber);
  if (const auto status = arguments.Read(line, console)) return *status;
  interfaces::EncoderInterfaces all = interfaces::LoadInterfaces(interfaces::InterfacesPath());
  const auto index = ParseInteger(number);
  if (!index || *index < 0 || std::cmp_greater_equal(*index, all.size()))
    return WrongUsage(console, "interfaces remove", Format(Text(texts::BatchInterfaceUnknown), number));
  all.erase(all.begin() + *index);
  if (Succeeded(interfaces::SaveInterfaces(interfaces::InterfacesPath(), all))) return kExitSuccess;
  PrintError(console, Text(texts::InterfacesNotSaved));
  return kExitFailed;
}

constexpr std::array kCommands{
    Command{"list", texts::BatchInterfacesListSummary, ListCommand},
    Command{"add", texts::BatchInterfacesAddSummary, AddCommand},
    Command{"remove", texts::BatchInterfacesRemoveSummary, RemoveCommand},
    Command{"find", texts::BatchInterfacesFindSummary, FindCommand},
};
constexpr CommandGroup kGroup{"interfaces", kCommands, texts::BatchInterfacesSummary,
                              texts::BatchInterfacesOverviewExamples};

}  // namespace

// Without a word of its own it lists.
int InterfacesCommand(CommandLine line, Console& console) {
  const bool lists = line.empty() || line.front() == "--json" || line.front() == "list";
  if (lists) return ListCommand(!line.empty() && line.front() == "list" ? line.subspan(1) : line, console);
  return Dispatch(kGroup, line, console);
}

}  // namespace ts5::batch
