// The short predictors of all levels: a fixed first-order filter, then four adaptive weights over the past of
// the channel and, in stereo, five over that of the other one.
#pragma once

#include <cstdint>
#include <span>

namespace ts5::ape {

// How wide the sums of products are. What a reader does decides: see docs/formats.md.
enum class Products : std::uint8_t { Wrap32, Full64 };

// Replaces the samples of one frame by what is left of them. 25 bits at most.
void PredictMono(std::span<std::int32_t> samples);
// middle is coded first and sees the difference of the frame before; the difference sees the middle of its
// own.
void PredictStereo(std::span<std::int32_t> first, std::span<std::int32_t> second, Products products);

}  // namespace ts5::ape
