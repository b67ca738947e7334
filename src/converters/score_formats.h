// The formats of scores, told by content and by name, read and written through the document.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "converters/score_with_losses.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5::converters {

enum class ScoreFormat : std::uint8_t { Score, StvXml, MusicXml, CompressedMusicXml };

// By the first bytes; nothing for a file that is no score.
[[nodiscard]] std::optional<ScoreFormat> ScoreFormatOf(ByteView file);
// By the extension, without regard to case.
[[nodiscard]] std::optional<ScoreFormat> ScoreFormatOfName(std::string_view name);

// A score of any format. WrongFormat: none; else as its reader says.
[[nodiscard]] ScoreResult<ScoreWithLosses> ReadAnyScore(ByteView file, const CancelCheck& cancelled = {},
                                                        ScoreDetail detail = ScoreDetail::Whole);
// The bytes of a score in a format; what that format cannot hold is added to the report. The document may be
// changed for it. Cancelled, OutOfMemory; an Xml... code for what its reader would refuse.
[[nodiscard]] Result<Bytes> WriteAnyScore(ScoreDocument& document, ScoreFormat format, LossReport& losses,
                                          const WorkWatch& watch = {});

// A score of any format as a score file, for what plays and searches those: a score file itself comes back as
// it is.
[[nodiscard]] Result<Bytes> ScoreImageOf(Bytes file, const CancelCheck& cancelled = {});

// Leaves out what the object mask (xml_signs.h) does not name.
void ApplyObjectMask(ScoreDocument& document, std::uint32_t mask);
// A score file has no number for how often a repeat is played, and says it by a text: "3x".
void SayTimesInWords(ScoreDocument& document);
inline constexpr unsigned kMostTimesInWords = 15;
// What a score file cannot hold of a document. A cancelled report is not complete.
void ReportScoreFileLosses(const ScoreDocument& document, LossReport& losses,
                           const CancelCheck& cancelled = {});

}  // namespace ts5::converters
