#include "frame/file_types.h"

#include <gmock/gmock.h>

#include "frame/filter_catalogue.h"

namespace ts5 {
namespace {

TEST(FileTypes, AreTakenFromTheLastExtension) {
  const struct {
    const char* name;
    int type;
    const char* icon;
  } kCases[] = {
      {"a.wav", 11, "WAVEICON"},
      {"a.mp3", 13, "MP3ICON"},
      {"a.b.mp3", 13, "MP3ICON"},
      {"A.MPG", 15, "MP2ICON"},
      {"a.rmi", 17, "MIDICON"},
      {"/home/u/Lied.Mid", 17, "MIDICON"},
      {"a.txt", 19, "STOPICON"},
      {"a.stv", 23, "STVICON"},
      {"A.RDL", 31, "RDLICON"},
      {"a.asf", 55, "WMAICON"},
      {"Track01.cda", 59, "CDTRACKICON"},
      {"Track 3", 59, "CDTRACKICON"},
      {"PLEXTOR DVD+R/RW\\Track 3", 59, "CDTRACKICON"},
      {"a.mpga", 77, "MPGAICON"},
      {"a.aif", 85, "AIFICON"},
      {"a.tif", 89, "PICTUREICON"},
      {"a.xml", 91, "XMLICON"},
      {"a.stvx", 93, "STVXICON"},
      {"a.ogg", 95, "OGGICON"},
      {"a.ape", 97, "APEICON"},
      {"a.FLAC", 99, "FLACICON"},
      {"a.opus", 101, "OPUSICON"},
      {"a.m4a", 103, "M4AICON"},
      // Paths are never tracks, and a dot in a directory is no extension of a known kind.
      {"c:\\lieder\\readme", 19, "STOPICON"},
      {"/home/u/readme", 19, "STOPICON"},
      {"/home/u/a.wav/readme", 19, "STOPICON"},
      {"", 19, "STOPICON"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(static_cast<int>(FileTypeOf(test.name)), test.type) << test.name;
    EXPECT_EQ(FileIconName(FileTypeOf(test.name)), test.icon) << test.name;
  }
}

// Every extension that a filter takes has an icon of its own; none is offered that the lists would refuse.
TEST(FileTypes, CoverAllExtensionsOfTheCatalogue) {
  for (const FilterDescriptor& filter : FilterCatalogue()) {
    for (const auto extensions : {filter.single, filter.several, filter.wholeList}) {
      for (const std::string_view extension : extensions) {
        if (extension.empty()) continue;
        EXPECT_NE(FileTypeOf("a." + std::string(extension)), FileTypeId::Unsupported) << extension;
      }
    }
  }
}

}  // namespace
}  // namespace ts5
