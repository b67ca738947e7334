// What is printed, as a function that draws onto a device with pages: a printer of the system, a PDF file or
// a preview. The built-in printer "PDF-Datei" is among the printers of every machine.
#pragma once

#include <QPageLayout>
#include <QString>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

class QPagedPaintDevice;

namespace ts5 {

enum class Printed : std::uint8_t { Done, Aborted, Failed };

struct PrintJob {
  int mostPages = std::numeric_limits<int>::max();  // what follows is left out
  // Called before every page with its number from 1 and how many there are; false aborts.
  std::function<bool(int page, int pages)> proceed = {};
};

// Draws all pages. Failed: the device takes no page.
using PrintDrawing = std::function<Printed(QPagedPaintDevice& device, const PrintJob& job)>;

struct PrintSetup {
  QString printer;     // by its name
  QPageLayout layout;  // margins in millimetres
};
// A4, upright.
[[nodiscard]] PrintSetup DefaultPrintSetup(const QString& printer);

// Onto the printer of the setup, under that title. pdf: where "PDF-Datei" writes; the file comes into being
// whole or not at all. An aborted printing is taken back.
[[nodiscard]] Printed PrintWith(const PrintSetup& setup, const QString& title, const std::string& pdf,
                                const PrintDrawing& drawing, const PrintJob& job);

}  // namespace ts5
