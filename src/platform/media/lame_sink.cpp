#include "platform/media/lame_sink.h"

#include <lame/lame.h>

#include <algorithm>
#include <array>

#include "platform/base/bytes.h"
#include "platform/base/casts.h"
#include "platform/media/mp3_frame.h"

namespace ts5 {
namespace {

// What the library asks to have room for: 1.25 bytes a sample and this.
constexpr std::size_t kRoom = 7200;
constexpr std::size_t kBlockFrames = 4096;
constexpr std::size_t kMostHeader = 2880;  // of the largest frame

struct CloseLame {
  void operator()(lame_global_flags* flags) const { lame_close(flags); }
};
using Lame = std::unique_ptr<lame_global_flags, CloseLame>;

MPEG_mode ModeOf(Mp3Mode mode) {
  constexpr std::array<MPEG_mode, 4> kModes{STEREO, JOINT_STEREO, DUAL_CHANNEL, MONO};
  return kModes.at(static_cast<std::size_t>(mode));
}

void SetRate(lame_global_flags* lame, const LameOptions& options) {
  switch (options.rate) {
    case LameRate::Constant:
      lame_set_VBR(lame, vbr_off);
      lame_set_brate(lame, options.bitRate);
      return;
    case LameRate::Average:
      lame_set_VBR(lame, vbr_abr);
      lame_set_VBR_mean_bitrate_kbps(lame, options.bitRate);
      return;
    case LameRate::Variable:
    case LameRate::VariableOld:
      lame_set_VBR(lame, options.rate == LameRate::Variable ? vbr_mtrh : vbr_rh);
      lame_set_VBR_q(lame, options.quality);
      lame_set_VBR_min_bitrate_kbps(lame, options.bitRate);
      lame_set_VBR_max_bitrate_kbps(lame, options.maxBitRate);
      lame_set_VBR_hard_min(lame, 1);
      return;
  }
}

// Whether the library's own header goes into a frame of the bit rate; else it leaves it out.
bool HasRoomForHeader(const lame_global_flags* lame, bool crc) {
  if (lame_get_VBR(lame) != vbr_off) return true;
  const bool first = lame_get_version(lame) == 1;
  const bool mono = lame_get_mode(lame) == MONO;
  const int side = first ? (mono ? 17 : 32) : (mono ? 9 : 17);
  const int frame = (first ? 144000 : 72000) * lame_get_brate(lame) / lame_get_out_samplerate(lame);
  return frame >= 4 + (crc ? 2 : 0) + side + static_cast<int>(kLameTagSize);
}

class LameSink final : public PcmSink {
 public:
  explicit LameSink(StagedFile& target) : target_(target), start_(target.Size()) {}

  [[nodiscard]] Outcome Open(const PcmShape& shape, const LameOptions& options) {
    lame_.reset(lame_init());
    if (!lame_) return Outcome::OutOfMemory;
    lame_global_flags* const lame = lame_.get();
    channels_ = shape.channels;
    if (channels_ < 1 || channels_ > 2) return Outcome::ConverterNotOpened;
    const Mp3Mode mode = channels_ == 1 ? Mp3Mode::Mono : options.mode;
    lame_set_num_channels(lame, static_cast<int>(channels_));
    lame_set_in_samplerate(lame, static_cast<int>(shape.sampleRate));
    const std::uint32_t rate = options.resampleRate != 0 ? options.resampleRate : shape.sampleRate;
    lame_set_out_samplerate(lame, static_cast<int>(rate));
    lame_set_mode(lame, ModeOf(mode));
    SetRate(lame, options);
    if (options.preset != 0) lame_set_preset(lame, options.preset);
    if (options.effort >= 0) lame_set_quality(lame, options.effort);
    lame_set_emphasis(lame, options.emphasis);
    lame_set_extension(lame, options.privateBit ? 1 : 0);
    lame_set_error_protection(lame, options.crc ? 1 : 0);
    lame_set_copyright(lame, options.copyright ? 1 : 0);
    lame_set_original(lame, options.original ? 1 : 0);
    lame_set_disable_reservoir(lame, options.reservoir ? 0 : 1);
    lame_set_strict_ISO(lame, options.strictIso ? MDB_STRICT_ISO : MDB_DEFAULT);
    lame_set_bWriteVbrTag(lame, options.header ? 1 : 0);
    lame_set_findReplayGain(lame, options.header ? 1 : 0);
    lame_set_write_id3tag_automatic(lame, 0);
    for (const auto set : {lame_set_errorf, lame_set_debugf, lame_set_msgf})
      set(lame, [](const char*, va_list) {});
    if (lame_init_params(lame) < 0) return Outcome::ConverterNotOpened;
    const bool room = HasRoomForHeader(lame, options.crc);
    header_ = options.header && room;
    ownHeader_ = options.header && !room;
    out_.resize(kBlockFrames * 5 / 4 + kRoom);
    return Outcome::Success;
  }

  Outcome Write(std::span<const double> interleaved) override {
    while (!interleaved.empty()) {
      const std::size_t count = std::min(interleaved.size(), kBlockFrames * channels_);
      if (const Outcome encoded = Encode(interleaved.first(count)); Failed(encoded)) return encoded;
      interleaved = interleaved.subspan(count);
    }
    return Outcome::Success;
  }

  Outcome Finish() override {
    const int size = lame_encode_flush(lame_.get(), out_.data(), static_cast<int>(out_.size()));
    if (const Outcome written = Put(size); Failed(written)) return written;
    if (ownHeader_) return first_ ? WriteOwnHeader() : Outcome::ConverterFailed;
    if (!header_) return Outcome::Success;
    std::array<std::uint8_t, kMostHeader> header{};
    const std::size_t length = lame_get_lametag_frame(lame_.get(), header.data(), header.size());
    if (length == 0 || length > header.size()) return Outcome::Success;
    return target_.WriteAt(start_, ByteView(header).first(length));
  }

 private:
  Outcome Encode(std::span<const double> block) {
    const auto frames = static_cast<int>(block.size() / channels_);
    const auto room = static_cast<int>(out_.size());
    const int size = channels_ == 2 ? lame_encode_buffer_interleaved_ieee_double(lame_.get(), block.data(),
                                                                                 frames, out_.data(), room)
                                    : lame_encode_buffer_ieee_double(lame_.get(), block.data(), block.data(),
                                                                     frames, out_.data(), room);
    return Put(size);
  }

  Outcome WriteOwnHeader() {
    const std::string encoder = std::string("LAME") + get_lame_short_version();
    const Mp3LengthTag tag{.frames = static_cast<std::uint64_t>(lame_get_frameNum(lame_.get())),
                           .bytes = target_.Size() - start_,
                           .delay = static_cast<std::uint32_t>(lame_get_encoder_delay(lame_.get())),
                           .padding = static_cast<std::uint32_t>(lame_get_encoder_padding(lame_.get())),
                           .encoder = encoder};
    return target_.WriteAt(start_, LengthTagFrame(*first_, tag));
  }

  Outcome Put(int size) {
    if (size < 0) return Outcome::ConverterFailed;
    if (ownHeader_ && !first_ && size > 0) {
      first_ = ParseMp3Header(out_);
      if (!first_) return Outcome::ConverterFailed;
      const Bytes place(LengthTagFrame(*first_, {}).size());
      if (const Outcome written = target_.Write(place); Failed(written)) return written;
    }
    return target_.Write(ByteView(out_).first(static_cast<std::size_t>(size)));
  }

  StagedFile& target_;
  std::uint64_t start_;
  Lame lame_;
  std::size_t channels_ = 0;
  bool header_ = false;             // the library writes one
  bool ownHeader_ = false;          // we do
  std::optional<Mp3Header> first_;  // of the frame behind ours
  Bytes out_;
};

}  // namespace

Result<std::unique_ptr<PcmSink>> OpenLameSink(StagedFile& target, const PcmShape& shape,
                                              const LameOptions& options) {
  auto sink = std::make_unique<LameSink>(target);
  if (const Outcome opened = sink->Open(shape, options); Failed(opened)) return Failure(opened);
  return std::unique_ptr<PcmSink>(std::move(sink));
}

std::optional<LibraryVersion> LameVersion() {
  return VersionOfLibrary("libmp3lame", get_lame_version(), reinterpret_cast<const void*>(&lame_init));
}

}  // namespace ts5
