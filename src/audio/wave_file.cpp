#include "audio/wave_file.h"

#include <algorithm>
#include <utility>

#include "audio/aiff_layout.h"
#include "platform/files/directories.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kFactWhileWriting = 0xFFFFFFFF;
constexpr std::uint32_t kFactWhenClosed = 0;
constexpr std::size_t kCopyBlock = std::size_t{1} << 17;

// Sounds that came with the program, by the kinds of resources in which they may lie.
Result<InputFile> OpenResource(const std::string& name) {
  for (const char* kind : {"WAVE", "WAV"}) {
    auto file = InputFile::Open(JoinPath(JoinPath(InstalledDirectory(), kind), FileNameOf(name)));
    if (file) return file;
  }
  return Failure(Outcome::SourceFailed);
}

}  // namespace

WaveFile::WaveFile(InputFile file, WaveLayout layout) : layout_(std::move(layout)) {
  file.ExpectSequentialReads();
  source_ = std::move(file);
}

Result<InputFile> WaveFile::OpenSound(const std::string& name) {
  auto file = InputFile::Open(name);
  if (!file && !FileExists(name)) return OpenResource(name);
  return file;
}

Result<WaveFile> WaveFile::Open(const std::string& name) {
  auto file = OpenSound(name);
  if (!file) return Failure(file.error());
  return Read(std::move(*file));
}

Result<WaveFile> WaveFile::Read(InputFile file) {
  auto layout = ReadWaveLayout(file);
  if (!layout) return Failure(layout.error());
  return WaveFile(std::move(file), std::move(*layout));
}

Result<WaveFile> WaveFile::ReadAiff(InputFile file) {
  auto layout = ReadAiffLayout(file);
  if (!layout) return Failure(layout.error());
  return WaveFile(std::move(file), std::move(*layout));
}

Result<WaveFile> WaveFile::Create(const std::string& name, WaveFormat format, std::uint64_t expectedData) {
  auto target = StagedFile::Create(name);
  if (!target) return Failure(target.error());
  WaveFile wave;
  wave.own_ = std::move(*target);
  if (const Outcome begun = wave.Begin(std::move(format), expectedData); Failed(begun)) return Failure(begun);
  return wave;
}

Result<WaveFile> WaveFile::CreateIn(StagedFile& target, WaveFormat format, std::uint64_t expectedData) {
  WaveFile wave;
  wave.external_ = &target;
  if (const Outcome begun = wave.Begin(std::move(format), expectedData); Failed(begun)) return Failure(begun);
  return wave;
}

Result<WaveFile> WaveFile::EditIn(StagedFile& target) {
  auto file = InputFile::Open(target.TemporaryPath());
  if (!file) return Failure(file.error());
  auto wave = Read(std::move(*file));
  if (!wave) return wave;
  if (!wave->layout_.LiesAsInRiff()) return Failure(Outcome::WrongFormat);
  wave->mode_ = Mode::Edit;
  wave->external_ = &target;
  return wave;
}

Result<WaveFile> WaveFile::Edit(const std::string& name) {
  auto from = InputFile::Open(name);
  if (!from) return Failure(from.error());
  auto copy = StagedFile::Create(name);
  if (!copy) return Failure(copy.error());
  Bytes block(kCopyBlock);
  for (std::uint64_t at = 0; at < from->Size();) {
    const auto got = from->ReadAt(at, block);
    if (!got) return Failure(got.error());
    if (*got == 0) return Failure(Outcome::ReadFailed);
    if (const Outcome copied = copy->Write(ByteView(block).first(*got)); Failed(copied))
      return Failure(copied);
    at += *got;
  }
  auto wave = EditIn(*copy);
  if (!wave) return wave;
  wave->external_ = nullptr;
  wave->own_ = std::move(*copy);
  return wave;
}

Outcome WaveFile::Begin(WaveFormat format, std::uint64_t expectedData) {
  layout_.format = std::move(format);
  mode_ = Mode::Create;
  rf64_ = NeedsRf64(layout_.format, expectedData);
  start_ = Target().Size();
  return Target().Write(WaveHeader(layout_.format, 0, kFactWhileWriting, rf64_));
}

Result<std::size_t> WaveFile::Read(std::span<std::uint8_t> buffer) {
  if (!source_) return Failure(Outcome::ReadFailed);
  auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), DataSize()));
  const bool turned = !layout_.LiesAsInRiff();
  if (turned) wanted -= wanted % SampleSize(SampleTypeOf(layout_.format).value_or(SampleType::Unsigned8));
  const auto got = source_->ReadAt(layout_.dataOffset + position_, buffer.first(wanted));
  if (!got) return Failure(got.error());
  if (*got < wanted) return Failure(Outcome::ReadFailed);
  if (turned) BringToRiff(layout_, buffer.first(wanted));
  position_ += *got;
  return *got;
}

void WaveFile::SeekTo(std::uint64_t dataByte) {
  if (mode_ != Mode::Create) position_ = std::min(dataByte, layout_.dataSize);
}

Outcome WaveFile::Write(ByteView samples) {
  if (mode_ == Mode::Read || closed_) return Outcome::WriteFailed;
  const bool fits = mode_ == Mode::Edit ? samples.size() <= DataSize()
                                        : rf64_ || !NeedsRf64(layout_.format, position_ + samples.size());
  if (!fits) return Outcome::WriteFailed;
  const Outcome written = mode_ == Mode::Edit ? Target().WriteAt(layout_.dataOffset + position_, samples)
                                              : Target().Write(samples);
  if (Succeeded(written)) position_ += samples.size();
  return written;
}

Outcome WaveFile::Close() {
  if (mode_ == Mode::Read || closed_) return Outcome::Success;
  closed_ = true;
  if (mode_ == Mode::Create) {
    constexpr std::uint8_t kPadding[] = {0};
    if (position_ % 2 != 0) {
      if (const Outcome padded = Target().Write(kPadding); Failed(padded)) return padded;
    }
    const Bytes header = WaveHeader(layout_.format, position_, kFactWhenClosed, rf64_);
    if (const Outcome patched = Target().WriteAt(start_, header); Failed(patched)) return patched;
  }
  return own_ ? own_->Commit() : Outcome::Success;
}

}  // namespace ts5
