// A MusicXML file taken apart: what each part has in each of its measures, in its own time. The reader puts
// the parts together. Used inside the reader only.
#pragma once

#include <array>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "converters/score_with_losses.h"
#include "platform/base/work_watch.h"
#include "score/score_builder.h"

namespace ts5::converters::musicxml {

// Notes of a chord, as bits, that are tied to one before and onward.
struct TiedNotes {
  std::uint32_t fromBefore = 0;
  std::uint32_t onward = 0;
};
// A rest or chord in its measure.
struct Group {
  ScoreItem item;
  Fraction start;         // from the start of the measure
  Fraction length;        // 0 of a grace note
  std::size_t staff = 0;  // within the part
  std::string voice;
  TiedNotes ties;
  std::uint32_t shown = 0;      // bit n: note n has an accidental
  std::uint32_t bracketed = 0;  // and in brackets
  // Where it has come to lie.
  std::size_t slot = 0;   // voice of the staff
  std::size_t chord = 0;  // its number among the chords of that voice; of a rest that of the next one
  bool placed = false;
};

// All of a part, in blocks, so that each stays where it is.
class GroupList {
 public:
  [[nodiscard]] std::size_t Size() const { return size_; }
  [[nodiscard]] Group& operator[](std::size_t i) { return blocks_[i / kBlock][i % kBlock]; }
  [[nodiscard]] const Group& operator[](std::size_t i) const { return blocks_[i / kBlock][i % kBlock]; }
  Group& Append() {
    if (size_++ % kBlock == 0) blocks_.emplace_back().reserve(kBlock);
    return blocks_.back().emplace_back();
  }
  void Clear() { *this = {}; }

 private:
  static constexpr std::size_t kBlock = 32;
  std::vector<std::vector<Group>> blocks_;
  std::size_t size_ = 0;
};

// Something at a place in the measure that finds its group later.
struct Mark {
  DrawingItem drawing;
  Fraction at;
  std::size_t staff = 0;
  std::string voice;           // "" any
  std::size_t end = SIZE_MAX;  // of one that lasts: index into Part::ends
};
// A clef, key or time signature.
struct Sign {
  ScoreItem item;
  Fraction at;
  std::size_t staff = 0;
};
struct Measure {
  std::size_t first = 0;  // index of its first group
  std::size_t groups = 0;
  std::vector<Mark> marks;
  std::vector<Sign> signs;
  Fraction length;
  std::uint8_t line = kBarLinePlain;
  std::string lineStyle;
  std::uint8_t times = 0;
  bool repeatStart = false;
  bool newSystem = false;
  bool newPage = false;
  double tempo = 0;  // at its start, quarters a minute
};
// An ending bracket: its first measure, and the last one.
struct Ending {
  std::size_t first = 0;
  std::size_t last = 0;
  std::uint8_t from = 1;
  std::uint8_t to = 1;
  bool open = false;
};
// A slur between two chords, by index into groups and of its drawing there.
struct Slur {
  std::size_t start = 0;
  std::size_t drawing = 0;
  std::size_t stop = SIZE_MAX;
};
// Where a mark that lasts ends.
struct MarkEnd {
  std::size_t measure = SIZE_MAX;
  Fraction at;
};
struct Instrument {
  std::string name;
  int program = -1;
  int volume = -1;
  int unpitched = -1;  // key
  int channel = 0;
};
struct Transposition {
  int chromatic = 0;
  int diatonic = 0;
  bool operator==(const Transposition&) const = default;
};
struct Part {
  std::string id;
  ScorePart names;
  std::vector<std::pair<std::string, Instrument>> instruments;
  std::size_t staves = 1;
  std::size_t firstStaff = 0;  // in the document
  std::vector<Measure> measures;
  GroupList groups;
  std::vector<Ending> endings;
  std::vector<Slur> slurs;
  std::vector<MarkEnd> ends;
  std::vector<std::optional<Transposition>> transpositions;  // of each staff
  // Of each percussion staff: what sounds at each displayed key, -1 not said.
  std::vector<std::optional<std::array<int, 128>>> drums;
};

struct Score {
  ScoreDocument document;  // its credits
  std::vector<Part> parts;
  std::vector<ScoreBarLabel> labels;
  bool hasBreaks = false;
  bool hasBeams = false;  // every beam is there: a note without one has flags
  LossReport losses;
};

// The whole at work: what is found out, and the first fault that ends it.
struct Reading {
  Score& score;
  const CancelCheck& cancelled;
  std::optional<ScoreFault> fault = {};
  bool notesAlone = false;  // what hangs on notes is passed over, and marks but tempos
  void Fail(int bar, int staff, Outcome code = Outcome::SourceFailed) {
    if (!fault) fault = ScoreFault{code, bar, staff};
  }
};

// The measures of one part, in order, into part.
void ReadPart(Reading& reading, Part& part, const std::vector<pugi::xml_node>& measures);

}  // namespace ts5::converters::musicxml
