#include "app/shell/sibling_visit.h"

#include <sys/resource.h>
#include <unistd.h>

#include <QMetaObject>
#include <QObject>
#include <QProcess>
#include <QStandardPaths>
#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <utility>

#include "frame/ui/qt_text.h"
#include "platform/base/detached_task.h"
#include "platform/programs/sibling_link.h"
#include "search/show_hit.h"

namespace ts5 {
namespace {

constexpr int kLowestPriority = 19;
constexpr std::chrono::seconds kLookUp{5};  // a window that is busy answers later than that

Outcome StartProgram(const std::string& program, const std::vector<std::string>& arguments) {
  QStringList list;
  for (const std::string& argument : arguments) list.append(ToQt(argument));
  return QProcess::startDetached(ToQt(program), list) ? Outcome::Success : Outcome::SourceFailed;
}

// A program comes to the front by itself when it has been told what to show; where the desktop has the usual
// tool for it, its window is fetched.
void RaiseWindow(const std::string& windowClass) {
  const QString tool = QStandardPaths::findExecutable(QStringLiteral("wmctrl"));
  if (!tool.isEmpty()) QProcess::startDetached(tool, {"-x", "-a", ToQt(windowClass)});
}

}  // namespace

struct SiblingVisit::State {
  std::mutex mutex;
  std::condition_variable left;
  QObject* owner = nullptr;  // null once left
  std::function<void(std::optional<TextId>)> done;
  bool ended = true;

  void Post(std::function<void()> action) {
    const std::lock_guard lock(mutex);
    if (owner != nullptr) QMetaObject::invokeMethod(owner, std::move(action), Qt::QueuedConnection);
  }
  // False when the visit is left meanwhile.
  bool Sleep(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex);
    return !left.wait_for(lock, time, [this] { return owner == nullptr; });
  }
};

namespace {

template <typename State>
SiblingServices ServicesOf(const std::shared_ptr<State>& state) {
  return {.isThere = [](const std::string& name) { return SiblingIsThere(name); },
          .start = StartProgram,
          .send = [](const std::string& name,
                     const std::vector<SiblingMessage>& messages) { return SendToSibling(name, messages); },
          .raise = RaiseWindow,
          .sleep = [state](std::chrono::milliseconds time) { return state->Sleep(time); }};
}

}  // namespace

SiblingVisit::SiblingVisit(QObject* owner, std::function<void(std::optional<TextId>)> done)
    : state_(std::make_shared<State>()) {
  state_->owner = owner;
  state_->done = std::move(done);
}

void SiblingVisit::Begin(std::function<std::optional<TextId>()> visit) {
  state_->ended = false;
  const auto task = DetachedTask::Start([state = state_, visit = std::move(visit)] {
    (void)::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), kLowestPriority);
    const std::optional<TextId> message = visit();
    {
      const std::lock_guard lock(state->mutex);
      state->ended = true;
    }
    state->Post([state, message] {
      std::function<void(std::optional<TextId>)> done;
      {
        const std::lock_guard lock(state->mutex);
        if (state->owner != nullptr) done = state->done;
      }
      if (done) done(message);
    });
  });
  if (!task) state_->ended = true;
}

void SiblingVisit::ToSequencer(const SearchHit& hit, const Sibling& sequencer) {
  Begin([state = state_, hit, program = SiblingProgram{sequencer.program, sequencer.windowClass}] {
    return ShowInSequencer(hit, program, ServicesOf(state));
  });
}

void SiblingVisit::ToScoreProgram(const SearchHit& hit, std::function<Sibling()> find) {
  const auto lookUp = [state = state_, find = std::move(find)]() -> SiblingProgram {
    const auto found = std::make_shared<std::promise<Sibling>>();
    std::future<Sibling> answer = found->get_future();
    state->Post([found, find] { found->set_value(find()); });
    if (answer.wait_for(kLookUp) != std::future_status::ready) return {};
    const Sibling sibling = answer.get();
    return {sibling.program, sibling.windowClass};
  };
  Begin([state = state_, hit, lookUp] { return ShowInScoreEditor(hit, lookUp, ServicesOf(state)); });
}

void SiblingVisit::Leave() {
  const std::lock_guard lock(state_->mutex);
  state_->owner = nullptr;
  state_->left.notify_all();
}

bool SiblingVisit::Ended() const {
  const std::lock_guard lock(state_->mutex);
  return state_->ended;
}

}  // namespace ts5
