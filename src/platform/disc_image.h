// A disc that is made of files: a CUE sheet and the raw or audio files that it names, read by sectors as a
// drive reads a disc. Audio files are decoded (44100 Hz, mono or stereo); where a file does not end with a
// whole sector, silence fills it up.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/cue_sheet.h"
#include "platform/outcome.h"

namespace ts5 {

// An audio sector: frames of 16 bit stereo in audio-CD format, low byte first.
inline constexpr std::uint32_t kFramesPerSector = 588;
inline constexpr std::size_t kBytesPerFrame = 4;
inline constexpr std::size_t kAudioSectorBytes = kFramesPerSector * kBytesPerFrame;  // 2352
inline constexpr std::uint32_t kMostSectors = 100 * 60 * kSectorsPerSecond;          // no disc is longer

class DiscImage {
 public:
  struct Track {
    int number = 0;
    bool audio = true;
    bool copyPermitted = false;
    bool preEmphasis = false;
    std::uint32_t start = 0;  // sector (LBA) of INDEX 01
    std::string isrc = {};
  };

  // cuePath: the CUE sheet. SourceFailed: it or one of its files cannot be opened. WrongFormat: no CUE sheet,
  // or a file that makes no disc. ReadFailed, OutOfMemory.
  [[nodiscard]] static Result<DiscImage> Open(const std::string& cuePath);
  DiscImage(DiscImage&&) noexcept;
  DiscImage& operator=(DiscImage&&) noexcept;
  ~DiscImage();

  [[nodiscard]] const std::vector<Track>& Tracks() const { return tracks_; }
  [[nodiscard]] std::uint32_t LeadOut() const { return leadOut_; }  // the first sector behind the disc
  // The type of a sector; false behind the end too.
  [[nodiscard]] bool IsAudio(std::uint32_t sector) const;
  // Whole audio sectors from that one on. InvalidParameter: not all of them are on the disc and audio.
  // ReadFailed: a file has become shorter or cannot be read.
  [[nodiscard]] Outcome ReadAudio(std::uint32_t sector, std::span<std::uint8_t> out);

 private:
  class File;
  struct Extent;
  class Layout;
  DiscImage();

  std::vector<std::unique_ptr<File>> files_;
  std::vector<Extent> extents_;  // without a gap, from sector 0
  std::vector<Track> tracks_;
  std::uint32_t leadOut_ = 0;
};

}  // namespace ts5
