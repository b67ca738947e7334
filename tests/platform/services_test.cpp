// The small services of the desktop and the system: clock, wastebasket.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "platform/base/clock.h"
#include "platform/files/wastebasket.h"
#include "support/child.h"
#include "support/home.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono;
using test::FailsWith;
using test::IsOk;

TEST(Clock, CivilDates) {
  const auto at = [](std::int64_t seconds) {
    return system_clock::time_point(std::chrono::seconds(seconds));
  };
  EXPECT_EQ(test::InChild([&] {
              ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
              ::tzset();
              return LocalTime(at(1719835200)) == CivilTime{2024, 7, 1, 14, 0, 0} &&
                     LocalTime(at(1704110400)) == CivilTime{2024, 1, 1, 13, 0, 0} &&
                     LocalTime(at(951778799)) == CivilTime{2000, 2, 28, 23, 59, 59} &&
                     LocalTime(at(951778800)) == CivilTime{2000, 2, 29, 0, 0, 0} &&
                     LocalTime(at(-3600) - milliseconds(1)) == CivilTime{1969, 12, 31, 23, 59, 59};
            }),
            0);
}

TEST(Wastebasket, KeepsWhatItTakes) {
  const test::Home directory;
  const std::string path = directory.Write("musik/Übung 1.mid", "MThd");
  EXPECT_THAT(MoveToTrash(path), IsOk());
  EXPECT_FALSE(fs::exists(path));
  EXPECT_THAT(MoveToTrash(path), FailsWith(Outcome::SourceFailed));
  std::vector<std::string> kept;
  for (const auto& entry : fs::recursive_directory_iterator(directory.Path())) {
    if (entry.path().extension() == ".mid") kept.push_back(test::Content(entry.path()));
  }
  EXPECT_EQ(kept, std::vector<std::string>{"MThd"});

  // A wastebasket that cannot be made leaves the file where it is.
  fs::remove_all(directory.File("Trash"));
  directory.Write("Trash", "x");
  const std::string stays = directory.Write("musik/b.mid", "MThd");
  EXPECT_THAT(MoveToTrash(stays), FailsWith(Outcome::TargetFailed));
  EXPECT_EQ(test::Content(stays), "MThd");
}

}  // namespace
}  // namespace ts5
