// Formats as the user reads them, and the formats that the wave converter offers.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/base/strings.h"
#include "platform/media/wave_format.h"

namespace ts5 {

inline constexpr std::array<std::uint32_t, 14> kOfferedRates = {
    8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000, 64000, 88200, 96000, 176400, 192000};
inline constexpr std::array<std::uint16_t, 4> kOfferedBits = {8, 16, 24, 32};  // 32: floats

// "44100 Hz (Samples per Sek), 16 Bits per Sample, Stereo"
[[nodiscard]] std::string FormatText(const WaveFormat& format);
// The same, with floats named as such, to tell them from whole numbers of the same width.
[[nodiscard]] std::string FullFormatText(const WaveFormat& format);
// "PCM", "ADPCM", "MPEG Layer 3", else "non-PCM".
[[nodiscard]] TextId CodingName(const WaveFormat& format);
// The same, but for "PCM float".
[[nodiscard]] TextId FullCodingName(const WaveFormat& format);

// A format that the converter makes: 32 bits are floats.
[[nodiscard]] WaveFormat TargetFormat(std::uint32_t sampleRate, std::uint16_t bits, std::uint16_t channels);
// All of them, by rate, then depth, then channels.
[[nodiscard]] std::vector<WaveFormat> OfferedFormats();

}  // namespace ts5
