// Pictures that come without a file, from the clipboard or from a program: kept as PNG under a name made from
// their content, beside the layout file, or in a folder of the program until there is one.
#pragma once

#include <QImage>
#include <string>

#include "artworker/layout.h"
#include "platform/base/outcome.h"

namespace ts5::artworker {

// Where pictures wait for their layout to be saved.
[[nodiscard]] std::string WaitingPictures();

// Writes the picture into the folder, which is made where it lacks, unless the same one is there already; its
// path. TargetFailed, WriteFailed.
[[nodiscard]] Result<std::string> KeepPicture(const QImage& picture, const std::string& folder);

// Copies the layout's waiting pictures into the folder and refers to them there.
[[nodiscard]] Outcome SettlePictures(ArtworkLayout& layout, const std::string& folder);

// Whether a layout can hold the name of the file.
[[nodiscard]] bool CanBeNamed(const std::string& file);

// The picture of that name in a layout whose file lies in the folder ("" when it has none): from there when
// the name has no path, through the letter of its drive when it comes from another machine, and the one
// beside the layout when only that is there. A name under which nothing is found stays.
[[nodiscard]] std::string FindPicture(const std::string& name, const std::string& folder);
// All of a layout's.
void FindPictures(ArtworkLayout& layout, const std::string& folder);

}  // namespace ts5::artworker
