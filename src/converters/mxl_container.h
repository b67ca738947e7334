// Compressed MusicXML (.mxl): a ZIP archive whose META-INF/container.xml names the score in it (MusicXML 4.0,
// "Compressed .MXL files").
#pragma once

#include <string_view>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5::converters {

// A score may be so large when it is unpacked, and so many times its archive; what is larger is damage or
// malice.
inline constexpr std::uint64_t kMaxUnpackedScore = std::uint64_t{256} << 20;
inline constexpr std::uint64_t kMostCompression = 200;

[[nodiscard]] bool LooksLikeZip(ByteView file);
// The first root file. WrongFormat: no archive, none with a score; SourceFailed: a damaged archive, a name
// that leads out of it, a score beyond the limits; Cancelled.
[[nodiscard]] Result<Bytes> ReadMxl(ByteView file, const CancelCheck& cancelled = {});
// An archive with this score. OutOfMemory.
[[nodiscard]] Result<Bytes> WriteMxl(std::string_view xml);

}  // namespace ts5::converters
