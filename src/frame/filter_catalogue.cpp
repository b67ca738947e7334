#include "frame/filter_catalogue.h"

#include <algorithm>
#include <array>
#include <optional>

#include "frame/texts.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

using enum FilterId;
using enum ParameterWindow;

constexpr auto kScores = std::to_array<std::string_view>({"stv", "xml", "stvx", "musicxml", "mxl"});
constexpr auto kMidi = std::to_array<std::string_view>({"mid", "rmi", "rdl"});
constexpr auto kScoresOfEngine = std::to_array<std::string_view>({"stv", "stvx", "xml", "musicxml", "mxl"});
constexpr auto kAudio = std::to_array<std::string_view>(
    {"wav", "mpg", "mp2", "mp3", "mpga", "wma", "asf", "aif", "ogg", "ape", "flac", "opus", "m4a"});
constexpr auto kTracks = std::to_array<std::string_view>({""});
constexpr auto kWaves = std::to_array<std::string_view>({"wav", "aif"});
constexpr auto kCompressed = std::to_array<std::string_view>(
    {"mpg", "mp2", "mp3", "mpga", "wma", "asf", "ogg", "ape", "flac", "opus", "m4a"});
constexpr auto kBurnable = std::to_array<std::string_view>(
    {"mpg", "mp2", "mp3", "mpga", "wav", "wma", "asf", "mid", "rdl", "rmi", "ogg"});
constexpr auto kXml = std::to_array<std::string_view>({"stvx", "xml", "musicxml", "mxl"});

constexpr RunTitles Conversion(TextId title) {
  return {title, {texts::CountConverted, texts::CountNotConverted}};
}
constexpr RunTitles kSearchTitles{texts::ResultsSearch,
                                  {texts::CountSearched, texts::CountHits, texts::CountUnsuitable}};
constexpr RunTitles kPlayerTitles{texts::ResultsPlayer,
                                  {texts::CountStarted, texts::CountFinished, texts::CountNotFinished}};

// Four lines per filter.
// clang-format off
constexpr auto kFilters = std::to_array<FilterDescriptor>({
    // id, identifier, name, description, window, template,
    //     single, several, whole list, destinations, panels, colour 1, colour 2,
    //     traits, run wording, save types, titles, examples,
    //     group, needs
    {ScoreToMidi, "ScoreToMidi", texts::FilterNameScoreToMidi, texts::FilterDescriptionScoreToMidi, Dialog, "SCOREMIDI",
        kScores, kScores, {}, DestinationKinds::File, kPanelFile, 0x00FF00, 0x800000,
        kMakesFiles, RunWords::Run, texts::FileFilterMidi, Conversion(texts::ResultsScoreToMidi), texts::ExamplesScoreToMidi,
        FilterGroup::Convert, texts::NeedsScore},
    {MidiToScore, "MidiToScore", texts::FilterNameMidiToScore, texts::FilterDescriptionMidiToScore, Dialog, "MIDSTV",
        kMidi, kMidi, {}, DestinationKinds::File, kPanelFile, 0xFF0000, 0x008000,
        kMakesFiles, RunWords::Run, texts::FileFilterScore, Conversion(texts::ResultsMidiToScore), texts::ExamplesMidiToScore,
        FilterGroup::Convert, texts::NeedsMidi},
    {ScoreSearch, "ScoreSearch", texts::FilterNameScoreSearch, texts::FilterDescriptionScoreSearch, Dialog, "MIDIFINDPARAMS",
        kScoresOfEngine, kScoresOfEngine, kScoresOfEngine, DestinationKinds::FileOrScreen, kPanelFile | kPanelScreen, 0xFF0000, 0x400000,
        kSearches | kSearchesScores | kMakesFiles, RunWords::Run, texts::FileFilterText, kSearchTitles, texts::ExamplesScoreSearch,
        FilterGroup::Search, texts::NeedsScore},
    {MidiSearch, "MidiSearch", texts::FilterNameMidiSearch, texts::FilterDescriptionMidiSearch, Dialog, "MIDIFINDPARAMS",
        kMidi, kMidi, kMidi, DestinationKinds::FileOrScreen, kPanelFile | kPanelScreen, 0x00FF00, 0x004000,
        kSearches | kMakesFiles, RunWords::Run, texts::FileFilterText, kSearchTitles, texts::ExamplesMidiSearch,
        FilterGroup::Search, texts::NeedsMidi},
    {MidiPlayer, "MidiPlayer", texts::FilterNameMidiPlayer, texts::FilterDescriptionMidiPlayer, Playback, "",
        kMidi, kMidi, {}, DestinationKinds::File, kPanelMidiDevices, 0x00FF00, 0x004000,
        kPlays, RunWords::Play, texts::FileFilterWave, kPlayerTitles, texts::ExamplesMidiPlayer,
        FilterGroup::Listen, texts::NeedsMidi},
    {MidiConverter, "MidiConverter", texts::FilterNameMidiConverter, texts::FilterDescriptionMidiConverter, Dialog, "MIDICONVERT",
        kMidi, kMidi, {}, DestinationKinds::File, kPanelFile, 0x00FF00, 0x004000,
        kMakesFiles, RunWords::Run, texts::FileFilterMidi, Conversion(texts::ResultsMidiConverter), texts::ExamplesMidiConverter,
        FilterGroup::Convert, texts::NeedsMidi},
    {MidiToWave, "MidiToWave", texts::FilterNameMidiToWave, texts::FilterDescriptionMidiToWave, Dialog, "MIDWAVPARAMS",
        kMidi, kMidi, {}, DestinationKinds::File, kPanelFile, 0x0000FF, 0x008000,
        kMakesFiles, RunWords::Run, texts::FileFilterWave, Conversion(texts::ResultsMidiToWave), texts::ExamplesMidiToWave,
        FilterGroup::Convert, texts::NeedsMidi},
    {AudioPlayer, "AudioPlayer", texts::FilterNameAudioPlayer, texts::FilterDescriptionAudioPlayer, Playback, "",
        kAudio, kAudio, kTracks, DestinationKinds::File, kPanelAudioDevices, 0x0000FF, 0x000040,
        kPlays | kPlaysSamples | kTakesTracks, RunWords::Play, texts::FileFilterWave, kPlayerTitles, texts::ExamplesAudioPlayer,
        FilterGroup::Listen, texts::NeedsAudio},
    {WaveConverter, "WaveConverter", texts::FilterNameWaveConverter, texts::FilterDescriptionWaveConverter, Dialog, "WAVECONVERTPARAMS",
        kWaves, kWaves, {}, DestinationKinds::File, kPanelFile, 0x0000FF, 0x000040,
        kMakesFiles, RunWords::Run, texts::FileFilterWave, Conversion(texts::ResultsWaveConverter), texts::ExamplesWaveConverter,
        FilterGroup::Convert, texts::NeedsWave},
    {AudioCompressor, "AudioCompressor", texts::FilterNameAudioCompressor, texts::FilterDescriptionAudioCompressor, Dialog, "WAVMP3PARAMS",
        kWaves, kWaves, {}, DestinationKinds::File, kPanelFile, 0xFF00FF, 0x000080,
        kMakesFiles, RunWords::Run, texts::FileFilterMp, Conversion(texts::ResultsCompressor), texts::ExamplesAudioCompressor,
        FilterGroup::Convert, texts::NeedsWave},
    {AudioDecompressor, "AudioDecompressor", texts::FilterNameAudioDecompressor, texts::FilterDescriptionAudioDecompressor, DecoderPage, "MPDecoder",
        kCompressed, kCompressed, {}, DestinationKinds::File, kPanelFile, 0x0000FF, 0xC800C8,
        kMakesFiles, RunWords::Run, texts::FileFilterWave, Conversion(texts::ResultsDecompressor), texts::ExamplesAudioDecompressor,
        FilterGroup::Convert, texts::NeedsCompressed},
    {CdBurner, "CdBurner", texts::FilterNameCdBurner, texts::FilterDescriptionCdBurner, Dialog, "BURNPARAMS",
        {}, {}, kBurnable, DestinationKinds::File, kPanelDiscDrives, 0x00FFFF, 0x004040,
        kWritesDisc | kTimedList, RunWords::Burn, texts::FileFilterWave, {texts::ResultsBurner, {texts::CountAdded, texts::CountNotAdded, texts::CountTracksBurntWell, texts::CountDiscsBurnt}}, texts::ExamplesCdBurner,
        FilterGroup::Disc, texts::NeedsTitles},
    {CdGrabber, "CdGrabber", texts::FilterNameCdGrabber, texts::FilterDescriptionCdGrabber, Dialog, "GRABPARAMS",
        kTracks, kTracks, kTracks, DestinationKinds::File, kPanelFile, 0xFFFF00, 0x404000,
        kMakesFiles | kTakesTracks | kTracksOnly, RunWords::Run, texts::FileFilterWave, {texts::ResultsGrabber, {texts::CountTracksRead, texts::CountTracksNotRead}}, texts::ExamplesCdGrabber,
        FilterGroup::Disc, texts::NeedsAudioCd},
    {CdCopier, "CdCopier", texts::FilterNameCdCopier, texts::FilterDescriptionCdCopier, Dialog, "COPYPARAMS",
        {}, {}, {}, DestinationKinds::File, kPanelDiscDrives, 0xC8C800, 0x202000,
        kWritesDisc | kTakesDisc, RunWords::Copy, texts::FileFilterWave, {texts::ResultsCopier, {texts::CountTracksRead, texts::CountTracksBurntWell, texts::CountTracksNotBurnt, texts::CountDiscsBurnt}}, texts::ExamplesCdCopier,
        FilterGroup::Disc, texts::NeedsAudioCd},
    {ScorePlayer, "ScorePlayer", texts::FilterNameScorePlayer, texts::FilterDescriptionScorePlayer, Playback, "",
        kScoresOfEngine, kScoresOfEngine, {}, DestinationKinds::File, kPanelMidiDevices, 0xC80000, 0x200000,
        kPlays, RunWords::Play, texts::FileFilterWave, {texts::ResultsScorePlayer, {texts::CountStarted, texts::CountFinished, texts::CountNotFinished}}, texts::ExamplesScorePlayer,
        FilterGroup::Listen, texts::NeedsScore},
    {Artworker, "Artworker", texts::FilterNameArtworker, texts::FilterDescriptionArtworker, Modeless, "ARTWORKERPARAMS",
        {}, {}, {}, DestinationKinds::File, kPanelPrinters, 0xFFFFFF, 0x000000,
        kNeedsNoSources, RunWords::Run, texts::FileFilterWave, {texts::ResultsArtworker, {texts::CountPrinted}}, texts::ExamplesArtworker,
        FilterGroup::Print, texts::NeedsNothing},
    {XmlConverter, "XmlConverter", texts::FilterNameXmlConverter, texts::FilterDescriptionXmlConverter, Dialog, "XMLCONVPARAMS",
        kXml, kXml, {}, DestinationKinds::File, kPanelFile, 0x77A4FF, 0x0042CC,
        kMakesFiles, RunWords::Run, texts::FileFilterMusicXml, Conversion(texts::ResultsXmlConverter), texts::ExamplesXmlConverter,
        FilterGroup::Convert, texts::NeedsXmlScore},
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

std::string_view GroupName(FilterGroup group) {
  constexpr std::array kNames = {texts::GroupListen, texts::GroupSearch, texts::GroupConvert,
                                 texts::GroupDisc, texts::GroupPrint};
  return Text(kNames.at(static_cast<std::size_t>(group)));
}

const FilterDescriptor& Descriptor(FilterId id) {
  return kFilters.at(static_cast<std::size_t>(id));
}

bool Has(FilterId id, FilterTraits trait) {
  return IsFilter(id) && Descriptor(id).Has(trait);
}

FilterId FindFilter(std::string_view text) {
  const auto number = ParseInteger(text);
  const auto row = std::ranges::find_if(kFilters, [&](const FilterDescriptor& filter) {
    return EqualsIgnoringCase(filter.identifier, text) || EqualsIgnoringCase(filter.Name(), text) ||
           number == static_cast<std::int64_t>(filter.id);
  });
  return row == kFilters.end() ? None : row->id;
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
