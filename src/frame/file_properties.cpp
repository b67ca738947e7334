#include "frame/file_properties.h"

#include "frame/texts.h"

namespace ts5 {
namespace {

bool Stops(ReaderFailure rule, Outcome outcome) {
  switch (rule) {
    case ReaderFailure::GoOn:
      return false;
    case ReaderFailure::StopAtSource:
      return outcome == Outcome::SourceFailed;
    case ReaderFailure::StopUnlessFormat:
      return outcome != Outcome::WrongFormat;
  }
  return false;
}

}  // namespace

PropertiesChoice ChooseProperties(const FileListEntry& file, std::span<const PropertiesStep> steps) {
  for (const PropertiesStep& step : steps) {
    if (step.applies ? !step.applies(file) : file.cdTrack) continue;
    const auto window = step.read(file);
    if (window) return {*window};
    if (Stops(step.failure, window.error())) return {std::nullopt, texts::FileNotOpened};
  }
  return {};
}

}  // namespace ts5
