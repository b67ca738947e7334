#include "platform/media/certain_demuxer.h"

#include <array>
#include <optional>
#include <string_view>

#include "platform/media/mp3_frame.h"
#include "platform/media/mp3_length.h"

namespace ts5::ffmpeg {
namespace {

struct Mark {
  std::size_t offset;
  std::string_view bytes;
  const char* demuxer;
};
constexpr Mark kMarks[] = {
    {0, "fLaC", "flac"},
    {0, "MAC ", "ape"},
    {0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11", "asf"},
    {4, "ftyp", "mov"},
};

// Two frames of layer III one behind the other, of one rate.
bool BeginsAsMp3(const InputFile& file) {
  const std::uint64_t at = BehindId3(file);
  const auto headerAt = [&file](std::uint64_t offset) -> std::optional<Mp3Header> {
    std::array<std::uint8_t, 4> bytes{};
    const auto got = file.ReadAt(offset, bytes);
    return got ? ParseMp3Header(ByteView(bytes).first(*got)) : std::nullopt;
  };
  const auto first = headerAt(at);
  const auto second = first ? headerAt(at + first->size) : std::nullopt;
  return second && second->sampleRate == first->sampleRate;
}

}  // namespace

const AVInputFormat* CertainDemuxer(const InputFile& file) {
  std::array<std::uint8_t, 16> start{};
  const auto got = file.ReadAt(0, start);
  const std::string_view text = AsText(ByteView(start).first(got.value_or(0)));
  for (const Mark& mark : kMarks) {
    if (text.size() > mark.offset && text.substr(mark.offset).starts_with(mark.bytes))
      return av_find_input_format(mark.demuxer);
  }
  return BeginsAsMp3(file) ? av_find_input_format("mp3") : nullptr;
}

}  // namespace ts5::ffmpeg
