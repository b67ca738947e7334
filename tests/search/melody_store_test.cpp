#include "search/melody_store.h"

#include <gmock/gmock.h>

#include "platform/base/text.h"
#include "search/texts.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;
using ::testing::ElementsAre;

class MelodyStoreTest : public testing::Test {
 protected:
  Registry registry_ = std::move(*Registry::Open(kRegistryInMemory));
  MelodyStore store_{registry_};
  std::vector<TextId> asked_;
  bool answer_ = true;
  MelodyQuestion ask_ = [this](TextId question) {
    asked_.push_back(question);
    return answer_;
  };

  static SearchMelody Melody(std::vector<MelodyElement> elements) {
    SearchMelody melody;
    melody.elements = std::move(elements);
    return melody;
  }
  const SearchMelody tune_ = Melody({{60, 240}, {kRestCode, 120}, {62, 240}});
};

TEST_F(MelodyStoreTest, SavesTrimmedUnderAnyName) {
  const std::string name = R"(Für "Elise" \/:*?<>| Opus)";
  EXPECT_THAT(store_.SaveMelody(name, Melody({{kRestCode, 240}, {10060, 240}, {kRestCode, 240}})), IsOk());
  EXPECT_THAT(store_.LoadMelody(name).value(), ElementsAre(MelodyElement{10060, 240}));
  const auto values = registry_.Read(kMelodyKey);
  EXPECT_EQ(values->Find(name)->data, std::string("\x4C\x27\xF0\x00", 4));
  EXPECT_THAT(store_.SaveMelody("", tune_), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(store_.SaveMelody(std::string(81, 'x'), tune_), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(store_.SaveMelody("Pausen", Melody({{kRestCode, 240}})), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(store_.LoadMelody("Pausen"), FailsWith(Outcome::SourceFailed));
}

TEST_F(MelodyStoreTest, ListsAndSorts) {
  ASSERT_THAT(store_.SaveMelody("b", tune_), IsOk());
  ASSERT_THAT(store_.SaveMelody("C", Melody({{60, 240}})), IsOk());
  ASSERT_THAT(store_.SaveMelody("A", Melody({{60, 240}, {62, 240}})), IsOk());
  (void)registry_.SetValue(kMelodyKey, "kein", {RegistryValue::Kind::Text, "Text"});
  auto melodies = store_.ListStoredMelodies().value();
  const auto names = [&] {
    std::string text;
    for (const auto& melody : melodies) text += melody.name + std::to_string(melody.noteCount);
    return text;
  };
  EXPECT_EQ(names(), "A2b3C1");
  SortMelodies(melodies, MelodyColumn::Name, false);
  EXPECT_EQ(names(), "C1b3A2");
  SortMelodies(melodies, MelodyColumn::NoteCount, true);
  EXPECT_EQ(names(), "C1A2b3");
}

TEST_F(MelodyStoreTest, EmptyStoreHasNothing) {
  EXPECT_TRUE(store_.ListStoredMelodies().value().empty());
  EXPECT_THAT(store_.RenameMelody("a", "b"), FailsWith(Outcome::SourceFailed));
  EXPECT_EQ(DeleteStoredMelody(store_, "a", ask_).message, texts::MelodyNotDeleted);
  EXPECT_EQ(RenameStoredMelody(store_, "a", "b", ask_).message, texts::MelodyNotRenamed);
  SearchMelody melody = tune_;
  EXPECT_EQ(LoadStoredMelody(store_, "a", melody, ask_).message, texts::MelodyNotLoaded);
  EXPECT_EQ(melody, tune_);
}

TEST_F(MelodyStoreTest, AsksBeforeItReplaces) {
  EXPECT_EQ(SaveMelodyAs(store_, "", tune_, ask_).message, texts::MelodyNameMissing);
  EXPECT_TRUE(SaveMelodyAs(store_, "Lied", tune_, ask_).done);
  EXPECT_TRUE(asked_.empty());
  answer_ = false;
  EXPECT_FALSE(SaveMelodyAs(store_, "LIED", Melody({{50, 240}}), ask_).done);
  EXPECT_EQ(store_.LoadMelody("Lied").value(), tune_.elements);
  EXPECT_TRUE(SaveMelodyAs(store_, "Tanz", Melody({{50, 240}}), ask_).done);
  EXPECT_FALSE(RenameStoredMelody(store_, "Tanz", "lied", ask_).done);
  EXPECT_EQ(store_.ListStoredMelodies().value().size(), 2u);
  answer_ = true;
  EXPECT_TRUE(RenameStoredMelody(store_, "Tanz", "lied", ask_).done);
  EXPECT_THAT(store_.ListStoredMelodies().value(), ElementsAre(StoredMelodyInfo{"lied", 1}));
  EXPECT_TRUE(RenameStoredMelody(store_, "lied", "Lied", ask_).done) << "the case alone asks nothing";
  EXPECT_THAT(store_.ListStoredMelodies().value(), ElementsAre(StoredMelodyInfo{"Lied", 1}));
  EXPECT_THAT(asked_, ElementsAre(texts::MelodyExists, texts::MelodyTitleExists, texts::MelodyTitleExists));
}

TEST_F(MelodyStoreTest, LoadingTakesNameClefAndCursor) {
  ASSERT_THAT(store_.SaveMelody("Bass", Melody({{10036, 240}})), IsOk());
  SearchMelody melody = tune_;
  melody.cursor = 3;
  EXPECT_TRUE(LoadStoredMelody(store_, "Bass", melody, ask_).done);
  EXPECT_EQ(melody.clef, Clef::Bass);
  EXPECT_EQ(melody.cursor, 1u);
  EXPECT_EQ(melody.name, "Bass");
}

}  // namespace
}  // namespace ts5
