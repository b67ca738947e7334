// Moves samples from a source to a sink: on the caller's thread, or on a thread of its own that tells the
// program's event loop how it goes.
//
//   MediaEngine engine(loop);
//   engine.Build(std::move(source), std::move(sink));
//   engine.Start({.position = ShowPosition, .finished = NextFile});
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/media/pcm_stream.h"
#include "platform/programs/event_loop.h"

namespace ts5 {

// Everything from the source to the sink, which is finished at the end. Cancelled, or the failure of either
// side; progress only where the source knows its length.
[[nodiscard]] Outcome CopyPcm(PcmSource& source, PcmSink& sink, const WorkWatch& watch = {});

struct MediaEvents {
  std::function<void(std::uint64_t milliseconds)> position = {};  // of what was taken from the source
  std::function<void(Outcome)> finished = {};                     // the end of the stream, or what went wrong
};

// Used on the thread of the event loop only, where the events arrive too.
class MediaEngine {
 public:
  enum class State : std::uint8_t { None, Built, Running };

  // The loop outlives the engine.
  explicit MediaEngine(EventLoop& loop);
  ~MediaEngine();  // stops and releases
  MediaEngine(const MediaEngine&) = delete;
  MediaEngine& operator=(const MediaEngine&) = delete;

  [[nodiscard]] State GetState() const;
  // Takes both ends; releases what was built before.
  void Build(std::unique_ptr<PcmSource> source, std::unique_ptr<PcmSink> sink);
  // Runs what is built: positions at most every 50 ms and then finished, exactly once, with the state Built
  // again. InvalidParameter: nothing is built, or it runs already.
  [[nodiscard]] Outcome Start(MediaEvents events);
  // Ends the run and waits for its thread (one block of samples at most); no event of it arrives any more.
  // The sink is not finished then.
  void Stop();
  void Release();  // lets source and sink go

 private:
  struct Job;
  EventLoop& loop_;
  std::shared_ptr<Job> job_;
};

}  // namespace ts5
