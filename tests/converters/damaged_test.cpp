// Damaged scores through the converter: a message, a place where there is one, nothing half written.
#include <gmock/gmock.h>

#include <filesystem>
#include <random>
#include <set>

#include "converters/mxl_container.h"
#include "converters/xml_converter.h"
#include "frame/run_support.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "score_text.h"
#include "support/test_data.h"

namespace ts5::converters {
namespace {

using namespace test;

// What is done to good files, from the same seed every time.
class Damager {
 public:
  explicit Damager(std::vector<std::string> good) : good_(std::move(good)) {}

  std::vector<std::string> Make(std::size_t count) {
    std::vector<std::string> bad = Fixed();
    while (bad.size() < count) bad.push_back(Damage(good_[bad.size() % good_.size()], bad.size()));
    return bad;
  }

 private:
  static std::string Score(const std::string& measures) {
    return "<score-partwise><part-list><score-part id='a'/></part-list><part id='a'>" + measures +
           "</part></score-partwise>";
  }
  static std::string Repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
  }

  static std::vector<std::string> Fixed() {
    const std::string note =
        "<note><pitch><step>C</step><octave>4</octave></pitch><duration>%s</duration></note>";
    std::string bomb = "<!DOCTYPE score-partwise [<!ENTITY a 'aaaaaaaaaa'>";
    for (char c = 'b'; c <= 'z'; ++c)
      bomb += "<!ENTITY " + std::string(1, c) + " '" +
              Repeated("&" + std::string(1, static_cast<char>(c - 1)) + ";", 10) + "'>";
    return {
        "",
        "<",
        std::string(4096, '\0'),
        "<score-partwise>",
        Score("<measure><attributes><divisions>0</divisions></attributes></measure>"),
        Score("<measure><attributes><divisions>1000000000</divisions></attributes></measure>"),
        Score("<measure>" + Format(note, "1000000000000") + "</measure>"),
        Score("<measure>" + Format(note, "-1") + "</measure>"),
        Score("<measure>" + Format(note, "x") + "</measure>"),
        Score(Repeated("<measure/>", 300'000)),
        Score("<measure>" + Repeated("<note><grace/></note>", 30'000) + "</measure>"),
        Repeated("<a>", 1'000'000),
        Repeated("<part id='x'>", 3000) + Score(""),
        bomb + "]>" +
            Score("<measure><direction><direction-type><words>&z;</words></direction-type></direction>" +
                  Format(note, "x") + "</measure>"),
        "<!DOCTYPE x SYSTEM 'file:///etc/passwd'><score-partwise>&x;",
        "PK\x03\x04" + std::string(200, 'x'),
    };
  }

  std::string Damage(std::string text, std::size_t round) {
    switch (round % 4) {
      case 0:
        text.resize(random_() % text.size());
        return text;
      case 1: {  // a piece is gone
        const std::size_t from = random_() % text.size();
        return text.erase(from, 1 + random_() % 400);
      }
      case 2:  // brackets and figures are changed
        for (int i = 0; i < 12; ++i) {
          const std::size_t at = text.find_first_of("<>/0123456789", random_() % text.size());
          if (at != std::string::npos) text[at] = "<>/9x"[random_() % 5];
        }
        return text;
      default:
        for (int i = 0; i < 8; ++i) text[random_() % text.size()] = static_cast<char>(random_());
        return text;
    }
  }

  std::vector<std::string> good_;
  std::mt19937 random_{188};
};

class Damaged : public testing::Test {
 protected:
  RunResult Convert(const std::vector<std::string>& files) {
    Job job = ListJob(files, module_);
    return RunJob(job, module_);
  }

  TemporaryDirectory place_;
  FilterModule module_ = XmlConverterModule();
};

TEST_F(Damaged, FilesAreToldOrConvertedAndNothingIsHalfWritten) {
  std::vector<std::string> good;
  for (const auto& entry : std::filesystem::directory_iterator(DataPath("musicxml"))) {
    if (entry.file_size() < 60'000) good.push_back(Content(entry.path().string()));
  }
  ASSERT_GE(good.size(), 10U);
  const std::vector<std::string> bad = Damager(std::move(good)).Make(188);
  std::vector<std::string> files;
  for (std::size_t i = 0; i < bad.size(); ++i)
    files.push_back(place_.Write(Format("%03d.%s", i, i % 3 == 0 ? "musicxml" : "xml"), bad[i]));
  const RunResult result = Convert(files);
  ASSERT_EQ(result.items.size(), bad.size());
  const std::set<std::int32_t> known = {0, -104, -300, -2};
  std::size_t failed = 0;
  std::size_t placed = 0;
  for (const RunItem& item : result.items) {
    EXPECT_TRUE(known.contains(item.code)) << item.source << " " << item.code;
    const bool made = std::filesystem::exists(WithExtension(item.source, "stvx"));
    EXPECT_EQ(made, item.code == 0) << item.source;
    if (item.code == 0) continue;
    ++failed;
    EXPECT_FALSE(item.remark.empty()) << item.source;
    placed += item.remark.find("(Takt ") != std::string::npos ? 1 : 0;
  }
  EXPECT_GT(failed, 60U);
  EXPECT_GT(placed, 25U) << "with their places";
  // No temporary file is left, and the sources are what they were.
  std::size_t left = 0;
  for (const auto& entry : std::filesystem::directory_iterator(place_.Path())) {
    const std::string extension = entry.path().extension();
    left += extension == ".stvx" || extension == ".xml" || extension == ".musicxml" ? 0 : 1;
  }
  EXPECT_EQ(left, 0U);
  for (std::size_t i = 0; i < bad.size(); ++i) EXPECT_EQ(Content(files[i]), bad[i]);
}

std::uint32_t Crc(std::string_view bytes) {
  std::uint32_t crc = ~0U;
  for (const char byte : bytes) {
    crc ^= static_cast<std::uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1U) * 0xEDB88320U;
  }
  return ~crc;
}

// An archive as one would make it by hand: entries without compression.
std::string Zip(const std::vector<std::pair<std::string, std::string>>& entries) {
  ByteWriter out;
  ByteWriter directory;
  for (const auto& entry : entries) {
    const std::string& name = entry.first;
    const std::string& content = entry.second;
    const auto head = [&](ByteWriter& to, std::uint32_t magic, bool central) {
      to.U32Le(magic);
      if (central) to.U16Le(20);
      to.U16Le(20);
      for (int i = 0; i < 4; ++i) to.U16Le(0);  // flags, method, time, date
      to.U32Le(Crc(content));
      to.U32Le(static_cast<std::uint32_t>(content.size()));
      to.U32Le(static_cast<std::uint32_t>(content.size()));
      to.U16Le(static_cast<std::uint16_t>(name.size()));
      to.U16Le(0);
    };
    const auto at = static_cast<std::uint32_t>(out.Size());
    head(out, 0x04034B50, false);
    out.Append(name);
    out.Append(content);
    head(directory, 0x02014B50, true);
    for (int i = 0; i < 3; ++i) directory.U16Le(0);
    directory.U32Le(0);
    directory.U32Le(at);
    directory.Append(name);
  }
  const auto start = static_cast<std::uint32_t>(out.Size());
  const Bytes list = directory.Release();
  out.Append(list);
  out.U32Le(0x06054B50);
  out.U32Le(0);
  for (int i = 0; i < 2; ++i) out.U16Le(static_cast<std::uint16_t>(entries.size()));
  out.U32Le(static_cast<std::uint32_t>(list.size()));
  out.U32Le(start);
  out.U16Le(0);
  const Bytes all = out.Release();
  return {all.begin(), all.end()};
}

TEST_F(Damaged, ArchivesLeadNowhereElse) {
  const std::string score =
      "<score-partwise><part-list><score-part id='a'/></part-list><part "
      "id='a'><measure/></part></score-partwise>";
  const auto container = [](const std::string& path) {
    return "<container><rootfiles><rootfile full-path='" + path + "'/></rootfiles></container>";
  };
  const std::string home = "META-INF/container.xml";
  place_.Write("score.xml", score);
  struct Case {
    const char* name;
    std::string bytes;
    std::int32_t code;
  };
  std::string bomb;
  const auto packed = WriteMxl("<score-partwise>" + std::string(std::size_t{40} << 20, ' '));
  if (packed) bomb.assign(packed->begin(), packed->end());
  const Case cases[] = {
      {"gut", Zip({{home, container("s.xml")}, {"s.xml", score}}), 0},
      {"outside", Zip({{home, container("../score.xml")}, {"../score.xml", score}}), -300},
      {"absolute", Zip({{home, container("/etc/passwd")}}), -300},
      {"drive", Zip({{home, container("c:score.xml")}, {"c:score.xml", score}}), -300},
      {"no-container", Zip({{"s.xml", score}}), -104},
      {"no-rootfile", Zip({{home, "<container/>"}, {"s.xml", score}}), -104},
      {"missing-score", Zip({{home, container("fehlt.xml")}}), -300},
      {"bad-container", Zip({{home, "<container"}, {"s.xml", score}}), -300},
      {"empty", Zip({}), -104},
      {"bomb", bomb, -300},
      {"text", "kein Archiv", -104},
  };
  std::vector<std::string> files;
  for (const Case& row : cases) files.push_back(place_.Write(std::string(row.name) + ".mxl", row.bytes));
  const std::string folder = place_.File("ordner.mxl");
  std::filesystem::create_directory(folder);
  files.push_back(folder);
  const RunResult result = Convert(files);
  ASSERT_EQ(result.items.size(), files.size());
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(result.items[i].code, cases[i].code) << cases[i].name;
    EXPECT_EQ(std::filesystem::exists(place_.File(std::string(cases[i].name) + ".stvx")), cases[i].code == 0);
  }
  EXPECT_EQ(result.items.back().code, -103);
}

}  // namespace
}  // namespace ts5::converters
