// The parameters of the CD grabber and of the CD copier, and their field tables.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "audio/encode/encode_settings.h"
#include "audio/tags/attribute.h"
#include "disc/burn_parameters.h"
#include "frame/parameters.h"

namespace ts5::disc {

// The reading speeds that can be chosen; 0: as fast as it goes. Stored is the position.
inline constexpr std::array<std::uint32_t, 4> kGrabSpeeds{1, 2, 4, 0};

struct GrabParameters : ClonableParameters<GrabParameters> {
  std::int32_t speed = 3;  // position in kGrabSpeeds
  bool eject = false;
  bool useNames = false;                // the names below instead of those by rule
  std::vector<std::string> names = {};  // by track, from 1 on; at most 99
  bool trim = false;
  bool encode = false;      // compress each track
  std::string folder = {};  // for a track before it is compressed; "": the system's
  encode::EncodeSettings encodeSettings = {};
  tags::Attributes attributes = {};  // for compressed tracks, beside those of the disc
  std::int32_t offset = 0;           // frames by which the drive reads too late
  bool cueSheet = false;             // a CUE sheet beside the files
  bool hidden = false;               // the sound before track 1 as "Track00.wav"

  // "Track03.wav", or the user's name.
  [[nodiscard]] std::string NameOf(int track) const;
};
[[nodiscard]] std::vector<ParameterField> GrabFields();

struct CopyParameters : ClonableParameters<CopyParameters> {
  bool systemFolder = true;
  std::string folder = {};
  bool eject = false;
  std::int32_t action = static_cast<std::int32_t>(BurnAction::Burn);
  std::int32_t speed = 8;
  std::int32_t copies = 1;
  bool atOnce = true;
  bool onTheFly = false;  // only at once
  bool underrunProtection = true;
  bool copyProtected = false;
  bool preEmphasis = false;
  bool noPauses = false;  // do not look for them
  bool deleteIntermediate = true;
  bool verify = true;

  [[nodiscard]] BurnAction Action() const { return static_cast<BurnAction>(action); }
  [[nodiscard]] std::int32_t Copies() const { return Action() == BurnAction::Simulate ? 1 : copies; }
  [[nodiscard]] bool OnTheFly() const { return onTheFly && atOnce; }
};
[[nodiscard]] std::vector<ParameterField> CopyFields();

}  // namespace ts5::disc
