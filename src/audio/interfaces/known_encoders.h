// Encoders of the command line that users of this system have, with lines of parameters that were tried out.
#pragma once

#include <string>

#include "audio/interfaces/encoder_interface.h"

namespace ts5::interfaces {

// Those that are on this machine, ready to be taken as they are. searchPath: directories as in PATH.
[[nodiscard]] EncoderInterfaces FindEncoders(const std::string& searchPath);
[[nodiscard]] EncoderInterfaces FindEncoders();  // along PATH

}  // namespace ts5::interfaces
