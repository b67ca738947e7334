// The kinds of audio files, as the user knows them: how one is told and what it is called.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/base/strings.h"
#include "platform/media/media_reader.h"

namespace ts5 {

enum class MediaKind : std::int32_t {
  None = -1,  // no audio file that the system can use
  Wave = 0,   // PCM, ADPCM, floats, MPEG layer 3 inside a wave file and the like
  MpegLayer1 = 1,
  MpegLayer2 = 2,
  MpegLayer3 = 3,
  Aiff = 4,
  WindowsMedia = 5,
  OggVorbis = 6,
  MonkeysAudio = 7,
  Flac = 8,
  Opus = 9,
  Aac = 10,  // AAC and Apple Lossless, in MP4 files or alone
};

// Kinds that hold what a wave file can hold: the wave converter and the encoders take them.
[[nodiscard]] constexpr bool IsWaveKind(MediaKind kind) {
  return kind == MediaKind::Wave || kind == MediaKind::Aiff;
}

// The kind of a file that a decoder has opened.
[[nodiscard]] MediaKind KindOf(const MediaInfo& info);
// The name of a file's kind, e.g. "AIFF".
[[nodiscard]] TextId KindName(MediaKind kind);
// What its stream is coded in; nothing for codecs that are known by the format tag of a wave file only.
[[nodiscard]] std::optional<TextId> CodecName(MediaCodec codec);

}  // namespace ts5
