// Monkey's Audio files as a sink of samples.
#pragma once

#include <memory>
#include <optional>

#include "audio/ape/ape_format.h"
#include "platform/files/files.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

// Encodes what it gets into a staged file of the caller's that is still empty, outlives the sink, and is not
// committed here. Samples are rounded to the format's depth and limited. frames: how many will come at most,
// if that is known. FormatRefused: see ape::Encoder. WriteFailed.
[[nodiscard]] Result<std::unique_ptr<PcmSink>> OpenApeSink(StagedFile& target, const ape::Format& format,
                                                           std::optional<std::uint64_t> frames);

}  // namespace ts5
