#include "audio/encode/be_config.h"

#include <algorithm>
#include <span>
#include <utility>

namespace ts5::encode {
namespace {

constexpr std::uint32_t kNeverConfigured = 0xFFFFFFFF;
constexpr BeField kVariant{0, 4};
constexpr BeField kNone{0, 0};

using Value = std::pair<BeField, std::uint32_t>;
constexpr Value kBladeDefaults[] = {
    {blade::dwSampleRate, 44100}, {blade::wBitrate, 128}, {blade::bPrivate, 1},
    {blade::bCopyright, 1},       {blade::bOriginal, 1},
};
constexpr Value kLameDefaults[] = {
    {lame::dwStructVersion, 1},  {lame::dwStructSize, kBeConfigSize},
    {lame::dwSampleRate, 44100}, {lame::nMode, 1},
    {lame::dwBitrate, 128},      {lame::dwMaxBitrate, 320},
    {lame::dwMpegVersion, 1},    {lame::bPrivate, 1},
    {lame::bCopyright, 1},       {lame::bOriginal, 1},
    {lame::bWriteVBRHeader, 1},  {lame::bEnableVBR, 1},
    {lame::nVBRQuality, 5},      {lame::bNoRes, 1},
};

constexpr BeValue kValues[] = {
    {"EncoderSampleRate", blade::dwSampleRate, lame::dwSampleRate, 8000, 48000},
    {"EncoderMode", blade::byMode, lame::nMode, 0, 3},
    {"EncoderBitrate", blade::wBitrate, lame::dwBitrate, 8, 320},
    {"EncoderMaxBitrate", kNone, lame::dwMaxBitrate, 8, 320},
    {"EncoderPreset", kNone, lame::nPreset, -1, 10000},
    {"EncoderPrivate", blade::bPrivate, lame::bPrivate, 0, 1},
    {"EncoderCrc", blade::bCRC, lame::bCRC, 0, 1},
    {"EncoderCopyright", blade::bCopyright, lame::bCopyright, 0, 1},
    {"EncoderOriginal", blade::bOriginal, lame::bOriginal, 0, 1},
    {"EncoderVbr", kNone, lame::bEnableVBR, 0, 1},
    {"EncoderVbrQuality", kNone, lame::nVBRQuality, 0, 9},
    {"EncoderNoReservoir", kNone, lame::bNoRes, 0, 1},
};

}  // namespace

BeConfig::BeConfig() {
  Set(kVariant, kNeverConfigured);
}

BeConfig BeConfig::Defaults(Mp3Engine engine) {
  BeConfig config;
  config.Set(kVariant, static_cast<std::uint32_t>(engine));
  const std::span<const Value> values = engine == Mp3Engine::Lame ? std::span<const Value>(kLameDefaults)
                                                                  : std::span<const Value>(kBladeDefaults);
  for (const auto& [field, value] : values) config.Set(field, value);
  return config;
}

bool BeConfig::IsFor(Mp3Engine engine) const {
  return Get(kVariant) == static_cast<std::uint32_t>(engine);
}

BeConfig BeConfig::For(Mp3Engine engine) const {
  if (IsFor(engine)) return *this;
  BeConfig config = Defaults(engine);
  const Mp3Engine other = engine == Mp3Engine::Lame ? Mp3Engine::Blade : Mp3Engine::Lame;
  if (!IsFor(other)) return config;
  for (const BeValue& value : kValues) {
    const bool shared = value.blade.size != 0 && value.lame.size != 0;
    if (shared) config.Set(value.For(engine), Get(value.For(other)));
  }
  // Joint stereo is LAME's only.
  if (engine == Mp3Engine::Blade && config.Get(blade::byMode) == 1) config.Set(blade::byMode, 0);
  return config;
}

std::uint32_t BeConfig::Get(BeField field) const {
  std::uint32_t value = 0;
  for (std::size_t i = field.size; i-- > 0;) value = value << 8 | image_.at(field.offset + i);
  return value;
}

std::int32_t BeConfig::GetSigned(BeField field) const {
  return static_cast<std::int32_t>(Get(field));
}

void BeConfig::Set(BeField field, std::uint32_t value) {
  for (std::size_t i = 0; i < field.size; ++i)
    image_.at(field.offset + i) = static_cast<std::uint8_t>(value >> (8 * i));
}

void BeConfig::SetImage(ByteView image) {
  std::ranges::copy(image.first(std::min(image.size(), image_.size())), image_.begin());
}

std::span<const BeValue> BeValues() {
  return kValues;
}

}  // namespace ts5::encode
