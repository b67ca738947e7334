#include "search/ui/results_printing.h"

#include "frame/ui/qt_text.h"
#include "platform/files/paths.h"
#include "search/texts.h"
#include "search/ui/results_printer.h"

namespace ts5 {

ResultsPrinting::ResultsPrinting(const std::vector<std::string>& printers, DialogHost& host, HitPainter music)
    : printing_(printers,
                {texts::PrintJobName, texts::PrintAbortTitle, texts::PrintAbortText, texts::PdfProposal,
                 texts::PrintFailed, QStringLiteral("Befehle-Aktion-Suchergebnisse.htm")},
                host),
      music_(std::move(music)) {}

void ResultsPrinting::PrintHits(const SearchResults& results, bool wholePaths, QWidget* parent) {
  printing_.Print(
      [&results, wholePaths, this](QPagedPaintDevice& device, const PrintJob& job) {
        return PrintResults(results, wholePaths, device, job, music_);
      },
      parent);
}

void ResultsPrinting::PrintFile(const std::string& path, const ResultLines& lines, QWidget* parent) {
  printing_.Print(
      [title = ToQt(FileNameOf(path)), &lines](QPagedPaintDevice& device, const PrintJob& job) {
        return PrintResultLines(title, lines, device, job);
      },
      parent);
}

}  // namespace ts5
