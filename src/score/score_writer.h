// Writes score files of the current format: the counterpart of the readers, from the same tables.
//
// Fields that carry no meaning here are written as zero, which every reader takes, unless the document has
// the bytes that a file had there.
#pragma once

#include <cstdint>

#include "platform/base/bytes.h"
#include "score/score_document.h"

namespace ts5 {

[[nodiscard]] Bytes WriteScore(const ScoreDocument& score);

// The encodings of single fields.
void WriteCompactUnsigned(ByteWriter& out, std::uint32_t value);
void WriteCompactSigned(ByteWriter& out, std::int32_t value);

}  // namespace ts5
