#include "modules/disc_facts.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "audio/playing_time.h"
#include "audio/tags/tag_file.h"
#include "disc/burn_parameters.h"
#include "disc/disc_memory.h"
#include "disc/track_texts.h"
#include "frame/cd_tracks.h"
#include "frame/filter_catalogue.h"
#include "modules/measured_times.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

using artworker::DiscFacts;
using artworker::DiscTrack;

constexpr std::uint64_t kUnitsPerSecond = 10'000'000;

// The entries of the list with their times, or what is chosen in the directory.
std::vector<FileListEntry> SourcesOf(const Job& job) {
  std::vector<FileListEntry> entries;
  const bool list = job.Mode() == SourceMode::List;
  const std::size_t count = list ? job.files.Size() : ItemCount(job);
  for (std::size_t i = 0; i < std::min(count, kMaxBurnerEntries); ++i)
    entries.push_back(list ? job.files[i] : EntryFromPath(ItemSource(job, i)));
  return entries;
}

class Reader {
 public:
  Reader(const disc::BurnParameters* burner, DiscReading reading) : burner_(burner), reading_(reading) {}

  DiscFacts Read(const std::vector<FileListEntry>& entries) {
    DiscFacts facts;
    std::vector<std::string> albums;
    for (const FileListEntry& entry : entries) {
      Source source = ReadSource(entry);
      albums.push_back(std::move(source.album));
      facts.tracks.push_back(std::move(source.track));
    }
    if (burner_ != nullptr) {
      facts.title = burner_->title;
      facts.performer = burner_->performer;
    }
    // What all tracks say alike goes for the disc.
    if (facts.tracks.empty()) return facts;
    const bool oneAlbum =
        std::ranges::all_of(albums, [&](const auto& album) { return album == albums.front(); });
    if (facts.title.empty() && oneAlbum) facts.title = albums.front();
    const std::string& performer = facts.tracks.front().performer;
    const bool onePerformer = std::ranges::all_of(
        facts.tracks, [&](const DiscTrack& track) { return track.performer == performer; });
    if (facts.performer.empty() && onePerformer) facts.performer = performer;
    return facts;
  }

 private:
  struct Source {
    DiscTrack track;
    std::string album;
  };

  Source ReadSource(const FileListEntry& entry) {
    Source source;
    CdText::Entry text;
    if (burner_ != nullptr) {
      if (const auto entered = burner_->texts.find(entry.path); entered != burner_->texts.end())
        text = entered->second;
    }
    CdText::Entry own = entry.cdTrack ? OfTrack(entry.path, source.album) : OfFile(entry.path, source.album);
    if (text.title.empty()) text.title = std::move(own.title);
    if (text.performer.empty()) text.performer = std::move(own.performer);
    source.track.title = std::move(text.title);
    source.track.performer = std::move(text.performer);
    const std::uint64_t seconds =
        entry.duration != 0 ? entry.duration : (TimeOf(entry) + kUnitsPerSecond / 2) / kUnitsPerSecond;
    source.track.time = std::chrono::seconds(seconds);
    return source;
  }

  [[nodiscard]] std::uint64_t TimeOf(const FileListEntry& entry) const {
    if (!entry.cdTrack) return MeasuredTime(entry);
    return reading_ == DiscReading::Thorough ? PlayingTimeOf(entry) : 0;
  }

  static CdText::Entry OfFile(const std::string& path, std::string& album) {
    CdText::Entry text = disc::TextOfName(FileNameOf(path));
    const auto attributes = tags::ReadAttributes(path);
    if (!attributes) return text;
    const auto take = [&](std::string_view name, std::string& value) {
      const tags::Attribute* const attribute = tags::FindAttribute(*attributes, name);
      if (attribute != nullptr && attribute->HasValue()) value = attribute->value;
    };
    take("Title", text.title);
    take("Author", text.performer);
    take("WM/AlbumTitle", album);
    return text;
  }

  // A disc is read once for all its tracks.
  CdText::Entry OfTrack(const std::string& path, std::string& album) {
    CdText::Entry text;
    if (reading_ == DiscReading::Thorough) {
      if (const auto place = FindCdTrack(path)) {
        const CdText& disc = TextOfDisc(place->drive.path);
        text = disc.Track(place->number);
        if (text.performer.empty()) text.performer = disc.disc.performer;
        album = disc.disc.title;
      }
    }
    if (text.title.empty()) text.title = std::string(FileNameOf(path));
    return text;
  }

  const CdText& TextOfDisc(const std::string& path) {
    const auto [found, isNew] = discs_.try_emplace(path);
    if (!isNew) return found->second;
    auto drive = CdDrive::Open(path);
    if (!drive) return found->second;
    found->second = drive->ReadCdText();
    if (const auto toc = drive->ReadToc()) found->second = disc::DiscMemory().Completed(*toc, found->second);
    return found->second;
  }

  const disc::BurnParameters* burner_;
  DiscReading reading_;
  std::map<std::string, CdText> discs_;  // by the drive
};

}  // namespace

DiscFacts FactsOfSources(const Job& job, DiscReading reading) {
  return Reader(job.parameters.If<disc::BurnParameters>(), reading).Read(SourcesOf(job));
}

DiscFacts FactsOfDisc(const Job& job, std::span<const Job* const> jobs, DiscReading reading) {
  const Job* burner = nullptr;
  for (const Job* const other : jobs) {
    if (!Has(other->filter, kTimedList) || other->files.Empty()) continue;
    if (burner == nullptr || other->title == job.title) burner = other;
  }
  return FactsOfSources(burner != nullptr ? *burner : job, reading);
}

}  // namespace ts5
