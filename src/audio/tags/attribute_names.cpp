#include "audio/tags/attribute_names.h"

#include <algorithm>

#include "platform/base/text.h"

namespace ts5::tags {
namespace {

constexpr auto kText = AttributeType::String;
constexpr auto kFlag = AttributeType::Bool;
constexpr auto kNumber = AttributeType::DWord;
constexpr auto kLong = AttributeType::QWord;

constexpr AttributeName kNames[] = {
    {"Author", kText, false, "TPE1", "ARTIST", "Artist", "IART",
     "\xC2\xA9"
     "ART"},
    {"Title", kText, false, "TIT2", "TITLE", "Title", "INAM",
     "\xC2\xA9"
     "nam"},
    {"Copyright", kText, false, "TCOP", "COPYRIGHT", "Copyright", "ICOP", "cprt"},
    {"CopyrightURL", kText, false, "WCOP", "", "", "", ""},
    {"Description", kText, false, "COMM", "COMMENT", "Comment", "ICMT",
     "\xC2\xA9"
     "cmt"},
    {"Rating", kText, false, "", "", "", "", ""},
    {"Duration", kLong, true, "", "", "", "", ""},
    {"FileSize", kLong, true, "", "", "", "", ""},
    {"Bitrate", kNumber, true, "", "", "", "", ""},
    {"OptimalBitrate", kNumber, true, "", "", "", "", ""},
    {"HasAudio", kFlag, true, "", "", "", "", ""},
    {"HasVideo", kFlag, true, "", "", "", "", ""},
    {"Seekable", kFlag, true, "", "", "", "", ""},
    {"NSC_Name", kText, false, "", "", "", "", ""},
    {"NSC_Description", kText, false, "", "", "", "", ""},
    {"NSC_Phone", kText, false, "", "", "", "", ""},
    {"WM/AlbumArtist", kText, false, "TPE2", "ALBUMARTIST", "Album Artist", "", "aART"},
    {"WM/AlbumCoverURL", kText, false, "", "", "", "", ""},
    {"WM/AlbumTitle", kText, false, "TALB", "ALBUM", "Album", "IPRD",
     "\xC2\xA9"
     "alb"},
    {"WM/AudioFileURL", kText, false, "WOAF", "", "", "", ""},
    {"WM/AudioSourceURL", kText, false, "WOAS", "", "", "", ""},
    {"WM/AuthorURL", kText, false, "WOAR", "", "", "", ""},
    {"WM/Category", kText, false, "", "", "", "", ""},
    {"WM/Codec", kText, false, "", "", "", "", ""},
    {"WM/Composer", kText, false, "TCOM", "COMPOSER", "Composer", "IMUS",
     "\xC2\xA9"
     "wrt"},
    {"WM/Conductor", kText, false, "TPE3", "CONDUCTOR", "Conductor", "", ""},
    {"WM/ContentDistributor", kText, false, "", "", "", "", ""},
    {"WM/ContentGroupDescription", kText, false, "TIT1", "GROUPING", "Grouping", "",
     "\xC2\xA9"
     "grp"},
    {"WM/DRM", kText, true, "", "", "", "", ""},
    {"WM/DVDID", kText, false, "", "", "", "", ""},
    {"WM/Director", kText, false, "", "", "", "", ""},
    {"WM/EncodedBy", kText, false, "TENC", "ENCODEDBY", "EncodedBy", "ISFT", ""},
    {"WM/EncodingSettings", kText, false, "TSSE", "ENCODERSETTINGS", "EncoderSettings", "",
     "\xC2\xA9"
     "too"},
    {"WM/EncodingTime", kLong, false, "", "", "", "", ""},
    {"WM/Genre", kText, false, "TCON", "GENRE", "Genre", "IGNR",
     "\xC2\xA9"
     "gen"},
    {"WM/GenreID", kText, false, "", "", "", "", ""},
    {"WM/ISRC", kText, false, "TSRC", "ISRC", "ISRC", "", ""},
    {"WM/InitialKey", kText, false, "TKEY", "KEY", "Key", "", ""},
    {"WM/Language", kText, false, "TLAN", "LANGUAGE", "Language", "ILNG", ""},
    {"WM/Lyrics", kText, false, "USLT", "LYRICS", "Lyrics", "",
     "\xC2\xA9"
     "lyr"},
    {"WM/ModifiedBy", kText, false, "TPE4", "REMIXER", "MixArtist", "", ""},
    {"WM/Mood", kText, false, "", "MOOD", "Mood", "", ""},
    {"WM/OriginalAlbumTitle", kText, false, "TOAL", "", "", "", ""},
    {"WM/OriginalArtist", kText, false, "TOPE", "", "Original Artist", "", ""},
    {"WM/OriginalFilename", kText, false, "TOFN", "", "", "", ""},
    {"WM/OriginalLyricist", kText, false, "TOLY", "", "", "", ""},
    {"WM/OriginalReleaseYear", kText, false, "TDOR", "ORIGINALDATE", "", "", ""},
    {"WM/ParentalRating", kText, false, "", "", "", "", ""},
    {"WM/Period", kText, false, "", "", "", "", ""},
    {"WM/Producer", kText, false, "", "PRODUCER", "Producer", "IPRO", ""},
    {"WM/PromotionURL", kText, false, "WCOM", "", "", "", ""},
    {"WM/ProtectionType", kText, true, "", "", "", "", ""},
    {"WM/Provider", kText, false, "", "", "", "", ""},
    {"WM/Publisher", kText, false, "TPUB", "ORGANIZATION", "Publisher", "", ""},
    {"WM/RadioStationName", kText, false, "TRSN", "", "", "", ""},
    {"WM/RadioStationOwner", kText, false, "TRSO", "", "", "", ""},
    {"WM/SubTitle", kText, false, "TIT3", "SUBTITLE", "Subtitle", "", ""},
    {"WM/Track", kNumber, false, "", "", "", "", ""},
    {"WM/TrackNumber", kText, false, "TRCK", "TRACKNUMBER", "Track", "ITRK", "trkn"},
    {"WM/UserWebURL", kText, false, "WXXX", "", "", "", ""},
    {"WM/Writer", kText, false, "TEXT", "LYRICIST", "Lyricist", "IWRI", ""},
    {"WM/Year", kText, false, "TDRC", "DATE", "Year", "ICRD",
     "\xC2\xA9"
     "day"},
};

}  // namespace

std::span<const AttributeName> AttributeNames() {
  return kNames;
}

const AttributeName* FindAttributeName(std::string_view name) {
  return NameOfField(&AttributeName::name, name);
}

const AttributeName* NameOfField(std::string_view AttributeName::*field, std::string_view value) {
  if (value.empty()) return nullptr;
  // The table has no letters of which the other case is longer or shorter.
  const auto* const found = std::ranges::find_if(kNames, [&](const AttributeName& row) {
    return (row.*field).size() == value.size() && EqualsIgnoringCase(row.*field, value);
  });
  return found == std::end(kNames) ? nullptr : found;
}

Attribute NewAttribute(std::string_view name) {
  const AttributeName* const known = FindAttributeName(name);
  if (known == nullptr) return {AttributeType::String, std::string(name), "", false, false};
  return {known->type, std::string(known->name), "", known->readOnly, false};
}

}  // namespace ts5::tags
