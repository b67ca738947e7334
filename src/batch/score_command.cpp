// "ts5-batch score": what is in a score of any kind, for scripts and for comparing.
//
// Times are in 1/6720 of a quarter note, from the start of the score; every bar stands once, repeats are
// marks.
#include <algorithm>

#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_stream.h"
#include "batch/texts.h"
#include "converters/score_formats.h"
#include "converters/texts.h"
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

class ScoreShow {
 public:
  explicit ScoreShow(const ScoreDocument& document) : document_(document), music_(ReadMusic(document)) {}

  void Write(const std::string& file, JsonStream& json) const {
    json.Begin('{');
    json.Value(file, "file");
    json.Value(Title(), "title");
    json.Value(document_.author, "composer");
    json.Value(kUnit, "unit");
    json.Value(Staves(), "staves");
    json.Begin('[', "bars");
    for (const ScoreBar& bar : music_.bars) json.Value(Bar(bar));
    json.End();
    json.Begin('[', "notes");
    ForEachEvent([&](const EventAt& at) {
      if (!at.Get().IsRest()) json.Value(Note(at));
    });
    json.End();
    json.Begin('[', "tempos");
    for (const ScoreTempo& tempo : music_.tempos)
      json.Value({{"start", Units(tempo.at)}, {"quarters", tempo.quarters}});
    json.End();
    for (const char* list : {"dynamics", "slurs", "hairpins", "texts"}) {
      json.Begin('[', list);
      ForEachEvent([&](const EventAt& at) { WriteMarks(list, at, at.Get().item->drawings, json); });
      json.End();
    }
    json.End();
  }

  void PrintSummary(const std::string& file, std::ostream& out) const {
    out << file << '\n';
    const auto line = [&out](TextId label, const std::string& value) {
      if (!value.empty()) out << "  " << Padded(std::string(Text(label)) + ":", 14) << value << '\n';
    };
    line(texts::BatchScoreTitle, Title());
    line(texts::BatchScoreComposer, document_.author);
    std::string staves;
    for (const StaffLayout& staff : document_.staves) staves += (staves.empty() ? "" : ", ") + staff.name;
    line(texts::BatchScoreStaves, staves);
    line(texts::BatchScoreBars, std::to_string(music_.bars.size()));
    std::size_t notes = 0;
    ForEachEvent([&notes](const EventAt& at) { notes += at.Get().IsRest() ? 0 : 1; });
    line(texts::BatchScoreNotes, std::to_string(notes));
  }

 private:
  // A rest or chord with its place in the music.
  struct EventAt {
    std::size_t staff = 0;
    std::size_t voice = 0;
    std::size_t index = 0;
    const std::vector<ScoreEvent>& events;

    [[nodiscard]] const ScoreEvent& Get() const { return events[index]; }
  };
  template <typename Take>
  void ForEachEvent(const Take& take) const {
    for (std::size_t staff = 0; staff < music_.voices.size(); ++staff) {
      for (std::size_t voice = 0; voice < music_.voices[staff].size(); ++voice) {
        const auto& events = music_.voices[staff][voice];
        for (std::size_t i = 0; i < events.size(); ++i) take(EventAt{staff, voice, i, events});
      }
    }
  }

  [[nodiscard]] const std::string& Title() const {
    const ScoreCredits& credits = document_.credits;
    return credits.title.empty() ? credits.movement : credits.title;
  }

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
    const auto& changes = music_.changes[staff];
    for (auto last = std::ranges::upper_bound(changes, at, {}, &ScoreChange::at); last != changes.begin();) {
      if ((--last)->item->Is(kind)) return last->item;
    }
    return nullptr;
  }

  Json Bar(const ScoreBar& bar) const {
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
    return row;
  }

  static std::string Line(const ScoreBar& bar) {
    if (!bar.lineStyle.empty()) return bar.lineStyle;
    if (bar.line == kBarLineDouble) return "light-light";
    return bar.line == kBarLineFinal || bar.repeatEnd ? "light-heavy" : "regular";
  }

  Json Note(const EventAt& at) const {
    const ScoreItem& item = *at.Get().item;
    Json row;
    row["staff"] = at.staff;
    row["voice"] = at.voice;
    row["start"] = Units(at.Get().start);
    row["length"] = Units(at.Get().length);
    row["keys"] = SoundingKeys(at.Get(), document_.staves[at.staff]);
    row["tie"] = Tie(item);
    row["grace"] = item.IsGrace();
    row["articulations"] = Articulations(item, MarksOf(item));
    row["lyrics"] = Json::array();
    for (const LyricItem& lyric : item.lyrics) row["lyrics"].push_back(lyric.syllable);
    return row;
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
    if (const converters::XmlSign* sign = converters::SignOfArticulation(code); sign != nullptr)
      names.push_back(sign->name);
    for (const DrawingItem& drawing : item.drawings) {
      const converters::XmlSign* sign = converters::FindSign(drawing.sign);
      if (sign == nullptr || sign->group == converters::SignGroup::Direction) continue;
      if (std::ranges::find(names, Json(sign->name)) == names.end()) names.push_back(sign->name);
    }
    if (marks.marked && std::ranges::find(names, Json("fermata")) == names.end()) names.push_back("fermata");
    return names;
  }

  // Those of the drawings that belong into a list.
  static void WriteMarks(std::string_view list, const EventAt& at, const std::vector<DrawingItem>& drawings,
                         JsonStream& json) {
    for (const DrawingItem& drawing : drawings) {
      WriteMarks(list, at, drawing.nested, json);
      const Fraction start = at.Get().start + drawing.offset;
      const auto end = [&] { return at.events[SpanEnd(at.events, at.index, drawing.span)].start; };
      Json row = {{"staff", at.staff}, {"voice", at.voice}, {"start", Units(start)}};
      if (drawing.Is(DrawingKind::FourPointCurve) && list == "slurs") {
        row["end"] = Units(end());
      } else if (drawing.Is(DrawingKind::Hairpin) && list == "hairpins") {
        row["end"] = Units(drawing.extent.IsZero() ? end() : start + drawing.extent);
        row["type"] = (drawing.value & 0x80) != 0 ? "diminuendo" : "crescendo";
      } else if (!drawing.Is(DrawingKind::Text) || !AddText(list, drawing, row)) {
        continue;
      }
      json.Value(row);
    }
  }

  static bool AddText(std::string_view list, const DrawingItem& drawing, Json& row) {
    const std::string_view dynamic = drawing.sign == "dynamics" ? std::string_view(drawing.words)
                                     : drawing.sign.empty()
                                         ? converters::DynamicOfSymbols(AsText(drawing.text))
                                         : std::string_view();
    if (!dynamic.empty()) {
      row["mark"] = dynamic;
      return list == "dynamics";
    }
    const converters::XmlSign* sign = converters::FindSign(drawing.sign);
    row["text"] = WordsOf(drawing);
    return list == "texts" && row["text"] != "" &&
           (sign == nullptr || sign->group == converters::SignGroup::Direction);
  }

  const ScoreDocument& document_;
  ScoreMusic music_;
};

converters::ScoreResult<ScoreDocument> ReadDocument(const std::string& path) {
  const auto fail = [](converters::ScoreFault fault) {
    return tl::unexpected<converters::ScoreFault>(fault);
  };
  const auto input = InputFile::Open(path);
  if (!input) return fail({Outcome::SourceNotOpened});
  const auto file = input->ReadAll(kMaxScoreFile);
  if (!file) return fail({Outcome::SourceNotOpened});
  auto score = converters::ReadAnyScore(*file);
  if (!score) return fail(score.error());
  return std::move(score->document);
}

std::string Told(const converters::ScoreFault& fault) {
  if (fault.code == Outcome::WrongFormat || fault.code == Outcome::OldScore)
    return std::string(Text(texts::PropertyUnknownFormat));
  if (fault.code == Outcome::SourceNotOpened) return std::string(Text(texts::BatchFileNotOpened));
  if (fault.bar < 0 || fault.staff < 0) return std::string(Text(texts::XmlRemarkSource));
  return Format(Text(texts::XmlRemarkSourceAt), fault.bar + 1, fault.staff + 1);
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
  JsonStream stream(console.out);
  const bool list = json && files.size() > 1;
  if (list) {
    stream.Begin('{');
    stream.Begin('[', "files");
  }
  for (const std::string& file : files) {
    if (console.Interrupted()) return kExitCancelled;
    const auto document = ReadDocument(file);
    if (!document) {
      status = kExitFailed;
      const Outcome code = document.error().code;
      PrintError(console, Format(Text(texts::BatchItemFailed), file, Told(document.error())));
      // A file that is not there is a faulty source, as for all that reads scores.
      if (json)
        stream.Value({{"file", file},
                      {"code", Code(code == Outcome::SourceNotOpened ? Outcome::SourceFailed : code)}});
      continue;
    }
    const ScoreShow score(*document);
    if (json) {
      score.Write(file, stream);
    } else {
      score.PrintSummary(file, console.out);
    }
  }
  if (list) {
    stream.End();
    stream.End();
  }
  return status;
}

}  // namespace ts5::batch
