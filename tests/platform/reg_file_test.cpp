#include "platform/store/reg_file.h"

#include <gtest/gtest.h>

#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;

Registry InMemory() {
  return std::move(*Registry::Open(kRegistryInMemory));
}

Bytes Utf16(std::string_view text, bool bigEndian = false) {
  const std::string bytes = test::Utf16Bytes(Utf16FromUtf8(text), bigEndian);
  return {bytes.begin(), bytes.end()};
}

std::string Old(std::string_view body) {
  return "REGEDIT4\r\n\r\n" + std::string(body);
}
std::string New(std::string_view body) {
  return "Windows Registry Editor Version 5.00\r\n\r\n" + std::string(body);
}

std::vector<std::size_t> LinesOf(const RegFileReport& report) {
  std::vector<std::size_t> lines;
  for (const RegFileError& error : report.errors) {
    lines.push_back(error.line);
    EXPECT_FALSE(error.text.empty());
  }
  return lines;
}

TEST(RegFile, TakesEveryKindOfValue) {
  const std::string body =
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\qlw\\Jobs]  ; a comment\r\n"
      "@=\"Standard\"\r\n"
      "\"Title\"=\"Chor \\\"Cäcilia\\\"\" ; and one here\r\n"
      "\"SourcePath\"=\"C:\\\\Musik\\\\\"\r\n"
      "\"a=b\\\\c\" = \"x;y\"\r\n"
      "\"Zahl\"=dword:0000ffFF\r\n"
      "\"Melodie\"=hex:3c,00,f0,\\\r\n  00,FF\r\n"
      "\"Lang\"=hex(b):ff,ff,ff,ff,ff,ff,ff,ff\r\n"
      "\"Vier\"=hex(4):02,01,00,00\r\n"
      "\"Leer\"=hex:\r\n"
      "; \"Auskommentiert\"=\"1\"\r\n"
      "\"Fremd\"=hex(8):01,02\r\n";
  const std::string oldTexts = "\"Pfad\"=hex(2):43,3a,5c,e4,00\r\n\"Viele\"=hex(7):61,00,62,63,00,00\r\n";
  const std::string newTexts =
      "\"Pfad\"=hex(2):43,00,3a,00,5c,00,e4,00,00,00\r\n\"Viele\"=hex(7):61,00,00,00,62,00,63,00,00,00,00,"
      "00\r\n";
  std::vector<Bytes> all{Utf16(New(body + newTexts)), Utf16(New(body + newTexts), true)};
  for (const std::string& text : {New(body + newTexts), "\xEF\xBB\xBF" + New(body + newTexts),
                                  Windows1252FromUtf8(Old(body + oldTexts))}) {
    all.emplace_back(AsBytes(text).begin(), AsBytes(text).end());
  }
  RegistryValues expected;
  expected.SetText("", "Standard");
  expected.SetText("Title", "Chor \"Cäcilia\"");
  expected.SetText("SourcePath", "C:\\Musik\\");
  expected.SetText("a=b\\c", "x;y");
  expected.SetText("Zahl", "65535");
  expected.SetBinary("Melodie", Bytes{0x3C, 0, 0xF0, 0, 0xFF});
  expected.SetText("Lang", "18446744073709551615");
  expected.SetText("Vier", "258");
  expected.SetBinary("Leer", {});
  expected.SetBinary("Fremd", Bytes{1, 2});
  expected.SetText("Pfad", "C:\\ä");
  expected.SetText("Viele", "a\nbc");
  for (const Bytes& file : all) {
    Registry registry = InMemory();
    const auto report = ImportRegText(file, registry);
    ASSERT_THAT(report, IsOk());
    EXPECT_EQ(report->errorCount, 0U);
    EXPECT_EQ(report->keys, 1U);
    EXPECT_EQ(report->values, 12U);
    EXPECT_TRUE(*registry.Read("HKLM\\Software\\qlw\\Jobs") == expected);
  }
}

TEST(RegFile, DeletesAndAddsToWhatIsThere) {
  Registry registry = InMemory();
  RegistryValues before;
  before.SetText("bleibt", "1");
  before.SetText("geht", "1");
  ASSERT_THAT(registry.Write("HKCU\\a", before), IsOk());
  ASSERT_THAT(registry.Write("HKCU\\b\\c", before), IsOk());
  const auto report =
      ImportRegText(AsBytes(New("[HKEY_CURRENT_USER\\A]\n\"GEHT\"=-\n\"neu\"=\"2\"\n[-HKEY_CURRENT_USER\\b]\n"
                                "[HKEY_CLASSES_ROOT\\.mid]\n@=\"fremd\"\n")),
                    registry);
  ASSERT_THAT(report, IsOk());
  EXPECT_EQ(report->errorCount, 0U);
  EXPECT_EQ(report->skipped, 1U);
  RegistryValues after;
  after.SetText("bleibt", "1");
  after.SetText("neu", "2");
  EXPECT_EQ(*registry.Read("HKCU\\a"), after);
  EXPECT_FALSE(*registry.Exists("HKCU\\b"));
}

TEST(RegFile, KeysOfOtherPlacesAreTakenHome) {
  Registry registry = InMemory();
  ASSERT_THAT(
      ImportRegText(AsBytes(New("[HKEY_CURRENT_USER\\Software\\Classes\\VirtualStore\\MACHINE\\SOFTWARE\\"
                                "Wow6432Node\\qlw]\n\"a\"=\"1\"\n"
                                "[HKEY_LOCAL_MACHINE\\Software\\Wow6432NodeX]\n\"a\"=\"2\"\n")),
                    registry),
      IsOk());
  EXPECT_EQ(registry.Read("HKLM\\Software\\qlw")->Text("a"), "1");
  EXPECT_EQ(registry.Read("HKLM\\Software\\Wow6432NodeX")->Text("a"), "2");
}

TEST(RegFile, ErrorsAreReportedWithTheirLineAndTheRestGoesOn) {
  const std::string text =
      "REGEDIT4\n"
      "\"zu früh\"=\"1\"\n"  // 2
      "[HKEY_LOCAL_MACHINE\\a]\n"
      "\"offen\"=\"kein Ende\n"  // 4
      "\"gut\"=\"1\"\n"
      "Unsinn\n"  // 6
      "\"x\"=hex:01,\\\n"
      "  0g,02\n"                 // reported at 7
      "\"y\"=dword:123456789\n"   // 9
      "\"z\"=\"a\" b\n"           // 10
      "\"ohne\"\n"                // 11
      "[HKEY_LOCAL_MACHINE\\b\n"  // 12
      "\"still\"=\"1\"\n"
      "[NIRGENDS\\c]\n"  // 14
      "\"still\"=\"1\"\n"
      "[HKEY_LOCAL_MACHINE\\d]\n"
      "\"auch gut\"=\"2\"\n"
      "\"u\"=hex(99999999999):01\n"  // 18
      "\"letzte\"=hex:01,\\";
  Registry registry = InMemory();
  const auto report = ImportRegText(AsBytes(text), registry);
  ASSERT_THAT(report, IsOk());
  EXPECT_EQ(LinesOf(*report), (std::vector<std::size_t>{2, 4, 6, 7, 9, 10, 11, 12, 14, 18, 19}));
  EXPECT_EQ(report->errorCount, 11U);
  EXPECT_EQ(registry.Read("HKLM\\a")->Text("gut"), "1");
  EXPECT_EQ(registry.Read("HKLM\\a")->All().size(), 1U);
  EXPECT_EQ(registry.Read("HKLM\\d")->Text("auch gut"), "2");
}

TEST(RegFile, TextsGoOnInTheNextLinesUpToTheirQuote) {
  const std::string text =
      "REGEDIT4\r\n"
      "[HKEY_LOCAL_MACHINE\\a]\r\n"
      "\"drei\"=\"eins  \r\n"
      "  \\\"zwei\\\"\r\n"
      "drei\"  ; endlich\r\n"
      "\"kurz\"=\"1\"\r\n"
      "\"offen\"=\"bis\r\n"  // 7
      "zum Schlüssel\r\n"    // 8
      "[HKEY_LOCAL_MACHINE\\b]\r\n"
      "\"gut\"=\"2\"\r\n"
      "\"bis zuletzt\"=\"offen";  // 11
  Registry registry = InMemory();
  const auto report = ImportRegText(AsBytes(Windows1252FromUtf8(text)), registry);
  ASSERT_THAT(report, IsOk());
  EXPECT_EQ(LinesOf(*report), (std::vector<std::size_t>{7, 8, 11}));
  EXPECT_EQ(registry.Read("HKLM\\a")->Text("drei"), "eins  \r\n  \"zwei\"\r\ndrei");
  EXPECT_EQ(registry.Read("HKLM\\a")->Text("kurz"), "1");
  EXPECT_EQ(registry.Read("HKLM\\b")->Text("gut"), "2");
}

TEST(RegFile, WhatIsNoSuchFileChangesNothing) {
  Registry registry = InMemory();
  for (const std::string& text :
       {std::string(), std::string("MThd"), std::string("REGEDIT5\n[HKEY_LOCAL_MACHINE\\a]\n"),
        std::string("\xFF\xFE"), std::string("\r\n\r\n")}) {
    EXPECT_THAT(ImportRegText(AsBytes(text), registry), FailsWith(Outcome::WrongFormat)) << text;
  }
  EXPECT_FALSE(*registry.Exists("HKLM\\a"));
  const test::TemporaryDirectory directory;
  EXPECT_THAT(ImportRegFile(directory.File("none.reg"), registry), FailsWith(Outcome::SourceFailed));
}

TEST(RegFile, ExportIsExactAndComesBackAsItWas) {
  Registry registry = InMemory();
  RegistryValues values;
  values.SetText("", "ä \"q\" \\");
  values.SetText("Zeilen", "a\nb");
  Bytes melody(30);
  for (std::size_t i = 0; i < melody.size(); ++i) melody[i] = static_cast<std::uint8_t>(i * 9);
  values.SetBinary("Melodie", melody);
  ASSERT_THAT(registry.Write("HKLM\\a\\B]", values), IsOk());
  ASSERT_THAT(registry.Write("HKLM\\a\\B]\\unten", {}), IsOk());
  const auto text = ExportRegText(registry, "hklm\\A");
  ASSERT_THAT(text, IsOk());
  EXPECT_EQ(*text,
            Utf16("Windows Registry Editor Version 5.00\r\n"
                  "\r\n[HKEY_LOCAL_MACHINE\\A]\r\n"
                  "\r\n[HKEY_LOCAL_MACHINE\\A\\B]]\r\n"
                  "@=\"ä \\\"q\\\" \\\\\"\r\n"
                  "\"Melodie\"=hex:00,09,12,1b,24,2d,36,3f,48,51,5a,63,6c,75,7e,87,90,99,a2,ab,b4,\\\r\n"
                  "  bd,c6,cf,d8,e1,ea,f3,fc,05\r\n"
                  "\"Zeilen\"=hex(1):61,00,0a,00,62,00,00,00\r\n"
                  "\r\n[HKEY_LOCAL_MACHINE\\A\\B]\\unten]\r\n"));
  Registry again = InMemory();
  const auto report = ImportRegText(*text, again);
  ASSERT_THAT(report, IsOk());
  EXPECT_EQ(report->errorCount, 0U);
  EXPECT_EQ(*again.Read("HKLM\\a\\B]"), values);
  EXPECT_TRUE(*again.Exists("HKLM\\a\\B]\\unten"));
}

TEST(RegFile, NamesKeepTheirControlCharacters) {
  RegistryValues values;
  for (const char* name : {"a\x0F!", "a\"b", "zwei\nZeilen\r", "\t", "a\\n"}) values.SetText(name, name);
  Registry registry = InMemory();
  ASSERT_THAT(registry.Write("HKLM\\a", values), IsOk());
  const auto text = ExportRegText(registry, "HKLM\\a");
  ASSERT_THAT(text, IsOk());
  Registry again = InMemory();
  const auto report = ImportRegText(*text, again);
  ASSERT_THAT(report, IsOk());
  EXPECT_EQ(report->errorCount, 0U);
  EXPECT_EQ(*again.Read("HKLM\\a"), values);
}

}  // namespace
}  // namespace ts5
