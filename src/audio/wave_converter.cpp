#include "audio/wave_converter.h"

#include <memory>
#include <utility>

#include "audio/audio_remarks.h"
#include "audio/media_file.h"
#include "audio/wave_stream.h"
#include "frame/item_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/media/media_engine.h"

namespace ts5 {
namespace {

struct OpenedSource final : PreparedItem {
  std::unique_ptr<PcmSource> pcm;
};

Result<std::unique_ptr<PreparedItem>> Prepare(const std::string& source) {
  auto media = OpenMediaFile(source);
  if (!media || !IsWaveKind(media->kind)) return Failure(Outcome::SourceFailed);
  auto pcm = PcmOf(std::move(*media));
  if (!pcm) return Failure(Outcome::SourceFailed);
  auto opened = std::make_unique<OpenedSource>();
  opened->pcm = std::move(*pcm);
  return std::unique_ptr<PreparedItem>(std::move(opened));
}

Outcome ConvertPcm(std::unique_ptr<PcmSource> source, StagedFile& target, const WaveFormat& format,
                   const WorkWatch& watch) {
  const PcmShape shape = source->Shape();
  auto converted = Converted(std::move(source), format.sampleRate, format.channels);
  if (!converted) return converted.error();
  const std::uint64_t expected = (*converted)->Frames().value_or(0) * format.blockAlign;
  auto file = WaveFile::CreateIn(target, format, expected);
  if (!file) return file.error();
  auto sink = WaveSink(std::move(*file), shape);
  if (!sink) return sink.error();
  return CopyPcm(**converted, **sink, watch);
}

Outcome ConvertItem(const WaveFormat& format, ItemWork& work) {
  const WorkWatch watch{[&work] { return work.Cancelled(); }, work.progress};
  return ConvertPcm(std::move(work.Prepared<OpenedSource>().pcm), work.target, format, watch);
}

}  // namespace

std::vector<ParameterField> WaveConverterFields() {
  using P = WaveConverterParameters;
  FieldTable<P> table;
  table.Integer("SamplesPerSec", &P::sampleRate, kOfferedRates.front(), kOfferedRates.back());
  table.Choice("BitPerSample", kOfferedBits, &P::bits);
  table.Integer<std::uint16_t>("Channels", &P::channels, 1, 2);
  return table.Build();
}

Outcome ConvertWave(const std::string& source, StagedFile& target, const WaveFormat& format,
                    const WorkWatch& watch) {
  auto opened = OpenPcm(source);
  if (!opened) return opened.error() == Outcome::WrongFormat ? Outcome::SourceFailed : opened.error();
  return ConvertPcm(std::move(*opened), target, format, watch);
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
  using P = WaveConverterParameters;
  return MakeModule<P>(
      {.id = FilterId::WaveConverter,
       .fields = WaveConverterFields(),
       .run =
           [](Run& run, const P& parameters) {
             const auto convert = [format = parameters.Target()](ItemWork& work) {
               return ConvertItem(format, work);
             };
             RunItems(run, {.independent = true, .prepare = Prepare, .convert = convert});
           },
       .remarks = WaveConverterRemarks(),
       // The name stays; with the suffix it ends in ".wav", whatever the source was.
       .target = [](const P&,
                    const std::string&) { return TargetRule{.extension = "wav", .formatKept = true}; },
       .stop = {.status = texts::Stopping}});
}

}  // namespace ts5
