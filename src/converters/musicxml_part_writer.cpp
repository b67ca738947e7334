#include "converters/musicxml_part_writer.h"

#include <algorithm>
#include <numeric>
#include <set>
#include <span>

#include "converters/musicxml_attribute_writer.h"
#include "converters/musicxml_barline_writer.h"
#include "converters/musicxml_mark_writer.h"
#include "converters/musicxml_note_writer.h"
#include "score/accidentals.h"

namespace ts5::converters::musicxml {
namespace {

constexpr std::int64_t kMostDivisions = 1'000'000;
constexpr std::int64_t kUsualDivisions = 10080;  // for what has no common one below the most

using Slices = std::vector<std::vector<std::vector<NotationSlice>>>;  // staff, voice

Slices SlicesOf(const PartToWrite& part) {
  Slices slices(part.part.staves);
  for (std::size_t staff = 0; staff < slices.size(); ++staff) {
    for (const auto& events : part.music.voices[part.firstStaff + staff])
      slices[staff].push_back(SliceVoice(events, part.music, !part.ownBeams));
  }
  return slices;
}

std::vector<AccidentalBits> AccidentalsOf(const PartToWrite& part) {
  std::vector<AccidentalBits> bits;
  for (std::size_t staff = 0; staff < part.part.staves; ++staff)
    bits.push_back(NeededAccidentals(part.music, part.firstStaff + staff));
  return bits;
}

Divisions DivisionsOf(const ScoreMusic& music, const Slices& slices, const PartMarks& marks) {
  std::int64_t common = 1;
  const auto take = [&common](Fraction length) {
    const std::int64_t denominator = (length * Fraction(4)).Denominator();
    if (common <= kMostDivisions) common = std::lcm(common, denominator);
  };
  for (const ScoreBar& bar : music.bars) {
    take(bar.length);
    take(bar.start);
  }
  for (const auto& staff : slices) {
    for (const auto& voice : staff) {
      for (const NotationSlice& slice : voice) {
        take(slice.start);
        take(slice.length);
      }
    }
  }
  for (const auto& staff : marks) {
    for (const VoiceMarks& voice : staff) {
      for (const Direction& direction : voice.directions) take(direction.at);
    }
  }
  return {common <= kMostDivisions ? common : kUsualDivisions};
}

// The tempos of the systems that no drawing says.
std::vector<Direction> SystemTempos(const ScoreMusic& music) {
  std::set<Fraction> drawn;
  for (const auto& staff : music.voices) {
    for (const auto& voice : staff) {
      for (const ScoreEvent& event : voice) {
        for (const DrawingItem& drawing : event.item->drawings) {
          if (TempoOf(drawing) > 0) drawn.insert(event.start + drawing.offset);
        }
      }
    }
  }
  std::vector<Direction> tempos;
  for (const ScoreTempo& tempo : music.tempos) {
    if (!drawn.contains(tempo.at)) tempos.push_back({.at = tempo.at, .tempo = tempo.quarters});
  }
  return tempos;
}

// A voice on its way through the score.
struct VoiceCursor {
  const std::vector<NotationSlice>& slices;
  const std::vector<Direction>& directions;
  std::size_t staff = 0;
  bool first = true;    // of its staff: the changes of the staff are written with it
  unsigned number = 1;  // MusicXML's
  NoteWriter notes;
  std::size_t next = 0;
  std::size_t nextDirection = 0;

  [[nodiscard]] bool IsIn(std::size_t bar) const { return next < slices.size() && slices[next].bar == bar; }
};

class PartWriter {
 public:
  PartWriter(XmlOut& out, const PartToWrite& part, LossReport& losses)
      : out_(out),
        part_(part),
        marks_(CollectMarks(part.music, part.firstStaff, part.part.staves, losses)),
        slices_(SlicesOf(part)),
        accidentals_(AccidentalsOf(part)),
        divisions_(DivisionsOf(part.music, slices_, marks_)),
        attributes_(out, part, divisions_),
        barlines_(out, part.music) {
    unsigned number = 1;
    for (std::size_t staff = 0; staff < part.part.staves; ++staff) {
      for (std::size_t v = 0; v < slices_[staff].size(); ++v) {
        const VoiceMarks& marks = marks_[staff][v];
        const unsigned own = number + static_cast<unsigned>(v);
        const VoiceOfNotes notes{staff, own, marks, accidentals_[staff][v]};
        voices_.push_back({slices_[staff][v], marks.directions, staff, v == 0, own,
                           NoteWriter(out, part, divisions_, notes)});
      }
      number += std::max(4U, static_cast<unsigned>(slices_[staff].size()));  // as most programs number them
    }
    if (part.firstStaff == 0) tempos_ = SystemTempos(part.music);
  }

  Outcome Write(const WorkWatch& watch) {
    out_.Open("part", {{"id", part_.id}});
    for (std::size_t bar = 0; bar < part_.music.bars.size(); ++bar) {
      if (bar % 64 == 0 && watch.cancelled && watch.cancelled()) return Outcome::Cancelled;
      WriteMeasure(bar);
    }
    out_.Close();
    return Outcome::Success;
  }

 private:
  void WriteMeasure(std::size_t index) {
    const ScoreBar& bar = part_.Bar(index);
    const std::string number = bar.number.empty() ? std::to_string(index + 1) : bar.number;
    out_.Open("measure", {{"number", number}, {"implicit", bar.implicit ? "yes" : ""}});
    WritePrint(index);
    barlines_.WriteLeft(index);
    attributes_.WriteAtBar(index);
    while (nextTempo_ < tempos_.size() && tempos_[nextTempo_].at <= bar.start)
      musicxml::WriteDirections(out_, {&tempos_[nextTempo_++], 1}, 0, 1, 1);
    position_ = bar.start;
    bool first = true;
    for (VoiceCursor& voice : voices_) {
      if (!HasMusic(voice, index) && !first) {
        while (voice.IsIn(index)) ++voice.next;
        continue;
      }
      first = false;
      WriteVoice(voice, index);
    }
    MoveTo(bar.start + bar.length);
    barlines_.WriteRight(index);
    out_.Close();
  }

  void WritePrint(std::size_t index) {
    if (index == 0 || part_.Bar(index).system == part_.Bar(index - 1).system) return;
    const auto& labels = part_.document.bars;
    const bool page = index < labels.size() && labels[index].newPage;
    out_.Empty("print", {{page ? "new-page" : "new-system", "yes"}});
  }

  [[nodiscard]] bool HasMusic(const VoiceCursor& voice, std::size_t bar) const {
    const Fraction end = part_.Bar(bar).start + part_.Bar(bar).length;
    if (IsBefore(voice, end)) return true;
    if (voice.first && attributes_.NextBefore(voice.staff, end)) return true;
    for (std::size_t i = voice.next; i < voice.slices.size() && voice.slices[i].bar == bar; ++i) {
      if (!voice.slices[i].event->IsGap()) return true;
    }
    return false;
  }

  // Whether the next direction of a voice has its place before that.
  static bool IsBefore(const VoiceCursor& voice, Fraction end) {
    if (voice.nextDirection == voice.directions.size()) return false;
    const Direction& next = voice.directions[voice.nextDirection];
    return next.at < end || (next.endsBar && next.at == end);
  }

  // Moves the cursor of the reader to a place.
  void MoveTo(Fraction place) {
    const std::int64_t by = divisions_.Ticks(place) - divisions_.Ticks(position_);
    position_ = place;
    if (by == 0) return;
    out_.Open(by > 0 ? "forward" : "backup");
    out_.Leaf("duration", by > 0 ? by : -by);
    out_.Close();
  }

  void WriteVoice(VoiceCursor& voice, std::size_t bar) {
    const Fraction start = part_.Bar(bar).start;
    const Fraction end = start + part_.Bar(bar).length;
    MoveTo(start);
    for (; voice.IsIn(bar); ++voice.next) {
      const NotationSlice& slice = voice.slices[voice.next];
      if (voice.first) attributes_.WriteWithin(voice.staff, slice.start);
      WriteDirections(voice, slice.start, std::max(slice.start + slice.length, slice.start));
      WriteSlice(voice, slice);
    }
    // What stands behind the last note and before the bar line.
    if (const auto change = attributes_.NextBefore(voice.staff, end); voice.first && change)
      attributes_.WriteWithin(voice.staff, *change);
    while (IsBefore(voice, end)) WriteNextDirection(voice, position_);
    const bool lastBar = bar + 1 == part_.music.bars.size();
    if (lastBar) WriteDirections(voice, end, end + Fraction(1));
  }

  // Those before a place, seen from where the cursor is.
  void WriteDirections(VoiceCursor& voice, Fraction from, Fraction until) {
    while (voice.nextDirection < voice.directions.size()) {
      const Fraction at = voice.directions[voice.nextDirection].at;
      if (at != from && at >= until) return;
      WriteNextDirection(voice, from);
    }
  }
  void WriteNextDirection(VoiceCursor& voice, Fraction from) {
    const auto left = std::span(voice.directions).subspan(voice.nextDirection);
    const auto together = left.first(Together(left));
    voice.nextDirection += together.size();
    MoveTo(from);
    musicxml::WriteDirections(out_, together, divisions_.Ticks(together[0].at) - divisions_.Ticks(from),
                              voice.number, static_cast<unsigned>(voice.staff) + 1);
  }

  void WriteSlice(VoiceCursor& voice, const NotationSlice& slice) {
    const Fraction end = slice.start + slice.length;
    if (slice.event->IsGap()) return MoveTo(end);
    MoveTo(slice.start);
    voice.notes.Write(slice);
    position_ = end;
  }

  XmlOut& out_;
  const PartToWrite& part_;
  PartMarks marks_;
  Slices slices_;
  std::vector<AccidentalBits> accidentals_;  // of each staff
  Divisions divisions_;
  AttributeWriter attributes_;
  BarlineWriter barlines_;
  std::vector<VoiceCursor> voices_;
  std::vector<Direction> tempos_;
  std::size_t nextTempo_ = 0;
  Fraction position_;
};

}  // namespace

Outcome WritePart(XmlOut& out, const PartToWrite& part, LossReport& losses, const WorkWatch& watch) {
  return PartWriter(out, part, losses).Write(watch);
}

}  // namespace ts5::converters::musicxml
