#include "audio/audio_title.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "audio/wave_stream.h"
#include "audio/waveform_overview.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr std::size_t kBlockFrames = 1024;
constexpr std::size_t kFadeFrames = 128;  // where a passage ends and begins, so that nothing clicks
constexpr auto kPoll = 5ms;

enum class Fade { In, Out };

// The first frames grow from nothing, or the last ones die away.
void Soften(std::span<float> samples, Fade fade) {
  const std::size_t frames = std::min(kFadeFrames, samples.size() / kPlayerChannels);
  const std::size_t begin = fade == Fade::In ? 0 : samples.size() - frames * kPlayerChannels;
  for (std::size_t i = 0; i < frames * kPlayerChannels; ++i) {
    const float part = (static_cast<float>(i / kPlayerChannels) + 0.5F) / static_cast<float>(frames);
    samples[begin + i] *= fade == Fade::In ? part : 1 - part;
  }
}

}  // namespace

AudioTitle::AudioTitle(std::unique_ptr<PcmSource> source, PlayerSoundDevice& sound, std::string name)
    : source_(std::move(source)),
      sound_(sound),
      name_(std::move(name)),
      frames_(source_->Frames().value_or(0)),
      block_(kBlockFrames * kPlayerChannels),
      samples_(block_.size()) {}

void AudioTitle::ReportWaveform(std::string path, PlayerControl& control) {
  overview_ = std::jthread([path = std::move(path), &control](const std::stop_token& stop) {
    const auto own = OpenPcm(path);
    if (!own) return;
    auto waveform = OverviewOf(**own, kOverviewParts, {[&stop] { return stop.stop_requested(); }, {}});
    if (waveform) control.ReportWaveform(path, std::make_shared<const Waveform>(*std::move(waveform)));
  });
}

Outcome AudioTitle::Play(nanoseconds end) {
  PlayerStream& stream = sound_.stream;
  const std::uint64_t last = end >= Duration() ? UINT64_MAX : FrameAt(end);
  bool ended = false;
  stream.SetPaused(paused_);
  sound_.Forget();
  played_.Begin(0, speed_);
  while (!stop_) {
    if (const auto place = TakeOrders()) {
      GoTo(*place);
      ended = false;
    }
    if (sound_.started && !sound_.output->Alive()) return Outcome::WriteFailed;
    if (Forward()) continue;
    if (ended) {
      if (!sound_.Start()) return Outcome::WriteFailed;
      if (stream.Fifo().Size() == 0) return Outcome::Success;
      std::this_thread::sleep_for(kPoll);
    } else if (stream.Fifo().Room() < samples_.size()) {
      std::this_thread::sleep_for(kPoll);
    } else {
      const auto more = Feed(last);
      if (!more) return more.error();
      ended = !*more;
      if (ended && tempo_) tempo_->Finish();
      if (stream.HasEnoughToBegin() && !sound_.Start()) return Outcome::WriteFailed;
    }
  }
  sound_.Forget();
  return Outcome::Cancelled;
}

std::optional<std::uint64_t> AudioTitle::TakeOrders() {
  const std::lock_guard lock(mutex_);
  auto place = std::exchange(seek_, std::nullopt);
  const auto wanted = std::exchange(wanted_, std::nullopt);
  if (!wanted) return place;
  std::optional<Passage> passage;
  if (wanted->passage) {
    passage = Passage{FrameAt(wanted->passage->from), FrameAt(wanted->passage->to)};
  }
  const bool same = wanted->Rate() == speed_ && passage.has_value() == passage_.has_value() &&
                    (!passage || (passage->from == passage_->from && passage->to == passage_->to));
  if (same) return place;
  // What was decoded ahead is of the old practice.
  if (!place) place = PlayedFrame();
  if (passage && (*place < passage->from || *place >= passage->to)) place = passage->from;
  passage_ = passage;
  speed_ = wanted->Rate();
  if (speed_ == 1) {
    tempo_.reset();
  } else {
    if (!tempo_) tempo_.emplace(sound_.stream.Rate(), kPlayerChannels);
    tempo_->SetSpeed(speed_);
  }
  return place;
}

// What cannot be searched plays on.
void AudioTitle::GoTo(std::uint64_t frame) {
  if (Succeeded(source_->Seek(frame))) next_ = frame;
  if (tempo_) tempo_->Clear();
  sound_.Forget();
  fed_ = 0;
  jumped_ = false;
  played_.Begin(next_, speed_);
}

Result<bool> AudioTitle::Feed(std::uint64_t last) {
  if (passage_ && next_ >= passage_->to && !EndOfPassage()) passage_.reset();
  const std::uint64_t limit = passage_ ? passage_->to : last;
  const auto wanted = std::min<std::uint64_t>(kBlockFrames, limit > next_ ? limit - next_ : 0);
  const auto got = wanted == 0 ? Result<std::size_t>(std::size_t{0})
                               : source_->Read(std::span(block_).first(wanted * kPlayerChannels));
  if (!got) return Failure(got.error());
  if (*got == 0) {
    // Shorter than it said: the passage ends here.
    if (!passage_ || next_ <= passage_->from) return false;
    passage_->to = next_;
    return true;
  }
  const std::span<float> samples = std::span(samples_).first(*got * kPlayerChannels);
  std::transform(block_.begin(), block_.begin() + static_cast<std::ptrdiff_t>(samples.size()),
                 samples.begin(), [](double sample) { return static_cast<float>(sample); });
  next_ += *got;
  fed_ += static_cast<double>(*got) / speed_;
  if (std::exchange(jumped_, false)) Soften(samples, Fade::In);
  if (passage_ && next_ == passage_->to) Soften(samples, Fade::Out);
  if (tempo_) {
    tempo_->Put(samples);
  } else {
    sound_.stream.Fifo().Put(samples);
  }
  return true;
}

// Back to its beginning, without a rest. False where the source cannot be searched.
bool AudioTitle::EndOfPassage() {
  if (Failed(source_->Seek(passage_->from))) return false;
  next_ = passage_->from;
  jumped_ = true;
  played_.Jump(static_cast<std::uint64_t>(fed_), next_);
  return true;
}

bool AudioTitle::Forward() {
  if (!tempo_ || sound_.stream.Fifo().Room() < samples_.size()) return false;
  const std::size_t count = tempo_->Take(samples_);
  sound_.stream.Fifo().Put(std::span(samples_).first(count));
  return count > 0;
}

void AudioTitle::Pause() {
  paused_ = true;
  sound_.stream.SetPaused(true);
}

void AudioTitle::Resume() {
  paused_ = false;
  sound_.stream.SetPaused(false);
}

void AudioTitle::Seek(nanoseconds position) {
  const std::lock_guard lock(mutex_);
  seek_ = std::min(FrameAt(position), frames_);
}

void AudioTitle::Practise(const Practice& practice) {
  const std::lock_guard lock(mutex_);
  wanted_ = practice;
}

nanoseconds AudioTitle::Position() const {
  const std::lock_guard lock(mutex_);
  return std::min(TimeOf(seek_.value_or(PlayedFrame())), Duration());
}

std::uint64_t AudioTitle::PlayedFrame() const {
  return played_.FrameAt(sound_.stream.Played());
}

nanoseconds AudioTitle::TimeOf(std::uint64_t frame) const {
  return nanoseconds(static_cast<std::int64_t>(static_cast<double>(frame) * 1e9 / sound_.stream.Rate()));
}

std::uint64_t AudioTitle::FrameAt(nanoseconds time) const {
  return static_cast<std::uint64_t>(
      std::llround(static_cast<double>(std::max(time, nanoseconds{0}).count()) / 1e9 * sound_.stream.Rate()));
}

}  // namespace ts5
