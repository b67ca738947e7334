// The audio player: plays audio files of every supported kind on an audio output device, with volume, balance
// and the levels of what sounds.
#pragma once

#include "frame/filter_module.h"

namespace ts5 {

// A run's output device is a name of AudioOutputDevices(), "null" or "wave:FILE.wav"; "" is the device of the
// job, and the system's first one where the job's is not there.
[[nodiscard]] FilterModule AudioPlayerModule();

}  // namespace ts5
