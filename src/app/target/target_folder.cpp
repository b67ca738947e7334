#include "app/target/target_folder.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <utility>

#include "app/shell/application.h"
#include "app/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr std::chrono::milliseconds kRest{200};

QString PlaceOf(const Job& job, const DestinationRules& rules) {
  if (!rules.sourceDirectory && !rules.directory.empty()) return ToQt(rules.directory);
  // Tracks of a disc lie in no directory: they come to where the program works.
  if (job.filter != FilterId::CdGrabber) return QtText(texts::FolderBesideSources);
  std::error_code unknown;
  return ToQt(std::filesystem::current_path(unknown).native());
}

}  // namespace

QString ForecastText(const TargetForecast& forecast) {
  std::string text = Format(Text(texts::ForecastNew), forecast.made);
  if (forecast.replaced > 0) text += ", " + Format(Text(texts::ForecastReplaced), forecast.replaced);
  if (forecast.impossible > 0) text += ", " + Format(Text(texts::ForecastImpossible), forecast.impossible);
  return ToQt(text);
}

TargetFolder::TargetFolder(Desk& desk, ActiveJob& active, TargetArea& area, Application& application)
    : desk_(desk), active_(active), area_(area), application_(application) {
  timer_.setSingleShot(true);
  timer_.setInterval(kRest);
  connect(&timer_, &QTimer::timeout, this, &TargetFolder::Forecast);
  connect(&active_, &ActiveJob::Changed, this, &TargetFolder::Show);
  connect(&area_, &TargetArea::FolderClicked, this, &TargetFolder::Choose);
  connect(&area_, &TargetArea::FolderCleared, this, [this] { active_.SetTargetDirectory({}); });
}

bool TargetFolder::Applies() const {
  const Job& job = *active_;
  const FilterModule* const module = application_.Module(job.filter);
  const DestinationMode mode = DestinationModeOf(job, false);
  return module != nullptr && module->target && active_.CanRun() && mode.automatic && !mode.editable &&
         !IsSearch(job.filter);
}

void TargetFolder::Show() {
  if (!Applies()) {
    timer_.stop();
    return area_.ShowFolder(std::nullopt);
  }
  const Job& job = *active_;
  area_.ShowFolder(TargetArea::Folder{PlaceOf(job, DestinationRulesOf(application_.GetSettings(), job)),
                                      !job.targetDirectory.empty()});
  if (!job.MayChange()) return;
  // What was said of other files is not said of these.
  if (foretold_ != ItemCount(job)) area_.SetForecast(QStringLiteral("…"));
  timer_.start();
}

void TargetFolder::Choose() {
  active_.Settle();
  const Job& job = *active_;
  std::string folder = job.targetDirectory.empty() ? job.directory.path : job.targetDirectory;
  if (const auto chosen = AskDirectory(QtText(texts::ChooseFolderTitle), folder, desk_.Window()))
    active_.SetTargetDirectory(*chosen);
}

void TargetFolder::Forecast() {
  if (!Applies() || !active_->MayChange()) return;
  worker_.DropAll();
  worker_.Start([job = std::make_shared<const Job>(*active_), module = application_.Module(active_->filter),
                 rules = DestinationRulesOf(application_.GetSettings(), *active_), this]() mutable {
    rules.origin = NameOrigin::Automatic;
    const TargetForecast forecast =
        ForecastOf(PreviewTargets(*job, *module, rules, SystemDestinationFiles()));
    return [this, items = ItemCount(*job), forecast] {
      foretold_ = items;
      area_.SetForecast(ForecastText(forecast));
    };
  });
}

}  // namespace ts5
