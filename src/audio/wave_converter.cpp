#include "audio/wave_converter.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "audio/audio_remarks.h"
#include "audio/media_probe.h"
#include "audio/wave_stream.h"
#include "frame/item_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/media_engine.h"

namespace ts5 {
namespace {

Outcome CheckSource(const FilterParameters& /*parameters*/, const std::string& source) {
  return IsWaveKind(ProbeMedia(source).kind) ? Outcome::Success : Outcome::SourceFailed;
}

Outcome ConvertItem(ItemWork& work) {
  const auto& parameters = static_cast<const WaveConverterParameters&>(work.parameters);
  const WorkWatch watch{[&work] { return work.Cancelled(); }, work.progress};
  return ConvertWave(work.source, work.target, parameters.Target(), watch);
}

std::string BitsDescription() {
  std::string text;
  for (const std::uint16_t bits : kOfferedBits) text += (text.empty() ? "" : "|") + std::to_string(bits);
  return text;
}

}  // namespace

std::vector<ParameterField> WaveConverterFields() {
  using P = WaveConverterParameters;
  FieldTable<P> table;
  table.Integer("SamplesPerSec", &P::sampleRate, kOfferedRates.front(), kOfferedRates.back());
  table.Single(
      "BitPerSample", BitsDescription(), [](const P& p) { return std::to_string(p.bits); },
      [](P& p, std::string_view text) {
        const auto bits = ParseInteger(Trim(text));
        const auto* const offered = std::ranges::find(kOfferedBits, bits.value_or(0));
        if (offered == kOfferedBits.end()) return false;
        p.bits = *offered;
        return true;
      });
  table.Integer<std::uint16_t>("Channels", &P::channels, 1, 2);
  return table.Build();
}

Outcome ConvertWave(const std::string& source, StagedFile& target, const WaveFormat& format,
                    const WorkWatch& watch) {
  auto opened = OpenPcm(source);
  if (!opened) return opened.error() == Outcome::WrongFormat ? Outcome::SourceFailed : opened.error();
  const PcmShape shape = (*opened)->Shape();
  auto converted = Converted(std::move(*opened), format.sampleRate, format.channels);
  if (!converted) return converted.error();
  const std::uint64_t expected = (*converted)->Frames().value_or(0) * format.blockAlign;
  auto file = WaveFile::CreateIn(target, format, expected);
  if (!file) return file.error();
  auto sink = WaveSink(std::move(*file), shape);
  if (!sink) return sink.error();
  return CopyPcm(**converted, **sink, watch);
}

Outcome ConvertWaveFile(const std::string& source, const std::string& target, const WaveFormat& format,
                        const WorkWatch& watch) {
  auto file = StagedFile::Create(target);
  if (!file) return file.error();
  if (const Outcome converted = ConvertWave(source, *file, format, watch); Failed(converted))
    return converted;
  return file->Commit();
}

FilterModule WaveConverterModule() {
  FilterModule module;
  module.id = FilterId::WaveConverter;
  module.create = [] { return std::make_unique<WaveConverterParameters>(); };
  module.fields = WaveConverterFields();
  module.run = [](Run& run) {
    ItemFilter filter;
    filter.independent = true;
    filter.check = CheckSource;
    filter.convert = ConvertItem;
    RunItems(run, filter);
  };
  module.remarks = WaveConverterRemarks();
  // The name stays; with the suffix it ends in ".wav", whatever the source was.
  module.target = [](const FilterParameters& /*parameters*/, const std::string& /*source*/) {
    return TargetRule{.extension = "wav", .formatKept = true};
  };
  module.stop.status = texts::Stopping;
  return module;
}

}  // namespace ts5
