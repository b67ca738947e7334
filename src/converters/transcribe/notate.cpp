#include "converters/transcribe/notate.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <utility>

namespace ts5::transcribe {
namespace {

constexpr std::int64_t kWhole = 4 * kUnits;
constexpr std::uint8_t kShortest = 7;  // 1/128
constexpr std::uint8_t kFirstFlag = 3;
constexpr std::int64_t kFinest = kWhole >> kShortest;
constexpr std::uint8_t kMostDots = 2;

struct Value {
  std::uint8_t code = 0;
  std::uint8_t dots = 0;
};

std::optional<Value> ValueOf(std::int64_t length) {
  for (std::uint8_t code = 0; code <= kShortest; ++code) {
    const std::int64_t base = kWhole >> code;
    std::int64_t whole = base;
    for (std::uint8_t dots = 0; dots <= kMostDots; ++dots) {
      if (whole == length) return Value{code, dots};
      whole += base >> (dots + 1);
    }
  }
  return std::nullopt;
}

// Distances at which a metre has its stresses, the strongest first.
class Metre {
 public:
  explicit Metre(ScoreTimeSignature time) {
    const std::int64_t unit = std::max<std::int64_t>(kWhole >> time.power, kFinest);
    Push(unit * time.numerator);
    compound_ = time.numerator > 3 && time.numerator % 3 == 0;
    if (compound_) {
      if (time.numerator == 12) Push(6 * unit);
      Push(3 * unit);
    } else if (time.numerator % 2 == 0 && time.numerator > 2 &&
               (time.numerator & (time.numerator - 1)) == 0) {
      for (std::int64_t half = unit * time.numerator / 2; half > unit; half /= 2) Push(half);
    }
    Halve(unit);
  }
  // A tuplet of so many parts that fills so much.
  Metre(std::int64_t length, std::int64_t parts) {
    Push(length);
    Halve(length / parts);
  }

  [[nodiscard]] bool Compound() const { return compound_; }
  [[nodiscard]] std::int64_t Bar() const { return grids_[0]; }
  // Weaker places have higher levels.
  [[nodiscard]] std::size_t LevelOf(std::int64_t place) const {
    std::size_t level = 0;
    while (level < grids_.size() && place % grids_[level] != 0) ++level;
    return level;
  }
  struct Inside {
    std::size_t level = 0;
    std::int64_t first = 0;
    std::int64_t distance = 0;
  };
  // The strongest place between two others.
  [[nodiscard]] std::optional<Inside> StrongestInside(std::int64_t from, std::int64_t to) const {
    for (std::size_t level = 0; level < grids_.size(); ++level) {
      const std::int64_t next = (from / grids_[level] + 1) * grids_[level];
      if (next < to) return Inside{level, next, grids_[level]};
    }
    return std::nullopt;
  }

 private:
  void Push(std::int64_t distance) {
    if (distance > 0 && (grids_.empty() || distance < grids_.back())) grids_.push_back(distance);
  }
  void Halve(std::int64_t distance) {
    for (; distance >= kFinest; distance /= 2) {
      Push(distance);
      if (distance % 2 != 0) break;
    }
  }

  std::vector<std::int64_t> grids_;
  bool compound_ = false;
};

struct Piece {
  std::int64_t start = 0;
  std::int64_t length = 0;
  Value value;
};

// May a value stand here without hiding where the beats are?
bool Readable(const Metre& metre, std::int64_t from, std::int64_t to, Value value, bool rest) {
  const auto inside = metre.StrongestInside(from, to);
  if (!inside) return true;
  const std::size_t start = metre.LevelOf(from);
  if (start <= inside->level) return !rest || value.dots == 0 || metre.Compound();
  if (rest || metre.Compound() || start != inside->level + 1) return false;
  // Usual syncopations: a quarter between two eighths, a dotted quarter behind one.
  return value.dots == 0 ? inside->level > 0 : value.dots == 1 && metre.LevelOf(to) <= inside->level;
}

void Split(const Metre& metre, std::int64_t from, std::int64_t to, bool rest, std::vector<Piece>& pieces) {
  if (to - from < kFinest) return;
  if (const auto value = ValueOf(to - from); value && Readable(metre, from, to, *value, rest)) {
    pieces.push_back({from, to - from, *value});
    return;
  }
  const auto inside = metre.StrongestInside(from, to);
  if (!inside) {
    // Finer than anything that is written: the longest value that fits, and what is left.
    std::uint8_t code = 0;
    while (code < kShortest && kWhole >> code > to - from) ++code;
    pieces.push_back({from, kWhole >> code, {code, 0}});
    Split(metre, from + (kWhole >> code), to, rest, pieces);
    return;
  }
  std::int64_t at = inside->first;
  if (metre.LevelOf(from) <= inside->level) {
    for (std::int64_t later = at; later < to; later += inside->distance) {
      const auto value = ValueOf(later - from);
      if (value && Readable(metre, from, later, *value, rest)) at = later;
    }
  }
  Split(metre, from, at, rest, pieces);
  Split(metre, at, to, rest, pieces);
}

// A stretch of a bar in a tuplet: actual notes in the time of normal.
struct Span {
  std::int64_t start = 0;
  std::int64_t length = 0;
  std::uint16_t actual = 3;
  std::uint16_t normal = 2;
};

constexpr bool IsPowerOfTwo(std::int64_t number) {
  return (number & (number - 1)) == 0;
}

// In which parts of its length the places between the ends of a stretch lie; 1 without any.
std::int64_t PartsOf(const std::vector<std::int64_t>& places, std::int64_t start, std::int64_t length) {
  std::int64_t parts = 1;
  for (auto place = std::ranges::upper_bound(places, start); place != places.end() && *place < start + length;
       ++place)
    parts = std::lcm(parts, length / std::gcd(*place - start, length));
  return parts;
}

bool Holds(const std::vector<std::int64_t>& places, std::int64_t place) {
  return std::ranges::binary_search(places, place);
}

void AddSpans(const std::vector<std::int64_t>& places, std::int64_t start, std::int64_t length,
              std::vector<Span>& spans) {
  const std::int64_t parts = PartsOf(places, start, length);
  if (IsPowerOfTwo(parts)) return;
  const std::int64_t half = length / 2;
  if (parts % 2 == 0 && Holds(places, start + half) && length > kUnits / 4) {
    AddSpans(places, start, half, spans);
    AddSpans(places, start + half, half, spans);
    return;
  }
  if (parts % 3 == 0) spans.push_back({start, length, 3, 2});
  if (parts == 5 || parts == 10) spans.push_back({start, length, 5, 4});
  if (parts == 7 || parts == 14) spans.push_back({start, length, 7, 4});
}

// places: where something begins or ends, in order.
std::vector<Span> FindSpans(const BarSpan& bar, const std::vector<std::int64_t>& places) {
  std::vector<Span> spans;
  const std::int64_t first = (bar.start + kUnits - 1) / kUnits * kUnits;
  const std::int64_t end = bar.start + bar.length;
  for (std::int64_t beat = first; beat + kUnits <= end;) {
    // Triplets over two beats.
    const bool even = (beat - bar.start + bar.offset) / kUnits % 2 == 0;
    if (even && beat + 2 * kUnits <= end && PartsOf(places, beat, 2 * kUnits) == 3) {
      spans.push_back({beat, 2 * kUnits, 3, 2});
      beat += 2 * kUnits;
      continue;
    }
    AddSpans(places, beat, kUnits, spans);
    beat += kUnits;
  }
  return spans;
}

// What fills the bar: chords and the rests between them.
struct Segment {
  std::int64_t from = 0;
  std::int64_t to = 0;
  const VoiceChord* chord = nullptr;
};

std::vector<Segment> SegmentsOf(const BarSpan& bar, std::span<const VoiceChord> chords) {
  std::vector<Segment> segments;
  std::int64_t at = bar.start;
  const std::int64_t end = bar.start + bar.length;
  for (const VoiceChord& chord : chords) {
    const std::int64_t from = std::max(chord.place, at);
    const std::int64_t to = std::min(chord.end, end);
    if (to <= from) continue;
    if (from > at) segments.push_back({at, from, nullptr});
    segments.push_back({from, to, &chord});
    at = to;
  }
  if (at < end) segments.push_back({at, end, nullptr});
  return segments;
}

std::vector<Segment> CutAtSpans(std::vector<Segment> segments, const std::vector<Span>& spans) {
  std::vector<Segment> cut;
  for (Segment segment : segments) {
    for (const Span& span : spans) {
      for (const std::int64_t edge : {span.start, span.start + span.length}) {
        if (edge <= segment.from || edge >= segment.to) continue;
        cut.push_back({segment.from, edge, segment.chord});
        segment.from = edge;
      }
    }
    cut.push_back(segment);
  }
  return cut;
}

ScoreItem GraceItem(const std::vector<SpelledPitch>& pitches) {
  ScoreItem item = ChordItem(kFirstFlag, {});
  item.group.flags = kGroupZeroDuration | kGroupGrace;
  item.group.graceForm = kGraceSlashed;
  item.pitches = pitches;
  return item;
}

// An item with its place, for beams.
struct Placed {
  ScoreItem item;
  std::int64_t at = 0;  // from the start of the whole bar
};

std::string BeamsOf(const std::vector<Placed>& items, std::size_t first, std::size_t last,
                    std::size_t index) {
  const auto count = [&](std::size_t i) { return items[i].item.group.durationCode - kFirstFlag + 1; };
  std::string beams;
  for (int level = 0; level < count(index); ++level) {
    const bool before = index > first && count(index - 1) > level;
    const bool behind = index + 1 < last && count(index + 1) > level;
    beams += before && behind ? 'c' : behind ? 'b' : before ? 'e' : index == first ? 'f' : 'h';
  }
  return beams;
}

std::int64_t BeamGroup(const Metre& metre, ScoreTimeSignature time, Beaming beaming) {
  const std::int64_t unit = kWhole >> time.power;
  const std::int64_t beat = metre.Compound() ? 3 * unit : std::max(unit, kUnits);
  const std::int64_t bar = metre.Bar();
  switch (beaming) {
    case Beaming::Small:
      return beat;
    case Beaming::Middle:
      return bar % (2 * beat) == 0 ? 2 * beat : beat;
    case Beaming::Large:
      return bar % 2 == 0 && bar / 2 >= 2 * beat ? bar / 2 : bar;
    default:
      return bar;
  }
}

// Each run of flags within a group gets beams, or, where they are not wanted, keeps its flags.
void Beam(std::vector<Placed>& items, std::int64_t group, bool beamed) {
  const auto flagged = [](const ScoreItem& item) {
    return item.IsGroup() && !item.group.isRest && !item.IsGrace() && item.group.durationCode >= kFirstFlag;
  };
  for (std::size_t i = 0; i < items.size();) {
    std::size_t last = i;
    while (last < items.size() && flagged(items[last].item) && items[last].at / group == items[i].at / group)
      ++last;
    for (std::size_t k = i; k < last; ++k)
      items[k].item.beams = last - i > 1 && beamed ? BeamsOf(items, i, last, k) : "-";
    i = std::max(last, i + 1);
  }
}

class BarWriter {
 public:
  BarWriter(const BarSpan& bar, bool firstVoice) : bar_(bar), metre_(bar.time), firstVoice_(firstVoice) {}

  std::vector<Placed> Write(std::span<const VoiceChord> chords) {
    std::vector<Segment> segments = SegmentsOf(bar_, chords);
    std::vector<std::int64_t> places;
    for (const Segment& segment : segments) {
      places.push_back(segment.from);
      places.push_back(segment.to);
    }
    places.erase(std::unique(places.begin(), places.end()), places.end());
    const std::vector<Span> spans = FindSpans(bar_, places);
    segments = CutAtSpans(std::move(segments), spans);
    for (std::size_t i = 0; i < segments.size(); ++i) {
      const Segment& segment = segments[i];
      const auto span = std::ranges::find_if(spans, [&segment](const Span& candidate) {
        return segment.from >= candidate.start && segment.to <= candidate.start + candidate.length;
      });
      const bool edge = i == 0 || i + 1 == segments.size();
      if (span != spans.end()) {
        WriteInTuplet(segment, *span);
      } else if (segment.chord == nullptr && edge && !firstVoice_) {
        for (ScoreItem& gap : GapItems(Fraction(segment.to - segment.from, kWhole)))
          Add(std::move(gap), segment.from);
      } else {
        const std::int64_t shift = bar_.offset - bar_.start;
        std::vector<Piece> pieces;
        Split(metre_, segment.from + shift, segment.to + shift, segment.chord == nullptr, pieces);
        WritePieces(segment, pieces, {});
      }
    }
    return std::move(items_);
  }

 private:
  void WriteInTuplet(const Segment& segment, const Span& span) {
    const auto scaled = [&span](std::int64_t place) {
      return (place - span.start) * span.actual / span.normal;
    };
    const Metre metre(scaled(span.start + span.length), span.actual);
    std::vector<Piece> pieces;
    Split(metre, scaled(segment.from), scaled(segment.to), segment.chord == nullptr, pieces);
    WritePieces(segment, pieces, {span.actual, span.normal});
  }

  void WritePieces(const Segment& segment, const std::vector<Piece>& pieces, TupletRatio ratio) {
    const VoiceChord* const chord = segment.chord;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      const Piece& piece = pieces[i];
      ScoreItem item = chord == nullptr ? RestItem(piece.value.code, piece.value.dots)
                                        : ChordItem(piece.value.code, {}, piece.value.dots);
      SetTuplet(item, ratio);
      if (chord != nullptr) {
        const bool begins = i == 0 && segment.from == chord->place;
        if (begins) {
          for (const auto& grace : chord->graces) Add(GraceItem(grace), segment.from);
          item.lyrics = chord->lyrics;
        }
        item.pitches = chord->pitches;
        item.group.tieFromBefore = !begins;
        item.group.tieOnward = i + 1 < pieces.size() || segment.to < chord->end;
      }
      Add(std::move(item), segment.from + (piece.start - pieces.front().start));
    }
  }

  void Add(ScoreItem item, std::int64_t at) {
    items_.push_back({std::move(item), at - bar_.start + bar_.offset});
  }

  const BarSpan& bar_;
  Metre metre_;
  bool firstVoice_;
  std::vector<Placed> items_;
};

}  // namespace

VoiceItems NotateBar(const BarSpan& bar, std::span<const VoiceChord> chords, bool firstVoice,
                     Beaming beaming) {
  VoiceItems items;
  if (chords.empty()) {
    if (firstVoice && bar.length == BarLength(bar.time).In(kWhole)) return {WholeBarRest()};
    if (!firstVoice) return {};
  }
  std::vector<Placed> placed = BarWriter(bar, firstVoice).Write(chords);
  Beam(placed, std::max<std::int64_t>(BeamGroup(Metre(bar.time), bar.time, beaming), 1),
       beaming != Beaming::Flags);
  for (Placed& one : placed) items.push_back(std::move(one.item));
  return items;
}

}  // namespace ts5::transcribe
