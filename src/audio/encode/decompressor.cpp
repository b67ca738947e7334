#include "audio/encode/decompressor.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "audio/encode/encode.h"
#include "audio/encode/texts.h"
#include "audio/media_file.h"
#include "audio/tags/name_pattern.h"
#include "audio/tags/tag_file.h"
#include "audio/texts.h"
#include "audio/wave_stream.h"
#include "frame/item_run.h"
#include "frame/remarks.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/media/media_engine.h"

namespace ts5::encode {
namespace {

using namespace texts;

// What the decoders' own failures say comes with its number.
constexpr Remark kRemarks[] = {
    {-103, AudioNotOpened},
    {-101, RemarkWriteFailed},
    {-100, RemarkReadFailed},
    {-6, AudioUnexpected},
    {-5, RemarkCancelled},
    {-104, DecodeWrongFormat},
    {-106, AudioNotCreated},
    {-300, RemarkSourceFailed},
    {-400, AudioConverterFailed},
    {Code(Outcome::FormatRefused), AudioFormatRefusedCode},
    {kEveryOtherFailure, AudioNotInitialisedCode},
};

// One step of 16 bits is a 32767th of full scale in what Vorbis decoders give.
class VorbisLevel final : public PcmSink {
 public:
  explicit VorbisLevel(std::unique_ptr<PcmSink> sink) : sink_(std::move(sink)) {}

  Outcome Write(std::span<const double> interleaved) override {
    block_.assign(interleaved.begin(), interleaved.end());
    for (double& sample : block_) sample *= 32767.0 / 32768.0;
    return sink_->Write(block_);
  }
  Outcome Finish() override { return sink_->Finish(); }

 private:
  std::unique_ptr<PcmSink> sink_;
  std::vector<double> block_;
};

// The source as its check has opened it.
struct OpenedItem : PreparedItem {
  explicit OpenedItem(MediaFile opened) : media(std::move(opened)) {}
  MediaFile media;
};

// Into the list INFO, as far as that has a place for them.
void CarryAttributes(tags::Attributes attributes, const std::string& wave) {
  tags::AttributeChanges changes;
  for (tags::Attribute& attribute : attributes) {
    if (attribute.readOnly || !attribute.HasValue()) continue;
    attribute.selected = true;
    changes.set.push_back(std::move(attribute));
  }
  if (!changes.Empty()) (void)tags::ChangeAttributesInPlace(wave, changes);
}

// A part of a source.
class PartSource final : public PcmSource {
 public:
  PartSource(std::unique_ptr<PcmSource> source, std::uint64_t frames)
      : source_(std::move(source)), left_(frames) {}

  const PcmShape& Shape() const override { return source_->Shape(); }
  std::optional<std::uint64_t> Frames() const override { return left_; }
  Outcome Seek(std::uint64_t /*frame*/) override { return Outcome::SourceFailed; }
  Result<std::size_t> Read(std::span<double> out) override {
    const std::size_t channels = Shape().channels;
    const auto most = static_cast<std::size_t>(std::min<std::uint64_t>(out.size() / channels, left_));
    const auto got = source_->Read(out.first(most * channels));
    if (got) left_ -= *got;
    return got;
  }

 private:
  std::unique_ptr<PcmSource> source_;
  std::uint64_t left_;
};

}  // namespace

Result<MediaFile> OpenCompressed(const std::string& source) {
  auto media = OpenMediaFile(source);
  if (!media) {
    const bool missing = media.error() == Outcome::SourceFailed && !InputFile::Open(source);
    return Failure(missing ? Outcome::SourceNotOpened : media.error());
  }
  if (media->kind == MediaKind::None || IsWaveKind(media->kind) || !media->decoder)
    return Failure(Outcome::WrongFormat);
  return media;
}

Result<CompressedFile> DescribeCompressed(const std::string& source) {
  const auto media = OpenCompressed(source);
  if (!media) return Failure(media.error());
  const PcmShape& shape = media->decoder->Shape();
  const std::string channels = shape.channels == 1   ? std::string(Text(EncodeMono))
                               : shape.channels == 2 ? std::string(Text(EncodeStereo))
                                                     : Format(Text(DecoderChannels), shape.channels);
  return CompressedFile{
      Format(Text(DecoderDescription), Text(KindName(media->kind)), shape.sampleRate, channels),
      shape.sampleRate};
}

Outcome Decompress(MediaFile media, const std::string& source, StagedFile& target,
                   const DecodeOptions& options, const WorkWatch& watch) {
  auto attributes = tags::ReadAttributes(source);
  const auto place = attributes ? NotedPlace(*attributes) : std::nullopt;
  if (place && place->delay != 0) {
    if (const Outcome begun = media.decoder->Seek(place->delay); Failed(begun)) return begun;
  }
  // As if it came in this depth already: what is decoded is rounded, not dithered.
  PcmShape asDecoded = media.decoder->Shape();
  const bool keepsDepth = asDecoded.bits == 8 || asDecoded.bits == 24;
  if (!keepsDepth) asDecoded.bits = 16;
  std::unique_ptr<PcmSource> pcm = std::move(media.decoder);
  if (place) pcm = std::make_unique<PartSource>(std::move(pcm), place->frames);
  const auto divisor = static_cast<std::uint32_t>(options.rateDivisor);
  auto converted =
      Converted(std::move(pcm), asDecoded.sampleRate / divisor, options.mono ? 1 : asDecoded.channels);
  if (!converted) return converted.error();
  const PcmShape shape = (*converted)->Shape();
  const std::uint32_t bits = options.bits != 0 ? static_cast<std::uint32_t>(options.bits) : asDecoded.bits;
  const WaveFormat format = PcmFormat(shape.sampleRate, static_cast<std::uint16_t>(bits),
                                      static_cast<std::uint16_t>(shape.channels));
  const std::uint64_t expected = (*converted)->Frames().value_or(0) * format.blockAlign;
  auto file = WaveFile::CreateIn(target, format, expected);
  if (!file) return file.error() == Outcome::TargetFailed ? Outcome::TargetNotCreated : file.error();
  // A mean of channels has finer steps.
  if (options.mono && asDecoded.channels > 1) asDecoded.bits = 0;
  auto sink = WaveSink(std::move(*file), asDecoded);
  if (!sink) return sink.error();
  if (media.kind == MediaKind::OggVorbis) sink = std::make_unique<VorbisLevel>(std::move(*sink));
  const Outcome copied = CopyPcm(**converted, **sink, watch);
  if (Failed(copied)) return copied;
  if (attributes) CarryAttributes(*std::move(attributes), target.TemporaryPath());
  return Outcome::Success;
}

namespace {

std::vector<ParameterField> DecompressorFields() {
  using Parameters = AudioDecompressorParameters;
  FieldTable<Parameters> table;
  table
      .Choice(
          "DecodeRate", kDecodeDivisors, [](auto& p) -> auto& { return p.decode.rateDivisor; })
      .Flag(
          "DecodeMono", [](auto& p) -> auto& { return p.decode.mono; })
      .Choice(
          "DecodeBits", kDecodeBits, [](auto& p) -> auto& { return p.decode.bits; })
      .Row(tags::NamePatternField(&Parameters::namePattern));
  return table.Build();
}

void RunDecompressor(Run& run, const AudioDecompressorParameters& parameters) {
  const DecodeOptions options = run.ItemCount() == 1 ? parameters.decode : DecodeOptions();
  ItemFilter filter;
  filter.independent = true;
  filter.prepare = [](const std::string& source) -> Result<std::unique_ptr<PreparedItem>> {
    auto media = OpenCompressed(source);
    if (!media) return Failure(media.error());
    return std::make_unique<OpenedItem>(*std::move(media));
  };
  filter.convert = [options](ItemWork& work) {
    return Decompress(std::move(work.Prepared<OpenedItem>().media), work.source, work.target, options,
                      {[&work] { return work.Cancelled(); }, work.progress});
  };
  RunItems(run, filter);
}

}  // namespace

FilterModule AudioDecompressorModule() {
  using P = AudioDecompressorParameters;
  ModuleOf<P> module;
  module.id = FilterId::AudioDecompressor;
  module.fields = DecompressorFields();
  module.run = RunDecompressor;
  module.remarks = kRemarks;
  module.target = [](const P& own, const std::string& source) {
    return TargetRule{.extension = "wav",
                      .formatKept = false,
                      .name = tags::FileNameFor(own.namePattern, source, {}, "wav")};
  };
  module.stop.status = Stopping;
  return MakeModule(std::move(module));
}

}  // namespace ts5::encode
