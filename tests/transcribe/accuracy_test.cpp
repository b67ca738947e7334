// Scores played and written down again.
//
// To see the same beside another program: with TS5_PLAYED=DIRECTORY the played files are written there
// (NAME.exact.mid, NAME.human.mid), and where the directory has what the other program made of one
// (NAME.exact.musicxml), its table is printed behind ours.
#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>
#include <optional>

#include "compare.h"
#include "converters/score_formats.h"
#include "converters/transcribe/transcription.h"
#include "platform/files/files.h"
#include "score/score_reader.h"

namespace ts5 {
namespace {

using namespace test;

std::vector<std::pair<std::string, ScoreDocument>> Scores() {
  std::vector<std::pair<std::string, ScoreDocument>> scores;
  const char* const more = std::getenv("TS5_SCORES");
  for (const std::filesystem::path& folder :
       {std::filesystem::path(TS5_DEMO), std::filesystem::path(more == nullptr ? TS5_DEMO "/keine" : more)}) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
      if (entry.path().extension() != ".stv") continue;
      auto document = ReadScore(*ReadFile(entry.path().string()));
      if (document) scores.emplace_back(entry.path().stem().string(), *std::move(document));
    }
  }
  std::ranges::sort(scores, {}, [](const auto& score) { return score.first; });
  return scores;
}

void Print(const std::string& name, const Quality& q) {
  std::printf("%-34.34s %6zu %6.2f %6.2f %6.2f %6.2f %6.2f %6.2f %6.2f\n", name.c_str(), q.notes.all,
              q.notes.PerCent(), q.precise.PerCent(), q.lengths.PerCent(), q.bars.PerCent(),
              q.voices.PerCent(), q.keys.PerCent(), q.letters.PerCent());
}

// What another program made of a played file.
std::optional<Quality> OfPeer(const std::string& path, const ScoreDocument& score) {
  const auto file = ReadFile(path);
  if (!file) return std::nullopt;
  const auto made = converters::ReadAnyScore(*file);
  if (!made) return std::nullopt;
  return Compare(score, made->document);
}

Quality Measure(HumanTouch touch, const std::string& kind) {
  const char* const played = std::getenv("TS5_PLAYED");
  Quality sum;
  Quality ours;  // of those files that the other program has, too
  Quality peer;
  std::printf("%-34s %6s %6s %6s %6s %6s %6s %6s %6s\n", "", "notes", "found", "exact", "length", "bars",
              "voices", "keys", "letter");
  for (const auto& [name, score] : Scores()) {
    const ScoreMusic music = ReadMusic(score);
    const double tempo = music.tempos.empty() ? 120 : music.tempos[0].quarters;
    const Bytes midi = Play(score, tempo, touch);
    const auto made = transcribe::TranscribeMidi(midi, {});
    if (!made) {
      ADD_FAILURE() << name << ": " << ToString(made.error());
      continue;
    }
    const Quality quality = Compare(score, made->score);
    Print(name, quality);
    sum += quality;
    if (played == nullptr) continue;
    const std::string base = std::string(played) + "/" + name + "." + kind;
    EXPECT_TRUE(Succeeded(WriteFile(base + ".mid", midi)));
    if (const auto other = OfPeer(base + ".musicxml", score)) {
      ours += quality;
      peer += *other;
      Print("  the other program", *other);
    }
  }
  Print("", sum);
  if (peer.notes.all > 0) {
    Print("of the files of both, ours", ours);
    Print("the other program", peer);
  }
  return sum;
}

TEST(Transcription, GivesBackWhatAMachinePlays) {
  const Quality quality = Measure({}, "exact");
  EXPECT_GE(quality.notes.PerCent(), 99.5);
  EXPECT_GE(quality.precise.PerCent(), 99.5);
  EXPECT_GE(quality.lengths.PerCent(), 97);
  EXPECT_GE(quality.bars.PerCent(), 99);
  EXPECT_GE(quality.voices.PerCent(), 95);
  EXPECT_GE(quality.keys.PerCent(), 99);
  EXPECT_GE(quality.letters.PerCent(), 98);
}

TEST(Transcription, GivesBackWhatAPersonPlays) {
  const Quality quality = Measure({.seconds = 0.02, .lengths = true, .withoutKeys = true}, "human");
  EXPECT_GE(quality.notes.PerCent(), 97);
  EXPECT_GE(quality.lengths.PerCent(), 90);
  EXPECT_GE(quality.bars.PerCent(), 99);
  EXPECT_GE(quality.voices.PerCent(), 90);
  EXPECT_GE(quality.keys.PerCent(), 90);
  EXPECT_GE(quality.letters.PerCent(), 97);
}

}  // namespace
}  // namespace ts5
