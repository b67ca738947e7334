// Detects and decodes audio files of every supported kind: PCM and compressed RIFF WAVE, AIFF, MPEG audio,
// Windows Media audio, Ogg Vorbis, Monkey's Audio, FLAC. What comes out has exactly the samples that went
// into the encoder where the file tells of them: encoder delay and padding are taken off.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/outcome.h"
#include "platform/pcm_stream.h"
#include "platform/wave_format.h"

namespace ts5 {

enum class MediaCodec : std::uint8_t { Other, MpegLayer1, MpegLayer2, MpegLayer3, WindowsMedia, Vorbis, Ape };
enum class MediaContainer : std::uint8_t { Other, Wave, Aiff, Mpeg, WindowsMedia, Ogg, Ape };

struct MediaInfo {
  MediaContainer container = MediaContainer::Other;
  MediaCodec codec = MediaCodec::Other;
  WaveFormat format = {};                    // of the stream as it lies in the file
  double seconds = 0;                        // 0: not known
  std::optional<std::uint64_t> frames = {};  // where the file says it exactly
};

class MediaReader : public PcmSource {
 public:
  // Also looks into the stream as far as its format needs it. SourceFailed: the file cannot be opened.
  // WrongFormat: no audio that is supported. OutOfMemory. Any thread.
  [[nodiscard]] static Result<std::unique_ptr<MediaReader>> Open(const std::string& path);

  // Seek() comes out at the frame.
  [[nodiscard]] virtual const MediaInfo& Info() const = 0;
};

}  // namespace ts5
