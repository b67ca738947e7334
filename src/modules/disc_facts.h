// What is known of the disc that a job's printed parts belong to: its title and performer, and of each track
// its title, performer and playing time.
#pragma once

#include <cstdint>
#include <span>

#include "artworker/filled_text.h"
#include "frame/job.h"

namespace ts5 {

// A window that is shown anew asks no drive, which may be at work. Files are measured once.
enum class DiscReading : std::uint8_t { AtHand, Thorough };

// Of the first tracks that a disc has room for, from the list of a job or what is chosen in its directory:
// what was entered in a burner's list, else CD-TEXT, else attributes, else what the names of the files say.
[[nodiscard]] artworker::DiscFacts FactsOfSources(const Job& job, DiscReading reading);

// Of the burner job of the same title, else of the first burner job with a list of files, else of the job's
// own sources.
[[nodiscard]] artworker::DiscFacts FactsOfDisc(const Job& job, std::span<const Job* const> jobs,
                                               DiscReading reading);

}  // namespace ts5
