// Where the tests find their files.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ts5::test {

// tests/data/NAME
[[nodiscard]] std::string DataPath(std::string_view name);

// The paths of the scores that come with the program.
[[nodiscard]] std::vector<std::string> DemoScores();

// UTF-16 with its mark.
[[nodiscard]] std::string Utf16Bytes(std::u16string_view text, bool bigEndian = false);

// A directory for the files of a test.
class Place {
 public:
  explicit Place(std::string path) : path_(std::move(path)) {}

  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] std::string File(std::string_view name) const;
  // Writes a file and returns its path; directories in the name are made.
  std::string Write(std::string_view name, std::string_view content) const;

 private:
  std::string path_;
};

// One of its own, beside all others, removed with all it holds.
class TemporaryDirectory : public Place {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
};

// The content of a file, "" when there is none.
[[nodiscard]] std::string Content(const std::string& path);
// The files in and below a directory: their contents by their names from there.
[[nodiscard]] std::map<std::string, std::string> Contents(const std::string& directory);
// Names of all entries of a directory, sorted.
[[nodiscard]] std::string Listing(const std::string& directory);

}  // namespace ts5::test
