#include "artworker/pictures.h"

#include <QBuffer>
#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <algorithm>
#include <cctype>
#include <string>
#include <utility>

#include "platform/base/bytes.h"
#include "platform/base/text.h"
#include "platform/files/digest.h"
#include "platform/files/paths.h"

namespace ts5::artworker {
namespace {

constexpr qint64 kMaxFileBytes = qint64{256} << 20;

QByteArray FormatOf(QByteArray bytes) {
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::ReadOnly);
  return QImageReader::imageFormat(&buffer);
}

// Of a picture inside a drawing, up to the sign that ends it: a drawing in there might refer to anything.
bool IsPlainPicture(QByteArrayView reference, char quote) {
  constexpr QByteArrayView kCoded = "base64,";
  if (quote != '"' && quote != '\'') return false;
  const qsizetype end = reference.indexOf(quote);
  const QByteArrayView whole = end >= 0 ? reference.first(end) : reference;
  const qsizetype begin = whole.lastIndexOf(kCoded);
  if (begin < 0) return true;  // the toolkit draws no other
  const QByteArray bytes = QByteArray::fromBase64(whole.sliced(begin + kCoded.size()).toByteArray());
  return !FormatOf(bytes).startsWith("svg");
}

// Whether all that follows the word in a drawing refers to the drawing itself; the sign that opens the
// reference and what may stand before it are passed over.
bool StaysInside(const QByteArray& drawing, const QByteArray& word) {
  for (qsizetype at = drawing.indexOf(word); at >= 0; at = drawing.indexOf(word, at + 1)) {
    qsizetype target = at + word.size();
    while (target < drawing.size() && QByteArrayView(" \t\r\n='\"").contains(drawing[target])) ++target;
    const QByteArrayView reference = QByteArrayView(drawing).sliced(target);
    const bool inside = reference.startsWith("data:") ? IsPlainPicture(reference, drawing[target - 1])
                                                      : reference.startsWith('#');
    if (!inside) return false;
  }
  return true;
}

// A drawing may name other files and addresses, and what it holds may be packed: only a plain one that refers
// to nothing else is drawn.
bool IsSafe(const QByteArray& bytes, const QByteArray& format) {
  if (!format.startsWith("svg")) return true;
  return bytes.contains("<svg") && !bytes.contains("<!ENTITY") && !bytes.contains("@import") &&
         StaysInside(bytes, "href") && StaysInside(bytes, "url(");
}

// A PNG file up to its end: the toolkit's decoder prints its own complaints about others where nobody wants
// them. What may be left out of a picture may be damaged.
bool IsWholePng(ByteView bytes) {
  constexpr std::size_t kSignature = 8;
  ByteReader in(bytes);
  in.Skip(kSignature);
  while (in.Ok()) {
    const std::uint32_t length = in.U32Be();
    const std::size_t begin = in.Position();
    const std::string tag(in.Tag());
    const ByteView data = in.Take(length);
    const std::uint32_t sum = in.U32Be();
    if (!in.Ok()) return false;
    Crc32 crc;
    crc.Add(bytes.subspan(begin, tag.size() + data.size()));
    if (crc.Value() != sum && std::isupper(static_cast<unsigned char>(tag[0])) != 0) return false;
    if (tag == "IHDR") {
      ByteReader head(data);
      for (const std::uint32_t side : {head.U32Be(), head.U32Be()}) {
        if (side == 0 || std::cmp_greater(side, kMaxPictureSide)) return false;
      }
    }
    if (tag == "IEND") return true;
  }
  return false;
}

struct Source {
  QByteArray bytes;
  QByteArray format;
};

Source ReadSource(const std::string& name) {
  QFile file(QString::fromStdString(name));
  if (!QFileInfo(file).isFile() || file.size() > kMaxFileBytes || !file.open(QIODevice::ReadOnly)) return {};
  Source source;
  source.bytes = file.readAll();
  source.format = FormatOf(source.bytes);
  if (source.format.isEmpty() || !IsSafe(source.bytes, source.format)) return {};
  if (source.format == "png" &&
      !IsWholePng(AsBytes({source.bytes.constData(), static_cast<std::size_t>(source.bytes.size())})))
    return {};
  return source;
}

// Of no source it has no size and reads nothing.
struct OpenPicture {
  explicit OpenPicture(Source from) : source(std::move(from)), buffer(&source.bytes) {
    buffer.open(QIODevice::ReadOnly);
    reader.setDevice(&buffer);
    reader.setFormat(source.format);
    reader.setAutoTransform(true);
  }
  // Its own mark says that it lies on its side; its size is told as it lies.
  [[nodiscard]] bool Turned() const {
    return reader.transformation() & QImageIOHandler::TransformationRotate90;
  }

  Source source;
  QBuffer buffer;
  QImageReader reader;
};

// Whether it may be decoded, which takes its memory and its time.
bool MayShow(QSize size) {
  constexpr qint64 kBytesPerPixel = 4;
  return size.width() <= kMaxPictureSide && size.height() <= kMaxPictureSide &&
         qint64{size.width()} * size.height() * kBytesPerPixel <= qint64{kMaxPictureMegabytes} << 20;
}

QImage Read(const std::string& name, QSize most) {
  OpenPicture picture(ReadSource(name));
  QImageReader& reader = picture.reader;
  const QSize size = reader.size();
  if (!MayShow(size)) return {};
  QImageReader::setAllocationLimit(kMaxPictureMegabytes);
  // A picture turned by its own mark is measured before it is turned; drawings are made at the size that is
  // wanted.
  if (size.isValid() && !most.isEmpty() && !picture.Turned()) {
    if (reader.format().startsWith("svg")) {
      reader.setScaledSize(most);
    } else if (size.width() > most.width() || size.height() > most.height()) {
      reader.setScaledSize({std::min(size.width(), most.width()), std::min(size.height(), most.height())});
    }
  }
  return reader.read();
}

std::int64_t TimeOf(const std::string& file) {
  const QFileInfo info(QString::fromStdString(file));
  return info.exists() ? info.lastModified().toMSecsSinceEpoch() : 0;
}

}  // namespace

const QImage& Pictures::Scaled(const std::string& file, QSize most) {
  const std::int64_t time = TimeOf(file);
  const auto found = std::ranges::find_if(entries_, [&](const Entry& entry) {
    return entry.file == file && entry.most == most && entry.time == time;
  });
  if (found != entries_.end()) {
    entries_.splice(entries_.begin(), entries_, found);
    return entries_.front().image;
  }
  std::erase_if(entries_, [&](const Entry& entry) { return entry.file == file && entry.time != time; });
  entries_.push_front({file, most, time, Read(file, most)});
  std::int64_t bytes = 0;
  for (const Entry& entry : entries_) bytes += entry.image.sizeInBytes();
  while (bytes > kMostKeptBytes && entries_.size() > 1) {
    bytes -= entries_.back().image.sizeInBytes();
    entries_.pop_back();
  }
  return entries_.front().image;
}

const QImage& Pictures::Draft(const std::string& file, QSize most) {
  const auto found = std::ranges::find(entries_, file, &Entry::file);
  return found != entries_.end() ? found->image : Scaled(file, most);
}

QByteArray Pictures::Drawing(const std::string& file) {
  if (!IsDrawing(file)) return {};
  Source source = ReadSource(file);
  return source.format.startsWith("svg") ? std::move(source.bytes) : QByteArray();
}

bool Pictures::IsDrawing(const std::string& file) {
  return EqualsIgnoringCase(ExtensionOf(file), "svg");
}

QSize Pictures::SizeOf(const std::string& file) {
  OpenPicture picture(ReadSource(file));
  const QSize size = picture.reader.size();
  if (!MayShow(size)) return {};
  return picture.Turned() ? size.transposed() : size;
}

}  // namespace ts5::artworker
