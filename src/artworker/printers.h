// The printers of this machine. They take PDF documents, through the programs of the printing system.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "artworker/layout.h"

namespace ts5::artworker {

// By their names, without the built-in "PDF-Datei".
[[nodiscard]] std::vector<std::string> SystemPrinters();

// Whether a printer has the paper, by what lpoptions lists of it: names of papers, or that any size will do.
// True as well when it tells nothing of papers.
[[nodiscard]] bool ListsPaper(std::string_view options, Size sheet);
// The same of the printer itself.
[[nodiscard]] bool TakesPaper(const std::string& printer, Size sheet);

// Sends the document in its own size. sheet: of all its pages, whichever way up. False when the printer does
// not take it, or when the sending was cancelled.
[[nodiscard]] bool SendDocument(const std::string& printer, const std::string& path, Size sheet,
                                const std::function<bool()>& cancelled);

}  // namespace ts5::artworker
