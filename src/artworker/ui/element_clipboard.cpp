#include "artworker/ui/element_clipboard.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QUrl>
#include <algorithm>

#include "artworker/layout_file.h"
#include "artworker/pictures.h"
#include "frame/ui/qt_text.h"
#include "platform/base/bytes.h"
#include "platform/base/text.h"

namespace ts5::artworker {
namespace {

constexpr int kTextWidth = 600;          // tenths of a millimetre
constexpr int kLineHeight = 80;          // likewise
constexpr std::size_t kMostText = 4000;  // characters of a text from elsewhere
constexpr double kTenthsPerDot = 254.0 / 300;
constexpr double kMostPictureWidth = 1000;  // tenths of a millimetre

const QMimeData* Content() {
  return QApplication::clipboard()->mimeData();
}

std::optional<ArtworkElement> ElementOfFile(const QMimeData& content) {
  for (const QUrl& url : content.urls()) {
    const std::string file = FromQt(url.toLocalFile());
    const QSize size = file.empty() ? QSize() : Pictures::SizeOf(file);
    if (!size.isEmpty()) return ElementOfPicture(file, size);
  }
  return std::nullopt;
}

}  // namespace

bool CopyElements(std::span<const ArtworkElement> elements) {
  ArtworkLayout layout = NewLayout();
  layout.elements.assign(elements.begin(), elements.end());
  const Bytes record = LayoutRecord(layout);
  auto* const content = new QMimeData;
  content->setData(kElementFormat, QByteArray(reinterpret_cast<const char*>(record.data()),
                                              static_cast<qsizetype>(record.size())));
  // Other programs get the text of text fields.
  QStringList texts;
  for (const ArtworkElement& element : elements) {
    if (const auto* const field = std::get_if<TextField>(&element.content)) texts << ToQt(field->text);
  }
  if (!texts.isEmpty()) content->setText(texts.join('\n'));
  QApplication::clipboard()->setMimeData(content);
  return CanPaste();
}

bool ClipboardOpens() {
  return Content() != nullptr;
}

bool CanPaste() {
  const QMimeData* const content = Content();
  return content != nullptr && (content->hasFormat(kElementFormat) || content->hasImage() ||
                                content->hasUrls() || !content->text().trimmed().isEmpty());
}

void ForgetElements() {
  const QMimeData* const content = Content();
  if (content != nullptr && content->hasFormat(kElementFormat)) QApplication::clipboard()->clear();
}

std::optional<std::vector<ArtworkElement>> PasteElements(const PictureKeeper& keep) {
  const QMimeData* const content = Content();
  if (content == nullptr) return std::nullopt;
  if (content->hasFormat(kElementFormat)) {
    const QByteArray data = content->data(kElementFormat);
    const auto layout = LayoutFromRecord(AsBytes({data.constData(), static_cast<std::size_t>(data.size())}));
    if (!layout || layout->elements.empty()) return std::nullopt;
    return layout->elements;
  }
  if (const auto file = ElementOfFile(*content)) return std::vector{*file};
  if (content->hasImage()) {
    const auto picture = content->imageData().value<QImage>();
    const auto kept = picture.isNull() ? Failure(Outcome::SourceFailed) : keep(picture);
    if (!kept) return std::nullopt;
    return std::vector{ElementOfPicture(*kept, picture.size())};
  }
  const std::string text = FromQt(content->text().trimmed());
  if (text.empty()) return std::nullopt;
  return std::vector{ElementOfText(std::string(FirstCharacters(text, kMostText)))};
}

ArtworkElement ElementOfText(const std::string& text) {
  ArtworkElement element;
  TextField field;
  SetText(field, text);
  const auto lines = static_cast<std::int32_t>(std::ranges::count(field.text, '\n')) + 1;
  if (lines > 1) field.horizontal = Across::Left;
  element.content = field;
  element.box = {0, 0, kTextWidth, kLineHeight * std::min(lines, 20)};
  return element;
}

ArtworkElement ElementOfPicture(const std::string& file, QSize pixels) {
  ArtworkElement element;
  Image image;
  image.file = file;
  element.content = image;
  const double scale = std::min(kTenthsPerDot, kMostPictureWidth / pixels.width());
  element.box = {0, 0, std::max(1, static_cast<int>(pixels.width() * scale)),
                 std::max(1, static_cast<int>(pixels.height() * scale))};
  return element;
}

}  // namespace ts5::artworker
