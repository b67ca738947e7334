// What will be where on a disc that is to be written.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "disc/sound_source.h"
#include "frame/file_list.h"
#include "platform/disc/cd_text.h"
#include "platform/disc/disc_layout.h"

namespace ts5::disc {

struct ProjectTrack {
  std::uint64_t bytes = 0;  // of sound
  std::uint32_t pause = 0;  // sectors before it; the first track has two seconds in any case
  std::string isrc = {};    // 12 characters, or ""
  CdText::Entry text = {};
  SoundOpener open = {};
  bool preEmphasis = false;   // beside that of the mode
  bool soundInPause = false;  // the sound begins with its pause, as on the disc that it was read from
};

struct RecordingMode {
  bool atOnce = true;
  bool testWrite = false;
  bool underrunProtection = false;
  bool copyProtected = false;
  bool preEmphasis = false;
  bool onTheFly = false;  // straight from the source disc
  bool gapless = false;   // neighbours without a pause share the sector of their border
  std::string catalogue = {};
  CdText text = {};

  [[nodiscard]] std::uint8_t Control() const;  // of every track
};

// The control nibble of one track.
[[nodiscard]] std::uint8_t ControlOf(const ProjectTrack& track, const RecordingMode& mode);

// Sectors that so many bytes of sound fill, the last one with silence.
[[nodiscard]] constexpr std::uint32_t SectorsOf(std::uint64_t bytes) {
  return static_cast<std::uint32_t>((bytes + kAudioSectorBytes - 1) / kAudioSectorBytes);
}

// One piece of the stream that goes to the recorder.
struct PlannedTrack {
  std::uint32_t silence = 0;  // sectors before its sound
  std::uint64_t bytes = 0;    // of its sound
  std::uint64_t padding = 0;  // bytes of silence behind it
};

struct DiscPlan {
  DiscLayout layout = {};
  std::vector<PlannedTrack> tracks = {};

  // The disc as it is written at once: from sector -150 to the lead-out.
  [[nodiscard]] static DiscPlan AtOnce(std::span<const ProjectTrack> tracks, const RecordingMode& mode);
  // Sectors from the pre-gap to the lead-out.
  [[nodiscard]] std::uint32_t Sectors() const {
    return static_cast<std::uint32_t>(layout.leadOut.value + kPregapSectors);
  }
};

// What a disc of these tracks needs, in sectors from sector 0 on, written at once or track by track.
[[nodiscard]] std::uint32_t ProjectSectors(std::span<const ProjectTrack> tracks, const RecordingMode& mode);

// Seconds of the entries of a project with what lies between them: the pauses of the list, or the two seconds
// that a recorder makes track by track.
[[nodiscard]] std::uint64_t ProjectSeconds(std::span<const FileListEntry> entries, bool atOnce);

// ISRCs as the program gives them: "DE", registrant "QLW", two digits of the year, a serial number of five.
class IsrcSeries {
 public:
  IsrcSeries(int year, std::uint32_t serial) : year_(year % 2000), serial_(serial) {}
  // Of this moment: the serial begins with the sum of hour, minute, second and millisecond.
  [[nodiscard]] static IsrcSeries OfNow();
  [[nodiscard]] std::string Next();

 private:
  int year_;
  std::uint32_t serial_;
};

}  // namespace ts5::disc
