#include "converters/musicxml_writer.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <set>

#include "converters/musicxml_page.h"
#include "converters/musicxml_part_writer.h"
#include "converters/texts.h"
#include "converters/xml_out.h"
#include "platform/base/text.h"
#include "score/score_bars.h"
#include "score/score_parts.h"
#include "score/texts.h"

namespace ts5::converters {
namespace {

using namespace musicxml;

constexpr std::string_view kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE score-partwise PUBLIC \"-//Recordare//DTD MusicXML 4.0 Partwise//EN\" "
    "\"http://www.musicxml.org/dtds/partwise.dtd\">\n";
constexpr int kDrumChannel = 10;

std::string Number(std::size_t value) {
  return std::to_string(value);
}

void WriteTexts(XmlOut& out, const ScoreDocument& document) {
  const ScoreCredits& credits = document.credits;
  if (!credits.title.empty()) {
    out.Open("work");
    out.Leaf("work-title", credits.title);
    out.Close();
  }
  if (!credits.movement.empty()) out.Leaf("movement-title", credits.movement);
  out.Open("identification");
  const auto creator = [&out](std::string_view type, const std::string& name) {
    if (!name.empty()) out.Leaf("creator", name, {{"type", type}});
  };
  creator("composer", document.author);
  creator("lyricist", credits.lyricist);
  creator("arranger", credits.arranger);
  if (!credits.rights.empty()) out.Leaf("rights", credits.rights);
  out.Open("encoding");
  out.Leaf("software", "Stavora Tonstudio 5");
  out.Empty("supports", {{"element", "accidental"}, {"type", "yes"}});
  out.Empty("supports", {{"element", "beam"}, {"type", "yes"}});
  out.Close();
  if (!credits.source.empty()) out.Leaf("source", credits.source);
  const bool comment =
      !document.comment.empty() && document.comment != credits.title && document.comment != credits.movement;
  if (comment || !document.keywords.empty()) {
    out.Open("miscellaneous");
    if (!document.keywords.empty())
      out.Leaf("miscellaneous-field", document.keywords, {{"name", "keywords"}});
    if (comment) out.Leaf("miscellaneous-field", document.comment, {{"name", "comment"}});
    out.Close();
  }
  out.Close();
}

// The keys that the drum staves of a part sound.
std::set<std::uint8_t> DrumKeys(const ScoreMusic& music, const ScoreDocument& document, std::size_t first,
                                std::size_t staves) {
  std::set<std::uint8_t> keys;
  for (std::size_t staff = first; staff < first + staves; ++staff) {
    if (!document.staves[staff].usesNoteMap) continue;
    for (const auto& voice : music.voices[staff]) {
      for (const ScoreEvent& event : voice) {
        for (const std::uint8_t key : SoundingKeys(event, document.staves[staff])) keys.insert(key);
      }
    }
  }
  return keys;
}

void WriteScorePart(XmlOut& out, const std::string& id, const ScorePart& part, const StaffLayout& staff,
                    const std::set<std::uint8_t>& drums, int channel) {
  out.Open("score-part", {{"id", id}});
  out.Leaf("part-name", part.name);
  if (!part.abbreviation.empty()) out.Leaf("part-abbreviation", part.abbreviation);
  const auto instrument = [&](const std::string& name, const std::string& number) {
    out.Open("score-instrument", {{"id", number}});
    out.Leaf("instrument-name", name);
    out.Close();
  };
  const std::string single = id + "-I1";
  if (drums.empty()) instrument(part.instrument.empty() ? part.name : part.instrument, single);
  for (const std::uint8_t key : drums) instrument(part.name, id + "-I" + std::to_string(key + 1));
  const auto midi = [&](const std::string& number, int key) {
    out.Open("midi-instrument", {{"id", number}});
    out.Leaf("midi-channel", key >= 0 ? kDrumChannel : channel);
    if (key < 0) out.Leaf("midi-program", std::clamp(staff.sound, 0, 127) + 1);
    if (key >= 0) out.Leaf("midi-unpitched", key + 1);
    out.Leaf("volume", Format("%.2f", std::clamp(staff.volume, 0, 127) / 1.27));
    out.Close();
  };
  if (drums.empty()) midi(single, -1);
  for (const std::uint8_t key : drums) midi(id + "-I" + std::to_string(key + 1), key);
  out.Close();
}

void WriteGroupStart(XmlOut& out, const std::string& name) {
  out.Open("part-group", {{"type", "start"}, {"number", "1"}});
  out.Leaf("group-name", name);
  out.Leaf("group-symbol", "bracket");
  out.Close();
}

void WritePartList(XmlOut& out, const ScoreDocument& document, const ScoreMusic& music,
                   const std::vector<ScorePart>& parts) {
  out.Open("part-list");
  std::string group;
  std::size_t first = 0;
  int channel = 0;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (parts[i].group != group) {
      if (!group.empty()) out.Empty("part-group", {{"type", "stop"}, {"number", "1"}});
      if (!parts[i].group.empty()) WriteGroupStart(out, parts[i].group);
      group = parts[i].group;
    }
    ++channel;
    if (channel == kDrumChannel) ++channel;
    if (channel > 16) channel = 1;
    WriteScorePart(out, "P" + Number(i + 1), parts[i], document.staves[first],
                   DrumKeys(music, document, first, parts[i].staves), channel);
    first += parts[i].staves;
  }
  if (!group.empty()) out.Empty("part-group", {{"type", "stop"}, {"number", "1"}});
  out.Close();
}

// What MusicXML has no place for.
void ReportOthers(const ScoreDocument& document, LossReport& losses) {
  bool looks = !document.record.empty() || !document.gallery.empty();
  unsigned unknown = 0;
  for (const SystemItems& system : document.systems) {
    looks |= !system.record.empty();
    for (const StaffItems& staff : system.staves) {
      looks |= !staff.record.empty();
      for (const VoiceItems& voice : staff.voices) {
        for (const ScoreItem& item : voice) {
          looks |= !item.record.empty();
          if (item.kind >= static_cast<std::uint8_t>(ObjectKind::Other)) ++unknown;
        }
      }
    }
  }
  if (looks) losses.Add(texts::LossLayout);
  if (unknown > 0) losses.Add(texts::LossObject, -1, -1, unknown);
}

}  // namespace

Result<Bytes> WriteMusicXml(const ScoreDocument& document, LossReport& losses, const WorkWatch& watch) {
  const ScoreMusic music = ReadMusic(document, watch.cancelled);
  if (watch.cancelled && watch.cancelled()) return Failure(Outcome::Cancelled);
  losses.NamePlaces(document, music);
  const std::vector<ScorePart> parts = PartsOf(document);
  XmlOut out(kHead);
  out.Open("score-partwise", {{"version", "4.0"}});
  WriteTexts(out, document);
  WritePage(out, document);
  WritePartList(out, document, music, parts);
  const bool ownBeams = HasBeams(music);
  std::size_t first = 0;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const PartToWrite part{document, music, parts[i], "P" + Number(i + 1), first, ownBeams};
    if (const Outcome written = WritePart(out, part, losses, watch); Failed(written)) return Failure(written);
    if (out.Size() > kMaxScoreFile) return Failure(Outcome::XmlNotWritten);
    first += parts[i].staves;
    if (watch.progress) watch.progress(static_cast<double>(i + 1) / static_cast<double>(parts.size()));
  }
  out.Close();
  ReportOthers(document, losses);
  return out.Release();
}

}  // namespace ts5::converters
