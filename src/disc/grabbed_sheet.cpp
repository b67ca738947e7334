#include "disc/grabbed_sheet.h"

#include <algorithm>

#include "platform/base/text.h"
#include "platform/disc/disc_address.h"
#include "platform/disc/mmc_replies.h"
#include "platform/files/paths.h"

namespace ts5::disc {
namespace {

// A text between quotes, which it cannot hold itself.
std::string Quoted(std::string text) {
  std::ranges::replace(text, '"', '\'');
  return '"' + text + '"';
}

std::string FileLine(const std::string& name) {
  return "FILE " + Quoted(name) + (EqualsIgnoringCase(ExtensionOf(name), "mp3") ? " MP3\n" : " WAVE\n");
}

std::string IndexLine(int index, std::uint32_t sectors) {
  const Msf time = MsfOfLength(static_cast<std::int32_t>(sectors));
  return Format("    INDEX %02i %02i:%02i:%02i\n", index, int{time.minute}, int{time.second},
                int{time.frame});
}

std::string TextLines(const CdText::Entry& text, std::string_view indent) {
  std::string lines;
  if (!text.title.empty()) lines += std::string(indent) + "TITLE " + Quoted(text.title) + "\n";
  if (!text.performer.empty()) lines += std::string(indent) + "PERFORMER " + Quoted(text.performer) + "\n";
  return lines;
}

std::string TrackLines(const SheetTrack& track) {
  std::string lines = Format("  TRACK %02i AUDIO\n", track.number) + TextLines(track.text, "    ");
  if (!track.isrc.empty()) lines += "    ISRC " + track.isrc + "\n";
  std::string flags;
  if ((track.control & kControlCopyPermitted) != 0) flags += " DCP";
  if ((track.control & kControlPreEmphasis) != 0) flags += " PRE";
  return flags.empty() ? lines : lines + "    FLAGS" + flags + "\n";
}

}  // namespace

std::string GrabbedSheet(const GrabbedDisc& disc) {
  std::string sheet;
  if (!disc.catalogue.empty()) sheet += "CATALOG " + disc.catalogue + "\n";
  sheet += TextLines(disc.text, "");
  for (const SheetTrack& track : disc.tracks) {
    const bool hidden = !disc.hidden.empty() && &track == &disc.tracks.front() && track.number == 1;
    // A pause lies at the end of the file before, or in the file of what is hidden.
    if (hidden) sheet += FileLine(disc.hidden);
    if (hidden || track.pauseInFileBefore) {
      sheet += TrackLines(track) + IndexLine(0, track.pauseInFileBefore.value_or(0)) + FileLine(track.file);
    } else {
      sheet += FileLine(track.file) + TrackLines(track);
    }
    sheet += IndexLine(1, 0);
  }
  return sheet;
}

}  // namespace ts5::disc
