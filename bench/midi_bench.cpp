// The event walker beside a plain loop over the same bytes, and the conversions of single files in memory.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "midi/format_change.h"
#include "midi/midi_containers.h"
#include "midi/midi_events.h"
#include "midi/time_base.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

// All plain files of the test data, and their tracks.
struct Music {
  std::vector<Bytes> files;
  std::vector<ByteView> tracks;
  std::size_t trackBytes = 0;
  std::size_t fileBytes = 0;
};

const Music& RealMusic() {
  static const Music music = [] {
    Music all;
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(TS5_TEST_DATA "/midi")) {
      paths.push_back(entry.path().string());
    }
    std::ranges::sort(paths);
    for (const std::string& path : paths) {
      auto file = ReadFile(path);
      if (file && ContainerOf(*file) == MidiContainer::Smf &&
          DetectMidiKind(*file).kind != MidiFileKind::None) {
        all.files.push_back(std::move(*file));
      }
    }
    for (const Bytes& file : all.files) {
      all.fileBytes += file.size();
      const auto tracks = MidiTracks(file, DetectMidiKind(file).header.trackCount);
      if (!tracks) continue;
      for (const ByteView track : *tracks) {
        all.tracks.push_back(track);
        all.trackBytes += track.size();
      }
    }
    return all;
  }();
  return music;
}

void CountBytes(benchmark::State& state, std::size_t each) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * each));
}

// What reading the bytes costs by itself.
void PlainLoop(benchmark::State& state) {
  const Music& music = RealMusic();
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (const ByteView track : music.tracks) {
      for (const std::uint8_t byte : track) {
        sum += byte;
        benchmark::DoNotOptimize(sum);
      }
    }
  }
  CountBytes(state, music.trackBytes);
}
BENCHMARK(PlainLoop);

void EventWalker(benchmark::State& state) {
  const Music& music = RealMusic();
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (const ByteView track : music.tracks) {
      MidiEventCursor cursor(track);
      for (MidiEvent event; cursor.Next(event);) {
        if (event.IsNoteOn()) sum += event.tick + event.data1;
      }
    }
    benchmark::DoNotOptimize(sum);
  }
  CountBytes(state, music.trackBytes);
}
BENCHMARK(EventWalker);

template <typename Convert>
void EachFile(benchmark::State& state, Convert convert) {
  const Music& music = RealMusic();
  for (auto _ : state) {
    for (const Bytes& file : music.files) benchmark::DoNotOptimize(convert(file));
  }
  CountBytes(state, music.fileBytes);
}

void Merge(benchmark::State& state) {
  EachFile(state, [](ByteView file) { return MergeTracksToFormat0(file); });
}
BENCHMARK(Merge);

void SplitChannels(benchmark::State& state) {
  EachFile(state, [](ByteView file) { return SplitChannelsToFormat1(file); });
}
BENCHMARK(SplitChannels);

void TimeBase(benchmark::State& state) {
  EachFile(state, [](ByteView file) { return ChangeTimeBase(file, 768); });
}
BENCHMARK(TimeBase);

void ToRiff(benchmark::State& state) {
  const RiffFileInfo info{{"Titel", "Komponist", "Copyright", "Beschreibung"}, TodayUtc()};
  EachFile(state, [&](ByteView file) { return SmfToRiff(file, info); });
}
BENCHMARK(ToRiff);

}  // namespace
}  // namespace ts5
