// An audio file opened once, by whoever reads its kind: wave and AIFF files by our own readers, whatever they
// hold uncompressed, everything else by its decoder. What our own readers refuse is refused: the decoders'
// guesses about broken headers come out as noise.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "audio/media_kind.h"
#include "audio/wave_file.h"
#include "platform/base/outcome.h"
#include "platform/media/media_reader.h"

namespace ts5 {

struct MediaFile {
  MediaKind kind = MediaKind::None;
  std::optional<WaveFile> wave = {};          // the data of a RIFF WAVE file, of AIFF uncompressed ones only
  std::unique_ptr<MediaReader> decoder = {};  // what has to be decoded; nullptr: nothing here can, or need
};

// SourceFailed: it cannot be opened, or promises samples and has none. WrongFormat: no audio that is
// supported. ReadFailed, OutOfMemory. A compressed wave file that nothing here decodes is a success without a
// decoder.
[[nodiscard]] Result<MediaFile> OpenMediaFile(const std::string& path);

}  // namespace ts5
