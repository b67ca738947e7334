#include "platform/media/wave_sink.h"

#include "platform/media/pcm_stream.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kHeaderSize = 44;
// The data of a plain RIFF file ends here.
constexpr std::uint64_t kMaxData = 0xFFFFFFFFU - kHeaderSize;

}  // namespace

Result<WaveSink> WaveSink::Create(const std::string& path, std::uint32_t sampleRate, std::uint32_t channels) {
  auto file = StagedFile::Create(path);
  if (!file) return Failure(file.error());
  WaveSink sink(*std::move(file), sampleRate, channels);
  if (const Outcome written = sink.file_->Write(sink.Header()); Failed(written)) return Failure(written);
  return sink;
}

void WaveSink::Write(std::span<const float> interleaved) {
  const std::uint64_t size = interleaved.size() * sizeof(std::int16_t);
  if (Failed(state_) || !file_ || dataSize_ + size > kMaxData) return;
  ByteWriter samples;
  samples.Reserve(size);
  for (const float sample : interleaved) {
    samples.U16Le(static_cast<std::uint16_t>(Sample16(sample)));
  }
  state_ = file_->Write(samples.View());
  dataSize_ += size;
}

Outcome WaveSink::Finish() {
  if (!file_) return state_;
  if (Succeeded(state_)) state_ = file_->WriteAt(0, Header());
  if (Succeeded(state_)) state_ = file_->Commit();
  file_.reset();
  return state_;
}

Bytes WaveSink::Header() const {
  const std::uint32_t frameSize = channels_ * 2;
  ByteWriter header;
  header.Append("RIFF");
  header.U32Le(static_cast<std::uint32_t>(dataSize_) + kHeaderSize - 8);
  header.Append("WAVEfmt ");
  header.U32Le(16);
  header.U16Le(1);
  header.U16Le(static_cast<std::uint16_t>(channels_));
  header.U32Le(sampleRate_);
  header.U32Le(sampleRate_ * frameSize);
  header.U16Le(static_cast<std::uint16_t>(frameSize));
  header.U16Le(16);
  header.Append("data");
  header.U32Le(static_cast<std::uint32_t>(dataSize_));
  return header.Release();
}

}  // namespace ts5
