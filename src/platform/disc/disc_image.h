// A disc that is made of files: a CUE sheet and the raw or audio files that it names, read by sectors as a
// drive reads a disc. Audio files are decoded (44100 Hz, mono or stereo); where a file does not end with a
// whole sector, silence fills it up.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/disc/cue_sheet.h"
#include "platform/disc/disc_address.h"
#include "platform/disc/disc_layout.h"

namespace ts5 {

inline constexpr std::uint32_t kMostSectors = 100 * 60 * kSectorsPerSecond;  // no disc is longer

class DiscImage {
 public:
  // cuePath: the CUE sheet. SourceFailed: it or one of its files cannot be opened. WrongFormat: no CUE sheet,
  // or a file that makes no disc. ReadFailed, OutOfMemory.
  [[nodiscard]] static Result<DiscImage> Open(const std::string& cuePath);
  DiscImage(DiscImage&&) noexcept;
  DiscImage& operator=(DiscImage&&) noexcept;
  ~DiscImage();

  [[nodiscard]] const DiscLayout& Layout() const { return layout_; }
  // Whole audio sectors from that one on. InvalidParameter: not all of them are on the disc and audio.
  // ReadFailed: a file has become shorter or cannot be read.
  [[nodiscard]] Outcome ReadAudio(Lba address, std::span<std::uint8_t> out);

 private:
  class File;
  struct Extent;
  class Builder;
  DiscImage();

  std::vector<std::unique_ptr<File>> files_;
  std::vector<Extent> extents_;  // without a gap, from the first sector of the files
  DiscLayout layout_;
  std::uint32_t origin_ = 0;  // sectors of the files before sector 0 of the disc
};

}  // namespace ts5
