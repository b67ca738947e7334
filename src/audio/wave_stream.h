// Wave files as streams of samples, and a stream in another sample rate and number of channels.
#pragma once

#include <memory>
#include <string>

#include "audio/media_file.h"
#include "audio/wave_file.h"
#include "platform/base/outcome.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

// Any supported file as samples: uncompressed wave and AIFF files by themselves, everything else by its
// decoder. SourceFailed: it cannot be opened, or promises samples and has none; WrongFormat: no supported
// audio; ReadFailed, OutOfMemory.
[[nodiscard]] Result<std::unique_ptr<PcmSource>> OpenPcm(const std::string& path);

// The samples of a file that is open already. WrongFormat: nothing here decodes it.
[[nodiscard]] Result<std::unique_ptr<PcmSource>> PcmOf(MediaFile media);

// The samples of an open wave file. WrongFormat: its data are compressed.
[[nodiscard]] Result<std::unique_ptr<PcmSource>> WaveSource(WaveFile file);

// The source in another shape: mixed (see ChannelMix) and resampled as far as that is necessary; the source
// itself when nothing is. FormatRefused: rates that are too far apart.
[[nodiscard]] Result<std::unique_ptr<PcmSource>> Converted(std::unique_ptr<PcmSource> source,
                                                           std::uint32_t sampleRate, std::uint32_t channels);

// Encodes what it gets into a wave file of the file's own format, which must be one of SampleTypeOf, and
// closes the file when it is finished. from: the shape of the samples before they were converted; a depth of
// 8 or 16 bits is dithered when they had a greater one or were resampled.
[[nodiscard]] Result<std::unique_ptr<PcmSink>> WaveSink(WaveFile file, const PcmShape& from);

}  // namespace ts5
