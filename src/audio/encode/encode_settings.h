// What a job says about encoding: the method, what of it, and the values of each encoder. The compressor and
// the grabber keep the same settings, each under its own names.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "audio/encode/be_config.h"

namespace ts5::encode {

// As it is stored (CodecType).
enum class EncodeMethod : std::int32_t { Codec = 1, MonkeysAudio = 2, OggVorbis = 3, CommandLine = 4 };

// Bits per second; a bit rate is a value of kOggRates times 1024.
struct OggSettings {
  enum Mode : std::int32_t { AverageRate = 1, Quality = 2 };
  std::int32_t mode = AverageRate;
  std::int32_t maxBitRate = 320 * 1024;
  std::int32_t nominalBitRate = 128 * 1024;
  std::int32_t minBitRate = 64 * 1024;
  std::int32_t quality = 5;  // 0..10

  bool operator==(const OggSettings&) const = default;
};
inline constexpr std::array<std::int32_t, 15> kOggRates = {48,  56,  64,  80,  96,  112, 128, 144,
                                                           160, 192, 224, 256, 320, 384, 448};

inline constexpr std::int32_t kLeastApeLevel = 1000;
inline constexpr std::int32_t kUsualApeLevel = 3000;
inline constexpr std::int32_t kMostApeLevel = 5000;

struct EncodeSettings {
  std::int32_t method = static_cast<std::int32_t>(EncodeMethod::Codec);
  std::int32_t object = 4;  // index into Codecs() (the LAME engine), or of an interface of the command line
  std::int32_t format = 0;  // index of the codec's format, or of the interface's parameter set
  BeConfig engine;          // of the Blade and LAME engines
  std::optional<OggSettings> ogg;  // nothing: never configured
  std::int32_t apeLevel = kUsualApeLevel;
  // Whether each result is decoded and compared; nothing: only where the encoder is our own.
  std::optional<bool> verify;

  [[nodiscard]] EncodeMethod Method() const { return static_cast<EncodeMethod>(method); }
  // The level in the range, kUsualApeLevel for one outside.
  [[nodiscard]] std::int32_t ApeLevel() const {
    return apeLevel < kLeastApeLevel || apeLevel > kMostApeLevel ? kUsualApeLevel : apeLevel;
  }
  bool operator==(const EncodeSettings&) const = default;
};

}  // namespace ts5::encode
