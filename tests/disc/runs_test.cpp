// Whole runs of burner, grabber and copier on the virtual drives.
#include <sys/stat.h>

#include "disc/burner.h"
#include "disc/copier.h"
#include "disc/disc_codes.h"
#include "disc/grabber.h"
#include "disc/verify.h"
#include "disc_support.h"
#include "frame/texts.h"
#include "platform/disc/disc_image.h"

namespace ts5::disc {
namespace {

using test::Noise;
using test::Padded;
using test::Silence;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Status = RecordedDisc::Status;

class BurnTest : public test::DiscTest {
 protected:
  // Three files: no whole sectors, whole ones, and a pause before the third.
  Order ThreeFiles() const {
    Order order;
    order.files = {WaveFile("a.wav", a_), WaveFile("b.wav", b_), WaveFile("c.wav", c_)};
    order.pauses = {7, 0, 2};
    return order;
  }
  std::string Expected() const { return Silence(150) + Padded(a_) + Padded(b_) + Silence(150) + Padded(c_); }

  std::string a_ = Noise(100'000, 1);
  std::string b_ = Noise(300 * kAudioSectorBytes, 2);
  std::string c_ = Noise(20'004, 3);
};

TEST_F(BurnTest, ThreeFilesAtOnce) {
  const std::string disc = Blank("disc");
  const RunResult result = Execute(BurnerModule(), ThreeFiles());
  EXPECT_THAT(Counts(result), ElementsAre(3, 0, 3, 1));
  EXPECT_THAT(result.remarks, ElementsAre(HasSubstr("alle Sektoren stimmen")));
  EXPECT_EQ(test::Content(disc + "/disc.bin"), Expected());
  const auto layout = RecordedDisc::Load(disc)->layout;
  EXPECT_EQ(layout.catalogue, "0123456789012");
  EXPECT_EQ(layout.tracks[1].pause, std::nullopt);
  EXPECT_EQ(layout.tracks[2].start - *layout.tracks[2].pause, 150);
  EXPECT_EQ(layout.tracks[0].isrc.substr(0, 5), "DEQLW");
  EXPECT_THAT(host_->status, Contains("Konvertierung von \"a.wav\" nicht erforderlich"));
  EXPECT_THAT(host_->status, Contains("CD-Kopie Nr.1 schließen: OK."));
  EXPECT_EQ(test::Listing(place_.Path()).find("Job0001"), std::string::npos) << "nothing is left";
  // While the disc is written, and only then, there is a buffer to show, and nothing to stop.
  std::vector<bool> recording;
  for (const RunProgress& progress : host_->progress)
    if (recording.empty() || recording.back() != progress.buffer.has_value())
      recording.push_back(progress.buffer.has_value());
  EXPECT_THAT(recording, ElementsAre(true, false));
  // Nothing more goes onto it.
  EXPECT_THAT(Execute(BurnerModule(), ThreeFiles()).items[0].code, code::kDiscNotBlank);
}

TEST_F(BurnTest, TrackByTrackAndSimulated) {
  const std::string disc = Blank("disc");
  Order order = ThreeFiles();
  order.settings = {{"BurnDisc-at-Once", "0"}, {"BurnMode", "0"}};
  EXPECT_THAT(Counts(Execute(BurnerModule(), order)), ElementsAre(3, 0, 0, 0));
  EXPECT_EQ(RecordedDisc::Load(disc)->status, Status::Blank);
  order.settings[1].second = "1";
  EXPECT_THAT(Counts(Execute(BurnerModule(), order)), ElementsAre(3, 0, 0, 0));
  const std::string gap = Silence(152);
  EXPECT_EQ(test::Content(disc + "/disc.bin"),
            Silence(150) + Padded(a_) + gap + Padded(b_) + gap + Padded(c_));
  EXPECT_EQ(RecordedDisc::Load(disc)->status, Status::Finalized);
}

TEST_F(BurnTest, SwitchesReachTheDisc) {
  const std::string disc = Blank("disc", 74, true);
  Order order = ThreeFiles();
  order.pauses = {0, 0, 0};
  order.settings = {{"BurnNoCopy", "1"}, {"BurnPreemphasis", "1"},   {"BurnGapless", "1"},
                    {"BurnCdText", "1"}, {"BurnTitle", "Ein Abend"}, {"BurnPerformer", "Chor"}};
  EXPECT_THAT(Counts(Execute(BurnerModule(), order)), ElementsAre(3, 0, 3, 1));
  const auto written = RecordedDisc::Load(disc);
  EXPECT_EQ(written->layout.tracks[2].control, kControlPreEmphasis);
  EXPECT_EQ(written->text.disc, (CdText::Entry{"Ein Abend", "Chor"}));
  EXPECT_EQ(written->text.Track(2).title, "b");
  EXPECT_EQ(test::Content(disc + "/disc.bin"), Silence(150) + Padded(a_ + b_ + c_));
}

TEST_F(BurnTest, FilesAreConvertedAndNormalisedOnTheWay) {
  const std::string disc = Blank("disc");
  std::string quiet(8000, '\0');
  for (std::size_t i = 0; i < quiet.size(); i += 4) quiet[i + 1] = i % 8 == 0 ? 0x10 : '\xF0';
  Order order;
  order.files = {WaveFile("leise.wav", quiet), place_.File("weg.wav"), place_.Write("kaputt.wav", "RIFF")};
  order.settings = {{"BurnNormalize", "1"}, {"BurnActionIfFailed", "1"}, {"BurnDeleteWaves", "0"}};
  order.job = 6;
  const RunResult result = Execute(BurnerModule(), order);
  EXPECT_THAT(Counts(result), ElementsAre(1, 2, 1, 1));
  EXPECT_EQ(result.items[1].code, code::kSourceMissing);
  EXPECT_EQ(result.items[2].code, Code(Outcome::WrongFormat));
  const std::string bin = test::Content(disc + "/disc.bin");
  EXPECT_EQ(bin.substr(150 * kAudioSectorBytes + 1, 1), "\x7F");
  EXPECT_TRUE(FileExists(place_.File("Job0007_001.wav")));
  EXPECT_FALSE(FileExists(place_.File("Job0007_003.wav")));
  EXPECT_EQ(test::Content(order.files[0]), test::WaveBytes(quiet)) << "the source stays as it was";

  // A file that cannot be prepared stops the burning when that is wanted, or after a question.
  Blank("zwei");
  order.settings = {{"BurnActionIfFailed", "0"}};
  const RunResult stopped = Execute(BurnerModule(), order);
  EXPECT_EQ(stopped.items[0].code, code::kFilesNotPrepared);
  EXPECT_THAT(stopped.items[0].remark, HasSubstr("aufgrund fehlerhaft vorbereiteter Datei nicht gestartet."));
  EXPECT_EQ(RecordedDisc::Load(place_.File("zwei"))->status, Status::Blank);
  order.settings = {{"BurnActionIfFailed", "2"}};
  host_ = std::make_shared<test::RecordingHost>(std::deque<Answer>{Answer::No});
  EXPECT_TRUE(Execute(BurnerModule(), order).cancelled);
  EXPECT_THAT(host_->questions, ElementsAre(HasSubstr("2 Datei(en) konnte(n) nicht vorbereitet werden.")));
}

// Answers the question for the next disc by putting one in.
class NextDiscHost final : public test::RecordingHost {
 public:
  explicit NextDiscHost(std::string directory) : directory_(std::move(directory)) {}
  void Ask(std::shared_ptr<Question> question) override {
    shown = question->Text().results;
    const bool more = !directory_.empty();
    if (more) {
      EXPECT_THAT(InsertBlankDisc(directory_, 80, false), test::IsOk());
    }
    directory_.clear();
    question->Reply(more ? Answer::Yes : Answer::Cancelled);
  }
  std::optional<RunResult> shown;

 private:
  std::string directory_;
};

// Puts a disc in while the run says that it waits for one.
class WaitingHost final : public test::RecordingHost {
 public:
  explicit WaitingHost(std::string directory) : directory_(std::move(directory)) {}
  void StatusText(std::string_view text) override {
    if (text.starts_with("Warte auf CD-Rohling") && !directory_.empty()) {
      EXPECT_THAT(InsertBlankDisc(std::exchange(directory_, {}), 80, false), test::IsOk());
    }
    RecordingHost::StatusText(text);
  }

 private:
  std::string directory_;
};

TEST_F(BurnTest, ADiscCanBePutInWhileARunWaitsForIt) {
  host_ = std::make_shared<WaitingHost>(place_.File("spaet"));
  EXPECT_THAT(Counts(Execute(BurnerModule(), ThreeFiles())), ElementsAre(3, 0, 3, 1));
  EXPECT_THAT(host_->status, Contains("Warte auf CD-Rohling noch 2:00... ('Abbrechen' zum Beenden)"));
}

TEST_F(BurnTest, CopiesAskForTheNextDisc) {
  Blank("eins");
  Order order = ThreeFiles();
  order.settings = {{"BurnCopies", "3"}};
  const auto host = std::make_shared<NextDiscHost>(place_.File("zwei"));
  host_ = host;
  const RunResult result = Execute(BurnerModule(), order);
  EXPECT_THAT(Counts(result), ElementsAre(3, 0, 6, 2));
  EXPECT_EQ(result.items.back().code, code::kNoNextDisc);
  EXPECT_EQ(result.items.front().code, 0);
  ASSERT_TRUE(host->shown);
  EXPECT_EQ(host->shown->counts[3], 2U);
  EXPECT_EQ(test::Content(place_.File("zwei/disc.bin")), Expected());
}

struct FaultCase {
  const char* name;
  const char* fault;
  const char* settings;  // "NAME=VALUE", or ""
  std::int32_t code;
  Status status;
};

class BurnFaults : public BurnTest, public testing::WithParamInterface<FaultCase> {};

TEST_P(BurnFaults, HaveACodeAndSpoilNoMoreThanTheyMust) {
  const FaultCase& fault = GetParam();
  const std::string disc = Blank("disc");
  Faults(fault.fault);
  Order order = ThreeFiles();
  if (const std::string_view text = fault.settings; !text.empty())
    order.settings = {
        {std::string(text.substr(0, text.find('='))), std::string(text.substr(text.find('=') + 1))}};
  const RunResult result = Execute(BurnerModule(), order);
  EXPECT_EQ(result.items[0].code, fault.code);
  ASSERT_FALSE(result.remarks.empty());
  // Beside a number stands what it means.
  if (fault.code == code::kDiscNotBurnt || fault.code == code::kTrackNotBurnt) {
    EXPECT_EQ(result.remarks.size(), 2U) << testing::PrintToString(result.remarks);
  }
  if (fault.code == code::kNotReadBack) {
    EXPECT_THAT(result.remarks, testing::ElementsAre(testing::HasSubstr("ab Sektor 400 nicht")));
  }
  EXPECT_EQ(StatusName(RecordedDisc::Load(disc)->status), StatusName(fault.status));
}

INSTANTIATE_TEST_SUITE_P(
    Drive, BurnFaults,
    testing::Values(
        FaultCase{"Write", R"([{"op":"2A","lba":100,"sense":"03/0C/00"}])", "", code::kDiscNotBurnt,
                  Status::Damaged},
        FaultCase{"Underrun", R"([{"op":"2A","lba":100,"sense":"03/0C/09"}])", "", code::kUnderrun,
                  Status::Damaged},
        FaultCase{"Vanished", R"([{"op":"2A","skip":3,"times":99,"sense":"00/00/00"}])", "",
                  code::kDiscNotBurnt, Status::Damaged},
        FaultCase{"Changed", R"([{"op":"2A","skip":3,"times":1,"sense":"06/28/00"}])", "",
                  code::kDiscNotBurnt, Status::Damaged},
        FaultCase{"CueSheet", R"([{"op":"5D","sense":"05/26/00"}])", "", code::kDiscNotBurnt, Status::Blank},
        FaultCase{"Parameters", R"([{"op":"55","sense":"05/26/00"}])", "", code::kDiscNotBurnt,
                  Status::Blank},
        FaultCase{"Close", R"([{"op":"5B","sense":"05/72/03"}])", "", code::kDiscNotClosed, Status::Damaged},
        FaultCase{"Information", R"([{"op":"51","sense":"05/24/00"}])", "", code::kDiscUnknown,
                  Status::Blank},
        FaultCase{"Calibration", R"([{"op":"54","sense":"05/30/00"},{"op":"BB","sense":"05/24/00"}])", "", 0,
                  Status::Finalized},
        FaultCase{"Simulation", R"([{"op":"2A","lba":0,"sense":"04/09/01"}])", "BurnMode=1",
                  code::kNotSimulated, Status::Blank},
        FaultCase{"Track", R"([{"op":"2A","lba":30,"sense":"03/0C/00"}])", "BurnDisc-at-Once=0",
                  code::kTrackNotBurnt, Status::Damaged},
        FaultCase{"ReadBack", R"([{"op":"BE","times":99,"lba":400,"sense":"03/11/00"}])", "",
                  code::kNotReadBack, Status::Finalized},
        FaultCase{"BufferFull", R"([{"op":"2A","skip":2,"times":3,"sense":"02/04/08"}])", "", 0,
                  Status::Finalized}),
    [](const testing::TestParamInfo<FaultCase>& param) { return param.param.name; });

TEST_F(BurnTest, ADiscIsComparedWithWhatIsStillThere) {
  const std::string directory = Blank("disc");
  (void)Execute(BurnerModule(), ThreeFiles());
  const RecordedDisc disc = *RecordedDisc::Load(directory);
  auto drive = CdDrive::Open(VirtualRecorderDirectory());
  ProjectTrack track;
  track.bytes = disc.layout.tracks.front().sectors * kAudioSectorBytes;
  track.open = [] { return Failure(Outcome::SourceFailed); };
  const std::vector<ProjectTrack> gone(disc.layout.tracks.size(), track);
  EXPECT_EQ(CompareDisc(*drive, disc.layout, gone, {}, {}).outcome, Outcome::SourceFailed);
  DiscLayout other = disc.layout;
  other.tracks.back().isrc = "DEAAA0000001";
  const DiscComparison compared = CompareDisc(*drive, other, gone, {}, {});
  EXPECT_EQ(compared.outcome, Outcome::NotProven);
  EXPECT_EQ(compared.sector, other.tracks.back().start.value);
}

// --- grabber and copier

class CopyTest : public BurnTest {
 protected:
  // A disc with sound before track 1, in a pause, codes and texts, in the virtual CD drive.
  void InsertSource() {
    source_ = Noise(600 * kAudioSectorBytes, 9);
    place_.Write("quelle.bin", source_);
    place_.Write("quelle.cue",
                 "CATALOG 4012345678901\nTITLE \"Live\"\nPERFORMER \"Chor\"\nFILE quelle.bin BINARY\n"
                 "TRACK 01 AUDIO\nTITLE Eins\nISRC DEABC2400001\nINDEX 00 00:00:00\nINDEX 01 00:00:30\n"
                 "TRACK 02 AUDIO\nTITLE Zwei\nISRC DEABC2400002\nINDEX 00 00:03:00\nINDEX 01 00:04:00\n"
                 "TRACK 03 AUDIO\nINDEX 01 00:06:00\n");
    ASSERT_THAT(InsertVirtualDisc(place_.File("quelle.cue")), test::IsOk());
  }
  // What is behind the header of a wave file.
  std::string Samples(const std::string& name) const {
    const std::string content = test::Content(place_.File(name));
    const std::size_t data = content.find("data");
    return data == std::string::npos ? std::string() : content.substr(data + 8);
  }
  std::string source_;
};

TEST_F(CopyTest, TracksComeOutAsTheyAre) {
  InsertSource();
  std::filesystem::create_directory(place_.File("ziel"));
  Order order;
  order.directory = VirtualCdDirectory();
  order.tracks = {1, 3};
  order.target = place_.File("ziel");
  order.settings = {{"GrabCueSheet", "1"}, {"GrabHidden", "1"}};
  const RunResult result = Execute(GrabberModule(), order);
  EXPECT_THAT(Counts(result), ElementsAre(3, 0, 0, 0));
  constexpr std::size_t kSector = kAudioSectorBytes;
  EXPECT_EQ(Samples("ziel/Track01.wav"), source_.substr(30 * kSector, 270 * kSector));
  EXPECT_EQ(Samples("ziel/Track03.wav"), source_.substr(450 * kSector));
  EXPECT_EQ(Samples("ziel/Track00.wav"), source_.substr(0, 30 * kSector));
  EXPECT_THAT(test::Content(place_.File("ziel/CD.cue")), HasSubstr("ISRC DEABC2400001"));
  EXPECT_THAT(host_->lines, Contains(HasSubstr("Track 03: 150 Sektoren, CRC-32 ")));
  EXPECT_THAT(host_->lines, Contains(HasSubstr("Track 00: 30 Sektoren, CRC-32 ")));

  Faults(R"([{"op":"BE","lba":500,"times":99,"sense":"03/11/05"}])");
  order.overwrite = OverwritePolicy::Ask;  // what comes beside the tracks is numbered then
  for (const char* const track : {"Track01.wav", "Track03.wav"})
    std::filesystem::remove(place_.File("ziel") + "/" + track);
  const std::string before = test::Content(place_.File("ziel/CD.cue"));
  const RunResult failed = Execute(GrabberModule(), order);
  EXPECT_THAT(Counts(failed), ElementsAre(2, 1, 0, 0));
  EXPECT_EQ(test::Content(place_.File("ziel/CD.cue")), before);
  EXPECT_TRUE(std::filesystem::exists(place_.File("ziel/CD001.cue")));
  EXPECT_TRUE(std::filesystem::exists(place_.File("ziel/Track00001.wav")));
  EXPECT_EQ(failed.items[1].code, code::kTrackNotRead);
  EXPECT_THAT(failed.remarks,
              Contains(HasSubstr("(Code 1804) Die Quell-CD ist an einer Stelle nicht zu lesen.")));
}

TEST_F(CopyTest, TracksAreCompressedAtOnce) {
  InsertSource();
  Order order;
  order.directory = VirtualCdDirectory();
  order.tracks = {2};
  order.target = place_.Path();
  order.settings = {{"GrabEncode", "1"}, {"GrabCodecType", "2"}};
  const RunResult result = Execute(GrabberModule(), order);
  EXPECT_THAT(Counts(result), ElementsAre(1, 0, 0, 0));
  EXPECT_EQ(result.titles.labels[0], texts::CountTracksCompressed);
  const std::string made = test::Content(place_.File("Track02.ape"));
  EXPECT_EQ(made.substr(0, 4), "MAC ");
  EXPECT_THAT(made, HasSubstr("DEABC2400002"));
  EXPECT_THAT(made, HasSubstr("4012345678901"));
  EXPECT_EQ(test::Listing(place_.Path()).find("sTS5"), std::string::npos);
}

TEST_F(CopyTest, SilenceAtBothEndsIsTrimmed) {
  place_.Write("s.bin", Silence(75) + std::string("\0\0\1\0", 4) + Silence(75).substr(4));
  place_.Write("s.cue", "FILE s.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
  ASSERT_THAT(InsertVirtualDisc(place_.File("s.cue")), test::IsOk());
  Order order;
  order.directory = VirtualCdDirectory();
  order.tracks = {1};
  order.target = place_.Path();
  order.settings = {{"GrabCutNullSamples", "1"}, {"UseFilenamePreset", "1"}, {"DestFileNum", "Kurz.wav"}};
  EXPECT_THAT(Counts(Execute(GrabberModule(), order)), ElementsAre(1, 0, 0, 0));
  EXPECT_EQ(Samples("Kurz.wav"), std::string("\0\0\1\0\0\0\0\0", 8));
  const std::filesystem::directory_iterator files(place_.Path());
  EXPECT_EQ(std::ranges::count_if(files, [](const auto& file) { return file.path().extension() == ".cue"; }),
            1)
      << "nobody has asked for a sheet";
}

struct CopyCase {
  const char* name;
  const char* setting;
};
class CopyWays : public CopyTest, public testing::WithParamInterface<CopyCase> {};

TEST_P(CopyWays, ACopyHasTheSectorsPausesCodesAndTextsOfItsSource) {
  InsertSource();
  const std::string disc = Blank("disc");
  Order order;
  order.settings = {{GetParam().setting, "1"}};
  const RunResult result = Execute(CopierModule(), order);
  EXPECT_THAT(Counts(result), ElementsAre(3, 3, 0, 1));
  const auto copy = RecordedDisc::Load(disc);
  ASSERT_THAT(copy, test::IsOk());
  EXPECT_EQ(test::Content(disc + "/disc.bin"), Silence(150) + source_);
  const bool pauses = std::string_view(GetParam().setting) != "CopyNoPauseDetection";
  EXPECT_EQ(copy->layout.tracks[0].start, Lba{30});
  EXPECT_EQ(copy->layout.tracks[1].pause, pauses ? std::optional(Lba{225}) : std::nullopt);
  EXPECT_EQ(copy->layout.tracks[1].start, Lba{300});
  EXPECT_EQ(copy->layout.catalogue, "4012345678901");
  EXPECT_EQ(copy->layout.tracks[1].isrc, "DEABC2400002");
  EXPECT_EQ(copy->text.Track(2).title, "Zwei");
  EXPECT_EQ(copy->text.disc.performer, "Chor");
  EXPECT_EQ(test::Listing(place_.Path()).find("sTS5"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Ways, CopyWays,
                         testing::Values(CopyCase{"Files", "CopyVerify"},
                                         CopyCase{"OnTheFly", "CopyOnTheFly"},
                                         CopyCase{"NoPauses", "CopyNoPauseDetection"}),
                         [](const testing::TestParamInfo<CopyCase>& param) { return param.param.name; });

TEST_F(CopyTest, ARefusedCueSheetIsTriedOnceMoreWithoutPauses) {
  InsertSource();
  const std::string disc = Blank("disc");
  Faults(R"([{"op":"5D","times":1,"sense":"05/26/00"}])");
  host_ = std::make_shared<test::RecordingHost>(std::deque<Answer>{Answer::Yes});
  const RunResult again = Execute(CopierModule(), {});
  EXPECT_THAT(Counts(again), ElementsAre(3, 3, 0, 1));
  // What went wrong at first is history; what became of the pauses is not.
  EXPECT_THAT(again.remarks,
              ElementsAre(HasSubstr("wurden auf 0 gesetzt"), HasSubstr("alle Sektoren stimmen")));
  EXPECT_EQ(RecordedDisc::Load(disc)->layout.tracks[1].pause, std::nullopt);
  EXPECT_EQ(test::Content(disc + "/disc.bin"), Silence(150) + source_);

  Blank("zwei");
  host_ = std::make_shared<test::RecordingHost>(std::deque<Answer>{Answer::No});
  const RunResult stopped = Execute(CopierModule(), {});
  EXPECT_TRUE(stopped.cancelled);
  EXPECT_THAT(stopped.remarks, Contains(HasSubstr("keine Pausenlänge von 1 Sekunde")));
}

// Burn, copy on the fly, grab: what the sheet beside the grabbed files says is the disc that was burnt.
TEST_F(CopyTest, FourStepsKeepSamplesPausesCodesAndTexts) {
  Order burn = ThreeFiles();
  burn.settings = {{"BurnCdText", "1"}, {"BurnTitle", "Ein \"Abend\""}, {"BurnPerformer", "Chor"}};
  const std::string first = Blank("eins");
  ASSERT_EQ(Execute(BurnerModule(), burn).counts[3], 1U);
  ASSERT_THAT(InsertVirtualDisc(first + "/disc.cue"), test::IsOk());
  const std::string second = Blank("zwei");
  Order copy;
  copy.settings = {{"CopyOnTheFly", "1"}};
  ASSERT_EQ(Execute(CopierModule(), copy).counts[3], 1U);
  EXPECT_THAT(host_->status, Contains("Die gesamte CD wurde gelesen."));
  ASSERT_THAT(InsertVirtualDisc(second + "/disc.cue"), test::IsOk());
  std::filesystem::create_directory(place_.File("ziel"));
  Order grab;
  grab.directory = VirtualCdDirectory();
  grab.tracks = {1, 2, 3};
  grab.target = place_.File("ziel");
  grab.settings = {{"GrabCueSheet", "1"}};
  ASSERT_EQ(Execute(GrabberModule(), grab).counts[0], 3U);

  auto disc = DiscImage::Open(place_.File("ziel/CD.cue"));
  ASSERT_THAT(disc, test::IsOk());
  const auto burnt = RecordedDisc::Load(first);
  const DiscLayout& layout = disc->Layout();
  EXPECT_EQ(layout.catalogue, burnt->layout.catalogue);
  EXPECT_EQ(layout.leadOut, burnt->layout.leadOut);
  ASSERT_EQ(layout.tracks.size(), 3U);
  for (std::size_t i = 0; i < layout.tracks.size(); ++i) {
    EXPECT_EQ(layout.tracks[i].start, burnt->layout.tracks[i].start);
    EXPECT_EQ(layout.tracks[i].isrc, burnt->layout.tracks[i].isrc);
    EXPECT_EQ(layout.tracks[i].control, burnt->layout.tracks[i].control);
    if (i > 0) {
      EXPECT_EQ(layout.tracks[i].pause, burnt->layout.tracks[i].pause);
    }
  }
  const CdText text = ParseCdText(layout.cdText);
  EXPECT_EQ(text.disc, (CdText::Entry{"Ein 'Abend'", "Chor"}));
  EXPECT_EQ(text.Track(2), (CdText::Entry{"b", "Chor"}));
  Bytes samples(static_cast<std::size_t>(layout.leadOut.value) * kAudioSectorBytes);
  ASSERT_EQ(disc->ReadAudio(Lba{0}, samples), Outcome::Success);
  EXPECT_TRUE(AsText(samples) == Expected().substr(150 * kAudioSectorBytes));
}

TEST_F(CopyTest, ATrackThatCannotBeReadIsLeftOutWhenThatIsWanted) {
  InsertSource();
  Faults(R"([{"op":"BE","lba":500,"times":99,"sense":"03/11/05"}])");
  const std::string disc = Blank("disc");
  host_ = std::make_shared<test::RecordingHost>(std::deque<Answer>{Answer::No});
  RunResult result = Execute(CopierModule(), {});
  EXPECT_THAT(Counts(result), ElementsAre(2, 0, 3, 0));
  EXPECT_EQ(result.items[0].code, code::kTrackNotRead);
  EXPECT_EQ(RecordedDisc::Load(disc)->status, Status::Blank);
  host_ = std::make_shared<test::RecordingHost>(std::deque<Answer>{Answer::Yes});
  result = Execute(CopierModule(), {});
  EXPECT_THAT(Counts(result), ElementsAre(2, 2, 1, 1));
  EXPECT_EQ(result.items[0].code, code::kTrackNotRead) << "a track is missing all the same";
  EXPECT_EQ(RecordedDisc::Load(disc)->layout.tracks.size(), 2U);
}

TEST_F(CopyTest, WhatIsNoSourceIsRefused) {
  EXPECT_EQ(Execute(CopierModule(), {}).items[0].code, code::kDriveNotOpened) << "no disc";
  place_.Write("d.bin", Silence(300));
  place_.Write("d.cue", "FILE d.bin BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n");
  ASSERT_THAT(InsertVirtualDisc(place_.File("d.cue")), test::IsOk());
  Blank("disc");
  EXPECT_EQ(Execute(CopierModule(), {}).items[0].code, code::kNoAudioDisc);
}

}  // namespace
}  // namespace ts5::disc
