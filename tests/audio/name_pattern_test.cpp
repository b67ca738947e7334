// Names of files made of attributes.
#include "audio/tags/name_pattern.h"

#include <gtest/gtest.h>

namespace ts5::tags {
namespace {

Attribute Make(std::string_view name, std::string_view value) {
  return {AttributeType::String, std::string(name), std::string(value), false, true};
}

TEST(NamePattern, NamesAreSafe) {
  const std::string all200(200, 'x');
  const struct {
    const char* pattern;
    Attributes attributes;
    std::string name;
  } cases[] = {
      {"%track% - %title%", {Make("WM/TrackNumber", "3/12"), Make("Title", "Gymnopédie")}, "03 - Gymnopédie"},
      {"%TRACK% %artist%", {Make("WM/TrackNumber", "A1"), Make("Author", " Satie ")}, "A1 Satie"},
      {"100%% %title%", {Make("Title", "laut")}, "100% laut"},
      {"%track% - %artist% - %title%", {Make("WM/TrackNumber", "1"), Make("Title", "Rag")}, "01 - Rag"},
      {"%track% - %title% (%artist%)", {Make("Title", "Rag")}, "Rag"},
      {"%title%", {Make("Title", "../../etc/passwd")}, "_.._etc_passwd"},
      {"%title%", {Make("Title", "a/b\\c:d*e?f\"g<h>i|j\nk")}, "a_b_c_d_e_f_g_h_i_j_k"},
      {"%title%", {Make("Title", "-rf $(touch x) 'y'")}, "-rf $(touch x) 'y'"},
      {"%title%", {Make("Title", "...")}, ""},
      {"%title%", {Make("Title", "Ende. ")}, "Ende"},
      {"%title%", {Make("Title", "%album%")}, "%album%"},
      {"%title%", {Make("Title", all200 + "yz")}, all200},
      {"%title%", {Make("Title", std::string(199, 'x') + "ü")}, std::string(199, 'x')},
      {"%track% - %title%", {Make("Author", "niemand fragt")}, ""},
      {"%nichts%", {Make("Title", "x")}, ""},
      {"", {Make("Title", "x")}, ""},
  };
  for (const auto& row : cases) EXPECT_EQ(NameOf(row.pattern, row.attributes), row.name) << row.pattern;
}

TEST(NamePattern, Faults) {
  for (const char* good : {"", "  ", "%title%", "%% %Year%"}) EXPECT_FALSE(NamePatternFault(good)) << good;
  const std::string tooLong = "%title%" + std::string(256, 'x');
  for (const char* bad : {"Titel", "%%", "%title", "%titel%", "100% %title%", tooLong.c_str(), "%title%\xFF"})
    EXPECT_TRUE(NamePatternFault(bad)) << bad;
}

}  // namespace
}  // namespace ts5::tags
