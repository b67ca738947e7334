#include "audio/audio_remarks.h"

#include <iterator>

#include "audio/texts.h"
#include "frame/texts.h"
#include "platform/base/outcome.h"

namespace ts5 {
namespace {

using namespace texts;

constexpr Remark kAudio[] = {
    {-2, RemarkOutOfMemory},
    {-4, AudioInvalidParameter},
    {-5, RemarkCancelled},
    {-6, AudioUnexpected},
    {-7, AudioNotPossible},
    {-9, AudioLibraryNotLoaded},
    {-10, AudioEncoderNotStarted},
    {-100, RemarkReadFailed},
    {-101, RemarkWriteFailed},
    {-102, AudioAttributesNotWritten},
    {-103, AudioNotOpened},
    {-104, AudioNotPcm},
    {-106, AudioNotCreated},
    {-200, AudioTargetFailed},
    {-202, AudioTargetFormatUnknown},
    {-300, RemarkSourceFailed},
    {-400, AudioConverterFailed},
    {-401, AudioConverterNotOpened},
    {-402, AudioPcmConverterMissing},
    {-403, AudioEncoderFailed},
    {Code(Outcome::FormatRefused), AudioFormatRefused},
};

constexpr Remark kWaveConverter[] = {
    {-5, RemarkCancelled},
    {Code(Outcome::FormatRefused), AudioFormatRefused},
    // On the way: the conversion had begun.
    {-2, RemarkOutOfMemory},
    {-100, RemarkReadFailed},
    {-101, RemarkWriteFailed},
    {-1, AudioNotInitialised},
    {-103, AudioNotInitialised},
    {-104, AudioNotInitialised},
    {-106, AudioNotInitialised},
    {-200, AudioNotInitialised},
    {-300, AudioNotInitialised},
};

}  // namespace

std::vector<Remark> BeforeAudioRemarks(std::span<const Remark> own) {
  std::vector<Remark> all(own.begin(), own.end());
  all.insert(all.end(), std::begin(kAudio), std::end(kAudio));
  return all;
}

std::span<const Remark> WaveConverterRemarks() {
  return kWaveConverter;
}

}  // namespace ts5
