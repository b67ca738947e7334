#include "score/score_at_hand.h"

#include <algorithm>

#include "score/parameter_set.h"
#include "score/texts.h"

namespace ts5 {

std::vector<std::uint8_t> ScoreAtHand::Voices() const {
  std::vector<std::uint8_t> voices(staves.size());
  std::ranges::transform(staves, voices.begin(), &StaffAtHand::voices);
  return voices;
}

ScoreAtHand DescribeScore(const std::string& path, const OpenScore& score) {
  ScoreAtHand at;
  at.path = path;
  for (std::size_t i = 0; i < score.info.staves.size(); ++i) {
    const StaffLayout& staff = score.info.staves[i];
    at.staves.push_back(
        {staff.name, score.voices[i], static_cast<std::uint8_t>(staff.sound & 0x7F), staff.usesNoteMap});
  }
  AssignChannels(score.info, score.voices, at.channels);
  at.articulations = score.scan.articulations;
  at.dynamics = score.scan.dynamics;
  return at;
}

Result<ScoreAtHand> ReadScoreAtHand(const std::string& path) {
  PlaybackParameters parameters;
  const auto score = OpenAndScan(path, parameters);
  if (!score) return Failure(score.error());
  return DescribeScore(path, *score);
}

std::uint8_t ChannelOf(const ScoreAtHand& score, const ScoreParameters& parameters, std::size_t staff,
                       std::size_t voice) {
  const auto& chosen = parameters.playback.channels;
  if (parameters.chosenFor == score.path && staff < chosen.size() && chosen[staff][voice] != kNotSet)
    return chosen[staff][voice];
  return score.channels[staff][voice];
}

std::uint8_t SoundOf(const ScoreAtHand& score, const ScoreParameters& parameters, std::size_t staff) {
  const auto& chosen = parameters.playback.sounds;
  if (parameters.chosenFor == score.path && staff < chosen.size() && chosen[staff] != kNotSet)
    return chosen[staff] & 0x7F;
  return score.staves[staff].sound;
}

void ChooseChannel(const ScoreAtHand& score, ScoreParameters& parameters, std::size_t staff,
                   std::size_t voice, std::uint8_t channel) {
  parameters = parameters.For(score.path);
  parameters.playback.channels.resize(score.staves.size(), kNoChannels);
  parameters.playback.channels[staff][voice] = channel;
}

void ChooseSound(const ScoreAtHand& score, ScoreParameters& parameters, std::size_t staff,
                 std::uint8_t sound) {
  parameters = parameters.For(score.path);
  parameters.playback.sounds.resize(score.staves.size(), kNotSet);
  parameters.playback.sounds[staff] = sound;
}

Outcome LoadAutomaticSet(const std::string& directory, const std::string& source,
                         const std::vector<std::uint8_t>& voices, ScoreParameters& parameters) {
  if (!parameters.automaticSet) return Outcome::Success;
  const std::string set = AutomaticParameterSet(directory, source);
  if (set.empty()) return Outcome::Success;
  return LoadSet(set, voices, parameters);
}

Outcome LoadSet(const std::string& set, const std::vector<std::uint8_t>& voices,
                ScoreParameters& parameters) {
  const Outcome loaded = LoadParameterSet(parameters.playback, voices, set);
  parameters.parameterSet = Succeeded(loaded) ? set : std::string();
  return loaded;
}

std::string SetFailure(const std::string& set) {
  return std::string(Text(texts::ParameterSetNotLoaded)) + "\n" + set;
}

}  // namespace ts5
