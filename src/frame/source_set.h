// The sources of a run, to ask whether a name is one of them: under any spelling of its path, through links,
// and without regard to case, as some media take "Song.mid" and "SONG.MID" for the same file.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>

#include "frame/destination.h"
#include "frame/job.h"

namespace ts5 {

// Texts that are equal when two paths lead to the same entry of the same directory, also to one that is still
// to be made. Blanks and dots at the end of a name count for nothing, as on the media that drop them. A
// directory is looked at once.
class PathKeys {
 public:
  explicit PathKeys(const DestinationFiles& files) : files_(&files) {}
  [[nodiscard]] std::string Of(const std::string& path);

 private:
  [[nodiscard]] std::string OfDirectory(const std::string& directory);

  const DestinationFiles* files_;
  std::unordered_map<std::string, std::string> directories_;
};

class SourceSet {
 public:
  // Both are to outlive the set. Nothing is looked at before the first question.
  SourceSet(const Job& job, const DestinationFiles& files) : job_(&job), files_(&files), keys_(files) {}

  [[nodiscard]] bool Contains(const std::string& path);
  // The name reaches that source and no other one of the run.
  [[nodiscard]] bool IsOnly(const std::string& path, const std::string& source);

 private:
  void Collect();
  void CollectIdentities();

  const Job* job_;
  const DestinationFiles* files_;
  PathKeys keys_;
  bool collected_ = false;
  bool identified_ = false;
  std::unordered_map<std::string, std::size_t> names_;
  std::unordered_map<FileIdentity, std::size_t, FileIdentityHash> identities_;
};

}  // namespace ts5
