// Elements on the clipboard: in the program's own format, and texts and pictures of other programs as new
// elements.
#pragma once

#include <QImage>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "artworker/layout.h"
#include "platform/base/outcome.h"

namespace ts5::artworker {

// The name of the own format. Its data is the packed record of a layout with the copied elements.
inline constexpr const char* kElementFormat = "Artworker_ObjectElement";

[[nodiscard]] bool CopyElements(std::span<const ArtworkElement> elements);
// Whether the clipboard can be read at all, and whether there is anything that can be pasted.
[[nodiscard]] bool ClipboardOpens();
[[nodiscard]] bool CanPaste();
// Elements on the clipboard are those of one session: they go at its beginning and at its end.
void ForgetElements();

// Keeps a picture without a file and gives its path.
using PictureKeeper = std::function<Result<std::string>(const QImage&)>;
// Nothing when the clipboard holds nothing of use any more, or its picture cannot be kept.
[[nodiscard]] std::optional<std::vector<ArtworkElement>> PasteElements(const PictureKeeper& keep);

// A text field for a text, large enough for its lines; an image for a picture, at 300 dpi but no wider than
// an inlay.
[[nodiscard]] ArtworkElement ElementOfText(const std::string& text);
[[nodiscard]] ArtworkElement ElementOfPicture(const std::string& file, QSize pixels);

}  // namespace ts5::artworker
