// Where the tests find their files.
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace ts5::test {

// tests/data/NAME
[[nodiscard]] std::string DataPath(std::string_view name);

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
// Names of all entries of a directory, sorted.
[[nodiscard]] std::string Listing(const std::string& directory);

}  // namespace ts5::test
