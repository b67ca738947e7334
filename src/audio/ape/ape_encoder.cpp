#include "audio/ape/ape_encoder.h"

#include <algorithm>

#include "audio/ape/frame_encoder.h"

namespace ts5::ape {
namespace {

constexpr std::size_t kWord = 4;

}  // namespace

Result<Encoder> Encoder::Create(const Format& format, std::optional<std::uint64_t> blocks) {
  if (const Outcome checked = Check(format); Failed(checked)) return Failure(checked);
  const std::uint64_t most = kMostSampleBytes / BytesPerBlock(format);
  if (blocks.value_or(0) > most) return Failure(Outcome::FormatRefused);
  return Encoder(format, blocks.value_or(most));
}

Encoder::Encoder(const Format& format, std::uint64_t mostBlocks)
    : format_(format),
      mostBlocks_(mostBlocks),
      seekTableSize_((mostBlocks + kFrameBlocks - 1) / kFrameBlocks * sizeof(std::uint32_t)) {}

void Encoder::Begin(Bytes& out) const {
  out.insert(out.end(), HeadSize(), 0);
}

Outcome Encoder::Add(std::span<const std::int32_t> interleaved, Bytes& out) {
  const std::size_t whole = std::size_t{kFrameBlocks} * format_.channels;
  if (totals_.blocks + interleaved.size() / format_.channels > mostBlocks_) return Outcome::FormatRefused;
  totals_.blocks += interleaved.size() / format_.channels;
  while (!interleaved.empty()) {
    const auto part = interleaved.first(std::min(interleaved.size(), whole - frame_.size()));
    frame_.insert(frame_.end(), part.begin(), part.end());
    interleaved = interleaved.subspan(part.size());
    if (frame_.size() == whole) CloseFrame(out);
  }
  return Outcome::Success;
}

void Encoder::Finish(Bytes& out) {
  if (!frame_.empty()) CloseFrame(out);
  WriteWords(out, true);
}

void Encoder::CloseFrame(Bytes& out) {
  seeks_.push_back(static_cast<std::uint32_t>(HeadSize() + totals_.audioBytes + ready_.size()));
  EncodeFrame(format_, frame_, ready_);
  frame_.clear();
  WriteWords(out, false);
}

// Frames follow each other without gaps; the words that they make up lie in the file with their lowest byte
// first. The last one is filled up.
void Encoder::WriteWords(Bytes& out, bool all) {
  if (all) ready_.resize((ready_.size() + kWord - 1) / kWord * kWord);
  const std::size_t whole = ready_.size() / kWord * kWord;
  const std::size_t start = out.size();
  for (std::size_t i = 0; i < whole; i += kWord) {
    for (std::size_t byte = kWord; byte-- > 0;) out.push_back(ready_[i + byte]);
  }
  md5_.Add(ByteView(out).subspan(start));
  totals_.audioBytes += whole;
  ready_.erase(ready_.begin(), ready_.begin() + static_cast<std::ptrdiff_t>(whole));
}

// The sum is of what lies behind the head, then of the head without its descriptor.
Bytes Encoder::Head() {
  ByteWriter rest;
  rest.Append(Header(format_, totals_));
  for (const std::uint32_t seek : seeks_) rest.U32Le(seek);
  rest.Fill(HeadSize() - kDescriptorSize - rest.Size(), 0);
  md5_.Add(rest.View());
  ByteWriter head;
  head.Append(Descriptor(totals_, seekTableSize_, md5_.Finish()));
  head.Append(rest.View());
  return head.Release();
}

}  // namespace ts5::ape
