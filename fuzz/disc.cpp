// What discs bring: CUE sheets, and what drives answer. The first byte chooses; what is accepted makes sense.
#include <cstdint>
#include <cstdlib>

#include "platform/cue_sheet.h"
#include "platform/mmc.h"

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
    default:
      TakeSheet(bytes);
  }
  return 0;
}
