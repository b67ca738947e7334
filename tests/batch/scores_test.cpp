// Scores of every format from the console: what is found in one is found in the other, what the player plays
// is what the converter writes.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "batch/console.h"
#include "batch/run_program.h"
#include "midi/midi_sequence.h"
#include "platform/files/files.h"
#include "support/test_data.h"

namespace ts5::batch {
namespace {

namespace fs = std::filesystem;
using namespace test;
using nlohmann::json;

class ScoresTest : public testing::Test {
 protected:
  json Run(const std::vector<std::string>& line) {
    const ProgramEnd end = Program(line, folder_.Path(), home_.File("registry.sqlite")).Wait();
    EXPECT_EQ(end.status, kExitSuccess) << end.err;
    return end.out.empty() ? json() : json::parse(end.out);
  }
  // In all formats: a.musicxml, a.xml, a.mxl, a.stvx, a.stv.
  std::vector<std::string> AllFormats(const std::string& data) {
    const std::string source = folder_.File("a.musicxml");
    fs::copy_file(DataPath("musicxml/" + data), source, fs::copy_options::overwrite_existing);
    std::vector<std::string> files = {source};
    for (const char* name : {"a.xml", "a.mxl", "a.stvx", "a.stv"}) {
      files.push_back(folder_.File(name));
      Run({"run", "XmlConverter", "--json", "--overwrite", "yes", "--dest", files.back(), source});
    }
    return files;
  }
  // Rows of notes that follow one another, of the first voice, as --melody takes them.
  std::vector<std::string> Melodies(const std::string& file, std::size_t wanted) {
    const json score = Run({"score", file, "--json"});
    std::vector<std::string> melodies;
    std::string row;
    std::int64_t end = -1;
    int notes = 0;
    for (const json& note : score["notes"]) {
      const bool plain = note["staff"] == score["notes"][0]["staff"] &&
                         note["voice"] == score["notes"][0]["voice"] && note["tie"].is_null() &&
                         note["length"] > 0;
      if (!plain || note["start"] != end) {
        row.clear();
        notes = 0;
      }
      end = note["start"].get<std::int64_t>() + note["length"].get<std::int64_t>();
      if (!plain) continue;
      row += (row.empty() ? "" : ",") + std::to_string(note["keys"].back().get<int>()) + ":" +
             std::to_string(note["length"].get<std::int64_t>() * 240 / 6720);
      if (++notes < 4) continue;
      melodies.push_back(std::exchange(row, {}));
      notes = 0;
      if (melodies.size() == wanted) break;
    }
    return melodies;
  }

  TemporaryDirectory folder_;
  TemporaryDirectory home_;
};

TEST_F(ScoresTest, HitsAreTheSameInEveryFormat) {
  const std::vector<std::string> files = AllFormats("openscore_Beethoven_Das_Bluemchen_Wunderhold.musicxml");
  const std::vector<std::string> melodies = Melodies(files[0], 10);
  ASSERT_EQ(melodies.size(), 10U);
  int melodiesFound = 0;
  for (const std::string& melody : melodies) {
    std::vector<std::string> line = {"run", "ScoreSearch", "--json", "--melody", melody};
    line.insert(line.end(), files.begin(), files.end());
    std::map<std::string, json> hits;
    const json found = Run(line);
    for (json hit : found["hits"]) {
      const std::string file = hit["file"];
      hit.erase("file");
      hits[file].push_back(hit);
    }
    melodiesFound += hits.contains(files[0]) ? 1 : 0;
    for (const std::string& file : files) EXPECT_EQ(hits[file], hits[files[0]]) << melody << " " << file;
  }
  // One that begins again within itself may be missed, in all of them.
  EXPECT_GE(melodiesFound, 8);
}

// Time in milliseconds from the first note on, message.
std::vector<std::pair<std::int64_t, std::uint32_t>> Notes(const std::string& path) {
  std::vector<std::pair<std::int64_t, std::uint32_t>> notes;
  const auto file = ReadFile(path);
  if (!file) return notes;
  const auto sequence = MidiSequence::FromFile(*file);
  if (!sequence) return notes;
  std::int64_t first = -1;
  for (const SequenceMessage& message : sequence->Messages()) {
    if (!message.IsNote()) continue;
    const std::int64_t time = (message.time.count() + 500'000) / 1'000'000;
    if (first < 0) first = time;
    const bool on = message.IsNoteOn();
    notes.emplace_back(time - first, on ? message.message & 0xFFFF : (message.message & 0xFF0F) | 0x80);
  }
  return notes;
}

TEST_F(ScoresTest, WhatIsPlayedIsWhatIsWritten) {
  const std::string played = folder_.File("gespielt.mid");
  const std::string written = folder_.File("geschrieben.mid");
  for (const std::string& file : AllFormats("osmd_test_repeat_volta_simple.musicxml")) {
    Run({"run", "ScorePlayer", "--json", "--device", "capture:" + played, file});
    Run({"run", "ScoreToMidi", "--json", "--set", "NewMethod=1", "--overwrite", "yes", "--dest", written,
         file});
    const auto expected = Notes(written);
    EXPECT_GE(expected.size(), 8U) << file;
    const auto heard = Notes(played);
    ASSERT_EQ(heard.size(), expected.size()) << file;
    for (std::size_t i = 0; i < heard.size(); ++i) {
      EXPECT_EQ(heard[i].second, expected[i].second) << file << " " << i;
      // It is played in real time, on a machine that may have other work.
      EXPECT_NEAR(static_cast<double>(heard[i].first), static_cast<double>(expected[i].first), 90)
          << file << " " << i;
    }
  }
}

TEST_F(ScoresTest, WhatIsNotHeardAsItIsWrittenIsTold) {
  // A tempo that is no whole number, another one within the bar, and a repeat that is played three times.
  const std::string note =
      "<note><pitch><step>C</step><octave>4</octave></pitch><duration>2</duration></note>";
  const std::string source = folder_.Write(
      "a.musicxml",
      "<score-partwise><part-list><score-part id='P'/></part-list><part id='P'><measure number='7'><sound "
      "tempo='76.5'/>" +
          note + "<sound tempo='100'/>" + note +
          "<barline><repeat direction='backward' times='3'/></barline></measure></part></score-partwise>");
  for (const bool engine : {false, true}) {
    const json result = Run({"run", "ScoreToMidi", "--json", "--overwrite", "yes", "--dest",
                             folder_.File("a.mid"), "--set", engine ? "NewMethod=1" : "NewMethod=0", source});
    const json losses = result["items"][0]["losses"];
    EXPECT_EQ(losses.size(), engine ? 1U : 0U);
    EXPECT_TRUE(!engine || losses[0]["bar"] == "7");
    const auto notes = Notes(folder_.File("a.mid"));
    ASSERT_EQ(notes.size(), 12U);
    const double half = 120'000 / (engine ? 77.0 : 76.5);
    EXPECT_NEAR(static_cast<double>(notes[2].first), half, 1);
    EXPECT_NEAR(static_cast<double>(notes[8].first), 2 * (half + 1200), 2);
  }
}

}  // namespace
}  // namespace ts5::batch
