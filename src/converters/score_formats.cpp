#include "converters/score_formats.h"

#include <algorithm>
#include <array>

#include "converters/musicxml_reader.h"
#include "converters/musicxml_writer.h"
#include "converters/mxl_container.h"
#include "converters/stvx.h"
#include "converters/xml_signs.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "score/jump_words.h"
#include "score/score_reader.h"
#include "score/score_writer.h"

namespace ts5::converters {
namespace {

struct FormatName {
  std::string_view extension;
  ScoreFormat format;
};
constexpr FormatName kNames[] = {
    {"stv", ScoreFormat::Score},
    {"stvx", ScoreFormat::StvXml},
    {"xml", ScoreFormat::MusicXml},
    {"musicxml", ScoreFormat::MusicXml},
    {"mxl", ScoreFormat::CompressedMusicXml},
};

struct RootElement {
  std::string_view start;
  ScoreFormat format;
};
constexpr RootElement kRoots[] = {
    {"<score-partwise", ScoreFormat::MusicXml},
    {"<score-timewise", ScoreFormat::MusicXml},
    {"<stvx", ScoreFormat::StvXml},
};

// The first of the roots in a text of single bytes.
std::optional<ScoreFormat> FormatOfRoot(std::string_view text) {
  for (std::size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1)) {
    const auto* const root = std::ranges::find_if(
        kRoots, [&](const RootElement& known) { return text.substr(at).starts_with(known.start); });
    if (root != std::end(kRoots)) return root->format;
  }
  return std::nullopt;
}

ScoreResult<ScoreWithLosses> ReadScoreFile(ByteView file, const CancelCheck& cancelled) {
  auto document = ReadScore(file, cancelled);
  if (document) return ScoreWithLosses{std::move(*document), {}};
  return tl::unexpected<ScoreFault>(ScoreFault{document.error()});
}

void MaskDrawings(std::vector<DrawingItem>& drawings, std::uint32_t mask) {
  std::erase_if(drawings, [mask](const DrawingItem& drawing) {
    const std::uint32_t bit = MaskBitOf(drawing);
    return bit != 0 && (mask & bit) == 0;
  });
  for (DrawingItem& drawing : drawings) MaskDrawings(drawing.nested, mask);
}

// A score file has one text for all that.
std::string CreditText(const ScoreCredits& credits) {
  std::string text;
  for (const std::string* line : {&credits.title, &credits.movement, &credits.lyricist, &credits.arranger,
                                  &credits.rights, &credits.source}) {
    if (!line->empty()) text += (text.empty() ? "" : "\r\n") + *line;
  }
  return text;
}

bool SaysTimes(const std::vector<DrawingItem>& drawings) {
  return std::ranges::any_of(drawings, [](const DrawingItem& drawing) {
    return drawing.Is(DrawingKind::Text) && ReadJumpWords(AsText(drawing.text)).times > 0;
  });
}

// Writes how often a repeat is played over the last rest or chord before its end.
void SayTimes(StaffItems& staff) {
  for (VoiceItems& voice : staff.voices) {
    ScoreItem* last = nullptr;
    for (ScoreItem& item : voice) {
      if (item.IsGroup()) last = &item;
      if (item.times <= 2 || item.times > kMostTimesInWords || last == nullptr || SaysTimes(last->drawings))
        continue;
      last->drawings.push_back(WordsDrawing(std::to_string(item.times) + "x"));
    }
    if (last != nullptr) return;
  }
}

}  // namespace

void SayTimesInWords(ScoreDocument& document) {
  for (SystemItems& system : document.systems) {
    if (!system.staves.empty()) SayTimes(system.staves[0]);
  }
}

std::optional<ScoreFormat> ScoreFormatOf(ByteView file) {
  constexpr std::size_t kLooked = std::size_t{64} << 10;
  constexpr std::size_t kWidest = 4;  // bytes of a character
  const std::string_view text = AsText(file.first(std::min(file.size(), kLooked)));
  if (text.starts_with("stv3")) return ScoreFormat::Score;
  if (LooksLikeZip(file)) return ScoreFormat::CompressedMusicXml;
  if (text.substr(0, kWidest).find('\0') == std::string_view::npos) return FormatOfRoot(text);
  // Of wider characters the zero bytes are left out.
  std::string narrow(text);
  std::erase(narrow, '\0');
  return FormatOfRoot(narrow);
}

std::optional<ScoreFormat> ScoreFormatOfName(std::string_view name) {
  const std::string extension = ToLower(ExtensionOf(name));
  const auto* const found = std::ranges::find(kNames, std::string_view(extension), &FormatName::extension);
  if (found == std::end(kNames)) return std::nullopt;
  return found->format;
}

ScoreResult<ScoreWithLosses> ReadAnyScore(ByteView file, const CancelCheck& cancelled, ScoreDetail detail) {
  const auto format = ScoreFormatOf(file);
  if (!format) return tl::unexpected<ScoreFault>(ScoreFault{Outcome::WrongFormat});
  if (*format == ScoreFormat::Score) return ReadScoreFile(file, cancelled);
  if (*format == ScoreFormat::StvXml) return ReadStvXml(file, cancelled);
  return ReadMusicXml(file, cancelled, detail);
}

Result<Bytes> WriteAnyScore(ScoreDocument& document, ScoreFormat format, LossReport& losses,
                            const WorkWatch& watch) {
  if (format == ScoreFormat::Score) {
    if (document.comment.empty()) document.comment = CreditText(document.credits);
    SayTimesInWords(document);
    ReportScoreFileLosses(document, losses, watch.cancelled);
    if (watch.cancelled && watch.cancelled()) return Failure(Outcome::Cancelled);
    return WriteScore(document);
  }
  auto text =
      format == ScoreFormat::StvXml ? WriteStvXml(document, watch) : WriteMusicXml(document, losses, watch);
  if (text && format == ScoreFormat::CompressedMusicXml) return WriteMxl(AsText(*text));
  return text;
}

Result<Bytes> ScoreImageOf(Bytes file, const CancelCheck& cancelled) {
  const auto format = ScoreFormatOf(file);
  if (!format || *format == ScoreFormat::Score) return file;
  auto score = ReadAnyScore(file, cancelled, ScoreDetail::Music);
  if (!score) return Failure(score.error().code);
  file = {};
  SayTimesInWords(score->document);
  return WriteScore(score->document);
}

void ApplyObjectMask(ScoreDocument& document, std::uint32_t mask) {
  if ((mask & kMaskAll) == kMaskAll) return;
  for (SystemItems& system : document.systems) {
    for (StaffItems& staff : system.staves) {
      for (VoiceItems& voice : staff.voices) {
        for (ScoreItem& item : voice) {
          if ((mask & kMaskArticulations) == 0) item.group.articulation = 0;
          if ((mask & kMaskLyrics) == 0) item.lyrics.clear();
          MaskDrawings(item.drawings, mask);
        }
      }
    }
  }
}

}  // namespace ts5::converters
