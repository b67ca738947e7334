// The encoders of the system as sinks of samples: MPEG layers II and III, Windows Media audio.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/files.h"
#include "platform/outcome.h"
#include "platform/pcm_stream.h"

namespace ts5 {

enum class MediaEncoder : std::uint8_t { MpegLayer2, MpegLayer3, WindowsMedia1, WindowsMedia2 };

// Whether this machine has the encoder, and the sample rates it takes (empty: any).
[[nodiscard]] bool HasEncoder(MediaEncoder encoder);
[[nodiscard]] std::vector<std::uint32_t> EncoderRates(MediaEncoder encoder);

// Encodes what it gets into a staged file of the caller's, which stays with him, outlives the sink, and is
// not committed here. shape: rate, and one or two channels, of the samples that will come. bitRate: bits per
// second. ConverterNotOpened: there is no such encoder. FormatRefused: it does not take this shape or bit
// rate.
[[nodiscard]] Result<std::unique_ptr<PcmSink>> OpenMediaWriter(StagedFile& target, MediaEncoder encoder,
                                                               const PcmShape& shape, std::uint32_t bitRate);

}  // namespace ts5
