// Which properties window fits a file: the readers of the formats are tried one after the other.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "frame/file_list.h"
#include "frame/texts.h"
#include "platform/base/outcome.h"
#include "platform/base/strings.h"

namespace ts5 {

enum class PropertiesWindow : std::uint8_t { CdTrack, Midi, Score, Audio, Xml, Wave };

// When a reader's failure ends the search with the message that the file cannot be opened.
enum class ReaderFailure : std::uint8_t {
  GoOn,              // never
  StopAtSource,      // when the source cannot be opened
  StopUnlessFormat,  // unless the file is in another format
};

// One reader in the order in which they are tried.
struct PropertiesStep {
  // The files it is tried on; empty: every file, but no CD track.
  std::function<bool(const FileListEntry&)> applies = {};
  // Reads as much of the file as it needs to tell; a reader of several kinds says which window it is.
  std::function<Result<PropertiesWindow>(const FileListEntry&)> read;
  ReaderFailure failure = ReaderFailure::GoOn;
};

struct PropertiesChoice {
  std::optional<PropertiesWindow> window;
  TextId message = texts::UnknownFileFormat;  // when there is no window
};
[[nodiscard]] PropertiesChoice ChooseProperties(const FileListEntry& file,
                                                std::span<const PropertiesStep> steps);

}  // namespace ts5
