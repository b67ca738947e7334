// A decoder at work on one audio file. What comes out has exactly the samples that went into the encoder
// where the file tells of them: encoder delay and padding are taken off. How one is opened: open_media.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/media/pcm_stream.h"
#include "platform/media/wave_format.h"

namespace ts5 {

enum class MediaCodec : std::uint8_t {
  Other,
  MpegLayer1,
  MpegLayer2,
  MpegLayer3,
  WindowsMedia,
  Vorbis,
  Ape,
  Flac,
  Opus,
  Aac,
  Alac
};
enum class MediaContainer : std::uint8_t { Other, Wave, Aiff, Mpeg, WindowsMedia, Ogg, Ape };

struct MediaInfo {
  MediaContainer container = MediaContainer::Other;
  MediaCodec codec = MediaCodec::Other;
  WaveFormat format = {};                    // of the stream as it lies in the file
  double seconds = 0;                        // 0: not known
  std::optional<std::uint64_t> frames = {};  // where the file says it exactly
  std::string encoder = {};                  // what made it, as the file says it
  std::optional<std::uint32_t> delay = {};   // samples that it put before the music, and that are left out
};

class MediaReader : public PcmSource {
 public:
  // Seek() comes out at the frame.
  [[nodiscard]] virtual const MediaInfo& Info() const = 0;
};

}  // namespace ts5
