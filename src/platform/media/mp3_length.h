// How many sample frames an MPEG layer 3 file holds by what its encoder wrote into the first frame: the
// "Xing"/"Info" tag with the number of frames, and behind it the delay and the padding of the encoder, as
// LAME introduced them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/files/input_file.h"

namespace ts5 {

struct TaggedMp3 {
  std::uint64_t frames = 0;   // of samples, without delay and padding
  std::uint32_t delay = 0;    // samples before the music
  std::uint32_t padding = 0;  // behind it
  std::uint64_t blocks = 0;
  std::uint64_t bytes = 0;  // of the file; 0: not said
  bool constant = false;    // the bit rate
  std::string encoder = {};
  bool checked = false;  // the tag has the right checksum
};
// Where the ID3v2 tag at the start of a file ends; 0 for none.
[[nodiscard]] std::uint64_t BehindId3(const InputFile& file);
// framesPerBlock: 1152 of MPEG-1, 576 of MPEG-2. Nothing when the file does not say it.
[[nodiscard]] std::optional<TaggedMp3> ReadTaggedMp3(const InputFile& file, std::uint32_t framesPerBlock);

}  // namespace ts5
