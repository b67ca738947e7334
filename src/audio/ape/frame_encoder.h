// One frame of Monkey's Audio: samples in, bytes out. Frames know nothing of each other.
#pragma once

#include <cstdint>
#include <span>

#include "audio/ape/ape_format.h"
#include "platform/base/bytes.h"

namespace ts5::ape {

// Appends the frame to out, in the order in which it is read; files hold its bytes swapped in words of 32
// bits. interleaved: 1 to kFrameBlocks whole sample frames of format, each sample within its depth.
void EncodeFrame(const Format& format, std::span<const std::int32_t> interleaved, Bytes& out);

}  // namespace ts5::ape
