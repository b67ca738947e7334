// Layouts as files (".awl", a profile file) and as the packed record that is kept with a job.
//
// Both forms hold the same fields in the same order and are read and written through one description of them.
// A reader gives a whole layout or SourceFailed: a value is missing, cannot be read or lies outside of its
// range.
#pragma once

#include <string>
#include <string_view>

#include "artworker/layout.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/store/profile.h"

namespace ts5::artworker {

inline constexpr std::string_view kLayoutExtension = "awl";

[[nodiscard]] Profile LayoutProfile(const ArtworkLayout& layout);
[[nodiscard]] Result<ArtworkLayout> LayoutFromProfile(const Profile& profile);

// Little-endian, without padding. Bytes behind a record are ignored.
[[nodiscard]] Bytes LayoutRecord(const ArtworkLayout& layout);
[[nodiscard]] Result<ArtworkLayout> LayoutFromRecord(ByteView record);

// WriteFailed, for a file that cannot be made as well.
[[nodiscard]] Outcome SaveLayout(const ArtworkLayout& layout, const std::string& path);
// SourceFailed, ReadFailed.
[[nodiscard]] Result<ArtworkLayout> LoadLayout(const std::string& path);

}  // namespace ts5::artworker
