#include "score/playback_fields.h"

#include <array>

namespace ts5 {
namespace {

using P = PlaybackParameters;

template <Articulation which>
constexpr PlaybackField LengthField(std::string_view name) {
  constexpr auto at = static_cast<std::size_t>(which);
  return {name, -100, 100, [](const P& p) -> int { return p.articulations[at].length; },
          [](P& p, int value) { p.articulations[at].length = static_cast<std::int8_t>(value); }};
}

template <Articulation which>
constexpr PlaybackField VelocityField(std::string_view name, int least, int most) {
  constexpr auto at = static_cast<std::size_t>(which);
  return {name, least, most, [](const P& p) -> int { return p.articulations[at].velocity; },
          [](P& p, int value) { p.articulations[at].velocity = static_cast<std::int8_t>(value); }};
}

template <bool P::*member>
constexpr PlaybackField FlagField(std::string_view name) {
  return {name, 0, 1, [](const P& p) -> int { return p.*member ? 1 : 0; },
          [](P& p, int value) { p.*member = value == 1; }};
}

template <std::int32_t P::*member>
constexpr PlaybackField NumberField(std::string_view name, int least, int most) {
  return {name, least, most, [](const P& p) -> int { return p.*member; },
          [](P& p, int value) { p.*member = value; }};
}

constexpr int kMostAbsolute = 127;
constexpr PlaybackField kFields[] = {
    FlagField<&P::articulation>("ArticulationYN"),
    LengthField<Articulation::Staccato>("ProzStaccato"),
    VelocityField<Articulation::Staccato>("ProzVelStaccato", -100, 100),
    LengthField<Articulation::Staccatissimo>("ProzStaccatissimo"),
    VelocityField<Articulation::Staccatissimo>("ProzVelStaccatissimo", -100, 100),
    LengthField<Articulation::Tenuto>("ProzTenuto"),
    VelocityField<Articulation::Tenuto>("ProzVelTenuto", -100, 100),
    VelocityField<Articulation::StrongAccent>("AkzentStark", 0, kMostAbsolute),
    LengthField<Articulation::StrongAccent>("CutAkzentStark"),
    VelocityField<Articulation::SoftAccent>("AkzentNormal", 0, kMostAbsolute),
    LengthField<Articulation::SoftAccent>("CutAkzentNormal"),
    VelocityField<Articulation::HardBeat>("SchlagSchwer", 0, kMostAbsolute),
    LengthField<Articulation::HardBeat>("CutSchlagSchwer"),
    VelocityField<Articulation::SoftBeat>("SchlagWeich", 0, kMostAbsolute),
    LengthField<Articulation::SoftBeat>("CutSchlagWeich"),
    NumberField<&P::baseVelocity>("Velocity", 10, 127),
    NumberField<&P::shortening>("NoteShorten", 0, 100),
    FlagField<&P::dynamics>("UseDynamics"),
    FlagField<&P::markForAllVoices>("DynamicsAllVoices"),
    FlagField<&P::markForAllStaves>("DynamicsAllStaves"),
};

}  // namespace

ScoreParameters ScoreParameters::For(const std::string& score) const {
  ScoreParameters own = *this;
  if (chosenFor == score) return own;
  own.chosenFor = score;
  own.playback.channels.clear();
  own.playback.sounds.clear();
  own.silentStaves.clear();
  own.parameterSet.clear();
  return own;
}

std::span<const PlaybackField> PlaybackFields() {
  return kFields;
}

std::string DynamicsText(const PlaybackParameters& parameters) {
  std::string text;
  for (const std::uint8_t velocity : parameters.dynamicVelocities)
    text += (text.empty() ? "" : " ") + std::to_string(velocity);
  return text;
}

bool SetDynamics(PlaybackParameters& parameters, std::string_view text) {
  const auto parts = Split(Trim(text), ' ');
  std::array<std::uint8_t, 8> velocities{};
  if (parts.size() != velocities.size()) return false;
  for (std::size_t i = 0; i < velocities.size(); ++i) {
    const auto value = ParseInteger(parts[i]);
    if (!value || *value < 0 || *value > kMostAbsolute) return false;
    velocities[i] = static_cast<std::uint8_t>(*value);
  }
  parameters.dynamicVelocities = velocities;
  return true;
}

}  // namespace ts5
