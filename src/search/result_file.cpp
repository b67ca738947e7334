#include "search/result_file.h"

#include <utility>

#include "platform/strings.h"
#include "platform/text.h"
#include "search/hit_texts.h"

namespace ts5 {
namespace {

constexpr std::size_t kBuffer = std::size_t{1} << 16;

}  // namespace

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
  const Outcome written = writer.Append(Windows1252FromUtf8(ResultHeader(record)));
  if (Failed(written)) return Failure(written);
  return writer;
}

Outcome ResultFileWriter::Write(const SearchHit& hit) {
  return Append(HitLine(kind_, hit));
}

Outcome ResultFileWriter::Finish(const SearchRecord& record) {
  Outcome outcome = Append(Windows1252FromUtf8(ResultFooter(record)));
  if (Succeeded(outcome)) outcome = FlushBuffer();
  return Succeeded(outcome) ? file_.Commit() : outcome;
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

Result<std::string> LoadResultFile(const std::string& path) {
  const std::string_view tag = ResultTagLine();
  const auto start = ReadFileStart(path, tag.size());
  if (!start) return Failure(start.error());
  if (AsText(*start) != tag) return Failure(Outcome::WrongFormat);
  const auto file = ReadFile(path, kMaxResultFile);
  if (!file) return Failure(file.error());
  return Utf8FromWindows1252(AsText(*file));
}

std::string_view ResultFileFailureText(Outcome outcome) {
  switch (outcome) {
    case Outcome::WrongFormat:
      return Text(TextId::NotAResultFile);
    case Outcome::SourceFailed:
      return Text(TextId::RemarkSourceFailed);
    case Outcome::OutOfMemory:
      return Text(TextId::RemarkOutOfMemory);
    default:
      return Text(TextId::RemarkReadFailed);
  }
}

}  // namespace ts5
