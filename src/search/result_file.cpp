#include "search/result_file.h"

#include <utility>

#include "platform/base/text.h"
#include "search/hit_texts.h"

namespace ts5 {
namespace {

constexpr std::size_t kBuffer = std::size_t{1} << 16;

}  // namespace

bool IsResultFile(const std::string& path) {
  const auto start = ReadFileStart(path, ResultTagLine().size());
  return start && AsText(*start) == ResultTagLine();
}

Result<ResultFileWriter> ResultFileWriter::Create(const std::string& path, bool append,
                                                  const SearchRecord& record) {
  auto staged = StagedFile::Create(path);
  if (!staged) return Failure(staged.error());
  if (append) {
    const auto old = ReadFile(path);
    if (!old)
      return Failure(old.error() == Outcome::OutOfMemory ? Outcome::OutOfMemory : Outcome::ReadFailed);
    if (const Outcome copied = staged->Write(*old); Failed(copied)) return Failure(copied);
  }
  ResultFileWriter writer(std::move(*staged), record.kind);
  if (const Outcome written = writer.WriteResultHeader(record); Failed(written)) return Failure(written);
  return writer;
}

Outcome ResultFileWriter::WriteHit(const SearchHit& hit) {
  return Append(HitLine(kind_, hit));
}

Outcome ResultFileWriter::Finish(const SearchRecord& record, const std::function<Outcome(StagedFile&)>& put) {
  Outcome outcome = WriteResultFooter(record);
  if (Succeeded(outcome)) outcome = FlushBuffer();
  return Succeeded(outcome) ? put(file_) : outcome;
}

Outcome ResultFileWriter::WriteResultHeader(const SearchRecord& record) {
  return Append(Windows1252FromUtf8(ResultHeader(record)));
}

Outcome ResultFileWriter::WriteResultFooter(const SearchRecord& record) {
  return Append(Windows1252FromUtf8(ResultFooter(record)));
}

Outcome ResultFileWriter::Append(std::string_view bytes) {
  buffer_.append(bytes);
  return buffer_.size() < kBuffer ? Outcome::Success : FlushBuffer();
}

Outcome ResultFileWriter::FlushBuffer() {
  const Outcome outcome = file_.Write(AsBytes(buffer_));
  buffer_.clear();
  return outcome;
}

}  // namespace ts5
