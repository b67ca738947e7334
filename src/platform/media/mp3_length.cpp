#include "platform/media/mp3_length.h"

#include <algorithm>
#include <string_view>

#include "platform/base/bytes.h"
#include "platform/media/mp3_frame.h"

namespace ts5 {
namespace {

constexpr std::size_t kId3Header = 10;
constexpr std::size_t kLookedAt = 4096;  // junk before the first frame, and the frame
constexpr std::size_t kLeastBlock = 24;  // bytes: 8 kbit/s at 24 kHz
constexpr std::uint32_t kHasBlocks = 1;
constexpr std::uint32_t kHasBytes = 2;
constexpr std::uint32_t kHasPlaces = 4;
constexpr std::uint32_t kHasQuality = 8;
constexpr std::size_t kPlaces = 100;
constexpr std::size_t kEncoderName = 9;
constexpr std::size_t kBeforeChecksum =
    10;  // behind the delays: noise, gain, preset, length and sum of the music
constexpr std::size_t kBeforeDelay = 12;  // behind the name: revision, low pass, gains, flags, bit rate

}  // namespace

std::uint64_t BehindId3(const InputFile& file) {
  Bytes header(kId3Header);
  const auto got = file.ReadAt(0, header);
  if (!got || *got < header.size() || !AsText(header).starts_with("ID3")) return 0;
  std::uint64_t size = 0;
  for (std::size_t i = 6; i < kId3Header; ++i) size = size << 7 | (header[i] & 0x7FU);
  return kId3Header + size;
}

std::optional<TaggedMp3> ReadTaggedMp3(const InputFile& file, std::uint32_t framesPerBlock) {
  Bytes start(kLookedAt);
  const auto got = file.ReadAt(BehindId3(file), start);
  if (!got) return std::nullopt;
  start.resize(*got);
  const std::string_view text = AsText(start);
  const std::size_t tag = std::min(text.find("Xing"), text.find("Info"));
  if (tag == std::string_view::npos) return std::nullopt;

  ByteReader in(start);
  in.Seek(tag + 4);
  const std::uint32_t flags = in.U32Be();
  if ((flags & kHasBlocks) == 0) return std::nullopt;
  const std::uint64_t blocks = in.U32Be();
  if (blocks > file.Size() / kLeastBlock) return std::nullopt;  // a lie
  const std::uint64_t frames = blocks * framesPerBlock;
  const std::uint64_t bytes = (flags & kHasBytes) != 0 ? in.U32Be() : 0;
  if ((flags & kHasPlaces) != 0) in.Skip(kPlaces);
  if ((flags & kHasQuality) != 0) in.Skip(4);
  const std::string encoder(AsText(in.Take(kEncoderName)));
  in.Skip(kBeforeDelay);
  const std::uint32_t delays = in.U24Be();
  const bool told = in.Ok();
  in.Skip(kBeforeChecksum);
  const std::size_t end = in.Position();
  const std::uint16_t checksum = in.U16Be();
  TaggedMp3 tagged{.frames = frames,
                   .delay = delays >> 12,
                   .padding = delays & 0xFFF,
                   .blocks = blocks,
                   .bytes = bytes,
                   .constant = text.substr(tag).starts_with("Info"),
                   .encoder = encoder};
  const std::uint64_t silent = std::uint64_t{tagged.delay} + tagged.padding;
  if (frames == 0) return std::nullopt;
  if (!told || silent >= frames) return TaggedMp3{.frames = frames};
  tagged.checked = in.Ok() && checksum == LengthTagChecksum(ByteView(start).first(end));
  tagged.frames -= silent;
  return tagged;
}

}  // namespace ts5
