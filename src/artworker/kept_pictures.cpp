#include "artworker/kept_pictures.h"

#include <QBuffer>
#include <QByteArray>
#include <QCryptographicHash>
#include <QDir>
#include <optional>
#include <string_view>

#include "platform/base/bytes.h"
#include "platform/base/text.h"
#include "platform/disc/volumes.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5::artworker {
namespace {

constexpr int kNameDigits = 16;
constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;

// Writes the file unless it is there: the name stands for the content.
Result<std::string> WriteOnce(const std::string& folder, const std::string& name, ByteView bytes) {
  if (const Outcome made = MakeDirectories(folder); Failed(made)) return Failure(made);
  std::string path = JoinPath(folder, name);
  if (FileExists(path)) return path;
  const Outcome written = WriteFile(path, bytes);
  if (Failed(written)) return Failure(written);
  return path;
}

// Whatever the case of its letters: other machines do not tell it apart.
std::optional<std::string> FileIn(const std::string& folder, std::string_view name) {
  for (const QString& entry : QDir(QString::fromStdString(folder)).entryList(QDir::Files)) {
    if (EqualsIgnoringCase(entry.toStdString(), name)) return JoinPath(folder, entry.toStdString());
  }
  return std::nullopt;
}

}  // namespace

std::string WaitingPictures() {
  return JoinPath(ProgramDirectory(), "artworker");
}

Result<std::string> KeepPicture(const QImage& picture, const std::string& folder) {
  QByteArray png;
  QBuffer buffer(&png);
  if (picture.isNull() || !buffer.open(QIODevice::WriteOnly) || !picture.save(&buffer, "PNG"))
    return Failure(Outcome::WriteFailed);
  const QByteArray digest = QCryptographicHash::hash(png, QCryptographicHash::Sha256).toHex();
  const std::string name = "bild-" + digest.left(kNameDigits).toStdString() + ".png";
  return WriteOnce(folder, name, AsBytes({png.constData(), static_cast<std::size_t>(png.size())}));
}

Outcome SettlePictures(ArtworkLayout& layout, const std::string& folder) {
  const std::string waiting = WaitingPictures();
  for (ArtworkElement& element : layout.elements) {
    auto* const image = std::get_if<Image>(&element.content);
    if (image == nullptr || DirectoryOf(image->file) != waiting) continue;
    const auto bytes = ReadFile(image->file, kMostBytes);
    if (!bytes) continue;  // it has gone: the element says so
    const auto kept = WriteOnce(folder, std::string(FileNameOf(image->file)), *bytes);
    if (!kept) return kept.error();
    image->file = *kept;
  }
  return Outcome::Success;
}

bool CanBeNamed(const std::string& file) {
  return Utf8FromWindows1252(Windows1252FromUtf8(file)) == file;
}

std::string FindPicture(const std::string& name, const std::string& folder) {
  const bool letter = name.size() > 2 && name[1] == ':';
  const std::string path =
      letter ? VolumeTable::OfThisMachine().NativePath(name).value_or(name) : JoinPath(folder, name);
  if (FileExists(path)) return path;
  const auto beside = folder.empty() ? std::nullopt : FileIn(folder, FileNameOf(name));
  return beside ? *beside : letter ? name : path;
}

void FindPictures(ArtworkLayout& layout, const std::string& folder) {
  for (ArtworkElement& element : layout.elements) {
    if (auto* const image = std::get_if<Image>(&element.content); image != nullptr && !image->file.empty())
      image->file = FindPicture(image->file, folder);
  }
}

}  // namespace ts5::artworker
