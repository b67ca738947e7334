// The icons of the program, drawn once for a light desktop. On a dark one the same drawing is used with the
// inks of the dark scheme, so there is one file per icon and every size and screen scale is rendered crisp.
//
//   button->setIcon(Icon("save"));
//   item->setIcon(StripIcon(FileTypeOf(name)));
#pragma once

#include <QIcon>
#include <QString>
#include <string_view>

#include "frame/filter_id.h"

namespace ts5 {

// Makes icons, skins and help pages readable under ":/". Called by everything here that needs them.
void InitializeResources();

// The icon of that name, e.g. "save" for icons/save.svg; an empty icon when there is none of that name. It
// follows the palette of the application from light to dark by itself.
[[nodiscard]] QIcon Icon(std::string_view name);

// The icon at an index of the file-icon strip. Every drawing has two indices, so a file type's number is the
// index of its icon; an index beyond the strip gives the icon of files that are not supported.
[[nodiscard]] QIcon StripIcon(int index);

// The icon of a filter, for its tile.
[[nodiscard]] QIcon FilterIcon(FilterId id);

// Whether the application's palette is that of a dark desktop.
[[nodiscard]] bool IsDarkPalette();

}  // namespace ts5
