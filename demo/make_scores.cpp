// make_demo_scores SOURCES TARGET: makes a score of every text in SOURCES. A text is a list of values, each
// behind its name; lines that are indented go on with the value before them:
//
//   Autor, Anmerkung    what the information of the score says
//   Tempo      112      quarter notes per minute
//   Takt       4/4
//   Tonart     2        sharps, negative for flats
//   Takte      4        bars of a system
//   Zeile      Melodie, Klang 40, Bassschlüssel, Schlagzeug, Lautstärke 90, Tonart 2, Transposition -2
//   Stimme     a voice of the line: notes, marks and bar lines with blanks between
//   Text       the syllables of a verse of the voice before it, "-" for a note without one
//
// A note is "c4/4" (letter, # or b, octave; length; dots), a chord "c4+e4/2.", a rest "r/8", a bar of rest
// "R". Bar lines are | |: :| :|: and {3 and } stand around triplets (or other tuplets). Marks belong to the
// note behind them: !p !mf !fp dynamics, !<4 !>4 hairpins over so many notes, !(4 a slur, !1 !2 endings, !.
// !' !- !^ !> articulation, !~ tied onward, !g a grace note.
//
// Bars that do not add up, or differ between voices, are refused.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "score/score_writer.h"

namespace {

using namespace ts5;

constexpr std::int32_t kStaffSpacing = 60;
constexpr std::int32_t kSystemSpacing = 40;

// What is wrong ends the program; the texts are the project's own.
[[noreturn]] void Fail(const std::string& where, std::string_view what) {
  std::fprintf(stderr, "%s: %.*s\n", where.c_str(), static_cast<int>(what.size()), what.data());
  std::exit(1);
}

// --- notes

// Where a MIDI key stands on a staff: positions count from the key signature's own first step.
ScoreNote NoteAt(int midi, bool bass, int key) {
  constexpr std::array<int, 12> kStep = {0, 0, 1, 1, 2, 3, 3, 4, 4, 5, 5, 6};
  constexpr std::array<int, 7> kScale = {0, 2, 4, 5, 7, 9, 11};
  const int above = midi - (7 * key + 60) % 12;
  const int step = kStep[static_cast<std::size_t>(above % 12)];
  ScoreNote note;
  note.position = static_cast<std::int8_t>(above / 12 * 7 + step - (bass ? 28 : 42));
  note.accidental = static_cast<std::int8_t>(above % 12 - kScale[static_cast<std::size_t>(step)]);
  return note;
}

std::optional<int> MidiKey(std::string_view name) {
  constexpr std::string_view kLetters = "c d ef g a b";
  const std::size_t letter = name.empty() || name[0] == ' ' ? name.npos : kLetters.find(name[0]);
  if (letter == name.npos) return std::nullopt;
  const bool altered = name.size() > 1 && (name[1] == '#' || name[1] == 'b');
  const auto octave = ParseInteger(name.substr(altered ? 2 : 1));
  if (!octave) return std::nullopt;
  const int alteration = !altered ? 0 : name[1] == '#' ? 1 : -1;
  return static_cast<int>(letter) + alteration + 12 * (static_cast<int>(*octave) + 1);
}

bool SetLength(ScoreItem& item, std::string_view length) {
  constexpr std::array<std::string_view, 6> kLengths = {"1", "2", "4", "8", "16", "32"};
  const std::size_t dot = std::min(length.find('.'), length.size());
  const auto code = std::ranges::find(kLengths, length.substr(0, dot));
  item.group.durationCode = static_cast<std::uint8_t>(code - kLengths.begin());
  item.group.dots = static_cast<std::uint8_t>(length.size() - dot);
  return code != kLengths.end();
}

struct Sign {
  std::string_view mark;
  std::string_view symbols;  // in the symbol font
};
constexpr Sign kSigns[] = {
    {"ppp", "ppp"}, {"pp", "pp"}, {"p", "p"},  {"mp", "i"},   {"mf", "j"},   {"f", "f"},
    {"ff", "ff"},   {"fp", "fp"}, {"sf", "s"}, {"-", "\xC8"}, {"^", "\xCB"}, {">", "\xCA"},
};

bool ApplyMark(ScoreItem& item, std::string_view mark) {
  if (const auto sign = std::ranges::find(kSigns, mark, &Sign::mark); sign != std::end(kSigns)) {
    item.drawings.push_back(TextDrawing(sign->symbols));
    return true;
  }
  if (mark == ".") item.group.articulation = 1;
  if (mark == "'") item.group.articulation = 4;
  if (mark == "~") item.group.tieOnward = true;
  if (mark == "g") {
    item.group.flags = kGroupZeroDuration | kGroupGrace;
    item.group.graceForm = 1;
  }
  if (mark.size() == 1 && std::string_view(".'~g").find(mark) != mark.npos) return true;
  const auto count = ParseInteger(mark.substr(std::string_view("<>(").find(mark[0]) == mark.npos ? 0 : 1));
  if (!count) return false;
  const auto number = static_cast<std::uint16_t>(*count);
  if (mark[0] == '(') {
    item.drawings.push_back(CurveDrawing(number));
  } else if (mark[0] == '<' || mark[0] == '>') {
    item.drawings.push_back(HairpinDrawing(number, mark[0] == '>'));
  } else {
    item.drawings.push_back(VoltaDrawing(static_cast<std::uint8_t>(number)));
  }
  return true;
}

// --- a text

struct VoiceText {
  std::string notes;
  std::vector<std::string> verses;
};
struct LineText {
  StaffLayout staff;
  bool bass = false;
  int key = 0;
  std::vector<VoiceText> voices;
};
struct Piece {
  std::string name;
  std::string author;
  std::string comment;
  std::uint32_t tempo = 120;
  ScoreTimeSignature time;
  int key = 0;
  std::size_t barsOfASystem = 4;
  std::vector<LineText> lines;
};

int NumberIn(const Piece& piece, std::string_view text) {
  const auto number = ParseInteger(Trim(text));
  if (!number) Fail(piece.name, text);
  return static_cast<int>(*number);
}

LineText Line(const Piece& piece, std::string_view value) {
  const auto words = Split(value, ',');
  LineText line;
  line.key = piece.key;
  line.staff.name = Trim(words[0]);
  line.staff.volume = 100;
  line.staff.spacing = kStaffSpacing;
  std::iota(line.staff.noteMap.begin(), line.staff.noteMap.end(), std::uint8_t{0});
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string_view word = Trim(words[i]);
    const std::size_t blank = std::min(word.find(' '), word.size());
    const std::string_view name = word.substr(0, blank);
    const std::string_view number = word.substr(blank);
    if (name == "Bassschlüssel") {
      line.bass = true;
    } else if (name == "Schlagzeug") {
      line.staff.usesNoteMap = line.bass = true;
      line.key = 0;
    } else if (name == "Klang") {
      line.staff.sound = NumberIn(piece, number);
    } else if (name == "Lautstärke") {
      line.staff.volume = NumberIn(piece, number);
    } else if (name == "Transposition") {
      line.staff.transpose = NumberIn(piece, number);
    } else if (name == "Tonart") {
      line.key = NumberIn(piece, number);
    } else {
      Fail(piece.name, word);
    }
  }
  return line;
}

void TakeTime(Piece& piece, std::string_view value) {
  const auto parts = Split(value, '/');
  if (parts.size() != 2) Fail(piece.name, value);
  piece.time.numerator = static_cast<std::uint16_t>(NumberIn(piece, parts[0]));
  piece.time.power = 0;
  for (int denominator = NumberIn(piece, parts[1]); denominator > 1; denominator /= 2) ++piece.time.power;
}

void TakeValue(Piece& piece, std::string_view name, std::string_view value) {
  const auto voice = [&]() -> VoiceText& {
    if (piece.lines.empty() || piece.lines.back().voices.empty()) Fail(piece.name, name);
    return piece.lines.back().voices.back();
  };
  if (name == "Autor") {
    piece.author = value;
  } else if (name == "Anmerkung") {
    piece.comment = value;
  } else if (name == "Tempo") {
    piece.tempo = static_cast<std::uint32_t>(NumberIn(piece, value));
  } else if (name == "Takt") {
    TakeTime(piece, value);
  } else if (name == "Tonart") {
    piece.key = NumberIn(piece, value);
  } else if (name == "Takte") {
    piece.barsOfASystem = static_cast<std::size_t>(NumberIn(piece, value));
  } else if (name == "Zeile") {
    piece.lines.push_back(Line(piece, value));
  } else if (name == "Stimme" && !piece.lines.empty()) {
    piece.lines.back().voices.push_back({std::string(value), {}});
  } else if (name == "Text") {
    voice().verses.emplace_back(value);
  } else {
    Fail(piece.name, name);
  }
}

Piece Parse(const std::string& name, std::string_view text) {
  Piece piece;
  piece.name = name;
  std::string key;
  std::string value;
  const auto finish = [&] {
    if (!key.empty()) TakeValue(piece, key, value);
  };
  for (const std::string_view line : Split(text, '\n')) {
    if (Trim(line).empty()) continue;
    if (line[0] == ' ') {
      value += ' ';
      value += Trim(line);
      continue;
    }
    finish();
    const std::size_t blank = std::min(line.find(' '), line.size());
    key = line.substr(0, blank);
    value = Trim(line.substr(blank));
  }
  finish();
  return piece;
}

// --- a score

struct Bar {
  std::uint32_t ticks = 0;
  std::uint8_t barLine = 0;  // at its end
  VoiceItems items;
  bool operator==(const Bar& other) const { return ticks == other.ticks && barLine == other.barLine; }
};

// One voice by bars; a bar line before the first note is part of the first bar.
class VoiceParser {
 public:
  VoiceParser(const Piece& piece, const LineText& line) : piece_(piece), line_(line) {}

  std::vector<Bar> Parse(const VoiceText& text) {
    for (const std::string_view word : Split(text.notes, ' ')) {
      if (!word.empty()) Take(word);
    }
    if (bar_.ticks > 0 || tuplet_ != 0 || !marks_.empty()) Fail(piece_.name, "ends inside a bar");
    for (const std::string& verse : text.verses) Sing(verse);
    return std::move(bars_);
  }

 private:
  void Take(std::string_view word) {
    constexpr std::array<std::string_view, 6> kBarLines = {"|", "", "", ":|", "|:", ":|:"};
    const auto type = std::ranges::find(kBarLines, word);
    if (type != kBarLines.end()) return EndBar(static_cast<std::uint8_t>(type - kBarLines.begin()));
    if (word[0] == '!') {
      marks_.push_back(word.substr(1));
    } else if (word[0] == '{') {
      tuplet_ = static_cast<std::uint8_t>(NumberIn(piece_, word.substr(1)));
    } else if (word == "}") {
      tuplet_ = 0;
    } else {
      TakeGroup(word);
    }
  }

  void EndBar(std::uint8_t type) {
    bar_.items.push_back(BarItem(type));
    if (bar_.ticks == 0) return;
    bar_.barLine = type;
    bars_.push_back(std::exchange(bar_, {}));
  }

  void TakeGroup(std::string_view word) {
    ScoreItem item = word == "R" ? WholeBarRest() : Sounding(word);
    item.group.tuplet.number = tuplet_;
    item.group.tieFromBefore = tied_;
    for (const std::string_view mark : marks_) {
      if (!ApplyMark(item, mark)) Fail(piece_.name, mark);
    }
    marks_.clear();
    tied_ = item.group.tieOnward;
    bar_.ticks += GroupDuration(item.group, kScoreTicksPerQuarter, piece_.time);
    bar_.items.push_back(std::move(item));
  }

  ScoreItem Sounding(std::string_view word) const {
    const auto parts = Split(word, '/');
    if (parts.size() != 2) Fail(piece_.name, word);
    ScoreItem item = RestItem(0);
    if (parts[0] != "r") {
      std::vector<ScoreNote> notes;
      for (const std::string_view name : Split(parts[0], '+')) {
        const auto key = MidiKey(name);
        if (!key) Fail(piece_.name, word);
        notes.push_back(NoteAt(*key, line_.bass, line_.key));
      }
      item = ChordItem(0, notes);
    }
    if (!SetLength(item, parts[1])) Fail(piece_.name, word);
    return item;
  }

  // A verse under the notes that begin; tied and grace notes have no syllable.
  void Sing(const std::string& verse) {
    const auto syllables = Split(verse, ' ');
    auto syllable = syllables.begin();
    for (Bar& bar : bars_) {
      for (ScoreItem& item : bar.items) {
        const bool sung = item.kind == static_cast<std::uint8_t>(ObjectKind::Chord) &&
                          !item.group.tieFromBefore && item.group.flags == 0;
        if (!sung || syllable == syllables.end()) continue;
        item.lyrics.push_back({std::string(*syllable == "-" ? "" : *syllable), 0});
        ++syllable;
      }
    }
    if (syllable != syllables.end()) Fail(piece_.name, "more syllables than notes");
  }

  const Piece& piece_;
  const LineText& line_;
  std::vector<Bar> bars_;
  Bar bar_;
  std::vector<std::string_view> marks_;
  std::uint8_t tuplet_ = 0;
  bool tied_ = false;
};

// Only at the ends of the piece and at repeats may a bar be shorter than its signature says.
void CheckBars(const Piece& piece, const std::vector<Bar>& bars) {
  const std::uint32_t full = (kScoreTicksPerQuarter * 4 >> piece.time.power) * piece.time.numerator;
  for (std::size_t i = 0; i < bars.size(); ++i) {
    const bool edge = i == 0 || i + 1 == bars.size() || bars[i].barLine != 0 || bars[i - 1].barLine != 0;
    if (bars[i].ticks != full && (!edge || bars[i].ticks > full))
      Fail(piece.name, "bar " + std::to_string(i + 1) + " has " + std::to_string(bars[i].ticks) + " ticks");
  }
}

// Every system begins with clef and key; the signature stands in the first one.
void AddVoice(const Piece& piece, const LineText& line, std::size_t layout, const std::vector<Bar>& bars,
              ScoreDocument& score) {
  for (std::size_t i = 0; i < bars.size(); ++i) {
    const std::size_t number = i / piece.barsOfASystem;
    if (number == score.systems.size()) score.systems.push_back({number == 0 ? piece.tempo : 0, {}});
    std::vector<StaffItems>& staves = score.systems[number].staves;
    if (staves.size() == layout) staves.push_back({static_cast<std::uint8_t>(layout), piece.time, {}});
    std::vector<VoiceItems>& voices = staves[layout].voices;
    if (i % piece.barsOfASystem == 0) {
      voices.push_back({ClefItem(line.bass ? 2 : 0), KeyItem(line.key)});
      if (i == 0) voices.back().push_back(TimeItem(piece.time.numerator, piece.time.power));
    }
    voices.back().insert(voices.back().end(), bars[i].items.begin(), bars[i].items.end());
  }
}

Bytes Score(const Piece& piece) {
  ScoreDocument score;
  score.author = piece.author;
  score.keywords = "Beispiel";
  score.comment = piece.comment;
  score.systemSpacing = kSystemSpacing;
  std::optional<std::vector<Bar>> first;
  for (const LineText& line : piece.lines) {
    for (const VoiceText& voice : line.voices) {
      const std::vector<Bar> bars = VoiceParser(piece, line).Parse(voice);
      CheckBars(piece, bars);
      if (!first) first = bars;
      if (*first != bars) Fail(piece.name, line.staff.name + ": not the bars of the first voice");
      AddVoice(piece, line, score.staves.size(), bars, score);
    }
    score.staves.push_back(line.staff);
  }
  return WriteScore(score);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::fprintf(stderr, "make_demo_scores SOURCES TARGET\n");
    return 2;
  }
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
    if (entry.path().extension() != ".txt") continue;
    const std::string name = entry.path().stem();
    const auto text = ReadFile(entry.path());
    if (!text) Fail(name, "cannot be read");
    const std::string path = JoinPath(arguments[2], name + ".stv");
    if (Failed(WriteFile(path, Score(Parse(name, AsText(*text)))))) Fail(path, "cannot be written");
  }
  return 0;
}
