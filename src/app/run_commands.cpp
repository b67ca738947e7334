#include "app/run_commands.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <algorithm>
#include <utility>

#include "app/main_window.h"
#include "app/parameter_windows.h"
#include "app/playback_commands.h"
#include "app/source_commands.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "frame/ui/results_dialog.h"
#include "platform/paths.h"
#include "search/search_run.h"
#include "search/texts.h"

namespace ts5 {
namespace {

QMessageBox::Icon IconOf(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Information:
      return QMessageBox::Information;
    case MessageIcon::Question:
      return QMessageBox::Question;
    case MessageIcon::Exclamation:
      break;
  }
  return QMessageBox::Warning;
}

struct AnswerButton {
  Answer answer;
  QMessageBox::StandardButton button;
  TextId text;
};
std::vector<AnswerButton> ButtonsOf(QuestionButtons buttons) {
  const AnswerButton yes{Answer::Yes, QMessageBox::Yes, texts::ButtonYes};
  const AnswerButton no{Answer::No, QMessageBox::No, texts::ButtonNo};
  const AnswerButton cancel{Answer::Cancelled, QMessageBox::Cancel, texts::ButtonCancel};
  switch (buttons) {
    case QuestionButtons::YesNo:
      return {yes, no};
    case QuestionButtons::YesNoCancel:
      return {yes, no, cancel};
    case QuestionButtons::OkCancel:
      return {{Answer::Yes, QMessageBox::Ok, texts::ButtonOk}, cancel};
  }
  return {yes, no};
}

}  // namespace

RunCommands::RunCommands(MainWindow& window) : window_(window) {
  window_.On(CommandId::Run, [this] { Start(); });
  window_.On(CommandId::Stop, [this] { Stop(); });
  window_.On(CommandId::StopByEscape, [this] { Stop(); });
  connect(&window_.Target(), &TargetArea::RunClicked, this, [this] {
    const Job& job = window_.ActiveJob();
    window_.Trigger(RunButtonStops(job.filter, job.State()) ? CommandId::Stop : CommandId::Run);
  });
  connect(&window_.Target(), &TargetArea::StopClicked, this, [this] { window_.Trigger(CommandId::Stop); });
}

void RunCommands::Close() {
  for (const auto& [run, host] : hosts_) host->Close();
  hosts_.clear();
}

namespace {

// The device of a player by the name that it had when the lists were made.
std::string OutputOf(const Job& job, const DeviceLists& devices) {
  if (!IsPlayer(job.filter)) return {};
  const bool midi = job.filter != FilterId::AudioPlayer;
  const auto& names = midi ? devices.midiOutputs : devices.audioOutputs;
  const std::int32_t index = job.destinationDevice - (midi ? kMidiDeviceBase : 0);
  return index >= 0 && std::cmp_less(index, names.size()) ? names[static_cast<std::size_t>(index)]
                                                          : std::string();
}

}  // namespace

void RunCommands::Start() {
  Job& job = window_.ActiveJob();
  if (PlaybackCommands::TogglePause(job)) return;
  if (const auto panel = window_.Panel()) CommitDestination(job, *panel);
  const ParameterDialog* const dialog = FindParameterDialog(job.filter);
  if (dialog != nullptr && dialog->prepare && job.parameters && job.MayChange() &&
      !dialog->prepare(job, window_.App(), window_, &window_))
    return;
  const Settings& settings = window_.App().GetSettings();
  RunRequest request;
  request.settings = settings;
  request.destination = DestinationRulesOf(settings);
  if (IsSearch(job.filter) && job.destinationIsScreen) {
    request.begin = [this, &job, policy = settings.oldSearchResults] {
      const auto& parameters = static_cast<const SearchParameters&>(*job.parameters);
      window_.PanelOf(job).BeginSearch(RecordAtStart(job.filter, parameters), policy, [this] {
        return window_.Confirm(Text(texts::AskClearResults), MessageIcon::Question, Answer::Yes);
      });
    };
  }
  request.devices.output = OutputOf(job, window_.App().Devices());
  const auto run = job.run.Shared();
  const auto host =
      std::make_shared<DesktopRunHost>(this, [this, run](RunNews news) { Take(run, std::move(news)); });
  window_.PanelOf(job).Reset();
  if (!window_.App().Runner().Start(job, std::move(request), host, window_)) {
    if (window_.Target().Field()->isEnabled()) window_.Target().Field()->setFocus();
    return;
  }
  hosts_[run.get()] = host;
  window_.Target().SetName(ToQt(job.destinationName));
  window_.RefreshFilterBar();
  window_.Refresh();
  window_.RefreshJobBar();
}

void RunCommands::Stop() {
  const Job& job = window_.ActiveJob();
  if (const auto status = window_.App().Runner().Stop(job)) window_.PanelOf(job).SetStatus(QtText(*status));
}

Job* RunCommands::Find(const JobRun* run) const {
  Jobs& jobs = window_.App().GetJobs();
  for (std::size_t i = 0; i <= jobs.Count(); ++i) {
    if (jobs[i].run.Shared().get() == run) return &jobs[i];
  }
  return nullptr;
}

void RunCommands::Take(const std::shared_ptr<JobRun>& run, RunNews news) {
  Job* job = Find(run.get());
  if (job != nullptr) {
    const bool stopping = run->Cancelled() && !news.result;
    if (stopping) news.status.reset();  // "Breche ab" stays until the end
    const auto host = hosts_.find(run.get());
    if (!window_.PanelOf(*job).Take(news) && host != hosts_.end()) host->second->RefuseHits();
    if (job == &window_.ActiveJob()) {
      if (news.status && IsSearch(job->filter)) window_.Target().SetProtocolLine(ToQt(*news.status));
      if (news.state) window_.Refresh();
      if (!news.hits.empty()) window_.RefreshCommands();
    }
    if (news.state) window_.RefreshJobBar();
  }
  for (const auto& [text, icon] : news.notices) {
    window_.Dialogs().Add([this, text = ToQt(text), icon = IconOf(icon)]() -> QDialog* {
      return new QMessageBox(icon, QtText(texts::ApplicationTitle), text, QMessageBox::Ok, &window_);
    });
  }
  for (const auto& question : news.questions) Ask(question);
  if (news.result) {
    hosts_.erase(run.get());
    Finish(job, *news.result);
  }
}

void RunCommands::Finish(Job* job, const RunResult& result) {
  if (job != nullptr) {
    RunPanel& panel = window_.PanelOf(*job);
    panel.Reset();
    if (panel.Searching()) panel.EndSearch(RecordAtEnd(panel.Results().Record(), result));
    if (job == &window_.ActiveJob()) {
      window_.Target().SetProtocolLine({});
      window_.RefreshFilterBar();
      window_.RefreshDestination();
      window_.Refresh();
      // New files of the run appear in the directory that is shown.
      const std::string& directory = job->directory.path;
      const bool beside = std::ranges::any_of(
          result.items, [&](const RunItem& item) { return DirectoryOf(item.destination) == directory; });
      if (job->Mode() == SourceMode::Directory && beside) window_.Sources().Reload();
    }
    window_.RefreshJobBar();
  }
  if (!result.show) return;
  window_.Dialogs().Add(
      [this, result]() -> QDialog* { return new ResultsDialog(result, window_, &window_); });
}

// --- questions

void RunCommands::Ask(const std::shared_ptr<Question>& question) {
  window_.Dialogs().Add(
      [this, question]() -> QDialog* { return question->Withdrawn() ? nullptr : QuestionDialog(question); });
}

QDialog* RunCommands::QuestionDialog(const std::shared_ptr<Question>& question) {
  const QuestionText& text = question->Text();
  QDialog* dialog = nullptr;
  if (text.results) {
    dialog = new ResultsDialog(*text.results, window_, &window_);
    connect(dialog, &QDialog::finished, dialog, [question](int result) {
      question->Reply(result == QDialog::Accepted ? Answer::Yes : Answer::Cancelled);
    });
  } else {
    auto* box = new QMessageBox(IconOf(text.icon), QtText(texts::ApplicationTitle), ToQt(text.text),
                                QMessageBox::NoButton, &window_);
    box->setTextFormat(Qt::PlainText);
    const auto buttons = ButtonsOf(text.buttons);
    for (const AnswerButton& row : buttons) {
      QPushButton* button = box->addButton(row.button);
      button->setText(QtText(row.text));
      if (row.answer == text.preset) box->setDefaultButton(button);
    }
    box->setEscapeButton(buttons.back().button);
    connect(box, &QDialog::finished, box, [question, box, buttons] {
      Answer answer = buttons.back().answer;
      for (const AnswerButton& row : buttons) {
        if (box->clickedButton() == box->button(row.button)) answer = row.answer;
      }
      question->Reply(answer);
    });
    dialog = box;
  }
  // On the thread of the run: the dialog is closed by a message.
  question->OnWithdrawn([open = QPointer<QDialog>(dialog)] {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [open] {
          if (open != nullptr) open->reject();
        },
        Qt::QueuedConnection);
  });
  return dialog;
}

}  // namespace ts5
