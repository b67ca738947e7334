// Draws the results of melody searches onto the pages of a printer, a PDF file or a preview.
#pragma once

#include <QString>

#include "frame/ui/print_device.h"
#include "search/result_lines.h"
#include "search/search_results.h"

namespace ts5 {

// The hits of the screen list: title, melody and date, one row per hit, and the statistics at the end. Whole
// paths after the setting. Failed: the device takes no page.
[[nodiscard]] Printed PrintResults(const SearchResults& results, bool wholePaths, QPagedPaintDevice& device,
                                   const PrintJob& job);
// A result file as it stands, in a font of fixed width, under its name.
[[nodiscard]] Printed PrintResultLines(const QString& title, const ResultLines& lines,
                                       QPagedPaintDevice& device, const PrintJob& job);

}  // namespace ts5
