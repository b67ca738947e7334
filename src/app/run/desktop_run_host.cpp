#include "app/run/desktop_run_host.h"

#include <atomic>

namespace ts5 {
namespace {

// More hits than a list can usefully show; the search ends then.
constexpr std::size_t kMostHits = 2'000'000;

}  // namespace

struct DesktopRunHost::Mailbox {
  std::mutex mutex;
  QObject* context = nullptr;  // null once closed
  std::function<void(RunNews)> deliver;
  RunNews news;
  bool posted = false;
  std::atomic<std::size_t> hits = 0;
};

DesktopRunHost::DesktopRunHost(QObject* context, std::function<void(RunNews)> deliver)
    : mailbox_(std::make_shared<Mailbox>()) {
  mailbox_->context = context;
  mailbox_->deliver = std::move(deliver);
}

void DesktopRunHost::Close() {
  RunNews dropped;  // questions in it are answered when it goes, outside the lock
  const std::lock_guard lock(mailbox_->mutex);
  mailbox_->context = nullptr;
  std::swap(dropped, mailbox_->news);
}

void DesktopRunHost::RefuseHits() {
  mailbox_->hits = kMostHits;
}

template <typename Put>
void DesktopRunHost::Post(Put put) {
  const std::lock_guard lock(mailbox_->mutex);
  if (mailbox_->context == nullptr) return;
  put(mailbox_->news);
  if (mailbox_->posted) return;
  mailbox_->posted = true;
  QMetaObject::invokeMethod(
      mailbox_->context,
      [mailbox = mailbox_] {
        RunNews news;
        {
          const std::lock_guard guard(mailbox->mutex);
          mailbox->posted = false;
          if (mailbox->context == nullptr) return;
          std::swap(news, mailbox->news);
        }
        mailbox->deliver(std::move(news));
      },
      Qt::QueuedConnection);
}

void DesktopRunHost::Progress(const RunProgress& progress) {
  Post([&](RunNews& news) { news.progress = progress; });
}
void DesktopRunHost::TaskText(std::string_view text) {
  Post([&](RunNews& news) { news.task = std::string(text); });
}
void DesktopRunHost::StatusText(std::string_view text) {
  Post([&](RunNews& news) { news.status = std::string(text); });
}
void DesktopRunHost::ProtocolLine(std::string_view line) {
  Post([&](RunNews& news) { news.lines.emplace_back(line); });
}
Outcome DesktopRunHost::Hit(const SearchHit& hit) {
  if (++mailbox_->hits > kMostHits) return Outcome::OutOfMemory;
  Post([&](RunNews& news) { news.hits.push_back(hit); });
  return Outcome::Success;
}
void DesktopRunHost::Ask(std::shared_ptr<Question> question) {
  Post([&](RunNews& news) { news.questions.push_back(std::move(question)); });
}
void DesktopRunHost::Notice(std::string_view text, MessageIcon icon) {
  Post([&](RunNews& news) { news.notices.emplace_back(std::string(text), icon); });
}
void DesktopRunHost::StateChanged(RunState state) {
  Post([&](RunNews& news) { news.state = state; });
}
void DesktopRunHost::Finished(const RunResult& result) {
  Post([&](RunNews& news) { news.result = result; });
}

}  // namespace ts5
