#include "frame/target_naming.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <set>

#include "frame/filter_module.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "run_support.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::CopyModule;
using test::ListJob;
using test::TemporaryDirectory;
using testing::ElementsAre;

// A disk of which these paths are all. links: names of one file.
DestinationFiles Files(std::set<std::string> existing, std::vector<std::set<std::string>> links = {}) {
  const auto identity = [existing, links](const std::string& path) -> std::optional<FileIdentity> {
    for (std::size_t i = 0; i < links.size(); ++i) {
      if (links[i].contains(path)) return FileIdentity{1, i};
    }
    const auto found = existing.find(path);
    if (found == existing.end()) return std::nullopt;
    return FileIdentity{2, static_cast<std::uint64_t>(std::distance(existing.begin(), found))};
  };
  return {.exists = [identity](const std::string& path) { return identity(path).has_value(); },
          .isDirectory = [](const std::string& path) { return path == "/there" || path == "/music"; },
          .onCdRom = [](const std::string& path) { return path.starts_with("/media/cd"); },
          .identity = identity};
}

TEST(TargetNaming, AutomaticNames) {
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

constexpr auto kReplace = OverwritePolicy::Replace;
constexpr auto kNumber = OverwritePolicy::Number;
constexpr auto kAsk = OverwritePolicy::Ask;

// What the targets of a run over these sources are called, and how they are taken (R, N, A).
std::string Targets(const std::vector<std::string>& sources, const TargetRule& rule,
                    const DestinationRules& rules, const DestinationFiles& files) {
  const FilterModule module = CopyModule();
  const Job job = ListJob(sources, module);
  TargetNaming naming(job, rules, files);
  std::string names;
  for (const std::string& source : sources) {
    const PlannedTarget target = naming.Automatic(rule, source);
    names += names.empty() ? "" : "|";
    names += "RNA"[static_cast<int>(target.taking)] + std::string(target.evades ? "! " : " ") + target.name;
  }
  return names;
}

TEST(TargetNaming, NoTargetIsASourceOrAnotherTarget) {
  const DestinationRules replace;
  const DestinationRules plain{.useSuffix = false};
  const DestinationRules number{.overwrite = kNumber};
  const DestinationRules ask{.overwrite = kAsk};
  const DestinationRules elsewhere{.sourceDirectory = false, .directory = "/there"};
  const TargetRule mid{"mid"};
  const TargetRule kept{"", true};
  struct Case {
    const char* what;
    std::string sources;  // separated by '|', as the targets
    TargetRule rule;
    DestinationRules rules;
    DestinationFiles files;
    std::string targets;
  };
  const TargetRule rmi{"rmi"};
  const DestinationRules plainNumber{.useSuffix = false, .overwrite = kNumber};
  const DestinationRules plainAsk{.useSuffix = false, .overwrite = kAsk};
  const DestinationRules below{.sourceDirectory = false, .directory = "/there", .structure = "/m"};
  const std::string longName = "/m/" + std::string(250, 'x');
  const Case cases[] = {
      {"free", "/m/a.stv", mid, replace, Files({"/m/a.stv"}), "R /m/a.mid"},
      {"the same subdirectories", "/m/a.stv|/m/Chor/Alt/a.stv|/musik/a.stv", mid, below, Files({}),
       "R /there/a.mid|R /there/Chor/Alt/a.mid|N! /there/a001.mid"},
      {"there, replacing", "/m/a.stv", mid, replace, Files({"/m/a.mid"}), "R /m/a.mid"},
      {"there, numbering", "/m/a.stv", mid, number, Files({"/m/a.mid", "/m/a001.mid"}), "N /m/a002.mid"},
      {"free, numbering", "/m/a.stv", mid, number, Files({"/m/a001.mid"}), "N /m/a.mid"},
      {"there, asking", "/m/a.stv", mid, ask, Files({"/m/a.mid"}), "A /m/a.mid"},
      {"its own source", "/m/a.mid", mid, replace, Files({"/m/a.mid"}), "N! /m/a001.mid"},
      {"its own source in another case", "/m/a.MID", mid, replace, Files({"/m/a.MID"}), "N! /m/a001.mid"},
      {"a source still to come", "/m/x.mid|/m/x.rmi", rmi, replace, Files({"/m/x.mid", "/m/x.rmi"}),
       "N! /m/x001.rmi|N! /m/x002.rmi"},
      {"a source that is done", "/m/x.rmi|/m/x.rdl", rmi, ask, Files({"/m/x.rmi", "/m/x.rdl"}),
       "N! /m/x001.rmi|N! /m/x002.rmi"},
      {"a missing source", "/m/x.mid|/m/x.rmi", rmi, replace, Files({"/m/x.mid"}),
       "N! /m/x001.rmi|N! /m/x002.rmi"},
      {"a number that is a source", "/m/x.mid|/m/x001.mid", mid, replace, Files({"/m/x.mid"}),
       "N! /m/x002.mid|N! /m/x001001.mid"},
      {"a source by another spelling", "/m/x.mid|/m/../m/x.rmi", rmi, replace, Files({"/m/x.mid"}),
       "N! /m/x001.rmi|N! /m/../m/x002.rmi"},
      {"names that differ only by blanks and dots at their ends", "/m/x.mid|/m/x.rmi. ", rmi, replace,
       Files({"/m/x.mid"}), "N! /m/x001.rmi|R /m/x.rmi.rmi"},
      {"numbers that are passed over are not replaced either", "/m/x.mid|/m/x001.mid|/m/x.rmi", rmi, replace,
       Files({"/m/x.mid", "/m/x.rmi", "/m/x001.rmi"}), "N! /m/x002.rmi|N! /m/x001001.rmi|N! /m/x003.rmi"},
      {"a link to a source",
       "/m/x.mid|/m/y.rmi",
       {"out"},
       replace,
       Files({"/m/x.mid"}, {{"/m/y.rmi", "/m/x.out"}}),
       "N! /m/x001.out|R /m/y.out"},
      {"two into one folder", "/a/s.mid|/b/s.mid|/c/S.mid", rmi, elsewhere, Files({"/there"}),
       "R /there/s.rmi|N! /there/s001.rmi|N! /there/S002.rmi"},
      {"in place", "/m/a.mid", kept, plain, Files({"/m/a.mid"}), "R /m/a.mid"},
      {"in place, numbering", "/m/a.mid", kept, plainNumber, Files({"/m/a.mid"}), "N! /m/a001.mid"},
      {"in place, asking", "/m/a.mid", kept, plainAsk, Files({"/m/a.mid"}), "N! /m/a001.mid"},
      {"in place twice", "/m/a.mid|/m/a.mid", kept, plain, Files({"/m/a.mid"}),
       "N! /m/a001.mid|N! /m/a002.mid"},
      {"in place, but a link to another source", "/m/a.mid|/m/b.mid", kept, plain,
       Files({}, {{"/m/a.mid", "/m/b.mid"}}), "N! /m/a001.mid|N! /m/b001.mid"},
      {"no extension, no number", "/m/song", kept, number, Files({"/m/song.cnv"}), "N /m/song001.cnv"},
      {"too long",
       longName + ".mid",
       kept,
       {.suffix = "longsuffix"},
       Files({}),
       "R " + longName + ".longsuffix.mid"},
  };
  for (const Case& c : cases) {
    const auto parts = Split(c.sources, '|');
    EXPECT_EQ(Targets({parts.begin(), parts.end()}, c.rule, c.rules, c.files), c.targets) << c.what;
  }
}

// Targets that are one file in the end, whatever leads there, are no targets of two items.
TEST(TargetNaming, WhatLeadsToOneFileIsOneTarget) {
  namespace fs = std::filesystem;
  const TemporaryDirectory place;
  const FilterModule module = CopyModule();
  const DestinationFiles files = SystemDestinationFiles();
  fs::create_directories(place.File("there"));
  fs::create_directory_symlink(place.File("there"), place.File("here"));
  for (const char* const end : {"", "real.out"}) {  // a link that has no end yet leads somewhere all the same
    SCOPED_TRACE(end);
    if (*end != 0) place.Write(std::string("there/") + end, "old");
    fs::remove(place.File("there/a.out"));
    fs::create_symlink("real.out", place.File("there/a.out"));
    fs::remove(place.File("there/b.out"));
    fs::create_symlink(place.File("here/a.out"), place.File("there/b.out"));
    const std::vector<std::string> sources{
        place.Write("there/a.mid", "ok"),     place.Write("there/b.mid", "ok"),
        place.Write("there/real.mid", "ok"),  place.File("here/Real.mid"),
        place.File("here/../here/new/c.mid"), place.File("there/new/c.mid")};
    const Job job = ListJob(sources, module);
    TargetNaming naming(job, {}, files);
    std::vector<std::string> names;
    for (const std::string& source : sources) names.push_back(naming.Automatic({"out"}, source).name);
    EXPECT_THAT(names, ElementsAre(place.File("there/a.out"), place.File("there/b001.out"),
                                   place.File("there/real001.out"), place.File("here/Real002.out"),
                                   place.File("here/../here/new/c.out"), place.File("there/new/c001.out")));
  }
}

// What a run notes of its targets holds in every directory.
TEST(TargetNaming, NamesAreWhole) {
  const FilterModule module = CopyModule();
  const std::string here = std::filesystem::current_path().string();
  const DestinationFiles files = Files({});
  const Job disc = ListJob({"/media/cd/Track 1"}, module);
  TargetNaming naming(disc, {}, files);
  EXPECT_EQ(naming.Automatic({"wav"}, "/media/cd/Track 1").name, here + "/Track 1.wav");
  EXPECT_EQ(naming.Chosen("own.wav").name, here + "/own.wav");
  EXPECT_EQ(OfferTarget(disc, &module, {}, files).name, "Track 1.out") << "the field shows the name alone";
}

TEST(TargetNaming, ComesToAnEnd) {
  const FilterModule module = CopyModule();
  const Job job = ListJob({"/m/a.mid"}, module);
  DestinationFiles full = Files({});
  full.exists = [](const std::string&) { return true; };
  TargetNaming naming(job, {}, full);
  EXPECT_EQ(naming.Automatic({"mid"}, "/m/a.mid").code, Outcome::TargetFailed);
}

TEST(TargetNaming, ResultFilesOfSearches) {
  struct Case {
    std::size_t entries;
    std::size_t selected;
    bool directory;
    OverwritePolicy overwrite;
    const char* name;
  };
  for (const Case& c : {
           Case{3, 1, false, kReplace, "R /m/0.txt"},
           Case{3, 1, false, kNumber, "N /m/0001.txt"},
           Case{3, 3, false, kReplace, "N /m/Suchergebnisse002.txt"},
           Case{3, 0, false, kReplace, "N /m/Suchergebnisse002.txt"},
           Case{1, 0, false, kReplace, "R /m/Suchergebnisse.txt"},
           Case{1, 0, false, kNumber, "N /m/Suchergebnisse002.txt"},
           Case{0, 0, true, kReplace, "N /m/Suchergebnisse002.txt"},  // a tree may hold many
           Case{0, 1, true, kAsk, "A /m/0.txt"},
       }) {
    Job job;
    job.filter = FilterId::MidiSearch;
    job.sourceDrive = c.directory ? 0 : kListModeDrive;
    job.directory.path = "/m";
    std::vector<std::size_t> selection;
    for (std::size_t i = 0; i < c.entries; ++i)
      job.files.Append({.path = "/m/" + std::to_string(i) + ".mid"});
    for (std::size_t i = 0; i < c.selected && !c.directory; ++i) selection.push_back(i);
    if (c.directory) job.directory.names.assign(c.selected, "0.mid");
    job.files.Select(selection);
    const DestinationFiles files = Files({"/m/Suchergebnisse001.txt", "/m/0.txt"});
    TargetNaming naming(job, {.overwrite = c.overwrite}, files);
    const PlannedTarget target = naming.ResultFile();
    EXPECT_EQ(std::string(1, "RNA"[static_cast<int>(target.taking)]) + " " + target.name, c.name);
  }
}

TEST(TargetNaming, TheFieldOffersWhatTheRunWrites) {
  const FilterModule module = CopyModule();
  const DestinationFiles files = Files({"/m/song.out", "/m/riff.mid"});
  const auto offer = [&](const std::vector<std::string>& sources, const DestinationRules& rules,
                         FilterId filter = FilterId::MidiConverter) {
    Job job = ListJob(sources, module);
    job.filter = filter;
    return OfferTarget(job, &module, rules, files);
  };
  EXPECT_EQ(offer({"/m/song.mid"}, {}).name, "/m/song.out");
  EXPECT_EQ(offer({"/m/song.mid"}, {.overwrite = kNumber}).name, "/m/song001.out");
  EXPECT_EQ(offer({"/m/song.mid", "/m/b.mid"}, {}).name, "/m/song.out");
  EXPECT_FALSE(offer({"/m/song.mid", "/m/b.mid"}, {}).mode.editable);
  EXPECT_EQ(offer({"/m/song.mid"}, {.noPreset = true}).name, std::nullopt) << "the user's text stays";
  EXPECT_EQ(offer({}, {}).name, "") << "nothing is left of an earlier name";
  EXPECT_EQ(offer({}, {}, FilterId::MidiSearch).name, "Suchergebnisse.txt");
  EXPECT_EQ(offer({"/m/song.mid"}, {}, FilterId::MidiPlayer).name, "");

  FilterModule own = CopyModule();
  own.target = [](const FilterParameters&, const std::string&) { return TargetRule{"mid", false}; };
  EXPECT_EQ(OfferTarget(ListJob({"/m/riff.mid"}, own), &own, {}, files).name, "/m/riff001.mid")
      << "never the source";
}

TEST(TargetNaming, DestinationsAsARunBegins) {
  const DestinationRules beside;
  const DestinationRules elsewhere{.sourceDirectory = false, .directory = "/there"};
  const DestinationRules nowhere{.sourceDirectory = false, .directory = "/gone"};
  const DestinationRules offered{.overwrite = kNumber, .offered = "/music/a001.out"};
  const DestinationRules command{.origin = NameOrigin::Command};
  const DestinationRules below{.sourceDirectory = false, .directory = "/there", .structure = "/music"};
  const DestinationRules inPlace{.useSuffix = false};
  struct Case {
    const char* field;
    DestinationRules rules;
    bool kept;
    const char* name;
    bool automatic;
    std::optional<TextId> message;
  };
  for (const Case& c : {
           Case{"", beside, false, "", false, texts::NoTargetName},
           Case{" \t", elsewhere, false, " \t", false, texts::NoTargetName},
           Case{"b.mid", elsewhere, false, "/there/b.mid", false, std::nullopt},
           Case{"b.mid", nowhere, false, "b.mid", false, texts::InvalidTargetDirectory},
           // What begins in no directory begins in that of the targets.
           Case{"sub/b.mid", beside, false, "/music/sub/b.mid", false, std::nullopt},
           Case{"sub/b.mid", elsewhere, false, "sub/b.mid", false, texts::InvalidTargetDirectory},
           Case{"./a.mid/.", beside, false, "./a.mid/.", false, texts::TargetIsSource},
           Case{"/music/a.mid/", beside, false, "/music/a.mid/", false, texts::TargetIsSource},
           Case{"/music/b.mid", elsewhere, false, "/music/b.mid", false, std::nullopt},
           Case{"/gone/b.mid", elsewhere, false, "/gone/b.mid", false, texts::InvalidTargetDirectory},
           Case{"b.mid", beside, false, "/music/b.mid", false, std::nullopt},
           Case{"/gone/b.mid", beside, false, "/gone/b.mid", false, std::nullopt},
           // A name that the run makes directories for stays automatic, another one needs its directory.
           Case{"/there/sub/a.out", below, false, "/there/sub/a.out", true, std::nullopt},
           Case{"/there/sub/b.out", below, false, "/there/sub/b.out", false, texts::InvalidTargetDirectory},
           // The offered name stays automatic, also when another program has taken it meanwhile.
           Case{"/music/a.out", beside, false, "/music/a.out", true, std::nullopt},
           Case{"/music/a001.out", offered, false, "/music/a002.out", true, std::nullopt},
           Case{"/music/a.out", offered, false, "/music/a.out", false, std::nullopt},
           // A source is never a target, but where the settings say so.
           Case{"/music/a.mid", beside, false, "/music/a.mid", false, texts::TargetIsSource},
           Case{"A.MID", beside, false, "A.MID", false, texts::TargetIsSource},
           Case{"/music/link", beside, false, "/music/link", false, texts::TargetIsSource},
           Case{"/music/a.mid", command, true, "/music/a.mid", false, texts::TargetIsSource},
           Case{"/music/a.mid", inPlace, true, "/music/a.mid", true, std::nullopt},
       }) {
    FilterModule module = CopyModule();
    module.target = [&c](const FilterParameters&, const std::string&) {
      return TargetRule{c.kept ? "mid" : "out", c.kept};
    };
    Job job = ListJob({c.rules.structure.empty() ? "/music/a.mid" : "/music/sub/a.mid"}, module);
    job.destinationName = c.field;
    DestinationRules rules = c.rules;
    const DestinationFiles files =
        Files({"/music/a.out", "/music/a001.out"}, {{"/music/a.mid", "/music/link"}});
    EXPECT_EQ(SettleDestination(job, module, rules, files), c.message) << c.field;
    EXPECT_EQ(job.destinationName, c.name) << c.field;
    EXPECT_EQ(rules.origin == NameOrigin::Automatic, c.automatic) << c.field;
  }
}

// A name that was free when it was planned is taken by another program before the file is put in its place.
TEST(TargetNaming, NamesAreTakenByCreatingThem) {
  const FilterModule module = CopyModule();
  const DestinationFiles files = SystemDestinationFiles();
  struct Case {
    OverwritePolicy overwrite;
    NameOrigin origin;
    bool yes;
    std::vector<std::string> questions;
    std::string listing;
    std::string other;  // what the other program's file holds in the end
  };
  const Case cases[] = {
      {kNumber, NameOrigin::Automatic, true, {}, "a.mid a.out a001.out", "other"},
      {kNumber, NameOrigin::Command, true, {}, "a.mid a.out a001.out", "other"},
      {kAsk, NameOrigin::Field, false, {"a.out"}, "a.mid a.out", "other"},
      {kAsk, NameOrigin::Field, true, {"a.out"}, "a.mid a.out", "new"},
      {kNumber, NameOrigin::Field, false, {"a.out"}, "a.mid a.out", "other"},
      {kReplace, NameOrigin::Automatic, false, {}, "a.mid a.out", "new"},
  };
  for (const Case& c : cases) {
    const TemporaryDirectory place;
    const Job job = ListJob({place.Write("a.mid", "ok")}, module);
    TargetNaming naming(job, {.overwrite = c.overwrite, .origin = c.origin}, files);
    const PlannedTarget target = c.origin == NameOrigin::Automatic
                                     ? naming.Automatic({"out"}, place.File("a.mid"))
                                     : naming.Chosen(place.File("a.out"));
    auto staged = StagedFile::Create(target.name);
    ASSERT_THAT(staged, test::IsOk());
    ASSERT_THAT(staged->Write(AsBytes(std::string("new"))), test::IsOk());
    place.Write("a.out", "other");
    std::vector<std::string> questions;
    const auto taken = TakeTarget(*staged, target, naming, [&](const std::string& name) {
      questions.emplace_back(FileNameOf(name));
      return c.yes;
    });
    staged = Failure(Outcome::Cancelled);
    EXPECT_EQ(questions, c.questions);
    EXPECT_EQ(test::Listing(place.Path()), c.listing);
    EXPECT_EQ(test::Content(place.File("a.out")), c.other);
    if (c.listing.ends_with("a001.out")) {
      EXPECT_EQ(taken.value_or(""), place.File("a001.out"));
    }
  }
}

TEST(TargetNaming, ModeByFilterAndSelection) {
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

           Case{FilterId::MidiConverter, 0, 1, false, false, both},
           Case{FilterId::MidiConverter, 0, 2, false, false, automatic},
           Case{FilterId::MidiSearch, 3, 0, true, false, both},
           Case{FilterId::MidiSearch, 3, 2, true, false, automatic},
           Case{FilterId::CdGrabber, 1, 1, true, false, automatic},
           Case{FilterId::CdGrabber, 0, 1, false, false, both},

           Case{FilterId::MidiPlayer, 1, 1, true, false, none},

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

TEST(TargetNaming, ItemsOfARun) {
  Job job;
  EXPECT_EQ(ItemSource(job, 0), "");
  job.directory = {.path = "/music", .names = {"a.mid", "b.mid"}, .indices = {}};
  EXPECT_EQ(ItemCount(job), 2U);
  EXPECT_EQ(ItemSource(job, 9), "/music/b.mid") << "past the end: the last one";
  job.sourceDrive = kListModeDrive;
  EXPECT_EQ(ItemCount(job), 0U);
}

}  // namespace
}  // namespace ts5
