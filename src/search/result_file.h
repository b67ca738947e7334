// Result files of melody searches: plain text in Windows-1252 with CR LF. A file may hold several searches,
// one behind the other; it is recognised by the first line of its first one.
#pragma once

#include <functional>
#include <string>

#include "frame/search_hit.h"
#include "platform/base/outcome.h"
#include "platform/files/files.h"
#include "search/search_record.h"

namespace ts5 {

// Whether the file begins as a result file does.
[[nodiscard]] bool IsResultFile(const std::string& path);

// Writes one search. The file comes into being, or is extended, only with Finish; until then the old one
// stays as it is.
class ResultFileWriter {
 public:
  // append: behind what the file holds. TargetFailed, WriteFailed, ReadFailed (the old file cannot be read).
  [[nodiscard]] static Result<ResultFileWriter> Create(const std::string& path, bool append,
                                                       const SearchRecord& record);

  [[nodiscard]] Outcome WriteHit(const SearchHit& hit);  // WriteFailed
  // The foot; then put() puts the file in its place. WriteFailed, or what put() says.
  [[nodiscard]] Outcome Finish(const SearchRecord& record, const std::function<Outcome(StagedFile&)>& put);
  // Where it is written until then.
  [[nodiscard]] const std::string& TemporaryPath() const { return file_.TemporaryPath(); }

 private:
  ResultFileWriter(StagedFile file, SearchKind kind) : file_(std::move(file)), kind_(kind) {}
  [[nodiscard]] Outcome WriteResultHeader(const SearchRecord& record);
  [[nodiscard]] Outcome WriteResultFooter(const SearchRecord& record);
  [[nodiscard]] Outcome Append(std::string_view bytes);
  [[nodiscard]] Outcome FlushBuffer();

  StagedFile file_;
  SearchKind kind_;
  std::string buffer_;
};

}  // namespace ts5
