// The shell around a pure conversion: a source file in, a target file out, nothing half written.
#pragma once

#include <new>
#include <string>

#include "platform/bytes.h"
#include "platform/files.h"
#include "platform/outcome.h"

namespace ts5 {

// convert: ByteView -> Result<Bytes>. SourceFailed and ReadFailed from the source, TargetFailed and
// WriteFailed from the target, OutOfMemory, and the codes of the conversion. The target is touched only by
// success.
template <typename Convert>
[[nodiscard]] Outcome ConvertFileWith(const std::string& source, const std::string& target, Convert convert) {
  try {
    const auto file = ReadFile(source);
    if (!file) return file.error();
    const Result<Bytes> converted = convert(ByteView(*file));
    return converted ? WriteFile(target, *converted) : converted.error();
  } catch (const std::bad_alloc&) {
    return Outcome::OutOfMemory;
  }
}

}  // namespace ts5
