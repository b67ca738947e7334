// What the stories of the main window share: a workbench on a directory of its own, dialogs answered from a
// script, and waiting without blocking.
#pragma once

#include <gtest/gtest.h>

#include <QTest>
#include <QtWidgets>
#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/shell/main_window.h"
#include "app/texts.h"
#include "frame/run.h"
#include "frame/ui/qt_text.h"
#include "modules/filter_modules.h"
#include "support/home.h"
#include "support/test_data.h"

namespace ts5 {

inline bool WaitFor(const std::function<bool()>& done, int milliseconds = 10'000) {
  QElapsedTimer time;
  time.start();
  while (!done()) {
    if (time.elapsed() > milliseconds) return false;
    QApplication::processEvents(QEventLoop::AllEvents, 10);
    QTest::qSleep(1);
  }
  return true;
}

// Answers the dialogs that come up, in the order of the script; the texts of all message boxes are kept. A
// dialog that nobody expects is a fault, and is closed so that the test ends.
class DialogScript {
 public:
  using Step = std::function<void(QDialog&)>;

  DialogScript() {
    timer_.setInterval(5);
    QObject::connect(&timer_, &QTimer::timeout, [this] { Look(); });
    timer_.start();
  }
  ~DialogScript() { EXPECT_TRUE(steps_.empty()) << steps_.size() << " expected dialogs did not come"; }

  void Expect(Step step) { steps_.push_back(std::move(step)); }
  void ExpectBox(QMessageBox::StandardButton answer) {
    Expect([answer](QDialog& dialog) {
      auto* box = qobject_cast<QMessageBox*>(&dialog);
      ASSERT_NE(box, nullptr) << dialog.metaObject()->className();
      ASSERT_NE(box->button(answer), nullptr) << box->text().toStdString();
      box->button(answer)->click();
    });
  }
  [[nodiscard]] bool Done() const { return steps_.empty() && QApplication::activeModalWidget() == nullptr; }
  [[nodiscard]] const std::vector<QString>& Texts() const { return texts_; }
  [[nodiscard]] QString LastText() const { return texts_.empty() ? QString() : texts_.back(); }

 private:
  void Look() {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr || !dialog->isVisible() || dialog == seen_) return;
    if (const auto* box = qobject_cast<QMessageBox*>(dialog)) texts_.push_back(box->text());
    seen_ = dialog;
    if (steps_.empty()) {
      ADD_FAILURE() << "unexpected dialog " << dialog->metaObject()->className() << ": "
                    << LastText().toStdString();
      dialog->reject();
    } else {
      const Step step = std::move(steps_.front());
      steps_.pop_front();
      step(*dialog);
    }
    if (!dialog->isVisible()) seen_ = nullptr;
  }

  QTimer timer_;
  std::deque<Step> steps_;
  std::vector<QString> texts_;
  QPointer<QDialog> seen_;
};

// A filter whose run waits at a gate, to be looked at in the middle.
struct GatedRun {
  std::atomic<bool> open = false;
  std::atomic<int> running = 0;
  std::function<void(Run&)> before = {};  // on the worker's thread

  void operator()(Run& run) {
    ++running;
    if (before) before(run);
    const auto items = static_cast<std::uint32_t>(run.ItemCount());
    while (!open && run.Sleep(std::chrono::milliseconds(5))) run.Progress(1, items, 0.5);
    if (run.Cancelled()) {
      run.AddCode(Outcome::Cancelled);
      run.Result().cancelled = true;
    }
    run.Result().counts[0] = run.Cancelled() ? 0 : items;
    run.Result().remarks = run.Remarks();
    --running;
  }
};

class WorkbenchTest : public testing::Test {
 protected:
  WorkbenchTest() {
    options_.registryPath = directory_.File("registry.sqlite");
    options_.devices = DeviceLists{};
    options_.patience = std::chrono::milliseconds(50);
    options_.volumes = VolumeTable::Of(directory_.Path(), "", {});
  }
  ~WorkbenchTest() override {
    if (window_ != nullptr) window_->EndWithoutQuestion();
  }

  // The program begins anew, with what it has stored before.
  void Start() {
    if (window_ != nullptr) window_->EndWithoutQuestion();
    window_.reset();
    application_.reset();
    application_ = std::make_unique<Application>(options_);
    window_ = std::make_unique<MainWindow>(*application_);
    window_->Begin();
    window_->resize(1200, 800);
    window_->showNormal();
    (void)QTest::qWaitForWindowExposed(window_.get());
    window_->ShowNotices();
  }
  // Takes the place of the MIDI converter.
  void UseGatedConverter(const std::shared_ptr<GatedRun>& gate) {
    const FilterModule* real = FindModule(FilterId::MidiConverter);
    ASSERT_NE(real, nullptr);
    fake_ = *real;
    fake_.run = [gate](ts5::Run& run) { (*gate)(run); };
    options_.modules = [this](FilterId filter) {
      return filter == FilterId::MidiConverter ? &fake_ : FindModule(filter);
    };
  }
  // A small valid MIDI file of format 1 with two tracks.
  std::string WriteMidi(const std::string& name) const {
    static constexpr unsigned char kBytes[] = {
        'M', 'T', 'h', 'd', 0, 0, 0, 6,  0, 1,    0,    2,    0,    96,  //
        'M', 'T', 'r', 'k', 0, 0, 0, 4,  0, 0xFF, 0x2F, 0,               //
        'M', 'T', 'r', 'k', 0, 0, 0, 12, 0, 0x90, 0x3C, 0x40, 0x60, 0x80, 0x3C, 0x40, 0, 0xFF, 0x2F, 0};
    return directory_.Write(name, std::string_view(reinterpret_cast<const char*>(kBytes), sizeof kBytes));
  }

  [[nodiscard]] MainWindow& W() { return *window_; }
  [[nodiscard]] Job& ActiveJob() { return *window_->Active(); }
  [[nodiscard]] bool Enabled(CommandId command) { return W().Actions().Action(command)->isEnabled(); }
  [[nodiscard]] bool WaitForEnd(int milliseconds = 10'000) {
    return WaitFor([&] { return script_.Done() && ActiveJob().State() == RunState::Idle; }, milliseconds);
  }
  void Drop(const std::vector<std::string>& paths) { emit W().Source().Files()->FilesDropped(paths); }
  // A key for the window as a whole, as a user gives it.
  void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    W().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&W()));
    QTest::keyClick(&W(), key, modifiers);
  }
  void ToListMode() {
    if (ActiveJob().Mode() == SourceMode::Directory) W().Actions().Trigger(CommandId::SwitchListMode);
  }
  void StartListed() {
    Start();
    ASSERT_TRUE(WaitForListing());
  }
  void ShowDirectory(const std::string& path) {
    emit W().Source().DirectoryChosen(path);
    ASSERT_TRUE(WaitForListing());
  }
  void StartWithList(const std::vector<std::string>& paths) {
    Start();
    ToListMode();
    Drop(paths);
  }
  // A list of these MIDI files, all of them selected, for the converter.
  void StartConverting(std::initializer_list<const char*> names = {"a.mid"}) {
    std::vector<std::string> paths;
    for (const char* const name : names) paths.push_back(WriteMidi(name));
    StartWithList(paths);
    W().Source().Files()->selectAll();
    W().Active().Settle();
    ChooseConverter();
  }
  void Select(const std::vector<std::size_t>& rows) {
    W().Source().Files()->SelectRows(rows, rows.empty() ? 0 : rows.front());
    W().Active().Settle();
  }
  bool WaitForListing() {
    return WaitFor([this] { return W().GetDesk().Prompt() == QtText(texts::StatusReady); });
  }
  // The converter as the filter, with its dialog accepted as it stands.
  void ChooseConverter() {
    script_.Expect([](QDialog& dialog) { dialog.accept(); });
    W().Filters().TileOf(FilterId::MidiConverter)->click();
  }

  const test::Home home_;
  test::TemporaryDirectory directory_;
  StartOptions options_;
  FilterModule fake_;
  std::unique_ptr<Application> application_;
  std::unique_ptr<MainWindow> window_;
  DialogScript script_;
};

}  // namespace ts5
