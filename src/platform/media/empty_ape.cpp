#include "platform/media/empty_ape.h"

#include <array>

namespace ts5 {
namespace {

constexpr std::size_t kDescriptorSize = 52;
constexpr std::size_t kHeaderSize = 24;

class EmptyReader : public MediaReader {
 public:
  explicit EmptyReader(const WaveFormat& format) {
    shape_ = {.sampleRate = format.sampleRate, .channels = format.channels, .bits = format.bitsPerSample};
    info_ = {.container = MediaContainer::Ape, .codec = MediaCodec::Ape, .format = format, .frames = 0};
  }
  [[nodiscard]] const PcmShape& Shape() const override { return shape_; }
  [[nodiscard]] std::optional<std::uint64_t> Frames() const override { return 0; }
  [[nodiscard]] Result<std::size_t> Read(std::span<double> /*out*/) override { return std::size_t{0}; }
  [[nodiscard]] Outcome Seek(std::uint64_t frame) override {
    return frame == 0 ? Outcome::Success : Outcome::SourceFailed;
  }
  [[nodiscard]] const MediaInfo& Info() const override { return info_; }

 private:
  PcmShape shape_;
  MediaInfo info_;
};

}  // namespace

std::unique_ptr<MediaReader> OpenEmptyApe(const InputFile& file) {
  std::array<std::uint8_t, kDescriptorSize + kHeaderSize> head{};
  const auto got = file.ReadAt(0, head);
  if (!got || *got < head.size()) return nullptr;
  ByteReader in(head);
  if (in.Tag() != "MAC " || in.U16Le() < 3980) return nullptr;
  in.Seek(8);
  if (in.U32Le() != kDescriptorSize) return nullptr;
  in.Seek(kDescriptorSize + 12);
  const std::uint32_t frames = in.U32Le();
  const std::uint16_t bits = in.U16Le();
  const std::uint16_t channels = in.U16Le();
  const std::uint32_t rate = in.U32Le();
  const bool plausible =
      (bits == 8 || bits == 16 || bits == 24) && (channels == 1 || channels == 2) && rate > 0;
  if (frames > 0 || !plausible) return nullptr;
  return std::make_unique<EmptyReader>(PcmFormat(rate, bits, channels));
}

}  // namespace ts5
