// The one result type of the system: a closed list of outcome codes, and a value or such a code.
//
// Zero is success, negative values are failures. The numbers are part of the product: they are stored
// in results, named in messages and printed by the console program. Positive values are results of
// their own with which some filters say what they did.
#pragma once

#include <cstdint>
#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace ts5 {

enum class [[nodiscard]] Outcome : std::int32_t{
    Success = 0,
    LibraryFailed = -1,  // a conversion component cannot be used
    OutOfMemory = -2,
    InvalidParameter = -4,
    Cancelled = -5,        // by the user: a stop, or a question answered with No
    ChunkNotWritten = -6,  // a RIFF chunk
    NotABurnerList = -7,   // a file list without playing times
    NotNecessary = -7,     // an action that would change nothing, or that the source does not allow
    LibraryNotLoaded = -9,
    EncoderNotStarted = -10,
    NoPlayingTime = -12,          // a score that lasts no time
    ReadFailed = -100,            // a short read or an I/O error
    WriteFailed = -101,           // a short write, a full disk
    AttributesNotWritten = -102,  // at least one of an audio file
    SourceNotOpened = -103,       // an audio source
    WrongFormat = -104,           // not in the format that the operation takes
    NotAFileList = -105,
    TargetNotCreated = -106,  // an audio target
    TargetFailed = -200,      // the target cannot be created or replaced
    TargetNameMissing = -201,
    TargetFormatUnknown = -202,
    InUse = -210,         // another program keeps the file locked
    SourceFailed = -300,  // the source cannot be opened
    ConverterFailed = -400,
    ConverterNotOpened = -401,
    PcmConverterMissing = -402,
    EncoderFailed = -403,          // it says so itself; what it wrote may be of no use
    NotProven = -404,              // what was encoded does not come out of its file as it went in
    CdDriveFailed = -500,          // a disc drive does not answer, or holds no disc that can be used
    DamagedMidi = -601,            // a MIDI file that breaks off or contradicts itself
    MidiDeviceFailed = -602,       // the MIDI output device cannot be opened
    LongSilence = -603,            // a MIDI file with rests that no music has, which the user does not want
    DamagedScore = -1000,          // a score with an invalid record
    OldScore = -1001,              // a score of an older format, of which only the information is read
    XmlNotWritten = -1400,         // an XML file as a whole, for example one that no reader would take
    XmlInfoNotWritten = -1401,     // parts of it that its format cannot hold: what it says of the work,
    XmlElementNotWritten = -1402,  // a note, a sign,
    XmlLayoutNotWritten = -1403,   // a staff's layout or the page,
    XmlSystemNotWritten = -1405,   // a system or its staves
    XmlContradiction = -1408,      // a score whose parts do not fit one another
    FormatRefused = -2147220992,   // a target format that the converter does not make
};

[[nodiscard]] constexpr std::int32_t Code(Outcome outcome) {
  return static_cast<std::int32_t>(outcome);
}
[[nodiscard]] constexpr bool Succeeded(Outcome outcome) {
  return Code(outcome) >= 0;
}
[[nodiscard]] constexpr bool Failed(Outcome outcome) {
  return Code(outcome) < 0;
}

template <typename T>
using Result = tl::expected<T, Outcome>;

[[nodiscard]] inline tl::unexpected<Outcome> Failure(Outcome outcome) {
  return tl::unexpected<Outcome>(outcome);
}

// How GoogleTest and logs show a code, e.g. "Outcome(-104)".
std::string ToString(Outcome outcome);
void PrintTo(Outcome outcome, std::ostream* out);

}  // namespace ts5
