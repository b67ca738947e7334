#include "score/score_performer.h"

#include <algorithm>

namespace ts5 {
namespace {

using std::chrono::nanoseconds;

// How long the engine may go on at once where nothing is due: changes by the user wait no longer.
constexpr std::uint32_t kLongestTurn = 150'000;  // 100 ns
constexpr std::uint8_t kVolumeController = 7;

nanoseconds Nanoseconds(std::uint64_t hundreds) {
  return nanoseconds(static_cast<std::int64_t>(hundreds) * 100);
}

}  // namespace

ScorePerformer::ScorePerformer(const OpenScore& score, bool repeats, ScoreStage& stage, MidiOutput& output)
    : score_(score),
      repeats_(repeats),
      stage_(stage),
      output_(output),
      transport_(output),
      sounding_(score.info.staves.size()),
      shown_(score.info.staves.size()) {}

nanoseconds ScorePerformer::Position() const {
  const nanoseconds place = transport_.Sought().value_or(nanoseconds(position_));
  return std::clamp(place, nanoseconds{0}, Duration());
}

nanoseconds ScorePerformer::Duration() const {
  return score_.scan.Length();
}

BarBeat ScorePerformer::Place() const {
  const std::uint64_t place = place_;
  return {(place >> 32) + 1, static_cast<std::uint32_t>(place) + 1};
}

nanoseconds ScorePerformer::Played() const {
  return Nanoseconds(engine_->Time());
}

Outcome ScorePerformer::Run(std::optional<nanoseconds> end) {
  transport_.Begin();
  Outcome result = Start(transport_.TakeSeek());
  for (bool over = false; !over && Succeeded(result);) {
    const auto& passage = practice_.passage;
    switch (transport_.Await(Played())) {
      case PlayTurn::Due:
        if (passage && (engine_->AtEnd() || Nanoseconds(engine_->ScoreTime()) >= passage->to)) {
          result = JumpTo(passage->from);
          break;
        }
        over = engine_->AtEnd() || (end && !passage && Played() >= *end);
        if (!over) result = Step();
        break;
      case PlayTurn::Pause:
        Silence();
        Show();
        transport_.AwaitResume();
        break;
      case PlayTurn::Seek:
        result = JumpTo(transport_.TakeSeek());
        break;
      case PlayTurn::Change: {
        const std::lock_guard lock(mutex_);
        practice_ = wanted_;
        break;
      }
      case PlayTurn::Stop:
        over = true;
        break;
      case PlayTurn::Gone:
        sent_ = Outcome::WriteFailed;
        break;
    }
    if (Succeeded(result)) result = sent_;
  }
  const bool stopped = transport_.End(nanoseconds{0});
  if (Succeeded(result) && !stopped) engine_->Finish();
  Silence();
  Show();
  if (Failed(result)) return result;
  if (Failed(sent_)) return sent_;
  return stopped ? Outcome::Cancelled : Outcome::Success;
}

void ScorePerformer::Practise(const Practice& practice) {
  {
    const std::lock_guard lock(mutex_);
    wanted_ = practice;
  }
  transport_.SetRate(practice.Rate());
  transport_.Change();
}

Outcome ScorePerformer::JumpTo(nanoseconds place) {
  Silence();
  position_ = place.count();
  return Start(place);
}

// The engine anew, without sound up to the place.
Outcome ScorePerformer::Start(nanoseconds place) {
  TakeChanges();
  ScoreOptions options;
  options.repeats = repeats_;
  options.leadIn = score_.scan.leadIn;
  revision_ = 0;  // tempo and silent staves go to the new engine as well
  seeking_ = place > nanoseconds{0};
  channels_ = {};
  engine_ = std::make_unique<ScoreEngine>(score_.file, score_.info, score_.voices, parameters_,
                                          std::move(options), static_cast<ScoreSink*>(this));
  TakeChanges();
  Outcome outcome = engine_->Begin();
  const auto wanted = static_cast<std::uint64_t>(std::max(place, nanoseconds{0}).count() + 99) / 100;
  while (Succeeded(outcome) && seeking_ && !engine_->AtEnd() && engine_->ScoreTime() < wanted)
    outcome = engine_->StepTowards(wanted);
  if (seeking_) {
    seeking_ = false;
    for (const Channel& channel : channels_) {
      for (const std::uint32_t message : {channel.program, channel.volume}) {
        if (message != 0) Send(message);
      }
    }
    std::ranges::fill(sounding_, 0U);
  }
  transport_.Locate(Played());
  return outcome;
}

Outcome ScorePerformer::Step() {
  TakeChanges();
  Show();
  const std::uint32_t step = std::max(StepTime(engine_->Tempo()), 1U);
  return engine_->Step(std::max(kLongestTurn / step, 1U));
}

void ScorePerformer::TakeChanges() {
  auto orders = stage_.TakeChanges(revision_);
  if (!orders) return;
  const PlaybackParameters before = parameters_;
  parameters_ = std::move(orders->parameters.playback);
  AssignChannels(score_.info, score_.voices, parameters_.channels);
  if (engine_ == nullptr) return;
  engine_->HoldTempo(orders->tempo);
  engine_->Silence(std::move(orders->parameters.silentStaves));
  if (!seeking_) SendSounds(before);
}

// The sounds that were changed while the score plays, on every channel of the staff; a voice that was given
// another channel takes its sound and volume along.
void ScorePerformer::SendSounds(const PlaybackParameters& before) {
  const auto sound = [this](const PlaybackParameters& parameters, std::size_t staff) {
    const bool chosen = staff < parameters.sounds.size() && parameters.sounds[staff] != kNotSet;
    return static_cast<std::uint8_t>((chosen ? parameters.sounds[staff] : score_.info.staves[staff].sound) &
                                     0x7F);
  };
  for (std::size_t staff = 0; staff < score_.info.staves.size(); ++staff) {
    if (score_.info.staves[staff].usesNoteMap || staff >= before.channels.size()) continue;
    const bool changed = sound(before, staff) != sound(parameters_, staff);
    for (std::size_t voice = 0; voice < score_.voices[staff]; ++voice) {
      const std::uint8_t from = before.channels[staff][voice] & 0x0F;
      const std::uint8_t to = parameters_.channels[staff][voice] & 0x0F;
      if (!changed && from == to) continue;
      Message(staff + 1, ShortMidiMessage(static_cast<std::uint8_t>(0xC0 | to), sound(parameters_, staff)));
      const auto volume = static_cast<std::uint8_t>(channels_[from].volume >> 16);
      if (from != to && channels_[from].volume != 0)
        Message(staff + 1, ShortMidiMessage(static_cast<std::uint8_t>(0xB0 | to), kVolumeController, volume));
    }
  }
}

void ScorePerformer::Message(std::size_t track, std::uint32_t message) {
  Channel& channel = channels_[message & 0x0F];
  const std::uint32_t kind = message & 0xF0;
  if (kind == 0xC0) channel.program = message;
  if (kind == 0xB0) channel.volume = message;  // the only controller of the engine
  if (kind == 0x90) {
    const bool struck = message >> 16 != 0;
    std::uint16_t& count = channel.sounding[message >> 8 & 0x7F];
    std::uint16_t& unheard = channel.unheard[message >> 8 & 0x7F];
    std::uint32_t& notes = sounding_[track - 1];
    if (struck && (seeking_ || !practice_.Sounds(static_cast<std::uint32_t>(track - 1)))) {
      ++unheard;
      return;
    }
    if (!struck && unheard > 0) {
      --unheard;
      return;
    }
    if (struck) {
      ++count;
      ++notes;
    } else {
      if (count == 0) return;
      --count;
      notes -= std::min(notes, 1U);
    }
  }
  if (!seeking_) Send(message);
}

void ScorePerformer::Send(std::uint32_t message) {
  if (Succeeded(sent_)) sent_ = output_.Send(message);
}

void ScorePerformer::Silence() {
  for (std::size_t i = 0; i < channels_.size(); ++i) {
    const auto status = static_cast<std::uint8_t>(0x90 | i);
    for (std::uint8_t key = 0; key < 128; ++key) {
      for (std::uint16_t& count = channels_[i].sounding[key]; count > 0; --count) {
        Send(ShortMidiMessage(status, key));
        ++channels_[i].unheard[key];
      }
    }
  }
  std::ranges::fill(sounding_, 0U);
}

void ScorePerformer::Show() {
  const ScorePosition position = engine_->Position();
  place_ = std::uint64_t{position.bar} << 32 | position.beat;
  position_ = Nanoseconds(engine_->ScoreTime()).count();
  for (std::size_t i = 0; i < sounding_.size(); ++i) shown_[i] = sounding_[i] > 0;
  stage_.Show(engine_->Tempo(), shown_);
}

}  // namespace ts5
