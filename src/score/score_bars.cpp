#include "score/score_bars.h"

#include <algorithm>
#include <map>
#include <optional>

#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "score/staff_walk.h"

namespace ts5 {
namespace {

constexpr std::size_t kMostBars = 100'000;  // made of rests that say how many they fill
constexpr unsigned kCancelEvery = 4096;     // items

// What stands at a place where a bar ends.
struct LineAt {
  std::uint8_t type = kBarLinePlain;
  std::string style;
  std::uint8_t times = 0;
};

bool Ends(std::uint8_t type) {
  return type == static_cast<std::uint8_t>(BarLineType::RepeatEnd) ||
         type == static_cast<std::uint8_t>(BarLineType::RepeatBoth);
}
bool Begins(std::uint8_t type) {
  return type == static_cast<std::uint8_t>(BarLineType::RepeatStart) ||
         type == static_cast<std::uint8_t>(BarLineType::RepeatBoth);
}

// Of two bar lines at one place; a repeat's end and a repeat's start are both.
std::uint8_t Stronger(std::uint8_t a, std::uint8_t b) {
  if (Ends(a) || Ends(b)) {
    return static_cast<std::uint8_t>(Begins(a) || Begins(b) ? BarLineType::RepeatBoth
                                                            : BarLineType::RepeatEnd);
  }
  return std::max(a, b);
}

struct SystemAt {
  Fraction start;
  std::uint32_t tempo = 0;
};
// A drawing in its place: the chord it hangs on, counted among the chords of its voice.
struct DrawingAt {
  const DrawingItem* drawing = nullptr;
  Fraction at;
  std::size_t staff = 0;
  std::size_t voice = 0;
  std::size_t event = 0;
};

class MusicReader {
 public:
  MusicReader(const ScoreDocument& document, const CancelCheck& cancelled)
      : document_(document), cancelled_(cancelled) {
    const std::size_t staves = document.staves.size();
    music_.voices.resize(staves);
    music_.changes.resize(staves);
    clefs_.resize(staves);
    keys_.resize(staves);
    shown_.resize(staves);
  }

  ScoreMusic Read() {
    for (std::size_t i = 0; i < document_.systems.size() && !stopped_; ++i) {
      system_ = static_cast<std::uint32_t>(i);
      ReadSystem(document_.systems[i]);
    }
    music_.length = start_;
    MakeBars();
    PlaceEvents();
    for (const DrawingAt& drawing : drawings_) ApplyDrawing(drawing);
    std::ranges::stable_sort(music_.endings, {}, &ScoreEnding::first);
    MakeTempos();
    return std::move(music_);
  }

 private:
  void ReadSystem(const SystemItems& system) {
    systems_.push_back({start_, system.tempo});
    Fraction longest;
    if (!system.staves.empty()) times_.Take(system.staves[0].time, start_);
    // The first staff comes first, as its time signatures hold for all.
    for (std::size_t i = 0; i < system.staves.size(); ++i) {
      const StaffItems& staff = system.staves[i];
      if (staff.layout < document_.staves.size()) longest = std::max(longest, WalkStaff(staff, i == 0));
    }
    start_ += longest;
  }

  Fraction WalkStaff(const StaffItems& staff, bool first) {
    auto& voices = music_.voices[staff.layout];
    if (voices.size() < staff.voices.size()) voices.resize(staff.voices.size());
    if (keys_[staff.layout].size() < voices.size()) keys_[staff.layout].resize(voices.size());
    return WalkVoices(staff, [&](std::size_t voice, std::size_t index, Fraction elapsed) {
      if (++walked_ % kCancelEvery == 0 && cancelled_) stopped_ = cancelled_();
      return stopped_ ? std::nullopt : std::optional(TakeItem(staff, voice, index, start_ + elapsed, first));
    });
  }

  // How long it lasts.
  Fraction TakeItem(const StaffItems& staff, std::size_t voice, std::size_t index, Fraction at, bool first) {
    const ScoreItem& item = staff.voices[voice][index];
    const std::size_t layout = staff.layout;
    switch (static_cast<ObjectKind>(item.kind)) {
      case ObjectKind::Clef:
        clefs_[layout] = item.clef;
        Show(layout, item, at);
        break;
      case ObjectKind::Key:
        keys_[layout][voice] = item.key;
        if (voice == 0) Show(layout, item, at);
        break;
      case ObjectKind::Time:
        if (first) times_.Take(item.time, at);
        Show(layout, item, at);
        break;
      case ObjectKind::BarLine:
        TakeLine(item, at);
        break;
      case ObjectKind::Rest:
      case ObjectKind::Chord:
        return TakeGroup(item, at, layout, voice, index);
      default:
        break;
    }
    return {};
  }

  Fraction TakeGroup(const ScoreItem& item, Fraction at, std::size_t layout, std::size_t voice,
                     std::size_t index) {
    auto& events = music_.voices[layout][voice];
    ScoreEvent event;
    event.item = &item;
    event.start = at;
    event.length = LengthOf(item, times_.At(at));
    event.clef = clefs_[layout];
    event.key = keys_[layout][voice];
    event.system = system_;
    event.object = static_cast<std::uint32_t>(index);
    if (item.group.isRest && item.group.wholeBars > 1) longRests_ = true;
    CollectDrawings(item.drawings, {nullptr, at, layout, voice, events.size()});
    events.push_back(event);
    return event.length;
  }

  void CollectDrawings(const std::vector<DrawingItem>& list, DrawingAt place) {
    for (const DrawingItem& drawing : list) {
      place.drawing = &drawing;
      const auto kind = static_cast<DrawingKind>(drawing.kind);
      if (kind == DrawingKind::Volta || kind == DrawingKind::Text) drawings_.push_back(place);
      CollectDrawings(drawing.nested, place);
    }
  }

  // A clef, key or time signature is a change when it is not what the staff shows already.
  void Show(std::size_t layout, const ScoreItem& item, Fraction at) {
    const ScoreItem*& shown = shown_[layout][item.kind % 8];
    if (shown != nullptr && Same(*shown, item)) return;
    shown = &item;
    music_.changes[layout].push_back({&item, at});
  }

  static bool Same(const ScoreItem& a, const ScoreItem& b) {
    if (a.Is(ObjectKind::Clef)) return a.clef == b.clef && a.style == b.style;
    if (a.Is(ObjectKind::Key)) return a.key == b.key && a.style == b.style;
    return a.time == b.time && a.style == b.style;
  }

  void TakeLine(const ScoreItem& item, Fraction at) {
    // The voices come to the same bar lines one after another.
    const bool follows = line_ != lines_.end() && std::next(line_) != lines_.end();
    line_ = follows && std::next(line_)->first == at ? std::next(line_) : lines_.try_emplace(at).first;
    LineAt& line = line_->second;
    line.type = Stronger(line.type, item.barLine);
    if (line.style.empty()) line.style = item.style;
    line.times = std::max(line.times, item.times);
  }

  void MakeBars() {
    std::vector<Fraction> ends;
    for (const auto& [at, line] : lines_) {
      if (at > Fraction()) ends.push_back(at);
    }
    if (music_.length > (ends.empty() ? Fraction() : ends.back())) ends.push_back(music_.length);
    const bool labelled = !document_.bars.empty();
    Fraction start;
    for (const Fraction& end : ends) {
      if (!labelled || longRests_) Divide(start, end);
      AddBar(start, end);
    }
    if (const auto first = lines_.find(Fraction()); first != lines_.end() && !music_.bars.empty())
      music_.bars.front().repeatStart |= Begins(first->second.type);
    NumberBars();
  }

  // Bars between two bar lines that lie too far apart. start moves to the last one.
  void Divide(Fraction& start, Fraction end) {
    while (music_.bars.size() < kMostBars) {
      const Fraction bar = BarLength(times_.At(start));
      const Fraction next = start + bar;
      if (bar.IsZero() || next >= end || Crossed(next)) return;
      AddBar(start, next);
    }
  }

  // Something other than a rest of whole bars sounds on at the place.
  [[nodiscard]] bool Crossed(Fraction place) const {
    for (const auto& staff : music_.voices) {
      for (const auto& events : staff) {
        auto after = std::ranges::lower_bound(events, place, {}, &ScoreEvent::start);
        if (after == events.begin()) continue;
        const ScoreEvent& event = *std::prev(after);
        const bool wholeBars = event.IsRest() && event.item->group.wholeBars > 0;
        if (!wholeBars && event.start + event.length > place) return true;
      }
    }
    return false;
  }

  void AddBar(Fraction& start, Fraction end) {
    ScoreBar bar;
    bar.start = start;
    bar.length = end - start;
    bar.time = times_.At(start);
    const auto system = std::ranges::upper_bound(systems_, start, {}, &SystemAt::start);
    if (system != systems_.begin()) bar.system = static_cast<std::uint32_t>(system - systems_.begin() - 1);
    if (!music_.bars.empty()) bar.repeatStart = Begins(lastLine_);
    lastLine_ = 0;
    if (const auto line = lines_.find(end); line != lines_.end()) {
      lastLine_ = bar.line = line->second.type;
      bar.lineStyle = line->second.style;
      bar.repeatEnd = Ends(bar.line);
      if (line->second.times > 0) bar.passes = line->second.times;
    }
    music_.bars.push_back(std::move(bar));
    start = end;
  }

  void NumberBars() {
    const bool numbered =
        std::ranges::any_of(document_.bars, [](const ScoreBarLabel& label) { return !label.number.empty(); });
    if (numbered && document_.bars.size() == music_.bars.size()) {
      for (std::size_t i = 0; i < music_.bars.size(); ++i) {
        music_.bars[i].number = document_.bars[i].number;
        music_.bars[i].implicit = document_.bars[i].implicit;
      }
      return;
    }
    bool upbeat = false;
    if (music_.bars.size() > 1) {
      const ScoreBar& first = music_.bars[0];
      upbeat = first.length < BarLength(first.time);
    }
    std::size_t number = upbeat ? 0 : 1;
    for (ScoreBar& bar : music_.bars) bar.number = std::to_string(number++);
    if (upbeat) music_.bars[0].implicit = true;
  }

  // The voices' events are in order, and so are the bars.
  void PlaceEvents() {
    for (auto& staff : music_.voices) {
      for (auto& events : staff) {
        std::uint32_t bar = 0;
        for (ScoreEvent& event : events) {
          while (bar + 1 < music_.bars.size() && music_.bars[bar + 1].start <= event.start) ++bar;
          event.bar = bar;
        }
      }
    }
  }

  void ApplyDrawing(const DrawingAt& place) {
    if (music_.bars.empty()) return;
    const std::uint32_t bar = music_.voices[place.staff][place.voice][place.event].bar;
    if (place.drawing->Is(DrawingKind::Volta)) return AddEnding(place, bar);
    if (const double quarters = TempoOf(*place.drawing); quarters > 0)
      drawnTempos_.push_back({place.at + place.drawing->offset, quarters});
    const JumpMark mark = JumpOf(*place.drawing);
    music_.bars[bar].jumps |= mark.jumps;
    music_.bars[bar].toFine |= mark.toFine;
    music_.bars[bar].toCoda |= mark.toCoda;
    if (const unsigned times = ReadJumpWords(AsText(place.drawing->text)).times; times > 0)
      SetPasses(bar, times);
  }

  // Of the repeat end that follows.
  void SetPasses(std::uint32_t bar, unsigned times) {
    constexpr std::uint32_t kFarthest = 512;
    const std::uint32_t end = std::min(bar + kFarthest, static_cast<std::uint32_t>(music_.bars.size()));
    while (bar < end && !music_.bars[bar].repeatEnd) ++bar;
    if (bar < end) music_.bars[bar].passes = std::max(music_.bars[bar].passes, times);
  }

  void AddEnding(const DrawingAt& place, std::uint32_t bar) {
    const std::uint8_t from = place.drawing->value & 15;
    const std::uint8_t to = place.drawing->value >> 4;
    if (from == 0 || to < from) return;
    const std::uint32_t last = std::max(bar, EndOf(place, bar));
    for (const ScoreEnding& known : music_.endings) {
      if (known.first == bar && known.from == from && known.to == to) return;  // of another staff
    }
    for (std::uint32_t i = bar; i <= last; ++i) {
      for (unsigned number = from; number <= to; ++number) music_.bars[i].endings |= 1U << number;
    }
    music_.endings.push_back({bar, last, from, to, place.drawing});
  }

  // The bar of the chord to which its span reaches; without a span the bar of the next repeat end, if an
  // ending does not begin before.
  [[nodiscard]] std::uint32_t EndOf(const DrawingAt& place, std::uint32_t bar) const {
    if (place.drawing->span > 0) {
      const auto& events = music_.voices[place.staff][place.voice];
      return events[SpanEnd(events, place.event, place.drawing->span)].bar;
    }
    for (std::uint32_t i = bar; i < music_.bars.size(); ++i) {
      if (music_.bars[i].repeatEnd) return i;
      if (i > bar && (music_.bars[i].repeatStart || BeginsEnding(music_.bars[i]))) break;
    }
    return bar;
  }

  [[nodiscard]] bool BeginsEnding(const ScoreBar& bar) const {
    return std::ranges::any_of(drawings_, [&](const DrawingAt& other) {
      return other.drawing->Is(DrawingKind::Volta) && other.at >= bar.start &&
             other.at < bar.start + bar.length;
    });
  }

  // A drawn tempo is more exact than that of its system.
  void MakeTempos() {
    std::ranges::stable_sort(drawnTempos_, {}, &ScoreTempo::at);
    std::uint32_t before = 0;
    for (const SystemAt& system : systems_) {
      const bool drawn = std::ranges::binary_search(drawnTempos_, system.start, {}, &ScoreTempo::at);
      if (system.tempo != 0 && system.tempo != before && !drawn)
        music_.tempos.push_back({system.start, static_cast<double>(system.tempo)});
      if (system.tempo != 0) before = system.tempo;
    }
    music_.tempos.insert(music_.tempos.end(), drawnTempos_.begin(), drawnTempos_.end());
    std::ranges::stable_sort(music_.tempos, {}, &ScoreTempo::at);
    const auto same = [](const ScoreTempo& a, const ScoreTempo& b) { return a.quarters == b.quarters; };
    music_.tempos.erase(std::unique(music_.tempos.begin(), music_.tempos.end(), same), music_.tempos.end());
  }

  const ScoreDocument& document_;
  const CancelCheck& cancelled_;
  ScoreMusic music_;
  std::vector<ScoreClef> clefs_;        // of each staff
  std::vector<std::vector<int>> keys_;  // of each voice
  std::vector<std::array<const ScoreItem*, 8>> shown_;
  TimesInForce times_;
  std::vector<SystemAt> systems_;
  std::map<Fraction, LineAt> lines_;
  std::map<Fraction, LineAt>::iterator line_ = lines_.end();  // the last one met
  std::vector<DrawingAt> drawings_;
  std::vector<ScoreTempo> drawnTempos_;
  Fraction start_;  // of the system
  std::uint32_t system_ = 0;
  std::uint8_t lastLine_ = 0;
  bool longRests_ = false;
  bool stopped_ = false;
  unsigned walked_ = 0;
};

}  // namespace

std::size_t SpanEnd(const std::vector<ScoreEvent>& events, std::size_t event, std::uint16_t span) {
  std::size_t last = event;
  for (std::size_t i = event + 1; i < events.size() && span > 0; ++i) {
    if (events[i].IsRest()) continue;
    last = i;
    --span;
  }
  return last;
}

ScoreMusic ReadMusic(const ScoreDocument& document, const CancelCheck& cancelled) {
  return MusicReader(document, cancelled).Read();
}

std::vector<std::uint8_t> SoundingKeys(const ScoreEvent& event, const StaffLayout& staff) {
  std::vector<std::uint8_t> keys;
  if (event.IsRest()) return keys;
  for (const ScoreNote& note : event.item->group.notes) {
    const auto moved = std::int64_t{NoteKey(note, event.clef, event.key)} + staff.transpose;
    const auto key = static_cast<std::uint8_t>(std::clamp<std::int64_t>(moved, 0, 127));
    keys.push_back(staff.usesNoteMap ? staff.noteMap[key] & 127 : key);
  }
  return keys;
}

std::uint32_t BarAt(const ScoreMusic& music, Fraction place) {
  const auto after = std::ranges::upper_bound(music.bars, place, {}, &ScoreBar::start);
  return after == music.bars.begin() ? 0 : static_cast<std::uint32_t>(after - music.bars.begin() - 1);
}

bool HasBeams(const ScoreMusic& music) {
  for (const auto& staff : music.voices) {
    for (const auto& voice : staff) {
      if (std::ranges::any_of(voice, [](const ScoreEvent& event) { return !event.item->beams.empty(); }))
        return true;
    }
  }
  return false;
}

}  // namespace ts5
