#include "frame/failure_reason.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "frame/texts.h"
#include "platform/base/bytes.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

using namespace texts;

struct ErrorText {
  int error;
  TextId reading;
  TextId writing;
};

constexpr ErrorText kErrors[] = {
    {0, ReasonNoFile, ReasonNoFile},
    {ENOENT, ReasonMissing, ReasonNoDirectory},
    {ENOTDIR, ReasonMissing, ReasonNoDirectory},
    {EACCES, ReasonMayNotRead, ReasonFileProtected},
    {EPERM, ReasonMayNotRead, ReasonFileProtected},
    {EROFS, ReasonMediumProtected, ReasonMediumProtected},
    {EISDIR, ReasonIsDirectory, ReasonIsDirectory},
    {ENOSPC, ReasonDiskFull, ReasonDiskFull},
    {EDQUOT, ReasonQuota, ReasonQuota},
    {EFBIG, ReasonTooBig, ReasonTooBig},
    {ENAMETOOLONG, ReasonNameTooLong, ReasonNameTooLong},
    {ELOOP, ReasonLinkLoop, ReasonLinkLoop},
    {EMFILE, ReasonTooManyFiles, ReasonTooManyFiles},
    {ENFILE, ReasonTooManyFiles, ReasonTooManyFiles},
    {EIO, ReasonMediumFailed, ReasonMediumFailed},
};

struct Content {
  std::string_view magic;
  std::string_view behind;      // at byte 8; "" for anything
  std::string_view extensions;  // of files that say so by their names, with blanks between
  TextId text;
};

constexpr std::size_t kBehind = 8;
constexpr std::size_t kLookAt = 512;
constexpr Content kContents[] = {
    {"MThd", "", "mid", ContentMidi},
    {"RIFF", "RMID", "rmi", ContentRiffMidi},
    {"RDL3", "", "rdl", ContentSequencer},
    {"stv3", "", "stv", ContentScore},
    {"\x89\xE2\xB3\x74", "", "", ContentOldScore},
    {"\x8A\xE2\xB3\x74", "", "", ContentOldScore},
    {"\x8B\xE2\xB3\x74", "", "", ContentOldScore},
    {"RIFF", "WAVE", "wav", ContentWave},
    {"RF64", "WAVE", "wav", ContentWave},
    {"RIFX", "WAVE", "wav", ContentWave},
    {"RIFF", "", "", ContentRiff},
    {"FORM", "AIF", "aif", ContentAiff},
    {"OggS", "", "ogg", ContentOgg},
    {"fLaC", "", "flac", ContentFlac},
    {"ID3", "", "mp3", ContentMp3},
    {"MAC ", "", "ape", ContentApe},
    {"\x30\x26\xB2\x75", "", "wma", ContentWindowsMedia},
    {"wvpk", "", "wv", ContentWavPack},
    {"", "M4A ", "m4a", ContentMp4},
    {"", "mp42", "m4a", ContentMp4},
    {"", "isom", "m4a", ContentMp4},
    {"<?xml", "", "xml musicxml stvx", ContentXml},
    {"%PDF", "", "", ContentPdf},
    {"PK\x03\x04", "", "mxl", ContentZip},
    {"\x89PNG", "", "", ContentPicture},
    {"\xFF\xD8\xFF", "", "", ContentPicture},
    {"\xFF\xFB", "", "mp3 mpg mpga", ContentMp3},
    {"\xFF\xFA", "", "mp3 mpg mpga", ContentMp3},
    {"\xFF\xF3", "", "mp3 mpg mpga", ContentMp3},
    {"\xFF\xF2", "", "mp3 mpg mpga", ContentMp3},
    {"\xFF\xE3", "", "mp3 mpg mpga", ContentMp3},
    {"\xFF\xFD", "", "mp2 mpg mpga", ContentMp2},
    {"\xFF\xFC", "", "mp2 mpg mpga", ContentMp2},
    {"\xFF\xF5", "", "mp2 mpg mpga", ContentMp2},
};

std::string Say(TextId text, const std::string& path) {
  return Format(Text(text), path);
}

bool IsDeadLink(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_symlink(path, error) && !std::filesystem::exists(path, error);
}

std::string SystemSaid(const FileFault& fault) {
  if (!fault.written && fault.error == ENOENT && IsDeadLink(fault.path))
    return Say(ReasonDeadLink, fault.path);
  if (fault.written && (fault.error == EACCES || fault.error == EPERM) && IsDirectory(fault.path))
    return Say(ReasonDirectoryProtected, fault.path);
  const auto* const row = std::ranges::find(kErrors, fault.error, &ErrorText::error);
  if (row == std::end(kErrors)) return Format(Text(ReasonSystem), fault.path, fault.error);
  return Say(fault.written ? row->writing : row->reading, fault.path);
}

bool IsText(std::string_view bytes) {
  const auto printable = [](char c) {
    return static_cast<unsigned char>(c) >= ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
  };
  return std::ranges::all_of(bytes, printable);
}

// What a source that is not in the format of the filter holds in truth.
std::string SourceHolds(const std::string& source) {
  const auto start = ReadFileStart(source, kLookAt);
  if (!start) return {};
  if (start->empty()) return Say(ReasonEmpty, source);
  const std::string_view bytes = AsText(*start);
  const auto* const row = std::ranges::find_if(kContents, [&](const Content& content) {
    return bytes.starts_with(content.magic) &&
           (content.behind.empty() ||
            (bytes.size() > kBehind && bytes.substr(kBehind).starts_with(content.behind)));
  });
  if (row != std::end(kContents)) {
    // What the name says already is no news.
    const auto own = Split(row->extensions, ' ');
    const std::string extension = ToLower(ExtensionOf(source));
    if (std::ranges::find(own, std::string_view(extension)) != own.end()) return {};
    return Format(Text(ReasonContent), source, Text(row->text));
  }
  if (IsText(bytes)) return Format(Text(ReasonContent), source, Text(ContentText));
  return Say(ReasonNoise, source);
}

bool IsAbout(const FileFault& fault, const std::string& source, const std::string& target) {
  if (!fault.written) return fault.path == source;
  return fault.path == target || target.empty() || IsSameFile(fault.path, target) ||
         IsSameFile(fault.path, std::string(DirectoryOf(target))) || fault.path == DirectoryOf(target);
}

bool IsOfTheContent(Outcome code) {
  return code == Outcome::WrongFormat || code == Outcome::SourceFailed || code == Outcome::SourceNotOpened ||
         code == Outcome::ReadFailed;
}

}  // namespace

std::string FailureReason(Outcome code, const std::string& source, const std::string& target,
                          const std::optional<FileFault>& fault) {
  if (!Failed(code) || code == Outcome::Cancelled || code == Outcome::OutOfMemory) return {};
  if (!source.empty() && !IsUsablePath(source)) return Say(ReasonNameTooLong, source);
  if (fault && IsAbout(*fault, source, target)) return SystemSaid(*fault);
  if (source.empty() || !IsOfTheContent(code)) return {};
  return SourceHolds(source);
}

}  // namespace ts5
