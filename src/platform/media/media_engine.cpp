#include "platform/media/media_engine.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>
#include <thread>
#include <utility>
#include <vector>

namespace ts5 {
namespace {

constexpr std::size_t kBlockSamples = 16384;  // a block stays in the cache of the processor
constexpr std::chrono::milliseconds kPositionInterval{50};

using Watch = std::function<bool(std::uint64_t frames)>;  // false: stop

Outcome Pump(PcmSource& source, PcmSink& sink, const Watch& goOn) {
  try {
    const std::size_t channels = source.Shape().channels;
    std::vector<double> block(std::max<std::size_t>(1, kBlockSamples / channels) * channels);
    for (std::uint64_t frames = 0;;) {
      if (!goOn(frames)) return Outcome::Cancelled;
      const auto got = source.Read(block);
      if (!got) return got.error();
      if (*got == 0) return sink.Finish();
      if (const Outcome written = sink.Write(std::span(block).first(*got * channels)); Failed(written))
        return written;
      frames += *got;
    }
  } catch (const std::bad_alloc&) {
    return Outcome::OutOfMemory;
  }
}

}  // namespace

Outcome CopyPcm(PcmSource& source, PcmSink& sink, const WorkWatch& watch) {
  const std::uint64_t total = source.Frames().value_or(0);
  return Pump(source, sink, [&](std::uint64_t frames) {
    if (watch.progress && total != 0)
      watch.progress(static_cast<double>(std::min(frames, total)) / static_cast<double>(total));
    return !watch.cancelled || !watch.cancelled();
  });
}

struct MediaEngine::Job : std::enable_shared_from_this<MediaEngine::Job> {
  Job(std::unique_ptr<PcmSource> from, std::unique_ptr<PcmSink> to)
      : source(std::move(from)), sink(std::move(to)) {}

  void Run(EventLoop& loop) {
    auto lastSent = std::chrono::steady_clock::now();
    const Outcome outcome = Pump(*source, *sink, [&](std::uint64_t frames) {
      if (stop) return false;
      const auto now = std::chrono::steady_clock::now();
      if (frames != 0 && now - lastSent >= kPositionInterval) {
        lastSent = now;
        const std::uint64_t position = frames * 1000 / source->Shape().sampleRate;
        loop.Post([self = shared_from_this(), position] {
          if (self->running && self->events.position) self->events.position(position);
        });
      }
      return true;
    });
    loop.Post([self = shared_from_this(), outcome] {
      if (!self->running) return;
      self->running = false;
      if (self->thread.joinable()) self->thread.join();
      // A copy: the handler may start the engine again or release it.
      if (const auto finished = self->events.finished) finished(outcome);
    });
  }

  std::unique_ptr<PcmSource> source;
  std::unique_ptr<PcmSink> sink;
  MediaEvents events;
  bool running = false;  // as the thread of the loop sees it
  std::atomic<bool> stop = false;
  std::thread thread;
};

MediaEngine::MediaEngine(EventLoop& loop) : loop_(loop) {}

MediaEngine::~MediaEngine() {
  Release();
}

MediaEngine::State MediaEngine::GetState() const {
  if (!job_) return State::None;
  return job_->running ? State::Running : State::Built;
}

void MediaEngine::Build(std::unique_ptr<PcmSource> source, std::unique_ptr<PcmSink> sink) {
  Release();
  job_ = std::make_shared<Job>(std::move(source), std::move(sink));
}

Outcome MediaEngine::Start(MediaEvents events) {
  if (GetState() != State::Built) return Outcome::InvalidParameter;
  job_->events = std::move(events);
  job_->stop = false;
  job_->running = true;
  job_->thread = std::thread([job = job_.get(), &loop = loop_] { job->Run(loop); });
  return Outcome::Success;
}

void MediaEngine::Stop() {
  if (!job_) return;
  job_->running = false;
  job_->stop = true;
  if (job_->thread.joinable()) job_->thread.join();
}

void MediaEngine::Release() {
  Stop();
  job_.reset();
}

}  // namespace ts5
