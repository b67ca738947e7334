#include "midi/riff_info.h"

#include <string_view>

#include "midi/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/files.h"

namespace ts5 {

namespace {

constexpr std::uint32_t kDisplayText = 1;  // the DISP chunk holds a text (CF_TEXT)

void AppendText(ByteWriter& out, std::string_view text) {
  if (text.empty()) text = Text(texts::RiffAttributeUnused);
  out.Append(Windows1252FromUtf8(text.substr(0, text.find('\0'))));
  out.U8(0);
}

bool WriteTextChunk(RiffWriter& out, std::string_view id, std::string_view text) {
  const std::size_t chunk = out.Begin(id);
  AppendText(out.Content(), text);
  return out.End(chunk);
}

bool WriteDisplayTitle(RiffWriter& out, std::string_view title) {
  const std::size_t chunk = out.Begin("DISP");
  out.Content().U32Le(kDisplayText);
  AppendText(out.Content(), title);
  return out.End(chunk);
}

void ReadInfoList(ByteView content, std::vector<RiffInfoEntry>& entries) {
  RiffChunkReader chunks(content);
  for (RiffChunk chunk; chunks.Next(chunk);) {
    const std::string_view text = AsText(chunk.data);
    entries.push_back({Utf8FromWindows1252(chunk.id), Utf8FromWindows1252(text.substr(0, text.find('\0')))});
  }
}

}  // namespace

Outcome WriteRiffInfo(RiffWriter& out, const RiffAttributes& attributes, CalendarDate created) {
  const auto [day, month, year] = NumbersOf(created);
  const std::string date = Format("%i/%i/%i", day, month, year);
  bool written = WriteDisplayTitle(out, attributes.title);
  const std::size_t list = out.Begin("LIST", "INFO");
  written = WriteTextChunk(out, "IART", attributes.artist) && written;
  written = WriteTextChunk(out, "ICOP", attributes.copyright) && written;
  written = WriteTextChunk(out, "ISBJ", attributes.description) && written;
  written = WriteTextChunk(out, "ICRD", date) && written;
  written = out.End(list) && written;
  return written ? Outcome::Success : Outcome::ChunkNotWritten;
}

Result<std::vector<RiffInfoEntry>> ReadRiffInfo(ByteView file) {
  ByteReader in(file);
  if (in.Tag() != "RIFF") return Failure(Outcome::WrongFormat);
  in.Skip(8);  // size and type of the form
  if (!in.Ok()) return Failure(Outcome::WrongFormat);

  std::vector<RiffInfoEntry> entries;
  RiffChunkReader chunks(file.subspan(in.Position()));
  for (RiffChunk chunk; chunks.Next(chunk);) {
    if (chunk.id == "LIST" && ByteReader(chunk.data).Tag() == "INFO")
      ReadInfoList(chunk.data.subspan(4), entries);
  }
  return entries;
}

Result<std::vector<RiffInfoEntry>> ReadRiffInfo(const std::string& path) {
  const auto file = ReadFile(path);
  if (!file) return Failure(file.error());
  return ReadRiffInfo(ByteView(*file));
}

}  // namespace ts5
