#include "audio/interfaces/encoder_interface.h"

#include <unistd.h>

#include <algorithm>

#include "audio/texts.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/store/profile.h"

namespace ts5::interfaces {
namespace {

constexpr std::string_view kHead = "sTS4 Mpeg Interfaces";
constexpr std::string_view kCount = "interfacenum";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::string SectionOf(std::size_t number) {
  return Format("Interface %i", number);
}
std::string SectionOf(std::size_t number, std::size_t set) {
  return Format("%s ParamSet %i", SectionOf(number), set);
}

// --- the values of a set, one row each

struct FlagRow {
  std::string_view key;
  bool ParameterSet::*member;
};
constexpr FlagRow kFlags[] = {{"vbr", &ParameterSet::vbr},
                              {"mono", &ParameterSet::mono},
                              {"crc", &ParameterSet::crc},
                              {"copyright", &ParameterSet::copyright},
                              {"original", &ParameterSet::original}};

ParameterSet ReadSet(const Profile& profile, const std::string& section) {
  ParameterSet set;
  set.parameters = FirstCharacters(profile.ReadText(section, "paramstr"), kMostParameterString);
  set.bitRate = static_cast<std::uint32_t>(std::max(0, profile.ReadInteger(section, "bitrate", 0)));
  for (const FlagRow& row : kFlags) set.*row.member = profile.ReadInteger(section, row.key, 0) != 0;
  const std::int32_t deemphasis = profile.ReadInteger(section, "deemphasis", 0);
  if (deemphasis > 0 && deemphasis <= static_cast<std::int32_t>(Deemphasis::Ccitt))
    set.deemphasis = static_cast<Deemphasis>(deemphasis);
  return set;
}

// Reading takes one pair of quotes off a value, so one that has a pair gets another.
void WriteText(Profile& profile, const std::string& section, std::string_view key, const std::string& value) {
  const bool quoted =
      value.size() > 1 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
  profile.Write(section, key, quoted ? '"' + value + '"' : value);
}

void WriteSet(Profile& profile, const std::string& section, const ParameterSet& set) {
  WriteText(profile, section, "paramstr", set.parameters);
  profile.WriteInteger(section, "bitrate", set.bitRate);
  for (const FlagRow& row : kFlags) profile.WriteInteger(section, row.key, set.*row.member ? 1 : 0);
  profile.WriteInteger(section, "deemphasis", static_cast<std::int64_t>(set.deemphasis));
}

// A count in the file, never more than there are sections.
std::size_t CountIn(const Profile& profile, const std::string& section, std::string_view key,
                    std::size_t sections) {
  const std::int32_t count = profile.ReadInteger(section, key, 0);
  return std::min(static_cast<std::size_t>(std::max(0, count)), sections);
}

EncoderInterface ReadInterface(const Profile& profile, std::size_t number, std::size_t sections) {
  const std::string section = SectionOf(number);
  EncoderInterface interface;
  interface.encoder = profile.ReadText(section, "encoderfilename");
  if (!IsUsablePath(interface.encoder)) interface.encoder.clear();
  interface.name = FirstCharacters(profile.ReadText(section, "encoderfriendlyname"), kMostInterfaceName);
  interface.extension =
      FirstCharacters(profile.ReadText(section, "encoderfileextension"), kMostInterfaceExtension);
  const std::size_t sets = CountIn(profile, section, "paramsetnum", sections);
  for (std::size_t set = 1; set <= sets; ++set)
    interface.sets.push_back(ReadSet(profile, SectionOf(number, set)));
  return interface;
}

bool Has8BitForm(std::string_view text) {
  return Utf8FromWindows1252(Windows1252FromUtf8(text)) == text;
}

// The usual 8-bit text, unless a path or a name has no place in it.
Profile NewProfile(const EncoderInterfaces& interfaces) {
  const bool fits = std::ranges::all_of(interfaces, [](const EncoderInterface& interface) {
    return Has8BitForm(interface.encoder) && Has8BitForm(interface.name) &&
           Has8BitForm(interface.extension) &&
           std::ranges::all_of(interface.sets,
                               [](const ParameterSet& set) { return Has8BitForm(set.parameters); });
  });
  if (fits) return {};
  return Profile::Parse(AsBytes(kUtf8Mark)).value_or(Profile());
}

}  // namespace

bool EncoderInterface::Available() const {
  return !encoder.empty() && !EncoderFault(encoder);
}

std::string InterfacesPath() {
  return JoinPath(ProgramDirectory(), "ts5i.cdi");
}

EncoderInterfaces LoadInterfaces(const std::string& path) {
  const auto profile = Profile::Load(path);
  if (!profile) return {};
  EncoderInterfaces interfaces;
  const std::size_t sections = profile->Sections().size();
  const std::size_t count = CountIn(*profile, std::string(kHead), kCount, sections);
  for (std::size_t number = 1; number <= count; ++number)
    interfaces.push_back(ReadInterface(*profile, number, sections));
  return interfaces;
}

Outcome SaveInterfaces(const std::string& path, const EncoderInterfaces& interfaces) {
  if (interfaces.empty()) return FileExists(path) ? RemoveFile(path) : Outcome::Success;
  Profile profile = NewProfile(interfaces);
  profile.WriteInteger(kHead, kCount, static_cast<std::int64_t>(interfaces.size()));
  for (std::size_t i = 0; i < interfaces.size(); ++i) {
    const EncoderInterface& interface = interfaces[i];
    const std::string section = SectionOf(i + 1);
    WriteText(profile, section, "encoderfilename", interface.encoder);
    WriteText(profile, section, "encoderfriendlyname", interface.name);
    WriteText(profile, section, "encoderfileextension", interface.extension);
    profile.WriteInteger(section, "paramsetnum", static_cast<std::int64_t>(interface.sets.size()));
    for (std::size_t set = 0; set < interface.sets.size(); ++set)
      WriteSet(profile, SectionOf(i + 1, set + 1), interface.sets[set]);
  }
  if (const Outcome made = MakeDirectories(std::string(DirectoryOf(path))); Failed(made)) return made;
  return profile.Save(path);
}

std::optional<TextId> EncoderFault(std::string_view path) {
  const std::string file(Trim(path));
  if (file.empty()) return texts::InterfaceAskEncoder;
  if (!IsUsablePath(file) || !FileExists(file) || IsDirectory(file)) return texts::InterfaceNoSuchFile;
  if (access(file.c_str(), X_OK) != 0) return texts::InterfaceNotRunnable;
  return std::nullopt;
}

std::optional<TextId> InterfaceNameFault(std::string_view name) {
  const std::string_view text = Trim(name);
  if (text.empty() || CharacterCount(text) > kMostInterfaceName) return texts::InterfaceAskName;
  return std::nullopt;
}

std::optional<TextId> ExtensionFault(std::string_view extension) {
  const std::string_view text = Trim(extension);
  const bool fits = CharacterCount(text) <= kMostInterfaceExtension &&
                    text.find_first_of("*./\\?\n\r\t") == std::string_view::npos;
  return fits ? std::nullopt : std::optional(texts::InterfaceAskExtension);
}

std::optional<TextId> ParametersFault(std::string_view parameters) {
  const std::string_view text = Trim(parameters);
  const auto has = [text](std::string_view part) { return text.find(part) != std::string_view::npos; };
  if (text.empty() || text == "{q} {z}" || text == "{q}{z}" || !has(kSourcePlaceholder) ||
      !has(kTargetPlaceholder) || CharacterCount(text) > kMostParameterString)
    return texts::InterfaceAskParameters;
  return std::nullopt;
}

std::size_t BitRateIndex(std::uint32_t bitRate) {
  const auto* const found = std::ranges::find(kInterfaceBitRates, bitRate);
  return found == kInterfaceBitRates.end() ? 0 : static_cast<std::size_t>(found - kInterfaceBitRates.begin());
}

std::string DescribeSet(const EncoderInterface& interface, std::size_t set) {
  const ParameterSet& values = interface.sets.at(set);
  const auto word = [](bool flag) { return Text(flag ? texts::AttributeYes : texts::AttributeNo); };
  constexpr std::array deemphasis{texts::InterfaceDeemphasisNone, texts::InterfaceDeemphasis5015,
                                  texts::InterfaceDeemphasisCcitt};
  return Format(Text(texts::InterfaceInfo), interface.name, interface.encoder,
                interface.Available() ? std::string_view() : Text(texts::InterfaceUnknownPlace), set + 1,
                values.bitRate, word(values.vbr), word(values.mono), word(values.crc), word(values.original),
                word(values.copyright), Text(deemphasis.at(static_cast<std::size_t>(values.deemphasis))));
}

}  // namespace ts5::interfaces
