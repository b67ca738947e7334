// The encoders, one row each: what they take, what they make, and how one is opened as a sink of samples.
// Codecs of the system, the two MP3 engines, Ogg Vorbis and Monkey's Audio are all the same here.
//
//   const Encoder* encoder = EncoderOf(settings);
//   const auto shape = encoder->shape(settings, source->Shape());
//   auto sink = encoder->open({target, settings, *shape, source->Frames()});
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "audio/encode/encode_settings.h"
#include "platform/base/outcome.h"
#include "platform/files/files.h"
#include "platform/media/pcm_stream.h"
#include "platform/media/wave_format.h"

namespace ts5::encode {

enum class EncoderId : std::uint8_t { Mp2Codec, Mp3Codec, WmaCodec, Blade, Lame, OggVorbis, MonkeysAudio };

struct EncoderJob {
  StagedFile& target;  // the caller's: outlives the sink and is not committed by it
  const EncodeSettings& settings;
  PcmShape shape;                       // of the samples that will come, as Encoder::shape gave it
  std::optional<std::uint64_t> frames;  // how many will come, where that is known
};

// What is to be encoded: the samples, and the format in which they lie in their file.
struct EncoderSource {
  PcmShape shape;
  WaveFormat format;
};

struct Encoder {
  EncoderId id;
  std::string_view name;       // as the user reads it
  std::string_view extension;  // of its files, without the dot
  bool lossless;
  bool maybeEmpty;      // whether a file of no samples is a file
  bool exactLength;     // whether as many samples come out of its files as went in
  std::uint32_t delay;  // how many others come before them where the format does not tell
  // The shape in which it wants the samples of this source; bits says to how many whole numbers are rounded
  // (0: not at all). TargetFormatUnknown, NotNecessary (-7), ConverterFailed: it takes nothing of the kind.
  Result<PcmShape> (*shape)(const EncodeSettings& settings, const EncoderSource& source);
  // ConverterNotOpened, ConverterFailed, NotNecessary, FormatRefused, WriteFailed, OutOfMemory.
  Result<std::unique_ptr<PcmSink>> (*open)(const EncoderJob& job);
};

[[nodiscard]] std::span<const Encoder> Encoders();
[[nodiscard]] const Encoder& EncoderById(EncoderId id);
// The encoder that the settings choose; nullptr for the command line and for a codec that does not exist.
[[nodiscard]] const Encoder* EncoderOf(const EncodeSettings& settings);

// One format that a codec of the system makes.
struct CodecFormat {
  std::uint32_t sampleRate;  // Hz
  std::uint16_t channels;
  std::uint32_t bitRate;  // bits per second
};
// "44100 Hz, Stereo, 128 kBit/s"
[[nodiscard]] std::string CodecFormatText(const CodecFormat& format);

inline constexpr std::uint16_t kTagWindowsMedia = 0x161;

// The list of codecs, in the order in which CodingObject counts them, from 0.
struct CodecEntry {
  EncoderId encoder;
  std::uint16_t tag;                 // kTagMpeg, kTagMpegLayer3 or 0x161
  std::vector<CodecFormat> formats;  // empty for the engines, which have a configuration instead
};
[[nodiscard]] std::span<const CodecEntry> Codecs();
// nullptr: the settings choose no codec.
[[nodiscard]] const CodecEntry* CodecOf(const EncodeSettings& settings);
[[nodiscard]] std::int32_t CodecIndexOf(EncoderId encoder);
// The engine that the settings choose; nothing when they choose something else.
[[nodiscard]] std::optional<Mp3Engine> EngineOf(const EncodeSettings& settings);

// Bit rates that the engines' dialog offers, in kbit/s.
inline constexpr std::array<std::int32_t, 15> kMp3Rates = {32,  40,  48,  56,  64,  80,  96, 112,
                                                           128, 144, 160, 192, 224, 256, 320};
// The rate that layer III has for it: the next greater one (144 becomes 160).
[[nodiscard]] int Mp3RateFor(std::uint32_t kiloBits);

}  // namespace ts5::encode
