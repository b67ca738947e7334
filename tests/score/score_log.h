// Scores for tests, and what the engine makes of them as lines of text.
#pragma once

#include <string>
#include <vector>

#include "score/score_midi.h"
#include "score/score_writer.h"

namespace ts5::test {

// Staff positions in the treble clef.
inline constexpr std::int8_t kMiddleC = -7;
inline constexpr std::int8_t kD = -6;
inline constexpr std::int8_t kE = -5;
inline constexpr std::int8_t kF = -4;

inline ScoreNote Note(std::int8_t position = kMiddleC, std::int8_t accidental = 0) {
  return {position, accidental, 0};
}
inline ScoreItem Quarter(std::int8_t position = kMiddleC) {
  return ChordItem(2, {Note(position)});
}

inline ScoreItem With(ScoreItem item, DrawingItem drawing) {
  item.drawings.push_back(std::move(drawing));
  return item;
}
inline ScoreItem Flagged(ScoreItem item, std::uint8_t flags) {
  item.group.flags = flags;
  return item;
}
inline ScoreItem Grace(std::int8_t position, std::uint8_t form) {
  ScoreItem item = Flagged(Quarter(position), kGroupZeroDuration | kGroupGrace);
  item.group.graceForm = form;
  return item;
}
inline ScoreItem Tied(ScoreItem item, bool before, bool onward) {
  item.group.tieFromBefore = before;
  item.group.tieOnward = onward;
  return item;
}

inline StaffLayout StaffNamed(std::string name, std::int32_t sound = 0) {
  StaffLayout staff;
  staff.name = std::move(name);
  staff.sound = sound;
  staff.volume = 100;
  return staff;
}

// One staff with one voice in one system.
inline ScoreDocument OneVoice(VoiceItems items, std::uint32_t tempo = 120) {
  ScoreDocument score;
  score.staves.push_back(StaffNamed("A"));
  SystemItems system;
  system.tempo = tempo;
  system.staves.push_back({0, {}, {std::move(items)}});
  score.systems.push_back(std::move(system));
  return score;
}

// The information part of an older format (0 to 2), of two staves.
inline Bytes OldScore(unsigned version, bool landscape) {
  ByteWriter out;
  out.U32Le(kOldScoreMagic + version);
  out.Fill(4, 7);
  out.U16Le(landscape ? 2 : 1);
  out.Fill(30, 7);
  out.Fill(version == 0 ? 60 : version == 1 ? 62 : 121, 7);
  out.U16Le(2);  // a text of two bytes and its terminator, 60 bytes
  out.Fill(63, 7);
  out.U16Le(0xFFFF);
  out.Fill(66, 7);
  out.U16Le(2);
  out.Fill(version == 0 ? 18 : 32, 7);
  for (int staff = 0; staff < 2; ++staff) {
    out.Fill(4, 7);
    out.U8(staff == 0 ? 0x41 : 3);
    out.Fill(8, 7);
    out.U16Le(12);
    out.Fill(3, 7);
    for (int name = 0; name < 3; ++name) {
      const bool named = staff == 0 && name < 2;
      out.U16Le(named ? 1 : 0);
      if (named) out.U8(static_cast<std::uint8_t>('A' + name));
      out.U8(0);
    }
  }
  out.U16Le(5);
  return out.Release();
}

// "480 1 90 3C 5A": tick, track, message; "0 0 FF 58 04 02 18 08": a meta event.
class LogSink : public ScoreSink {
 public:
  void Message(std::size_t track, std::uint32_t message) override {
    std::string line = Head(track);
    for (std::size_t i = 0; i < ((message & 0xE0) == 0xC0 ? 2U : 3U); ++i) Add(line, message >> (8 * i));
    lines.push_back(line);
  }
  void Meta(std::size_t track, std::uint8_t type, ByteView data) override {
    std::string line = Head(track) + " FF";
    Add(line, type);
    for (const std::uint8_t byte : data) Add(line, byte);
    lines.push_back(line);
  }
  void Advance(std::uint64_t ticks) override { now += ticks; }

  std::vector<std::string> lines;
  std::uint64_t now = 0;

 private:
  [[nodiscard]] std::string Head(std::size_t track) const {
    return std::to_string(now) + " " + std::to_string(track);
  }
  static void Add(std::string& line, std::uint32_t byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    line += ' ';
    line += kDigits[byte >> 4 & 15];
    line += kDigits[byte & 15];
  }
};

struct Played {
  Outcome outcome = Outcome::Success;
  std::vector<std::string> lines;  // without the set-up
  std::uint64_t ticks = 0;
  ScoreScan scan;
};

// most: so many steps at once.
inline Played Play(const ScoreDocument& document, PlaybackParameters parameters = {},
                   ScoreOptions options = {}, std::uint32_t most = UINT32_MAX) {
  Played played;
  const auto score = OpenAndScan(WriteScore(document), parameters, options.repeats);
  if (!score) {
    played.outcome = score.error();
    return played;
  }
  played.scan = score->scan;
  options.leadIn = score->scan.leadIn;
  LogSink log;
  ScoreEngine engine(score->file, score->info, score->voices, parameters, options, &log);
  played.outcome = engine.Begin();
  log.lines.clear();
  while (Succeeded(played.outcome) && !engine.AtEnd()) played.outcome = engine.Step(most);
  engine.Finish();
  played.lines = log.lines;
  played.ticks = engine.Ticks();
  return played;
}

// The lines with this in them, e.g. " B0 07" for channel volumes.
inline std::vector<std::string> LinesWith(const std::vector<std::string>& lines, std::string_view part) {
  std::vector<std::string> found;
  for (const std::string& line : lines) {
    if (line.find(part) != std::string::npos) found.push_back(line);
  }
  return found;
}
// The note-ons alone, as "tick key".
inline std::vector<std::string> Strikes(const Played& played) {
  std::vector<std::string> found;
  for (const std::string& line : played.lines) {
    const std::size_t at = line.find(" 9");
    if (at == std::string::npos || line.compare(line.size() - 2, 2, "00") == 0) continue;
    found.push_back(line.substr(0, line.find(' ')) + line.substr(line.size() - 6, 3));
  }
  return found;
}

}  // namespace ts5::test
