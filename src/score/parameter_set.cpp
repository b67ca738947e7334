#include "score/parameter_set.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "frame/guarded_profile.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kHead = "sd4 Stavora Playback Parameterset";
constexpr std::string_view kFirst = "Articulation I";
constexpr std::string_view kSecond = "Articulation II";
constexpr std::string_view kChannel = "Channel";
constexpr std::string_view kDynamics = "Dynamics";
constexpr std::string_view kProgram = "Program";

// One of the fourteen numbers of the articulations, in the order of the file.
struct ShapeKey {
  std::string_view section;
  std::string_view key;
  Articulation which;
  std::int8_t ArticulationShape::*member;
};
constexpr auto kLength = &ArticulationShape::length;
constexpr auto kVelocity = &ArticulationShape::velocity;
constexpr ShapeKey kShapeKeys[] = {
    {kFirst, "ProzStaccato", Articulation::Staccato, kLength},
    {kFirst, "ProzVelStaccato", Articulation::Staccato, kVelocity},
    {kFirst, "ProzStaccatissimo", Articulation::Staccatissimo, kLength},
    {kFirst, "ProzVelStaccatissimo", Articulation::Staccatissimo, kVelocity},
    {kFirst, "ProzTenuto", Articulation::Tenuto, kLength},
    {kFirst, "ProzVelTenuto", Articulation::Tenuto, kVelocity},
    {kSecond, "AkzentStark", Articulation::StrongAccent, kVelocity},
    {kSecond, "CutAkzentStark", Articulation::StrongAccent, kLength},
    {kSecond, "AkzentNormal", Articulation::SoftAccent, kVelocity},
    {kSecond, "CutAkzentNormal", Articulation::SoftAccent, kLength},
    {kSecond, "SchlagSchwer", Articulation::HardBeat, kVelocity},
    {kSecond, "CutSchlagSchwer", Articulation::HardBeat, kLength},
    {kSecond, "SchlagWeich", Articulation::SoftBeat, kVelocity},
    {kSecond, "CutSchlagWeich", Articulation::SoftBeat, kLength},
};
constexpr std::array<std::string_view, 8> kDynamicKeys = {
    "Dynamic fff", "Dynamic ff", "Dynamic f",  "Dynamic mf",
    "Dynamic mp",  "Dynamic p",  "Dynamic pp", "Dynamic ppp",
};
constexpr std::int32_t kMissing = -1;
constexpr std::uint8_t kUnknownByte = 255;

std::string VoiceKey(std::size_t staff, std::size_t voice) {
  return Format("Zeile%i/Stimme%i", staff + 1, voice + 1);
}

bool SameVoices(const Profile& profile, const std::vector<std::uint8_t>& voices, bool& complete) {
  complete = true;
  for (std::size_t staff = 0; staff < voices.size(); ++staff) {
    const std::int32_t count = profile.ReadInteger(kChannel, Format("VoiceNum%i", staff + 1), kMissing);
    complete = count != kMissing;
    if (!complete || count != voices[staff]) return false;
  }
  return true;
}

Outcome ReadChannels(const Profile& profile, const std::vector<std::uint8_t>& voices,
                     PlaybackParameters& parameters) {
  const std::int32_t staves = profile.ReadInteger(kChannel, "StaveNum", kMissing);
  if (staves == kMissing) return Outcome::SourceFailed;
  if (std::cmp_not_equal(staves, voices.size())) return Outcome::Success;
  bool complete = true;
  if (!SameVoices(profile, voices, complete)) return complete ? Outcome::Success : Outcome::SourceFailed;
  parameters.channels.resize(voices.size(), kNoChannels);
  parameters.sounds.resize(voices.size(), kNotSet);
  for (std::size_t staff = 0; staff < voices.size(); ++staff) {
    for (std::size_t voice = 0; voice < voices[staff]; ++voice) {
      const std::string key = VoiceKey(staff, voice);
      const std::int32_t channel = profile.ReadInteger(kChannel, key, kMissing);
      if (channel == kMissing) return Outcome::SourceFailed;
      if (channel >= 0 && channel < 16)
        parameters.channels[staff][voice] = static_cast<std::uint8_t>(channel);
      const std::int32_t sound = profile.ReadInteger(kProgram, key, kMissing);
      if (sound >= 0) parameters.sounds[staff] = static_cast<std::uint8_t>(sound);
    }
  }
  return Outcome::Success;
}

}  // namespace

Profile ParameterSetProfile(const PlaybackParameters& parameters, const std::vector<std::uint8_t>& voices) {
  Profile profile;
  WriteGuard(profile, kHead);
  profile.WriteInteger(kFirst, "ArticulationYN", parameters.articulation ? 1 : 0);
  profile.WriteInteger(kFirst, "NoteShorten", parameters.shortening);
  profile.WriteInteger(kFirst, "Velocity", parameters.baseVelocity);
  for (const ShapeKey& row : kShapeKeys)
    profile.WriteInteger(row.section, row.key, parameters.Shape(row.which).*row.member);

  profile.WriteInteger(kChannel, "StaveNum", static_cast<std::int64_t>(voices.size()));
  for (std::size_t staff = 0; staff < voices.size(); ++staff)
    profile.WriteInteger(kChannel, Format("VoiceNum%i", staff + 1), voices[staff]);
  for (std::size_t staff = 0; staff < voices.size(); ++staff) {
    for (std::size_t voice = 0; voice < voices[staff]; ++voice) {
      const bool known = staff < parameters.channels.size();
      profile.WriteInteger(kChannel, VoiceKey(staff, voice),
                           known ? parameters.channels[staff][voice] : kNotSet);
    }
  }

  profile.WriteInteger(kDynamics, "UseDynamics", parameters.dynamics ? 1 : 0);
  for (std::size_t i = 0; i < kDynamicKeys.size(); ++i)
    profile.WriteInteger(kDynamics, kDynamicKeys[i], parameters.dynamicVelocities[i]);
  profile.WriteInteger(kDynamics, "DynamicsAllStaves", parameters.markForAllStaves ? 1 : 0);
  profile.WriteInteger(kDynamics, "DynamicsAllVoices", parameters.markForAllVoices ? 1 : 0);

  for (std::size_t staff = 0; staff < voices.size(); ++staff) {
    const std::uint8_t sound = staff < parameters.sounds.size() ? parameters.sounds[staff] : kNotSet;
    for (std::size_t voice = 0; voice < voices[staff]; ++voice)
      profile.WriteInteger(kProgram, VoiceKey(staff, voice), sound);
  }
  return profile;
}

Outcome SaveParameterSet(const PlaybackParameters& parameters, const std::vector<std::uint8_t>& voices,
                         const std::string& path) {
  return ParameterSetProfile(parameters, voices).Save(path);
}

Outcome ReadParameterSet(const Profile& profile, const std::vector<std::uint8_t>& voices,
                         PlaybackParameters& parameters) {
  if (!HasGuard(profile, kHead)) return Outcome::SourceFailed;
  parameters.articulation = profile.ReadInteger(kFirst, "ArticulationYN", 0) != 0;
  const std::int32_t shortening = profile.ReadInteger(kFirst, "NoteShorten", kMissing);
  if (shortening == kMissing) return Outcome::SourceFailed;
  parameters.shortening = std::clamp(shortening, 0, 100);
  const std::int32_t velocity = profile.ReadInteger(kFirst, "Velocity", kMissing);
  if (velocity == kMissing) return Outcome::SourceFailed;
  parameters.baseVelocity = std::clamp(velocity, 10, 127);
  for (const ShapeKey& row : kShapeKeys) {
    const auto text = profile.Find(row.section, row.key);
    if (!text || Trim(*text).empty()) return Outcome::SourceFailed;
    // Sets from elsewhere may have the byte 255 for a number that was not known.
    const std::int32_t value = profile.ReadInteger(row.section, row.key, kMissing);
    if (value != kMissing && static_cast<std::uint8_t>(value) == kUnknownByte) return Outcome::SourceFailed;
    parameters.articulations[static_cast<std::size_t>(row.which)].*row.member =
        static_cast<std::int8_t>(value);
  }

  if (const Outcome read = ReadChannels(profile, voices, parameters); Failed(read)) return read;

  parameters.dynamics = profile.ReadInteger(kDynamics, "UseDynamics", 1) != 0;
  for (std::size_t i = 0; i < kDynamicKeys.size(); ++i) {
    const std::int32_t value = profile.ReadInteger(kDynamics, kDynamicKeys[i], kMissing);
    if (value == kMissing) return Outcome::SourceFailed;
    parameters.dynamicVelocities[i] = static_cast<std::uint8_t>(std::clamp(value, 0, 127));
  }
  parameters.markForAllStaves = profile.ReadInteger(kDynamics, "DynamicsAllStaves", 1) != 0;
  parameters.markForAllVoices = profile.ReadInteger(kDynamics, "DynamicsAllVoices", 1) != 0;
  return Outcome::Success;
}

Outcome LoadParameterSet(PlaybackParameters& parameters, const std::vector<std::uint8_t>& voices,
                         const std::string& path) {
  const auto profile = Profile::Load(path);
  if (!profile) return Outcome::SourceFailed;
  return ReadParameterSet(*profile, voices, parameters);
}

std::string AutomaticParameterSet(const std::string& directory, const std::string& score) {
  if (directory.empty()) return {};
  const std::string name = WithExtension(FileNameOf(score), kParameterSetExtension);
  std::string set = JoinPath(directory, name);
  if (FileExists(set)) return set;
  set.clear();
  // Of several spellings the first in the alphabet, so that it is always the same one.
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string found = entry->path().filename().string();
    if (EqualsIgnoringCase(found, name) && (set.empty() || found < FileNameOf(set)))
      set = JoinPath(directory, found);
  }
  return set;
}

}  // namespace ts5
