#include "score/score_builder.h"

#include <algorithm>

#include "score/score_bars.h"

namespace ts5 {
namespace {

// Between two looks at the stop.
constexpr std::size_t kBarsBetween = 64;
constexpr std::size_t kChordsBetween = 4096;

bool IsSign(const ScoreItem& item) {
  return item.Is(ObjectKind::Clef) || item.Is(ObjectKind::Key) || item.Is(ObjectKind::Time);
}

Fraction LengthOf(const VoiceItems& items, ScoreTimeSignature time) {
  Fraction length;
  for (const ScoreItem& item : items) length += LengthOf(item, time);
  return length;
}

// The clef and key in force in a staff.
struct StaffSigns {
  ScoreItem clef = ClefItem(kClefG);
  ScoreItem key = KeyItem(0);
  bool clefGiven = false;
  bool keyGiven = false;
};

class SystemBuilder {
 public:
  SystemBuilder(ScoreDocument& document, const std::vector<BarColumn>& bars, unsigned barsPerSystem)
      : document_(document), barsPerSystem_(barsPerSystem), signs_(document.staves.size()) {
    voices_.assign(document.staves.size(), 1);
    for (const BarColumn& bar : bars) {
      for (std::size_t i = 0; i < bar.staves.size() && i < voices_.size(); ++i)
        voices_[i] = std::max(voices_[i], bar.staves[i].size());
    }
  }

  void Add(BarColumn& bar) {
    const bool full = barsPerSystem_ != 0 && barsInSystem_ == barsPerSystem_;
    const bool newTempo = bar.tempo != 0 && bar.tempo != tempo_;
    if (system_ == nullptr || full || newTempo || bar.newSystem) Begin(bar);
    ++barsInSystem_;
    const Fraction length = bar.length.IsZero() ? Longest(bar) : bar.length;
    bar.staves.resize(document_.staves.size());
    for (std::size_t staff = 0; staff < bar.staves.size(); ++staff) AddStaff(bar, staff, length);
    document_.bars.push_back(std::move(bar.label));
  }

 private:
  static Fraction Longest(const BarColumn& bar) {
    Fraction longest;
    for (const auto& staff : bar.staves) {
      for (const VoiceItems& voice : staff) longest = std::max(longest, LengthOf(voice, bar.time));
    }
    return longest.IsZero() ? BarLength(bar.time) : longest;
  }

  void Begin(const BarColumn& bar) {
    if (bar.tempo != 0) tempo_ = bar.tempo;
    barsInSystem_ = 0;
    system_ = &document_.systems.emplace_back();
    system_->tempo = tempo_;
    for (std::size_t staff = 0; staff < document_.staves.size(); ++staff) {
      StaffItems& items = system_->staves.emplace_back();
      items.layout = static_cast<std::uint8_t>(staff);
      items.time = bar.time;
      items.voices.resize(voices_[staff]);
    }
    begins_ = true;
  }

  void AddStaff(BarColumn& bar, std::size_t staff, Fraction length) {
    auto& voices = bar.staves[staff];
    voices.resize(voices_[staff]);
    Restate(voices, staff);
    ShareKeys(voices);
    Note(voices[0], staff);
    for (std::size_t v = 0; v < voices.size(); ++v) {
      VoiceItems& target = system_->staves[staff].voices[v];
      const Fraction missing = length - LengthOf(voices[v], bar.time);
      if (bar.repeatStart) target.push_back(BarItem(static_cast<std::uint8_t>(BarLineType::RepeatStart)));
      std::ranges::move(voices[v], std::back_inserter(target));
      if (missing > Fraction()) std::ranges::move(GapItems(missing), std::back_inserter(target));
      ScoreItem& line = target.emplace_back(BarItem(bar.line));
      line.style = bar.lineStyle;
      line.times = bar.times;
    }
    if (staff + 1 == bar.staves.size()) begins_ = false;
  }

  // A system begins with the clef and key in force, unless the bar has its own.
  void Restate(std::vector<VoiceItems>& voices, std::size_t staff) {
    if (!begins_) return;
    VoiceItems& first = voices[0];
    const auto signs = std::ranges::find_if_not(first, IsSign);
    const auto has = [&](ObjectKind kind) {
      return std::any_of(first.begin(), signs, [&](const ScoreItem& item) { return item.Is(kind); });
    };
    const bool key = !has(ObjectKind::Key) && signs_[staff].keyGiven;
    const bool clef = !has(ObjectKind::Clef) && (signs_[staff].clefGiven || document_.systems.size() == 1);
    if (key) first.insert(first.begin(), signs_[staff].key);
    if (clef) first.insert(first.begin(), signs_[staff].clef);
  }

  // Each voice knows its key for itself.
  static void ShareKeys(std::vector<VoiceItems>& voices) {
    for (const ScoreItem& item : voices[0]) {
      if (!IsSign(item)) return;
      if (!item.Is(ObjectKind::Key)) continue;
      for (std::size_t v = 1; v < voices.size(); ++v) voices[v].insert(voices[v].begin(), item);
    }
  }

  void Note(const VoiceItems& items, std::size_t staff) {
    for (const ScoreItem& item : items) {
      if (item.Is(ObjectKind::Clef)) {
        signs_[staff].clef = item;
        signs_[staff].clefGiven = true;
      }
      if (item.Is(ObjectKind::Key)) {
        signs_[staff].key = item;
        signs_[staff].keyGiven = true;
      }
    }
  }

  ScoreDocument& document_;
  unsigned barsPerSystem_;
  std::vector<StaffSigns> signs_;
  std::vector<std::size_t> voices_;  // of each staff
  SystemItems* system_ = nullptr;
  std::uint32_t tempo_ = 0;
  unsigned barsInSystem_ = 0;
  bool begins_ = false;
};

}  // namespace

ScoreItem& ItemOf(ScoreDocument& document, std::size_t staff, std::size_t voice, const ScoreEvent& event) {
  auto& staves = document.systems[event.system].staves;
  const auto found = std::ranges::find(staves, staff, &StaffItems::layout);
  return found->voices[voice][event.object];
}

void AppendBars(ScoreDocument& document, std::vector<BarColumn> bars, unsigned barsPerSystem,
                const CancelCheck& cancelled) {
  SystemBuilder builder(document, bars, barsPerSystem);
  for (std::size_t i = 0; i < bars.size(); ++i) {
    if (i % kBarsBetween == 0 && cancelled && cancelled()) return;
    builder.Add(bars[i]);
  }
}

std::vector<MovedNotes> PlaceNotes(ScoreDocument& document, const CancelCheck& cancelled) {
  std::vector<MovedNotes> moved;
  std::vector<Fraction> places;  // of what has been moved
  const ScoreMusic music = ReadEvents(document, cancelled);
  std::size_t seen = 0;
  for (std::size_t staff = 0; staff < music.voices.size(); ++staff) {
    for (std::size_t voice = 0; voice < music.voices[staff].size(); ++voice) {
      for (const ScoreEvent& event : music.voices[staff][voice]) {
        if (event.item->pitches.empty()) continue;
        if (++seen % kChordsBetween == 0 && cancelled && cancelled()) return moved;
        ScoreItem& item = ItemOf(document, staff, voice, event);
        std::uint32_t count = 0;
        item.group.notes.resize(item.pitches.size());
        for (std::size_t i = 0; i < item.pitches.size(); ++i) {
          PlacedNote placed = NoteOf(item.pitches[i], event.clef, event.key);
          placed.note.value = item.group.notes[i].value;
          item.group.notes[i] = placed.note;
          if (!placed.exact) ++count;
        }
        item.pitches = {};
        if (count == 0) continue;
        moved.push_back({0, staff, count});
        places.push_back(event.start);
      }
    }
  }
  if (moved.empty()) return moved;
  const ScoreMusic bars = ReadMusic(document, cancelled);
  for (std::size_t i = 0; i < moved.size(); ++i) moved[i].bar = BarAt(bars, places[i]);
  return moved;
}

}  // namespace ts5
