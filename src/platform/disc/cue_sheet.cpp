#include "platform/disc/cue_sheet.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr std::string_view kPregapInFile = "PREGAP-IN-FILE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

struct Mode {
  std::string_view name;
  bool audio;
  std::uint32_t sectorBytes;
};
constexpr std::array kModes{Mode{"AUDIO", true, 2352},       Mode{"CDG", true, 2448},
                            Mode{"MODE1/2048", false, 2048}, Mode{"MODE1/2352", false, 2352},
                            Mode{"MODE2/2336", false, 2336}, Mode{"MODE2/2352", false, 2352},
                            Mode{"CDI/2336", false, 2336},   Mode{"CDI/2352", false, 2352}};

// The words of a line; quotes keep blanks together.
std::vector<std::string> Words(std::string_view line) {
  std::vector<std::string> words;
  for (line = Trim(line); !line.empty(); line = Trim(line)) {
    const bool quoted = line.front() == '"';
    if (quoted) line.remove_prefix(1);
    const std::size_t end = std::min(quoted ? line.find('"') : line.find_first_of(" \t"), line.size());
    words.emplace_back(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return words;
}

class Parser {
 public:
  Result<CueSheet> Parse(std::string_view text) {
    std::string lines(text);
    std::ranges::replace(lines, '\r', '\n');
    for (const std::string_view line : Split(lines, '\n')) {
      const auto words = Words(line);
      if (!words.empty() && !Take(ToUpper(words[0]), words)) return Failure(Outcome::WrongFormat);
    }
    if (sheet_.tracks.empty() || !LastTrackIsWhole()) return Failure(Outcome::WrongFormat);
    return std::move(sheet_);
  }

 private:
  using Line = std::vector<std::string>;

  // False when the line makes no disc.
  bool Take(const std::string& command, const Line& words) {
    struct Command {
      std::string_view name;
      std::size_t arguments;
      bool (Parser::*take)(const Line&);
    };
    static constexpr std::array kCommands{
        Command{"REM", 0, &Parser::TakeRemark},         Command{"FILE", 1, &Parser::TakeFile},
        Command{"TRACK", 2, &Parser::TakeTrack},        Command{"INDEX", 2, &Parser::TakeIndex},
        Command{"PREGAP", 1, &Parser::TakePregap},      Command{"POSTGAP", 1, &Parser::TakePostgap},
        Command{"FLAGS", 0, &Parser::TakeFlags},        Command{"ISRC", 1, &Parser::TakeIsrc},
        Command{"CATALOG", 1, &Parser::TakeCatalogue},  Command{"TITLE", 1, &Parser::TakeTitle},
        Command{"PERFORMER", 1, &Parser::TakePerformer}};
    const auto found = std::ranges::find(kCommands, command, &Command::name);
    if (found == kCommands.end()) return true;
    return words.size() > found->arguments && (this->*found->take)(words);
  }

  bool TakeFile(const Line& words) {
    // A name without quotes may hold blanks; the kind is the last word.
    CueFile file{words[1], CueFile::Kind::Binary};
    for (std::size_t i = 2; i + 1 < words.size(); ++i) file.name += " " + words[i];
    const std::string kind = words.size() > 2 ? ToUpper(words.back()) : "BINARY";
    if (kind == "MOTOROLA") {
      file.kind = CueFile::Kind::Motorola;
    } else if (kind != "BINARY") {
      file.kind = CueFile::Kind::Audio;
    }
    sheet_.files.push_back(std::move(file));
    return sheet_.files.size() <= kMaxTracks + 1U;
  }

  bool TakeTrack(const Line& words) {
    if (sheet_.files.empty() || !LastTrackIsWhole()) return false;
    const auto number = ParseInteger(words[1]);
    const auto mode = std::ranges::find(kModes, std::string_view(ToUpper(words[2])), &Mode::name);
    const int next = sheet_.tracks.empty() ? 0 : sheet_.tracks.back().number + 1;
    if (!number || *number < 1 || *number > kMaxTracks || (next > 0 && *number != next)) return false;
    if (mode == kModes.end()) return false;
    sheet_.tracks.push_back(
        {.number = static_cast<int>(*number), .audio = mode->audio, .sectorBytes = mode->sectorBytes});
    started_ = false;
    return true;
  }

  bool TakeIndex(const Line& words) {
    const auto number = ParseInteger(words[1]);
    const auto sector = SectorsOfTime(words[2]);
    if (sheet_.tracks.empty() || !number || *number < 0 || *number > 99 || !sector) return false;
    const CuePlace place{sheet_.files.size() - 1, *sector};
    if (place < last_) return false;
    last_ = place;
    CueTrack& track = sheet_.tracks.back();
    if (*number == 0) {
      if (started_ || track.pause) return false;
      track.pause = place;
    } else if (*number == 1) {
      if (started_) return false;
      track.start = place;
      started_ = true;
    }
    return true;
  }

  bool TakePregap(const Line& words) { return TakeGap(&CueTrack::pregap, words[1]); }
  bool TakePostgap(const Line& words) { return TakeGap(&CueTrack::postgap, words[1]); }
  bool TakeGap(std::uint32_t CueTrack::*gap, const std::string& text) {
    const auto sectors = SectorsOfTime(text);
    if (sheet_.tracks.empty() || !sectors) return false;
    sheet_.tracks.back().*gap = *sectors;
    return true;
  }

  bool TakeRemark(const Line& words) {
    sheet_.pregapInFile |= words.size() > 1 && EqualsIgnoringCase(words[1], kPregapInFile);
    return true;
  }
  bool TakeFlags(const Line& words) {
    if (sheet_.tracks.empty()) return true;
    for (const std::string& word : words) {
      if (EqualsIgnoringCase(word, "DCP")) sheet_.tracks.back().copyPermitted = true;
      if (EqualsIgnoringCase(word, "PRE")) sheet_.tracks.back().preEmphasis = true;
    }
    return true;
  }

  bool TakeIsrc(const Line& words) {
    if (!sheet_.tracks.empty() && words[1].size() == 12) sheet_.tracks.back().isrc = words[1];
    return true;
  }
  bool TakeCatalogue(const Line& words) {
    if (words[1].size() == 13) sheet_.catalogue = words[1];
    return true;
  }
  bool TakeTitle(const Line& words) {
    (sheet_.tracks.empty() ? sheet_.title : sheet_.tracks.back().title) = words[1];
    return true;
  }
  bool TakePerformer(const Line& words) {
    (sheet_.tracks.empty() ? sheet_.performer : sheet_.tracks.back().performer) = words[1];
    return true;
  }

  [[nodiscard]] bool LastTrackIsWhole() const { return sheet_.tracks.empty() || started_; }

  CueSheet sheet_;
  CuePlace last_;
  bool started_ = false;
};

}  // namespace

std::optional<std::uint32_t> SectorsOfTime(std::string_view text) {
  const auto parts = Split(text, ':');
  if (parts.size() != 3) return std::nullopt;
  std::array<std::int64_t, 3> values{};
  constexpr std::array<std::int64_t, 3> kLimits{100, 60, kSectorsPerSecond};
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto value = ParseInteger(parts[i]);
    if (!value || *value < 0 || *value >= kLimits[i]) return std::nullopt;
    values[i] = *value;
  }
  return static_cast<std::uint32_t>((values[0] * 60 + values[1]) * kSectorsPerSecond + values[2]);
}

Result<CueSheet> CueSheet::Parse(std::string_view text) {
  if (text.starts_with(kUtf8Mark)) text.remove_prefix(kUtf8Mark.size());
  return Parser().Parse(IsUtf8(text) ? std::string(text) : Utf8FromWindows1252(text));
}

}  // namespace ts5
