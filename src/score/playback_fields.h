// The stored values of the playback parameters, which the score filters share.
#pragma once

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "frame/parameters.h"
#include "score/playback_parameters.h"

namespace ts5 {

struct PlaybackField {
  std::string_view name;
  int least;
  int most;
  // The number where it lies.
  int (*get)(const PlaybackParameters&);
  void (*set)(PlaybackParameters&, int);
};

// Adds the rows of the playback parameters to the table of a filter whose parameters have a member
// `playback`.
template <typename P>
void AddPlaybackFields(FieldTable<P>& table);

[[nodiscard]] std::span<const PlaybackField> PlaybackFields();

// The eight velocities as one text, "127 110 90 ...".
[[nodiscard]] std::string DynamicsText(const PlaybackParameters& parameters);
[[nodiscard]] bool SetDynamics(PlaybackParameters& parameters, std::string_view text);

template <typename P>
void AddPlaybackFields(FieldTable<P>& table) {
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
}

}  // namespace ts5
