// Systems, steps and the order in which things come due.
#include "score/score_engine.h"

#include <algorithm>
#include <cmath>

#include "midi/midi_events.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "platform/sound/midi_out.h"
#include "score/score_system.h"

namespace ts5 {
namespace {

constexpr std::uint64_t kMaxTicks = kMaxVarLen;  // so that every delta time can be written
// A step at one quarter note a minute, in 100 ns.
constexpr std::uint64_t kStepMinutes = std::uint64_t{600'000'000} * kScoreStep / kScoreTicksPerQuarter;
constexpr std::uint8_t kMetaTrackName = 0x03;
constexpr std::string_view kSegnoLetters = "egno";
constexpr std::uint8_t kMetaKeySignature = 0x59;

[[nodiscard]] std::int64_t StepsFor(std::int64_t ticks) {
  return (ticks + kScoreStep - 1) / kScoreStep;
}

}  // namespace

std::uint32_t StepTime(std::uint32_t tempo) {
  return tempo == 0 ? 0 : static_cast<std::uint32_t>(kStepMinutes / tempo);
}

void ScoreEngine::Clock::Advance(std::uint64_t steps, std::uint32_t now) {
  if (now != tempo) rest = 0;
  tempo = now;
  rest += steps * kStepMinutes;
  time += rest / tempo;
  rest %= tempo;
}

std::uint32_t TempoMicroseconds(std::uint32_t tempo) {
  constexpr float kMinutesPerSecond = 0.016666668F;
  const double quarter = 1'000'000.0 / (tempo * double{kMinutesPerSecond});
  return static_cast<std::uint32_t>(std::min(quarter, 16'777'215.0));
}

ScoreEngine::ScoreEngine(ByteView file, const ScoreFileInfo& info, const std::vector<std::uint8_t>& voices,
                         const PlaybackParameters& parameters, ScoreOptions options, ScoreSink* sink)
    : file_(file),
      info_(info),
      voices_(voices),
      parameters_(parameters),
      options_(std::move(options)),
      sink_(sink) {
  state_.nextSystem = info.bodyOffset;
  state_.staves.resize(info.staves.size());
  hasSegno_ = options_.repeats && AsText(file).find(kSegnoLetters) != std::string_view::npos;
}

std::uint32_t ScoreEngine::Tempo() const {
  const std::uint32_t tempo = options_.tempo.value_or(state_.tempo);
  return tempo == 0 ? kDefaultTempo : tempo;
}

std::uint32_t ScoreEngine::TicksPerBar(const ScoreTimeSignature& time) {
  return (kScoreTicksPerQuarter * 4 >> time.power) * time.numerator;
}

std::uint8_t ScoreEngine::Channel(std::size_t layout, std::size_t voice) const {
  return layout < parameters_.channels.size() ? parameters_.channels[layout][voice] & 15 : std::uint8_t{0};
}

ScorePosition ScoreEngine::Position() const {
  const std::uint32_t beat = std::max(kScoreTicksPerQuarter * 4 >> state_.time.power, 1U);
  if (atEnd_ && state_.barTick == 0 && state_.bar > 0) {
    const auto last = static_cast<std::uint32_t>(state_.time.numerator - 1);
    return {state_.bar - 1, last, last * beat};
  }
  return {state_.bar, state_.barTick / beat, state_.barTick};
}

// The times of all voices begin anew where the longest voice of the system before has ended.
bool ScoreEngine::ReadSystem() {
  std::int64_t start = 0;
  for (const std::size_t layout : state_.order) {
    for (Voice& voice : state_.staves[layout].voices) start = std::max(start, voice.time);
  }
  for (Staff& staff : state_.staves) {
    for (Voice& voice : staff.voices) voice.objects = 0;
  }
  state_.order.clear();

  ScoreSource in(file_, state_.nextSystem);
  const ScoreSystem system = ts5::ReadSystem(in, info_.staves.size());
  if (!in.Ok()) return false;
  state_.nextSystem = in.Position();
  if (system.tempo != 0) state_.tempo = system.tempo;
  if (!system.staves.empty() && system.staves[0].time.Usable()) state_.time = system.staves[0].time;
  for (const SystemStaff& staff : system.staves) {
    state_.order.push_back(staff.layout);
    for (std::size_t i = 0; i < staff.voices; ++i) {
      Voice& voice = state_.staves[staff.layout].voices[i];
      voice.position = staff.places[i].position;
      voice.objects = staff.places[i].objects;
      voice.time = start;
    }
  }
  return true;
}

bool ScoreEngine::SystemEnded() const {
  const auto now = static_cast<std::int64_t>(ticks_);
  return std::ranges::all_of(state_.order, [&](std::size_t layout) {
    return std::ranges::all_of(state_.staves[layout].voices,
                               [now](const Voice& voice) { return voice.objects == 0 && voice.time <= now; });
  });
}

Outcome ScoreEngine::Begin() {
  if (info_.systems == 0) {
    atEnd_ = true;
  } else if (!ReadSystem()) {
    return Outcome::DamagedScore;
  }
  if (sink_ != nullptr) SetUp();
  for (Staff& staff : state_.staves) {
    for (Voice& voice : staff.voices) voice.time += options_.leadIn;
  }
  // A repeat without a start goes back to where the lead-in has passed.
  State begin = state_;
  begin.now = options_.leadIn;
  PassBars(begin, static_cast<std::uint32_t>(StepsFor(options_.leadIn)));
  begin_ = std::make_shared<const State>(std::move(begin));
  section_.start = begin_;
  if (hasSegno_ && NextGroupOfAny(HasSegno, 0)) segno_ = begin_;
  return Outcome::Success;
}

Outcome ScoreEngine::Step(std::uint32_t most) {
  const Outcome outcome = Interpret();
  return Failed(outcome) || atEnd_ ? outcome : GoOn(most);
}

Outcome ScoreEngine::StepTowards(std::uint64_t scoreTime) {
  const Outcome outcome = Interpret();
  if (Failed(outcome) || atEnd_) return outcome;
  const std::uint64_t step = std::max(StepTime(state_.tempo), 1U);
  const std::uint64_t left = scoreTime > ScoreTime() ? scoreTime - ScoreTime() : 0;
  return GoOn(ClampTo<std::uint32_t>(std::max<std::uint64_t>((left + step - 1) / step, 1)));
}

Outcome ScoreEngine::Interpret() {
  while (!atEnd_) {
    ReleaseDue();
    std::int64_t at = 0;
    const Snapshot behind = EndingBegins(at);
    turn_ = {};
    skipping_ = behind != nullptr;
    const bool ending = section_.ending;
    const bool read = RunVoices();
    skipping_ = false;
    if (!read) return Outcome::DamagedScore;
    const bool turned = turn_.Any();
    if (turned) {
      TakeTurn();
    } else if (behind != nullptr) {
      SkipEnding(behind, at);
    }
    if (jumps_ > kMaxJumps) return Outcome::DamagedScore;
    if (ending && section_.ending && behind == nullptr) section_.again = section_.ending = false;
    if (turned || behind != nullptr) continue;
    if (!SystemEnded()) break;
    if (++state_.system >= info_.systems) {
      atEnd_ = true;
      return Outcome::Success;
    }
    if (!ReadSystem()) return Outcome::DamagedScore;
  }
  return Outcome::Success;
}

Outcome ScoreEngine::GoOn(std::uint32_t most) {
  WriteConductor();
  Advance(IdleSteps(most));
  return ticks_ > kMaxTicks ? Outcome::DamagedScore : Outcome::Success;
}

void ScoreEngine::Finish() {
  ReleaseAll(state_);
}

bool ScoreEngine::RunVoices() {
  for (std::size_t i = 0; i < state_.order.size(); ++i) {
    for (std::size_t voice = 0; voice < kMaxVoices; ++voice) {
      if (!RunVoice(state_.order[i], voice, i == 0)) return false;
    }
  }
  return true;
}

bool ScoreEngine::RunVoice(std::size_t layout, std::size_t index, bool first) {
  Staff& staff = state_.staves[layout];
  Voice& voice = staff.voices[index];
  while (voice.objects > 0 && voice.time <= static_cast<std::int64_t>(ticks_)) {
    ScoreSource in(file_, voice.position);
    const ScoreObject object = ReadObject(in);
    if (!in.Ok() || object.kind == static_cast<std::uint8_t>(ObjectKind::Other) ||
        object.kind > static_cast<std::uint8_t>(ObjectKind::ChordVariant))
      return false;
    if (object.IsGroup() && (turn_.Holds() || (skipping_ && IsOfEnding(object.group)))) return true;
    const std::size_t by = layout * kMaxVoices + index;
    if (object.Is(ObjectKind::Chord)) CountEnding(by);
    if (object.IsGroup() && object.group.marks.firstEnding != 0) NoteEnding(object.group, voice.position, by);
    voice.position = in.Position();
    --voice.objects;
    switch (static_cast<ObjectKind>(object.kind)) {
      case ObjectKind::Clef:
        staff.clef = object.clef;
        break;
      case ObjectKind::Key:
        voice.key = static_cast<std::int8_t>(object.key);
        if (first && object.key != writtenKey_) WriteKey(object.key);
        break;
      case ObjectKind::Time:
        NoteSignature(voice.time);
        if (first && object.time.Usable()) {
          state_.time = object.time;
          WriteTime();
        }
        break;
      case ObjectKind::BarLine:
        NoteSignature(voice.time);
        if (first && index == 0 && sink_ != nullptr) sink_->Meta(0, kMetaBarLine, {});
        BarLine(voice, static_cast<BarLineType>(object.barLine), by);
        break;
      case ObjectKind::Rest:
      case ObjectKind::Chord:
        Group(object, layout, index);
        break;
      default:
        break;
    }
    if (afterJump_ > 0) --afterJump_;
    if (object.Is(ObjectKind::BarLine) && turn_.Holds()) return true;
  }
  return true;
}

// A score that begins with part of a bar: the clock runs for the rest of that bar first.
void ScoreEngine::NoteSignature(std::int64_t at) {
  if (sink_ != nullptr || signatureSeen_ || at <= options_.leadIn) return;
  signatureSeen_ = true;
  at -= options_.leadIn;
  const std::int64_t bar = TicksPerBar(state_.time);
  if (at < bar) foundLeadIn_ = static_cast<std::uint32_t>(bar - at);
}

std::uint32_t ScoreEngine::IdleSteps(std::uint32_t most) const {
  const auto now = static_cast<std::int64_t>(ticks_);
  std::int64_t next = INT64_MAX;
  for (const Staff& staff : state_.staves) {
    for (const Voice& voice : staff.voices) {
      if (voice.time > now) next = std::min(next, voice.time);
      if (voice.end > 0) next = std::min(next, std::max(voice.end, now + 1));
    }
  }
  if (next == INT64_MAX) return 1;
  return static_cast<std::uint32_t>(std::clamp<std::int64_t>(StepsFor(next - now), 1, most));
}

void ScoreEngine::PassBars(State& state, std::uint32_t steps) {
  const std::uint32_t bar = TicksPerBar(state.time);
  if (bar >= kScoreStep) {
    const std::uint64_t within = state.barTick + std::uint64_t{steps} * kScoreStep;
    state.bar += static_cast<std::uint32_t>(within / bar);
    state.barTick = static_cast<std::uint32_t>(within % bar);
  } else {
    state.bar += steps;  // no more than one bar a step
  }
}

void ScoreEngine::Advance(std::uint32_t steps) {
  const std::uint64_t ticks = std::uint64_t{steps} * kScoreStep;
  ticks_ += ticks;
  clock_.Advance(steps, Tempo());
  scoreClock_.Advance(steps, state_.tempo);
  PassBars(state_, steps);
  if (sink_ != nullptr && ticks > 0) sink_->Advance(ticks);
}

int ScoreEngine::FirstKey() const {
  for (const std::size_t layout : state_.order) {
    for (const Voice& voice : state_.staves[layout].voices) {
      ScoreSource in(file_, voice.position);
      for (std::uint32_t i = 0; i < voice.objects; ++i) {
        const ScoreObject object = ReadObject(in);
        if (object.Is(ObjectKind::Key)) return object.key;
      }
    }
  }
  return 0;
}

void ScoreEngine::SetUp() {
  WriteTempo();
  writtenTime_ = {0, 0};
  WriteTime();
  WriteKey(FirstKey());
  for (std::size_t i = 0; i < info_.staves.size(); ++i) {
    const StaffLayout& staff = info_.staves[i];
    const std::uint8_t chosen = i < parameters_.sounds.size() ? parameters_.sounds[i] : kNotSet;
    const auto sound = static_cast<std::uint8_t>((chosen == kNotSet ? staff.sound : chosen) & 0x7F);
    const int volume = std::min(staff.volume & 0xFF, 127);
    for (std::size_t voice = 0; voice < voices_[i]; ++voice) {
      const std::uint8_t channel = Channel(i, voice);
      if (!staff.usesNoteMap) {
        sink_->Message(i + 1, ShortMidiMessage(static_cast<std::uint8_t>(0xC0 | channel), sound));
      }
      SendVolume(i, voice, volume);
    }
    const std::string name = Windows1252FromUtf8(staff.name);
    sink_->Meta(i + 1, kMetaTrackName, AsBytes(name));
  }
}

void ScoreEngine::WriteTempo() {
  writtenTempo_ = Tempo();
  if (sink_ == nullptr) return;
  const std::uint32_t quarter = TempoMicroseconds(writtenTempo_);
  const std::array<std::uint8_t, 3> data = {static_cast<std::uint8_t>(quarter >> 16),
                                            static_cast<std::uint8_t>(quarter >> 8),
                                            static_cast<std::uint8_t>(quarter)};
  sink_->Meta(0, kMetaSetTempo, data);
}

void ScoreEngine::WriteTime() {
  if (sink_ == nullptr || state_.time == writtenTime_) return;
  writtenTime_ = state_.time;
  const std::array<std::uint8_t, 4> data = {static_cast<std::uint8_t>(state_.time.numerator),
                                            static_cast<std::uint8_t>(state_.time.power),
                                            static_cast<std::uint8_t>(96 >> state_.time.power), 8};
  sink_->Meta(0, kMetaTimeSignature, data);
}

void ScoreEngine::WriteKey(int key) {
  writtenKey_ = key;
  if (sink_ == nullptr) return;
  const std::array<std::uint8_t, 2> data = {static_cast<std::uint8_t>(key), 0};
  sink_->Meta(0, kMetaKeySignature, data);
}

// What the conductor must know has changed in this step.
void ScoreEngine::WriteConductor() {
  if (sink_ == nullptr) return;
  WriteTime();
  if (!state_.order.empty()) {
    const std::int8_t key = state_.staves[state_.order[0]].voices[0].key;
    const int sharps = key == kNoKey ? 0 : key;
    if (sharps != firstVoiceKey_ && sharps != writtenKey_) WriteKey(sharps);
    firstVoiceKey_ = sharps;
  }
  if (Tempo() != writtenTempo_) WriteTempo();
}

ScoreScan ScoreEngine::Scan() const {
  ScoreScan scan = scan_;
  scan.leadIn = foundLeadIn_;
  scan.ticks = ticks_;
  scan.time = Time();
  return scan;
}

namespace {

Result<ScoreScan> Walk(ScoreEngine engine, const CancelCheck& cancelled) {
  if (const Outcome begun = engine.Begin(); Failed(begun)) return Failure(begun);
  const WorkWatch watch{cancelled};
  WatchedWork work(watch, 0);
  while (!engine.AtEnd()) {
    if (!work.GoOn(0)) return Failure(Outcome::Cancelled);
    if (const Outcome outcome = engine.Step(); Failed(outcome)) return Failure(outcome);
  }
  return engine.Scan();
}

}  // namespace

// With an upbeat it goes a second time, now behind the lead-in that the first walk found.
Result<ScoreScan> ScanScore(ByteView file, const ScoreFileInfo& info, const std::vector<std::uint8_t>& voices,
                            const PlaybackParameters& parameters, bool repeats,
                            const CancelCheck& cancelled) {
  ScoreOptions options;
  options.repeats = repeats;
  auto scan = Walk(ScoreEngine(file, info, voices, parameters, options, nullptr), cancelled);
  if (!scan || scan->leadIn == 0) return scan;
  options.leadIn = scan->leadIn;
  return Walk(ScoreEngine(file, info, voices, parameters, options, nullptr), cancelled);
}

}  // namespace ts5
