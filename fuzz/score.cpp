// Score files: the information, every record of the body, the engine over all of it and the melody search.
#include <cstdint>
#include <cstdlib>

#include "midi/midi_file.h"
#include "score/score_midi.h"
#include "score/score_properties.h"
#include "search/score_search.h"

namespace {

using namespace ts5;

class Balance : public ScoreSink {
 public:
  void Message(std::size_t, std::uint32_t message) override {
    if ((message & 0xF0) != 0x90) return;
    balance_ += (message >> 16 & 0xFF) != 0 ? 1 : -1;
    if (balance_ < 0) abort();
  }
  void Meta(std::size_t, std::uint8_t, ByteView) override {}
  void Advance(std::uint64_t) override {}
  [[nodiscard]] bool Even() const { return balance_ == 0; }

 private:
  std::int64_t balance_ = 0;
};

// Two notes in any key: hits are told of where they can be.
void SearchIn(ByteView file, const ScoreFileInfo& info) {
  MelodyQuery query;
  query.elements = {{60, 240}, {62, 240}};
  query.options = {RhythmMode::Relative, Tolerance::None, PitchMode::Relative, false, true};
  const HitSink sink = [&](const SearchHit& hit) {
    const bool inside = hit.bar >= -1 && static_cast<std::uint32_t>(hit.lastSystem) < info.systems &&
                        hit.firstSystem <= hit.lastSystem && hit.track >= 0 &&
                        static_cast<std::size_t>(hit.track) < info.staves.size();
    if (!inside) abort();
    return Outcome::Success;
  };
  (void)SearchScoreImage(file, "x.stv", query, sink, {});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteView file(data, size);
  const auto info = ReadScoreInfo(file);
  if (!info) return 0;
  (void)ScorePropertyRows(*info, {});
  SearchIn(file, *info);
  PlaybackParameters parameters;
  const auto score = OpenAndScan(Bytes(file.begin(), file.end()), parameters);
  if (!score) return 0;

  // A score that repeats much is long to play; its steps are bounded here, its end is not reached then.
  constexpr int kMostSteps = 20'000;
  ScoreOptions options;
  options.leadIn = score->scan.leadIn;
  Balance balance;
  ScoreEngine engine(score->file, score->info, score->voices, parameters, options, &balance);
  if (Failed(engine.Begin())) abort();
  for (int i = 0; i < kMostSteps && !engine.AtEnd(); ++i) {
    if (Failed(engine.Step())) break;
  }
  engine.Finish();
  if (!balance.Even()) abort();
  return 0;
}
