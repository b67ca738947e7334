#include "support/test_data.h"

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace ts5::test {

namespace fs = std::filesystem;

std::string DataPath(std::string_view name) {
  return std::string(TS5_TEST_DATA "/") + std::string(name);
}

std::string Utf16Bytes(std::u16string_view text, bool bigEndian) {
  std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char16_t unit : text) {
    const char parts[] = {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    bytes += {parts[bigEndian ? 1 : 0], parts[bigEndian ? 0 : 1]};
  }
  return bytes;
}

std::vector<std::string> DemoScores() {
  std::vector<std::string> scores;
  for (const auto& file : fs::directory_iterator(DataPath("../../demo"))) {
    if (file.path().extension() == ".stv") scores.push_back(file.path().string());
  }
  return scores;
}

namespace {

// Where the system has them, whatever the test program tells the code under test.
std::string MakeDirectory() {
  static const fs::path system = fs::temp_directory_path();
  std::string pattern = (system / "ts5-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
  return pattern;
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() : Place(MakeDirectory()) {}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  fs::remove_all(Path(), ignored);
}

std::string Place::File(std::string_view name) const {
  return path_ + "/" + std::string(name);
}

std::string Place::Write(std::string_view name, std::string_view content) const {
  const std::string path = File(name);
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream out(path, std::ios::binary);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
  return path;
}

std::string Content(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::map<std::string, std::string> Contents(const std::string& directory) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    if (entry.is_regular_file()) files[fs::relative(entry.path(), directory)] = Content(entry.path());
  }
  return files;
}

std::string Listing(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  std::string all;
  for (const auto& name : names) all += (all.empty() ? "" : " ") + name;
  return all;
}

}  // namespace ts5::test
