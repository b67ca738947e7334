#include "score/score_properties.h"

#include "platform/paths.h"
#include "platform/strings.h"
#include "platform/text.h"

namespace ts5 {
namespace {

std::string Copy(TextId id) {
  return std::string(Text(id));
}

std::string OrMissing(const std::string& text) {
  return text.empty() ? Copy(TextId::ScoreTextMissing) : text;
}

std::string StaffList(const std::vector<StaffLayout>& staves) {
  std::string list = Format(Text(TextId::ScoreStaffListHead), staves.size());
  for (std::size_t i = 0; i < staves.size(); ++i)
    list += Format(Text(TextId::ScoreStaffListLine), i + 1, staves[i].name);
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
  add(TextId::PropertyFileFormat, Copy(current ? TextId::ScoreFormatCurrent : TextId::ScoreFormatOlder));
  add(TextId::PropertyLastWritten, Format(Text(TextId::PropertyDate), day, month, year));
  if (current) {
    add(TextId::ScoreAuthor, OrMissing(info.author));
    add(TextId::ScoreKeywords, OrMissing(info.keywords));
    add(TextId::ScoreComment, OrMissing(info.comment));
  }
  add(TextId::ScorePageFormat, Copy(info.landscape ? TextId::ScoreLandscape : TextId::ScorePortrait));
  if (current) add(TextId::ScoreGalleryObjects, std::to_string(info.galleryObjects));
  add(TextId::ScoreSystems, std::to_string(info.systems));
  add(TextId::ScoreStavesPerSystem, StaffList(info.staves));
  return rows;
}

Result<ScoreProperties> ReadScoreProperties(const std::string& path) {
  const auto info = ReadScoreFileInfo(path);
  if (!info) return Failure(info.error());
  const auto written = LastWriteDate(path);
  if (!written) return Failure(written.error());
  return ScoreProperties{Format(Text(TextId::ScorePropertiesTitle), FileNameOf(path)),
                         ScorePropertyRows(*info, *written)};
}

}  // namespace ts5
