#include "disc/disc_memory.h"

#include <utility>

#include "platform/base/text.h"
#include "platform/disc/disc_address.h"
#include "platform/files/digest.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/store/profile.h"

namespace ts5::disc {
namespace {

constexpr std::string_view kFile = "discs.ini";
constexpr std::string_view kTitle = "Title";
constexpr std::string_view kPerformer = "Performer";

std::uint32_t DigitSum(std::uint32_t number) {
  std::uint32_t sum = 0;
  for (; number > 0; number /= 10) sum += number % 10;
  return sum;
}

std::uint32_t SecondOf(std::uint32_t sector) {
  return (sector + static_cast<std::uint32_t>(kPregapSectors)) / kSectorsPerSecond;
}

std::string TrackKey(std::string_view key, int track) {
  return Format("%s%02i", key, track);
}

// Takes what text says into entry.
void Merge(CdText::Entry& entry, const CdText::Entry& text) {
  if (!text.title.empty()) entry.title = text.title;
  if (!text.performer.empty()) entry.performer = text.performer;
}

CdText Merged(CdText known, const CdText& text, const DiscToc& toc) {
  Merge(known.disc, text.disc);
  const int first = toc.tracks.empty() ? 1 : toc.tracks.front().number;
  CdText all{known.disc, first, {}};
  for (const TocTrack& track : toc.tracks) {
    CdText::Entry entry = known.Track(track.number);
    Merge(entry, text.Track(track.number));
    all.tracks.push_back(std::move(entry));
  }
  return all;
}

}  // namespace

std::string DiscIdentity(const DiscToc& toc) {
  std::uint32_t sum = 0;
  Crc32 crc;
  for (const TocTrack& track : toc.tracks) {
    sum += DigitSum(SecondOf(track.start));
    crc.Add(AsBytes(std::to_string(track.start) + " "));
  }
  const std::uint32_t first = toc.tracks.empty() ? 0 : toc.tracks.front().start;
  const std::uint32_t length = SecondOf(toc.leadOut) - SecondOf(first);
  const std::uint32_t number = sum % 0xFF << 24 | (length & 0xFFFF) << 8 | (toc.tracks.size() & 0xFF);
  return Format("%08X-%u-%s", number, toc.leadOut, crc.Text());
}

DiscMemory::DiscMemory(std::string path)
    : path_(path.empty() ? JoinPath(ProgramDirectory(), kFile) : std::move(path)) {}

CdText DiscMemory::Recall(const DiscToc& toc) const {
  CdText text;
  const auto file = FileExists(path_) ? Profile::Load(path_) : Failure(Outcome::SourceFailed);
  if (!file || toc.tracks.empty()) return text;
  const std::string section = DiscIdentity(toc);
  text.disc = {file->ReadText(section, kTitle), file->ReadText(section, kPerformer)};
  text.firstTrack = toc.tracks.front().number;
  for (const TocTrack& track : toc.tracks)
    text.tracks.push_back({file->ReadText(section, TrackKey(kTitle, track.number)),
                           file->ReadText(section, TrackKey(kPerformer, track.number))});
  return text;
}

CdText DiscMemory::Completed(const DiscToc& toc, CdText text) const {
  CdText known = Recall(toc);
  return known.Empty() ? std::move(text) : Merged(std::move(known), text, toc);
}

Outcome DiscMemory::Remember(const DiscToc& toc, const CdText& text) const {
  if (text.Empty() || toc.tracks.empty()) return Outcome::Success;
  const CdText known = Recall(toc);
  const CdText all = Merged(known, text, toc);
  if (all.disc == known.disc && all.tracks == known.tracks) return Outcome::Success;
  auto file = FileExists(path_) ? Profile::Load(path_) : Result<Profile>(Profile(TextEncoding::Utf8));
  if (!file) return file.error();
  const std::string section = DiscIdentity(toc);
  const auto put = [&](const std::string& key, const std::string& value) {
    if (!value.empty()) file->Write(section, key, value);
  };
  put(std::string(kTitle), all.disc.title);
  put(std::string(kPerformer), all.disc.performer);
  for (const TocTrack& track : toc.tracks) {
    const CdText::Entry entry = all.Track(track.number);
    put(TrackKey(kTitle, track.number), entry.title);
    put(TrackKey(kPerformer, track.number), entry.performer);
  }
  if (const Outcome made = MakeDirectories(std::string(DirectoryOf(path_))); Failed(made)) return made;
  return file->Save(path_);
}

}  // namespace ts5::disc
