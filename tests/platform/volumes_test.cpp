#include "platform/disc/volumes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "platform/files/directories.h"
#include "support/child.h"
#include "support/home.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

constexpr std::string_view kMounts =
    "26 1 254:0 / / rw,relatime - ext4 /dev/vda rw\n"
    "24 23 0:22 / /dev/shm rw - tmpfs tmpfs rw\n"
    "50 26 8:17 / /media/anna/USB\\040STICK rw,nosuid shared:5 master:1 - vfat /dev/sdb1 rw\n"
    "51 26 11:0 / /media/anna/MOZART ro - iso9660 /dev/sr1 ro\n"
    "52 26 0:60 / /mnt/noten rw - nfs4 server:/noten rw\n"
    "53 26 0:61 / /mnt/tmp rw - tmpfs tmpfs rw\n"
    "54 26 8:33 / /mnt/noten rw - ext4 /dev/sdc1 rw\n"
    "55 26 0:99 / /media/x\n"
    "broken line -\n";

TEST(Volumes, LettersInOrder) {
  const VolumeTable table = VolumeTable::Of("/home/anna/", kMounts, {"/dev/sr0", "/dev/sr1"});
  const std::vector<Volume> expected = {
      {Volume::Kind::Home, "Persönlicher Ordner", "/home/anna", ""},
      {Volume::Kind::Root, "Dateisystem", "/", ""},
      {Volume::Kind::Medium, "USB STICK", "/media/anna/USB STICK", "/dev/sdb1"},
      {Volume::Kind::Medium, "noten", "/mnt/noten", "/dev/sdc1"},
      {Volume::Kind::Optical, "CD-Laufwerk", "/dev/sr0", "/dev/sr0"},
      {Volume::Kind::Optical, "MOZART", "/media/anna/MOZART", "/dev/sr1"},
  };
  EXPECT_EQ(table.Volumes(), expected);
  EXPECT_EQ(table.DisplayText(0), "Persönlicher Ordner (c:)");
  EXPECT_EQ(table.DisplayText(5), "MOZART (h:)");
  EXPECT_EQ(table.DisplayText(6), "");

  EXPECT_EQ(table.DriveOfPath("/home/anna/Musik"), 0);
  EXPECT_EQ(table.DriveOfPath("/home/annabell"), 1);
  EXPECT_EQ(table.DriveOfPath("/media/anna/USB STICK"), 2);
  EXPECT_EQ(table.DriveOfPath("relativ"), kNoDrive);
}

TEST(Volumes, NoMoreThanTheAlphabet) {
  std::string mounts;
  for (int i = 0; i < 40; ++i)
    mounts += "1 1 8:1 / /media/m" + std::to_string(i) + " rw - vfat /dev/sdx rw\n";
  EXPECT_EQ(VolumeTable::Of("/root", mounts, {}).Volumes().size(), 24U);
}

TEST(Volumes, PathsAreFoundWithoutRegardToCase) {
  const test::TemporaryDirectory home;
  for (const char* name : {"Musik/Größe.mid", "Musik/LIED.mid", "Musik/Lied.mid", "datei"})
    home.Write(name, "x");
  const VolumeTable table = VolumeTable::Of(home.Path(), "", {"/dev/sr99"});
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"c:\\musik\\GRÖSSE.MID", ""},  // ß is no SS
      {"C:\\MUSIK\\GRÖßE.MID", "Musik/Größe.mid"},
      {"c:/Musik/Lied.mid", "Musik/Lied.mid"},
      {"c:\\musik\\lied.MID", "Musik/LIED.mid"},
      {"c:musik\\..\\Datei", "datei"},
      {"c:\\..\\..\\datei\\", "datei"},
      {"c:\\datei\\x", ""},
      {"c:\\nichts\\Musik", ""},
      {"e:\\", ""},  // no disc
      {"x:\\datei", ""},
      {"datei", ""},
      {"", ""},
  };
  for (const auto& [path, expected] : cases) {
    const auto found = table.FindPath(path);
    EXPECT_EQ(found.value_or(""), expected.empty() ? "" : home.File(expected)) << path;
  }
  EXPECT_EQ(table.FindPath("c:\\"), home.Path());
  EXPECT_EQ(table.FindPath("d:" + home.File("DATEI")), home.File("datei"));
  EXPECT_EQ(table.FindPath(home.File("datei")), home.File("datei"));
  EXPECT_EQ(table.NativePath("c:\\musik\\Neu\\a.MID"), home.File("Musik/Neu/a.MID"));
  EXPECT_EQ(table.NativePath("x:\\a"), std::nullopt);
}

TEST(Volumes, ThisMachineHasItsHomeAndRoot) {
  const VolumeTable table = VolumeTable::OfThisMachine();
  ASSERT_GE(table.Volumes().size(), 3U);
  EXPECT_EQ(table.Volumes()[0].path, HomeDirectory());
  EXPECT_EQ(table.FindPath("d:\\PROC\\Self"), "/proc/self");
  // The virtual drives come last, so that they move no letter.
  EXPECT_EQ(table.Volumes().back().name, "Virtueller CD-Brenner");
  EXPECT_EQ(table.DriveOfPath(table.Volumes().back().path + "/Track 01"),
            static_cast<int>(table.Volumes().size()) - 1);
}

TEST(Directories, FollowTheBaseDirectoryRules) {
  const test::TemporaryDirectory home;
  const std::string configuration = home.File(".config/stavora-ts5");
  EXPECT_EQ(test::InChild([&] {
              ::setenv("HOME", home.Path().c_str(), 1);
              ::setenv("XDG_CONFIG_HOME", "relative/is/ignored", 1);
              ::setenv("XDG_DATA_HOME", "/daten", 1);
              return ConfigurationDirectory() == configuration && ProgramDirectory() == "/daten/stavora-ts5";
            }),
            0);
  EXPECT_EQ(test::InChild([&] {
              ::setenv("HOME", home.Path().c_str(), 1);
              for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"}) ::unsetenv(name);
              return ConfigurationDirectory() == configuration &&
                     ProgramDirectory() == home.File(".local/share/stavora-ts5");
            }),
            0);
  EXPECT_TRUE(std::filesystem::exists(InstalledDirectory() + "/strings/all.def"))
      << "not installed: the source tree";
}

}  // namespace
}  // namespace ts5
