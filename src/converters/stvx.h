// StvXML (.stvx), the XML form of the document: all of it, so that score files and their XML form convert
// into one another byte for byte. docs/stvx.md describes it, docs/stvx.xsd is its schema.
#pragma once

#include <cstdint>

#include "converters/score_with_losses.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/score_document.h"

namespace ts5::converters {

// The reader takes what is written: a document that it would refuse, or one of more than so many bytes, has
// the Xml... code of the element that has no place. Cancelled.
[[nodiscard]] Result<Bytes> WriteStvXml(const ScoreDocument& document, const WorkWatch& watch = {},
                                        std::uint64_t most = kMaxScoreFile);
// WrongFormat: no StvXML; SourceFailed: a damaged file, with bar and staff where known; Cancelled. The losses
// are empty.
[[nodiscard]] ScoreResult<ScoreWithLosses> ReadStvXml(ByteView file, const CancelCheck& cancelled = {});

}  // namespace ts5::converters
