#include "batch/disc_options.h"

#include <algorithm>
#include <vector>

#include "batch/texts.h"
#include "disc/burn_parameters.h"
#include "frame/cd_tracks.h"
#include "platform/base/text.h"

namespace ts5::batch {
namespace {

constexpr std::int64_t kMostPause = 10;  // seconds

// "1,3-5" as 1, 3, 4, 5; nothing when it is anything else.
std::optional<std::vector<int>> ParseTracks(std::string_view text) {
  constexpr std::int64_t kMostTrack = 99;
  std::vector<int> tracks;
  for (const std::string_view part : Split(text, ',')) {
    const auto ends = Split(part, '-');
    const auto first = ParseInteger(Trim(ends.front()));
    const auto last = ParseInteger(Trim(ends.back()));
    if (ends.size() > 2 || !first || !last || *first < 1 || *last > kMostTrack || *first > *last)
      return std::nullopt;
    for (std::int64_t track = *first; track <= *last; ++track) tracks.push_back(static_cast<int>(track));
  }
  return tracks;
}

std::optional<std::string> TakePauses(const std::string& text, Job& job) {
  const auto parts = Split(text, ',');
  if (parts.size() != job.files.Size()) return Format(Text(texts::BatchPausesCount), job.files.Size());
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto pause = ParseInteger(Trim(parts[i]));
    if (!pause || *pause < 0 || *pause > kMostPause) return Format(Text(texts::BatchPauseWrong), parts[i]);
    job.files.SetTimes(i, job.files[i].duration, static_cast<std::uint32_t>(*pause));
  }
  return std::nullopt;
}

std::optional<std::string> TakeTracks(const std::string& text, Job& job) {
  const auto tracks = ParseTracks(text);
  if (!tracks) return Format(Text(texts::BatchTracksWrong), text);
  DirectorySelection chosen;
  chosen.path = job.directory.path;
  for (const int track : *tracks) {
    bool found = false;
    for (std::size_t i = 0; i < job.directory.names.size(); ++i) {
      if (TrackNumberOf(job.directory.names[i]) != track) continue;
      found = true;
      chosen.names.push_back(job.directory.names[i]);
      chosen.indices.push_back(job.directory.indices[i]);
    }
    if (!found) return Format(Text(texts::BatchTrackMissing), track);
  }
  job.directory = std::move(chosen);
  return std::nullopt;
}

// One text a file; the disc gets its CD-TEXT with them.
std::optional<std::string> TakeTexts(std::string_view option, const std::string& text,
                                     std::string CdText::Entry::*which, Job& job) {
  const auto parts = Split(text, '|');
  auto* const parameters = job.parameters.If<disc::BurnParameters>();
  if (parameters == nullptr || parts.size() != job.files.Size())
    return Format(Text(texts::BatchTextsCount), option, job.files.Size());
  parameters->cdText = true;
  for (std::size_t i = 0; i < parts.size(); ++i)
    parameters->texts[job.files[i].path].*which = std::string(Trim(parts[i]));
  return std::nullopt;
}

}  // namespace

void AddDiscOptions(Arguments& arguments, DiscOptions& options) {
  arguments.Option("--drive", "LAUFWERK", options.drive, texts::BatchHelpDrive);
  arguments.Option("--source", "LAUFWERK", options.source, texts::BatchHelpSourceDrive);
  arguments.Option("--pauses", "N,N...", options.pauses, texts::BatchHelpPauses);
  arguments.Option("--titles", "T|T...", options.titles, texts::BatchHelpTitles);
  arguments.Option("--performers", "T|T...", options.performers, texts::BatchHelpPerformers);
  arguments.Option("--tracks", "N,N-N...", options.tracks, texts::BatchHelpTracks);
}

std::optional<std::string> TakeDiscOptions(const DiscOptions& options, Job& job, RunDevices& devices) {
  for (const auto& drive : {options.drive, options.source}) {
    if (drive && !IsCdDrive(*drive) && !CdDirectoryOf(*drive))
      return Format(Text(texts::BatchDriveUnknown), *drive);
  }
  devices.recorder = options.drive.value_or("");
  devices.source = options.source.value_or("");
  if (options.pauses) {
    if (auto fault = TakePauses(*options.pauses, job)) return fault;
  }
  if (options.titles) {
    if (auto fault = TakeTexts("--titles", *options.titles, &CdText::Entry::title, job)) return fault;
  }
  if (options.performers) {
    if (auto fault = TakeTexts("--performers", *options.performers, &CdText::Entry::performer, job))
      return fault;
  }
  return options.tracks ? TakeTracks(*options.tracks, job) : std::nullopt;
}

}  // namespace ts5::batch
