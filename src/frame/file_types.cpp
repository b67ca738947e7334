#include "frame/file_types.h"

#include <algorithm>
#include <array>

#include "platform/base/text.h"

namespace ts5 {
namespace {

using enum FileTypeId;

struct ExtensionRow {
  std::string_view extension;
  FileTypeId type;
};

constexpr auto kExtensions = std::to_array<ExtensionRow>({
    {"wav", Wave},     {"mp3", Mp3},     {"mp2", Mp2},       {"mpg", Mp2},          {"mid", Midi},
    {"rmi", Midi},     {"stv", Score},   {"rdl", Sequencer}, {"wma", WindowsMedia}, {"asf", WindowsMedia},
    {"cda", CdTrack},  {"mpga", Mpga},   {"aif", Aiff},      {"bmp", Picture},      {"gif", Picture},
    {"jpg", Picture},  {"png", Picture}, {"tif", Picture},   {"xml", Xml},          {"stvx", StvXml},
    {"ogg", Ogg},      {"ape", Ape},     {"flac", Flac},     {"opus", Opus},        {"m4a", M4a},
    {"musicxml", Xml}, {"mxl", Xml},
});

constexpr auto kIcons = std::to_array<std::string_view>({
    "DISKICON",
    "CDICON",
    "CLOSEDDIRICON",
    "OPENDIRICON",
    "NOFILESICON",
    "WAVEICON",
    "MP3ICON",
    "MP2ICON",
    "MIDICON",
    "STOPICON",
    "COMPICON",
    "STVICON",
    "TXTICON",
    "DEVICON",
    "NODEVICON",
    "RDLICON",
    "FILESICON",
    "BURNICON",
    "NOBURNICON",
    "MMICON",
    "MMICON2",
    "MELODYSEARCHRESULTICON",
    "INTERFACEICON",
    "NOINTERFACEICON",
    "INTERFACESICON",
    "PARAMSETICON",
    "NOINTERFACESICON",
    "WMAICON",
    "BURNLOGICON",
    "CDTRACKICON",
    "WAVDEVICON",
    "MIDDEVICON",
    "CLOSEDDIRICON_GRAY",
    "STAVEICON",
    "PRINTERICON",
    "NOPRINTERICON",
    "PRINTLOGICON",
    "NOFILESICON1",
    "MPGAICON",
    "ATTRIBUTECONSTICON",
    "ATTRIBUTEVARICON",
    "FILEPROPICON",
    "AIFICON",
    "ENCODERPARAMICON",
    "PICTUREICON",
    "XMLICON",
    "STVXICON",
    "OGGICON",
    "APEICON",
    "FLACICON",
    "OPUSICON",
    "M4AICON",
});

bool LooksLikePath(std::string_view name) {
  return name.find(':') != std::string_view::npos || name.starts_with('/') || name.starts_with('\\');
}

}  // namespace

FileTypeId FileTypeOf(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return IsCdTrackText(name) ? CdTrack : Unsupported;
  const std::string_view extension = name.substr(dot + 1);
  const auto row = std::ranges::find_if(
      kExtensions, [&](const auto& r) { return EqualsIgnoringCase(r.extension, extension); });
  return row == kExtensions.end() ? Unsupported : row->type;
}

bool IsCdTrackText(std::string_view entry) {
  return !entry.empty() && entry.find('.') == std::string_view::npos && !LooksLikePath(entry);
}

std::span<const std::string_view> FileIcons() {
  return kIcons;
}

std::string_view FileIconName(int index) {
  if (index < 0 || index >= 2 * static_cast<int>(kIcons.size())) return {};
  return kIcons[static_cast<std::size_t>(index / 2)];
}

}  // namespace ts5
