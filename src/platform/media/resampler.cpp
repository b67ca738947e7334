#include "platform/media/resampler.h"

#include <soxr.h>

#include <algorithm>
#include <utility>

namespace ts5 {
namespace {

constexpr std::size_t kSlack = 4096;  // frames that may come out late and all at once
constexpr std::size_t kRoomAtEnd = 4096;
// Beyond it the filter's delay alone is a fortune of samples, and no sound has such rates.
constexpr std::uint64_t kMostRatio = 1024;

struct FreeSoxr {
  void operator()(soxr* resampler) const { soxr_delete(resampler); }
};

}  // namespace

struct Resampler::State {
  std::unique_ptr<::soxr, FreeSoxr> engine;
  std::uint32_t fromRate = 0;
  std::uint32_t toRate = 0;
  std::size_t channels = 0;
  std::uint64_t taken = 0;  // frames
  std::uint64_t given = 0;

  // Room for so many frames behind what out holds; the library writes there, and what it did not fill is cut
  // off again. used and got: frames taken and given.
  Outcome Run(std::span<const double> in, bool end, std::size_t room, std::vector<double>& out,
              std::size_t& used, std::size_t& got) {
    const std::size_t before = out.size();
    out.resize(before + room * channels);
    used = got = 0;
    const soxr_error_t error = soxr_process(engine.get(), end ? nullptr : in.data(), in.size() / channels,
                                            &used, out.data() + before, room, &got);
    out.resize(before + got * channels);
    given += got;
    return error == nullptr ? Outcome::Success : Outcome::OutOfMemory;
  }
};

std::uint64_t ResampledLength(std::uint64_t frames, std::uint32_t fromRate, std::uint32_t toRate) {
  const std::uint64_t whole = frames / fromRate;
  const std::uint64_t rest = frames % fromRate;
  return whole * toRate + (rest * toRate + fromRate / 2) / fromRate;
}

Resampler::Resampler(std::unique_ptr<State> state) : state_(std::move(state)) {}
Resampler::Resampler(Resampler&&) noexcept = default;
Resampler& Resampler::operator=(Resampler&&) noexcept = default;
Resampler::~Resampler() = default;

Result<Resampler> Resampler::Create(std::uint32_t fromRate, std::uint32_t toRate, std::uint32_t channels) {
  if (fromRate == 0 || toRate == 0 || channels == 0) return Failure(Outcome::FormatRefused);
  if (fromRate > toRate * kMostRatio || toRate > fromRate * kMostRatio)
    return Failure(Outcome::FormatRefused);
  soxr_error_t error = nullptr;
  const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT64_I, SOXR_FLOAT64_I);
  const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, SOXR_ROLLOFF_NONE);
  const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
  auto state = std::make_unique<State>();
  state->engine.reset(soxr_create(fromRate, toRate, channels, &error, &io, &quality, &runtime));
  if (!state->engine || error != nullptr) return Failure(Outcome::FormatRefused);
  state->fromRate = fromRate;
  state->toRate = toRate;
  state->channels = channels;
  return Resampler(std::move(state));
}

Outcome Resampler::Process(std::span<const double> in, std::vector<double>& out) {
  State& state = *state_;
  state.taken += in.size() / state.channels;
  while (!in.empty()) {
    const std::uint64_t expected = ResampledLength(in.size() / state.channels, state.fromRate, state.toRate);
    std::size_t used = 0;
    std::size_t got = 0;
    const Outcome run = state.Run(in, false, static_cast<std::size_t>(expected) + kSlack, out, used, got);
    if (Failed(run)) return run;
    if (used == 0 && got == 0) return Outcome::OutOfMemory;  // it takes nothing and has nothing to give
    in = in.subspan(used * state.channels);
  }
  return Outcome::Success;
}

Outcome Resampler::Finish(std::vector<double>& out) {
  State& state = *state_;
  const std::uint64_t whole = ResampledLength(state.taken, state.fromRate, state.toRate);
  for (std::size_t got = 1; got != 0 && state.given < whole;) {
    const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(kRoomAtEnd, whole - state.given));
    std::size_t used = 0;
    if (const Outcome run = state.Run({}, true, room, out, used, got); Failed(run)) return run;
  }
  // A rounding of the library's own at the very end: silence belongs there.
  if (state.given < whole) {
    out.resize(out.size() + static_cast<std::size_t>(whole - state.given) * state.channels, 0.0);
    state.given = whole;
  }
  return Outcome::Success;
}

void Resampler::Reset() {
  (void)soxr_clear(state_->engine.get());
  state_->taken = state_->given = 0;
}

}  // namespace ts5
