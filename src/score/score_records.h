// The records of a score file one by one, as bytes and as parts of a document.
//
// A record of another program holds more than a document says (colours, places on paper). Such a record is
// kept beside the members made of it and written again as long as both say the same.
#pragma once

#include <cstdint>

#include "platform/base/bytes.h"
#include "score/score_document.h"
#include "score/score_source.h"

namespace ts5 {

// As this system writes them.
[[nodiscard]] Bytes ItemRecord(const ScoreItem& item);
[[nodiscard]] Bytes SystemRecord(const SystemItems& system);  // up to the number of its staves
[[nodiscard]] Bytes StaffRecord(const StaffItems& staff);     // up to the number of its voices
[[nodiscard]] Bytes VoiceRecord(std::uint32_t objects);
[[nodiscard]] Bytes InformationRecord(const ScoreDocument& score);  // up to the number of its systems

// The kept record where it still holds, else one of the members.
[[nodiscard]] Bytes RecordToWrite(const ScoreItem& item);
[[nodiscard]] Bytes RecordToWrite(const SystemItems& system);
[[nodiscard]] Bytes RecordToWrite(const StaffItems& staff);
[[nodiscard]] Bytes RecordToWrite(ByteView kept, std::uint32_t objects);
[[nodiscard]] Bytes RecordToWrite(const ScoreDocument& score);

// An item of its record; the source is not Ok() when it is invalid.
[[nodiscard]] ScoreItem ReadItem(ScoreSource& in, ByteView file);
// The information part alone.
[[nodiscard]] ScoreDocument DocumentOf(const ScoreFileInfo& info, ByteView file);

}  // namespace ts5
