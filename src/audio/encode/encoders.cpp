#include <algorithm>
#include <cmath>
#include <utility>

#include "audio/ape/ape_sink.h"
#include "audio/encode/encoder.h"
#include "audio/encode/texts.h"
#include "platform/base/text.h"
#include "platform/media/lame_sink.h"
#include "platform/media/media_writer.h"
#include "platform/media/shine_sink.h"
#include "platform/media/vorbis_sink.h"

namespace ts5::encode {
namespace {

using Sink = Result<std::unique_ptr<PcmSink>>;

// --- codecs of the system

constexpr std::uint32_t kUsualMpegRates[] = {48000, 44100, 32000};
constexpr std::uint32_t kLowMpegRates[] = {24000, 22050, 16000};
constexpr std::uint32_t kKilo = 1000;

void AddFormats(std::vector<CodecFormat>& formats, std::span<const std::uint32_t> rates,
                std::uint16_t channels, std::initializer_list<std::uint32_t> kiloBits) {
  for (const std::uint32_t rate : rates) {
    for (const std::uint32_t kilo : kiloBits) formats.push_back({rate, channels, kilo * kKilo});
  }
}

// ISO 11172-3 knows no layer II below 64 kbit/s in stereo, nor above 192 in mono.
std::vector<CodecFormat> LayerTwoFormats() {
  std::vector<CodecFormat> formats;
  AddFormats(formats, kUsualMpegRates, 2, {96, 112, 128, 160, 192, 224, 256, 320, 384});
  AddFormats(formats, kUsualMpegRates, 1, {48, 56, 64, 80, 96, 112, 128, 160, 192});
  AddFormats(formats, kLowMpegRates, 2, {48, 64, 80, 96, 112, 128, 160});
  AddFormats(formats, kLowMpegRates, 1, {24, 32, 40, 48, 56, 64, 80});
  return formats;
}

std::vector<CodecFormat> LayerThreeFormats() {
  std::vector<CodecFormat> formats;
  AddFormats(formats, kUsualMpegRates, 2, {64, 80, 96, 112, 128, 160, 192, 224, 256, 320});
  AddFormats(formats, kUsualMpegRates, 1, {32, 40, 48, 56, 64, 80, 96, 112, 128, 160});
  AddFormats(formats, kLowMpegRates, 2, {32, 40, 48, 56, 64, 80, 96});
  AddFormats(formats, kLowMpegRates, 1, {16, 24, 32, 40, 48});
  return formats;
}

std::vector<CodecFormat> WindowsMediaFormats() {
  constexpr std::uint32_t kFull[] = {48000, 44100};
  constexpr std::uint32_t kHalf[] = {22050};
  constexpr std::uint32_t kQuarter[] = {11025};
  std::vector<CodecFormat> formats;
  AddFormats(formats, kFull, 2, {64, 80, 96, 128, 160, 192});
  AddFormats(formats, kFull, 1, {48, 64});
  AddFormats(formats, kHalf, 2, {32, 48});
  AddFormats(formats, kHalf, 1, {20, 24, 32});
  AddFormats(formats, kQuarter, 1, {12, 16});
  return formats;
}

Result<CodecFormat> GetCodecFormat(const EncodeSettings& settings) {
  const CodecEntry* const codec = CodecOf(settings);
  if (codec == nullptr) return Failure(Outcome::ConverterNotOpened);
  if (std::cmp_greater_equal(settings.format, codec->formats.size()))
    return Failure(Outcome::TargetFormatUnknown);
  return codec->formats.at(static_cast<std::size_t>(settings.format));
}

template <std::uint32_t kBits>
Result<PcmShape> CodecShape(const EncodeSettings& settings, const EncoderSource& /*source*/) {
  const auto format = GetCodecFormat(settings);
  if (!format) return Failure(format.error());
  return PcmShape{
      .sampleRate = format->sampleRate, .channels = format->channels, .channelMask = 0, .bits = kBits};
}

template <MediaEncoder kEncoder>
Sink OpenCodec(const EncoderJob& job) {
  const auto format = GetCodecFormat(job.settings);
  if (!format) return Failure(format.error());
  return OpenMediaWriter(job.target, kEncoder, job.shape, format->bitRate);
}

Sink OpenLayerThree(const EncoderJob& job) {
  const auto format = GetCodecFormat(job.settings);
  if (!format) return Failure(format.error());
  return OpenLameSink(job.target, job.shape, {.bitRate = static_cast<int>(format->bitRate / kKilo)});
}

// --- the MP3 engines

constexpr std::uint32_t kMonoMode = 3;

PcmShape EngineShape(std::uint32_t sampleRate, std::uint32_t mode, std::uint32_t bits) {
  return {.sampleRate = sampleRate, .channels = mode == kMonoMode ? 1U : 2U, .channelMask = 0, .bits = bits};
}

Result<PcmShape> BladeShape(const EncodeSettings& settings, const EncoderSource& /*source*/) {
  const BeConfig config = settings.engine.For(Mp3Engine::Blade);
  return EngineShape(config.Get(blade::dwSampleRate), config.Get(blade::byMode), 16);
}

Sink OpenBlade(const EncoderJob& job) {
  const BeConfig config = job.settings.engine.For(Mp3Engine::Blade);
  return OpenShineSink(job.target, job.shape,
                       {.mode = static_cast<Mp3Mode>(config.Get(blade::byMode) & 3),
                        .bitRate = Mp3RateFor(config.Get(blade::wBitrate)),
                        .privateBit = config.Get(blade::bPrivate) != 0,
                        .crc = config.Get(blade::bCRC) != 0,
                        .copyright = config.Get(blade::bCopyright) != 0,
                        .original = config.Get(blade::bOriginal) != 0});
}

Result<PcmShape> LameShape(const EncodeSettings& settings, const EncoderSource& /*source*/) {
  const BeConfig config = settings.engine.For(Mp3Engine::Lame);
  // Resampling is done here in any case, and better.
  const std::uint32_t resampled = config.Get(lame::dwReSampleRate);
  return EngineShape(resampled != 0 ? resampled : config.Get(lame::dwSampleRate), config.Get(lame::nMode), 0);
}

// What the published preset numbers of the record mean: a preset of the library, a mean bit rate for radio,
// tape and the like, an effort, or a kind of rate.
struct PresetRow {
  std::int32_t number;
  int library;
  int average;  // kbit/s
  int effort;
  std::optional<LameRate> rate;
};
constexpr PresetRow kPresets[] = {
    {1, 0, 0, 7, {}},       // low
    {2, 0, 0, 2, {}},       // high
    {3, 0, 56, -1, {}},     // voice
    {4, 1000, 0, -1, {}},   // the library's "r3mix"
    {5, 0, 0, 0, {}},       // very high
    {6, 1001, 0, -1, {}},   // standard
    {7, 1004, 0, -1, {}},   // the same, fast
    {8, 1002, 0, -1, {}},   // extreme
    {9, 1005, 0, -1, {}},   // the same, fast
    {10, 1003, 0, -1, {}},  // insane
    {11, 0, 0, -1, LameRate::Average},
    {12, 0, 0, -1, LameRate::Constant},
    {13, 1006, 0, -1, {}},    // medium
    {14, 1007, 0, -1, {}},    // the same, fast
    {1000, 0, 16, -1, {}},    // telephone
    {2000, 0, 24, -1, {}},    // short wave
    {3000, 0, 40, -1, {}},    // AM radio
    {4000, 0, 112, -1, {}},   // FM radio
    {5000, 0, 56, -1, {}},    // speech
    {6000, 0, 112, -1, {}},   // radio
    {7000, 0, 112, -1, {}},   // tape
    {8000, 0, 160, -1, {}},   // hi-fi
    {9000, 0, 192, -1, {}},   // CD
    {10000, 0, 256, -1, {}},  // studio
};

LameRate RateOf(const BeConfig& config) {
  constexpr std::int32_t kNone = -1;
  constexpr std::int32_t kOld = 1;
  constexpr std::int32_t kAverage = 4;
  const std::int32_t method = config.GetSigned(lame::nVbrMethod);
  if (config.Get(lame::bEnableVBR) == 0 || method == kNone) return LameRate::Constant;
  if (method == kAverage || config.Get(lame::dwVbrAbr_bps) != 0) return LameRate::Average;
  return method == kOld ? LameRate::VariableOld : LameRate::Variable;
}

LameOptions LameOptionsOf(const BeConfig& config) {
  LameOptions options;
  options.mode = static_cast<Mp3Mode>(config.Get(lame::nMode) & 3);
  options.rate = RateOf(config);
  options.bitRate = Mp3RateFor(config.Get(lame::dwBitrate));
  const std::uint32_t average = config.Get(lame::dwVbrAbr_bps) / kKilo;
  if (options.rate == LameRate::Average && average != 0)
    options.bitRate = static_cast<int>(std::clamp(average, 8U, 320U));
  options.maxBitRate = std::max(Mp3RateFor(config.Get(lame::dwMaxBitrate)), options.bitRate);
  options.quality = static_cast<int>(std::min(config.Get(lame::nVBRQuality), 9U));
  // The effort counts only where its two bytes contradict each other as they should.
  const std::uint32_t effort = config.Get(lame::nQuality);
  if ((effort >> 8) == (~effort & 0xFF)) options.effort = static_cast<int>(std::min(effort & 0xFF, 9U));
  if (const auto* const row =
          std::ranges::find(kPresets, config.GetSigned(lame::nPreset), &PresetRow::number);
      row != std::end(kPresets)) {
    options.preset = row->library;
    if (row->effort >= 0) options.effort = row->effort;
    options.rate = row->rate.value_or(options.rate);
    if (row->average != 0) {
      options.rate = LameRate::Average;
      options.bitRate = row->average;
    }
  }
  options.emphasis = static_cast<int>(config.Get(lame::dwEmphasis) & 3);
  options.privateBit = config.Get(lame::bPrivate) != 0;
  options.crc = config.Get(lame::bCRC) != 0;
  options.copyright = config.Get(lame::bCopyright) != 0;
  options.original = config.Get(lame::bOriginal) != 0;
  options.header = config.Get(lame::bWriteVBRHeader) != 0 || options.rate == LameRate::Constant;
  options.reservoir = config.Get(lame::bNoRes) == 0;
  options.strictIso = config.Get(lame::bStrictIso) != 0;
  return options;
}

Sink OpenLame(const EncoderJob& job) {
  return OpenLameSink(job.target, job.shape, LameOptionsOf(job.settings.engine.For(Mp3Engine::Lame)));
}

// --- Ogg Vorbis

Result<PcmShape> OggShape(const EncodeSettings& /*settings*/, const EncoderSource& source) {
  const auto type = SampleTypeOf(source.format);
  const bool taken =
      type == SampleType::Unsigned8 || type == SampleType::Signed16 || type == SampleType::Float32;
  if (!taken) return Failure(Outcome::NotNecessary);
  PcmShape shape = source.shape;
  shape.bits = 0;
  return shape;
}

// Streams of one number must not stand in one file, and the same source shall give the same file.
std::uint32_t SerialOf(const EncoderJob& job) {
  std::uint32_t hash = 2166136261U;
  const auto add = [&hash](std::uint64_t value) {
    for (int byte = 0; byte < 8; ++byte)
      hash = (hash ^ static_cast<std::uint32_t>(value >> (8 * byte) & 0xFF)) * 16777619U;
  };
  add(job.frames.value_or(0));
  add(job.shape.sampleRate);
  add(static_cast<std::uint64_t>(job.settings.ogg.value_or(OggSettings{}).quality));
  return hash;
}

Sink OpenOgg(const EncoderJob& job) {
  const OggSettings ogg = job.settings.ogg.value_or(OggSettings{});
  const VorbisOptions options{.variable = ogg.mode == OggSettings::Quality,
                              .quality = static_cast<float>(ogg.quality) * 0.1F,
                              .maxBitRate = ogg.maxBitRate,
                              .nominalBitRate = ogg.nominalBitRate,
                              .minBitRate = ogg.minBitRate,
                              .serial = SerialOf(job)};
  return OpenVorbisSink(job.target, job.shape, options);
}

// --- Monkey's Audio

Result<PcmShape> ApeShape(const EncodeSettings& /*settings*/, const EncoderSource& source) {
  const auto type = SampleTypeOf(source.format);
  const bool whole = type && SampleBits(*type) != 0 && SampleBits(*type) <= 24;
  if (!whole || source.shape.channels > 2) return Failure(Outcome::ConverterFailed);
  PcmShape shape = source.shape;
  shape.bits = SampleBits(*type);
  return shape;
}

Sink OpenApe(const EncoderJob& job) {
  auto sink = OpenApeSink(job.target,
                          {.sampleRate = job.shape.sampleRate,
                           .channels = job.shape.channels,
                           .bits = job.shape.bits,
                           .level = ape::LevelOf(static_cast<std::uint32_t>(job.settings.ApeLevel()))},
                          job.frames);
  if (!sink && sink.error() == Outcome::FormatRefused) return Failure(Outcome::ConverterFailed);
  return sink;
}

// --- the table, in the order of EncoderId

//                                                                          lossless maybeEmpty exactLength
//                                                                          delay
constexpr Encoder kEncoders[] = {
    {EncoderId::Mp2Codec, "MPEG Layer-2 Audio Codec", "mp2", false, false, false, 481, CodecShape<16>,
     OpenCodec<MediaEncoder::MpegLayer2>},
    {EncoderId::Mp3Codec, "MPEG Layer-3 Audio Codec", "mp3", false, false, true, 0, CodecShape<0>,
     OpenLayerThree},
    {EncoderId::WmaCodec, "Windows Media Audio", "wma", false, false, false, 0, CodecShape<0>,
     OpenCodec<MediaEncoder::WindowsMedia>},
    {EncoderId::Blade, "Blade Encoder Engine", "mp3", false, false, true, 0, BladeShape, OpenBlade},
    {EncoderId::Lame, "Lame Encoder Engine", "mp3", false, false, true, 0, LameShape, OpenLame},
    {EncoderId::OggVorbis, "Ogg Vorbis", "ogg", false, true, true, 0, OggShape, OpenOgg},
    {EncoderId::MonkeysAudio, "Monkey's Audio", "ape", true, true, true, 0, ApeShape, OpenApe},
};

std::vector<CodecEntry> BuildCodecList() {
  std::vector<CodecEntry> codecs;
  if (HasEncoder(MediaEncoder::MpegLayer2))
    codecs.push_back({EncoderId::Mp2Codec, kTagMpeg, LayerTwoFormats()});
  codecs.push_back({EncoderId::Mp3Codec, kTagMpegLayer3, LayerThreeFormats()});
  if (HasEncoder(MediaEncoder::WindowsMedia))
    codecs.push_back({EncoderId::WmaCodec, kTagWindowsMedia, WindowsMediaFormats()});
  codecs.push_back({EncoderId::Blade, kTagMpegLayer3, {}});
  codecs.push_back({EncoderId::Lame, kTagMpegLayer3, {}});
  return codecs;
}

}  // namespace

std::span<const Encoder> Encoders() {
  return kEncoders;
}

const Encoder& EncoderById(EncoderId id) {
  return kEncoders[static_cast<std::size_t>(id)];
}

const Encoder* EncoderOf(const EncodeSettings& settings) {
  switch (settings.Method()) {
    case EncodeMethod::Codec: {
      const CodecEntry* const codec = CodecOf(settings);
      return codec == nullptr ? nullptr : &EncoderById(codec->encoder);
    }
    case EncodeMethod::MonkeysAudio:
      return &EncoderById(EncoderId::MonkeysAudio);
    case EncodeMethod::OggVorbis:
      return &EncoderById(EncoderId::OggVorbis);
    case EncodeMethod::CommandLine:
      break;
  }
  return nullptr;
}

std::string CodecFormatText(const CodecFormat& format) {
  return Format(Text(texts::EncodeFormatText), format.sampleRate,
                Text(format.channels == 1 ? texts::EncodeMono : texts::EncodeStereo), format.bitRate / kKilo);
}

std::span<const CodecEntry> Codecs() {
  static const std::vector<CodecEntry> codecs = BuildCodecList();
  return codecs;
}

const CodecEntry* CodecOf(const EncodeSettings& settings) {
  const auto codecs = Codecs();
  if (settings.Method() != EncodeMethod::Codec || settings.object < 0 ||
      std::cmp_greater_equal(settings.object, codecs.size()))
    return nullptr;
  return &codecs[static_cast<std::size_t>(settings.object)];
}

std::int32_t CodecIndexOf(EncoderId encoder) {
  const auto codecs = Codecs();
  const auto found = std::ranges::find(codecs, encoder, &CodecEntry::encoder);
  return found == codecs.end() ? -1 : static_cast<std::int32_t>(found - codecs.begin());
}

std::optional<Mp3Engine> EngineOf(const EncodeSettings& settings) {
  const CodecEntry* const codec = CodecOf(settings);
  if (codec == nullptr || !codec->formats.empty()) return std::nullopt;
  return codec->encoder == EncoderId::Blade ? Mp3Engine::Blade : Mp3Engine::Lame;
}

int Mp3RateFor(std::uint32_t kiloBits) {
  constexpr std::uint32_t kLacking = 144;
  if (kiloBits == kLacking) return 160;
  const auto* const rate = std::ranges::lower_bound(
      kMp3Rates, std::min(kiloBits, 320U), {}, [](std::int32_t r) { return static_cast<std::uint32_t>(r); });
  return rate == kMp3Rates.end() ? kMp3Rates.back() : *rate;
}

}  // namespace ts5::encode
