#include "audio/encode/compressor.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "audio/audio_remarks.h"
#include "audio/encode/encode.h"
#include "audio/encode/encode_fields.h"
#include "audio/encode/replay_gain.h"
#include "audio/encode/texts.h"
#include "audio/interfaces/encoder_interface.h"
#include "audio/interfaces/encoder_run.h"
#include "audio/tags/attribute_store.h"
#include "audio/tags/name_pattern.h"
#include "audio/wave_converter.h"
#include "frame/item_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/file_mark.h"
#include "platform/files/paths.h"

namespace ts5::encode {
namespace {

constexpr double kEncodingPart = 0.8;  // of the work on an item, when its result is proved

constexpr Remark kOwnRemarks[] = {
    {Code(Outcome::NotProven), texts::EncodeNotProven},
};

std::span<const Remark> AllRemarks() {
  static const std::vector<Remark> remarks = BeforeAudioRemarks(kOwnRemarks);
  return remarks;
}

// What an encoder takes, for sources that it refuses with this outcome.
struct Refusal {
  EncodeMethod method;
  Outcome outcome;
  TextId reason;
};
constexpr Refusal kRefusals[] = {
    {EncodeMethod::OggVorbis, Outcome::NotNecessary, texts::EncodeOggTakes},
    {EncodeMethod::MonkeysAudio, Outcome::ConverterFailed, texts::EncodeApeTakes},
};

// The remark of a refusal with its reason; "" where the remark says enough.
std::string RefusalLine(Outcome outcome, const EncodeSettings& settings, const EncodingSource& source,
                        bool conversionFailed) {
  std::optional<TextId> reason;
  const auto* const row = std::ranges::find_if(kRefusals, [&](const Refusal& one) {
    return one.method == settings.Method() && one.outcome == outcome;
  });
  if (row != std::end(kRefusals)) reason = row->reason;
  if (outcome == Outcome::SourceFailed && source.Seconds() == 0) reason = texts::EncodeNoSamples;
  if (conversionFailed) reason = texts::CompressConversionFailed;
  if (!reason) return {};
  std::string line;
  for (const std::string& remark : RemarkLines(AllRemarks(), {.code = Code(outcome)})) line += remark + " ";
  return line + std::string(Text(*reason));
}

WorkWatch PartOf(ItemWork& work, double from, double to) {
  return {[&work] { return work.Cancelled(); },
          [&work, from, to](double fraction) { work.progress(from + (to - from) * fraction); }};
}

std::uint64_t SizeOf(const std::string& path) {
  const auto mark = MarkOf(path);
  return mark ? mark->size : 0;
}

// The source as its check has opened it.
struct OpenedItem : PreparedItem {
  explicit OpenedItem(EncodingSource opened) : source(std::move(opened)) {}
  EncodingSource source;
};

// What the run saved, for the user to read.
void TellSizes(Run& run) {
  std::uint64_t before = 0;
  std::uint64_t after = 0;
  for (const RunItem& item : run.Result().items) {
    if (item.code < 0 || item.destination.empty()) continue;
    before += SizeOf(item.source);
    after += SizeOf(item.destination);
  }
  constexpr std::uint64_t kKilo = 1024;
  if (before == 0) return;
  const std::uint64_t parts = after * 1000 / before;
  run.ProtocolLine(Format(Text(texts::EncodeSizes), after / kKilo, before / kKilo, parts / 10, parts % 10));
}

// The interface and the number of its set that the settings choose; nullptr: there is none.
struct ChosenSet {
  const interfaces::EncoderInterface* interface = nullptr;
  std::size_t set = 0;
};
ChosenSet ChosenIn(const interfaces::EncoderInterfaces& interfaces, const EncodeSettings& settings) {
  const bool there =
      settings.object >= 0 && std::cmp_less(settings.object, interfaces.size()) && settings.format >= 0;
  if (!there) return {};
  const interfaces::EncoderInterface& interface = interfaces[static_cast<std::size_t>(settings.object)];
  if (std::cmp_greater_equal(settings.format, interface.sets.size())) return {};
  return {&interface, static_cast<std::size_t>(settings.format)};
}

// What programs take: an AIFF file becomes a wave file of its own format for them.
Result<TemporaryFile> WaveOf(const EncodingSource& source, const WorkWatch& watch) {
  auto wave = TemporaryFile::Create(kTemporaryPrefix, {}, ".wav");
  if (!wave) return Failure(Outcome::SourceNotOpened);
  const PcmShape& shape = source.Shape();
  const WaveFormat format = SampleTypeOf(source.Format())
                                ? source.Format()
                                : PcmFormat(shape.sampleRate, 16, static_cast<std::uint16_t>(shape.channels));
  const Outcome converted = ConvertWaveFile(source.Path(), wave->Path(), format, watch);
  if (Failed(converted)) return Failure(converted);
  return wave;
}

class CompressorRun {
 public:
  CompressorRun(Run& run, const AudioCompressorParameters& parameters) : run_(run), parameters_(parameters) {
    if (parameters_.encode.Method() == EncodeMethod::CommandLine)
      interfaces_ = interfaces::LoadInterfaces(interfaces::InterfacesPath());
  }

  void Execute() {
    if (parameters_.replayGain && !MeasureAll()) return;
    ItemFilter filter;
    filter.independent = true;
    filter.prepare = [this](const std::string& path) -> Result<std::unique_ptr<PreparedItem>> {
      auto source = EncodingSource::Open(path, parameters_.encode);
      if (!source) return Failure(source.error());
      return std::make_unique<OpenedItem>(*std::move(source));
    };
    filter.convert = [this](ItemWork& work) { return Compress(work); };
    RunItems(run_, filter);
    TellSizes(run_);
  }

 private:
  // False: the run was stopped.
  bool MeasureAll() {
    auto gains = MeasureGains(run_, parameters_.attributes);
    if (!gains) {
      run_.AddCode(gains.error());
      run_.Result().cancelled = gains.error() == Outcome::Cancelled;
      CountItems(run_.Result(), run_.ItemCount());
      run_.Result().remarks = run_.Remarks();
      return false;
    }
    for (std::size_t i = 0; i < gains->size(); ++i) gains_.emplace(run_.Source(i), (*gains)[i]);
    return true;
  }

  // What the job sets, and what was measured.
  [[nodiscard]] tags::Attributes AttributesOf(const ItemWork& work) const {
    tags::Attributes attributes = parameters_.attributes;
    if (const auto gain = gains_.find(work.source); gain != gains_.end())
      std::ranges::move(GainAttributes(gain->second, ExtensionOf(work.targetName)),
                        std::back_inserter(attributes));
    return attributes;
  }

  Outcome Compress(ItemWork& work) {
    const EncodeSettings& settings = parameters_.encode;
    EncodingSource& source = work.Prepared<OpenedItem>().source;
    const bool prove = WantsProof(settings);
    const Outcome encoded = Encode(source, work, PartOf(work, 0, prove ? kEncodingPart : 1));
    // What an encoder of the command line made may be of use although it says that it failed.
    work.keepTarget = encoded == Outcome::EncoderFailed;
    if (Failed(encoded)) {
      work.line = RefusalLine(encoded, settings, source, work.endsRun);
      return encoded;
    }
    const std::string& made = work.target.TemporaryPath();
    if (prove) {
      const Outcome proved = ProveEncoding(source, made, settings, PartOf(work, kEncodingPart, 1));
      if (Failed(proved)) return proved;
    }
    const Outcome written = WriteEncodedAttributes(source, made, settings, AttributesOf(work),
                                                   static_cast<unsigned>(run_.GetSettings().id3Version));
    work.keepTarget = written == Outcome::AttributesNotWritten;
    return written;
  }

  Outcome Encode(EncodingSource& source, ItemWork& work, const WorkWatch& watch) {
    if (parameters_.encode.Method() != EncodeMethod::CommandLine) {
      const Outcome encoded = EncodeFile(source, work.target, parameters_.encode, watch);
      const bool notRead = encoded == Outcome::ReadFailed || encoded == Outcome::FormatRefused;
      work.endsRun = notRead && IsConvertedFirst(source, parameters_.encode);
      return encoded;
    }
    const auto [interface, set] = ChosenIn(interfaces_, parameters_.encode);
    if (interface == nullptr) return Outcome::EncoderNotStarted;
    const auto run = [&, &program = *interface, number = set](const std::string& path) {
      return interfaces::RunEncoder(program, number, {path, source.Seconds()}, work.target, watch);
    };
    if (!source.IsAiff()) return run(source.Path());
    const auto wave = WaveOf(source, watch);
    work.endsRun = !wave && wave.error() != Outcome::Cancelled;
    return wave ? run(wave->Path()) : wave.error();
  }

  Run& run_;
  const AudioCompressorParameters& parameters_;
  interfaces::EncoderInterfaces interfaces_;
  std::map<std::string, TrackGain> gains_;  // by their sources
};

// What the settings lack to encode by them.
std::optional<TextId> MissingOf(const EncodeSettings& settings) {
  if (settings.Method() == EncodeMethod::CommandLine) {
    const interfaces::EncoderInterfaces interfaces = interfaces::LoadInterfaces(interfaces::InterfacesPath());
    // One whose program has gone stays a choice: each file fails with the code for that.
    const bool there = ChosenIn(interfaces, settings).interface != nullptr;
    return there ? std::nullopt : std::optional(texts::CompressInterfaceGone);
  }
  if (EncoderOf(settings) == nullptr) return texts::EncodeNoEncoder;
  const CodecEntry* const codec = CodecOf(settings);
  if (codec != nullptr && !codec->formats.empty() &&
      std::cmp_greater_equal(settings.format, codec->formats.size()))
    return texts::EncodeNoFormat;
  return std::nullopt;
}

}  // namespace

std::vector<ParameterField> AudioCompressorFields() {
  auto fields = EncodeFields("", AccessTo(&AudioCompressorParameters::encode));
  fields.push_back(tags::AttributesField(&AudioCompressorParameters::attributes));
  FieldTable<AudioCompressorParameters> own;
  own.Flag("ReplayGain", &AudioCompressorParameters::replayGain)
      .Row(tags::NamePatternField(&AudioCompressorParameters::namePattern));
  std::ranges::move(own.Build(), std::back_inserter(fields));
  return fields;
}

std::string ExtensionFor(const EncodeSettings& settings) {
  if (const Encoder* const encoder = EncoderOf(settings)) return std::string(encoder->extension);
  const interfaces::EncoderInterfaces interfaces = interfaces::LoadInterfaces(interfaces::InterfacesPath());
  const ChosenSet chosen = ChosenIn(interfaces, settings);
  return chosen.interface == nullptr ? "mp3" : chosen.interface->extension;
}

FilterModule AudioCompressorModule() {
  using P = AudioCompressorParameters;
  ModuleOf<P> module;
  module.id = FilterId::AudioCompressor;
  module.fields = AudioCompressorFields();
  module.run = [](Run& run, const P& own) { CompressorRun(run, own).Execute(); };
  module.remarks = AllRemarks();
  module.target = [](const P& own, const std::string& source) {
    TargetRule rule{.extension = ExtensionFor(own.encode)};
    rule.name = tags::FileNameFor(own.namePattern, source, own.attributes, rule.extension);
    if (rule.extension == "wma") rule.fileTypes = texts::FileFilterWma;
    return rule;
  };
  module.missing = [](const P& own) { return MissingOf(own.encode); };
  module.stop.status = texts::Stopping;
  return MakeModule(std::move(module));
}

}  // namespace ts5::encode
