// libvorbis as a sink of samples: Ogg Vorbis files, their comments still empty.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/base/outcome.h"
#include "platform/files/files.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

struct VorbisOptions {
  bool variable = false;  // by quality; else by the bit rates
  float quality = 0.5F;   // 0..1
  long maxBitRate = -1;   // bits per second; -1: open
  long nominalBitRate = 0;
  long minBitRate = -1;
  std::uint32_t serial = 0;  // of the stream
};

// Encodes what it gets into a staged file of the caller's, which stays with him and is not committed here.
// NotNecessary (-7): the encoder does not take such a rate, number of channels or bit rates. WriteFailed,
// OutOfMemory.
[[nodiscard]] Result<std::unique_ptr<PcmSink>> OpenVorbisSink(StagedFile& target, const PcmShape& shape,
                                                              const VorbisOptions& options);

}  // namespace ts5
