// make_demo_scores DIRECTORY: the demo scores, all of music in the public domain, from a short notation.
//
// A voice is a line of words: "c4/4" a quarter note (letter, # or b, octave, length, dots), "r/2" a rest, "|"
// a bar line, "|:" ":|" ":|:" repeats. Words with a mark belong to the next note: "!p" "!f" "!fp" dynamics,
// "!<4"
// "!>4" hairpins over so many notes, "!1" "!2" endings, "!." staccato, "!^" accent, "!3" triplet, "!~" tied
// onward. Syllables stand in a line of their own, "-" for none.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "score/score_writer.h"

namespace {

using namespace ts5;

struct Part {
  std::string_view name;
  std::int32_t sound;
  bool bass;
  bool drums;
  std::string_view notes;
  std::string_view lyrics;
};
struct Piece {
  std::string_view file;
  std::string_view author;
  std::string_view comment;
  std::uint32_t tempo;
  ScoreTimeSignature time;
  int key;
  std::vector<Part> parts;
};

const std::vector<Piece> kPieces = {
    {"Ode an die Freude.stv",
     "Ludwig van Beethoven",
     "aus der 9. Sinfonie, 1824",
     112,
     {4, 2},
     2,
     {{"Melodie", 40, false, false,
       "!p f#4/4 f#4/4 g4/4 a4/4 | a4/4 g4/4 f#4/4 e4/4 | d4/4 d4/4 e4/4 f#4/4 | f#4/4. e4/8 e4/2 | "
       "f#4/4 f#4/4 g4/4 a4/4 | a4/4 g4/4 f#4/4 e4/4 | d4/4 d4/4 e4/4 f#4/4 | e4/4. d4/8 d4/2 |: "
       "!<4 e4/4 e4/4 f#4/4 d4/4 | e4/4 f#4/8 g4/8 f#4/4 d4/4 | !f e4/4 f#4/8 g4/8 f#4/4 e4/4 | d4/4 e4/4 "
       "a3/4 !~ f#4/4 | "
       "f#4/4 f#4/4 g4/4 a4/4 | a4/4 g4/4 f#4/4 e4/4 | d4/4 d4/4 e4/4 f#4/4 | e4/4. d4/8 d4/2 :|",
       "Freu- de schö- ner Göt- ter- fun- ken Toch- ter aus E- ly- si- um wir be- tre- ten feu- er- trun- "
       "ken "
       "Himm- li- sche dein Hei- lig- tum"},
      {"Bass", 42, true, false,
       "!p d3/1 | a2/1 | d3/1 | a2/1 | d3/1 | a2/1 | d3/1 | a2/2 d3/2 |: "
       "a2/1 | a2/1 | !f a2/1 | d3/2 a2/2 | d3/1 | a2/1 | d3/1 | a2/2 d3/2 :|",
       ""}}},
    {"Bruder Jakob.stv",
     "Volksweise",
     "Kanon zu vier Stimmen",
     108,
     {4, 2},
     -1,
     {{"Erste Stimme", 73, false, false,
       "f4/4 g4/4 a4/4 f4/4 | f4/4 g4/4 a4/4 f4/4 | a4/4 bb4/4 c5/2 | a4/4 bb4/4 c5/2 | "
       "!. c5/8 !. d5/8 !. c5/8 !. bb4/8 a4/4 f4/4 | !. c5/8 !. d5/8 !. c5/8 !. bb4/8 a4/4 f4/4 | f4/4 c4/4 "
       "f4/2 | "
       "f4/4 c4/4 f4/2 | r/1 | r/1 |",
       "Bru- der Ja- kob Bru- der Ja- kob schläfst du noch schläfst du noch"},
      {"Zweite Stimme", 68, false, false,
       "r/1 | r/1 | f4/4 g4/4 a4/4 f4/4 | f4/4 g4/4 a4/4 f4/4 | a4/4 bb4/4 c5/2 | a4/4 bb4/4 c5/2 | "
       "!. c5/8 !. d5/8 !. c5/8 !. bb4/8 a4/4 f4/4 | !. c5/8 !. d5/8 !. c5/8 !. bb4/8 a4/4 f4/4 | f4/4 c4/4 "
       "f4/2 | "
       "f4/4 c4/4 f4/2 |",
       ""}}},
    {"Amazing Grace.stv",
     "William Walker",
     "New Britain, 1835; Text von John Newton",
     88,
     {3, 2},
     1,
     {{"Gesang", 52, false, false,
       "!p d4/4 | g4/2 !3 b4/8 !3 a4/8 !3 g4/8 | b4/2 a4/4 | g4/2 e4/4 | d4/2 d4/4 | g4/2 !3 b4/8 !3 a4/8 !3 "
       "g4/8 | "
       "b4/2 a4/4 | !<2 !~ d5/2. | d5/2 b4/4 | !f d5/2 !3 b4/8 !3 a4/8 !3 g4/8 | b4/2 a4/4 | g4/2 e4/4 | "
       "d4/2 d4/4 | "
       "!>4 g4/2 !3 b4/8 !3 a4/8 !3 g4/8 | b4/2 a4/4 | !~ g4/2. | g4/2 |",
       "A- ma- zing - - grace how sweet the sound that saved - - a wretch like me"}}},
    {"Morgen kommt der Weihnachtsmann.stv",
     "Volksweise",
     "mit zwei Ausgängen und Schlagzeug",
     120,
     {4, 2},
     0,
     {{"Flöte", 73, false, false,
       "!f |: c4/4 c4/4 g4/4 g4/4 | a4/4 a4/4 g4/2 | f4/4 f4/4 e4/4 e4/4 | !1 d4/4 d4/4 g4/2 :| !2 d4/4 d4/4 "
       "c4/2 | "
       "!p g4/4 g4/4 f4/4 f4/4 | e4/4 e4/4 d4/2 | !^ g4/4 g4/4 !^ f4/4 f4/4 | e4/4 e4/4 d4/2 | "
       "!<3 c4/4 c4/4 g4/4 g4/4 | a4/4 a4/4 g4/2 | f4/4 f4/4 e4/4 e4/4 | d4/4 d4/4 c4/2 |",
       "Mor- gen kommt der Weih- nachts- mann kommt mit sei- nen Ga- ben"},
      {"Schlagzeug", 0, true, true,
       "|: c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 c2/4 d2/4 :| "
       "c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 c2/4 d2/4 | "
       "c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 c2/4 d2/4 | c2/4 d2/4 "
       "c2/2 |",
       ""}}},
};

[[noreturn]] void Fail(std::string_view piece, std::string_view word) {
  std::fprintf(stderr, "%.*s: \"%.*s\"\n", static_cast<int>(piece.size()), piece.data(),
               static_cast<int>(word.size()), word.data());
  std::exit(1);
}

// Where a MIDI key stands on a staff: positions count from the key's own first step.
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

int MidiKey(std::string_view word) {
  constexpr std::string_view kLetters = "c d ef g a b";
  int key = static_cast<int>(kLetters.find(word[0]));
  if (word[1] == '#') ++key;
  if (word[1] == 'b') --key;
  return key + 12 * (word[word[1] == '#' || word[1] == 'b' ? 2 : 1] - '0' + 1);
}

void SetLength(ScoreItem& item, std::string_view length, const Piece& piece) {
  static const std::map<std::string_view, std::uint8_t> kCodes = {
      {"1", 0}, {"2", 1}, {"4", 2}, {"8", 3}, {"16", 4}};
  const std::size_t dot = std::min(length.find('.'), length.size());
  const auto code = kCodes.find(length.substr(0, dot));
  if (code == kCodes.end()) Fail(piece.file, length);
  item.group.durationCode = code->second;
  item.group.dots = static_cast<std::uint8_t>(length.size() - dot);
}

void ApplyMark(ScoreItem& item, std::string_view mark) {
  const auto number = [&] { return static_cast<std::uint16_t>(mark[1] - '0'); };
  if (mark == ".") {
    item.group.articulation = 1;
  } else if (mark == "^") {
    item.drawings.push_back(TextDrawing("\xCB"));
  } else if (mark == "~") {
    item.group.tieOnward = true;
  } else if (mark == "3") {
    item.group.tuplet.number = 3;
  } else if (mark == "1" || mark == "2") {
    item.drawings.push_back(VoltaDrawing(static_cast<std::uint8_t>(mark[0] - '0')));
  } else if (mark[0] == '<' || mark[0] == '>') {
    item.drawings.push_back(HairpinDrawing(number(), mark[0] == '>'));
  } else {
    item.drawings.push_back(TextDrawing(mark));
  }
}

VoiceItems Voice(const Piece& piece, const Part& part) {
  static const std::map<std::string_view, std::uint8_t> kBars = {{"|", 0}, {":|", 3}, {"|:", 4}, {":|:", 5}};
  VoiceItems items = {ClefItem(part.bass ? 2 : 0), KeyItem(part.drums ? 0 : piece.key),
                      TimeItem(piece.time.numerator, piece.time.power)};
  const auto syllables = Split(part.lyrics, ' ');
  std::size_t syllable = 0;
  std::vector<std::string_view> marks;
  for (const std::string_view word : Split(part.notes, ' ')) {
    if (word.empty()) continue;
    if (const auto bar = kBars.find(word); bar != kBars.end()) {
      items.push_back(BarItem(bar->second));
      continue;
    }
    if (word[0] == '!') {
      marks.push_back(word.substr(1));
      continue;
    }
    const std::size_t slash = word.find('/');
    if (slash == std::string_view::npos) Fail(piece.file, word);
    ScoreItem item = word[0] == 'r'
                         ? RestItem(0)
                         : ChordItem(0, {NoteAt(MidiKey(word), part.bass, part.drums ? 0 : piece.key)});
    SetLength(item, word.substr(slash + 1), piece);
    for (const std::string_view mark : marks) ApplyMark(item, mark);
    marks.clear();
    if (word[0] != 'r' && syllable < syllables.size() && !part.lyrics.empty()) {
      const std::string_view text = syllables[syllable++];
      item.lyrics = {{std::string(text == "-" ? "" : text), 0}};
    }
    items.push_back(std::move(item));
  }
  return items;
}

Bytes Score(const Piece& piece) {
  ScoreDocument score;
  score.author = piece.author;
  score.keywords = "Beispiel";
  score.comment = piece.comment;
  SystemItems system;
  system.tempo = piece.tempo;
  for (const Part& part : piece.parts) {
    StaffLayout staff;
    staff.name = part.name;
    staff.sound = part.sound;
    staff.volume = 100;
    staff.usesNoteMap = part.drums;
    for (std::size_t key = 0; key < staff.noteMap.size(); ++key)
      staff.noteMap[key] = static_cast<std::uint8_t>(key);
    system.staves.push_back(
        {static_cast<std::uint8_t>(score.staves.size()), piece.time, {Voice(piece, part)}});
    score.staves.push_back(std::move(staff));
  }
  score.systems.push_back(std::move(system));
  return WriteScore(score);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "make_demo_scores DIRECTORY\n");
    return 2;
  }
  for (const Piece& piece : kPieces) {
    const std::string path = JoinPath(arguments[1], piece.file);
    if (Failed(WriteFile(path, Score(piece)))) Fail(piece.file, path);
  }
  return 0;
}
