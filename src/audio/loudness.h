// How loud a piece is, as broadcasters measure it: the integrated loudness of EBU R 128 and the true peak,
// both by ITU-R BS.1770-4. Memory does not depend on the length.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

struct Loudness {
  // LUFS; nothing when no 400 ms of it are louder than -70 LUFS, as in silence and in very short sounds, and
  // for sample rates below 4 kHz, for which the measure is not made.
  std::optional<double> integrated;
  std::optional<double> truePeak;  // dBTP; nothing in silence
};

class LoudnessMeter {
 public:
  explicit LoudnessMeter(const PcmShape& shape);
  void Add(std::span<const double> interleaved);
  // Takes in what another meter has measured, as if it were another part of the same piece: of an album.
  void Join(const LoudnessMeter& other);
  [[nodiscard]] Loudness Result() const;

 private:
  struct Biquad {
    double b0, b1, b2, a1, a2;
  };
  static constexpr std::size_t kTaps = 12;
  struct Channel {
    double weight = 1;
    std::array<double, 2> shelf{};
    std::array<double, 2> highPass{};
    double energy = 0;  // of the step at hand, weighted
    // The last samples, twice one behind the other, so that they always lie in one piece.
    std::array<double, 2 * kTaps> history{};
    std::size_t place = 0;
  };
  // Measuring blocks by their loudness, in bins of a hundredth of an LU.
  struct Bin {
    std::uint64_t blocks = 0;
    double energy = 0;
  };

  void Weigh(Channel& channel, std::span<const double> in, std::size_t stride);
  void RaisePeak(Channel& channel, std::span<const double> in, std::size_t stride);
  void EndStep();

  std::uint32_t rate_;
  Biquad shelf_{};
  Biquad highPass_{};
  std::vector<Channel> channels_;
  std::vector<Bin> bins_;
  std::array<double, 4> steps_{};  // energies of the last steps of 100 ms
  std::uint64_t stepCount_ = 0;
  std::uint64_t stepLength_ = 0;
  std::uint64_t framesInStep_ = 0;
  double peak_ = 0;
};

// What is written to it is measured.
class LoudnessSink final : public PcmSink {
 public:
  explicit LoudnessSink(const PcmShape& shape) : meter_(shape) {}
  Outcome Write(std::span<const double> interleaved) override {
    meter_.Add(interleaved);
    return Outcome::Success;
  }
  Outcome Finish() override { return Outcome::Success; }
  [[nodiscard]] const LoudnessMeter& Meter() const { return meter_; }
  [[nodiscard]] Loudness Measured() const { return meter_.Result(); }

 private:
  LoudnessMeter meter_;
};

// Reads the source to its end.
[[nodiscard]] Result<Loudness> MeasureLoudness(PcmSource& source, const WorkWatch& watch = {});

}  // namespace ts5
