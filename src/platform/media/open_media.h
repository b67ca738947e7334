// Opens audio files of every supported kind, each with the decoder that does it best: PCM and compressed RIFF
// WAVE, AIFF, MPEG audio, Windows Media audio, Ogg Vorbis, Opus, Monkey's Audio, FLAC, AAC and Apple
// Lossless.
#pragma once

#include <memory>
#include <string>

#include "platform/base/outcome.h"
#include "platform/files/input_file.h"
#include "platform/media/media_reader.h"

namespace ts5 {

// Also looks into the stream as far as its format needs it. SourceFailed: the file cannot be opened.
// WrongFormat: no audio that is supported. OutOfMemory. Any thread.
[[nodiscard]] Result<std::unique_ptr<MediaReader>> OpenMedia(const std::string& path);
// The same for a file that is open already; its name helps to tell its kind.
[[nodiscard]] Result<std::unique_ptr<MediaReader>> OpenMedia(InputFile file, const std::string& name);

}  // namespace ts5
