#include "batch/console_host.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "batch/run_output.h"
#include "batch/texts.h"
#include "frame/run_time.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"

namespace ts5::batch {
namespace {

// How often the main thread looks whether Ctrl+C was pressed.
constexpr std::chrono::milliseconds kInterruptPoll{50};

constexpr std::size_t kMostWaiting = 4096;  // actions

}  // namespace

ConsoleHost::ConsoleHost(Console& console, OutputOptions options, SearchKind kind)
    : console_(console), options_(std::move(options)), line_(console, Talks()), kind_(kind) {}

void ConsoleHost::PrintUntilFinished(const std::function<std::optional<TextId>()>& stop) {
  std::deque<Action> actions;
  while (!finished_) {
    {
      std::unique_lock lock(mutex_);
      arrived_.wait_for(lock, kInterruptPoll, [this] { return !actions_.empty(); });
      actions.swap(actions_);
    }
    room_.notify_all();
    if (!stopping_ && console_.Interrupted()) {
      stopping_ = true;
      const auto text = stop();
      status_ = Text(text.value_or(texts::BatchStopping));
    }
    for (const Action& action : actions) action();
    actions.clear();
    if (!finished_) ShowProgress();
  }
  line_.Clear();
}

void ConsoleHost::ShowProgress() {
  std::string text = task_;
  const int percent = static_cast<int>(100 * WholeOf(progress_));
  if (!task_.empty()) {
    text = Format("%s (%i %%)", task_, percent);
  } else if (progress_.items > 0) {
    text = Format(Text(texts::BatchProgress), progress_.item, progress_.items, percent);
  }
  if (!text.empty()) text += "  " + TimeText(progress_.elapsed, progress_.remaining);
  if (!status_.empty()) text += (text.empty() ? "" : "  ") + status_;
  if (!text.empty()) line_.Show(text);
}

void ConsoleHost::Queue(Action action) {
  {
    const std::lock_guard lock(mutex_);
    actions_.push_back(std::move(action));
  }
  arrived_.notify_one();
}

void ConsoleHost::QueueWhenRoom(Action action) {
  {
    std::unique_lock lock(mutex_);
    room_.wait(lock, [this] { return actions_.size() < kMostWaiting; });
  }
  Queue(std::move(action));
}

void ConsoleHost::Progress(const RunProgress& progress) {
  Queue([this, progress] { progress_ = progress; });
}

void ConsoleHost::TaskText(std::string_view text) {
  Queue([this, task = OnOneLine(text)] { task_ = task; });
}

void ConsoleHost::StatusText(std::string_view text) {
  Queue([this, status = OnOneLine(text)] {
    if (!stopping_) status_ = status;
  });
}

void ConsoleHost::ProtocolLine(std::string_view text) {
  if (!Talks()) return;
  QueueWhenRoom([this, protocol = std::string(text)] {
    line_.Clear();
    console_.err << protocol << '\n';
  });
}

Outcome ConsoleHost::Hit(const SearchHit& hit) {
  if (options_.json) return hits_.Add(hit);
  QueueWhenRoom([this, hit] {
    line_.Clear();
    const bool named = options_.melodies.size() > 1;
    const std::string text = HitText(kind_, hit);
    console_.out << (named ? Format(Text(texts::BatchHitOfMelody), text, MelodyOf(hit, options_)) : text)
                 << '\n';
  });
  return Outcome::Success;
}

void ConsoleHost::Ask(std::shared_ptr<Question> question) {
  Queue([this, question = std::move(question)] {
    if (question->Withdrawn()) return;
    line_.Clear();
    // What the run is at, mostly the file that is asked about.
    if (!status_.empty()) console_.err << status_ << '\n';
    status_.clear();
    if (question->Text().results && !options_.json) console_.out << ResultText(*question->Text().results);
    question->Reply(stopping_ ? Answer::Cancelled : AskOnConsole(console_, question->Text()));
  });
}

void ConsoleHost::Notice(std::string_view text, MessageIcon icon) {
  if (icon == MessageIcon::Information && !Talks()) return;
  Queue([this, notice = OnOneLine(text)] {
    line_.Clear();
    PrintError(console_, notice);
  });
}

void ConsoleHost::StateChanged(RunState /*state*/) {}

void ConsoleHost::Finished(const RunResult& result) {
  Queue([this, result] {
    result_ = result;
    finished_ = true;
  });
}

bool ConsoleDialogs::Confirm(std::string_view question, MessageIcon icon, Answer preset) {
  return AskOnConsole(console_, {.text = std::string(question), .icon = icon, .preset = preset}) ==
         Answer::Yes;
}

void ConsoleDialogs::Tell(std::string_view text, MessageIcon icon) {
  if (icon == MessageIcon::Information && options_.quiet) return;
  PrintError(console_, OnOneLine(text));
}

}  // namespace ts5::batch
