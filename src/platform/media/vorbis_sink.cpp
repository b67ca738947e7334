#include "platform/media/vorbis_sink.h"

#include <vorbis/vorbisenc.h>

#include <algorithm>
#include <array>

#include "platform/base/bytes.h"

namespace ts5 {
namespace {

constexpr std::size_t kBlockFrames = 1024;
constexpr std::size_t kMostChannels = 8;
// The place of each channel of a wave file in a Vorbis stream, by the number of channels.
constexpr std::array<std::array<std::uint8_t, kMostChannels>, kMostChannels + 1> kPlaces{{
    {},
    {0},
    {0, 1},
    {0, 2, 1},
    {0, 1, 2, 3},
    {0, 2, 1, 3, 4},
    {0, 2, 1, 5, 3, 4},
    {0, 2, 1, 6, 5, 3, 4},
    {0, 2, 1, 7, 5, 6, 3, 4},
}};

// The library's structures, in the order in which they are made and undone.
struct Encoder {
  vorbis_info info{};
  vorbis_comment comment{};
  vorbis_dsp_state state{};
  vorbis_block block{};
  ogg_stream_state stream{};
  bool analysing = false;

  Encoder() {
    vorbis_info_init(&info);
    vorbis_comment_init(&comment);
  }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;
  ~Encoder() {
    if (analysing) {
      ogg_stream_clear(&stream);
      vorbis_block_clear(&block);
      vorbis_dsp_clear(&state);
    }
    vorbis_comment_clear(&comment);
    vorbis_info_clear(&info);
  }
};

class VorbisSink final : public PcmSink {
 public:
  explicit VorbisSink(StagedFile& target) : target_(target) {}

  [[nodiscard]] Outcome Open(const PcmShape& shape, const VorbisOptions& options) {
    channels_ = shape.channels;
    if (channels_ < 1 || channels_ > kMostChannels) return Outcome::NotNecessary;
    const auto channels = static_cast<long>(channels_);
    const auto rate = static_cast<long>(shape.sampleRate);
    const int made = options.variable
                         ? vorbis_encode_init_vbr(&encoder_.info, channels, rate, options.quality)
                         : vorbis_encode_init(&encoder_.info, channels, rate, options.maxBitRate,
                                              options.nominalBitRate, options.minBitRate);
    if (made != 0) return Outcome::NotNecessary;
    if (vorbis_analysis_init(&encoder_.state, &encoder_.info) != 0) return Outcome::OutOfMemory;
    vorbis_block_init(&encoder_.state, &encoder_.block);
    ogg_stream_init(&encoder_.stream, static_cast<int>(options.serial));
    encoder_.analysing = true;
    return WriteHeaders();
  }

  Outcome Write(std::span<const double> interleaved) override {
    while (!interleaved.empty()) {
      const std::size_t frames = std::min(interleaved.size() / channels_, kBlockFrames);
      float* const* const planes = vorbis_analysis_buffer(&encoder_.state, static_cast<int>(kBlockFrames));
      for (std::size_t channel = 0; channel < channels_; ++channel) {
        float* const out = planes[kPlaces.at(channels_).at(channel)];
        for (std::size_t i = 0; i < frames; ++i)
          out[i] = static_cast<float>(interleaved[i * channels_ + channel]);
      }
      if (const Outcome written = Analyse(frames); Failed(written)) return written;
      interleaved = interleaved.subspan(frames * channels_);
    }
    return Outcome::Success;
  }

  Outcome Finish() override {
    if (const Outcome written = Analyse(0); Failed(written)) return written;
    return WritePages(ogg_stream_flush);
  }

 private:
  // The three headers on pages of their own, so that the music begins on a new one.
  Outcome WriteHeaders() {
    std::array<ogg_packet, 3> headers{};
    if (vorbis_analysis_headerout(&encoder_.state, &encoder_.comment, headers.data(), &headers[1],
                                  &headers[2]) != 0)
      return Outcome::OutOfMemory;
    for (ogg_packet& header : headers) ogg_stream_packetin(&encoder_.stream, &header);
    return WritePages(ogg_stream_flush);
  }

  // 0 frames: the end.
  Outcome Analyse(std::size_t frames) {
    vorbis_analysis_wrote(&encoder_.state, static_cast<int>(frames));
    while (vorbis_analysis_blockout(&encoder_.state, &encoder_.block) == 1) {
      vorbis_analysis(&encoder_.block, nullptr);
      vorbis_bitrate_addblock(&encoder_.block);
      for (ogg_packet packet; vorbis_bitrate_flushpacket(&encoder_.state, &packet) != 0;) {
        ogg_stream_packetin(&encoder_.stream, &packet);
        if (const Outcome written = WritePages(ogg_stream_pageout); Failed(written)) return written;
      }
    }
    return Outcome::Success;
  }

  Outcome WritePages(int (*next)(ogg_stream_state*, ogg_page*)) {
    for (ogg_page page; next(&encoder_.stream, &page) != 0;) {
      const ByteView head(page.header, static_cast<std::size_t>(page.header_len));
      const ByteView body(page.body, static_cast<std::size_t>(page.body_len));
      if (const Outcome written = target_.Write(head); Failed(written)) return written;
      if (const Outcome written = target_.Write(body); Failed(written)) return written;
    }
    return Outcome::Success;
  }

  StagedFile& target_;
  Encoder encoder_;
  std::size_t channels_ = 0;
};

}  // namespace

Result<std::unique_ptr<PcmSink>> OpenVorbisSink(StagedFile& target, const PcmShape& shape,
                                                const VorbisOptions& options) {
  auto sink = std::make_unique<VorbisSink>(target);
  if (const Outcome opened = sink->Open(shape, options); Failed(opened)) return Failure(opened);
  return std::unique_ptr<PcmSink>(std::move(sink));
}

}  // namespace ts5
