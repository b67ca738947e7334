#include "platform/disc/recorded_disc.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "platform/base/text.h"
#include "platform/disc/mmc_replies.h"
#include "platform/files/files.h"
#include "platform/files/flush_group.h"
#include "platform/files/json_value.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::uint64_t kMostDescription = 1 << 20;
constexpr std::array<std::string_view, 4> kStatusNames{"blank", "open", "finalized", "damaged"};
constexpr std::int64_t kMostSectorsOfDisc = kEndOfTimes + kPregapSectors;

std::string JsonFile(const std::string& directory) {
  return JoinPath(directory, "disc.json");
}
std::string CueFile(const std::string& directory) {
  return JoinPath(directory, "disc.cue");
}

// From the start of the file.
std::int64_t Position(Lba address) {
  return std::int64_t{address.value} + kPregapSectors;
}

JsonValue TrackValue(const DiscTrack& track) {
  JsonValue::Array index;
  if (track.pause) index.emplace_back(Position(*track.pause));
  index.emplace_back(Position(track.start));
  return JsonValue::Object{{"number", track.number},
                           {"control", std::int32_t{track.control}},
                           {"isrc", track.isrc},
                           {"index", std::move(index)},
                           {"frames", track.sectors}};
}

std::optional<DiscTrack> TrackOf(const JsonValue& value) {
  const auto number = value["number"].Whole(1, kMaxTracks);
  const auto control = value["control"].Whole(0, 15);
  const auto frames = value["frames"].Whole(1, kMostSectorsOfDisc);
  const auto& index = value["index"].Items();
  if (!number || !control || !frames || index.empty() || index.size() > 2) return std::nullopt;
  DiscTrack track;
  track.number = static_cast<int>(*number);
  track.control = static_cast<std::uint8_t>(*control);
  track.sectors = static_cast<std::uint32_t>(*frames);
  if (IsIsrc(value["isrc"].String())) track.isrc = value["isrc"].String();
  const auto start = index.back().Whole(0, kMostSectorsOfDisc);
  const auto pause = index.front().Whole(0, kMostSectorsOfDisc);
  if (!start || !pause || *pause > *start) return std::nullopt;
  track.start = {static_cast<std::int32_t>(*start) - kPregapSectors};
  if (index.size() == 2) track.pause = Lba{static_cast<std::int32_t>(*pause) - kPregapSectors};
  return track;
}

std::string Quoted(std::string_view text) {
  std::string plain(text);
  std::ranges::replace(plain, '"', '\'');
  return '"' + plain + '"';
}

std::string TimeText(std::int64_t sectors) {
  const Msf time = MsfOfLength(static_cast<std::int32_t>(sectors));
  return Format("%02i:%02i:%02i", int{time.minute}, int{time.second}, int{time.frame});
}

std::string CueText(const RecordedDisc& disc) {
  std::string out = "REM PREGAP-IN-FILE\n";
  const auto entry = [&](std::string_view indent, const CdText::Entry& text) {
    if (!text.title.empty()) out.append(indent).append("TITLE ").append(Quoted(text.title)).append("\n");
    if (!text.performer.empty())
      out.append(indent).append("PERFORMER ").append(Quoted(text.performer)).append("\n");
  };
  if (!disc.layout.catalogue.empty()) out += "CATALOG " + disc.layout.catalogue + "\n";
  entry("", disc.text.disc);
  out += "FILE \"disc.bin\" BINARY\n";
  for (const DiscTrack& track : disc.layout.tracks) {
    out += Format("  TRACK %02i AUDIO\n", track.number);
    entry("    ", disc.text.Track(track.number));
    if ((track.control & (kControlCopyPermitted | kControlPreEmphasis)) != 0) {
      out += "    FLAGS";
      if ((track.control & kControlCopyPermitted) != 0) out += " DCP";
      if ((track.control & kControlPreEmphasis) != 0) out += " PRE";
      out += "\n";
    }
    if (!track.isrc.empty()) out += "    ISRC " + track.isrc + "\n";
    if (track.pause) out += "    INDEX 00 " + TimeText(Position(*track.pause)) + "\n";
    out += "    INDEX 01 " + TimeText(Position(track.start)) + "\n";
  }
  return out;
}

}  // namespace

std::string_view StatusName(RecordedDisc::Status status) {
  return kStatusNames.at(static_cast<std::size_t>(status));
}

std::string RecordedDisc::BinFile() const {
  return JoinPath(directory, "disc.bin");
}

Result<RecordedDisc> RecordedDisc::Load(const std::string& directory) {
  const auto text = ReadFile(JsonFile(directory), kMostDescription);
  if (!text) return Failure(Outcome::SourceFailed);
  const auto json = JsonValue::Parse(AsText(*text));
  if (!json) return Failure(Outcome::WrongFormat);
  RecordedDisc disc;
  disc.directory = directory;
  const auto minutes = (*json)["minutes"].Whole(1, 99);
  const auto* const status = std::ranges::find(kStatusNames, (*json)["status"].String());
  if (!minutes || status == kStatusNames.end()) return Failure(Outcome::WrongFormat);
  disc.minutes = static_cast<int>(*minutes);
  disc.status = static_cast<Status>(status - kStatusNames.begin());
  disc.rewritable = (*json)["rw"].True();
  if (IsCatalogueNumber((*json)["mcn"].String())) disc.layout.catalogue = (*json)["mcn"].String();
  for (const JsonValue& session : (*json)["sessions"].Items()) {
    disc.atOnce = session["mode"].String() == "dao";
    for (const JsonValue& item : session["tracks"].Items()) {
      const auto track = TrackOf(item);
      const bool follows = track && track->number == static_cast<int>(disc.layout.tracks.size()) + 1 &&
                           track->pause.value_or(track->start) >= disc.layout.leadOut - kPregapSectors;
      if (!follows) return Failure(Outcome::WrongFormat);
      disc.layout.leadOut = track->start + static_cast<std::int32_t>(track->sectors);
      disc.layout.tracks.push_back(*track);
    }
  }
  for (const JsonValue& item : (*json)["cdtext"].Items()) {
    const auto number = item["track"].Whole(0, kMaxTracks);
    if (!number) continue;
    const CdText::Entry entry{item["title"].String(), item["performer"].String()};
    if (*number == 0) {
      disc.text.disc = entry;
    } else {
      disc.text.tracks.resize(std::max(disc.text.tracks.size(), static_cast<std::size_t>(*number)));
      disc.text.tracks[static_cast<std::size_t>(*number) - 1] = entry;
    }
  }
  disc.layout.cdText = CdTextPacks(disc.text);
  return disc;
}

Outcome RecordedDisc::MakeBlank(const std::string& directory, int minutes, bool rewritable) {
  if (const Outcome made = MakeDirectories(directory); Failed(made)) return made;
  RecordedDisc disc;
  disc.directory = directory;
  disc.minutes = minutes;
  disc.rewritable = rewritable;
  for (const std::string& file : {JsonFile(directory), CueFile(directory), disc.BinFile()})
    if (FileExists(file)) return Outcome::InUse;
  return disc.Save();
}

Outcome RecordedDisc::Save() const {
  JsonValue::Array tracks;
  for (const DiscTrack& track : layout.tracks) tracks.push_back(TrackValue(track));
  JsonValue::Array sessions;
  if (!layout.tracks.empty())
    sessions.push_back(JsonValue::Object{
        {"open", status == Status::Open}, {"mode", atOnce ? "dao" : "tao"}, {"tracks", std::move(tracks)}});
  JsonValue::Array texts;
  const auto add = [&](int number, const CdText::Entry& entry) {
    if (entry != CdText::Entry{})
      texts.push_back(
          JsonValue::Object{{"track", number}, {"title", entry.title}, {"performer", entry.performer}});
  };
  add(0, text.disc);
  for (std::size_t i = 0; i < text.tracks.size(); ++i)
    add(text.firstTrack + static_cast<int>(i), text.tracks[i]);
  const JsonValue json = JsonValue::Object{{"status", std::string(StatusName(status))},
                                           {"minutes", minutes},
                                           {"rw", rewritable},
                                           {"mcn", layout.catalogue},
                                           {"sessions", std::move(sessions)},
                                           {"cdtext", std::move(texts)}};
  FlushGroup together;
  if (layout.tracks.empty()) {
    if (FileExists(CueFile(directory)))
      if (const Outcome removed = RemoveFile(CueFile(directory)); Failed(removed)) return removed;
  } else {
    const std::string cue = CueText(*this);
    const auto there = ReadFile(CueFile(directory), kMostDescription);
    const bool same = there && AsText(*there) == cue;
    const Outcome written = same ? Outcome::Success : WriteFile(CueFile(directory), AsBytes(cue));
    if (Failed(written)) return written;
  }
  const Outcome written = WriteFile(JsonFile(directory), AsBytes(json.Text() + "\n"));
  return Failed(written) ? written : together.FlushDirectories();
}

Outcome RecordedDisc::Erase() {
  layout = {};
  text = {};
  status = Status::Blank;
  if (const Outcome saved = Save(); Failed(saved)) return saved;
  return FileExists(BinFile()) ? RemoveFile(BinFile()) : Outcome::Success;
}

}  // namespace ts5
