// The parameters of the CD burner and their field table.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio/midi_to_wave_parameters.h"
#include "audio/normalise.h"
#include "disc/disc_plan.h"
#include "disc/track_texts.h"
#include "frame/parameters.h"

namespace ts5::disc {

// As they are stored in jobs.
enum class BurnAction : std::int32_t { Simulate = 0, SimulateThenBurn = 1, Burn = 2 };
enum class OnFailedFile : std::int32_t { Stop = 0, GoOn = 1, Ask = 2 };

inline constexpr std::size_t kMostPrefixCharacters = 12;
inline constexpr std::int32_t kMostCopies = 99;
inline constexpr std::int32_t kLeastSpeed = 2;
inline constexpr std::int32_t kMostSpeed = 99;
inline constexpr std::string_view kBurnerCatalogue = "0123456789012";

struct BurnParameters : ClonableParameters<BurnParameters> {
  bool systemFolder = true;
  std::string folder = {};     // when not the system's
  std::string prefix = {};     // of intermediate files; "": DefaultPrefix
  std::int32_t normalise = 0;  // NormaliseMode
  bool atOnce = true;
  std::int32_t onFailed = static_cast<std::int32_t>(OnFailedFile::Stop);
  std::int32_t speed = 8;  // factor; a drive that is slower writes as fast as it can
  std::int32_t copies = 1;
  bool eject = false;
  bool underrunProtection = true;
  bool copyProtected = false;
  bool preEmphasis = false;
  std::int32_t action = static_cast<std::int32_t>(BurnAction::Burn);
  bool deleteIntermediate = true;
  std::int32_t pauseScope = 0;  // of the pause dialog: 0 one track, 1 the selected ones, 2 all
  MidiToWaveParameters midi = {};
  bool verify = true;    // read the disc back
  bool cdText = false;   // write titles and performers
  bool gapless = false;  // neighbours without a pause share a sector
  std::string title = {};
  std::string performer = {};
  TrackTexts texts = {};  // of the tracks, for CD-TEXT

  [[nodiscard]] NormaliseMode Normalising() const;  // a project only at once
  [[nodiscard]] BurnAction Action() const { return static_cast<BurnAction>(action); }
  [[nodiscard]] OnFailedFile OnFailed() const { return static_cast<OnFailedFile>(onFailed); }
  [[nodiscard]] std::int32_t Copies() const { return Action() == BurnAction::Simulate ? 1 : copies; }
  [[nodiscard]] RecordingMode Mode(bool testWrite) const;
};

[[nodiscard]] std::vector<ParameterField> BurnFields();
// "Job0003_" of the job with number 2.
[[nodiscard]] std::string DefaultPrefix(std::size_t jobNumber);

}  // namespace ts5::disc
