#include "platform/media/vorbis_music.h"

#include <ogg/ogg.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/media/ffmpeg.h"

namespace ts5 {
namespace {

constexpr long kReadSize = 1 << 16;
constexpr std::size_t kHeaders = 3;
constexpr std::size_t kMostHeaderSize = std::size_t{1} << 24;

// The packets of one stream of an Ogg file, page by page.
class Pages {
 public:
  Pages(const InputFile& file, int serial) : file_(file) {
    ogg_sync_init(&sync_);
    ogg_stream_init(&stream_, serial);
  }
  ~Pages() {
    ogg_stream_clear(&stream_);
    ogg_sync_clear(&sync_);
  }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;

  // The next page of the stream; false at its end.
  Result<bool> Next() {
    while (!ended_) {
      ogg_page page;
      const int found = ogg_sync_pageout(&sync_, &page);
      if (found < 0) continue;  // bytes that belong to no page are passed over
      if (found == 0) {
        const auto more = ReadMore();
        if (!more) return Failure(more.error());
        if (!*more) return false;
        continue;
      }
      if (ogg_stream_pagein(&stream_, &page) != 0) continue;  // of another stream
      position_ = ogg_page_granulepos(&page);
      ended_ = ogg_page_eos(&page) != 0;
      return true;
    }
    return false;
  }
  // The next packet that is whole; its bytes stay until the next call.
  bool Packet(ogg_packet& packet) {
    int got = 0;
    do {
      got = ogg_stream_packetout(&stream_, &packet);
    } while (got < 0);  // a damaged place is left out
    return got > 0;
  }
  // Frames up to the end of the page; negative where no packet ends on it.
  [[nodiscard]] ogg_int64_t Position() const { return position_; }
  [[nodiscard]] bool IsLast() const { return ended_; }

 private:
  Result<bool> ReadMore() {
    char* const buffer = ogg_sync_buffer(&sync_, kReadSize);
    if (buffer == nullptr) return Failure(Outcome::OutOfMemory);
    const auto got =
        file_.ReadAt(at_, {reinterpret_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(kReadSize)});
    if (!got) return Failure(got.error());
    if (*got == 0 && at_ < file_.Size()) return Failure(Outcome::ReadFailed);  // it has become shorter
    ogg_sync_wrote(&sync_, static_cast<long>(*got));
    at_ += *got;
    return *got != 0;
  }

  const InputFile& file_;
  std::uint64_t at_ = 0;
  ogg_sync_state sync_{};
  ogg_stream_state stream_{};
  ogg_int64_t position_ = -1;
  bool ended_ = false;
};

// The three headers as the decoder wants them: how many follow the first, the lengths of all but the last in
// bytes of 255 and a rest, then the headers.
Bytes Packed(std::span<const Bytes> headers) {
  Bytes all{static_cast<std::uint8_t>(headers.size() - 1)};
  for (const Bytes& header : headers.first(headers.size() - 1)) {
    all.insert(all.end(), header.size() / 255, 255);
    all.push_back(static_cast<std::uint8_t>(header.size() % 255));
  }
  for (const Bytes& header : headers) all.insert(all.end(), header.begin(), header.end());
  return all;
}

class Music final : public VorbisMusic {
 public:
  Music(const InputFile& file, int serial, std::size_t channels)
      : pages_(file, serial), channels_(channels) {}

  bool Open() {
    const auto headers = ReadHeaders();
    const AVCodec* const decoder = avcodec_find_decoder_by_name("vorbis");
    if (headers.size() != kHeaders || decoder == nullptr) return false;
    codec_.reset(avcodec_alloc_context3(decoder));
    frame_.reset(av_frame_alloc());
    packet_.reset(av_packet_alloc());
    if (!codec_ || !frame_ || !packet_) return false;
    const Bytes packed = Packed(headers);
    auto* const extra = static_cast<std::uint8_t*>(av_mallocz(packed.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (extra == nullptr) return false;
    std::ranges::copy(packed, extra);
    codec_->extradata = extra;  // freed with it
    codec_->extradata_size = static_cast<int>(packed.size());
    return avcodec_open2(codec_.get(), decoder, nullptr) == 0 &&
           codec_->ch_layout.nb_channels == static_cast<int>(channels_) &&
           codec_->sample_fmt == AV_SAMPLE_FMT_FLTP;
  }

  Result<std::size_t> Read(std::span<double> out) override {
    const std::size_t wanted = out.size() / channels_ * channels_;
    std::size_t filled = 0;
    while (filled < wanted) {
      if (taken_ == page_.size()) {
        const auto more = DecodePage();
        if (!more) return Failure(more.error());
        if (!*more) break;
        continue;
      }
      const std::size_t count = std::min(wanted - filled, page_.size() - taken_);
      std::copy_n(page_.begin() + static_cast<std::ptrdiff_t>(taken_), count,
                  out.begin() + static_cast<std::ptrdiff_t>(filled));
      taken_ += count;
      filled += count;
    }
    return filled / channels_;
  }

 private:
  std::vector<Bytes> ReadHeaders() {
    std::vector<Bytes> headers;
    std::size_t size = 0;
    while (headers.size() < kHeaders && size < kMostHeaderSize) {
      const auto page = pages_.Next();
      if (!page || !*page) break;
      for (ogg_packet packet; headers.size() < kHeaders && pages_.Packet(packet);) {
        headers.emplace_back(packet.packet, packet.packet + packet.bytes);
        size += headers.back().size();
      }
    }
    return headers;
  }

  // All packets that end on the next page, cut to what its position counts; false at the end.
  Result<bool> DecodePage() {
    page_.clear();
    taken_ = 0;
    const auto next = pages_.Next();
    if (!next || !*next) return next;
    for (ogg_packet packet; pages_.Packet(packet);) {
      if (const Outcome decoded = Decode(packet); Failed(decoded)) return Failure(decoded);
    }
    Cut();
    return true;
  }

  Outcome Decode(const ogg_packet& packet) {
    // The decoder makes a copy of its own.
    packet_->data = packet.packet;
    packet_->size = static_cast<int>(packet.bytes);
    const int sent = packet.bytes > 0 ? avcodec_send_packet(codec_.get(), packet_.get()) : 0;
    packet_->data = nullptr;
    packet_->size = 0;
    if (sent == AVERROR(ENOMEM)) return Outcome::OutOfMemory;
    while (sent == 0 && avcodec_receive_frame(codec_.get(), frame_.get()) == 0) {
      if (frame_->ch_layout.nb_channels == static_cast<int>(channels_)) Take(*frame_);
    }
    return Outcome::Success;
  }

  void Take(const AVFrame& frame) {
    const auto frames = static_cast<std::size_t>(std::max(frame.nb_samples, 0));
    const std::size_t at = page_.size();
    page_.resize(at + frames * channels_);
    for (std::size_t channel = 0; channel < channels_; ++channel) {
      const auto* const in = reinterpret_cast<const float*>(frame.extended_data[channel]);
      double* const out = page_.data() + at + channel;
      for (std::size_t i = 0; i < frames; ++i)
        out[i * channels_] = std::isfinite(in[i]) ? static_cast<double>(in[i]) : 0;
    }
  }

  // The first position of a stream that goes on may lie before what was decoded up to it: the difference is
  // what the stream lacks at its start. That of the last page cuts its end.
  void Cut() {
    const ogg_int64_t told = pages_.Position();
    const auto frames = static_cast<ogg_int64_t>(page_.size() / channels_);
    counted_ += frames;
    if (told < 0) return;
    const auto beyond = static_cast<std::size_t>(std::clamp<ogg_int64_t>(counted_ - told, 0, frames));
    const auto cut = static_cast<std::ptrdiff_t>(beyond * channels_);
    if (pages_.IsLast()) {
      page_.resize(page_.size() - beyond * channels_);
    } else if (!positioned_) {
      page_.erase(page_.begin(), page_.begin() + cut);
    }
    positioned_ = positioned_ || counted_ > 0;
    counted_ = told;
  }

  Pages pages_;
  std::size_t channels_;
  ffmpeg::Codec codec_;
  ffmpeg::Frame frame_;
  ffmpeg::Packet packet_;
  std::vector<double> page_;  // what it holds, decoded
  std::size_t taken_ = 0;     // of it
  ogg_int64_t counted_ = 0;   // frames up to its end
  bool positioned_ = false;   // a page has told where it lies
};

}  // namespace

std::unique_ptr<VorbisMusic> OpenVorbisMusic(const InputFile& file, int serial, std::size_t channels) {
  ffmpeg::Silence();
  auto music = std::make_unique<Music>(file, serial, channels);
  if (!music->Open()) return nullptr;
  return music;
}

}  // namespace ts5
