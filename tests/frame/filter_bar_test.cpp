#include "frame/filter_bar.h"

#include <gmock/gmock.h>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"

namespace ts5 {
namespace {

using enum FilterId;
using testing::ElementsAre;

constexpr DeviceCounts kAllDevices{.audioOutputs = 1, .midiOutputs = 1, .printers = 1, .writers = 1};

FreeFileList ListOf(const std::vector<std::string>& paths, std::vector<std::size_t> selected = {}) {
  FreeFileList list;
  for (const std::string& path : paths) list.Append(EntryFromPath(path));
  list.Select(std::move(selected));
  if (!list.Selection().empty()) list.SetFocus(list.Selection().front());
  return list;
}

std::vector<FilterId> ShownIn(const FilterBar& bar) {
  std::vector<FilterId> shown;
  for (const FilterDescriptor& filter : FilterCatalogue()) {
    const auto index = static_cast<std::size_t>(filter.id);
    const FilterTile& tile = bar.tiles[index];
    EXPECT_EQ(tile.shown, (bar.words[index] & kStatusShown) != 0);
    EXPECT_EQ(tile.position, tile.shown ? static_cast<int>(shown.size()) : -1) << filter.identifier;
    if (tile.shown) shown.push_back(filter.id);
  }
  return shown;
}

std::vector<FilterId> ShownFor(SourceContext source) {
  return ShownIn(
      RefreshFilterBar({.source = std::move(source), .devices = kAllDevices, .filter = MidiConverter}));
}

TEST(FilterBar, OffersWhatFitsTheSource) {
  const std::vector<std::string> waves = {"/m/a.wav", "/m/b.WAV"};
  const std::vector<std::string> mixed = {"/m/a.mid",  "/m/b.wav", "/m/c.rdl",
                                          "/m/d.stvx", "/m/e.xyz", "/m/f"};
  const auto list = [](const std::vector<std::string>& paths, std::vector<std::size_t> selected) {
    return ListContext(ListOf(paths, std::move(selected)));
  };
  const auto files = [](std::vector<std::string> names) {
    return DirectoryContext({"/m", names, {}}, false);
  };
  const auto disc = [](std::vector<std::string> names) { return DirectoryContext({"/cd", names, {}}, true); };
  const std::pair<SourceContext, std::vector<FilterId>> cases[] = {
      {list(waves, {}), {ScoreSearch, MidiSearch, CdBurner, Artworker}},
      {list(waves, {1}), {AudioPlayer, WaveConverter, AudioCompressor, Artworker}},
      {list(waves, {0, 1}), {AudioPlayer, WaveConverter, AudioCompressor, Artworker}},
      {list(mixed, {0, 1}), {Artworker}},
      {list(mixed, {0, 2}), {MidiToScore, MidiSearch, MidiPlayer, MidiConverter, MidiToWave, Artworker}},
      {list(mixed, {3}), {ScoreToMidi, ScoreSearch, ScorePlayer, Artworker, XmlConverter}},
      {list(mixed, {4}), {Artworker}},
      {list(mixed, {5}), {CdGrabber, Artworker}},  // no extension, as the grabber's empty one
      {files({}), {ScoreSearch, MidiSearch, Artworker}},
      {files({"A.MID"}), {MidiToScore, MidiSearch, MidiPlayer, MidiConverter, MidiToWave, Artworker}},
      {disc({}), {AudioPlayer, CdGrabber, CdCopier, Artworker}},
      {disc({"Track 01"}), {AudioPlayer, CdGrabber, Artworker}},
      {disc({"Track 01", "Track 02"}), {AudioPlayer, CdGrabber, Artworker}},
  };
  for (const auto& [source, shown] : cases) EXPECT_EQ(ShownFor(source), shown);
}

TEST(FilterBar, TakesCdTracksOnlyFromAnAudioCdOrTheList) {
  SourceContext source =
      ListContext(ListOf({"PLEXTOR CDR\\Track 3", "PLEXTOR CDR\\Track 4", "/m/a.mp3"}, {0}));
  EXPECT_TRUE(source.sourceIsAudioCd);
  EXPECT_THAT(ShownFor(source), ElementsAre(AudioPlayer, CdGrabber, Artworker));
  source.listMode = false;
  source.sourceIsAudioCd = false;
  EXPECT_FALSE(Accepts(AudioPlayer, source));
  EXPECT_FALSE(Accepts(CdGrabber, source));

  // Tracks and files together: the player takes both, the grabber tracks alone.
  EXPECT_THAT(ShownFor(ListContext(ListOf({"P C\\Track 3", "/m/a.mp3"}, {0, 1}))),
              ElementsAre(AudioPlayer, Artworker));
  EXPECT_THAT(ShownFor(ListContext(ListOf({"P C\\Track 3", "P C\\Track 4"}, {0, 1}))),
              ElementsAre(AudioPlayer, CdGrabber, Artworker));
}

TEST(FilterBar, FocusedSelectedTrackMakesTheListAnAudioCd) {
  FreeFileList list = ListOf({"P C\\Track 3", "/m/a.mp3"}, {0});
  EXPECT_TRUE(ListSourceIsAudioCd(list));
  list.Select({1});
  EXPECT_FALSE(ListSourceIsAudioCd(list)) << "the track has the focus but is not selected";
  list.Clear();
  EXPECT_FALSE(ListSourceIsAudioCd(list));
}

TEST(FilterBar, FixedFilterIsTheOnlyTileAndItsDisabledBitFollowsTheSelection) {
  FilterBarInput input{.source = ListContext(ListOf({"/m/a.wav", "/m/b.mid"}, {0})),
                       .devices = kAllDevices,
                       .filter = MidiConverter,
                       .filterFixed = true};
  FilterBar bar = RefreshFilterBar(input);
  EXPECT_THAT(ShownIn(bar), ElementsAre(MidiConverter));
  EXPECT_FALSE(bar.CanRun());
  EXPECT_EQ(bar.words[5], kStatusExpanded | kStatusShown | kStatusNotApplicable | kStatusDisabled);
  EXPECT_FALSE(bar.tiles[5].buttonEnabled);

  input.words = bar.words;
  input.source = ListContext(ListOf({"/m/a.wav", "/m/b.mid"}, {1}));
  bar = RefreshFilterBar(input);
  EXPECT_THAT(ShownIn(bar), ElementsAre(MidiConverter));
  EXPECT_TRUE(bar.CanRun());
  EXPECT_EQ(bar.words[5], kStatusExpanded | kStatusShown);

  // A current filter that went out of sight must not run either.
  input.filterFixed = false;
  input.source = ListContext(ListOf({"/m/a.wav"}, {0}));
  EXPECT_FALSE(RefreshFilterBar(input).CanRun());
}

TEST(FilterBar, JobWithoutFilterGetsTheScoreSearchUnfixed) {
  const FilterBar bar = RefreshFilterBar({.source = ListContext(ListOf({"/m/a.mid"})),
                                          .devices = kAllDevices,
                                          .filter = None,
                                          .filterFixed = true});
  EXPECT_EQ(bar.filter, ScoreSearch);
  EXPECT_FALSE(bar.filterFixed);
  EXPECT_THAT(ShownIn(bar), ElementsAre(ScoreSearch, MidiSearch, CdBurner, Artworker));
}

TEST(FilterBar, MissingDeviceDisablesItsFilterButKeepsItsTile) {
  const struct {
    FilterId filter;
    const char* path;
    DeviceCounts devices;
  } kCases[] = {
      {MidiPlayer, "/m/a.mid", {.audioOutputs = 1, .printers = 1, .writers = 1}},
      {ScorePlayer, "/m/a.stv", {.audioOutputs = 1, .printers = 1, .writers = 1}},
      {AudioPlayer, "/m/a.ape", {.midiOutputs = 1, .printers = 1, .writers = 1}},
      {Artworker, "/m/a.mid", {.audioOutputs = 1, .midiOutputs = 1, .writers = 1}},
      {CdBurner, nullptr, {.audioOutputs = 1, .midiOutputs = 1, .printers = 1}},
  };
  for (const auto& test : kCases) {
    const FreeFileList list = test.path != nullptr ? ListOf({test.path}, {0}) : ListOf({"/m/a.mid"});
    const auto index = static_cast<std::size_t>(test.filter);
    FilterBar bar =
        RefreshFilterBar({.source = ListContext(list), .devices = test.devices, .filter = test.filter});
    EXPECT_TRUE(bar.tiles[index].shown) << index;
    EXPECT_FALSE(bar.tiles[index].buttonEnabled) << index;
    EXPECT_FALSE(bar.tiles[index].toggleEnabled) << index;
    EXPECT_EQ(bar.words[index], kStatusExpanded | kStatusShown | kStatusDeviceMissing | kStatusDisabled)
        << index;
    bar = RefreshFilterBar(
        {.source = ListContext(list), .devices = kAllDevices, .filter = test.filter, .words = bar.words});
    EXPECT_EQ(bar.words[index], kStatusExpanded | kStatusShown) << index;
    EXPECT_TRUE(bar.tiles[index].buttonEnabled) << index;
  }
}

TEST(FilterBar, WhileTheJobRunsOnlyAPlayingPlayersTileStaysUsable) {
  FilterBarInput input{.source = ListContext(ListOf({"/m/a.mid"}, {0})),
                       .devices = kAllDevices,
                       .jobIsIdle = false,
                       .filter = MidiPlayer};
  FilterBar bar = RefreshFilterBar(input);
  EXPECT_TRUE(bar.tiles[4].buttonEnabled);
  EXPECT_FALSE(bar.tiles[5].buttonEnabled);
  EXPECT_TRUE(bar.tiles[5].toggleEnabled);
  input.filter = MidiConverter;
  bar = RefreshFilterBar(input);
  EXPECT_FALSE(bar.tiles[4].buttonEnabled);
  EXPECT_FALSE(bar.tiles[5].buttonEnabled);
}

TEST(FilterBar, AllCanBeShownAndSayWhyTheyDoNotFit) {
  const auto bar = [](SourceContext source, DeviceCounts devices = kAllDevices, SourceContext whole = {}) {
    return RefreshFilterBar({.source = std::move(source),
                             .whole = std::move(whole),
                             .devices = devices,
                             .filter = MidiConverter,
                             .showAll = true});
  };
  const auto refusal = [](const FilterBar& shown, FilterId filter) {
    const FilterTile& tile = shown.tiles[static_cast<std::size_t>(filter)];
    EXPECT_NE(tile.buttonEnabled, tile.refusal.has_value());
    return tile.refusal ? tile.refusal->reason : "";
  };
  const FilterBar one = bar(ListContext(ListOf({"/m/a.mid", "/m/b.wav"}, {0})));
  EXPECT_EQ(ShownIn(one).size(), kFilterCount);
  EXPECT_EQ(refusal(one, MidiConverter), "");
  EXPECT_EQ(refusal(one, ScorePlayer), "braucht eine Partitur");
  EXPECT_EQ(refusal(one, CdCopier), "braucht eine Audio-CD");
  EXPECT_EQ(one.tiles[static_cast<std::size_t>(XmlConverter)].refusal->remedy,
            "Markieren Sie Dateien dieser Art: .stvx, .xml, .musicxml, .mxl.");
  const FilterBar mixed = bar(ListContext(ListOf({"/m/a.mid", "/m/b.wav"}, {0, 1})));
  EXPECT_EQ(refusal(mixed, WaveConverter), "nimmt nicht alle markierten");
  EXPECT_EQ(refusal(mixed, AudioDecompressor), "braucht komprimierte Musik");
  const FilterBar bare = bar(ListContext(ListOf({"/m/a.mid"}, {0})), {});
  EXPECT_EQ(refusal(bare, MidiPlayer), "kein Midi-Gerät gefunden");
  EXPECT_EQ(refusal(bare, AudioPlayer), "kein Klanggerät gefunden");
  EXPECT_EQ(refusal(bare, CdBurner), "kein CD-Brenner gefunden");

  // A current filter that has no tile says it, too: a CD is not burnt from its own drive.
  const FilterBar tracks = RefreshFilterBar({.source = DirectoryContext({"/cd", {"Track 01"}, {0}}, true),
                                             .devices = kAllDevices,
                                             .filter = CdBurner});
  const FilterTile& burner = tracks.tiles[static_cast<std::size_t>(CdBurner)];
  EXPECT_FALSE(burner.shown);
  EXPECT_EQ(burner.refusal->remedy, Text(texts::RemedyTitles));
  EXPECT_FALSE(tracks.tiles[static_cast<std::size_t>(MidiPlayer)].refusal);

  // Of a list in which nothing is selected, filters can be chosen that take all of it.
  const FreeFileList list = ListOf({"/m/a.mid", "/m/b.rmi"});
  const FilterBar whole = bar(ListContext(list), kAllDevices, WholeListContext(list));
  for (const FilterDescriptor& filter : FilterCatalogue()) {
    const bool takes = filter.id == MidiToScore || filter.id == MidiPlayer || filter.id == MidiConverter ||
                       filter.id == MidiToWave;
    EXPECT_EQ(whole.tiles[static_cast<std::size_t>(filter.id)].marksAll, takes) << filter.identifier;
  }
  EXPECT_FALSE(whole.CanRun()) << "nothing is selected yet";
}

}  // namespace
}  // namespace ts5
