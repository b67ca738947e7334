// The layout of a disc's paper parts: label, inlay and booklet, each with its sheet, and the elements on
// them.
//
// Sheets and objects are measured in millimetres, elements, borders and gaps in tenths of a millimetre.
// Colours are 0x00BBGGRR. Texts are UTF-8 with "\n" and "\t" inside.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ts5::artworker {

enum class ArtworkObjectId : std::int32_t { Label = 16001, Inlay = 16002, Booklet = 16003 };
inline constexpr std::size_t kObjectCount = 3;
inline constexpr std::array kObjectIds = {ArtworkObjectId::Label, ArtworkObjectId::Inlay,
                                          ArtworkObjectId::Booklet};
[[nodiscard]] constexpr std::size_t IndexOf(ArtworkObjectId id) {
  return static_cast<std::size_t>(static_cast<std::int32_t>(id) -
                                  static_cast<std::int32_t>(kObjectIds.front()));
}

enum class PaperFormat : std::int32_t { A3 = 0, A4 = 1, A5 = 2, Custom = 3 };

struct Size {
  std::int32_t width = 0;
  std::int32_t height = 0;
  bool operator==(const Size&) const = default;
};

// Width and height of the formats with a name, upright.
inline constexpr std::array kPaperSizes = {Size{297, 420}, Size{210, 297}, Size{148, 210}};
// The sheet as papers are named, whichever way up it is.
[[nodiscard]] constexpr Size Upright(Size sheet) {
  return sheet.width > sheet.height ? Size{sheet.height, sheet.width} : sheet;
}

// The usual sizes of the objects. Of a label the width is the diameter of the disc, the height that of its
// hole.
inline constexpr std::array kNormSizes = {Size{117, 40}, Size{150, 118}, Size{242, 120}};

struct ArtworkObject {
  Size sheet = kPaperSizes[1];
  bool portrait = true;
  std::int32_t x = 0;  // of the object's centre, from the sheet's left and top edge
  std::int32_t y = 0;
  Size size;

  bool operator==(const ArtworkObject&) const = default;
};

inline constexpr std::int32_t kMaxSheet = 2000;  // millimetres
inline constexpr std::int32_t kLeastRing = 10;   // what a label's diameter exceeds its hole by, millimetres
inline constexpr std::int32_t kMaxBorderWidth = 50;      // tenths of a millimetre
inline constexpr std::int32_t kMaxBorderGap = 150;       // likewise
inline constexpr std::int32_t kLeastLineSpacing = 10;    // likewise; 0 in a file without one
inline constexpr std::int32_t kMaxLineSpacing = 500;     // likewise
inline constexpr std::int32_t kMaxColour = 0x00FFFFFF;   // white
inline constexpr std::size_t kMaxElements = 10'000;      // of all objects together
inline constexpr std::int32_t kMaxTextBytes = 1 << 20;   // of all texts together as they are stored
inline constexpr std::int32_t kMaxFieldBytes = 1 << 16;  // of one that is typed
inline constexpr std::size_t kFaceBytes = 32;            // of a font's face name as it is stored
inline constexpr std::size_t kFileNameBytes = 260;       // of an image's file name as it is stored

// The fields of a platform font that a layout keeps. Its direction follows from the text's orientation.
struct FontFields {
  std::string face = "Arial";
  std::uint8_t charset = 0;
  std::int32_t weight = 400;  // 100..900, 400 normal, 700 bold
  std::int32_t height = -16;  // pixels at 96 dpi; negative: of the letters without their inner leading
  std::uint8_t outPrecision = 0;
  std::uint8_t clipPrecision = 0;
  std::uint8_t quality = 0;
  std::uint8_t pitchFamily = 0;
  std::uint8_t italic = 0;  // these three: on unless 0
  std::uint8_t underline = 0;
  std::uint8_t strikeOut = 0;

  bool operator==(const FontFields&) const = default;
};

enum class SpaceMode : std::int32_t { Horizontal = 0, Vertical = 1, Whole = 2 };
enum class Turn : std::int32_t { None = 0, Quarter = 1, Half = 2, ThreeQuarters = 3 };  // counter-clockwise
enum class Across : std::int32_t { Left = 0, Centre = 1, Right = 2, Justified = 3 };
enum class Down : std::int32_t { Top = 0, Middle = 1, Bottom = 2 };

// How an element's own ground lies over what is below it.
struct Fill {
  std::int32_t transparency = 0;  // per cent, 0 covers, 100 cannot be seen
  std::int32_t background = 0;    // index into the shared backgrounds, from 0

  bool operator==(const Fill&) const = default;
};

struct TextField {
  std::string text;
  std::int32_t length = 0;  // of the text as it is stored, in bytes; SetText sets it
  std::int32_t colour = 0;
  std::int32_t lineSpacing = 50;
  SpaceMode spaceMode = SpaceMode::Vertical;
  bool fixedFont = false;  // the font is as large as it says, the text may leave its field
  Turn orientation = Turn::None;
  Across horizontal = Across::Centre;
  Down vertical = Down::Middle;
  FontFields font;
  Fill fill{.transparency = 100, .background = 0};

  bool operator==(const TextField&) const = default;
};

struct Ellipse {
  Fill fill;

  bool operator==(const Ellipse&) const = default;
};

// The background of an image that has none: what lies below shows through where the picture is transparent.
inline constexpr std::int32_t kNoGround = 0;

inline constexpr std::int32_t kMirrorHorizontal = 1;
inline constexpr std::int32_t kMirrorVertical = 2;

struct Image {
  Fill fill;
  std::int32_t mirror = 0;  // a set of kMirror...
  std::string file;

  bool operator==(const Image&) const = default;
};

// An element of a kind that is not known: only its common fields are kept.
struct UnknownContent {
  std::int32_t kind = 0;

  bool operator==(const UnknownContent&) const = default;
};

struct Box {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
  bool operator==(const Box&) const = default;
};

struct ArtworkElement {
  ArtworkObjectId object = ArtworkObjectId::Label;
  std::variant<UnknownContent, TextField, Ellipse, Image> content = TextField{};
  bool fixed = false;  // stays where it is when several elements are moved
  std::int32_t borderColour = 0;
  std::int32_t borderWidth = 0;
  std::int32_t borderGap = 0;  // between border and content
  bool roundCorners = false;
  Box box;  // from the top left corner of the object's rectangle

  bool operator==(const ArtworkElement&) const = default;
};

// The number of a content in files: 1 text field, 2 ellipse, 3 image.
[[nodiscard]] std::int32_t KindOf(const ArtworkElement& element);

struct ArtworkLayout {
  PaperFormat paper = PaperFormat::A4;
  std::array<ArtworkObject, kObjectCount> objects;  // label, inlay, booklet
  std::vector<ArtworkElement> elements;             // later ones lie above earlier ones

  [[nodiscard]] ArtworkObject& Object(ArtworkObjectId id) { return objects[IndexOf(id)]; }
  [[nodiscard]] const ArtworkObject& Object(ArtworkObjectId id) const { return objects[IndexOf(id)]; }

  bool operator==(const ArtworkLayout&) const = default;
};

// Whether a file or a record of it could be read again.
[[nodiscard]] bool CanBeKept(const ArtworkLayout& layout);

// Objects of norm size in the middle of A4 sheets, without elements.
[[nodiscard]] ArtworkLayout NewLayout();

// Puts the text into the field and counts its length: in bytes of Windows-1252, a line break as two, and one
// more.
void SetText(TextField& field, std::string text);

// A format with a size of its own sets all sheets to it, upright; Custom leaves them.
void SetPaper(ArtworkLayout& layout, PaperFormat paper);
// Turns the sheet: its sides change places where they contradict the flag.
void SetPortrait(ArtworkObject& object, bool portrait);
void SetNormSize(ArtworkObject& object, ArtworkObjectId id);
void CentreAcross(ArtworkObject& object);
void CentreDown(ArtworkObject& object);

// Changes of one measure, in millimetres; false, and nothing changed, for a value outside of its limits:
// sheets only in the custom format, the object no larger than its sheet, its centre on it, a label kLeastRing
// wider than its hole.
enum class Measure : std::uint8_t { SheetWidth, SheetHeight, X, Y, Width, Height };
[[nodiscard]] bool SetMeasure(ArtworkLayout& layout, ArtworkObjectId id, Measure measure, std::int32_t value);

}  // namespace ts5::artworker
