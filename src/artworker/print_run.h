// The Artworker's run: one document with a page for each chosen object, to a printer or into a PDF file.
#pragma once

#include <string>

#include "artworker/artworker_parameters.h"
#include "frame/filter_module.h"
#include "platform/base/outcome.h"
#include "platform/store/registry.h"

namespace ts5::artworker {

// Codes of the run, beside those that all share. Why drawing failed has a number of its own.
inline constexpr std::int32_t kDrawingFailed = -800;
inline constexpr std::int32_t kDrawingNotCopied = 1013;  // into the document
inline constexpr std::int32_t kPrinterFailed = -801;
inline constexpr std::int32_t kDocumentNotBegun = -803;
inline constexpr std::int32_t kPageNotEnded = -804;
inline constexpr std::int32_t kDocumentNotEnded = -805;

// Puts into the parameters what is not kept with them: the shared backgrounds, and how the printer lays its
// paper. Both as they are now.
void TakeGround(ArtworkerParameters& parameters, const Registry& registry);

// The object of the job's layout as a PNG file, cut to its rectangle. InvalidParameter: too many dots.
[[nodiscard]] Result<Bytes> PictureFile(const ArtworkerParameters& parameters, ArtworkObjectId id,
                                        double dpi);

// A thread may draw once this has been called on the main thread of a program that has no windows; in others
// it does nothing.
void PrepareDrawing();

// The whole run, on a thread of its own: counts, codes and messages go to the run.
void RunArtworkerPrint(Run& run, const ArtworkerParameters& parameters);

[[nodiscard]] FilterModule ArtworkerModule();

}  // namespace ts5::artworker
