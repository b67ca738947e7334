#include "app/target/target_commands.h"

#include "app/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/qt_text.h"
#include "modules/filter_modules.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

// What the job's filter makes of the source, without the dot; "" when it makes no files.
std::string TargetExtension(const Job& job, const std::string& source) {
  const FilterModule* const module = FindModule(job.filter);
  if (module == nullptr || !module->target || !job.parameters || source.empty()) return {};
  return module->target(*job.parameters, source).extension;
}

// The file types of the save dialog; what is made comes first, if the usual types lack it.
std::string TargetTypes(const Job& job, const std::string& source) {
  const std::string extension = TargetExtension(job, source);
  std::string types(SaveTypesOf(job, FindModule(job.filter)));
  if (extension.empty() || types.find("*." + extension) != std::string::npos) return types;
  return Format(Text(texts::TargetTypeOfEncoder), ToUpper(extension), extension, extension) + types;
}

}  // namespace

TargetCommands::TargetCommands(Desk& desk, ActiveJob& active, TargetArea& area)
    : desk_(desk), active_(active), area_(area) {
  connect(&area_, &TargetArea::BrowseClicked, this, &TargetCommands::Browse);
  connect(&area_, &TargetArea::Edited, this, [this] { active_.SetPanel(area_.Panel()); });
  connect(&active_, &ActiveJob::FilterChanged, this,
          [this] { area_.ShowPanels(Descriptor(active_->filter).panels); });
  connect(&active_, &ActiveJob::DestinationReplaced, this, &TargetCommands::ShowDestination);
  connect(&active_, &ActiveJob::DestinationNamed, this,
          [this](const std::string& name) { area_.SetName(ToQt(name)); });
}

void TargetCommands::ShowDestination() {
  const Job& job = *active_;
  DestinationPanel panel;
  panel.name = job.destinationName;
  panel.screen = job.destinationIsScreen;
  const bool midi = job.destinationDevice >= kMidiDeviceBase;
  panel.midiDevice = midi ? job.destinationDevice - kMidiDeviceBase : -1;
  if (!midi) panel.audioDevice = panel.drive = panel.printer = job.destinationDevice;
  area_.SetPanel(panel);
  active_.SetPanel(area_.Panel());
}

void TargetCommands::Browse() {
  active_.Settle();
  const Job& job = *active_;
  const std::string source = ItemSource(job, 0);
  std::string start = active_.Destination().name;
  if (!IsAbsolutePath(start)) start = JoinPath(DirectoryOf(source), start);
  desk_.ShowPrompt(QtText(texts::BrowseTargetPrompt));
  const auto path = AskDestination({.title = QtText(texts::BrowseTargetTitle),
                                    .start = start,
                                    .filter = TargetTypes(job, source),
                                    .helpTopic = QStringLiteral("zielmedium.htm")},
                                   desk_, desk_.Window());
  desk_.ShowPrompt({});
  if (path) active_.SetDestinationName(*path);
}

}  // namespace ts5
