// "ts5-batch score": what is in a score of any kind, for scripts and for comparing.
//
// Times are in 1/6720 of a quarter note, from the start of the score; every bar stands once, repeats are
// marks.
#include <algorithm>

#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "converters/score_formats.h"
#include "converters/xml_signs.h"
#include "midi/texts.h"
#include "platform/base/text.h"
#include "platform/files/input_file.h"
#include "score/playback_parameters.h"
#include "score/score_bars.h"
#include "score/texts.h"

namespace ts5::batch {
namespace {

constexpr std::int64_t kUnit = 6720;  // a quarter note

std::int64_t Units(Fraction place) {
  return place.In(4 * kUnit);
}

std::string TimeText(ScoreTimeSignature time) {
  return std::to_string(time.numerator) + "/" +
         std::to_string(std::int64_t{1} << std::clamp<int>(time.power, 0, 12));
}

std::string ClefText(const ScoreItem& item) {
  constexpr std::string_view kSigns[] = {"G", "C", "F", "percussion", "G"};
  std::string text(kSigns[std::min<std::size_t>(item.clef.form, 4)]);
  text += std::to_string((item.clef.line == 0 && item.clef.form != kClefC ? ClefItem(item.clef.form).clef.line
                                                                          : item.clef.line) +
                         1);
  if (item.clef.octave == 0) text += "+8";
  if (item.clef.octave == 2) text += "-8";
  return text;
}

class ScoreJson {
 public:
  explicit ScoreJson(const ScoreDocument& document) : document_(document), music_(ReadMusic(document)) {}

  Json Make(const std::string& file) {
    Json json;
    json["file"] = file;
    const ScoreCredits& credits = document_.credits;
    json["title"] = credits.title.empty() ? credits.movement : credits.title;
    json["composer"] = document_.author;
    json["unit"] = kUnit;
    json["staves"] = Staves();
    json["bars"] = Bars();
    json["notes"] = Json::array();
    for (const char* list : {"dynamics", "slurs", "hairpins", "texts"}) marks_[list] = Json::array();
    for (std::size_t staff = 0; staff < music_.voices.size(); ++staff) {
      for (std::size_t voice = 0; voice < music_.voices[staff].size(); ++voice)
        AddVoice(json["notes"], staff, voice);
    }
    json["tempos"] = Json::array();
    for (const ScoreTempo& tempo : music_.tempos)
      json["tempos"].push_back({{"start", Units(tempo.at)}, {"quarters", tempo.quarters}});
    for (auto& [name, list] : marks_.items()) json[name] = std::move(list);
    return json;
  }

 private:
  Json Staves() const {
    Json staves = Json::array();
    std::vector<std::string> instruments;
    for (const ScorePart& part : document_.parts) {
      for (std::size_t i = 0; i < part.staves && instruments.size() < document_.staves.size(); ++i)
        instruments.push_back(part.instrument);
    }
    instruments.resize(document_.staves.size());
    for (std::size_t i = 0; i < document_.staves.size(); ++i) {
      const StaffLayout& staff = document_.staves[i];
      const int program = std::clamp(staff.sound, 0, 127);
      std::string instrument = instruments[i];
      if (instrument.empty()) instrument = TextByNumber(32000 + program).value_or(std::string_view());
      std::size_t voices = 0;
      for (std::size_t v = 0; v < music_.voices[i].size(); ++v) {
        const auto& events = music_.voices[i][v];
        if (!std::ranges::all_of(events, [](const ScoreEvent& event) { return event.IsGap(); }))
          voices = v + 1;
      }
      staves.push_back({{"name", staff.name},
                        {"instrument", instrument},
                        {"program", program},
                        {"voices", std::max<std::size_t>(voices, 1)}});
    }
    return staves;
  }

  // What a staff shows at a place.
  const ScoreItem* InForce(std::size_t staff, Fraction at, ObjectKind kind) const {
    const ScoreItem* found = nullptr;
    for (const ScoreChange& change : music_.changes[staff]) {
      if (change.at > at) break;
      if (change.item->Is(kind)) found = change.item;
    }
    return found;
  }

  Json Bars() const {
    Json bars = Json::array();
    for (std::size_t i = 0; i < music_.bars.size(); ++i) {
      const ScoreBar& bar = music_.bars[i];
      Json row;
      row["number"] = bar.number;
      row["start"] = Units(bar.start);
      row["length"] = Units(std::min(bar.length, BarLength(bar.time)));
      row["time"] = TimeText(bar.time);
      const ScoreItem* key = document_.staves.empty() ? nullptr : InForce(0, bar.start, ObjectKind::Key);
      row["key"] = key == nullptr ? 0 : key->key;
      row["clefs"] = Json::array();
      for (std::size_t staff = 0; staff < document_.staves.size(); ++staff) {
        const ScoreItem* clef = InForce(staff, bar.start, ObjectKind::Clef);
        row["clefs"].push_back(clef == nullptr ? "G2" : ClefText(*clef));
      }
      row["barline"] = Line(bar);
      row["repeat"] = bar.repeatStart ? (bar.repeatEnd ? Json("both") : Json("start"))
                                      : (bar.repeatEnd ? Json("end") : Json(nullptr));
      row["volta"] = Json::array();
      for (unsigned n = 1; n < 16; ++n) {
        if ((bar.endings >> n & 1U) != 0) row["volta"].push_back(n);
      }
      if (row["volta"].empty()) row["volta"] = nullptr;
      bars.push_back(std::move(row));
    }
    return bars;
  }

  static std::string Line(const ScoreBar& bar) {
    if (!bar.lineStyle.empty()) return bar.lineStyle;
    if (bar.line == kBarLineDouble) return "light-light";
    return bar.line == kBarLineFinal || bar.repeatEnd ? "light-heavy" : "regular";
  }

  void AddVoice(Json& notes, std::size_t staff, std::size_t voice) {
    const auto& events = music_.voices[staff][voice];
    for (std::size_t i = 0; i < events.size(); ++i) {
      const ScoreEvent& event = events[i];
      AddMarks(staff, voice, i, event.item->drawings);
      if (event.IsRest()) continue;
      const ScoreItem& item = *event.item;
      const DrawnMarks marks = MarksOf(item);
      Json row;
      row["staff"] = staff;
      row["voice"] = voice;
      row["start"] = Units(event.start);
      row["length"] = Units(event.length);
      row["keys"] = SoundingKeys(event, document_.staves[staff]);
      row["tie"] = Tie(item);
      row["grace"] = item.IsGrace();
      row["articulations"] = Articulations(item, marks);
      row["lyrics"] = Json::array();
      for (const LyricItem& lyric : item.lyrics) row["lyrics"].push_back(lyric.syllable);
      notes.push_back(std::move(row));
    }
  }

  static Json Tie(const ScoreItem& item) {
    bool before = item.group.tieFromBefore;
    bool onward = item.group.tieOnward;
    for (const std::uint8_t tie : item.noteTies) {
      before |= (tie & kTieFromBefore) != 0;
      onward |= (tie & kTieOnward) != 0;
    }
    if (before && onward) return "both";
    return before ? Json("stop") : onward ? Json("start") : Json(nullptr);
  }

  static Json Articulations(const ScoreItem& item, const DrawnMarks& marks) {
    Json names = Json::array();
    std::uint8_t code = item.group.articulation;
    if (code == 0) code = marks.articulation;
    if (const XmlSign* sign = SignOfArticulation(code); sign != nullptr) names.push_back(sign->name);
    for (const DrawingItem& drawing : item.drawings) {
      const XmlSign* sign = FindSign(drawing.sign);
      if (sign == nullptr || sign->group == SignGroup::Direction) continue;
      if (std::ranges::find(names, Json(sign->name)) == names.end()) names.push_back(sign->name);
    }
    if (marks.marked && std::ranges::find(names, Json("fermata")) == names.end()) names.push_back("fermata");
    return names;
  }

  void AddMarks(std::size_t staff, std::size_t voice, std::size_t index,
                const std::vector<DrawingItem>& drawings) {
    const auto& events = music_.voices[staff][voice];
    for (const DrawingItem& drawing : drawings) {
      AddMarks(staff, voice, index, drawing.nested);
      const Fraction at = events[index].start + drawing.offset;
      Json row = {{"staff", staff}, {"voice", voice}, {"start", Units(at)}};
      switch (static_cast<DrawingKind>(drawing.kind)) {
        case DrawingKind::FourPointCurve:
          row["end"] = Units(events[SpanEnd(events, index, drawing.span)].start);
          marks_["slurs"].push_back(std::move(row));
          break;
        case DrawingKind::Hairpin:
          row["end"] = Units(drawing.extent.IsZero() ? events[SpanEnd(events, index, drawing.span)].start
                                                     : at + drawing.extent);
          row["type"] = (drawing.value & 0x80) != 0 ? "diminuendo" : "crescendo";
          marks_["hairpins"].push_back(std::move(row));
          break;
        case DrawingKind::Text:
          AddText(std::move(row), drawing);
          break;
        default:
          break;
      }
    }
  }

  void AddText(Json row, const DrawingItem& drawing) {
    const std::string_view dynamic = drawing.sign == "dynamics" ? std::string_view(drawing.words)
                                     : drawing.sign.empty()     ? DynamicOfSymbols(AsText(drawing.text))
                                                                : std::string_view();
    if (!dynamic.empty()) {
      row["mark"] = dynamic;
      marks_["dynamics"].push_back(std::move(row));
    } else if (const std::string words = WordsOf(drawing); !words.empty()) {
      const XmlSign* sign = FindSign(drawing.sign);
      if (sign != nullptr && sign->group != SignGroup::Direction) return;
      row["text"] = words;
      marks_["texts"].push_back(std::move(row));
    }
  }

  const ScoreDocument& document_;
  ScoreMusic music_;
  Json marks_;
};

Result<ScoreDocument> ReadDocument(const std::string& path) {
  const auto input = InputFile::Open(path);
  if (!input) return Failure(Outcome::SourceFailed);
  const auto file = input->ReadAll(kMaxScoreFile);
  if (!file) return Failure(file.error());
  auto score = ReadAnyScore(*file);
  if (!score) return Failure(score.error().code);
  return std::move(score->document);
}

void PrintSummary(Console& console, const Json& score) {
  console.out << score["file"].get<std::string>() << '\n';
  const auto line = [&console](TextId label, const std::string& value) {
    if (!value.empty()) console.out << "  " << Padded(std::string(Text(label)) + ":", 14) << value << '\n';
  };
  line(texts::BatchScoreTitle, score["title"].get<std::string>());
  line(texts::BatchScoreComposer, score["composer"].get<std::string>());
  std::string staves;
  for (const Json& staff : score["staves"])
    staves += (staves.empty() ? "" : ", ") + staff["name"].get<std::string>();
  line(texts::BatchScoreStaves, staves);
  line(texts::BatchScoreBars, std::to_string(score["bars"].size()));
  line(texts::BatchScoreNotes, std::to_string(score["notes"].size()));
}

}  // namespace

int ScoreCommand(CommandLine line, Console& console) {
  bool json = false;
  std::vector<std::string> files;
  Arguments arguments("score", texts::BatchScoreSummary, texts::BatchScoreExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  arguments.Rest("DATEI", files, texts::BatchHelpScoreFiles, 1);
  if (const auto status = arguments.Read(line, console)) return *status;

  int status = kExitSuccess;
  Json all = Json::array();
  for (const std::string& file : files) {
    if (console.Interrupted()) return kExitCancelled;
    const auto document = ReadDocument(file);
    if (!document) {
      status = kExitFailed;
      const TextId text = document.error() == Outcome::WrongFormat || document.error() == Outcome::OldScore
                              ? texts::PropertyUnknownFormat
                              : texts::BatchFileNotOpened;
      PrintError(console, Format(Text(texts::BatchItemFailed), file, Text(text)));
      if (json) all.push_back({{"file", file}, {"code", Code(document.error())}});
      continue;
    }
    Json score = ScoreJson(*document).Make(file);
    if (json) {
      all.push_back(std::move(score));
    } else {
      PrintSummary(console, score);
    }
  }
  if (json) console.out << JsonText(files.size() == 1 ? all[0] : Json{{"files", all}}) << '\n';
  return status;
}

}  // namespace ts5::batch
