#include "disc/track_texts.h"

#include <algorithm>
#include <utility>

#include "audio/tags/tag_file.h"
#include "frame/cd_tracks.h"
#include "platform/base/text.h"
#include "platform/disc/cd_drive.h"
#include "platform/files/paths.h"

namespace ts5::disc {
namespace {

constexpr std::string_view kCount = "BurnTextNum";
constexpr std::size_t kMostTexts = 99;
constexpr std::size_t kMostNumberDigits = 3;
constexpr std::string_view kBetween = " - ";

std::string Key(std::string_view kind, std::size_t index) {
  return Format("BurnText%s %04i", kind, index + 1);
}

// "03 - Abendlied" -> "Abendlied"; a name that is nothing but a number stays.
std::string_view WithoutNumber(std::string_view name) {
  const std::size_t digits = std::min(name.find_first_not_of("0123456789"), name.size());
  if (digits == 0 || digits > kMostNumberDigits) return name;
  const std::size_t text = name.find_first_not_of(" .-_", digits);
  return text == std::string_view::npos || text == digits ? name : name.substr(text);
}

CdText::Entry TextOfTrack(const CdTrackPlace& place) {
  auto drive = CdDrive::Open(place.drive.path);
  CdText::Entry entry;
  if (drive) {
    const CdText text = drive->ReadCdText();
    entry = text.Track(place.number);
    if (entry.performer.empty()) entry.performer = text.disc.performer;
  }
  if (entry.title.empty())
    entry.title = std::string(FileNameOf(CdTrackEntry(place.drive.name, place.number)));
  return entry;
}

}  // namespace

CdText::Entry TextOfName(std::string_view fileName) {
  const std::string_view name = WithoutNumber(Trim(WithoutExtension(fileName)));
  const std::size_t between = name.find(kBetween);
  if (between == std::string_view::npos || between == 0) return {std::string(name), {}};
  return {std::string(Trim(name.substr(between + kBetween.size()))),
          std::string(Trim(name.substr(0, between)))};
}

CdText::Entry TextOfSource(const std::string& source) {
  if (const auto place = FindCdTrack(source)) return TextOfTrack(*place);
  CdText::Entry entry = TextOfName(FileNameOf(source));
  const auto attributes = tags::ReadAttributes(source);
  if (!attributes) return entry;
  const auto take = [&](std::string_view name, std::string& text) {
    const tags::Attribute* const attribute = tags::FindAttribute(*attributes, name);
    if (attribute != nullptr && attribute->HasValue()) text = attribute->value;
  };
  take("Title", entry.title);
  take("Author", entry.performer);
  return entry;
}

CdText::Entry TrackText(const TrackTexts& entered, const std::string& source) {
  const auto found = entered.find(source);
  if (found == entered.end()) return TextOfSource(source);
  CdText::Entry entry = found->second;
  if (!entry.title.empty() && !entry.performer.empty()) return entry;
  CdText::Entry own = TextOfSource(source);
  if (entry.title.empty()) entry.title = std::move(own.title);
  if (entry.performer.empty()) entry.performer = std::move(own.performer);
  return entry;
}

void SaveTrackTexts(const TrackTexts& texts, RegistryValues& values) {
  std::size_t count = 0;
  for (const auto& [file, entry] : texts) {
    if (count == kMostTexts) break;
    values.SetText(Key("File", count), file);
    values.SetText(Key("Title", count), entry.title);
    values.SetText(Key("Performer", count++), entry.performer);
  }
  values.SetText(kCount, std::to_string(count));
}

TrackTexts LoadTrackTexts(const RegistryValues& values) {
  TrackTexts texts;
  const auto count = ParseInteger(values.Text(kCount).value_or(""));
  if (!count || *count < 0 || *count > static_cast<std::int64_t>(kMostTexts)) return texts;
  for (std::size_t i = 0; i < static_cast<std::size_t>(*count); ++i) {
    const auto text = [&](std::string_view kind) {
      return std::string(values.Text(Key(kind, i)).value_or(""));
    };
    if (std::string file = text("File"); !file.empty())
      texts[std::move(file)] = {text("Title"), text("Performer")};
  }
  return texts;
}

}  // namespace ts5::disc
