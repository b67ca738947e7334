// Titles and performers of the tracks of a project, for CD-TEXT: what the user entered, else what the
// attributes of a file say, else what its name says.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "frame/parameters.h"
#include "platform/disc/cd_text.h"

namespace ts5::disc {

// What the user entered, by the source as the list names it.
using TrackTexts = std::map<std::string, CdText::Entry, std::less<>>;

// "03 - Chor - Abendlied.wav" -> "Abendlied" by "Chor"; "Abendlied.wav" -> "Abendlied" by nobody.
[[nodiscard]] CdText::Entry TextOfName(std::string_view fileName);
// Of a file by its attributes and its name, of a CD track by the text of its disc. Reads both.
[[nodiscard]] CdText::Entry TextOfSource(const std::string& source);
// What was entered, and what the source says where nothing was.
[[nodiscard]] CdText::Entry TrackText(const TrackTexts& entered, const std::string& source);

// The stored values of the texts: "BurnTextNum", then "BurnTextFile 0001", "BurnTextTitle 0001" and
// "BurnTextPerformer 0001" for each; at most 99.
void SaveTrackTexts(const TrackTexts& texts, RegistryValues& values);
[[nodiscard]] TrackTexts LoadTrackTexts(const RegistryValues& values);

// The row of a filter's field table. --set takes "0", which forgets them; they have options of their own.
template <typename P>
[[nodiscard]] ParameterField TrackTextsField(TrackTexts P::*member) {
  FieldOf<P> field;
  field.name = "BurnTextNum";
  field.description = "0";
  field.load = [member](P& p, const RegistryValues& values) { p.*member = LoadTrackTexts(values); };
  field.save = [member](const P& p, RegistryValues& values) { SaveTrackTexts(p.*member, values); };
  field.set = [member](P& p, std::string_view text) {
    if (Trim(text) != "0") return false;
    (p.*member).clear();
    return true;
  };
  return MakeField(std::move(field));
}

}  // namespace ts5::disc
