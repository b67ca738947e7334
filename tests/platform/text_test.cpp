#include "platform/base/text.h"

#include <gtest/gtest.h>

#include "platform/base/strings.h"

namespace ts5 {
namespace {

TEST(Text, EveryByteSurvivesTheCodePage) {
  for (int byte = 1; byte < 256; ++byte) {
    const std::string eightBit(1, static_cast<char>(byte));
    const std::string utf8 = Utf8FromWindows1252(eightBit);
    EXPECT_TRUE(IsUtf8(utf8)) << byte;
    EXPECT_EQ(Windows1252FromUtf8(utf8), eightBit) << byte;
  }
  EXPECT_EQ(Utf8FromWindows1252("Ges\xE4nge \x80 \x84M\x93"), "Gesänge € „M“");
}

TEST(Text, WhatHasNoPlaceBecomesAQuestionMark) {
  EXPECT_EQ(Windows1252FromUtf8("Dvořák Ω 𝄞"), "Dvo?\xE1k ? ?");
  EXPECT_EQ(Windows1252FromUtf8("a\xC3"), "a?");               // cut short
  EXPECT_EQ(Windows1252FromUtf8("\xC0\xAF"), "??");            // overlong
  EXPECT_EQ(Windows1252FromUtf8("\xED\xA0\x80"), "???");       // a surrogate
  EXPECT_EQ(Windows1252FromUtf8("\xF5\x80\x80\x80"), "????");  // beyond Unicode
}

TEST(Text, Utf16) {
  EXPECT_EQ(Utf8FromUtf16(u"Tönung 𝄞"), "Tönung 𝄞");
  EXPECT_EQ(Utf16FromUtf8("Tönung 𝄞"), u"Tönung 𝄞");
  EXPECT_EQ(Utf8FromUtf16(std::u16string(1, char16_t{0xD834})), "\uFFFD");
}

TEST(Text, CaseOfGermanLetters) {
  EXPECT_EQ(ToLower("ÄÖÜ ŠŒŽŸ ×ß"), "äöü šœžÿ ×ß");
  EXPECT_EQ(ToUpper("äöü šœžÿ ÷ß"), "ÄÖÜ ŠŒŽŸ ÷ß");
  EXPECT_TRUE(EqualsIgnoringCase("GRÜSSE.MID", "grüsse.mid"));
  EXPECT_FALSE(EqualsIgnoringCase("a\xFF", "a\xFE"));
  EXPECT_TRUE(CompareIgnoringCase("abc", "ABD") < 0);
  EXPECT_TRUE(CompareIgnoringCase("ab", "ABC") < 0);
}

TEST(Text, Numbers) {
  EXPECT_EQ(ParseInteger("-12"), -12);
  EXPECT_EQ(ParseInteger("12 "), std::nullopt);
  EXPECT_EQ(ParseInteger(""), std::nullopt);
  EXPECT_EQ(ParseInteger("99999999999999999999"), std::nullopt);
  EXPECT_EQ(ParseNumber("1.5"), 1.5);
  EXPECT_EQ(LeadingInteger("  -12abc"), -12);
  EXPECT_EQ(LeadingInteger("abc"), 0);
  EXPECT_EQ(LeadingInteger("99999999999999999999"), 2147483647);
}

TEST(Text, PrintfFormats) {
  EXPECT_EQ(Format("Job %04i: %s (%u)", 7, "Chor", 3U), "Job 0007: Chor (3)");
  EXPECT_EQ(Format("%i:%02i", 3, 5), "3:05");
  EXPECT_EQ(Format("%%"), "%");
  EXPECT_EQ(Format("%x", -1), "ffffffffffffffff");
}

TEST(Text, AWrongArgumentIsCountedAndNeverCrashes) {
  EXPECT_EQ(Format("%i Dateien"), "%i Dateien");
  EXPECT_EQ(Format("%i Dateien", "drei"), "%i Dateien");
  EXPECT_EQ(TakeFormatFaults(), 2U);
}

TEST(Strings, EveryRowHasAText) {
  static constexpr std::string_view kAll[] = {
#define TEXT(name, number, text) text,
#include "resources/strings/all.def"
#undef TEXT
  };
  for (const std::string_view text : kAll) EXPECT_TRUE(!text.empty() && IsUtf8(text)) << text;
  EXPECT_EQ(TextByNumber(1), std::nullopt);
}

}  // namespace
}  // namespace ts5
