#include "frame/file_properties.h"

#include "frame/file_types.h"
#include "frame/texts.h"

namespace ts5 {
namespace {

// Readers of their own tell of these.
bool IsXml(const FileListEntry& file) {
  const FileTypeId type = FileTypeOf(file.path);
  return type == FileTypeId::Xml || type == FileTypeId::StvXml;
}

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
  bool hasReader = !file.cdTrack && !IsXml(file);
  for (const PropertiesStep& step : steps) {
    if (step.applies ? !step.applies(file) : file.cdTrack) continue;
    hasReader = hasReader || step.applies;
    const auto window = step.read(file);
    if (window) return {*window};
    if (Stops(step.failure, window.error())) return {std::nullopt, texts::FileNotOpened};
  }
  if (hasReader) return {};
  return {std::nullopt, file.cdTrack ? texts::NoTrackProperties : texts::NoFileProperties};
}

}  // namespace ts5
