#include "platform/disc/cue_data.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/disc/mmc_commands.h"
#include "platform/disc/mmc_replies.h"

namespace ts5 {
namespace {

constexpr std::size_t kEntryBytes = 8;
constexpr std::uint8_t kAdrPosition = 1;
constexpr std::uint8_t kAdrCatalogue = 2;
constexpr std::uint8_t kAdrIsrc = 3;
constexpr std::uint8_t kScms = 0x80;
constexpr std::uint8_t kFormAudio = 0x00;
constexpr std::uint8_t kFormLeadInText = 0x41;
constexpr std::size_t kCatalogueFirst = 7;  // characters in the first of two entries
constexpr std::size_t kIsrcHalf = 6;

class CueWriter {
 public:
  void Chars(std::initializer_list<std::uint8_t> head, std::string_view text) {
    for (const std::uint8_t byte : head) out_.U8(byte);
    out_.Append(text);
    out_.Fill(kEntryBytes - head.size() - text.size(), 0);
  }
  void Entry(std::uint8_t control, std::uint8_t track, std::uint8_t index, std::uint8_t form,
             std::uint8_t scms, Msf time) {
    for (const std::uint8_t byte : {static_cast<std::uint8_t>(control << 4 | kAdrPosition), track, index,
                                    form, scms, time.minute, time.second, time.frame})
      out_.U8(byte);
  }
  Bytes Release() { return out_.Release(); }

 private:
  ByteWriter out_;
};

// Takes the entries in the one order that is right.
class CueReader {
 public:
  explicit CueReader(ByteView bytes) : rest_(bytes) {}

  std::optional<CueData> Read() {
    const bool whole =
        rest_.size() % kEntryBytes == 0 && TakeCatalogue() && TakeLeadIn() && TakeTracks() && TakeLeadOut();
    if (!whole || !rest_.empty()) return std::nullopt;
    return std::move(cue_);
  }

 private:
  [[nodiscard]] bool Next(std::uint8_t adr) const { return !rest_.empty() && (rest_[0] & 0x0F) == adr; }
  ByteView Take() {
    const ByteView entry = rest_.first(kEntryBytes);
    rest_ = rest_.subspan(kEntryBytes);
    return entry;
  }
  static std::optional<Msf> TimeOf(ByteView entry) {
    const Msf time{entry[5], entry[6], entry[7]};
    return time.Valid() ? std::optional(time) : std::nullopt;
  }

  bool TakeCatalogue() {
    if (!Next(kAdrCatalogue)) return true;
    std::string digits(AsText(Take().subspan(1)));
    if (!Next(kAdrCatalogue)) return false;
    const ByteView second = Take();
    digits.append(AsText(second.subspan(1, 13 - kCatalogueFirst)));
    cue_.layout.catalogue = digits;
    return second.back() == 0 && IsCatalogueNumber(digits);
  }

  bool TakeLeadIn() {
    if (!Next(kAdrPosition)) return false;
    const ByteView entry = Take();
    cue_.cdText = entry[3] == kFormLeadInText;
    return entry[1] == 0 && entry[2] == 0 && (cue_.cdText || entry[3] == kFormAudio) &&
           TimeOf(entry) == Msf{};
  }

  bool TakeTracks() {
    auto& tracks = cue_.layout.tracks;
    while (!rest_.empty() && rest_[1] != kLeadOutTrack) {
      DiscTrack track;
      track.number = static_cast<int>(tracks.size()) + 1;
      track.control = rest_[0] >> 4;
      if ((track.control & ~(kControlPreEmphasis | kControlCopyPermitted)) != 0 || track.number > kMaxTracks)
        return false;
      if (!TakeIsrc(track) || !TakePause(track) || !TakeStart(track)) return false;
      tracks.push_back(std::move(track));
    }
    return !tracks.empty();
  }
  bool TakeIsrc(DiscTrack& track) {
    if (!Next(kAdrIsrc)) return true;
    for (int half = 0; half < 2; ++half) {
      if (!Next(kAdrIsrc) || rest_[1] != track.number || rest_[0] >> 4 != track.control) return false;
      track.isrc.append(AsText(Take().subspan(2, kIsrcHalf)));
    }
    return IsIsrc(track.isrc);
  }
  // An entry of the track for that index.
  std::optional<Lba> TakeIndex(const DiscTrack& track, std::uint8_t index) {
    if (!Next(kAdrPosition) || rest_[1] != track.number || rest_[2] != index ||
        rest_[0] >> 4 != track.control)
      return std::nullopt;
    const ByteView entry = Take();
    const auto time = TimeOf(entry);
    const bool first = track.number == 1 && index == 0;
    if (!time || entry[3] != kFormAudio || (entry[4] & ~kScms) != 0) return std::nullopt;
    const bool copyProtected = entry[4] == kScms;
    if (first) cue_.copyProtected = copyProtected;
    // One disc has one rule, and the control bits say the same.
    if (copyProtected != cue_.copyProtected) return std::nullopt;
    if (copyProtected == ((track.control & kControlCopyPermitted) != 0)) return std::nullopt;
    const Lba address = LbaOf(*time);
    if (first ? *time != Msf{} : address <= last_) return std::nullopt;
    last_ = address;
    return address;
  }
  bool TakePause(DiscTrack& track) {
    const bool there = !rest_.empty() && rest_.size() >= kEntryBytes && rest_[2] == 0;
    if (!there) return track.number > 1;  // the first track has one
    track.pause = TakeIndex(track, 0);
    if (track.pause) EndTrackBefore(*track.pause);
    return track.pause.has_value();
  }
  bool TakeStart(DiscTrack& track) {
    const auto start = TakeIndex(track, 1);
    if (!start) return false;
    track.start = *start;
    if (!track.pause) EndTrackBefore(*start);
    return track.number > 1 || *start - *track.pause >= kPregapSectors;
  }
  void EndTrackBefore(Lba end) {
    auto& tracks = cue_.layout.tracks;
    if (!tracks.empty()) tracks.back().sectors = static_cast<std::uint32_t>(end - tracks.back().start);
  }

  bool TakeLeadOut() {
    if (rest_.size() != kEntryBytes || !Next(kAdrPosition)) return false;
    const ByteView entry = Take();
    const auto time = TimeOf(entry);
    if (!time || entry[1] != kLeadOutTrack || entry[2] != 1 || LbaOf(*time) <= last_) return false;
    cue_.layout.leadOut = LbaOf(*time);
    EndTrackBefore(cue_.layout.leadOut);
    return true;
  }

  ByteView rest_;
  CueData cue_;
  Lba last_{-kPregapSectors};
};

}  // namespace

Bytes MakeCueData(const DiscLayout& layout, const CueOptions& options) {
  CueWriter out;
  if (!layout.catalogue.empty()) {
    const std::string_view digits = layout.catalogue;
    out.Chars({kAdrCatalogue}, digits.substr(0, kCatalogueFirst));
    out.Chars({kAdrCatalogue}, digits.substr(kCatalogueFirst));
  }
  out.Entry(0, 0, 0, options.cdText ? kFormLeadInText : kFormAudio, 0, {});
  const std::uint8_t scms = options.copyProtected ? kScms : 0;
  for (const DiscTrack& track : layout.tracks) {
    const auto number = static_cast<std::uint8_t>(track.number);
    if (!track.isrc.empty()) {
      const std::string_view isrc = track.isrc;
      for (const std::size_t half : {std::size_t{0}, kIsrcHalf})
        out.Chars({static_cast<std::uint8_t>(track.control << 4 | kAdrIsrc), number},
                  isrc.substr(half, kIsrcHalf));
    }
    if (track.pause) out.Entry(track.control, number, 0, kFormAudio, scms, MsfOf(*track.pause));
    out.Entry(track.control, number, 1, kFormAudio, scms, MsfOf(track.start));
  }
  out.Entry(0, kLeadOutTrack, 1, kFormAudio, 0, MsfOf(layout.leadOut));
  return out.Release();
}

std::optional<CueData> ParseCueData(ByteView bytes) {
  return CueReader(bytes).Read();
}

}  // namespace ts5
