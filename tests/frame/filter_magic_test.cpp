#include <sys/stat.h>

#include "frame/sequencer_magic.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;

TEST(SequencerMagic, IsPatchedAndPutBack) {
  const test::TemporaryDirectory directory;
  for (const auto& [magic, kind] :
       {std::pair{"RDL3", MagicSwap::Sequencer}, {"STVR", MagicSwap::ScoreVariant}}) {
    const std::string path = directory.Write("song.rdl", std::string(magic) + "\0\0\0\6rest");
    const std::string before = test::Content(path);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);

    MagicSwap swap = MagicSwap::None;
    EXPECT_THAT(SwapSequencerMagic(path, swap), IsOk());
    EXPECT_EQ(swap, kind);
    EXPECT_EQ(test::Content(path), "MThd" + before.substr(4));
    EXPECT_THAT(SwapSequencerMagic(path, swap), IsOk());
    EXPECT_EQ(swap, MagicSwap::None);
    EXPECT_EQ(test::Content(path), before);

    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_NE(status.st_mode & S_IWUSR, 0U) << "the write permission stays given";
  }
}

TEST(SequencerMagic, LeavesOtherFilesAlone) {
  const test::TemporaryDirectory directory;
  const struct {
    const char* content;
    Outcome outcome;
  } kCases[] = {{"MThd1234", Outcome::WrongFormat},
                {"rdl3", Outcome::WrongFormat},
                {"RDL", Outcome::ReadFailed},
                {"", Outcome::ReadFailed}};
  for (const auto& test : kCases) {
    const std::string path = directory.Write("a.rdl", test.content);
    MagicSwap swap = MagicSwap::None;
    EXPECT_THAT(SwapSequencerMagic(path, swap), FailsWith(test.outcome)) << test.content;
    EXPECT_EQ(swap, MagicSwap::None);
    EXPECT_EQ(test::Content(path), test.content);
  }
  MagicSwap swap = MagicSwap::Sequencer;
  EXPECT_THAT(SwapSequencerMagic(directory.File("missing.rdl"), swap), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(SwapSequencerMagic(directory.Path(), swap), FailsWith(Outcome::SourceFailed));
  EXPECT_EQ(swap, MagicSwap::Sequencer) << "the file still waits for its magic";
}

}  // namespace
}  // namespace ts5
