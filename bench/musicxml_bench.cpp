// XML scores: a MusicXML file of 3.5 MB read, written, made a score file and a MIDI file, on one core.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "converters/musicxml_reader.h"
#include "converters/musicxml_writer.h"
#include "converters/score_formats.h"
#include "converters/xml_encoding.h"
#include "converters/xml_tree.h"
#include "peak_memory.h"
#include "peer.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "score/score_midi.h"
#include "search/melody_text.h"
#include "search/score_search.h"

namespace ts5 {
namespace {

constexpr std::size_t kLarge = 3'500'000;

// A real song with its measures again and again.
const std::string& LargeScore() {
  static const std::string score = [] {
    const auto file =
        ReadFile(TS5_TEST_DATA "/musicxml/openscore_Beethoven_Das_Bluemchen_Wunderhold.musicxml");
    if (!file) std::abort();
    std::string text(AsText(*file));
    const std::size_t copies = kLarge / text.size() + 1;
    for (std::size_t part = text.find("<part id"); part != std::string::npos;
         part = text.find("<part id", text.find("</part>", part))) {
      const std::size_t begin = text.find("<measure", part);
      const std::size_t end = text.find("</part>", part);
      const std::string measures = text.substr(begin, end - begin);
      for (std::size_t i = 1; i < copies; ++i) text.insert(begin, measures);
    }
    return text;
  }();
  return score;
}

converters::ScoreWithLosses LargeDocument() {
  auto score = converters::ReadMusicXml(AsBytes(LargeScore()));
  if (!score) std::abort();
  return std::move(*score);
}

void Count(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(LargeScore().size()));
  state.counters["MBPeak"] = PeakMemory();
}

void BM_ReadMusicXml(benchmark::State& state) {
  const ByteView file = AsBytes(LargeScore());
  ResetPeakMemory();
  for (auto _ : state) benchmark::DoNotOptimize(converters::ReadMusicXml(file));
  Count(state);
}
BENCHMARK(BM_ReadMusicXml)->Unit(benchmark::kMillisecond);

void BM_WriteMusicXml(benchmark::State& state) {
  const converters::ScoreWithLosses score = LargeDocument();
  for (auto _ : state) {
    converters::LossReport losses;
    benchmark::DoNotOptimize(converters::WriteMusicXml(score.document, losses));
  }
  Count(state);
}
BENCHMARK(BM_WriteMusicXml)->Unit(benchmark::kMillisecond);

void BM_MusicXmlToMidi(benchmark::State& state) {
  const ByteView file = AsBytes(LargeScore());
  for (auto _ : state) {
    auto image = converters::ScoreImageOf(Bytes(file.begin(), file.end()));
    if (!image) std::abort();
    PlaybackParameters parameters;
    const auto score = OpenAndScan(std::move(*image), parameters);
    if (!score) std::abort();
    benchmark::DoNotOptimize(ScoreToMidi(*score, parameters, {}));
  }
  Count(state);
}
BENCHMARK(BM_MusicXmlToMidi)->Unit(benchmark::kMillisecond);

// The longest time between two looks at the stop while a large file is read.
void BM_LongestTimeWithoutALookAtTheStop(benchmark::State& state) {
  std::string text = LargeScore();
  for (std::size_t part = text.find("<part id"); part != std::string::npos;
       part = text.find("<part id", text.find("</part>", part))) {
    const std::size_t begin = text.find("<measure", part);
    const std::size_t end = text.find("</part>", part);
    const std::string measures = text.substr(begin, end - begin);
    for (int i = 1; i < 10; ++i) text.insert(begin, measures);
  }
  using Clock = std::chrono::steady_clock;
  double longest = 0;
  for (auto _ : state) {
    Clock::time_point last = Clock::now();
    const auto look = [&] {
      const Clock::time_point now = Clock::now();
      longest = std::max(longest, std::chrono::duration<double, std::milli>(now - last).count());
      last = now;
      return false;
    };
    benchmark::DoNotOptimize(converters::ReadMusicXml(AsBytes(text), look));
    look();
  }
  state.counters["longest ms"] = longest;
  state.counters["MB"] = static_cast<double>(text.size()) / 1e6;
}
BENCHMARK(BM_LongestTimeWithoutALookAtTheStop)->Unit(benchmark::kMillisecond)->Iterations(3);

// 2,000 files of scores searched for ten melodies in one pass, beside the XML parser alone on the same files.
void BM_SearchXmlScores(benchmark::State& state) {
  constexpr std::size_t kFiles = 2000;
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "ts5_bench_scores";
  std::vector<std::filesystem::path> scores;
  for (const auto& entry : std::filesystem::directory_iterator(TS5_TEST_DATA "/musicxml")) {
    if (entry.path().extension() != ".mxl") scores.push_back(entry.path());
  }
  std::filesystem::create_directories(folder);
  std::vector<std::string> files;
  for (std::size_t i = 0; i < kFiles; ++i) {
    files.push_back((folder / (std::to_string(i) + ".xml")).string());
    std::filesystem::copy_file(scores[i % scores.size()], files.back(),
                               std::filesystem::copy_options::overwrite_existing);
  }
  ::sync();  // what has just been written is not to be written while it is read
  MelodyQuery query;
  query.options.pitch = PitchMode::Relative;
  query.options.rhythm = RhythmMode::Any;
  for (int i = 0; i < 10; ++i) {
    const auto melody = MelodyFromNumbers(Format("60:240,%d:240,%d:120", 62 + i % 5, 64 + i));
    if (!melody) std::abort();
    if (i == 0) {
      query.elements = melody->elements;
    } else {
      query.more.push_back(melody->elements);
    }
  }
  double parser = 0;
  double whole = 0;
  std::size_t hits = 0;
  const HitSink sink = [&hits](const SearchHit&) {
    ++hits;
    return Outcome::Success;
  };
  // In turns, so that on a busy machine both have their share of what disturbs; so many files at a time that
  // the second finds nothing of the first in the caches.
  constexpr std::size_t kTurn = 250;
  for (auto _ : state) {
    for (std::size_t first = 0; first < kFiles; first += kTurn) {
      const std::span<const std::string> turn = std::span(files).subspan(first, kTurn);
      const double begin = ProcessorSeconds();
      for (const std::string& file : turn) {
        auto text = converters::XmlText(*ReadFile(file));
        pugi::xml_document tree;
        benchmark::DoNotOptimize(converters::ParseXml(tree, *text));
      }
      const double between = ProcessorSeconds();
      for (const std::string& file : turn) {
        if (Failed(SearchScoreFile(file, query, sink, {}).code)) std::abort();
      }
      parser += between - begin;
      whole += ProcessorSeconds() - between;
    }
  }
  std::filesystem::remove_all(folder);
  state.counters["hits"] = static_cast<double>(hits);
  state.counters["times the parser"] = whole / parser;
}
BENCHMARK(BM_SearchXmlScores)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
}  // namespace ts5
