// The fields of a layout in the order in which files and records hold them: the one description of both
// forms.
//
// A form writes the values it is given, or sets them; a reader is no longer Ok() once one is missing or does
// not fit:
//   Head()                            what the form begins with
//   Section(name)                     what follows stands under that name
//   Number(key, value, range)         a number of 32 bits
//   Numbers(key, range, values...)    several of them under one key
//   Byte(key, value, absent)          a number of 8 bits, with what counts in a file without the key; with
//                                     kUncheckedByte whatever stands there is taken
//   Flag(key, value, absent)          a truth value, likewise
//   Text(lengthKey, key, length, text)  a text of that many bytes; of 0 bytes it is not there at all
//   Name(key, bytes, text, optional)  a text in a field of fixed size
//   Count(key, elements)              how many elements follow: Elements() of them, reached by
//   Element(elements, index)
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "artworker/layout.h"

namespace ts5::artworker {

struct NumberRange {
  std::int32_t least = std::numeric_limits<std::int32_t>::min();
  std::int32_t most = std::numeric_limits<std::int32_t>::max();
  std::optional<std::int32_t> absent =
      std::nullopt;  // what counts in a file without the key; nothing: it must be there
};

inline constexpr std::uint8_t kUncheckedByte = 255;
inline constexpr NumberRange kPercent{0, 100};
inline constexpr NumberRange kIndex{0, std::numeric_limits<std::int32_t>::max()};
inline constexpr NumberRange kColour{0, kMaxColour};

// Names of the sections of the objects.
inline constexpr std::array<std::string_view, kObjectCount> kObjectSections = {"Label", "Inlay", "Booklet"};

template <typename Form, typename Object>
void WalkObject(Form& form, Object& object) {
  const NumberRange side{1, kMaxSheet};
  form.Numbers("Papersize", side, object.sheet.width, object.sheet.height);
  form.Flag("Portrait", object.portrait, true);
  form.Numbers("Position", NumberRange{-kMaxSheet, kMaxSheet}, object.x, object.y);
  form.Numbers("Size", NumberRange{0, kMaxSheet}, object.size.width, object.size.height);
}

template <typename Form, typename Field>
void WalkContent(Form& form, Field& field, std::in_place_type_t<TextField>) {
  form.Text("ElemTextLength", "ElemTextText", field.length, field.text);
  form.Number("ElemTextColor", field.colour, kColour);
  form.Number("ElemTextLinefeed", field.lineSpacing, NumberRange{0, kMaxLineSpacing, 0});
  form.Number("ElemTextSpaceMode", field.spaceMode, NumberRange{0, 2, 1});
  form.Flag("ElemTextFixedFont", field.fixedFont, false);
  form.Number("ElemTextOrientation", field.orientation, NumberRange{0, 3});
  form.Number("ElemTextPlacement", field.horizontal, NumberRange{0, 3, 1});
  form.Number("ElemTextVPosition", field.vertical, NumberRange{0, 2, 1});
  auto& font = field.font;
  form.Name("ElemTextFontName", kFaceBytes, font.face, false);
  form.Byte("ElemTextFontCharset", font.charset, 0);
  form.Number("ElemTextFontWeight", font.weight, NumberRange{0, 1000});
  form.Number("ElemTextFontHeight", font.height, NumberRange{-10'000, 10'000});
  form.Byte("ElemTextFontOutPrecision", font.outPrecision, kUncheckedByte);
  form.Byte("ElemTextFontClipPrecision", font.clipPrecision, kUncheckedByte);
  form.Byte("ElemTextFontQuality", font.quality, kUncheckedByte);
  form.Byte("ElemTextFontPitchFamily", font.pitchFamily, kUncheckedByte);
  form.Byte("ElemTextFontItalic", font.italic, kUncheckedByte);
  form.Byte("ElemTextFontUnderline", font.underline, kUncheckedByte);
  form.Byte("ElemTextFontStrikeout", font.strikeOut, kUncheckedByte);
  form.Number("ElemTextBGTransparency", field.fill.transparency, kPercent);
  form.Number("ElemTextBGIndex", field.fill.background, kIndex);
}

template <typename Form, typename Field>
void WalkContent(Form& form, Field& ellipse, std::in_place_type_t<Ellipse>) {
  form.Number("ElemEllipseFillTransparency", ellipse.fill.transparency, kPercent);
  form.Number("ElemEllipseFillIndex", ellipse.fill.background, kIndex);
}

template <typename Form, typename Field>
void WalkContent(Form& form, Field& image, std::in_place_type_t<Image>) {
  form.Number("ElemImageFillTransparency", image.fill.transparency, kPercent);
  form.Number("ElemImageFillIndex", image.fill.background, kIndex);
  form.Number("ElemImageMirror", image.mirror, NumberRange{0, kMirrorHorizontal | kMirrorVertical, 0});
  form.Name("ElemImageFilename", kFileNameBytes, image.file, true);
}

template <typename Form, typename Unknown>
void WalkContent(Form& /*form*/, Unknown& /*content*/, std::in_place_type_t<UnknownContent>) {}

// Content of the kind, empty where a reader is to fill it.
inline void MakeContent(ArtworkElement& element, std::int32_t kind) {
  switch (kind) {
    case 1:
      element.content = TextField{};
      break;
    case 2:
      element.content = Ellipse{};
      break;
    case 3:
      element.content = Image{};
      break;
    default:
      element.content = UnknownContent{kind};
  }
}

template <typename Form, typename Element>
void WalkElement(Form& form, Element& element) {
  form.Number("ElemObjID", element.object,
              NumberRange{static_cast<std::int32_t>(ArtworkObjectId::Label),
                          static_cast<std::int32_t>(ArtworkObjectId::Booklet)});
  std::int32_t kind = KindOf(element);
  form.Number("ElemID", kind, NumberRange{});
  if constexpr (!std::is_const_v<Element>) MakeContent(element, kind);
  form.Flag("ElemFixed", element.fixed, false);
  form.Number("ElemBorderColor", element.borderColour, kColour);
  form.Number("ElemBorderWidth", element.borderWidth, NumberRange{0, kMaxBorderWidth});
  form.Number("ElemBorderGap", element.borderGap, NumberRange{0, kMaxBorderGap});
  form.Flag("ElemBorderRound?", element.roundCorners, true);
  form.Numbers("ElemDimension", NumberRange{}, element.box.left, element.box.top, element.box.right,
               element.box.bottom);
  std::visit(
      [&form]<typename Content>(Content& content) {
        WalkContent(form, content, std::in_place_type<std::remove_const_t<Content>>);
      },
      element.content);
}

template <typename Form, typename Layout>
void WalkLayout(Form& form, Layout& layout) {
  form.Head();
  form.Number("Papierformat", layout.paper, NumberRange{0, 3});
  form.Count("ElementNum", layout.elements);
  for (std::size_t i = 0; i < kObjectCount; ++i) {
    form.Section(std::string(kObjectSections[i]));
    WalkObject(form, layout.objects[i]);
  }
  for (std::size_t i = 0; i < form.Elements() && form.Ok(); ++i) {
    form.Section("Element " + std::to_string(i + 1));
    WalkElement(form, form.Element(layout.elements, i));
  }
}

}  // namespace ts5::artworker
