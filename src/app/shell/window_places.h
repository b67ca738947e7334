// Where the main window and its areas stand: the splitters' places belong to a job, the window's own to the
// settings.
#pragma once

#include <QSize>
#include <QSplitter>
#include <QWidget>

#include "frame/job.h"
#include "frame/settings.h"

namespace ts5 {

struct AreaSplitters {
  QSplitter* filterBar;  // filter bar | the rest
  QSplitter* tree;       // directory tree | files
  QSplitter* source;     // source area above destination and run panel
};

// A job's rectangle is that of the directory tree, seen from the corner of the filter bar, in pixels; one
// that was never stored gives the usual widths, and hits, when the job lists them, a good part of the height.
// window: the size of the main window.
void ShowPlaces(const AreaSplitters& splitters, const SizingRectangle& place, bool listsHits, QSize window);
// before: the rectangle so far; it keeps the tree's width while the tree is hidden.
[[nodiscard]] SizingRectangle PlacesOf(const AreaSplitters& splitters, const SizingRectangle& before);

// A stored place on a screen that is no longer there is given up for most of the first screen.
void RestoreWindowPlace(QWidget& window, const Settings& settings);
void StoreWindowPlace(const QWidget& window, Settings& settings);

}  // namespace ts5
