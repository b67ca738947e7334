#include "converters/xml_properties.h"

#include <algorithm>
#include <iterator>

#include "converters/score_formats.h"
#include "converters/texts.h"
#include "midi/texts.h"
#include "platform/base/calendar.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/input_file.h"
#include "platform/files/paths.h"
#include "score/music_rows.h"
#include "score/texts.h"

namespace ts5::converters {
namespace {

std::vector<PropertyRow> Rows(const ScoreDocument& document, ScoreFormat format, CalendarDate written) {
  const auto [day, month, year] = NumbersOf(written);
  const ScoreCredits& credits = document.credits;
  std::vector<PropertyRow> rows;
  const auto add = [&rows](TextId label, std::string value) {
    rows.push_back({std::string(Text(label)), std::move(value)});
  };
  add(texts::PropertyFileFormat,
      std::string(Text(format == ScoreFormat::StvXml               ? texts::XmlFormatStvXml
                       : format == ScoreFormat::CompressedMusicXml ? texts::XmlFormatCompressed
                                                                   : texts::XmlFormatMusicXml)));
  add(texts::PropertyLastWritten, Format(Text(texts::PropertyDate), day, month, year));
  add(texts::XmlTitle, OrMissing(TitleOf(credits)));
  add(texts::XmlComposer, OrMissing(document.author));
  std::ranges::move(MusicRows(document), std::back_inserter(rows));
  add(texts::XmlSoftware, OrMissing(credits.software));
  return rows;
}

}  // namespace

bool IsXmlScoreName(std::string_view name) {
  const auto format = ScoreFormatOfName(name);
  return format && *format != ScoreFormat::Score;
}

Result<ScoreProperties> ReadXmlProperties(const std::string& path) {
  const auto input = InputFile::Open(path);
  if (!input) return Failure(Outcome::SourceNotOpened);
  const auto file = input->ReadAll(kMaxScoreFile);
  if (!file) return Failure(Outcome::SourceNotOpened);
  const auto format = ScoreFormatOf(*file);
  if (!format || *format == ScoreFormat::Score) return Failure(Outcome::WrongFormat);
  const auto score = ReadAnyScore(*file);
  if (!score) return Failure(score.error().code);
  const auto written = LastWriteDate(path);
  if (!written) return Failure(written.error());
  const TextId title =
      *format == ScoreFormat::StvXml ? texts::StvXmlPropertiesTitle : texts::MusicXmlPropertiesTitle;
  return ScoreProperties{std::string(Text(title)), Rows(score->document, *format, *written)};
}

}  // namespace ts5::converters
