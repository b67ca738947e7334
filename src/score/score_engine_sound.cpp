// Rests and chords: what is struck, how loud and how long, what is tied and released, and the dynamics.
#include <algorithm>
#include <cmath>
#include <optional>

#include "platform/sound/midi_out.h"
#include "score/score_engine.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kGraceTicks = 30;
constexpr std::uint8_t kVolumeController = 7;
constexpr std::uint8_t kForceLevel = 90;
constexpr std::size_t kForceMark = 2;  // among kDynamicLevels
constexpr std::uint8_t kPianoLevel = 44;
constexpr int kLeastTarget = 10;

// By articulation code.
constexpr std::array<std::optional<Articulation>, 9> kByCode = {
    std::nullopt,
    Articulation::Staccato,
    Articulation::Tenuto,
    std::nullopt,
    Articulation::Staccatissimo,
    Articulation::SoftAccent,
    Articulation::StrongAccent,
    Articulation::SoftBeat,
    Articulation::HardBeat,
};

std::optional<Articulation> ByCode(std::uint8_t code) {
  return code < kByCode.size() ? kByCode[code] : std::nullopt;
}

bool IsAbsolute(Articulation which) {
  return which >= Articulation::StrongAccent;
}

int PerCent(std::int64_t of, int percentage) {
  return static_cast<int>(std::trunc(static_cast<double>(of) * 0.01 * percentage));
}

}  // namespace

std::uint8_t PlayedVelocity(const PlaybackParameters& parameters, std::uint8_t code) {
  int velocity = parameters.baseVelocity;
  if (const auto which = ByCode(code); parameters.articulation && which) {
    const int value = parameters.Shape(*which).velocity;
    if (!IsAbsolute(*which)) {
      velocity += PerCent(velocity, value);
    } else if (value != 0) {
      velocity = value;
    }
  }
  return static_cast<std::uint8_t>(std::clamp(velocity, 1, 127));  // 0 would be a release
}

std::uint32_t PlayedLength(const PlaybackParameters& parameters, std::uint8_t code, std::uint32_t length) {
  std::int64_t played = PerCent(length, parameters.shortening);
  if (const auto which = ByCode(code); parameters.articulation && which)
    played += PerCent(played, parameters.Shape(*which).length);
  played = std::min<std::int64_t>(played, length);
  return static_cast<std::uint32_t>(std::max<std::int64_t>(played, kScoreStep));
}

void ScoreEngine::RecordMarks(const NoteGroup& group) {
  if (const auto which = ByCode(group.articulation))
    scan_.articulations |= static_cast<std::uint8_t>(1U << static_cast<unsigned>(*which));
  const auto record = [this](int level) {
    const auto mark = std::ranges::find(kDynamicLevels, level);
    if (mark != kDynamicLevels.end())
      scan_.dynamics |= static_cast<std::uint8_t>(1U << (mark - kDynamicLevels.begin()));
  };
  record(group.marks.dynamic);
  if (group.marks.dynamic == kForcePiano) {
    record(kForceLevel);
    record(kPianoLevel);
  }
}

void ScoreEngine::Group(const ScoreObject& object, std::size_t layout, std::size_t index) {
  Voice& voice = state_.staves[layout].voices[index];
  const NoteGroup group = DecodeGroup(object.group, kScoreTicksPerQuarter, state_.time,
                                      state_.staves[layout].clef, voice.key == kNoKey ? 0 : voice.key);
  const bool small =
      (group.flags & kGroupZeroDuration) != 0 && (group.flags & kGroupGrace) != 0 && !group.isRest;
  const bool grace = IsGrace(object.group);
  const bool silent = (group.flags & kGroupSilent) != 0 || (small && !grace);

  std::uint32_t length = group.duration;
  if (grace && !silent) {
    length = kGraceTicks;
    voice.graceDebt += kGraceTicks;
  } else {
    const std::uint32_t taken = std::min(length, voice.graceDebt);
    length -= taken;
    voice.graceDebt -= taken;
  }

  if (const JumpWords& jump = group.marks.jump; jump.words != 0 || jump.times != 0) {
    state_.words |= jump.words & ~kJumpSegno;
    state_.wordsAt = voice.time;
    section_.times = std::max<unsigned>(section_.times, jump.times);
  }

  if (sink_ == nullptr) {
    RecordMarks(group);
  } else {
    if (group.marks.marked && !Silent(layout)) sink_->Meta(layout + 1, kMetaMark, {});
    const std::int16_t before = voice.level;
    if (parameters_.dynamics) ApplyMarks(group.marks, layout, index);
    if (group.marks.curveSpan > 0 && voice.fullLength == 0) voice.fullLength = group.marks.curveSpan;
    if (group.isRest || silent) {
      if (voice.end < 0) voice.end = -voice.end;
      voice.tiedOnward = false;
    } else {
      if (parameters_.dynamics) ActDynamics(layout, index, before, group.marks.dynamic);
      Chord(group, layout, index, length, grace);
    }
  }
  voice.time += length;
}

void ScoreEngine::Chord(const NoteGroup& group, std::size_t layout, std::size_t index, std::uint32_t length,
                        bool grace) {
  Voice& voice = state_.staves[layout].voices[index];
  std::uint32_t played = length;
  if (voice.fullLength > 0) {
    --voice.fullLength;
  } else if (!grace) {
    played = PlayedLength(parameters_, group.articulation, length);
  }
  const bool tied = voice.tiedOnward || (group.tieFromBefore && afterJump_ == 0);
  if (tied) {
    voice.end = voice.soundingCount == 0 ? 0 : std::abs(voice.end) + length;
  } else {
    Strike(group, layout, index);
    voice.end = voice.time + std::max(played, kScoreStep);
  }
  if (group.tieOnward) voice.end = -voice.end;
  voice.tiedOnward = group.tieOnward;
}

void ScoreEngine::Strike(const NoteGroup& group, std::size_t layout, std::size_t index) {
  if (Silent(layout)) return;
  const StaffLayout& staff = info_.staves[layout];
  Voice& voice = state_.staves[layout].voices[index];
  if (voice.soundingCount + group.noteCount > kMaxChordKeys) Release(layout, voice);
  const auto status = static_cast<std::uint8_t>(0x90 | Channel(layout, index));
  const std::uint8_t velocity = PlayedVelocity(parameters_, group.articulation);
  for (std::size_t i = 0; i < group.noteCount; ++i) {
    const std::int64_t moved = std::int64_t{group.keys[i]} + staff.transpose;
    const auto key = static_cast<std::uint8_t>(std::clamp<std::int64_t>(moved, 0, 127));
    voice.sounding[voice.soundingCount++] = {status, key};
    const auto mapped = static_cast<std::uint8_t>(staff.noteMap[key] & 0x7F);
    sink_->Message(layout + 1, ShortMidiMessage(status, mapped, velocity));
  }
}

void ScoreEngine::Release(std::size_t layout, Voice& voice) {
  for (std::size_t i = 0; i < voice.soundingCount; ++i) {
    const auto [status, key] = voice.sounding[i];
    const auto mapped = static_cast<std::uint8_t>(info_.staves[layout].noteMap[key] & 0x7F);
    sink_->Message(layout + 1, ShortMidiMessage(status, mapped, 0));
  }
  voice.soundingCount = 0;
  voice.end = 0;
}

void ScoreEngine::ReleaseDue() {
  if (sink_ == nullptr) return;
  const auto now = static_cast<std::int64_t>(ticks_);
  for (std::size_t layout = 0; layout < state_.staves.size(); ++layout) {
    for (Voice& voice : state_.staves[layout].voices) {
      if (voice.end > 0 && voice.end <= now) Release(layout, voice);
    }
  }
}

void ScoreEngine::ReleaseAll(State& state) {
  if (sink_ == nullptr) return;
  for (std::size_t layout = 0; layout < state.staves.size(); ++layout) {
    for (Voice& voice : state.staves[layout].voices) Release(layout, voice);
  }
}

// A group's own mark, or the start of a hairpin from that mark or from the volume that the channel has. A
// hairpin with an accent of the moment starts from where the accent leaves the voice.
void ScoreEngine::ApplyMarks(const DrawnMarks& marks, std::size_t layout, std::size_t index) {
  if (!marks.hairpin) return SetLevel(layout, index, marks.dynamic, 0, false);
  const Voice& voice = state_.staves[layout].voices[index];
  int level = volumes_[Channel(layout, index)];
  if (marks.dynamic > 0) level = marks.dynamic;
  if (marks.dynamic == kForcePiano) level = kPianoLevel;
  if (marks.dynamic < kForcePiano && voice.level > 0) level = voice.level;
  const int count = marks.hairpinSpan + 1;
  SetLevel(layout, index, level, marks.diminuendo ? -count : count, false);
}

void ScoreEngine::SetLevel(std::size_t layout, std::size_t index, int level, int hairpin, bool step) {
  if (level == 0) return;
  const auto mark = std::ranges::find(kDynamicLevels, level);
  if (mark != kDynamicLevels.end())
    level = parameters_.dynamicVelocities[static_cast<std::size_t>(mark - kDynamicLevels.begin())];
  int target = level;
  if (hairpin < 0) target = std::max(level / 2, kLeastTarget);
  if (hairpin > 0) target = std::min(level * 2, 127);
  if (level > 127 || level < kLeastMomentaryAccent) level = 127;

  for (std::size_t i = 0; i < state_.staves.size(); ++i) {
    if (i != layout && !parameters_.markForAllStaves) continue;
    for (std::size_t k = 0; k < kMaxVoices; ++k) {
      if (k != index && !parameters_.markForAllVoices) continue;
      Voice& voice = state_.staves[i].voices[k];
      voice.level = static_cast<std::int16_t>(level);
      voice.hairpin = hairpin;
      if (!step) voice.target = static_cast<std::int16_t>(target);
    }
  }
}

// A staff that is silent leaves the channel, which others may share, as it is.
void ScoreEngine::RememberVolume(std::size_t layout, std::size_t index, int level) {
  if (!Silent(layout))
    volumes_[Channel(layout, index)] = static_cast<std::uint8_t>(std::clamp(level, 0, 127));
}

void ScoreEngine::SendVolume(std::size_t layout, std::size_t index, int level) {
  if (Silent(layout)) return;
  RememberVolume(layout, index, level);
  const std::uint8_t channel = Channel(layout, index);
  sink_->Message(layout + 1, ShortMidiMessage(static_cast<std::uint8_t>(0xB0 | channel), kVolumeController,
                                              volumes_[channel]));
}

// An accent that holds for one chord. before: the level that it leaves again.
void ScoreEngine::ActAccent(std::size_t layout, std::size_t index, int before) {
  Voice& voice = state_.staves[layout].voices[index];
  if (voice.level == kForcePiano) {
    SetLevel(layout, index, kForceLevel, 0, false);
    SendVolume(layout, index, voice.level);
    SetLevel(layout, index, kPianoLevel, 0, false);
    RememberVolume(layout, index, kForceLevel);
    return;
  }
  const int old = before > 0 ? before : volumes_[Channel(layout, index)];
  voice.level = 0;
  SetLevel(layout, index, std::min(old * 2, 127), 0, false);
  SendVolume(layout, index, voice.level);
  SetLevel(layout, index, old, 0, false);
}

// before: the voice's level before the chord's own mark; mark: that mark.
void ScoreEngine::ActDynamics(std::size_t layout, std::size_t index, std::int16_t before, int mark) {
  Voice& voice = state_.staves[layout].voices[index];
  if (voice.level == 0) return;
  if (voice.hairpin == 0 && voice.level < 0) return ActAccent(layout, index, before);
  if (voice.hairpin != 0 && mark < 0) {
    // The accent is heard in place of the level from which the hairpin starts.
    const bool forcePiano = mark == kForcePiano;
    SendVolume(layout, index, forcePiano ? parameters_.dynamicVelocities[kForceMark] : voice.level * 2);
  } else if (voice.level != volumes_[Channel(layout, index)]) {
    SendVolume(layout, index, voice.level);
  }
  if (voice.hairpin == 0) return;
  const int left = voice.hairpin > 0 ? voice.hairpin - 1 : voice.hairpin + 1;
  if (left == 0) {
    voice.hairpin = 0;
    return;
  }
  const double distance = std::abs(voice.target - voice.level);
  const int moved = voice.level + static_cast<int>(std::round(distance / left));
  SetLevel(layout, index, std::clamp(moved, 1, 127), left, true);
}

}  // namespace ts5
