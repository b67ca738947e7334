#include "converters/mxl_container.h"

#include <unzip.h>
#include <zip.h>

#include <algorithm>
#include <memory>
#include <string>

#include "converters/xml_encoding.h"
#include "converters/xml_tree.h"

namespace ts5::converters {
namespace {

constexpr const char* kContainerName = "META-INF/container.xml";
constexpr std::string_view kMimeType = "application/vnd.recordare.musicxml";
constexpr std::string_view kScoreName = "score.musicxml";

// An archive in memory, as the archive library sees files.
struct MemoryFile {
  ByteView read;
  Bytes written;
  bool writing = false;
  std::uint64_t position = 0;

  [[nodiscard]] std::uint64_t Size() const { return writing ? written.size() : read.size(); }
};

MemoryFile& FileOf(voidpf stream) {
  return *static_cast<MemoryFile*>(stream);
}

voidpf Open(voidpf file, const void* /*name*/, int /*mode*/) {
  return file;
}
uLong Read(voidpf /*file*/, voidpf stream, void* buffer, uLong size) {
  MemoryFile& file = FileOf(stream);
  const std::uint64_t left = file.Size() - std::min(file.position, file.Size());
  const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
  const std::uint8_t* from = file.writing ? file.written.data() : file.read.data();
  std::copy_n(from + file.position, count, static_cast<std::uint8_t*>(buffer));
  file.position += count;
  return static_cast<uLong>(count);
}
uLong Write(voidpf /*file*/, voidpf stream, const void* buffer, uLong size) {
  MemoryFile& file = FileOf(stream);
  const auto* bytes = static_cast<const std::uint8_t*>(buffer);
  const auto end = static_cast<std::size_t>(file.position + size);
  if (file.written.size() < end) file.written.resize(end);
  std::copy_n(bytes, size, file.written.begin() + static_cast<std::ptrdiff_t>(file.position));
  file.position = end;
  return size;
}
ZPOS64_T Tell(voidpf /*file*/, voidpf stream) {
  return FileOf(stream).position;
}
long Seek(voidpf /*file*/, voidpf stream, ZPOS64_T offset, int origin) {
  MemoryFile& file = FileOf(stream);
  std::uint64_t base = 0;
  if (origin == ZLIB_FILEFUNC_SEEK_CUR) base = file.position;
  if (origin == ZLIB_FILEFUNC_SEEK_END) base = file.Size();
  const std::uint64_t position = base + offset;
  if (position < base || position > file.Size()) return -1;
  file.position = position;
  return 0;
}
int Close(voidpf /*file*/, voidpf /*stream*/) {
  return 0;
}
int Error(voidpf /*file*/, voidpf /*stream*/) {
  return 0;
}

zlib_filefunc64_def FunctionsFor(MemoryFile& file) {
  zlib_filefunc64_def functions{};
  functions.zopen64_file = Open;
  functions.zread_file = Read;
  functions.zwrite_file = Write;
  functions.ztell64_file = Tell;
  functions.zseek64_file = Seek;
  functions.zclose_file = Close;
  functions.zerror_file = Error;
  functions.opaque = &file;
  return functions;
}

struct CloseArchive {
  void operator()(void* archive) const { unzClose(archive); }
};
using Archive = std::unique_ptr<void, CloseArchive>;

// A name that stays inside the archive.
bool IsInside(std::string_view name) {
  if (name.empty() || name[0] == '/' || name[0] == '\\' || name.find(':') != std::string_view::npos)
    return false;
  return name.find("..") == std::string_view::npos;
}

Result<Bytes> ReadEntry(void* archive, const std::string& name, std::uint64_t most,
                        const CancelCheck& cancelled) {
  constexpr int kCaseSensitive = 1;
  if (unzLocateFile(archive, name.c_str(), kCaseSensitive) != UNZ_OK) return Failure(Outcome::WrongFormat);
  unz_file_info64 info{};
  if (unzGetCurrentFileInfo64(archive, &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK ||
      info.uncompressed_size > most || unzOpenCurrentFile(archive) != UNZ_OK)
    return Failure(Outcome::SourceFailed);
  constexpr std::size_t kBlock = std::size_t{64} << 10;
  Bytes content;
  for (;;) {
    if (cancelled && cancelled()) return Failure(Outcome::Cancelled);
    const std::size_t size = content.size();
    content.resize(size + kBlock);
    const int got = unzReadCurrentFile(archive, content.data() + size, kBlock);
    if (got < 0) return Failure(Outcome::SourceFailed);
    content.resize(size + static_cast<std::size_t>(got));
    if (content.size() > most) return Failure(Outcome::SourceFailed);
    if (got == 0) break;
  }
  // The check sum is compared here, where all of it has come.
  if (content.size() != info.uncompressed_size || unzCloseCurrentFile(archive) != UNZ_OK)
    return Failure(Outcome::SourceFailed);
  return content;
}

// The name of the first root file; "" none.
Result<std::string> RootFile(const Bytes& container) {
  auto text = XmlText(container);
  if (!text) return Failure(text.error());
  pugi::xml_document document;
  if (Failed(ParseXml(document, *text).code)) return Failure(Outcome::SourceFailed);
  const pugi::xml_node root = document.child("container").child("rootfiles").child("rootfile");
  return std::string(root.attribute("full-path").value());
}

bool AddEntry(void* archive, std::string_view name, std::string_view content, bool stored) {
  const std::string entry(name);
  zip_fileinfo info{};
  info.tmz_date = {0, 0, 0, 1, 0, 2000};  // always the same, so that the same score is the same file
  const int method = stored ? 0 : Z_DEFLATED;
  if (zipOpenNewFileInZip(archive, entry.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, method,
                          Z_DEFAULT_COMPRESSION) != ZIP_OK)
    return false;
  if (zipWriteInFileInZip(archive, content.data(), static_cast<unsigned>(content.size())) != ZIP_OK)
    return false;
  return zipCloseFileInZip(archive) == ZIP_OK;
}

}  // namespace

bool LooksLikeZip(ByteView file) {
  return AsText(file).starts_with("PK\x03\x04");
}

Result<Bytes> ReadMxl(ByteView file, const CancelCheck& cancelled) {
  if (!LooksLikeZip(file)) return Failure(Outcome::WrongFormat);
  MemoryFile memory;
  memory.read = file;
  zlib_filefunc64_def functions = FunctionsFor(memory);
  const Archive archive(unzOpen2_64("", &functions));
  if (archive == nullptr) return Failure(Outcome::SourceFailed);
  const std::uint64_t most = std::min(kMaxUnpackedScore, file.size() * kMostCompression);
  const auto container = ReadEntry(archive.get(), kContainerName, most, cancelled);
  if (!container) return Failure(container.error());
  const auto root = RootFile(*container);
  if (!root) return Failure(root.error());
  if (root->empty()) return Failure(Outcome::WrongFormat);
  if (!IsInside(*root)) return Failure(Outcome::SourceFailed);
  auto score = ReadEntry(archive.get(), *root, most, cancelled);
  // The container names a score that is not there.
  if (!score && score.error() == Outcome::WrongFormat) return Failure(Outcome::SourceFailed);
  return score;
}

Result<Bytes> WriteMxl(std::string_view xml) {
  constexpr std::string_view kContainer =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<container>\n  <rootfiles>\n    <rootfile "
      "full-path=\"score.musicxml\" media-type=\"application/vnd.recordare.musicxml+xml\"/>\n  </rootfiles>\n"
      "</container>\n";
  MemoryFile memory;
  memory.writing = true;
  zlib_filefunc64_def functions = FunctionsFor(memory);
  void* archive = zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions);
  if (archive == nullptr) return Failure(Outcome::OutOfMemory);
  const bool added = AddEntry(archive, "mimetype", kMimeType, true) &&
                     AddEntry(archive, kContainerName, kContainer, false) &&
                     AddEntry(archive, kScoreName, xml, false);
  const bool closed = zipClose(archive, nullptr) == ZIP_OK;
  if (!added || !closed) return Failure(Outcome::OutOfMemory);
  return std::move(memory.written);
}

}  // namespace ts5::converters
