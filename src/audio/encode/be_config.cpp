#include "audio/encode/be_config.h"

#include <algorithm>
#include <span>
#include <utility>

namespace ts5 {
namespace {

constexpr std::uint32_t kNeverConfigured = 0xFFFFFFFF;
constexpr BeField kVariant{0, 4};
constexpr BeField kNone{0, 0};

using Value = std::pair<BeField, std::uint32_t>;
constexpr Value kBladeDefaults[] = {
    {blade::kSampleRate, 44100}, {blade::kBitRate, 128}, {blade::kPrivate, 1},
    {blade::kCopyright, 1},      {blade::kOriginal, 1},
};
constexpr Value kLameDefaults[] = {
    {lame::kStructVersion, 1},  {lame::kStructSize, kBeConfigSize},
    {lame::kSampleRate, 44100}, {lame::kMode, 1},
    {lame::kBitRate, 128},      {lame::kMaxBitRate, 320},
    {lame::kMpegVersion, 1},    {lame::kPrivate, 1},
    {lame::kCopyright, 1},      {lame::kOriginal, 1},
    {lame::kWriteVbrHeader, 1}, {lame::kVbr, 1},
    {lame::kVbrQuality, 5},     {lame::kNoReservoir, 1},
};

constexpr BeValue kValues[] = {
    {"EncoderSampleRate", blade::kSampleRate, lame::kSampleRate, 8000, 48000},
    {"EncoderMode", blade::kMode, lame::kMode, 0, 3},
    {"EncoderBitrate", blade::kBitRate, lame::kBitRate, 8, 320},
    {"EncoderMaxBitrate", kNone, lame::kMaxBitRate, 8, 320},
    {"EncoderPreset", kNone, lame::kPreset, -1, 10000},
    {"EncoderPrivate", blade::kPrivate, lame::kPrivate, 0, 1},
    {"EncoderCrc", blade::kCrc, lame::kCrc, 0, 1},
    {"EncoderCopyright", blade::kCopyright, lame::kCopyright, 0, 1},
    {"EncoderOriginal", blade::kOriginal, lame::kOriginal, 0, 1},
    {"EncoderVbr", kNone, lame::kVbr, 0, 1},
    {"EncoderVbrQuality", kNone, lame::kVbrQuality, 0, 9},
    {"EncoderNoReservoir", kNone, lame::kNoReservoir, 0, 1},
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
  if (engine == Mp3Engine::Blade && config.Get(blade::kMode) == 1) config.Set(blade::kMode, 0);
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

}  // namespace ts5
