// What the score filters have in common: the parameters of the music, and their stored values.
#pragma once

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/parameters.h"
#include "score/playback_parameters.h"

namespace ts5 {

struct ScoreParameters {
  PlaybackParameters playback;
  bool playRepeats = true;
  bool automaticSet = false;  // load the parameter set of the score's name

  // For one score, and not kept with the job: its channels and sounds among the parameters, and these.
  std::string chosenFor;           // the score's path
  std::vector<bool> silentStaves;  // by staff layout; shorter: they sound
  std::string parameterSet;        // path of the set in use, "" for none

  // The parameters for a score: without what was chosen for another one.
  [[nodiscard]] ScoreParameters For(const std::string& score) const;
};

struct PlaybackField {
  std::string_view name;
  int least;
  int most;
  // The number where it lies.
  int (*get)(const PlaybackParameters&);
  void (*set)(PlaybackParameters&, int);
};

// Adds the rows of what is kept to the table of a filter whose parameters are ScoreParameters.
template <typename P>
void AddScoreFields(FieldTable<P>& table);

[[nodiscard]] std::span<const PlaybackField> PlaybackFields();

// The eight velocities as one text, "127 110 90 ...".
[[nodiscard]] std::string DynamicsText(const PlaybackParameters& parameters);
[[nodiscard]] bool SetDynamics(PlaybackParameters& parameters, std::string_view text);

template <typename P>
void AddScoreFields(FieldTable<P>& table) {
  table.Flag("PlayRepeats", static_cast<bool P::*>(&ScoreParameters::playRepeats));
  for (const PlaybackField& field : PlaybackFields()) {
    table.Single(
        std::string(field.name), std::to_string(field.least) + ".." + std::to_string(field.most),
        [&field](const P& p) { return std::to_string(field.get(p.playback)); },
        [&field](P& p, std::string_view text) {
          const auto value = ParseInteger(Trim(text));
          if (!value || *value < field.least || *value > field.most) return false;
          field.set(p.playback, static_cast<int>(*value));
          return true;
        });
  }
  table.Single(
      "Dynamics", "8 x 0..127", [](const P& p) { return DynamicsText(p.playback); },
      [](P& p, std::string_view text) { return SetDynamics(p.playback, text); });
  table.Flag("ParamSetAuto", static_cast<bool P::*>(&ScoreParameters::automaticSet));
}

}  // namespace ts5
