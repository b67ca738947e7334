// A range of a disc as a stream of sound, and read into a wave file in the audio-CD format.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "audio/wave_file.h"
#include "disc/sound_source.h"
#include "disc/track_reader.h"

namespace ts5 {
class Crc32;
}

namespace ts5::disc {

// Whole sectors only. What no drive reads, the first two seconds, is silence. The reader outlives the source.
[[nodiscard]] std::unique_ptr<SoundSource> RangeSound(TrackReader& reader, Lba first, std::uint32_t sectors);

struct TrackFileOrder {
  int number = 0;  // of the track, for what is said of it
  std::uint32_t sectors = 0;
  bool trim = false;     // silence at both ends goes
  Crc32* crc = nullptr;  // of all that is read
};

// All may be empty.
struct TrackFileEvents {
  std::function<bool()> stopped = {};         // asked before each portion that is written
  std::function<void(double)> progress = {};  // 0 to 1
  std::function<void(std::string_view)> status = {};
};

// Reads all of the sound and closes the file, which becomes visible then. 0, or an engine error; kStopped.
[[nodiscard]] std::uint32_t ReadTrackToFile(SoundSource& sound, const TrackFileOrder& order, WaveFile wave,
                                            const TrackFileEvents& events);

}  // namespace ts5::disc
