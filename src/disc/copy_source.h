// The disc that is copied: what is on it, where its pauses are, and its sound as the tracks of a project.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "disc/disc_plan.h"
#include "disc/track_reader.h"
#include "platform/disc/cd_drive.h"

namespace ts5::disc {

// One track of the source with the range of sectors that a copy has to hold.
struct SourceTrack {
  int number = 0;
  std::uint8_t control = 0;
  Lba start = {};           // index 1
  std::uint32_t pause = 0;  // sectors before it
  Lba end = {};             // where the next track's pause begins, or the music ends
  std::string isrc = {};
  CdText::Entry text = {};

  // Where its sound begins: with its pause at once, with its start track by track.
  [[nodiscard]] Lba Begin(bool atOnce) const;
  [[nodiscard]] std::uint32_t Sectors(bool atOnce) const;
};

class CopySource {
 public:
  // The drive outlives the source. Only the music before the first track of data counts.
  CopySource(CdDrive& drive, const DiscToc& toc);

  [[nodiscard]] const std::vector<SourceTrack>& Tracks() const { return tracks_; }
  [[nodiscard]] const std::string& Catalogue() const { return catalogue_; }
  [[nodiscard]] const CdText& Text() const { return text_; }
  [[nodiscard]] TrackReader& Reader() { return reader_; }

  // Looks for the pause before a track; false when the drive cannot say it, or when that was cancelled.
  [[nodiscard]] bool FindPauseOf(std::size_t index, const CancelCheck& cancelled = {});
  // All pauses but the first away: the tracks follow each other.
  void DropPauses();
  // A track of the project whose sound comes from sound.
  [[nodiscard]] ProjectTrack Project(std::size_t index, bool atOnce, SoundOpener sound) const;
  // Its sound straight from the drive.
  [[nodiscard]] SoundOpener Direct(std::size_t index, bool atOnce);

 private:
  void SettleEnds();

  CdDrive& drive_;
  DiscToc toc_;
  TrackReader reader_;
  std::string catalogue_;
  CdText text_;
  std::vector<SourceTrack> tracks_;
};

}  // namespace ts5::disc
