// The music of an Ogg file with one Vorbis stream, read once from front to back, by the faster of the two
// decoders: it takes half the time of the reference decoder, which knows how to search and to go on with
// another stream.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "platform/base/outcome.h"
#include "platform/files/input_file.h"

namespace ts5 {

class VorbisMusic {
 public:
  virtual ~VorbisMusic() = default;
  // Interleaved, in the order of a wave file's channels; whole frames, 0 only at the end. Exactly the samples
  // that the stream's positions count. ReadFailed, OutOfMemory.
  [[nodiscard]] virtual Result<std::size_t> Read(std::span<double> out) = 0;
};

// Of the stream with this serial number, in a file that lives longer. Nothing where the decoder does not take
// it.
[[nodiscard]] std::unique_ptr<VorbisMusic> OpenVorbisMusic(const InputFile& file, int serial,
                                                           std::size_t channels);

}  // namespace ts5
