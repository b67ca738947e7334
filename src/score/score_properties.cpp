#include "score/score_properties.h"

#include <algorithm>
#include <iterator>

#include "midi/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "score/music_rows.h"
#include "score/score_reader.h"
#include "score/texts.h"

namespace ts5 {
namespace {

std::string Copy(TextId id) {
  return std::string(Text(id));
}

std::string StaffList(const std::vector<StaffLayout>& staves) {
  std::string list = Format(Text(texts::ScoreStaffListHead), staves.size());
  for (std::size_t i = 0; i < staves.size(); ++i)
    list += Format(Text(texts::ScoreStaffListLine), i + 1, staves[i].name);
  return list;
}

}  // namespace

std::vector<PropertyRow> ScorePropertyRows(const ScoreFileInfo& info, CalendarDate lastWritten) {
  const auto [day, month, year] = NumbersOf(lastWritten);
  const bool current = info.IsCurrent();
  std::vector<PropertyRow> rows;
  const auto add = [&rows](TextId label, std::string value) {
    rows.push_back({Copy(label), std::move(value)});
  };
  add(texts::PropertyFileFormat, Copy(current ? texts::ScoreFormatCurrent : texts::ScoreFormatOlder));
  add(texts::PropertyLastWritten, Format(Text(texts::PropertyDate), day, month, year));
  if (current) {
    add(texts::ScoreAuthor, OrMissing(info.author));
    add(texts::ScoreKeywords, OrMissing(info.keywords));
    add(texts::ScoreComment, OrMissing(info.comment));
  }
  add(texts::ScorePageFormat, Copy(info.landscape ? texts::ScoreLandscape : texts::ScorePortrait));
  if (current) add(texts::ScoreGalleryObjects, std::to_string(info.galleryObjects));
  add(texts::ScoreSystems, std::to_string(info.systems));
  add(texts::ScoreStavesPerSystem, StaffList(info.staves));
  return rows;
}

Result<ScoreProperties> ReadScoreProperties(const std::string& path) {
  const auto info = ReadScoreFileInfo(path);
  if (!info) return Failure(info.error());
  const auto written = LastWriteDate(path);
  if (!written) return Failure(written.error());
  std::vector<PropertyRow> rows = ScorePropertyRows(*info, *written);
  // What is damaged further behind has its first rows all the same.
  if (const auto file = ReadFile(path)) {
    if (const auto score = ReadScore(*file)) std::ranges::move(MusicRows(*score), std::back_inserter(rows));
  }
  return ScoreProperties{Format(Text(texts::ScorePropertiesTitle), FileNameOf(path)), std::move(rows)};
}

}  // namespace ts5
