// Outcome codes of disc runs beside those that all filters share, and what is said of them.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "frame/remarks.h"

namespace ts5::disc::code {

inline constexpr std::int32_t kNotDone = -7;
inline constexpr std::int32_t kSourceMissing = -301;
inline constexpr std::int32_t kEncoderNotInitialised = -404;
inline constexpr std::int32_t kDriveFailed = -500;
inline constexpr std::int32_t kDriveNotOpened = -501;
inline constexpr std::int32_t kMidiNotInitialised = -600;
inline constexpr std::int32_t kMidiNotStarted = -602;
inline constexpr std::int32_t kTrackNotRead = -702;
inline constexpr std::int32_t kNotWritable = -703;
inline constexpr std::int32_t kDiscUnknown = -704;
inline constexpr std::int32_t kDiscNotBlank = -705;
inline constexpr std::int32_t kDiscTooSmall = -708;
inline constexpr std::int32_t kTrackNotBurnt = -709;
inline constexpr std::int32_t kDiscNotClosed = -710;
inline constexpr std::int32_t kDiscNotBurnt = -711;
inline constexpr std::int32_t kNotSimulated = -725;
inline constexpr std::int32_t kUnreliable = -726;
inline constexpr std::int32_t kFilesNotPrepared = -727;  // told by itself, not in the list of remarks
inline constexpr std::int32_t kUnderrun = -728;
inline constexpr std::int32_t kPauses = -729;
inline constexpr std::int32_t kNotVerified = -730;
inline constexpr std::int32_t kNoTracks = -731;
inline constexpr std::int32_t kNoAudioDisc = -732;
inline constexpr std::int32_t kDriveBusy = -733;
inline constexpr std::int32_t kNoNextDisc = -735;
inline constexpr std::int32_t kTooManyTracks = -736;
inline constexpr std::int32_t kAnotherDisc = -737;  // from its very beginning
inline constexpr std::int32_t kNotReadBack = -738;
inline constexpr std::int32_t kWaveInput = -900;
inline constexpr std::int32_t kWaveInputNotStarted = -901;
// Not failures: what the user should know.
inline constexpr std::int32_t kVerified = 730;
inline constexpr std::int32_t kPausesUnknown = 731;
inline constexpr std::int32_t kCalibrationRefused = 732;
inline constexpr std::int32_t kNotHurried = 733;
inline constexpr std::int32_t kNotCompared = 734;
inline constexpr std::int32_t kPausesDropped = 735;

// Those of discs before those of audio files.
[[nodiscard]] std::span<const Remark> Remarks();
// What they say of one code, in one line; number: what its message shows.
[[nodiscard]] std::string RemarkText(std::int32_t code, std::int32_t number);

}  // namespace ts5::disc::code
