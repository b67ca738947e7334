#include "app/source/project_view.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "disc/burn_parameters.h"
#include "disc/disc_info.h"
#include "disc/disc_plan.h"
#include "frame/filter_catalogue.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/disc/disc_address.h"

namespace ts5 {
namespace {

constexpr std::size_t kMostCharacters = 159;

const disc::BurnParameters* ProjectOf(const Job& job) {
  return job.Mode() == SourceMode::List ? job.parameters.If<disc::BurnParameters>() : nullptr;
}

}  // namespace

ProjectView::ProjectView(ActiveJob& active, SourceArea& area, SourceCommands& source, const Jobs& jobs)
    : active_(active), area_(area), source_(source), jobs_(jobs) {
  connect(&area_.Model(), &FileViewModel::TextEdited, this, &ProjectView::TakeText);
}

void ProjectView::Refresh(const std::string& recorder) {
  const Job& job = *active_;
  const disc::BurnParameters* const project = ProjectOf(job);
  area_.Fill()->setVisible(project != nullptr);
  const bool texts = project != nullptr && project->cdText && project->atOnce;
  if (texts) ReadTexts(job);
  if (texts != std::exchange(texts_, texts)) {
    ShowTexts();
    // Laid out anew, the list has lost its selection.
    if (job.Mode() == SourceMode::List) return source_.Reload();
  }
  if (project == nullptr) return;
  const bool running = jobs_.AnyRunning();
  // A drive that writes is left alone; then its disc is another one.
  if (running) {
    ForgetDisc();
  } else if (asked_ != recorder) {
    AskRecorder(recorder);
  }
  ShowLength(job);
}

void ProjectView::AskRecorder(const std::string& recorder) {
  asked_ = recorder;
  seconds_.reset();
  if (recorder.empty()) return;
  worker_.Start([this, recorder]() -> BackgroundWorker::Done {
    const auto sectors = disc::BlankSectors(recorder);
    return [this, recorder, sectors] {
      if (asked_ != recorder) return;
      seconds_ = sectors ? std::optional(*sectors / kSectorsPerSecond) : std::nullopt;
      ShowLength(*active_);
    };
  });
}

void ProjectView::ShowLength(const Job& job) {
  const disc::BurnParameters* const project = ProjectOf(job);
  if (project == nullptr) return;
  area_.Fill()->ShowProject(disc::ProjectSeconds(job.files.Entries(), project->atOnce), seconds_);
}

// --- titles and performers

void ProjectView::ShowTexts() {
  FileViewModel& model = area_.Model();
  if (!texts_) return model.ShowTexts({});
  model.ShowTexts([this](const FileListEntry& entry, FileViewModel::TrackText which) {
    const disc::BurnParameters* const project = ProjectOf(*active_);
    const auto of = [&](const auto& texts) -> std::string {
      const auto found = texts.find(entry.path);
      if (found == texts.end()) return {};
      return which == FileViewModel::TrackText::Title ? found->second.title : found->second.performer;
    };
    std::string text = project == nullptr ? std::string() : of(project->texts);
    if (text.empty()) text = of(own_);
    if (text.empty() && project != nullptr && which == FileViewModel::TrackText::Performer)
      text = project->performer;
    return ToQt(text);
  });
}

// Attributes are read once, away from the window.
void ProjectView::ReadTexts(const Job& job) {
  std::vector<std::string> sources;
  for (const FileListEntry& entry : job.files.Entries()) {
    if (!own_.contains(entry.path) && reading_.insert(entry.path).second) sources.push_back(entry.path);
  }
  if (sources.empty()) return;
  worker_.Start([this, sources = std::move(sources)]() -> BackgroundWorker::Done {
    std::vector<std::pair<std::string, CdText::Entry>> texts;
    for (const std::string& source : sources) texts.emplace_back(source, disc::TextOfSource(source));
    return [this, texts = std::move(texts)] {
      for (const auto& [source, text] : texts) {
        own_[source] = text;
        reading_.erase(source);
      }
      area_.Files()->viewport()->update();
    };
  });
}

void ProjectView::TakeText(std::size_t row, FileViewModel::TrackText which, const QString& text) {
  Job& job = *active_;
  if (ProjectOf(job) == nullptr || !job.MayChange() || row >= area_.Model().Size()) return;
  auto& texts = As<disc::BurnParameters>(*job.parameters).texts;
  std::erase_if(texts, [&](const auto& one) {
    return std::ranges::find(job.files.Entries(), one.first, &FileListEntry::path) ==
           job.files.Entries().end();
  });
  const std::string& source = area_.Model().At(row).path;
  CdText::Entry& entry = texts[source];
  std::string entered = FromQt(text.simplified().left(static_cast<int>(kMostCharacters)));
  // What the source says anyway is not kept.
  const auto own = own_.find(source);
  const auto of = [&](CdText::Entry& one) -> std::string& {
    return which == FileViewModel::TrackText::Title ? one.title : one.performer;
  };
  if (own != own_.end() && of(own->second) == entered) entered.clear();
  of(entry) = std::move(entered);
  if (entry == CdText::Entry{}) texts.erase(source);
}

}  // namespace ts5
