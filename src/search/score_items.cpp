#include "search/score_items.h"

#include <algorithm>
#include <queue>
#include <tuple>

#include "platform/base/casts.h"
#include "score/score_system.h"

namespace ts5 {
namespace {

constexpr unsigned kCancelEvery = 4096;  // objects

// The bar line types at which an upbeat may end: a plain one and the start of a repeat.
bool EndsUpbeat(std::uint8_t barLine) {
  return barLine == 0 || barLine == static_cast<std::uint8_t>(BarLineType::RepeatStart);
}

// What a voice keeps from system to system.
struct VoiceState {
  int key = 0;
  std::int64_t bar = 1;
  std::int64_t position = 0;  // within the bar
  bool upbeat = false;        // there was one
};
struct LineState {
  ScoreClef clef;
  std::array<VoiceState, kMaxVoices> voices;
};

// A voice on its way through a system. The one that is behind goes on first, of several the upper one.
struct Walker {
  std::int64_t elapsed = 0;
  std::size_t staff = 0;  // within the system
  std::size_t voice = 0;
  std::size_t position = 0;  // in the file
  std::uint32_t object = 0;
  std::uint32_t objects = 0;

  bool operator>(const Walker& other) const {
    return std::tie(elapsed, staff, voice) > std::tie(other.elapsed, other.staff, other.voice);
  }
};
using Walkers = std::priority_queue<Walker, std::vector<Walker>, std::greater<>>;

// The voices of a system in the bytes of a file.
struct FileVoices {
  ByteView file;

  // The object at which a walker stands; it moves on.
  ScoreObject Take(Walker& walker) const {
    ScoreSource in(file, walker.position);
    ScoreObject object = ReadObject(in);
    walker.position = in.Position();
    return object;
  }
};

// The voices of a system of a document, with what a walk needs of a system.
struct DocumentVoices {
  ScoreSystem system;
  std::vector<std::array<const VoiceItems*, kMaxVoices>> voices;  // of its staves

  explicit DocumentVoices(const SystemItems& items) {
    system.staves.reserve(items.staves.size());
    voices.reserve(items.staves.size());
    for (const StaffItems& staff : items.staves) {
      const auto known = std::ranges::find(system.staves, std::size_t{staff.layout}, &SystemStaff::layout);
      const auto index = static_cast<std::size_t>(known - system.staves.begin());
      if (known == system.staves.end()) {
        system.staves.push_back({staff.layout, staff.time, 0, {}});
        voices.emplace_back();
      }
      SystemStaff& place = system.staves[index];
      const std::size_t count = std::min<std::size_t>(staff.voices.size(), kMaxVoices);
      place.voices = std::max(place.voices, count);
      for (std::size_t v = 0; v < count; ++v) {
        place.places[v] = {0, ClampTo<std::uint32_t>(staff.voices[v].size())};
        voices[index][v] = &staff.voices[v];
      }
    }
  }

  const ScoreItem& Take(const Walker& walker) const {
    return (*voices[walker.staff][walker.voice])[walker.object];
  }
};

class ItemBuilder {
 public:
  ItemBuilder(const std::vector<StaffLayout>& staves, std::int32_t systemSpacing,
              const CancelCheck& cancelled)
      : staves_(staves),
        systemSpacing_(systemSpacing),
        cancelled_(cancelled),
        states_(staves.size()),
        lines_(staves.size()) {}

  // The next system of the score.
  template <typename Voices>
  Outcome WalkSystem(const ScoreSystem& system, const Voices& voices) {
    Walkers walkers;
    std::vector<std::int32_t> positions;
    if (!system.staves.empty()) TakeTime(system.staves[0].time);
    for (std::size_t i = 0; i < system.staves.size(); ++i) {
      const SystemStaff& staff = system.staves[i];
      positions.push_back(ClampTo<std::int32_t>(vertical_));
      vertical_ += staves_[staff.layout].spacing;
      for (std::size_t voice = 0; voice < staff.voices; ++voice)
        walkers.push({0, i, voice, staff.places[voice].position, 0, staff.places[voice].objects});
    }
    vertical_ += systemSpacing_;
    std::int64_t longest = 0;

    while (!walkers.empty()) {
      Walker walker = walkers.top();
      walkers.pop();
      // As long as no other one is behind it.
      while (walker.object < walker.objects && (walkers.empty() || !(walker > walkers.top()))) {
        if (++walked_ % kCancelEvery == 0 && Cancelled()) return Outcome::Cancelled;
        Advance(voices.Take(walker), walker, system.staves[walker.staff].layout, positions[walker.staff]);
      }
      longest = std::max(longest, walker.elapsed);
      if (walker.object < walker.objects) walkers.push(walker);
    }
    start_ += longest;
    ++system_;
    return Outcome::Success;
  }

  [[nodiscard]] std::vector<ScoreLine> Lines() { return std::move(lines_); }

 private:
  bool Cancelled() const { return cancelled_ && cancelled_(); }

  // One object further: of a file or of a document.
  template <typename Object>
  void Advance(const Object& object, Walker& walker, std::size_t layout, std::int32_t verticalPosition) {
    LineState& line = states_[layout];
    VoiceState& voice = line.voices[walker.voice];
    switch (static_cast<ObjectKind>(object.kind)) {
      case ObjectKind::Clef:
        line.clef = object.clef;
        break;
      case ObjectKind::Key:
        voice.key = object.key;
        break;
      case ObjectKind::Time:
        if (walker.staff == 0) TakeTime(object.time);
        break;
      case ObjectKind::BarLine:
        if (EndsUpbeat(object.barLine)) EndUpbeat(voice, lines_[layout][walker.voice]);
        break;
      case ObjectKind::Rest:
      case ObjectKind::Chord: {
        const NoteGroup group = DecodeGroup(object.group, kMelodyQuarter, time_, line.clef, voice.key);
        ScoreSearchItem item;
        item.system = system_;
        item.object = ClampTo<std::int32_t>(walker.object);
        item.verticalPosition = verticalPosition;
        item.onset = start_ + walker.elapsed;
        AddGroup(group, staves_[layout].transpose, item, voice, lines_[layout][walker.voice]);
        walker.elapsed += group.duration;
        break;
      }
      default:
        break;
    }
    ++walker.object;
  }

  void AddGroup(const NoteGroup& group, std::int32_t transpose, ScoreSearchItem item, VoiceState& voice,
                std::vector<ScoreSearchItem>& items) {
    item.isRest = group.isRest;
    item.duration = group.duration;
    item.tieOnward = group.tieOnward;
    item.bar = ClampTo<std::int32_t>(voice.bar);
    item.beat = ClampTo<std::int32_t>(voice.position / beat_ + 1);
    if (!group.isRest && group.noteCount > 0) {
      const auto moved = [&](std::uint8_t key) { return static_cast<std::uint8_t>(key + transpose); };
      item.firstKey = moved(group.keys[0]);
      item.lastKey = moved(group.keys[group.noteCount - 1U]);
    }
    if (!items.empty() && Continues(items.back(), item, group.tieFromBefore)) {
      items.back().duration += item.duration;
      items.back().tieOnward = item.tieOnward;
    } else {
      items.push_back(item);
    }
    voice.position += group.duration;
    voice.bar += voice.position / bar_;
    voice.position %= bar_;
  }

  static bool Continues(const ScoreSearchItem& before, const ScoreSearchItem& item, bool tieFromBefore) {
    if (before.isRest || item.isRest) return before.isRest && item.isRest;
    return before.tieOnward && tieFromBefore && before.firstKey == item.firstKey;
  }

  // What stands before the first bar line and fills no bar is the end of one.
  void EndUpbeat(VoiceState& voice, std::vector<ScoreSearchItem>& items) const {
    if (voice.upbeat || voice.bar != 1 || voice.position == 0) return;
    voice.upbeat = true;
    std::int64_t start = bar_ - voice.position;
    for (ScoreSearchItem& item : items) {
      item.bar = 0;
      item.beat = ClampTo<std::int32_t>(start / beat_ + 1);
      start += item.duration;
    }
    voice.position = 0;
  }

  void TakeTime(ScoreTimeSignature time) {
    if (!time.Usable()) return;
    time_ = time;
    beat_ = std::max<std::int64_t>((kMelodyQuarter * 4) >> time.power, 1);
    bar_ = beat_ * time.numerator;
  }

  const std::vector<StaffLayout>& staves_;
  std::int32_t systemSpacing_;
  const CancelCheck& cancelled_;
  std::vector<LineState> states_;
  std::vector<ScoreLine> lines_;
  std::int32_t system_ = 0;
  std::int64_t vertical_ = 0;
  std::int64_t start_ = 0;  // of the system
  ScoreTimeSignature time_;
  std::int64_t beat_ = kMelodyQuarter;
  std::int64_t bar_ = std::int64_t{4} * kMelodyQuarter;
  unsigned walked_ = 0;
};

}  // namespace

Result<std::vector<ScoreLine>> ReadScoreItems(ByteView file, const ScoreFileInfo& info,
                                              const CancelCheck& cancelled) {
  ItemBuilder builder(info.staves, info.systemSpacing, cancelled);
  ScoreSource in(file, info.bodyOffset, &cancelled);
  for (std::uint32_t i = 0; i < info.systems; ++i) {
    const ScoreSystem system = ReadSystem(in, info.staves.size());
    if (!in.Ok()) return Failure(in.Stopped() ? Outcome::Cancelled : Outcome::DamagedScore);
    if (const Outcome outcome = builder.WalkSystem(system, FileVoices{file}); Failed(outcome))
      return Failure(outcome);
  }
  return builder.Lines();
}

Result<std::vector<ScoreLine>> ReadScoreItems(const ScoreDocument& document, const CancelCheck& cancelled) {
  ItemBuilder builder(document.staves, document.systemSpacing, cancelled);
  for (const SystemItems& items : document.systems) {
    const DocumentVoices voices(items);
    if (const Outcome outcome = builder.WalkSystem(voices.system, voices); Failed(outcome))
      return Failure(outcome);
  }
  return builder.Lines();
}

}  // namespace ts5
