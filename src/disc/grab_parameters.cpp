#include "disc/grab_parameters.h"

#include "audio/encode/encode_fields.h"
#include "audio/tags/attribute_store.h"
#include "disc/texts.h"

namespace ts5::disc {
namespace {

constexpr std::size_t kMostPath = 259;
constexpr std::size_t kMostNames = 99;
constexpr std::int32_t kMostOffset = 3 * static_cast<std::int32_t>(kFramesPerSector);
constexpr std::string_view kNameCount = "DestFileNum";

std::string NameKey(std::size_t index) {
  return Format("DestFilename %04i", index + 1);
}

// One value for each name; their number stands beside them.
ParameterField Names() {
  using P = GrabParameters;
  FieldOf<P> field;
  field.name = kNameCount;
  field.description = "0..99";
  field.load = [](P& own, const RegistryValues& values) {
    const auto count = ParseInteger(values.Text(std::string(kNameCount)).value_or(""));
    if (!count || *count < 0 || *count > static_cast<std::int64_t>(kMostNames)) return;
    own.names.assign(static_cast<std::size_t>(*count), {});
    for (std::size_t i = 0; i < own.names.size(); ++i) own.names[i] = values.Text(NameKey(i)).value_or("");
  };
  field.save = [](const P& own, RegistryValues& values) {
    values.SetText(std::string(kNameCount), std::to_string(own.names.size()));
    for (std::size_t i = 0; i < own.names.size(); ++i) values.SetText(NameKey(i), own.names[i]);
  };
  // As a list on the console: "--set DestFileNum=Eins.wav|Zwei.wav".
  field.set = [](P& own, std::string_view text) {
    const auto parts = Split(text, '|');
    if (parts.size() > kMostNames) return false;
    own.names.assign(parts.begin(), parts.end());
    return true;
  };
  return MakeField(std::move(field));
}

}  // namespace

std::string GrabParameters::NameOf(int track) const {
  const auto index = static_cast<std::size_t>(track - 1);
  if (useNames && track > 0 && index < names.size() && !names[index].empty()) return names[index];
  return Format(Text(texts::GrabName), track);
}

std::vector<ParameterField> GrabFields() {
  using P = GrabParameters;
  FieldTable<P> table;
  table.Flag("GrabOpenTray", &P::eject)
      .Integer("GrabSpeed", &P::speed, 0, static_cast<std::int32_t>(kGrabSpeeds.size()) - 1)
      .Flag("UseFilenamePreset", &P::useNames)
      .Flag("GrabCutNullSamples", &P::trim)
      .Row(Names())
      .Integer("GrabOffset", &P::offset, -kMostOffset, kMostOffset)
      .Flag("GrabCueSheet", &P::cueSheet)
      .Flag("GrabHidden", &P::hidden)
      .Flag("GrabEncode", &P::encode)
      .Text("GrabTempDir", &P::folder, kMostPath);
  std::vector<ParameterField> fields = table.Build();
  for (ParameterField& field : encode::EncodeFields("Grab", encode::AccessTo(&P::encodeSettings)))
    fields.push_back(std::move(field));
  fields.push_back(tags::AttributesField(&P::attributes));
  return fields;
}

std::vector<ParameterField> CopyFields() {
  using P = CopyParameters;
  FieldTable<P> table;
  table.Text("CopyUserTempPath", &P::folder, kMostPath)
      .Flag("CopySysTempPath", &P::systemFolder)
      .Flag("CopyOpenTray", &P::eject)
      .Integer("CopyMode", &P::action, 0, 2)
      .Integer("CopySpeed", &P::speed, kLeastSpeed, kMostSpeed)
      .Integer("CopyCopies", &P::copies, 1, kMostCopies)
      .Flag("CopyDisc-at-Once", &P::atOnce)
      .Flag("CopyOnTheFly", &P::onTheFly)
      .Flag("CopyBurnProof", &P::underrunProtection)
      .Flag("CopyCopyProtection", &P::copyProtected)
      .Flag("CopyPreemphasis", &P::preEmphasis)
      .Flag("CopyNoPauseDetection", &P::noPauses)
      .Flag("CopyDeleteWaves", &P::deleteIntermediate)
      .Flag("CopyVerify", &P::verify);
  return table.Build();
}

}  // namespace ts5::disc
