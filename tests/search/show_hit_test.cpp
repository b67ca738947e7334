#include "search/show_hit.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <thread>

#include "search/texts.h"
#include "support/home.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;
using ::testing::ElementsAre;

SearchHit ScoreHit() {
  SearchHit hit;
  hit.file = "/m/ä.stv";
  hit.firstSystem = 1;
  hit.lastSystem = 2;
  hit.firstObject = 3;
  hit.lastObject = 4;
  hit.verticalPosition = 515;
  hit.track = 6;
  hit.voice = 7;
  hit.bar = 258;
  return hit;
}

TEST(SiblingMessagesTest, AreByteExact) {
  const SearchHit hit = ScoreHit();
  EXPECT_EQ(SequencerOpenMessage(hit),
            (SiblingMessage{0xD7E10001, Bytes{'/', 'm', '/', 0xC3, 0xA4, '.', 's', 't', 'v', 0}}));
  EXPECT_EQ(SequencerPlaceMessage(hit), (SiblingMessage{0xD7E20002, Bytes{2, 1, 0, 0, 6, 0, 0, 0}}));
  const auto messages = ScoreMessages(hit);
  ASSERT_EQ(messages.size(), 3u);
  EXPECT_EQ(messages[0].id, 0x0E530001u);
  EXPECT_EQ(messages[1], (SiblingMessage{0x0E530009, Bytes{0, 0, 0, 0, 3, 2, 0, 0, 0x10, 0x27, 0, 0}}));
  EXPECT_EQ(messages[2], (SiblingMessage{0x0E53000D, Bytes{1, 0, 0, 0, 6, 0, 0, 0, 7,    0,    0,    0,
                                                           3, 0, 0, 0, 2, 0, 0, 0, 6,    0,    0,    0,
                                                           7, 0, 0, 0, 5, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF}}));
}

class SiblingLinkTest : public testing::Test {
 protected:
  const test::Home directory_;
};

TEST_F(SiblingLinkTest, MessagesArriveInOrder) {
  const std::vector<SiblingMessage> messages = ScoreMessages(ScoreHit());
  EXPECT_THAT(SendToSibling("Stavora", messages), FailsWith(Outcome::TargetFailed));
  auto receiver = SiblingReceiver::Listen("Stavora");
  ASSERT_THAT(receiver, IsOk());
  EXPECT_THAT(SiblingReceiver::Listen("Stavora"), FailsWith(Outcome::InUse));
  EXPECT_TRUE(SiblingIsThere("Stavora"));
  EXPECT_FALSE(SiblingIsThere("Rondelis"));
  std::vector<SiblingMessage> received;
  std::jthread reader([&] {
    for (int i = 0; i < 4; ++i) {
      if (auto message = receiver->Receive()) received.push_back(std::move(*message));
    }
  });
  EXPECT_THAT(SendToSibling("Stavora", messages), IsOk());
  const std::vector<SiblingMessage> large = {{7, Bytes(300'000, 9)}};  // more than a socket holds
  EXPECT_THAT(SendToSibling("Stavora", large), IsOk());
  reader.join();
  ASSERT_EQ(received.size(), 4u);
  EXPECT_EQ(std::vector(received.begin(), received.begin() + 3), messages);
  EXPECT_EQ(received[3], large[0]);
}

TEST_F(SiblingLinkTest, SilentAndDeadReceivers) {
  const std::vector<SiblingMessage> message = {{1, {1}}};
  {
    const auto silent = SiblingReceiver::Listen("Stavora");
    EXPECT_THAT(SendToSibling("Stavora", message, std::chrono::milliseconds(50)),
                FailsWith(Outcome::WriteFailed));
  }
  EXPECT_EQ(test::Listing(directory_.Path()), "");
  (void)directory_.Write("Stavora.sibling", "");  // what a killed program leaves
  EXPECT_FALSE(SiblingIsThere("Stavora"));
  EXPECT_THAT(SiblingReceiver::Listen("Stavora"), IsOk());
  for (const char* name : {"", "a/b"})
    EXPECT_THAT(SiblingReceiver::Listen(name), FailsWith(Outcome::TargetFailed));
  EXPECT_THAT(SiblingReceiver::Listen(std::string(65, 'x')), FailsWith(Outcome::TargetFailed));
}

// A system with two programs that come up after a few polls.
struct Siblings {
  int pollsUntilThere = 0;
  bool starts = true;
  bool takes = true;
  int patience = 10;
  std::vector<std::string> log = {};

  SiblingServices Services() {
    return {.isThere = [this](const std::string&) { return pollsUntilThere <= 0; },
            .start =
                [this](const std::string& program, const std::vector<std::string>& arguments) {
                  log.push_back("start " + program + (arguments.empty() ? "" : " " + arguments[0]));
                  return starts ? Outcome::Success : Outcome::SourceFailed;
                },
            .send =
                [this](const std::string&, const std::vector<SiblingMessage>& messages) {
                  log.push_back("send " + std::to_string(messages.size()));
                  return takes ? Outcome::Success : Outcome::WriteFailed;
                },
            .raise = [this](const std::string& windowClass) { log.push_back("raise " + windowClass); },
            .sleep =
                [this](std::chrono::milliseconds) {
                  --pollsUntilThere;
                  return --patience > 0;
                }};
  }
};

TEST(ShowHitTest, TheSequencerIsStartedOrRaised) {
  struct Case {
    Siblings siblings;
    std::optional<TextId> told;
    std::vector<std::string> log;
  };
  const std::string start = "start /bin/rondelis /m/ä.stv";
  for (Case& c : std::vector<Case>{
           {{}, std::nullopt, {"raise Rondelis", "send 2"}},
           {{.pollsUntilThere = 3}, std::nullopt, {start, "send 1"}},
           {{.pollsUntilThere = 3, .starts = false}, texts::ApplicationNotStarted, {start}},
           {{.pollsUntilThere = 1000}, std::nullopt, {start}},
           {{.takes = false}, texts::HitNotShown, {"raise Rondelis", "send 2"}},
       }) {
    EXPECT_EQ(ShowInSequencer(ScoreHit(), {"/bin/rondelis", "Rondelis"}, c.siblings.Services()), c.told);
    EXPECT_EQ(c.siblings.log, c.log);
  }
  Siblings unknown;
  EXPECT_EQ(ShowInSequencer(ScoreHit(), {}, unknown.Services()), std::nullopt);
  EXPECT_TRUE(unknown.log.empty());
}

TEST(ShowHitTest, TheScoreEditorIsStartedWithoutArguments) {
  Siblings stopped{.pollsUntilThere = 2};
  const auto editor = [] { return SiblingProgram{"/bin/stavora", "Stavora"}; };
  EXPECT_EQ(ShowInScoreEditor(ScoreHit(), editor, stopped.Services()), std::nullopt);
  EXPECT_THAT(stopped.log, ElementsAre("start /bin/stavora", "send 3", "raise Stavora"));
  Siblings none;
  EXPECT_EQ(ShowInScoreEditor(
                ScoreHit(), [] { return SiblingProgram{}; }, none.Services()),
            texts::NotForThisScore);
  EXPECT_TRUE(none.log.empty());
}

}  // namespace
}  // namespace ts5
