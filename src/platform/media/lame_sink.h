// libmp3lame as a sink of samples: MPEG layer III files with the LAME header, which says delay, padding and
// level, so that decoding gives back exactly the samples that went in.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/base/outcome.h"
#include "platform/files/files.h"
#include "platform/media/library_version.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

enum class Mp3Mode : std::uint8_t { Stereo = 0, JointStereo = 1, DualChannel = 2, Mono = 3 };
enum class LameRate : std::uint8_t { Constant, Average, Variable, VariableOld };

struct LameOptions {
  std::uint32_t resampleRate = 0;  // Hz, of the file; 0: that of the samples
  Mp3Mode mode = Mp3Mode::JointStereo;
  LameRate rate = LameRate::Constant;
  int bitRate = 128;     // kbit/s; the mean, or the least that a frame may have (which is kept to)
  int maxBitRate = 320;  // kbit/s, of a variable rate
  int quality = 4;       // of a variable rate: 0 best .. 9
  int effort = -1;       // of the algorithms: 0 best .. 9; -1: the library's own choice
  int preset = 0;        // a preset of the library (LAME_PRESET...), before all of the above; 0: none
  int emphasis = 0;      // 0 none, 1 50/15 us, 3 CCITT J.17; a mark only
  bool privateBit = false;
  bool crc = false;
  bool copyright = false;
  bool original = true;
  bool header = true;  // the frame with delay, padding, level and seek table
  bool reservoir = true;
  bool strictIso = false;
};

// Encodes what it gets into a staged file of the caller's, which stays with him and is not committed here.
// shape: one or two channels, 8000..48000 Hz. OutOfMemory; ConverterNotOpened: the library refuses the
// options.
[[nodiscard]] Result<std::unique_ptr<PcmSink>> OpenLameSink(StagedFile& target, const PcmShape& shape,
                                                            const LameOptions& options);

// Nothing when the library cannot be found.
[[nodiscard]] std::optional<LibraryVersion> LameVersion();

}  // namespace ts5
