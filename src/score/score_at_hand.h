// The score that parameters are set for, as their pages show it: its staves with voices, sounds and channels,
// and the marks that occur in it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/outcome.h"
#include "score/playback_fields.h"
#include "score/score_midi.h"

namespace ts5 {

struct StaffAtHand {
  std::string name;
  std::uint8_t voices = 0;
  std::uint8_t sound = 0;  // of the file
  bool usesNoteMap = false;
};

struct ScoreAtHand {
  std::string path;
  std::vector<StaffAtHand> staves;
  std::vector<VoiceChannels> channels;  // those that the voices get by themselves
  std::uint8_t articulations = 0;       // bit per Articulation that occurs
  std::uint8_t dynamics = 0;            // bit per mark fff..ppp

  [[nodiscard]] bool Has(Articulation which) const {
    return (articulations >> static_cast<unsigned>(which) & 1U) != 0;
  }
  [[nodiscard]] bool HasDynamic(std::size_t mark) const { return (dynamics >> mark & 1U) != 0; }
  [[nodiscard]] std::vector<std::uint8_t> Voices() const;
};

[[nodiscard]] ScoreAtHand DescribeScore(const std::string& path, const OpenScore& score);
// Codes of OpenAndScan.
[[nodiscard]] Result<ScoreAtHand> ReadScoreAtHand(const std::string& path);

// The channel of a voice (0..15) and the sound of a staff (0..127) as they are in force.
[[nodiscard]] std::uint8_t ChannelOf(const ScoreAtHand& score, const ScoreParameters& parameters,
                                     std::size_t staff, std::size_t voice);
[[nodiscard]] std::uint8_t SoundOf(const ScoreAtHand& score, const ScoreParameters& parameters,
                                   std::size_t staff);
// Chosen by hand. The parameters become those for this score.
void ChooseChannel(const ScoreAtHand& score, ScoreParameters& parameters, std::size_t staff,
                   std::size_t voice, std::uint8_t channel);
void ChooseSound(const ScoreAtHand& score, ScoreParameters& parameters, std::size_t staff,
                 std::uint8_t sound);

// Where the parameters ask for it, the set of the score's name is loaded over them, if there is one.
// SourceFailed: it cannot be loaded, and no set counts as loaded.
[[nodiscard]] Outcome LoadAutomaticSet(const std::string& directory, const std::string& source,
                                       const std::vector<std::uint8_t>& voices, ScoreParameters& parameters);
// A set of the user's choice. SourceFailed likewise.
[[nodiscard]] Outcome LoadSet(const std::string& set, const std::vector<std::uint8_t>& voices,
                              ScoreParameters& parameters);
// What is said of a set that could not be loaded.
[[nodiscard]] std::string SetFailure(const std::string& set);

}  // namespace ts5
