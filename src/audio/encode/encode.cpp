#include "audio/encode/encode.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>
#include <vector>

#include "audio/aiff_layout.h"
#include "audio/media_file.h"
#include "audio/sample_codec.h"
#include "audio/tags/attribute_names.h"
#include "audio/tags/tag_file.h"
#include "audio/wave_stream.h"
#include "platform/base/text.h"
#include "platform/media/media_engine.h"

namespace ts5::encode {
namespace {

constexpr std::size_t kAiffStart = 12;

// Adds dither of 16 bits to what goes through it.
class DitheringSink final : public PcmSink {
 public:
  explicit DitheringSink(std::unique_ptr<PcmSink> sink) : sink_(std::move(sink)) {}

  Outcome Write(std::span<const double> interleaved) override {
    constexpr double kSteps = 32768;
    block_.assign(interleaved.begin(), interleaved.end());
    if (std::ranges::all_of(block_, [](double sample) { return sample == 0; })) return sink_->Write(block_);
    for (double& sample : block_) sample *= kSteps;
    dither_.Add(block_);
    for (double& sample : block_) sample /= kSteps;
    return sink_->Write(block_);
  }
  Outcome Finish() override { return sink_->Finish(); }

 private:
  std::unique_ptr<PcmSink> sink_;
  Dither dither_;
  std::vector<double> block_;
};

// A source that somebody else keeps.
class BorrowedSource final : public PcmSource {
 public:
  explicit BorrowedSource(PcmSource& source) : source_(source) {}

  const PcmShape& Shape() const override { return source_.Shape(); }
  std::optional<std::uint64_t> Frames() const override { return source_.Frames(); }
  Result<std::size_t> Read(std::span<double> out) override { return source_.Read(out); }
  Outcome Seek(std::uint64_t frame) override { return source_.Seek(frame); }

 private:
  PcmSource& source_;
};

// Codecs ask what the file is, the others just open it; so they say it differently when it is not for them.
Outcome NotForIt(const EncodeSettings& settings, const std::string& source) {
  const bool asks =
      settings.Method() == EncodeMethod::Codec || settings.Method() == EncodeMethod::CommandLine;
  return asks && FileExists(source) ? Outcome::WrongFormat : Outcome::SourceNotOpened;
}

// Also one whose kind is known for what it holds only.
bool BeginsAsAiff(const std::string& path) {
  const auto start = ReadFileStart(path, kAiffStart);
  return start && IsAiff(*start);
}

struct PreparedSource {
  bool lossless = false;  // of a program of its own nothing is known
  bool exactLength = false;
  PcmShape shape;                  // as the encoder wants it
  std::unique_ptr<PcmSource> pcm;  // in that shape
};

Result<PreparedSource> PrepareFor(const Encoder& encoder, EncodingSource& source,
                                  const EncodeSettings& settings) {
  const auto shape = encoder.shape(settings, {source.Shape(), source.Format()});
  if (!shape) return Failure(shape.error());
  auto pcm = source.Samples(shape->sampleRate, shape->channels);
  if (!pcm) return Failure(pcm.error());
  return PreparedSource{encoder.lossless, encoder.exactLength, *shape, std::move(*pcm)};
}

// For a program of its own: in the shape of what it made.
Result<PreparedSource> PrepareAs(const PcmShape& made, EncodingSource& source) {
  auto pcm = source.Samples(made.sampleRate, made.channels);
  if (!pcm) return Failure(pcm.error());
  return PreparedSource{.shape = made, .pcm = std::move(*pcm)};
}

// --- the proof

// Sums over what went in and what came out.
struct Likeness {
  double before = 0;
  double after = 0;
  double both = 0;
  std::uint64_t samples = 0;
  bool same = true;
};

constexpr std::size_t kBlockFrames = 4096;
// A lossy codec may cut the treble of noise away, and little is left of it then; what is broken is not even
// that like.
constexpr double kLeastCorrelation = 0.3;
constexpr double kLeastLevel = 0.06;  // of the source's energy
constexpr double kMostLevel = 2;
constexpr double kQuiet = 1e-7;  // energy of a sample, -70 dB: too soft to be compared
// Fewer samples than a coder's block are not compared: it may spread them over all of it.
constexpr std::uint64_t kLeastSamples = 4096;
// Coders of blocks keep their own silence before the music and fill the last block up.
constexpr std::uint64_t kMostDelay = 4096;

// Reads until the block is full or the source ends.
Result<std::size_t> Fill(PcmSource& source, std::span<double> block) {
  const std::size_t channels = source.Shape().channels;
  std::size_t filled = 0;
  while (filled < block.size()) {
    const auto got = source.Read(block.subspan(filled));
    if (!got) return got;
    if (*got == 0) break;
    filled += *got * channels;
  }
  return filled;
}

bool IsAlike(const Likeness& sums) {
  if (sums.samples < kLeastSamples) return true;
  const auto samples = static_cast<double>(std::max<std::uint64_t>(sums.samples, 1));
  if (sums.before / samples < kQuiet) return sums.after / samples < 100 * kQuiet;
  const double level = sums.after / sums.before;
  return level >= kLeastLevel && level <= kMostLevel &&
         sums.both >= kLeastCorrelation * std::sqrt(sums.before * sums.after);
}

// Where the music begins in what came out of a coder that does not say it: the first delay at which both are
// about as like as they can be. Tones that go on and on are like themselves at many.
std::size_t FindDelay(std::span<const double> before, std::span<const double> after, std::size_t channels) {
  constexpr double kAsLike = 0.99;
  std::vector<double> energy{0};  // of what came out, up to each sample
  for (const double sample : after) energy.push_back(energy.back() + sample * sample);
  std::vector<double> likeness;
  for (std::size_t at = 0; at <= kMostDelay * channels && at < after.size(); at += channels) {
    const std::size_t count = std::min(before.size(), after.size() - at);
    const double both =
        std::inner_product(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(count),
                           after.begin() + static_cast<std::ptrdiff_t>(at), 0.0);
    likeness.push_back(both / std::sqrt(energy[at + count] - energy[at] + kQuiet));
  }
  if (likeness.empty()) return 0;
  const double enough = kAsLike * std::ranges::max(likeness);
  std::size_t delay = 0;
  while (likeness[delay] < enough) ++delay;
  while (delay + 1 < likeness.size() && likeness[delay + 1] > likeness[delay]) ++delay;
  return delay;
}

class Proof {
 public:
  Proof(PreparedSource before, std::unique_ptr<PcmSource> after)
      : before_(std::move(before)), after_(std::move(after)), channels_(before_.shape.channels) {}

  Outcome Run(const WorkWatch& watch) {
    const PcmShape& made = after_->Shape();
    if (made.sampleRate != before_.shape.sampleRate || made.channels != channels_) return Outcome::NotProven;
    if (!before_.exactLength) {
      if (const Outcome aligned = Align(watch); Failed(aligned)) return aligned;
    }
    const double whole = static_cast<double>(before_.pcm->Frames().value_or(0));
    std::vector<double> in(kBlockFrames * channels_);
    std::vector<double> out(in.size());
    while (true) {
      if (watch.cancelled && watch.cancelled()) return Outcome::Cancelled;
      const auto gotIn = Fill(*before_.pcm, in);
      const auto gotOut = Fill(*after_, out);
      if (!gotIn || !gotOut) return gotIn ? gotOut.error() : gotIn.error();
      Compare(std::span(in).first(*gotIn), std::span(out).first(*gotOut));
      if (*gotIn < in.size()) return Judge(*gotIn, *gotOut);
      if (watch.progress && whole > 0)
        watch.progress(
            std::min(1.0, static_cast<double>(sums_.samples) / (static_cast<double>(channels_) * whole)));
    }
  }

 private:
  // By the first half of a second that is not silent.
  Outcome Align(const WorkWatch& watch) {
    std::vector<double> in(std::size_t{before_.shape.sampleRate} / 2 * channels_);
    std::vector<double> out;
    bool silent = true;
    while (silent) {
      if (watch.cancelled && watch.cancelled()) return Outcome::Cancelled;
      out.resize(in.size());
      const auto gotIn = Fill(*before_.pcm, in);
      const auto gotOut = Fill(*after_, out);
      if (!gotIn || !gotOut) return gotIn ? gotOut.error() : gotIn.error();
      silent = *gotIn == in.size() && std::ranges::all_of(in, [](double x) { return x * x < kQuiet; });
      in.resize(*gotIn);
      out.resize(*gotOut);
    }
    const std::size_t together = out.size();
    out.resize(together + kMostDelay * channels_);
    const auto more = Fill(*after_, std::span(out).subspan(together));
    if (!more) return more.error();
    out.resize(together + *more);
    const std::size_t delay = FindDelay(in, out, channels_);
    if (const Outcome rewound = before_.pcm->Seek(0); Failed(rewound)) return rewound;
    return after_->Seek(delay);
  }

  void Compare(std::span<const double> in, std::span<const double> out) {
    const std::size_t count = std::min(in.size(), out.size());
    for (std::size_t i = 0; i < count; ++i) {
      sums_.before += in[i] * in[i];
      sums_.after += out[i] * out[i];
      sums_.both += in[i] * out[i];
      sums_.same &= in[i] == out[i];
    }
    sums_.samples += count;
  }

  // The last blocks are as long as this.
  Outcome Judge(std::size_t in, std::size_t out) {
    std::vector<double> beyond(channels_);
    const auto more = Fill(*after_, beyond);
    if (!more) return more.error();
    const bool sameLength = in == out && *more == 0;
    const bool lengthFits = before_.exactLength ? sameLength : out + kMostDelay * channels_ >= in;
    const bool alike = before_.lossless ? sums_.same : IsAlike(sums_);
    return lengthFits && alike ? Outcome::Success : Outcome::NotProven;
  }

  PreparedSource before_;
  std::unique_ptr<PcmSource> after_;
  std::size_t channels_;
  Likeness sums_;
};

constexpr std::string_view kPlaceAttribute = "WM/EncodingSettings";
constexpr std::string_view kFramesKey = "samples=";
constexpr std::string_view kDelayKey = " delay=";

// What a decoder has to know of a file whose format has no place for it.
std::optional<tags::Attribute> NoteOf(EncodingSource& source, const EncodeSettings& settings) {
  const Encoder* const encoder = EncoderOf(settings);
  if (encoder == nullptr || encoder->exactLength) return std::nullopt;
  const auto prepared = PrepareFor(*encoder, source, settings);
  const auto frames = prepared ? prepared->pcm->Frames() : std::nullopt;
  if (!frames) return std::nullopt;
  tags::Attribute note = tags::NewAttribute(kPlaceAttribute);
  note.value = std::string(kFramesKey) + std::to_string(*frames) + std::string(kDelayKey) +
               std::to_string(encoder->delay);
  note.selected = true;
  return note;
}

}  // namespace

Result<EncodingSource> EncodingSource::Open(const std::string& path, const EncodeSettings& settings) {
  auto media = OpenMediaFile(path);
  if (!media) {
    if (media.error() == Outcome::ReadFailed || media.error() == Outcome::OutOfMemory)
      return Failure(media.error());
    return Failure(NotForIt(settings, path));
  }
  if (!IsWaveKind(media->kind)) return Failure(NotForIt(settings, path));
  EncodingSource source;
  source.path_ = path;
  source.aiff_ = BeginsAsAiff(path);
  if (media->wave) {
    source.format_ = media->wave->Format();
  } else if (media->decoder) {
    source.format_ = media->decoder->Info().format;
  }
  auto pcm = PcmOf(*std::move(media));
  if (!pcm) return Failure(pcm.error() == Outcome::WrongFormat ? NotForIt(settings, path) : pcm.error());
  source.pcm_ = *std::move(pcm);
  return source;
}

double EncodingSource::Seconds() const {
  return static_cast<double>(pcm_->Frames().value_or(0)) / std::max(1U, Shape().sampleRate);
}

Result<std::unique_ptr<PcmSource>> EncodingSource::Samples(std::uint32_t sampleRate, std::uint32_t channels) {
  if (std::exchange(read_, true)) {
    if (const Outcome rewound = pcm_->Seek(0); Failed(rewound)) return Failure(rewound);
  }
  return Converted(std::make_unique<BorrowedSource>(*pcm_), sampleRate, channels);
}

Outcome EncodeFile(EncodingSource& source, StagedFile& target, const EncodeSettings& settings,
                   const WorkWatch& watch) {
  const Encoder* const encoder = EncoderOf(settings);
  if (encoder == nullptr) return Outcome::ConverterNotOpened;
  const auto prepared = PrepareFor(*encoder, source, settings);
  if (!prepared) return prepared.error();
  const auto frames = prepared->pcm->Frames();
  if (frames == 0U && !encoder->maybeEmpty) return Outcome::SourceFailed;
  auto sink = encoder->open({target, settings, prepared->shape, frames});
  if (!sink) return sink.error();
  const PcmShape& from = source.Shape();
  const bool finer = from.bits == 0 || from.bits > 16 || from.sampleRate != prepared->shape.sampleRate;
  if (prepared->shape.bits == 16 && finer && !encoder->lossless)
    sink = std::make_unique<DitheringSink>(std::move(*sink));
  return CopyPcm(*prepared->pcm, **sink, watch);
}

bool IsConvertedFirst(const EncodingSource& source, const EncodeSettings& settings) {
  if (source.IsAiff()) return true;
  const Encoder* const encoder = EncoderOf(settings);
  if (encoder == nullptr || (encoder->id != EncoderId::Blade && encoder->id != EncoderId::Lame)) return false;
  const PcmShape& has = source.Shape();
  const auto takes = encoder->shape(settings, {has, source.Format()});
  return takes && (takes->sampleRate != has.sampleRate || takes->channels != has.channels);
}

Outcome WriteEncodedAttributes(EncodingSource& source, const std::string& made,
                               const EncodeSettings& settings, const tags::Attributes& job,
                               unsigned id3Version) {
  tags::Attributes wanted = tags::FixedAttributes();
  for (const tags::Attribute& attribute : job) {
    if (attribute.ToBeWritten()) wanted.push_back(attribute);
  }
  if (auto noted = NoteOf(source, settings)) wanted.push_back(*std::move(noted));
  tags::AttributeChanges carried;
  if (auto had = tags::ReadAttributes(source.Path())) {
    for (tags::Attribute& attribute : *had) {
      if (attribute.readOnly || !attribute.HasValue() ||
          tags::FindAttribute(wanted, attribute.name) != nullptr)
        continue;
      attribute.selected = true;
      carried.set.push_back(std::move(attribute));
    }
  }
  // What a format has no place for is lost only where nobody asked for it.
  if (!carried.Empty()) (void)tags::ChangeAttributesInPlace(made, carried, id3Version);
  const auto failed =
      tags::ChangeAttributesInPlace(made, {.set = std::move(wanted), .remove = {}}, id3Version);
  return failed && *failed == 0 ? Outcome::Success : Outcome::AttributesNotWritten;
}

std::optional<MusicPlace> NotedPlace(const tags::Attributes& attributes) {
  const tags::Attribute* const note = tags::FindAttribute(attributes, kPlaceAttribute);
  if (note == nullptr || !note->value.starts_with(kFramesKey)) return std::nullopt;
  const std::string_view text = std::string_view(note->value).substr(kFramesKey.size());
  const std::size_t key = text.find(kDelayKey);
  if (key == std::string_view::npos) return std::nullopt;
  const auto frames = ParseInteger(text.substr(0, key));
  const auto delay = ParseInteger(text.substr(key + kDelayKey.size()));
  if (!frames || !delay || *frames < 0 || *delay < 0) return std::nullopt;
  return MusicPlace{static_cast<std::uint64_t>(*frames), static_cast<std::uint64_t>(*delay)};
}

bool WantsProof(const EncodeSettings& settings) {
  return settings.verify.value_or(settings.Method() == EncodeMethod::MonkeysAudio);
}

Outcome ProveEncoding(EncodingSource& source, const std::string& made, const EncodeSettings& settings,
                      const WorkWatch& watch) {
  auto after = OpenPcm(made);
  if (!after) return after.error() == Outcome::WrongFormat ? Outcome::NotProven : after.error();
  const Encoder* const encoder = EncoderOf(settings);
  auto before =
      encoder == nullptr ? PrepareAs((*after)->Shape(), source) : PrepareFor(*encoder, source, settings);
  if (!before) return before.error();
  return Proof(std::move(*before), std::move(*after)).Run(watch);
}

}  // namespace ts5::encode
