#include "search/midi_search.h"

#include <gmock/gmock.h>

#include <limits>
#include <optional>
#include <utility>

#include "support/matchers.h"
#include "support/test_data.h"
#include "track_builder.h"

namespace ts5 {
namespace {

using test::AppendBytes;
using test::MidiImage;
using test::TrackBuilder;
using ::testing::ElementsAre;

struct Place {
  std::int32_t track, bar, time;
  bool operator==(const Place&) const = default;
};
void PrintTo(const Place& place, std::ostream* out) {
  *out << "track " << place.track << " bar " << place.bar << " time " << place.time;
}

struct Found {
  SearchOutcome outcome;
  std::vector<Place> places;
};

// c d e in quarters, absolute and exact.
MelodyQuery Query() {
  MelodyQuery query;
  query.elements = {{60, 240}, {62, 240}, {64, 240}};
  query.options.tolerance = Tolerance::None;
  return query;
}

Found Search(const Bytes& file, const MelodyQuery& query = Query()) {
  Found found;
  const HitSink sink = [&](const SearchHit& hit) {
    EXPECT_EQ(hit.file, "x.mid");
    EXPECT_EQ(hit.voice, 0);
    found.places.push_back({hit.track, hit.bar, hit.time});
    return Outcome::Success;
  };
  found.outcome = SearchMidiImage(file, "x.mid", query, sink, {});
  return found;
}

constexpr std::uint32_t kQuarter = 192;

// The tune from a tick on, in files of division 192.
Bytes Tune(std::uint32_t start, std::uint32_t end = kQuarter) {
  return TrackBuilder().Note(start, 60).Note(kQuarter, 62).Note(kQuarter, 64).End(end);
}

Bytes Empty() {
  return TrackBuilder().End();
}

TEST(MidiSearchTest, TracksAreCountedBehindTheConductor) {
  struct Case {
    const char* what;
    Bytes file;
    bool firstTrackOnly;
    std::vector<Place> places;
  };
  const Case cases[] = {
      {"one track", MidiImage({Tune(0)}), false, {{0, 0, 0}}},
      {"one track, format 0", MidiImage({Tune(0)}, 192, 0), true, {{0, 0, 0}}},
      {"the conductor is not searched", MidiImage({Tune(0), Empty()}), false, {}},
      {"nor with format 0", MidiImage({Tune(0), Empty()}, 192, 0), false, {}},
      {"two tracks", MidiImage({Empty(), Tune(768)}), false, {{0, 1, 2000}}},
      {"several", MidiImage({Tune(0), Tune(0), Empty(), Tune(768)}), false, {{0, 0, 0}, {2, 1, 2000}}},
      {"the first one only", MidiImage({Tune(0), Tune(768), Tune(0)}), true, {{0, 1, 2000}}},
  };
  for (const Case& c : cases) {
    MelodyQuery query = Query();
    query.options.firstTrackOnly = c.firstTrackOnly;
    const Found found = Search(c.file, query);
    EXPECT_EQ(found.outcome.code, Outcome::Success) << c.what;
    EXPECT_EQ(found.places, c.places) << c.what;
    EXPECT_EQ(found.outcome.hits, c.places.size()) << c.what;
  }
}

TEST(MidiSearchTest, BarsAndTimesFollowTheFirstTrack) {
  // Tempo 100, and a later one that changes nothing; 3/4 from the start, 6/8 from the middle of the third
  // bar, whose bar therefore begins at tick 1152.
  TrackBuilder conductor;
  conductor.Raw(0, {0xFF, 0x58, 4, 3, 2, 24, 8}).Raw(0, {0xFF, 0x51, 3, 0x09, 0x27, 0xC0});
  conductor.Raw(1200, {0xFF, 0x58, 4, 6, 3, 24, 8}).Raw(0, {0xFF, 0x51, 3, 0x01, 0x00, 0x00});
  const Bytes map = conductor.End();
  EXPECT_THAT(Search(MidiImage({map, Tune(1920)})).places, ElementsAre(Place{0, 3, 5999}));
  EXPECT_THAT(Search(MidiImage({map, Tune(576)})).places, ElementsAre(Place{0, 1, 1799}));
  EXPECT_THAT(Search(MidiImage({map, Tune(1151)})).places, ElementsAre(Place{0, 1, 3596}));
  EXPECT_THAT(Search(MidiImage({map, Tune(1727)})).places, ElementsAre(Place{0, 2, 5396}));
  // In a file of one track they stand among its notes, also behind them.
  TrackBuilder only;
  only.Note(0, 60).Note(kQuarter, 62).Raw(0, {0xFF, 0x51, 3, 0x09, 0x27, 0xC0}).Note(kQuarter, 64);
  only.Note(1536, 60).Note(kQuarter, 62).Note(kQuarter, 64);
  only.Raw(0, {0xFF, 0x58, 4, 3, 2, 24, 8});
  EXPECT_THAT(Search(MidiImage({only.End(kQuarter)})).places, ElementsAre(Place{0, 0, 0}, Place{0, 2, 5999}));
}

TEST(MidiSearchTest, Containers) {
  const Bytes smf = MidiImage({Empty(), Tune(0)});
  Bytes sequencer = smf;
  std::ranges::copy(AsBytes("RDL3"), sequencer.begin());
  AppendBytes(sequencer, Bytes(8696));
  EXPECT_EQ(Search(sequencer).places.size(), 1u);
  for (const Bytes& inner : {smf, MidiImage({Tune(0)})}) {  // format 1 with one track is still wrapped
    Bytes riff;
    AppendBytes(riff, AsBytes("RIFF....RMIDdata...."));
    AppendBytes(riff, inner);
    EXPECT_EQ(Search(riff).places.size(), 1u);
  }
}

TEST(MidiSearchTest, DamageMakesAFileUnsuitable) {
  const Bytes whole = MidiImage({Empty(), Tune(0), Tune(0)});
  struct Case {
    const char* what;
    Bytes file;
    Outcome code;
    std::size_t sent;
  };
  const auto with = [&](std::size_t at, int value) {
    Bytes bytes = whole;
    bytes[at] = static_cast<std::uint8_t>(value);
    return bytes;
  };
  const auto cut = [&](std::size_t size) {
    return Bytes(whole.begin(), whole.end() - static_cast<int>(size));
  };
  const std::size_t lastTrack = whole.size() - Tune(0).size() - 8;
  const Case cases[] = {
      {"nothing", {}, Outcome::WrongFormat, 0},
      {"SMPTE time", with(12, 0xE8), Outcome::WrongFormat, 0},
      {"length of the header", with(7, 7), Outcome::WrongFormat, 0},
      {"one track more than there are", with(11, 4), Outcome::DamagedMidi, 2},
      {"the last track cut short", cut(1), Outcome::DamagedMidi, 1},
      {"another chunk in its place", with(lastTrack, 'X'), Outcome::DamagedMidi, 1},
      // The look behind the last note of the tune meets the damage before the hit is sent.
      {"no end of the last track", with(whole.size() - 2, 0x01), Outcome::DamagedMidi, 1},
      {"a conductor without end", MidiImage({TrackBuilder().Note(0, 60).Unfinished(), Tune(0)}),
       Outcome::DamagedMidi, 0},
      // The scan of signatures comes first, so that not even the hits before the damage are sent.
      {"an only track without end",
       MidiImage({TrackBuilder().Note(0, 60).Note(192, 62).Note(192, 64).Note(192, 65).Unfinished()}),
       Outcome::DamagedMidi, 0},
      {"damage behind the drums of an only track",
       MidiImage({TrackBuilder().Note(0, 60).Message(0, 0xC9, {1}).Note(1, 61).Unfinished()}),
       Outcome::DamagedMidi, 0},
      {"no track counted before those that are there", with(11, 0), Outcome::DamagedMidi, 0},
  };
  for (const Case& c : cases) {
    const Found found = Search(c.file);
    EXPECT_EQ(found.outcome.code, c.code) << c.what;
    EXPECT_EQ(found.places.size(), c.sent) << c.what;
  }
}

// A stop is heard at any place of one huge file: while it is read, in the scan for signatures, in a track
// without notes, and in the look for the onset behind the last note.
TEST(MidiSearchTest, AStopIsHeardInsideOneHugeFile) {
  const auto controllers = [](bool note) {
    TrackBuilder track;
    if (note) track.Note(0, 60);
    for (int i = 0; i < 2'000'000; ++i) track.Message(1, 0xB0, {7, i & 0x7F});
    return track.End();
  };
  struct Case {
    const char* what;
    Bytes file;
  };
  const Case cases[] = {{"an only track", MidiImage({controllers(false)})},
                        {"the conductor", MidiImage({controllers(false), Tune(0)})},
                        {"behind the last note", MidiImage({Empty(), controllers(true)})}};
  MelodyQuery query = Query();
  query.options.pitch = PitchMode::Ignore;
  const HitSink none = [](const SearchHit&) { return Outcome::Success; };
  const test::TemporaryDirectory directory;
  for (const Case& c : cases) {
    const std::string path = directory.Write("x.mid", AsText(c.file));
    const auto search = [&](int stopAt) {
      int polls = 0;
      const CancelCheck check = [&] { return ++polls >= stopAt; };
      return std::pair(SearchMidiFile(path, query, none, check).code, polls);
    };
    const auto [code, polls] = search(std::numeric_limits<int>::max());
    EXPECT_EQ(code, Outcome::Success) << c.what;
    EXPECT_GE(polls, static_cast<int>(c.file.size() >> 18)) << c.what;
    for (int stopAt = 1; stopAt <= std::min(polls, 40); ++stopAt) {
      const auto [stopped, asked] = search(stopAt);
      EXPECT_EQ(stopped, Outcome::Cancelled) << c.what;
      EXPECT_LE(asked, stopAt + 1) << c.what;
    }
  }
}

TEST(MidiSearchTest, FilesThatCannotBeRead) {
  const test::TemporaryDirectory directory;
  const HitSink none = [](const SearchHit&) { return Outcome::Success; };
  for (const std::string& path : {directory.File("fehlt.mid"), directory.Path(),
                                  directory.Write("leer.mid", ""), std::string("/dev/null"), std::string()}) {
    EXPECT_EQ(SearchMidiFile(path, Query(), none, {}).code, Outcome::WrongFormat) << path;
  }
}

}  // namespace
}  // namespace ts5
