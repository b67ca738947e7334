// Everything that shapes how a score sounds: articulation, channels and sounds, dynamics.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ts5 {

inline constexpr std::size_t kMaxVoices = 6;     // of a staff
inline constexpr std::uint8_t kNotSet = 255;     // a channel or sound that was not chosen
inline constexpr std::uint8_t kDrumChannel = 9;  // MIDI channel 10
inline constexpr std::array<std::uint8_t, 8> kDynamicLevels = {127, 110, 90, 74, 62, 44, 22, 10};  // fff..ppp

enum class Articulation : std::uint8_t {
  Staccato,
  Staccatissimo,
  Tenuto,
  StrongAccent,
  SoftAccent,
  HardBeat,
  SoftBeat,
};
inline constexpr std::size_t kArticulations = 7;

// Per cent of the length that is left after the general shortening; the velocity is per cent of the base
// velocity for the first three articulations and absolute for the others.
struct ArticulationShape {
  std::int8_t length = 0;
  std::int8_t velocity = 0;
  friend bool operator==(const ArticulationShape&, const ArticulationShape&) = default;
};

using VoiceChannels = std::array<std::uint8_t, kMaxVoices>;  // 0..15 or kNotSet
inline constexpr VoiceChannels kNoChannels = {kNotSet, kNotSet, kNotSet, kNotSet, kNotSet, kNotSet};

struct PlaybackParameters {
  bool articulation = true;
  std::int32_t shortening = 90;    // per cent of its length that a note without marks sounds
  std::int32_t baseVelocity = 90;  // 10..127
  std::array<ArticulationShape, kArticulations> articulations = {
      {{-50, 0}, {-70, 10}, {10, 0}, {-40, 118}, {-20, 110}, {-50, 127}, {-10, 102}}};
  bool dynamics = true;
  std::array<std::uint8_t, 8> dynamicVelocities = kDynamicLevels;
  bool markForAllVoices = true;
  bool markForAllStaves = false;

  // By staff; shorter than the score where nothing was chosen.
  std::vector<VoiceChannels> channels;
  std::vector<std::uint8_t> sounds;

  [[nodiscard]] const ArticulationShape& Shape(Articulation which) const {
    return articulations[static_cast<std::size_t>(which)];
  }
};

}  // namespace ts5
