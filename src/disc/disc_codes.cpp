#include "disc/disc_codes.h"

#include <vector>

#include "audio/audio_remarks.h"
#include "audio/encode/texts.h"
#include "disc/texts.h"

namespace ts5::disc::code {
namespace {

using namespace texts;

constexpr Remark kOwn[] = {
    {kNotDone, RemarkNotDone},
    {kSourceMissing, RemarkSourceMissing},
    {kEncoderNotInitialised, RemarkEncoderNotInitialised},
    {kDriveFailed, RemarkDriveFailed},
    {kDriveNotOpened, RemarkDriveNotOpened},
    {kMidiNotInitialised, RemarkMidiNotInitialised},
    {kMidiNotStarted, RemarkMidiNotStarted},
    {kTrackNotRead, RemarkTrackNotRead},
    {kNotWritable, RemarkNotWritable},
    {kDiscUnknown, RemarkDiscUnknown},
    {kDiscNotBlank, RemarkDiscNotBlank},
    {kDiscTooSmall, RemarkDiscTooSmall},
    {kTrackNotBurnt, RemarkTrackNotBurnt},
    {kDiscNotClosed, RemarkDiscNotClosed},
    {kDiscNotBurnt, RemarkDiscNotBurnt},
    {kNotSimulated, RemarkDiscNotSimulated},
    {kUnreliable, RemarkUnreliable},
    {kUnderrun, RemarkUnderrun},
    {kPauses, RemarkPauses},
    {kNotVerified, RemarkNotVerified},
    {kNoTracks, RemarkNoTracks},
    {kNoAudioDisc, RemarkNoAudioDisc},
    {kDriveBusy, RemarkDriveBusy},
    {kNoNextDisc, RemarkNoNextDisc},
    {kTooManyTracks, RemarkTooManyTracks},
    {kAnotherDisc, RemarkAnotherDisc},
    {kNotReadBack, RemarkNotReadBack},
    {kWaveInput, RemarkWaveInput},
    {kWaveInputNotStarted, RemarkWaveInputNotStarted},
    {kVerified, RemarkVerified},
    {kNotCompared, RemarkNotCompared},
    {kPausesUnknown, RemarkPausesUnknown},
    {kPausesDropped, RemarkPausesDropped},
    {Code(Outcome::NotProven), EncodeNotProven},
    {kCalibrationRefused, CalibrationRefused},
    {kNotHurried, NotHurried},
};

}  // namespace

std::span<const Remark> Remarks() {
  static const std::vector<Remark> all = BeforeAudioRemarks(kOwn);
  return all;
}

std::string RemarkText(std::int32_t code, std::int32_t number) {
  std::string text;
  for (const std::string& line : RemarkLines(Remarks(), {code, false, number}))
    text += (text.empty() ? "" : " ") + line;
  return text;
}

}  // namespace ts5::disc::code
