#include "audio/encode/encode_fields.h"

#include <utility>

#include "audio/encode/encoder.h"

namespace ts5::encode {
namespace {

using Get = std::function<std::optional<std::int64_t>(const EncodeSettings&)>;
using Set = std::function<void(EncodeSettings&, std::int64_t)>;

// A whole number of the settings; one without a value is not stored.
ParameterField Number(std::string name, std::int64_t least, std::int64_t most, const SettingsAccess& access,
                      Get get, Set set) {
  ParameterField field;
  field.set = [=](FilterParameters& p, std::string_view text) {
    const auto value = ParseInteger(Trim(text));
    if (!value || *value < least || *value > most) return false;
    set(access.toChange(p), *value);
    return true;
  };
  field.load = [name, take = field.set](FilterParameters& p, const RegistryValues& values) {
    if (const auto text = values.Text(name)) (void)take(p, *text);
  };
  field.save = [name, access, get = std::move(get)](const FilterParameters& p, RegistryValues& values) {
    if (const auto value = get(access.toRead(p))) values.SetInteger(name, *value);
  };
  field.description = std::to_string(least) + ".." + std::to_string(most);
  field.name = std::move(name);
  return field;
}

struct PlainRow {
  const char* name;
  std::int32_t EncodeSettings::*member;
  std::int32_t least;
  std::int32_t most;
};
constexpr PlainRow kPlain[] = {
    {"CodecType", &EncodeSettings::method, 1, 4},
    {"CodingObject", &EncodeSettings::object, 0, 9999},
    {"CodingFormat", &EncodeSettings::format, 0, 9999},
    {"ApeLevel", &EncodeSettings::apeLevel, 0, 99999},
};

struct OggRow {
  const char* name;
  std::int32_t OggSettings::*member;
  std::int32_t least;
  std::int32_t most;
};
constexpr std::int32_t kLeastRate = kOggRates.front() * 1024;
constexpr std::int32_t kMostRate = kOggRates.back() * 1024;
constexpr OggRow kOgg[] = {
    {"OggMode", &OggSettings::mode, OggSettings::AverageRate, OggSettings::Quality},
    {"OggMaxBitrate", &OggSettings::maxBitRate, kLeastRate, kMostRate},
    {"OggNominalBitrate", &OggSettings::nominalBitRate, kLeastRate, kMostRate},
    {"OggMinBitrate", &OggSettings::minBitRate, kLeastRate, kMostRate},
    {"OggQuality", &OggSettings::quality, 0, 10},
};

// The engine whose record is meant: the chosen one, else that of the record, else LAME.
Mp3Engine EngineMeant(const EncodeSettings& settings) {
  if (const auto engine = EngineOf(settings)) return *engine;
  return settings.engine.IsFor(Mp3Engine::Blade) ? Mp3Engine::Blade : Mp3Engine::Lame;
}

ParameterField EngineRow(const BeValue& value, const std::string& prefix, const SettingsAccess& access) {
  return Number(
      prefix + std::string(value.name), value.least, value.most, access,
      [value](const EncodeSettings& settings) -> std::optional<std::int64_t> {
        for (const Mp3Engine engine : {Mp3Engine::Blade, Mp3Engine::Lame}) {
          const BeField field = value.For(engine);
          if (settings.engine.IsFor(engine) && field.size != 0)
            return value.least < 0 ? std::int64_t{settings.engine.GetSigned(field)}
                                   : std::int64_t{settings.engine.Get(field)};
        }
        return std::nullopt;
      },
      [value](EncodeSettings& settings, std::int64_t number) {
        // What the chosen engine lacks belongs to the other one.
        Mp3Engine engine = EngineMeant(settings);
        if (value.For(engine).size == 0) engine = Mp3Engine::Lame;
        settings.engine = settings.engine.For(engine);
        settings.engine.Set(value.For(engine), static_cast<std::uint32_t>(number));
      });
}

// The whole record, with what no value above speaks of.
ParameterField RecordRow(const std::string& name, const SettingsAccess& access) {
  ParameterField field;
  field.name = name;
  field.set = [access](FilterParameters& p, std::string_view text) {
    Bytes image;
    for (const std::string_view part : Split(Trim(text), ' ')) {
      const auto value = ParseInteger(part);
      if (!value || *value < 0 || *value > 0xFF) return false;
      image.push_back(static_cast<std::uint8_t>(*value));
    }
    if (image.size() != kBeConfigSize) return false;
    access.toChange(p).engine.SetImage(image);
    return true;
  };
  field.load = [name, access](FilterParameters& p, const RegistryValues& values) {
    const auto image = values.Binary(name);
    if (image && image->size() == kBeConfigSize) access.toChange(p).engine.SetImage(*image);
  };
  field.save = [name, access](const FilterParameters& p, RegistryValues& values) {
    const BeConfig& engine = access.toRead(p).engine;
    if (engine != BeConfig()) values.SetBinary(name, engine.Image());
  };
  field.description = "331 x 0..255";
  return field;
}

}  // namespace

std::vector<ParameterField> EncodeFields(const std::string& prefix, const SettingsAccess& access) {
  std::vector<ParameterField> fields;
  for (const PlainRow& row : kPlain) {
    fields.push_back(Number(
        prefix + row.name, row.least, row.most, access,
        [row](const EncodeSettings& s) { return s.*row.member; },
        [row](EncodeSettings& s, std::int64_t value) { s.*row.member = static_cast<std::int32_t>(value); }));
  }
  for (const OggRow& row : kOgg) {
    fields.push_back(Number(
        prefix + row.name, row.least, row.most, access,
        [row](const EncodeSettings& s) -> std::optional<std::int64_t> {
          if (!s.ogg) return std::nullopt;
          return *s.ogg.*row.member;
        },
        [row](EncodeSettings& s, std::int64_t value) {
          if (!s.ogg) s.ogg.emplace();
          *s.ogg.*row.member = static_cast<std::int32_t>(value);
        }));
  }
  fields.push_back(RecordRow(prefix + "EncoderRecord", access));
  for (const BeValue& value : BeValues()) fields.push_back(EngineRow(value, prefix, access));
  fields.push_back(Number(
      prefix + "EncodeVerify", 0, 1, access,
      [](const EncodeSettings& s) -> std::optional<std::int64_t> {
        if (!s.verify) return std::nullopt;
        return *s.verify ? 1 : 0;
      },
      [](EncodeSettings& s, std::int64_t value) { s.verify = value == 1; }));
  return fields;
}

}  // namespace ts5::encode
