#include "frame/filter_catalogue.h"

#include <algorithm>
#include <array>
#include <optional>

#include "frame/texts.h"
#include "platform/text.h"

namespace ts5 {
namespace {

using enum FilterId;
using enum ParameterWindow;

constexpr auto kScores = std::to_array<std::string_view>({"stv", "xml", "stvx"});
constexpr auto kMidi = std::to_array<std::string_view>({"mid", "rmi", "rdl"});
constexpr auto kScoresOfEngine = std::to_array<std::string_view>({"stv", "stvx", "xml"});
constexpr auto kAudio =
    std::to_array<std::string_view>({"wav", "mpg", "mp2", "mp3", "mpga", "wma", "asf", "aif", "ogg", "ape"});
constexpr auto kTracks = std::to_array<std::string_view>({""});
constexpr auto kWaves = std::to_array<std::string_view>({"wav", "aif"});
constexpr auto kCompressed =
    std::to_array<std::string_view>({"mpg", "mp2", "mp3", "mpga", "wma", "asf", "ogg", "ape"});
constexpr auto kBurnable = std::to_array<std::string_view>(
    {"mpg", "mp2", "mp3", "mpga", "wav", "wma", "asf", "mid", "rdl", "rmi", "ogg"});
constexpr auto kXml = std::to_array<std::string_view>({"stvx", "xml"});

// Two lines per filter.
// clang-format off
constexpr auto kFilters = std::to_array<FilterDescriptor>({
    // id, identifier, name, description, window, template,
    //     single, several, whole list, destinations, panels, colour 1, colour 2
    {ScoreToMidi, "ScoreToMidi", texts::FilterNameScoreToMidi, texts::FilterDescriptionScoreToMidi, Dialog, "SCOREMIDI",
        kScores, kScores, {}, DestinationKinds::File, kPanelFile, 0x00FF00, 0x800000},
    {MidiToScore, "MidiToScore", texts::FilterNameMidiToScore, texts::FilterDescriptionMidiToScore, Dialog, "MIDSTV",
        kMidi, kMidi, {}, DestinationKinds::File, kPanelFile, 0xFF0000, 0x008000},
    {ScoreSearch, "ScoreSearch", texts::FilterNameScoreSearch, texts::FilterDescriptionScoreSearch, Dialog, "MIDIFINDPARAMS",
        kScoresOfEngine, kScoresOfEngine, kScoresOfEngine, DestinationKinds::FileOrScreen, kPanelFile | kPanelScreen, 0xFF0000, 0x400000},
    {MidiSearch, "MidiSearch", texts::FilterNameMidiSearch, texts::FilterDescriptionMidiSearch, Dialog, "MIDIFINDPARAMS",
        kMidi, kMidi, kMidi, DestinationKinds::FileOrScreen, kPanelFile | kPanelScreen, 0x00FF00, 0x004000},
    {MidiPlayer, "MidiPlayer", texts::FilterNameMidiPlayer, texts::FilterDescriptionMidiPlayer, Playback, "",
        kMidi, kMidi, {}, DestinationKinds::File, kPanelMidiDevices, 0x00FF00, 0x004000},
    {MidiConverter, "MidiConverter", texts::FilterNameMidiConverter, texts::FilterDescriptionMidiConverter, Dialog, "MIDICONVERT",
        kMidi, kMidi, {}, DestinationKinds::File, kPanelFile, 0x00FF00, 0x004000},
    {MidiToWave, "MidiToWave", texts::FilterNameMidiToWave, texts::FilterDescriptionMidiToWave, Dialog, "MIDWAVPARAMS",
        kMidi, kMidi, {}, DestinationKinds::File, kPanelFile, 0x0000FF, 0x008000},
    {AudioPlayer, "AudioPlayer", texts::FilterNameAudioPlayer, texts::FilterDescriptionAudioPlayer, Playback, "",
        kAudio, kAudio, kTracks, DestinationKinds::File, kPanelAudioDevices, 0x0000FF, 0x000040},
    {WaveConverter, "WaveConverter", texts::FilterNameWaveConverter, texts::FilterDescriptionWaveConverter, Dialog, "WAVECONVERTPARAMS",
        kWaves, kWaves, {}, DestinationKinds::File, kPanelFile, 0x0000FF, 0x000040},
    {AudioCompressor, "AudioCompressor", texts::FilterNameAudioCompressor, texts::FilterDescriptionAudioCompressor, Dialog, "WAVMP3PARAMS",
        kWaves, kWaves, {}, DestinationKinds::File, kPanelFile, 0xFF00FF, 0x000080},
    {AudioDecompressor, "AudioDecompressor", texts::FilterNameAudioDecompressor, texts::FilterDescriptionAudioDecompressor, DecoderPage, "MPDecoder",
        kCompressed, kCompressed, {}, DestinationKinds::File, kPanelFile, 0x0000FF, 0xC800C8},
    {CdBurner, "CdBurner", texts::FilterNameCdBurner, texts::FilterDescriptionCdBurner, Dialog, "BURNPARAMS",
        {}, {}, kBurnable, DestinationKinds::File, kPanelDiscDrives, 0x00FFFF, 0x004040},
    {CdGrabber, "CdGrabber", texts::FilterNameCdGrabber, texts::FilterDescriptionCdGrabber, Dialog, "GRABPARAMS",
        kTracks, kTracks, kTracks, DestinationKinds::File, kPanelFile, 0xFFFF00, 0x404000},
    {CdCopier, "CdCopier", texts::FilterNameCdCopier, texts::FilterDescriptionCdCopier, Dialog, "COPYPARAMS",
        {}, {}, {}, DestinationKinds::File, kPanelDiscDrives, 0xC8C800, 0x202000},
    {ScorePlayer, "ScorePlayer", texts::FilterNameScorePlayer, texts::FilterDescriptionScorePlayer, Playback, "",
        kScoresOfEngine, kScoresOfEngine, {}, DestinationKinds::File, kPanelMidiDevices, 0xC80000, 0x200000},
    {Artworker, "Artworker", texts::FilterNameArtworker, texts::FilterDescriptionArtworker, Modeless, "ARTWORKERPARAMS",
        {}, {}, {}, DestinationKinds::File, kPanelPrinters, 0xFFFFFF, 0x000000},
    {XmlConverter, "XmlConverter", texts::FilterNameXmlConverter, texts::FilterDescriptionXmlConverter, Dialog, "XMLCONVPARAMS",
        kXml, kXml, {}, DestinationKinds::File, kPanelFile, 0x77A4FF, 0x0042CC},
});
// clang-format on

constexpr bool InOrder() {
  for (std::size_t i = 0; i < kFilters.size(); ++i) {
    if (static_cast<std::size_t>(kFilters[i].id) != i) return false;
  }
  return kFilters.size() == kFilterCount;
}
static_assert(InOrder());

}  // namespace

std::span<const FilterDescriptor, kFilterCount> FilterCatalogue() {
  return kFilters;
}

const FilterDescriptor& Descriptor(FilterId id) {
  return kFilters.at(static_cast<std::size_t>(id));
}

FilterId FindFilter(std::string_view text) {
  const auto number = ParseInteger(text);
  const auto row = std::ranges::find_if(kFilters, [&](const FilterDescriptor& filter) {
    return EqualsIgnoringCase(filter.identifier, text) || EqualsIgnoringCase(filter.Name(), text) ||
           number == static_cast<std::int64_t>(filter.id);
  });
  return row == kFilters.end() ? None : row->id;
}

std::string_view TargetFileFilter(FilterId id, TargetFilterContext context) {
  switch (id) {
    case ScoreToMidi:
    case MidiConverter:
      return Text(texts::FileFilterMidi);
    case MidiToScore:
      return Text(texts::FileFilterScore);
    case ScoreSearch:
    case MidiSearch:
      return Text(texts::FileFilterText);
    case AudioCompressor:
      return Text(context.wmaInterface ? texts::FileFilterWma : texts::FileFilterMp);
    case XmlConverter:
      return Text(context.sourceIsXml ? texts::FileFilterStvXml : texts::FileFilterMusicXml);
    default:
      return Text(texts::FileFilterWave);
  }
}

std::vector<FileFilter> ParseFileFilter(std::string_view text) {
  std::vector<FileFilter> filters;
  const auto parts = Split(text, '|');
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    FileFilter& filter = filters.emplace_back(FileFilter{std::string(parts[i]), {}});
    for (const std::string_view pattern : Split(parts[i + 1], ';')) {
      if (!Trim(pattern).empty()) filter.patterns.emplace_back(Trim(pattern));
    }
  }
  return filters;
}

}  // namespace ts5
