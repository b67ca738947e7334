// MIDI files as scores: whatever is read can be written, read again and played.
#include <cstdint>
#include <cstdlib>

#include "converters/transcribe/transcription.h"
#include "score/plain_midi.h"
#include "score/score_reader.h"
#include "score/score_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ts5;
  transcribe::TranscriptionOptions options;
  options.page.barsPerSystem = static_cast<std::uint8_t>(size % 11);
  const auto made = transcribe::TranscribeMidi({data, size}, options);
  if (!made) return 0;
  const auto again = ReadScore(WriteScore(made->score));
  if (!again) abort();
  (void)PlainMidi(*again, {});
  return 0;
}
