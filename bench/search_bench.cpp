// The melody search: from memory, on one core, beside the walk over the same bytes and the mere reading of
// them; and over a tree of files, beside the reading of every byte of it.

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "midi/midi_events.h"
#include "midi/midi_file.h"
#include "platform/files/files.h"
#include "search/directory_walk.h"
#include "search/midi_search.h"
#include "search/ordered_search.h"
#include "search/track_matcher.h"

namespace ts5 {
namespace {

// A piece for one player: melody notes with their note-offs, chords, controllers and bends between, times a
// little off the beat as they are played.
Bytes MusicTrack(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  const auto pick = [&](unsigned most) { return static_cast<unsigned>(random() % (most + 1)); };
  ByteWriter out;
  out.Reserve(size + 64);
  int running = 0;
  const auto message = [&](std::uint32_t delta, int status, unsigned a, unsigned b) {
    (void)WriteVarLen(delta, out);
    if (status != running) out.U8(static_cast<std::uint8_t>(status));
    running = status;
    out.U8(static_cast<std::uint8_t>(a));
    out.U8(static_cast<std::uint8_t>(b));
  };
  unsigned key = 60;
  while (out.Size() < size) {
    key = 48 + (key - 48 + 36 + pick(8) - 4) % 36;
    const unsigned chord = pick(3) == 0 ? 2 : 0;
    const bool offs = pick(1) == 0;  // note-offs as such, or as note-ons without velocity
    for (unsigned i = 0; i <= chord; ++i)
      message(i == 0 ? pick(40) : pick(2), 0x90, key + 4 * i, 40 + pick(80));
    if (pick(3) == 0) message(pick(60), 0xB0, 7, pick(127));
    for (unsigned i = 0; i <= chord; ++i) {
      message(i == 0 ? 60 + pick(400) : pick(2), offs ? 0x80 : 0x90, key + 4 * i, offs ? 64 : 0);
    }
  }
  out.U32Be(0x00FF2F00);
  return out.Release();
}

void AppendHeader(std::uint16_t tracks, ByteWriter& out) {
  out.Append("MThd");
  out.U32Be(6);
  out.U16Be(1);
  out.U16Be(tracks);
  out.U16Be(480);
}

void AppendTrack(const Bytes& track, ByteWriter& out) {
  out.Append("MTrk");
  out.U32Be(static_cast<std::uint32_t>(track.size()));
  out.Append(ByteView(track));
}

// What is searched: a player's track that no branch predictor foresees, and the tracks of the real files.
struct Source {
  const char* name;
  std::vector<Bytes> tracks;
  std::size_t size = 0;
};

std::vector<Bytes> RealTracks() {
  std::vector<Bytes> tracks;
  DirectoryWalk walk(TS5_TEST_DATA "/midi");
  while (const auto path = walk.Next()) {
    const auto file = ReadFile(*path);
    const MidiFileInfo info = file ? DetectMidiKind(*file) : MidiFileInfo{};
    if (info.kind == MidiFileKind::None) continue;
    MidiTrackReader reader(MidiBytesOf(*file), info.header.trackCount);
    for (ByteView track; reader.Next(track);) tracks.emplace_back(track.begin(), track.end());
  }
  return tracks;
}

const Source& SourceOf(std::int64_t index) {
  static const std::vector<Source> kSources = [] {
    std::vector<Source> sources = {{"played", {MusicTrack(std::size_t{32} << 20, 1)}},
                                   {"real", RealTracks()}};
    for (Source& source : sources) {
      for (const Bytes& track : source.tracks) source.size += track.size();
    }
    return sources;
  }();
  return kSources[static_cast<std::size_t>(index)];
}

void SetRate(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * static_cast<std::int64_t>(state.iterations()));
}

void BM_SearchReadingFloor(benchmark::State& state) {
  const Source& source = SourceOf(state.range(0));
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (const Bytes& track : source.tracks) {
      for (const std::uint8_t byte : track) sum += byte;
    }
    benchmark::DoNotOptimize(sum);
  }
  SetRate(state, source.size);
  state.SetLabel(source.name);
}
BENCHMARK(BM_SearchReadingFloor)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

void BM_SearchWalkFloor(benchmark::State& state) {
  const Source& source = SourceOf(state.range(0));
  for (auto _ : state) {
    std::size_t notes = 0;
    for (const Bytes& track : source.tracks) {
      MidiEventCursor cursor(track);
      for (MidiEvent event; cursor.Next(event);) notes += static_cast<std::size_t>(event.IsNoteOn());
    }
    benchmark::DoNotOptimize(notes);
  }
  SetRate(state, source.size);
  state.SetLabel(source.name);
}
BENCHMARK(BM_SearchWalkFloor)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

// Even quarters, which is what most music is made of: nearly every note might begin a match.
std::vector<MelodyElement> EvenQuarters() {
  return {{60, 240}, {67, 240}, {64, 240}, {72, 240}, {71, 240}, {55, 240}, {60, 240}, {48, 240}};
}

// Eight notes that hardly ever come: neither the intervals nor the rhythm.
MelodyQuery RareMelody() {
  MelodyQuery query;
  query.elements = {{60, 240}, {67, 120}, {64, 360}, {72, 60}, {71, 480}, {55, 180}, {60, 90}, {48, 720}};
  query.options.drumTrack = true;
  return query;
}

void BM_SearchTrack(benchmark::State& state) {
  const Source& source = SourceOf(state.range(0));
  MelodyQuery query = RareMelody();
  if (state.range(3) != 0) query.elements = EvenQuarters();
  query.options.rhythm = static_cast<RhythmMode>(state.range(1));
  query.options.pitch = static_cast<PitchMode>(state.range(2));
  const PreparedMelody melody = PrepareMelody(query.elements, 480);
  const TimeSignatureMap signatures = {{}};
  const std::string file = "x.mid";
  const CancelCheck never;
  const HitSink sink = [](const SearchHit&) { return Outcome::Success; };
  const TrackContext context = {{&melody, 1}, query.options, signatures, 480, 120, file, sink, never};
  std::uint64_t hits = 0;
  for (auto _ : state) {
    hits = 0;
    for (const Bytes& track : source.tracks) hits += SearchMidiTrack(track, 0, context).hits;
  }
  state.counters["hits"] = static_cast<double>(hits);
  SetRate(state, source.size);
  state.SetLabel(source.name);
}
BENCHMARK(BM_SearchTrack)
    ->ArgNames({"source", "rhythm", "pitch", "even"})
    ->ArgsProduct({{0, 1}, {0, 1, 2}, {0, 1, 2, 3}, {0}})
    ->ArgsProduct({{0, 1}, {0, 1}, {3}, {1}})
    ->Unit(benchmark::kMicrosecond);

Bytes FileOf(const Bytes& track, bool conductor) {
  ByteWriter out;
  AppendHeader(conductor ? 2 : 1, out);
  if (conductor) AppendTrack(Bytes{0x00, 0xFF, 0x2F, 0x00}, out);
  AppendTrack(track, out);
  return out.Release();
}

void SearchIn(benchmark::State& state, const Bytes& file, MelodyQuery query) {
  query.options.rhythm = static_cast<RhythmMode>(state.range(1));
  query.options.pitch = static_cast<PitchMode>(state.range(2));
  const HitSink sink = [](const SearchHit&) { return Outcome::Success; };
  for (auto _ : state) {
    if (Failed(SearchMidiImage(file, "x.mid", query, sink, {}).code)) state.SkipWithError("failed");
  }
  SetRate(state, file.size());
}

// Whole files: one with a conductor track of its own, and one whose only track holds everything.
void BM_SearchFile(benchmark::State& state) {
  SearchIn(state, FileOf(SourceOf(0).tracks.front(), state.range(0) != 0), RareMelody());
}
BENCHMARK(BM_SearchFile)
    ->ArgNames({"conductor", "rhythm", "pitch"})
    ->ArgsProduct({{0, 1}, {0, 1}, {0, 3}})
    ->Unit(benchmark::kMillisecond);

// Several melodies in one pass: ten are to cost at most half as much again as one.
MelodyQuery RareMelodies(std::int64_t count) {
  MelodyQuery query = RareMelody();
  for (std::int64_t i = 1; i < count; ++i) {
    query.more.push_back(query.elements);
    for (MelodyElement& note : query.more.back()) {
      note.pitch = static_cast<std::int16_t>(note.pitch + i * i % 7);
      note.duration = static_cast<std::int16_t>(note.duration + i * 15);
    }
    std::rotate(query.more.back().begin(), query.more.back().begin() + i % 8, query.more.back().end());
  }
  return query;
}

void BM_SearchManyMelodies(benchmark::State& state) {
  SearchIn(state, FileOf(SourceOf(0).tracks.front(), false), RareMelodies(state.range(0)));
}
BENCHMARK(BM_SearchManyMelodies)
    ->ArgNames({"melodies", "rhythm", "pitch"})
    ->ArgsProduct({{1, 10}, {0, 1, 2}, {0, 2}})
    ->Unit(benchmark::kMillisecond);

// --- a tree of files

constexpr int kTreeFiles = 5000;

// 5,000 files of 10 to 90 KB in 50 directories, removed at the end.
class Tree {
 public:
  Tree()
      : path_(std::filesystem::temp_directory_path() / ("ts5-search-bench-" + std::to_string(::getpid()))) {
    for (int i = 0; i < kTreeFiles; ++i) {
      const auto directory = path_ / std::to_string(i % 50);
      std::filesystem::create_directories(directory);
      const Bytes track =
          MusicTrack(static_cast<std::size_t>(10'000 + i * 7919 % 80'000), static_cast<unsigned>(i));
      const Bytes bytes = FileOf(track, true);
      std::ofstream file(directory / (std::to_string(i) + ".mid"), std::ios::binary);
      file << AsText(bytes);
      size_ += bytes.size();
    }
  }
  ~Tree() { std::filesystem::remove_all(path_); }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;
  [[nodiscard]] std::string Path() const { return path_.string(); }
  [[nodiscard]] std::size_t Size() const { return size_; }

 private:
  std::filesystem::path path_;
  std::size_t size_ = 0;
};

const Tree& TheTree() {
  static const Tree kTree;
  return kTree;
}

void BM_SearchTreeReadingFloor(benchmark::State& state) {
  const std::string command = "find '" + TheTree().Path() + "' -type f -print0 | xargs -0 cat > /dev/null";
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError("cat failed");
  }
  SetRate(state, TheTree().Size());
}
BENCHMARK(BM_SearchTreeReadingFloor)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_SearchTree(benchmark::State& state) {
  const MelodyQuery query = RareMelodies(state.range(1));
  const FileSearch search = [&](const std::string& path, const HitSink& sink, const CancelCheck& cancelled) {
    return SearchMidiFile(path, query, sink, cancelled);
  };
  int searched = 0;
  for (auto _ : state) {
    DirectoryWalk walk(TheTree().Path());
    searched = 0;
    OrderedSearchEvents events;
    events.next = [&] { return walk.Next(); };
    events.begin = [](const std::string&) {};
    events.hit = [](const SearchHit&) { return Outcome::Success; };
    events.end = [&](const std::string&, const SearchOutcome& outcome) {
      searched += Succeeded(outcome.code) ? 1 : 0;
      return true;
    };
    SearchInOrder(search, events, {}, static_cast<unsigned>(state.range(0)));
  }
  if (searched != kTreeFiles) state.SkipWithError("files were not searched");
  rusage usage{};
  (void)::getrusage(RUSAGE_SELF, &usage);
  state.counters["peak_rss_MB"] = static_cast<double>(usage.ru_maxrss) / 1024;  // of the whole program
  SetRate(state, TheTree().Size());
}
BENCHMARK(BM_SearchTree)
    ->ArgNames({"threads", "melodies"})
    ->ArgsProduct({{1, 2}, {1, 10}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

// From the start of a search to its first hit, in a tree whose first file has one.
void BM_SearchFirstHit(benchmark::State& state) {
  MelodyQuery query;
  query.elements = {{60, 240}, {64, 240}};
  query.options = {.rhythm = RhythmMode::Any, .pitch = PitchMode::Relative};
  const FileSearch search = [&](const std::string& path, const HitSink& sink, const CancelCheck& cancelled) {
    return SearchMidiFile(path, query, sink, cancelled);
  };
  (void)TheTree();
  for (auto _ : state) {
    DirectoryWalk walk(TheTree().Path());
    OrderedSearchEvents events;
    events.next = [&] { return walk.Next(); };
    events.begin = [](const std::string&) {};
    events.hit = [](const SearchHit&) { return Outcome::Cancelled; };
    bool found = false;
    events.end = [&](const std::string&, const SearchOutcome& outcome) {
      found = outcome.code == Outcome::Cancelled;
      return !found;
    };
    SearchInOrder(search, events, {}, static_cast<unsigned>(state.range(0)));
    if (!found) state.SkipWithError("no hit");
  }
}
BENCHMARK(BM_SearchFirstHit)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ts5
