#include "artworker/element_notes.h"

#include <QRectF>
#include <algorithm>
#include <cmath>

#include "artworker/element_places.h"
#include "artworker/object_painter.h"
#include "artworker/pictures.h"
#include "artworker/texts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5::artworker {
namespace {

constexpr std::size_t kNameCharacters = 60;
constexpr double kInch = 25.4;
constexpr double kSlack = 0.05;  // millimetres that nobody sees

std::string OneLine(std::string text) {
  std::ranges::replace(text, '\n', ' ');
  std::ranges::replace(text, '\t', ' ');
  return std::string(FirstCharacters(text, kNameCharacters));
}

double DistanceToPoint(const QRectF& rect, QPointF point) {
  const double x = std::clamp(point.x(), rect.left(), rect.right()) - point.x();
  const double y = std::clamp(point.y(), rect.top(), rect.bottom()) - point.y();
  return std::hypot(x, y);
}

double FarthestFromPoint(const QRectF& rect, QPointF point) {
  return std::hypot(std::max(std::abs(rect.left() - point.x()), std::abs(rect.right() - point.x())),
                    std::max(std::abs(rect.top() - point.y()), std::abs(rect.bottom() - point.y())));
}

bool NearEdge(const QRectF& place, const QRectF& object, bool disc) {
  if (disc) return FarthestFromPoint(place, object.center()) > object.width() / 2 - kSafeMargin + kSlack;
  const double margin = kSafeMargin - kSlack;
  return !object.adjusted(margin, margin, -margin, -margin).contains(place);
}

}  // namespace

std::string NameOf(const ArtworkElement& element) {
  struct {
    std::string operator()(const TextField& field) const {
      return Format(Text(texts::ElementText), OneLine(field.text));
    }
    std::string operator()(const Ellipse&) const { return std::string(Text(texts::ElementEllipse)); }
    std::string operator()(const Image& image) const {
      return Format(Text(texts::ElementImage), FileNameOf(image.file));
    }
    std::string operator()(const UnknownContent&) const { return std::string(Text(texts::ElementUnknown)); }
  } name;
  return std::visit(name, element.content);
}

std::string PlaceText(const ArtworkElement& element, const ArtworkObject& object) {
  const QRectF place = PlaceOf(element, object);
  std::string text =
      Format(Text(texts::ElementPlace), place.left(), place.top(), place.width(), place.height());
  std::ranges::replace(text, '.', ',');
  return text;
}

double DpiOf(const ArtworkElement& element, const ArtworkObject& object) {
  const auto* const image = std::get_if<Image>(&element.content);
  if (image == nullptr) return 0;
  const QSize size = Pictures::SizeOf(image->file);
  if (size.isEmpty()) return 0;
  const double inset = 2 * 0.1 * (element.borderWidth + element.borderGap);
  const QRectF place = PlaceOf(element, object);
  const double width = std::max(place.width() - inset, kSlack);
  const double height = std::max(place.height() - inset, kSlack);
  return std::min(size.width() / width, size.height() / height) * kInch;
}

std::vector<std::string> WarningsOf(const ArtworkElement& element, const ArtworkObject& object) {
  std::vector<std::string> warnings;
  const QRectF place = PlaceOf(element, object);
  const QRectF whole({0, 0}, ExtentOf(object, element.object));
  const bool disc = element.object == ArtworkObjectId::Label;
  if (const auto* const field = std::get_if<TextField>(&element.content)) {
    if (disc && DistanceToPoint(place, whole.center()) < object.size.height / 2.0 - kSlack)
      warnings.emplace_back(Text(texts::WarningHole));
    if (NearEdge(place, whole, disc)) warnings.emplace_back(Text(texts::WarningEdge));
    if (FontMissing(field->font.face)) warnings.push_back(Format(Text(texts::WarningFont), field->font.face));
  } else if (const auto* const image = std::get_if<Image>(&element.content)) {
    const double dpi = DpiOf(element, object);
    if (dpi == 0) {
      warnings.emplace_back(Text(texts::WarningPicture));
    } else if (dpi < kLeastDpi && !Pictures::IsDrawing(image->file)) {
      warnings.push_back(Format(Text(texts::WarningCoarse), static_cast<int>(dpi)));
    }
  }
  return warnings;
}

std::vector<std::string> LacksOf(const ArtworkLayout& layout, std::int32_t objects) {
  std::vector<std::string> lacks;
  const auto add = [&lacks](std::string line) {
    if (std::ranges::find(lacks, line) == lacks.end()) lacks.push_back(std::move(line));
  };
  for (const ArtworkElement& element : layout.elements) {
    if ((objects >> IndexOf(element.object) & 1) == 0) continue;
    if (const auto* const field = std::get_if<TextField>(&element.content)) {
      if (FontMissing(field->font.face)) add(Format(Text(texts::WarningFont), field->font.face));
    } else if (const auto* const image = std::get_if<Image>(&element.content)) {
      if (Pictures::SizeOf(image->file).isEmpty())
        add(Format(Text(texts::PictureLacks), FileNameOf(image->file)));
    }
  }
  return lacks;
}

}  // namespace ts5::artworker
