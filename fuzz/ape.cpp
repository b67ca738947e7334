// The encoder of Monkey's Audio against the decoder: what any samples become is decoded to the same samples.
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "audio/ape/ape_encoder.h"
#include "platform/files/files.h"
#include "platform/media/open_media.h"

namespace {

using namespace ts5;

std::vector<std::int32_t> Samples(ByteView bytes, const ape::Format& format, unsigned repeat) {
  const std::size_t width = format.bits / 8;
  std::vector<std::int32_t> samples;
  for (unsigned r = 0; r < repeat; ++r) {
    for (std::size_t at = 0; at + width <= bytes.size(); at += width) {
      std::uint32_t value = 0;
      for (std::size_t i = 0; i < width; ++i) value = value >> 8 | std::uint32_t{bytes[at + i]} << 24;
      samples.push_back(static_cast<std::int32_t>(value) >> (32 - format.bits));
    }
  }
  samples.resize(samples.size() / format.channels * format.channels);
  return samples;
}

bool DecodesTo(const Bytes& file, const std::vector<std::int32_t>& samples, const ape::Format& format) {
  static const std::string path = [] {
    static auto temporary = TemporaryFile::Create();
    return temporary ? temporary->Path() : std::string("/tmp/ts5-fuzz.ape");
  }();
  if (Failed(WriteFile(path, file))) return true;  // no fault of ours
  const auto reader = OpenMedia(path);
  if (!reader) return false;
  std::size_t at = 0;
  std::vector<double> block(std::size_t{1024} * format.channels);
  while (true) {
    const auto got = (*reader)->Read(block);
    if (!got) return false;
    if (*got == 0) return at == samples.size();
    for (std::size_t i = 0; i < *got * format.channels; ++i, ++at) {
      if (at >= samples.size() || std::ldexp(block[i], static_cast<int>(format.bits) - 1) != samples[at])
        return false;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  const ape::Format format{44100, 1U + data[0] % 2, 8U + 8U * (data[1] % 3),
                           ape::LevelOf(1000U + 1000U * (data[2] % 5))};
  const auto samples = Samples({data + 3, size - 3}, format, 1U + data[0] / 16);
  if (samples.empty()) return 0;
  auto encoder = ape::Encoder::Create(format, samples.size() / format.channels);
  Bytes file;
  encoder->Begin(file);
  if (Failed(encoder->Add(samples, file))) abort();
  encoder->Finish(file);
  std::ranges::copy(encoder->Head(), file.begin());
  if (!DecodesTo(file, samples, format)) abort();
  return 0;
}
