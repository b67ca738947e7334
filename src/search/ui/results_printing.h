// Printing the hits of a search and result files.
#pragma once

#include <string>
#include <vector>

#include "frame/ui/printing.h"
#include "search/result_lines.h"
#include "search/search_results.h"
#include "search/ui/results_printer.h"

namespace ts5 {

class ResultsPrinting {
 public:
  // music: paints the bars beside each hit; empty: without them.
  ResultsPrinting(const std::vector<std::string>& printers, DialogHost& host, HitPainter music = {});

  void PrintHits(const SearchResults& results, bool wholePaths, QWidget* parent);
  void PrintFile(const std::string& path, const ResultLines& lines, QWidget* parent);

 private:
  Printing printing_;
  HitPainter music_;
};

}  // namespace ts5
