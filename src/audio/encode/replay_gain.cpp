#include "audio/encode/replay_gain.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <mutex>
#include <string>

#include "audio/encode/texts.h"
#include "audio/tags/tag_file.h"
#include "audio/wave_stream.h"
#include "frame/run.h"
#include "platform/base/casts.h"
#include "platform/base/parallel.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "platform/media/media_engine.h"

namespace ts5::encode {
namespace {

constexpr double kReplayGainLevel = -18;  // LUFS
constexpr double kOpusLevel = -23;

std::string AlbumOf(const std::string& source, const tags::Attributes& job) {
  constexpr std::string_view kAlbum = "WM/AlbumTitle";
  const tags::Attribute* const chosen = tags::FindAttribute(job, kAlbum);
  if (chosen != nullptr && chosen->ToBeWritten()) return chosen->value;
  const auto own = tags::ReadAttributes(source);
  const tags::Attribute* const said = own ? tags::FindAttribute(*own, kAlbum) : nullptr;
  return said != nullptr && said->HasValue() ? said->value : "/" + std::string(DirectoryOf(source));
}

class GainRun {
 public:
  GainRun(Run& run, const tags::Attributes& job)
      : run_(run), job_(job), gains_(run.ItemCount()), albumOf_(gains_.size()) {}

  Result<std::vector<TrackGain>> Execute() {
    InParallel(gains_.size(), [this](std::size_t index) {
      if (run_.Cancelled()) return;
      run_.Progress(ClampTo<std::uint32_t>(++begun_), ClampTo<std::uint32_t>(gains_.size()));
      Measure(index);
    });
    if (run_.Cancelled()) return Failure(Outcome::Cancelled);
    std::map<std::string, Loudness> albums;
    for (const auto& [name, meter] : meters_) albums.emplace(name, meter.Result());
    for (std::size_t i = 0; i < gains_.size(); ++i) {
      const auto album = albums.find(albumOf_[i]);
      if (gains_[i].track && album != albums.end()) gains_[i].album = album->second;
    }
    return std::move(gains_);
  }

 private:
  void Measure(std::size_t index) {
    const std::string source = run_.Source(index);
    auto pcm = OpenPcm(source);
    if (!pcm) return;
    LoudnessSink sink((*pcm)->Shape());
    const WorkWatch watch{[this] { return run_.Cancelled(); }, {}};
    if (Failed(CopyPcm(**pcm, sink, watch))) return;
    gains_[index].track = sink.Measured();
    albumOf_[index] = AlbumOf(source, job_);
    // Sums of energies are those of any order but for their last digits, which nobody sees.
    const std::lock_guard lock(mutex_);
    const auto [album, added] = meters_.try_emplace(albumOf_[index], sink.Meter());
    if (!added) album->second.Join(sink.Meter());
  }

  Run& run_;
  const tags::Attributes& job_;
  std::vector<TrackGain> gains_;
  std::vector<std::string> albumOf_;
  std::atomic<std::size_t> begun_ = 0;
  std::mutex mutex_;  // guards the meters
  std::map<std::string, LoudnessMeter> meters_;
};

void AddText(tags::Attributes& attributes, std::string name, std::string value) {
  attributes.push_back({tags::AttributeType::String, std::move(name), std::move(value), false, true});
}

void Add(tags::Attributes& attributes, std::string_view scope, const std::optional<Loudness>& loudness,
         bool opus) {
  if (!loudness || !loudness->integrated) return;
  if (opus) {
    const auto gain = std::clamp(std::lround((kOpusLevel - *loudness->integrated) * 256), -32768L, 32767L);
    return AddText(attributes, Format("R128_%s_GAIN", scope), std::to_string(gain));
  }
  AddText(attributes, Format("REPLAYGAIN_%s_GAIN", scope),
          Format("%+.2f dB", kReplayGainLevel - *loudness->integrated));
  if (loudness->truePeak)
    AddText(attributes, Format("REPLAYGAIN_%s_PEAK", scope),
            Format("%.6f", std::pow(10.0, *loudness->truePeak / 20)));
}

}  // namespace

Result<std::vector<TrackGain>> MeasureGains(Run& run, const tags::Attributes& job) {
  run.TaskText(Text(texts::CompressMeasuring));
  return GainRun(run, job).Execute();
}

tags::Attributes GainAttributes(const TrackGain& gain, std::string_view extension) {
  const bool opus = EqualsIgnoringCase(extension, "opus");
  tags::Attributes attributes;
  Add(attributes, "TRACK", gain.track, opus);
  Add(attributes, "ALBUM", gain.album, opus);
  return attributes;
}

}  // namespace ts5::encode
