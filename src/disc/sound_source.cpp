#include "disc/sound_source.h"

#include <utility>

#include "audio/wave_file.h"

namespace ts5::disc {
namespace {

class WaveSoundSource final : public SoundSource {
 public:
  explicit WaveSoundSource(WaveFile file) : file_(std::move(file)) {}
  Result<std::size_t> Read(std::span<std::uint8_t> out) override { return file_.Read(out); }

 private:
  WaveFile file_;
};

Result<WaveFile> OpenWave(const std::string& path) {
  auto file = WaveFile::Open(path);
  if (!file) return file;
  const WaveFormat& format = file->Format();
  const WaveFormat disc = AudioCdFormat();
  if (SampleTypeOf(format) != SampleType::Signed16 || format.channels != disc.channels ||
      format.sampleRate != disc.sampleRate)
    return Failure(Outcome::WrongFormat);
  return file;
}

}  // namespace

Result<std::unique_ptr<SoundSource>> WaveSound(const std::string& path) {
  auto file = OpenWave(path);
  if (!file) return Failure(file.error());
  return std::make_unique<WaveSoundSource>(*std::move(file));
}

Result<std::uint64_t> WaveSoundBytes(const std::string& path) {
  const auto file = OpenWave(path);
  if (!file) return Failure(file.error());
  return file->DataSize();
}

}  // namespace ts5::disc
