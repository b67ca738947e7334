// What discs bring: CUE sheets, and what drives answer. The first byte chooses; what is accepted makes sense.
#include <cstdint>
#include <cstdlib>

#include "platform/disc/cd_text.h"
#include "platform/disc/cue_data.h"
#include "platform/disc/cue_sheet.h"
#include "platform/disc/drive_events.h"
#include "platform/disc/mmc_replies.h"
#include "platform/disc/scsi_trace.h"

using namespace ts5;

namespace {

void TakeSheet(ByteView bytes) {
  const auto sheet = CueSheet::Parse(AsText(bytes));
  if (!sheet) return;
  if (sheet->tracks.empty() || sheet->tracks.size() > kMaxTracks) abort();
  CuePlace last;
  int number = sheet->tracks.front().number - 1;
  for (const CueTrack& track : sheet->tracks) {
    const CuePlace first = track.pause.value_or(track.start);
    if (track.number != ++number || track.number > kMaxTracks) abort();
    if (first < last || track.start < first || track.start.file >= sheet->files.size()) abort();
    last = track.start;
  }
}

void TakeToc(ByteView bytes) {
  const auto toc = DiscToc::Parse(bytes);
  if (!toc) return;
  std::uint32_t end = 0;
  for (const TocTrack& track : toc->tracks) {
    if (track.start < end || track.sectors == 0) abort();
    end = track.start + track.sectors;
  }
  if (end > toc->leadOut) abort();
}

// What a recorder takes, it would be sent again in the same words.
void TakeCueData(ByteView bytes) {
  const auto cue = ParseCueData(bytes);
  if (!cue) return;
  if (cue->layout.tracks.empty() || cue->layout.tracks.size() > kMaxTracks) abort();
  Lba last{-kPregapSectors};
  for (const DiscTrack& track : cue->layout.tracks) {
    if (track.start < last || track.sectors == 0) abort();
    last = track.start;
  }
  if (cue->layout.leadOut < last) abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const ByteView bytes(data + 1, size - 1);
  switch (data[0]) {
    case 't':
      TakeToc(bytes);
      break;
    case 'i':
      (void)ParseInquiry(bytes);
      break;
    case 'c':
      TakeCueData(bytes);
      break;
    case 'x':
      (void)CdTextPacks(ParseCdText(bytes));
      break;
    case 'f':
      (void)ParseScsiFaults(AsText(bytes));
      break;
    case 'u':
      (void)ParseDriveEvent(bytes);
      break;
    default:
      TakeSheet(bytes);
  }
  return 0;
}
