#include "batch/show_attributes.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <span>

#include "audio/tags/attribute_names.h"
#include "audio/tags/attribute_store.h"
#include "audio/tags/tag_file.h"
#include "audio/texts.h"
#include "batch/arguments.h"
#include "batch/json_text.h"
#include "batch/store.h"
#include "batch/texts.h"
#include "frame/settings_store.h"
#include "midi/texts.h"
#include "platform/base/parallel.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5::batch {
namespace {

constexpr std::size_t kReadTogether = 512;  // files, which are printed then

struct Request {
  tags::AttributeChanges changes;
  unsigned id3Version = 3;
};

// What is wrong with the options; nothing when they make a request.
std::optional<std::string> ReadRequest(const std::vector<std::string>& settings,
                                       std::vector<std::string> removals,
                                       const std::optional<std::string>& id3, Request& request) {
  for (const std::string& setting : settings) {
    auto attribute = tags::ParseAttribute(setting);
    if (!attribute) return Format(Text(texts::BatchAttributeWrong), Shortened(setting));
    if (attribute->HasValue()) {
      request.changes.set.push_back(*std::move(attribute));
    } else {
      removals.push_back(attribute->name);
    }
  }
  request.changes.remove = std::move(removals);
  if (id3) {
    if (*id3 != "3" && *id3 != "4")
      return Format(Text(texts::BatchValueWrong), Shortened(*id3), "--id3", "3|4");
    request.id3Version = *id3 == "4" ? 4 : 3;
  }
  return std::nullopt;
}

// A value with the type that JSON has for it.
Json JsonValue(const tags::Attribute& attribute) {
  if (tags::IsBinary(attribute.type)) return tags::DisplayValue(attribute);
  if (attribute.type == tags::AttributeType::Bool) return attribute.value == "1";
  if (attribute.type == tags::AttributeType::String) return attribute.value;
  std::uint64_t number = 0;
  (void)std::from_chars(attribute.value.data(), attribute.value.data() + attribute.value.size(), number);
  return number;
}

Json JsonFile(const std::string& file, const tags::Attributes& info, const tags::Attributes& attributes) {
  Json row{{"file", file}, {"code", 0}, {"properties", Json::object()}, {"attributes", Json::array()}};
  for (const tags::Attribute& property : info) row["properties"][property.name] = JsonValue(property);
  for (const tags::Attribute& attribute : attributes) {
    if (attribute.readOnly) continue;
    row["attributes"].push_back({{"name", attribute.name},
                                 {"type", static_cast<int>(attribute.type)},
                                 {"value", JsonValue(attribute)}});
  }
  return row;
}

void PrintFile(Console& console, const std::string& file, const tags::Attributes& attributes) {
  console.out << file << '\n';
  std::size_t width = 0;
  for (const tags::Attribute& attribute : attributes) width = std::max(width, CharacterCount(attribute.name));
  for (const tags::Attribute& attribute : attributes) {
    std::string label = attribute.name + ":";
    const std::string value = tags::DisplayValue(attribute);
    for (const std::string_view line : Split(Trim(value), '\n')) {
      console.out << "  " << Padded(label, width + 2) << Trim(line) << '\n';
      label.clear();
    }
  }
}

// Known names in their order, others behind them.
void Sort(tags::Attributes& attributes) {
  const auto place = [](const tags::Attribute& attribute) {
    const tags::AttributeName* const known = tags::FindAttributeName(attribute.name);
    return known == nullptr ? tags::AttributeNames().size()
                            : static_cast<std::size_t>(known - tags::AttributeNames().data());
  };
  std::ranges::stable_sort(attributes, {}, place);
}

std::string FailureText(const std::string& file, Outcome outcome) {
  const TextId text = outcome == Outcome::SourceFailed  ? texts::BatchFileNotOpened
                      : outcome == Outcome::WrongFormat ? texts::PropertyUnknownFormat
                                                        : texts::AudioAttributesNotWritten;
  return Format(Text(texts::BatchItemFailed), file, Text(text));
}

Result<tags::Attributes> ChangeAndRead(const std::string& file, const Request& request, std::size_t& failed) {
  if (!IsUsablePath(file)) return Failure(Outcome::SourceFailed);
  if (!request.changes.Empty()) {
    const auto changed = tags::ChangeAttributes(file, request.changes, request.id3Version);
    if (!changed) return Failure(changed.error());
    failed = *changed;
  }
  return tags::ReadAttributes(file);
}

// What there is to say of a file.
struct Shown {
  Result<tags::Attributes> attributes = Failure(Outcome::Cancelled);
  tags::Attributes info;
  std::size_t failed = 0;  // changes that were not saved
};

Shown ChangeAndTell(const std::string& file, const Request& request, FileInfoReader info) {
  Shown shown;
  shown.attributes = ChangeAndRead(file, request, shown.failed);
  if (!shown.attributes) return shown;
  Sort(*shown.attributes);
  if (info != nullptr) shown.info = info(file, *shown.attributes).value_or(tags::Attributes());
  return shown;
}

}  // namespace

int ShowAttributes(CommandLine line, Console& console, FileInfoReader info) {
  bool json = false;
  std::vector<std::string> files;
  std::vector<std::string> settings;
  std::vector<std::string> removals;
  std::optional<std::string> id3;
  Arguments arguments("attributes", texts::BatchAttributesSummary, texts::BatchAttributesExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  arguments.Repeated("--set", "NAME=WERT", settings, texts::BatchHelpAttributesSet);
  arguments.Repeated("--remove", "NAME", removals, texts::BatchHelpAttributesRemove);
  arguments.Option("--id3", "3|4", id3, texts::BatchHelpAttributesId3);
  arguments.Rest("DATEI", files, texts::BatchHelpInfoFiles, 1);
  if (const auto status = arguments.Read(line, console)) return *status;
  Request request;
  if (const auto wrong = ReadRequest(settings, std::move(removals), id3, request))
    return WrongUsage(console, "attributes", *wrong);
  if (!id3 && !request.changes.Empty()) {
    const auto registry = OpenRegistry(console);
    if (!registry) return kExitFailed;
    const Settings chosen = LoadSettings(*registry, DefaultSettingsGround());
    request.id3Version = static_cast<unsigned>(chosen.id3Version);
  }

  int status = kExitSuccess;
  Json all = Json::array();
  const auto tell = [&](const std::string& file, const Shown& shown) {
    const auto& [attributes, properties, failed] = shown;
    if (failed > 0) PrintError(console, file + ": " + Format(Text(texts::AttributesNotSaved), failed));
    if (!attributes) PrintError(console, FailureText(file, attributes.error()));
    if (failed > 0 || !attributes) status = kExitFailed;
    if (!attributes) {
      if (json) all.push_back({{"file", file}, {"code", Code(attributes.error())}});
    } else if (json) {
      all.push_back(JsonFile(file, properties, *attributes));
      if (failed > 0) all.back()["code"] = Code(Outcome::AttributesNotWritten);
    } else {
      PrintFile(console, file, *attributes);
    }
  };
  // Files are read on all cores, and changed one after the other: one may be named twice.
  const bool reads = request.changes.Empty();
  const std::size_t together = json ? files.size() : kReadTogether;
  for (std::size_t from = 0; from < files.size(); from += together) {
    const auto some = std::span(files).subspan(from, std::min(together, files.size() - from));
    std::vector<Shown> shown(some.size());
    const auto take = [&](std::size_t i) {
      if (!console.Interrupted()) shown[i] = ChangeAndTell(some[i], request, json ? info : nullptr);
    };
    if (reads) InParallel(some.size(), take);
    for (std::size_t i = 0; i < some.size(); ++i) {
      if (!reads) take(i);
      if (console.Interrupted()) return kExitCancelled;
      tell(some[i], shown[i]);
    }
  }
  if (json) console.out << JsonText({{"files", all}});
  return status;
}

}  // namespace ts5::batch
