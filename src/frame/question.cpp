#include "frame/question.h"

#include <utility>

namespace ts5 {

void QuestionState::Reply(Answer answer) {
  {
    const std::lock_guard lock(mutex_);
    if (answer_) return;
    answer_ = answer;
    onWithdrawn_ = nullptr;
  }
  replied_.notify_all();
}

Answer QuestionState::Wait(const std::function<bool()>& stopped) {
  std::function<void()> withdraw;
  {
    std::unique_lock lock(mutex_);
    while (!answer_ && !stopped()) replied_.wait_for(lock, kCancelPoll);
    if (answer_) return *answer_;
    withdrawn_ = true;
    answer_ = Answer::Cancelled;
    withdraw = std::exchange(onWithdrawn_, nullptr);
  }
  if (withdraw) withdraw();
  return Answer::Cancelled;
}

bool QuestionState::Withdrawn() const {
  const std::lock_guard lock(mutex_);
  return withdrawn_;
}

void QuestionState::OnWithdrawn(std::function<void()> action) {
  {
    const std::lock_guard lock(mutex_);
    if (!withdrawn_) {
      if (!answer_) onWithdrawn_ = std::move(action);
      return;
    }
  }
  action();
}

Question::Question(QuestionText text, std::shared_ptr<QuestionState> state)
    : text_(std::move(text)), state_(std::move(state)) {}

Question::~Question() {
  state_->Reply(Answer::Cancelled);
}

void Question::Reply(Answer answer) {
  state_->Reply(answer);
}

bool Question::Withdrawn() const {
  return state_->Withdrawn();
}

void Question::OnWithdrawn(std::function<void()> action) {
  state_->OnWithdrawn(std::move(action));
}

}  // namespace ts5
