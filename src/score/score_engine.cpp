// Systems, steps and the order in which things come due.
#include "score/score_engine.h"

#include <algorithm>
#include <cmath>

#include "midi/midi_events.h"
#include "platform/casts.h"
#include "platform/midi_out.h"
#include "platform/text.h"
#include "score/score_system.h"

namespace ts5 {
namespace {

constexpr std::uint64_t kMaxTicks = kMaxVarLen;  // so that every delta time can be written
constexpr std::uint8_t kMetaTrackName = 0x03;
constexpr std::uint8_t kMetaKeySignature = 0x59;

[[nodiscard]] std::int64_t StepsFor(std::int64_t ticks) {
  return (ticks + kScoreStep - 1) / kScoreStep;
}

}  // namespace

std::uint32_t StepMilliseconds(std::uint32_t tempo) {
  constexpr float kSecondsPerMinute = 60.0F;
  constexpr float kMillisecondsPerTick = 2.0833333F;
  return static_cast<std::uint32_t>(double{kSecondsPerMinute} / tempo * kScoreStep *
                                    double{kMillisecondsPerTick});
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
  if (sink_ != nullptr) {
    SetUp();
    for (Staff& staff : state_.staves) {
      for (Voice& voice : staff.voices) voice.time += StepsFor(options_.leadIn) * kScoreStep;
    }
  }
  // A repeat without a start goes back to where the lead-in has passed.
  snapshot_ = state_;
  if (sink_ != nullptr) {
    const std::int64_t steps = StepsFor(options_.leadIn);
    snapshot_.now = steps * kScoreStep;
    PassBars(snapshot_, static_cast<std::uint32_t>(steps));
  }
  return Outcome::Success;
}

Outcome ScoreEngine::Step(std::uint32_t most) {
  const Outcome outcome = Interpret();
  return Failed(outcome) || atEnd_ ? outcome : GoOn(most);
}

Outcome ScoreEngine::StepTowards(std::uint64_t scoreTime) {
  const Outcome outcome = Interpret();
  if (Failed(outcome) || atEnd_) return outcome;
  const std::uint64_t step =
      std::max<std::uint64_t>(StepMilliseconds(state_.tempo) * std::uint64_t{10'000}, 1);
  const std::uint64_t left = scoreTime > scoreTime_ ? scoreTime - scoreTime_ : 0;
  return GoOn(ClampTo<std::uint32_t>(std::max<std::uint64_t>((left + step - 1) / step, 1)));
}

Outcome ScoreEngine::Interpret() {
  while (!atEnd_) {
    ReleaseDue();
    std::int64_t at = 0;
    if (secondPass_ && !endingSkipped_ && EndingBegins(at)) {
      SkipEnding(at);
      continue;
    }
    pending_ = Pending::None;
    const bool clears = clearSecondPass_;
    if (!RunVoices()) return Outcome::DamagedScore;
    if (pending_ != Pending::None) {
      SettleRepeat();
      if (jumps_ > kMaxJumps) return Outcome::DamagedScore;
    }
    if (clears) secondPass_ = clearSecondPass_ = false;
    if (pending_ != Pending::None) continue;
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
    if (object.IsGroup() && Holds()) return true;
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
        BarLine(static_cast<BarLineType>(object.barLine), voice.time, layout * kMaxVoices + index);
        break;
      case ObjectKind::Rest:
      case ObjectKind::Chord:
        Group(object, layout, index);
        break;
      default:
        break;
    }
    if (afterJump_ > 0) --afterJump_;
    if (object.Is(ObjectKind::BarLine) && Holds()) return true;
  }
  return true;
}

// A score that begins with part of a bar: the clock runs for the rest of that bar first.
void ScoreEngine::NoteSignature(std::int64_t at) {
  if (sink_ != nullptr || signatureSeen_ || at <= 0) return;
  signatureSeen_ = true;
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
  time_ += std::uint64_t{steps} * StepMilliseconds(Tempo()) * 10'000;
  scoreTime_ += std::uint64_t{steps} * StepMilliseconds(state_.tempo) * 10'000;
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
  scan.time = time_;
  return scan;
}

Result<ScoreScan> ScanScore(ByteView file, const ScoreFileInfo& info, const std::vector<std::uint8_t>& voices,
                            const PlaybackParameters& parameters, bool repeats,
                            const CancelCheck& cancelled) {
  ScoreOptions options;
  options.repeats = repeats;
  ScoreEngine engine(file, info, voices, parameters, options, nullptr);
  if (const Outcome begun = engine.Begin(); Failed(begun)) return Failure(begun);
  const std::uint32_t tempo = engine.Tempo();
  const WorkWatch watch{cancelled};
  WatchedWork work(watch, 0);
  while (!engine.AtEnd()) {
    if (!work.GoOn(0)) return Failure(Outcome::Cancelled);
    if (const Outcome outcome = engine.Step(); Failed(outcome)) return Failure(outcome);
  }
  ScoreScan scan = engine.Scan();
  const auto steps = static_cast<std::uint64_t>(StepsFor(scan.leadIn));
  scan.ticks += steps * kScoreStep;
  scan.time += steps * StepMilliseconds(tempo) * 10'000;
  return scan;
}

}  // namespace ts5
