#include "audio/ape/ape_sink.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "audio/ape/ape_encoder.h"

namespace ts5 {
namespace {

class ApeSink : public PcmSink {
 public:
  ApeSink(StagedFile& target, ape::Encoder encoder, std::uint32_t bits)
      : target_(target), encoder_(std::move(encoder)), full_(std::ldexp(1.0, static_cast<int>(bits) - 1)) {}

  Outcome Begin() {
    encoder_.Begin(ready_);
    return WriteReady();
  }

  Outcome Write(std::span<const double> interleaved) override {
    samples_.resize(interleaved.size());
    std::ranges::transform(interleaved, samples_.begin(), [this](double sample) {
      return static_cast<std::int32_t>(std::lrint(std::clamp(sample * full_, -full_, full_ - 1)));
    });
    if (const Outcome added = encoder_.Add(samples_, ready_); Failed(added)) return added;
    return WriteReady();
  }

  Outcome Finish() override {
    encoder_.Finish(ready_);
    if (const Outcome written = WriteReady(); Failed(written)) return written;
    return target_.WriteAt(0, encoder_.Head());
  }

 private:
  Outcome WriteReady() {
    const Outcome written = target_.Write(ready_);
    ready_.clear();
    return written;
  }

  StagedFile& target_;
  ape::Encoder encoder_;
  double full_;
  std::vector<std::int32_t> samples_;
  Bytes ready_;
};

}  // namespace

Result<std::unique_ptr<PcmSink>> OpenApeSink(StagedFile& target, const ape::Format& format,
                                             std::optional<std::uint64_t> frames) {
  auto encoder = ape::Encoder::Create(format, frames);
  if (!encoder) return Failure(encoder.error());
  auto sink = std::make_unique<ApeSink>(target, std::move(*encoder), format.bits);
  if (const Outcome begun = sink->Begin(); Failed(begun)) return Failure(begun);
  return sink;
}

}  // namespace ts5
