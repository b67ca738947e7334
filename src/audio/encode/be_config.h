// The configuration record of the two MP3 engines (BE_CONFIG), as the published interface of those encoder
// libraries lays it out: packed, little-endian, 331 bytes. It is kept with the job byte for byte, fields that
// nothing here reads included.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/base/bytes.h"

namespace ts5::encode {

inline constexpr std::size_t kBeConfigSize = 331;

// A field of the record by its place.
struct BeField {
  std::uint16_t offset;
  std::uint8_t size;  // 1, 2 or 4 bytes
};

enum class Mp3Engine : std::uint32_t { Blade = 0, Lame = 256 };  // the record's first number

// Fields of the variant for Blade (BE_CONFIG_MP3), under their published names.
namespace blade {
inline constexpr BeField dwSampleRate{4, 4};  // Hz
inline constexpr BeField byMode{8, 1};        // 0 stereo, 2 dual channel, 3 mono
inline constexpr BeField wBitrate{9, 2};      // kbit/s
inline constexpr BeField bPrivate{11, 4};
inline constexpr BeField bCRC{15, 4};
inline constexpr BeField bCopyright{19, 4};
inline constexpr BeField bOriginal{23, 4};
}  // namespace blade

// Fields of the variant for LAME (BE_CONFIG_LAME, LHV1).
namespace lame {
inline constexpr BeField dwStructVersion{4, 4};
inline constexpr BeField dwStructSize{8, 4};
inline constexpr BeField dwSampleRate{12, 4};    // Hz, of the samples that come
inline constexpr BeField dwReSampleRate{16, 4};  // Hz, of the file; 0: as they come
inline constexpr BeField nMode{20, 4};           // 0 stereo, 1 joint stereo, 2 dual channel, 3 mono
inline constexpr BeField dwBitrate{24, 4};       // kbit/s; the least with a variable bit rate
inline constexpr BeField dwMaxBitrate{28, 4};
inline constexpr BeField nPreset{32, 4};
inline constexpr BeField dwMpegVersion{36, 4};
inline constexpr BeField dwPsyModel{40, 4};
inline constexpr BeField dwEmphasis{44, 4};
inline constexpr BeField bPrivate{48, 4};
inline constexpr BeField bCRC{52, 4};
inline constexpr BeField bCopyright{56, 4};
inline constexpr BeField bOriginal{60, 4};
inline constexpr BeField bWriteVBRHeader{64, 4};
inline constexpr BeField bEnableVBR{68, 4};
inline constexpr BeField nVBRQuality{72, 4};  // 0 best .. 9
inline constexpr BeField dwVbrAbr_bps{76, 4};
inline constexpr BeField nVbrMethod{80, 4};
inline constexpr BeField bNoRes{84, 4};
inline constexpr BeField bStrictIso{88, 4};
inline constexpr BeField nQuality{92, 2};
}  // namespace lame

class BeConfig {
 public:
  BeConfig();  // never configured: its first number is 0xFFFFFFFF
  [[nodiscard]] static BeConfig Defaults(Mp3Engine engine);

  [[nodiscard]] bool IsFor(Mp3Engine engine) const;
  // This record when it is for the engine, else the engine's defaults with what the other engine's record has
  // in common with it.
  [[nodiscard]] BeConfig For(Mp3Engine engine) const;

  [[nodiscard]] std::uint32_t Get(BeField field) const;
  [[nodiscard]] std::int32_t GetSigned(BeField field) const;
  void Set(BeField field, std::uint32_t value);

  [[nodiscard]] ByteView Image() const { return image_; }
  // A shorter image leaves the rest as it is; what is longer is cut.
  void SetImage(ByteView image);

  bool operator==(const BeConfig&) const = default;

 private:
  std::array<std::uint8_t, kBeConfigSize> image_{};
};

// The values that the dialog and --set speak of, whichever engine the record is for. A value that the engine
// does not have reads as 0 and is not set.
struct BeValue {
  std::string_view name;  // EncoderSampleRate, ...
  BeField blade;          // size 0: not of this engine
  BeField lame;
  std::int32_t least;
  std::int32_t most;

  [[nodiscard]] BeField For(Mp3Engine engine) const { return engine == Mp3Engine::Lame ? lame : blade; }
};
[[nodiscard]] std::span<const BeValue> BeValues();

}  // namespace ts5::encode
