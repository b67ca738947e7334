// Whatever the tree, the list, the settings, the conversions of every kind and searches at once: every byte
// that was there before is there afterwards, except where the user said otherwise.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include "frame/run_support.h"
#include "frame/target_naming.h"
#include "modules/filter_modules.h"
#include "search/hit_texts.h"
#include "search/melody_text.h"
#include "search/search_parameters.h"
#include "search/search_run.h"
#include "search/track_builder.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;
using test::TemporaryDirectory;

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}
  int Below(int count) { return static_cast<int>(engine_() % static_cast<unsigned>(count)); }
  bool OneIn(int count) { return Below(count) == 0; }
  template <typename T>
  const T& Of(const std::vector<T>& all) {
    return all[static_cast<std::size_t>(Below(static_cast<int>(all.size())))];
  }

 private:
  std::mt19937 engine_;
};

const std::vector<std::string> kNames{
    "song.mid", "song.out",  "Song.MID",  "song001.out", "song001.mid", "b.mid",
    "b.out",    "b",         "b.cnv.mid", "song.txt",    "song001.txt", "Suchergebnisse001.txt",
    "song.stv", "song.stvx", "song.xml",  "song.wav",    "b.ogg",       "b.cnv.wav"};
const std::vector<std::string> kDirectories{"d0/", "d1/", "d0/../d1/", "alias/", "d1/./"};

struct Plan {
  Job job;
  FilterModule module;
  DestinationRules rules;
  std::deque<Answer> answers;
  bool searches = false;
  bool ofProgram = false;  // a conversion by one of its filters
  bool inPlace = false;    // the settings convert files where they are
};

Plan RandomSearch(Random& random, const std::string& root) {
  Plan plan;
  plan.searches = true;
  plan.module = MidiSearchModule();
  plan.job.filter = FilterId::MidiSearch;
  auto parameters = std::make_unique<SearchParameters>();
  parameters->melody = *MelodyFromNumbers("60:240,62:240,64:240");
  plan.job.parameters = ParametersValue(std::move(parameters));
  plan.job.sourceDrive = kListModeDrive;
  if (random.OneIn(3)) {
    plan.job.sourceDrive = 0;
    plan.job.directory.path = root + random.Of(kDirectories);
  }
  for (int i = 1 + random.Below(4); i > 0; --i)
    plan.job.files.Append(EntryFromPath(root + random.Of(kDirectories) + random.Of(kNames)));
  plan.rules = {.sourceDirectory = random.OneIn(2),
                .directory = root + random.Of(kDirectories),
                .noPreset = random.OneIn(8),
                .overwrite = static_cast<OverwritePolicy>(random.Below(3)),
                .origin = random.OneIn(4) ? NameOrigin::Command : NameOrigin::Field};
  static const std::vector<std::string> kResults{"song.txt", "song001.txt", "Suchergebnisse001.txt"};
  if (random.OneIn(2)) {
    plan.job.destinationName =
        root + random.Of(kDirectories) + random.Of(random.OneIn(4) ? kNames : kResults);
  }
  plan.answers = {random.Of(std::vector{Answer::Yes, Answer::No, Answer::No, Answer::Cancelled})};
  return plan;
}

// The filters that make files of files, with something that each takes.
struct Conversion {
  FilterId filter;
  const char* sample;
  const char* parameter = "";
  const char* value = "";
  bool formatKept = false;
};
constexpr Conversion kConversions[] = {
    {FilterId::ScoreToMidi, "../../demo/Bruder Jakob.stv"},
    {FilterId::MidiToScore, "midi/music21_test10.mid"},
    {FilterId::MidiConverter, "midi/made_c_major_scale.rmi", "FormatBig", "1", true},
    {FilterId::XmlConverter, "musicxml/osmd_HelloWorld.xml"},
    {FilterId::WaveConverter, "audio/wav_left_only.wav", "SamplesPerSec", "11025", true},
    {FilterId::AudioCompressor, "audio/wav_left_only.wav", "CodecType", "3"},
    {FilterId::AudioDecompressor, "audio/ogg_vorbis_mono_11025.ogg"},
};

Plan RandomPlan(Random& random, const std::string& root, const Conversion& conversion) {
  if (random.OneIn(3)) return RandomSearch(random, root);
  Plan plan;
  bool kept = random.OneIn(3);
  RegistryValues values;
  if (random.OneIn(2)) {
    plan.module = *FindModule(conversion.filter);
    plan.ofProgram = true;
    kept = conversion.formatKept;
    values.SetText(conversion.parameter, conversion.value);
  } else {
    plan.module = test::CopyModule(FilterId::MidiConverter, random.OneIn(2) ? 1U : 3U);
    values.SetText("Kept", kept ? "1" : "0");
    values.SetText("Extension", random.OneIn(2) ? "mid" : "out");
  }
  std::vector<std::string> sources;
  for (int i = 1 + random.Below(6); i > 0; --i)
    sources.push_back(root + random.Of(kDirectories) + random.Of(kNames));
  plan.job = test::ListJob(sources, plan.module);
  plan.job.parameters = LoadParameters(&plan.module, values);
  plan.rules = {.sourceDirectory = random.OneIn(2),
                .directory = root + random.Of(kDirectories),
                .useSuffix = random.OneIn(2),
                .noPreset = random.OneIn(8),
                .overwrite = static_cast<OverwritePolicy>(random.Below(3)),
                .origin = sources.size() == 1 && random.OneIn(4) ? NameOrigin::Command : NameOrigin::Field};
  if (sources.size() == 1 && random.OneIn(2))
    plan.job.destinationName = root + random.Of(kDirectories) + random.Of(kNames);
  for (int i = 0; i < 10; ++i) plan.answers.push_back(random.OneIn(3) ? Answer::Yes : Answer::No);
  plan.inPlace = kept && !plan.rules.useSuffix && plan.rules.overwrite == OverwritePolicy::Replace;
  return plan;
}

// The sample, a MIDI file with the melody, an old result file, or what the copying filter takes. Each differs
// from the others by what is no part of it any more.
std::string RandomContent(Random& random, int number, const std::string& sample, bool text) {
  static const std::string kMidi = [] {
    return std::string(
        AsText(test::MidiImage({test::TrackBuilder().End(),
                                test::TrackBuilder().Note(0, 60).Note(192, 62).Note(192, 64).End(192)})));
  }();
  const std::string tail = std::to_string(number);
  if (random.OneIn(text ? 2 : 8)) return std::string(ResultTagLine()) + tail;
  if (random.OneIn(2)) return sample + "<!--" + tail + "-->";
  if (random.OneIn(3)) return kMidi + tail;
  return random.Of(std::vector<std::string>{"ok ", "ok ", "ok ", "read error ", "wrong format "}) + tail;
}

void RandomTree(Random& random, const std::string& root, const std::string& sample) {
  fs::remove_all(root);
  for (const char* const directory : {"d0", "d1"}) fs::create_directories(root + directory);
  fs::create_directory_symlink(root + "d1", root + "alias");
  int number = 0;
  for (const char* const directory : {"d0/", "d1/"}) {
    for (const std::string& name : kNames) {
      const std::string path = root + directory + name;
      if (random.OneIn(4)) continue;
      const std::string other = root + random.Of(kDirectories) + random.Of(kNames);
      std::error_code error;
      if (random.OneIn(6)) {
        fs::create_symlink(other, path, error);
      } else if (random.OneIn(8)) {
        fs::create_hard_link(other, path, error);
      } else {
        std::ofstream(path) << RandomContent(random, ++number, sample, name.ends_with(".txt"));
      }
    }
  }
}

std::string TruePath(const std::string& path) {
  std::error_code error;
  const fs::path canonical = fs::weakly_canonical(path, error);
  return error ? path : canonical.string();
}

// The regular files by their one true path.
std::map<std::string, std::string> Contents(const std::string& root) {
  std::map<std::string, std::string> contents;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (!entry.is_symlink() && entry.is_regular_file())
      contents[fs::canonical(entry.path()).string()] = test::Content(entry.path().string());
  }
  return contents;
}

bool IsResult(const std::string& content) {
  return content.starts_with(ResultTagLine());
}

// A search of a directory searches every MIDI file in it.
std::set<std::string> SourcesOf(const Job& job, const std::map<std::string, std::string>& files) {
  std::set<std::string> sources;
  for (std::size_t item = 0; item < ItemCount(job); ++item) sources.insert(TruePath(ItemSource(job, item)));
  if (job.Mode() == SourceMode::List) return sources;
  for (const auto& [path, content] : files) {
    if (path.starts_with(TruePath(job.directory.path)) && content.starts_with("MThd")) sources.insert(path);
  }
  return sources;
}

// Whether the user said, by the settings or with Yes, that what was there may go.
bool MayReplace(const Plan& plan, const test::RecordingHost& host, const std::set<std::string>& sources,
                const std::map<std::string, std::string>& before, const std::string& destination) {
  const bool replaces = plan.rules.overwrite == OverwritePolicy::Replace;
  const std::string target = TruePath(destination);
  if (!plan.searches) {
    const bool said = replaces || std::ranges::count(host.status, destination) > 0;  // asked about
    return said && (plan.inPlace || !sources.contains(target));
  }
  const auto old = before.find(target);
  const bool said = !host.questions.empty() ? plan.answers.front() == Answer::Yes
                                            : replaces && (old == before.end() || IsResult(old->second));
  return said && !sources.contains(target);
}

TEST(RunProperty, EveryByteThatWasThereIsThereAfterwards) {
  const char* const wanted = std::getenv("TS5_PROPERTY_ROUNDS");
  const int rounds = wanted != nullptr ? std::atoi(wanted) : 140;
  const TemporaryDirectory place;
  const std::string root = fs::canonical(place.Path()).string() + "/root/";
  int converted = 0;
  int replaced = 0;
  int overwritten = 0;  // of these by results of searches
  int extended = 0;
  std::map<FilterId, int> made;  // by filters of the program
  for (int round = 0; round < rounds; ++round) {
    Random random(static_cast<unsigned>(round) + 1);
    const Conversion& conversion = kConversions[static_cast<std::size_t>(round) % std::size(kConversions)];
    RandomTree(random, root, test::Content(test::DataPath(conversion.sample)));
    const auto before = Contents(root);
    std::vector<Plan> plans;
    for (int i = 1 + random.Below(3); i > 0; --i) plans.push_back(RandomPlan(random, root, conversion));

    // Sources by what they are, as links and spellings lead to them before anything runs.
    std::vector<std::set<std::string>> sources;
    for (const Plan& plan : plans) sources.push_back(SourcesOf(plan.job, before));
    std::vector<std::shared_ptr<test::RecordingHost>> hosts;
    std::vector<RunResult> results(plans.size());
    {
      std::vector<std::jthread> runs;
      for (std::size_t i = 0; i < plans.size(); ++i) {
        hosts.push_back(std::make_shared<test::RecordingHost>(plans[i].answers));
        runs.emplace_back([&plan = plans[i], &result = results[i], host = hosts[i]] {
          const DestinationFiles files = SystemDestinationFiles();
          if (SettleDestination(plan.job, plan.module, plan.rules, files)) return;  // refused: nothing runs
          result = test::RunJob(plan.job, plan.module, plan.rules, host);
        });
      }
    }
    std::set<std::string> permitted;
    std::set<std::string> targets;
    for (std::size_t i = 0; i < plans.size(); ++i) {
      const Plan& plan = plans[i];
      std::set<std::string> written;
      for (const RunItem& item : results[i].items) written.insert(item.destination);
      if (plan.searches && !results[i].items.empty()) written.insert(plan.job.destinationName);
      written.erase("");
      for (const std::string& destination : written) {
        const std::string target = TruePath(destination);
        if (MayReplace(plan, *hosts[i], sources[i], before, destination)) permitted.insert(target);
        // What a search leaves behind when its target is refused or the user says no is the old file.
        if (plan.searches) continue;
        ++converted;
        if (plan.ofProgram) ++made[plan.job.filter];
        targets.insert(destination);
      }
    }
    const auto after = Contents(root);
    for (const auto& [path, content] : before) {
      const auto found = after.find(path);
      if (found != after.end() && found->second == content) continue;
      // Searches go on behind what an old result file holds.
      if (found != after.end() && IsResult(content) && found->second.starts_with(content)) {
        ++extended;
        continue;
      }
      ++replaced;
      if (found != after.end() && IsResult(found->second)) ++overwritten;
      ASSERT_TRUE(permitted.contains(path)) << "round " << round << ": " << path << " held " << content;
      ASSERT_NE(found, after.end()) << "round " << round << ": " << path << " is gone";
    }
    for (const auto& [path, content] : after) ASSERT_EQ(path.find(".sTS5-"), std::string::npos) << path;
    // Each success has its file, unless another run was allowed to replace it.
    for (const std::string& target : targets)
      ASSERT_TRUE(FileExists(target)) << "round " << round << ": " << target;
  }
  EXPECT_GT(converted, rounds);
  EXPECT_GT(replaced, rounds / 10);
  EXPECT_GT(overwritten, 0);
  EXPECT_GT(extended, 0);
  for (const Conversion& conversion : kConversions)
    EXPECT_GT(made[conversion.filter], 0) << Descriptor(conversion.filter).identifier;
}

// Names that several runs number at once are all given to one file each.
TEST(RunProperty, RunsAtOnceNumberWithoutLoss) {
  const TemporaryDirectory place;
  constexpr int kRuns = 4;
  constexpr int kFiles = 40;
  const FilterModule module = test::CopyModule(FilterId::MidiConverter, 2);
  std::vector<std::string> sources;
  for (int i = 0; i < kFiles; ++i)
    sources.push_back(
        place.Write("in/" + std::to_string(i % 10) + "x" + std::to_string(i / 10) + ".mid", "ok"));
  fs::create_directory(place.File("out"));
  const DestinationRules rules{
      .sourceDirectory = false, .directory = place.File("out"), .overwrite = OverwritePolicy::Number};
  std::vector<RunResult> results(kRuns);
  std::vector<std::shared_ptr<test::RecordingHost>> hosts;
  {
    std::vector<std::jthread> runs;
    for (int i = 0; i < kRuns; ++i) {
      hosts.push_back(std::make_shared<test::RecordingHost>());
      runs.emplace_back([&, host = hosts.back(), i] {
        results[static_cast<std::size_t>(i)] =
            test::RunJob(test::ListJob(sources, module), module, rules, host);
      });
    }
  }
  std::set<std::string> targets;
  for (const RunResult& result : results) {
    for (const RunItem& item : result.items) {
      EXPECT_EQ(item.code, 0);
      EXPECT_TRUE(targets.insert(item.destination).second) << item.destination;
      EXPECT_EQ(test::Content(item.destination), "ok copied");
    }
  }
  EXPECT_EQ(targets.size(), static_cast<std::size_t>(kRuns * kFiles));
  for (const auto& host : hosts) EXPECT_TRUE(host->questions.empty());
}

}  // namespace
}  // namespace ts5
