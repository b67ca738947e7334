#include "score/score_builder.h"

#include <algorithm>

#include "score/score_bars.h"
#include "score/staff_walk.h"

namespace ts5 {
namespace {

// Between two looks at the stop.
constexpr std::size_t kBarsBetween = 64;
constexpr std::size_t kItemsBetween = 4096;

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
  SystemBuilder(ScoreDocument& document, std::vector<BarColumn>& bars, unsigned barsPerSystem)
      : document_(document), bars_(bars), barsPerSystem_(barsPerSystem), signs_(document.staves.size()) {
    voices_.assign(document.staves.size(), 1);
    for (const BarColumn& bar : bars) {
      for (std::size_t i = 0; i < bar.staves.size() && i < voices_.size(); ++i)
        voices_[i] = std::max(voices_[i], bar.staves[i].size());
    }
  }

  void Build(const CancelCheck& cancelled) {
    for (std::size_t first = 0; first < bars_.size();) {
      const std::size_t last = Begin(first);
      for (; first < last; ++first) {
        if (first % kBarsBetween == 0 && cancelled && cancelled()) return;
        Add(bars_[first]);
      }
    }
  }

 private:
  static Fraction Longest(const BarColumn& bar) {
    Fraction longest;
    for (const auto& staff : bar.staves) {
      for (const VoiceItems& voice : staff) longest = std::max(longest, LengthOf(voice, bar.time));
    }
    return longest.IsZero() ? BarLength(bar.time) : longest;
  }

  // The system that begins with a bar; returns the bar behind it.
  std::size_t Begin(std::size_t first) {
    const BarColumn& bar = bars_[first];
    if (bar.tempo != 0) tempo_ = bar.tempo;
    system_ = &document_.systems.emplace_back();
    system_->tempo = tempo_;
    const std::size_t last = EndOfSystem(first);
    system_->staves.reserve(document_.staves.size());
    for (std::size_t staff = 0; staff < document_.staves.size(); ++staff) {
      StaffItems& items = system_->staves.emplace_back();
      items.layout = static_cast<std::uint8_t>(staff);
      items.time = bar.time;
      items.voices.resize(voices_[staff]);
      for (std::size_t v = 0; v < items.voices.size(); ++v)
        items.voices[v].reserve(ItemsOf(first, last, staff, v));
    }
    begins_ = true;
    return last;
  }

  [[nodiscard]] std::size_t EndOfSystem(std::size_t first) const {
    std::size_t last = first + 1;
    const auto goesOn = [&](const BarColumn& bar) {
      const bool full = barsPerSystem_ != 0 && last - first == barsPerSystem_;
      return !full && !bar.newSystem && (bar.tempo == 0 || bar.tempo == tempo_);
    };
    while (last < bars_.size() && goesOn(bars_[last])) ++last;
    return last;
  }

  // How many items a voice is going to have in a system, or a few more: none is moved as it grows.
  [[nodiscard]] std::size_t ItemsOf(std::size_t first, std::size_t last, std::size_t staff,
                                    std::size_t voice) const {
    constexpr std::size_t kSigns = 2;  // restated at its start
    std::size_t count = kSigns;
    for (std::size_t i = first; i < last; ++i) {
      const auto& staves = bars_[i].staves;
      const bool given = staff < staves.size() && voice < staves[staff].size();
      count += 1 + (given && !staves[staff][voice].empty() ? staves[staff][voice].size() : 1);
    }
    return count;
  }

  void Add(BarColumn& bar) {
    const Fraction length = bar.length.IsZero() ? Longest(bar) : bar.length;
    bar.staves.resize(document_.staves.size());
    for (std::size_t staff = 0; staff < bar.staves.size(); ++staff) AddStaff(bar, staff, length);
    bar.staves = {};
    document_.bars.push_back(std::move(bar.label));
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
  std::vector<BarColumn>& bars_;
  unsigned barsPerSystem_;
  std::vector<StaffSigns> signs_;
  std::vector<std::size_t> voices_;  // of each staff
  SystemItems* system_ = nullptr;
  std::uint32_t tempo_ = 0;
  bool begins_ = false;
};

// Makes notes of pitches, system by system.
class NotePlacer {
 public:
  NotePlacer(ScoreDocument& document, const CancelCheck& cancelled)
      : document_(document), cancelled_(cancelled), staves_(document.staves.size()) {}

  std::vector<MovedNotes> Place() {
    for (SystemItems& system : document_.systems) {
      if (!system.staves.empty()) times_.Take(system.staves[0].time, start_);
      Fraction longest;
      for (std::size_t i = 0; i < system.staves.size() && !stopped_; ++i) {
        if (system.staves[i].layout < staves_.size())
          longest = std::max(longest, PlaceStaff(system.staves[i], i == 0));
      }
      if (stopped_) return std::move(moved_);
      start_ += longest;
    }
    if (moved_.empty()) return {};
    const ScoreMusic music = ReadMusic(document_, cancelled_);
    for (std::size_t i = 0; i < moved_.size(); ++i) moved_[i].bar = BarAt(music, places_[i]);
    return std::move(moved_);
  }

 private:
  struct Signs {
    ScoreClef clef;
    std::vector<int> keys;  // of each voice
  };

  Fraction PlaceStaff(StaffItems& staff, bool first) {
    Signs& signs = staves_[staff.layout];
    if (signs.keys.size() < staff.voices.size()) signs.keys.resize(staff.voices.size());
    return WalkVoices(
        staff, [&](std::size_t voice, std::size_t index, Fraction elapsed) -> std::optional<Fraction> {
          if (++walked_ % kItemsBetween == 0 && cancelled_ && cancelled_()) stopped_ = true;
          if (stopped_) return std::nullopt;
          ScoreItem& item = staff.voices[voice][index];
          const Fraction at = start_ + elapsed;
          if (item.Is(ObjectKind::Clef)) signs.clef = item.clef;
          if (item.Is(ObjectKind::Key)) signs.keys[voice] = item.key;
          if (item.Is(ObjectKind::Time) && first) times_.Take(item.time, at);
          if (!item.IsGroup()) return Fraction();
          if (const std::uint32_t count = PlaceChord(item, signs.clef, signs.keys[voice]); count > 0) {
            moved_.push_back({0, staff.layout, count});
            places_.push_back(at);
          }
          return LengthOf(item, times_.At(at));
        });
  }

  // How many of its notes have come to lie elsewhere.
  static std::uint32_t PlaceChord(ScoreItem& item, ScoreClef clef, int key) {
    if (item.pitches.empty()) return 0;
    std::uint32_t count = 0;
    item.group.notes.resize(item.pitches.size());
    for (std::size_t i = 0; i < item.pitches.size(); ++i) {
      PlacedNote placed = NoteOf(item.pitches[i], clef, key);
      placed.note.value = item.group.notes[i].value;
      item.group.notes[i] = placed.note;
      if (!placed.exact) ++count;
    }
    item.pitches = {};
    return count;
  }

  ScoreDocument& document_;
  const CancelCheck& cancelled_;
  std::vector<Signs> staves_;
  TimesInForce times_;
  Fraction start_;  // of the system
  std::vector<MovedNotes> moved_;
  std::vector<Fraction> places_;  // of what has been moved
  std::size_t walked_ = 0;
  bool stopped_ = false;
};

}  // namespace

ScoreItem& ItemOf(ScoreDocument& document, std::size_t staff, std::size_t voice, const ScoreEvent& event) {
  auto& staves = document.systems[event.system].staves;
  const auto found = std::ranges::find(staves, staff, &StaffItems::layout);
  return found->voices[voice][event.object];
}

void AppendBars(ScoreDocument& document, std::vector<BarColumn> bars, unsigned barsPerSystem,
                const CancelCheck& cancelled) {
  SystemBuilder(document, bars, barsPerSystem).Build(cancelled);
}

std::vector<MovedNotes> PlaceNotes(ScoreDocument& document, const CancelCheck& cancelled) {
  return NotePlacer(document, cancelled).Place();
}

}  // namespace ts5
