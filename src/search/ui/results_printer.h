// Draws the results of melody searches onto the pages of a printer, a PDF file or a preview.
#pragma once

#include <QPainter>
#include <QString>
#include <functional>

#include "frame/ui/print_device.h"
#include "search/result_lines.h"
#include "search/search_results.h"

namespace ts5 {

// Paints the bars of a hit into a place. notes: how many the melody has.
using HitPainter =
    std::function<void(QPainter& painter, const QRectF& place, const SearchHit& hit, std::size_t notes)>;

// The hits of the screen list: title, name and date, the notes of the melody, one row per hit, and the
// statistics at the end. With music the row is as high as a line of notes, which stands at its right. Whole
// paths after the setting. Failed: the device takes no page.
[[nodiscard]] Printed PrintResults(const SearchResults& results, bool wholePaths, QPagedPaintDevice& device,
                                   const PrintJob& job, const HitPainter& music = {});
// A result file as it stands, in a font of fixed width, under its name.
[[nodiscard]] Printed PrintResultLines(const QString& title, const ResultLines& lines,
                                       QPagedPaintDevice& device, const PrintJob& job);

}  // namespace ts5
