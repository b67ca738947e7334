// What an Artworker run takes on the command line: the layout, the printer, and pictures in place of a
// printing.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "batch/arguments.h"
#include "batch/console.h"
#include "frame/destination.h"
#include "frame/job.h"
#include "platform/store/registry.h"

namespace ts5::batch {

struct PrintOptions {
  std::optional<std::string> layout;    // a layout file
  std::optional<std::string> printer;   // by its name
  std::optional<std::string> pictures;  // a directory for label.png, inlay.png and booklet.png
  std::optional<std::string> dpi;
  std::optional<std::string> disc;  // a burner job, by number or title, whose titles fill the layout's fields
};

void AddPrintOptions(Arguments& arguments, PrintOptions& options);

// Puts layout and printer into the job of an Artworker run, and what goes with them. The exit status when
// something is wrong; nothing when all is well or the job has another filter.
[[nodiscard]] std::optional<int> TakePrinting(const PrintOptions& options, const Registry& registry,
                                              std::string_view command, Console& console, Job& job);
// Then, with the job's files: the disc that they are, or that the options name. Nothing when all is well.
[[nodiscard]] std::optional<std::string> TakeDisc(const PrintOptions& options, Console& console, Job& job);
// All of that for a job that is stored.
void PreparePrinting(const Registry& registry, std::span<const Job* const> jobs, Job& job);

// Writes the pictures of the chosen objects; what stands there is replaced, numbered or refused by the rules.
// The exit status.
[[nodiscard]] int WritePictures(const PrintOptions& options, const Job& job, DestinationRules rules,
                                Console& console);

}  // namespace ts5::batch
