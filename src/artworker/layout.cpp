#include "artworker/layout.h"

#include <algorithm>
#include <utility>

#include "platform/base/text.h"

namespace ts5::artworker {

std::int32_t KindOf(const ArtworkElement& element) {
  const auto* const unknown = std::get_if<UnknownContent>(&element.content);
  return unknown != nullptr ? unknown->kind : static_cast<std::int32_t>(element.content.index());
}

bool CanBeKept(const ArtworkLayout& layout) {
  std::int64_t bytes = 0;
  for (const ArtworkElement& element : layout.elements) {
    if (const auto* const field = std::get_if<TextField>(&element.content)) bytes += field->length;
  }
  return layout.elements.size() <= kMaxElements && bytes <= kMaxTextBytes;
}

ArtworkLayout NewLayout() {
  ArtworkLayout layout;
  for (const ArtworkObjectId id : kObjectIds) {
    ArtworkObject& object = layout.Object(id);
    object.size = kNormSizes[IndexOf(id)];
    SetPortrait(object, object.size.width <= object.sheet.width);  // a booklet is wider than an upright sheet
    CentreAcross(object);
    CentreDown(object);
  }
  return layout;
}

void SetText(TextField& field, std::string text) {
  field.text = std::move(text);
  const auto breaks = std::ranges::count(field.text, '\n');
  field.length = field.text.empty() ? 0
                                    : static_cast<std::int32_t>(Windows1252FromUtf8(field.text).size()) +
                                          static_cast<std::int32_t>(breaks) + 1;
}

void SetPaper(ArtworkLayout& layout, PaperFormat paper) {
  layout.paper = paper;
  if (paper == PaperFormat::Custom) return;
  for (ArtworkObject& object : layout.objects) {
    object.sheet = kPaperSizes[static_cast<std::size_t>(paper)];
    object.portrait = true;
  }
}

void SetPortrait(ArtworkObject& object, bool portrait) {
  object.portrait = portrait;
  if ((object.sheet.width > object.sheet.height) == portrait)
    std::swap(object.sheet.width, object.sheet.height);
}

void SetNormSize(ArtworkObject& object, ArtworkObjectId id) {
  object.size = kNormSizes[IndexOf(id)];
}

void CentreAcross(ArtworkObject& object) {
  object.x = object.sheet.width / 2;
}

void CentreDown(ArtworkObject& object) {
  object.y = object.sheet.height / 2;
}

bool SetMeasure(ArtworkLayout& layout, ArtworkObjectId id, Measure measure, std::int32_t value) {
  const ArtworkObject& object = layout.Object(id);
  ArtworkObject changed = object;
  const bool label = id == ArtworkObjectId::Label;
  const auto within = [value](std::int32_t least, std::int32_t most) {
    return value >= least && value <= most;
  };
  bool fits = false;
  switch (measure) {
    case Measure::SheetWidth:
      fits = layout.paper == PaperFormat::Custom && within(std::max(1, object.size.width), kMaxSheet);
      changed.sheet.width = value;
      break;
    case Measure::SheetHeight:
      fits = layout.paper == PaperFormat::Custom &&
             within(std::max(1, label ? object.size.width : object.size.height), kMaxSheet);
      changed.sheet.height = value;
      break;
    case Measure::X:
      fits = within(0, object.sheet.width);
      changed.x = value;
      break;
    case Measure::Y:
      fits = within(0, object.sheet.height);
      changed.y = value;
      break;
    case Measure::Width:
      fits = label
                 ? within(object.size.height + kLeastRing, std::min(object.sheet.width, object.sheet.height))
                 : within(1, object.sheet.width);
      changed.size.width = value;
      break;
    case Measure::Height:
      fits = label ? within(0, object.size.width - kLeastRing) : within(1, object.sheet.height);
      changed.size.height = value;
      break;
  }
  if (fits) layout.Object(id) = changed;
  return fits;
}

}  // namespace ts5::artworker
