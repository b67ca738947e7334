#include "frame/destination.h"

#include <gmock/gmock.h>

#include <set>

#include "frame/settings.h"
#include "frame/texts.h"

namespace ts5 {
namespace {

DestinationFiles Files(std::set<std::string> existing) {
  return {.exists = [existing](const std::string& path) { return existing.contains(path); },
          .isDirectory = [](const std::string& path) { return path == "/there" || path == "/music"; },
          .onCdRom = [](const std::string& path) { return path.starts_with("/media/cd"); }};
}

TEST(Destination, AutomaticNames) {
  const DestinationRules beside;
  const DestinationRules elsewhere{.sourceDirectory = false, .directory = "/there/"};
  const DestinationRules unset{.sourceDirectory = false};
  const DestinationRules noSuffix{.useSuffix = false};
  struct Case {
    DestinationRules rules;
    const char* source;
    TargetRule rule;
    const char* name;
  };
  for (const Case& c : {
           Case{beside, "/music/song.stv", {"mid"}, "/music/song.mid"},
           Case{beside, "/music/a.b.MID", {"stv"}, "/music/a.b.stv"},
           Case{beside, "/music/song", {"mid"}, "/music/song.mid"},
           Case{beside, "song.stv", {"mid"}, "song.mid"},
           Case{elsewhere, "/music/song.stv", {"mid"}, "/there/song.mid"},
           Case{unset, "/music/song.stv", {"mid"}, "/music/song.mid"},
           Case{beside, "/media/cd/song.stv", {"mid"}, "song.mid"},
           Case{elsewhere, "/media/cd/song.stv", {"mid"}, "/there/song.mid"},
           Case{beside, "/music/song.wav", {"wav", true}, "/music/song.cnv.wav"},
           Case{noSuffix, "/music/song.WAV", {"wav", true}, "/music/song.WAV"},
           Case{beside, "/music/100%03i%s.stv", {"mid"}, "/music/100%03i%s.mid"},
       }) {
    EXPECT_EQ(TargetNameFor(c.rule, c.rules, c.source, Files({})).Plain(), c.name);
  }
}

TEST(Destination, Numbering) {
  const TargetName song{.head = "/m/song", .tail = ".mid"};
  const auto settle = [](const TargetName& name, bool number, std::set<std::string> existing) {
    return SettledName(name, number, Files(std::move(existing))).value_or("none");
  };
  EXPECT_EQ(settle(song, true, {}), "/m/song.mid");
  EXPECT_EQ(settle(song, true, {"/m/song001.mid"}), "/m/song.mid");
  EXPECT_EQ(settle(song, true, {"/m/song.mid", "/m/song001.mid"}), "/m/song002.mid");
  EXPECT_EQ(settle(song, false, {"/m/song.mid"}), "/m/song.mid");
  EXPECT_EQ(settle({.head = "/m/song"}, true, {"/m/song"}), "/m/song") << "no extension, no number";
  EXPECT_EQ(settle({.head = "/m/r", .tail = ".txt", .numbered = true}, false, {}), "/m/r001.txt");
  EXPECT_EQ(song.Numbered(1000), "/m/song1000.mid");
  const DestinationFiles full{
      .exists = [](const std::string&) { return true; }, .isDirectory = {}, .onCdRom = {}};
  EXPECT_FALSE(SettledName(song, true, full)) << "comes to an end";
}

TEST(Destination, ResultFilesOfSearches) {
  const DestinationRules replace;
  const DestinationRules number{.overwrite = OverwritePolicy::Number};
  const auto name = [](const DestinationRules& rules, std::size_t items, bool wholeList) {
    return SettledName(
               ResultFileNameFor(rules, "/m/a.mid", items, wholeList, Files({"/m/Suchergebnisse001.txt"})),
               rules.overwrite == OverwritePolicy::Number, Files({"/m/Suchergebnisse001.txt"}))
        .value_or("none");
  };
  EXPECT_EQ(name(replace, 1, false), "/m/a.txt");
  EXPECT_EQ(name(replace, 3, false), "/m/Suchergebnisse002.txt");
  EXPECT_EQ(name(replace, 3, true), "/m/Suchergebnisse002.txt");
  EXPECT_EQ(name(replace, 1, true), "/m/Suchergebnisse.txt");
  EXPECT_EQ(name(number, 1, true), "/m/Suchergebnisse002.txt");
}

TEST(Destination, ModeByFilterAndSelection) {
  const DestinationMode none{};
  const DestinationMode automatic{.automatic = true, .editable = false};
  const DestinationMode both{.automatic = true, .editable = true};
  const DestinationMode editable{.automatic = false, .editable = true};
  struct Case {
    FilterId filter;
    std::size_t entries;
    std::size_t selected;
    bool listMode;
    bool noPreset;
    DestinationMode mode;
  };
  for (const Case& c : {
           Case{FilterId::MidiConverter, 1, 1, true, false, both},
           Case{FilterId::MidiConverter, 1, 1, true, true, editable},
           Case{FilterId::MidiConverter, 3, 2, true, true, automatic},
           Case{FilterId::MidiConverter, 3, 0, true, false, automatic},
           Case{FilterId::MidiConverter, 0, 1, false, false, both},
           Case{FilterId::MidiConverter, 0, 2, false, false, automatic},
           Case{FilterId::MidiSearch, 3, 0, true, false, both},
           Case{FilterId::MidiSearch, 3, 2, true, false, automatic},
           Case{FilterId::CdGrabber, 1, 1, true, false, automatic},
           Case{FilterId::CdGrabber, 0, 1, false, false, both},
           Case{FilterId::CdGrabber, 0, 0, false, false, automatic},
           Case{FilterId::MidiPlayer, 1, 1, true, false, none},
           Case{FilterId::CdBurner, 3, 0, true, false, none},
           Case{FilterId::Artworker, 1, 1, true, false, none},
           Case{FilterId::None, 1, 1, true, false, none},
       }) {
    Job job;
    job.filter = c.filter;
    job.sourceDrive = c.listMode ? kListModeDrive : 0;
    for (std::size_t i = 0; i < c.entries; ++i) job.files.Append({.path = "/x" + std::to_string(i)});
    std::vector<std::size_t> selection;
    for (std::size_t i = 0; i < c.selected && c.listMode; ++i) selection.push_back(i);
    job.files.Select(selection);
    if (!c.listMode) job.directory.names.assign(c.selected, "a.mid");
    EXPECT_EQ(DestinationModeOf(job, c.noPreset), c.mode) << static_cast<int>(c.filter) << " " << c.selected;
  }
}

TEST(Destination, ItemsOfARun) {
  Job job;
  EXPECT_EQ(ItemCount(job), 0U);
  EXPECT_EQ(ItemSource(job, 0), "");
  job.directory = {.path = "/music", .names = {"a.mid", "b.mid"}, .indices = {}};
  EXPECT_EQ(ItemSource(job, 1), "/music/b.mid");
  EXPECT_EQ(ItemSource(job, 9), "/music/b.mid") << "past the end: the last one";
  job.sourceDrive = kListModeDrive;
  for (const char* const path : {"/x", "/y", "/z"}) job.files.Append({.path = path});
  EXPECT_EQ(ItemCount(job), 3U);
  job.files.Select({2, 1});
  EXPECT_EQ(ItemCount(job), 2U);
  EXPECT_EQ(ItemSource(job, 0), "/y");
  EXPECT_EQ(ItemSource(job, 1), "/z");
}

TEST(Destination, CheckBeforeARun) {
  const DestinationRules beside;
  const DestinationRules elsewhere{.sourceDirectory = false, .directory = "/there"};
  const DestinationRules nowhere{.sourceDirectory = false, .directory = "/gone"};
  struct Case {
    const char* field;
    DestinationRules rules;
    const char* name;
    std::optional<TextId> message;
  };
  for (const Case& c : {
           Case{"", beside, "", texts::NoTargetName},
           Case{" \t", elsewhere, "", texts::NoTargetName},
           Case{"b.mid", elsewhere, "/there/b.mid", std::nullopt},
           Case{"b.mid", nowhere, "b.mid", texts::InvalidTargetDirectory},
           Case{"/music/b.mid", elsewhere, "/music/b.mid", std::nullopt},
           Case{"/gone/b.mid", elsewhere, "/gone/b.mid", texts::InvalidTargetDirectory},
           Case{"b.mid", beside, "/music/b.mid", std::nullopt},
           Case{"/gone/b.mid", beside, "/gone/b.mid", std::nullopt},
       }) {
    const DestinationCheck check = CheckDestination(c.field, c.rules, "/music/a.mid", Files({}));
    EXPECT_EQ(check.name, c.name) << c.field;
    EXPECT_EQ(check.message, c.message) << c.field;
  }
}

}  // namespace
}  // namespace ts5
