// What the info window says of the libraries behind the MP3 engines.
#pragma once

#include <string>

#include "audio/encode/be_config.h"

namespace ts5::encode {

// Version and date of the engine, and the library behind it; why not, when that cannot be found.
[[nodiscard]] std::string EngineVersionText(Mp3Engine engine);
// The text of their licence: "copying.txt" of the program, else that of the system; why not, when neither is
// there.
[[nodiscard]] std::string EngineLicence();

}  // namespace ts5::encode
