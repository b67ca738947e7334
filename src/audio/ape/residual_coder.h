// What is left of a sample after all prediction, as symbols of the range coder.
#pragma once

#include <cstdint>

#include "audio/ape/range_encoder.h"

namespace ts5::ape {

// The model of one channel: how large its residuals are at the moment.
class ResidualCoder {
 public:
  void Encode(std::int32_t residual, RangeEncoder& out);

 private:
  std::uint32_t sum_ = 16U << 10;  // about 32 times the mean of the halved folded residuals
};

}  // namespace ts5::ape
