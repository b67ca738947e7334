#include "disc/engine_reason.h"

#include <algorithm>

#include "disc/texts.h"
#include "disc/track_reader.h"

namespace ts5::disc {
namespace {

struct Reason {
  EngineError mask;
  EngineError error;
  TextId text;
};
// A command that failed has its kind in the first byte (a write or a close), the sense key, code and
// qualifier in the others.
constexpr EngineError kAll = 0xFFFF'FFFF;
constexpr EngineError kSense = 0xFEFF'FFFF;
constexpr EngineError kKey = 0xFEFF'0000;
constexpr EngineError kKeyAndCode = 0xFEFF'FF00;
constexpr Reason kReasons[] = {
    {kAll, engine::kNotCreated, texts::ReasonFolder},
    {kAll, engine::kHeaderNotWritten, texts::ReasonFolder},
    {kAll, engine::kFileNotWritten, texts::ReasonFolder},
    {kAll, engine::kChunkNotClosed, texts::ReasonFolder},
    {kAll, engine::kDiscUnknown, texts::ReasonDiscUnknown},
    {kAll, engine::kNoWritable, texts::ReasonDiscUnknown},
    {kAll, engine::kSectorsUnreadable, texts::ReasonUnreadable},
    {kAll, engine::kDiscChanged, texts::ReasonSourceChanged},
    {kAll, engine::kSourceRead, texts::ReasonSource},
    {kAll, engine::kSourceOpen, texts::ReasonSource},
    {kAll, engine::kCueSheet, texts::ReasonCueSheet},
    {kAll, engine::kParametersUnread, texts::ReasonParameters},
    {kAll, engine::kParametersRefused, texts::ReasonParameters},
    {kSense, 0xFE00'0000, texts::ReasonDriveGone},
    {kKeyAndCode, 0xFE02'3A00, texts::ReasonDiscChanged},
    {kKey, 0xFE03'0000, texts::ReasonMedium},
    {kKey, 0xFE04'0000, texts::ReasonHardware},
    {kKey, 0xFE06'0000, texts::ReasonDiscChanged},
};

}  // namespace

std::optional<TextId> ReasonOf(EngineError error) {
  const auto* const row =
      std::ranges::find_if(kReasons, [&](const Reason& one) { return (error & one.mask) == one.error; });
  return row == std::end(kReasons) ? std::nullopt : std::optional(row->text);
}

}  // namespace ts5::disc
