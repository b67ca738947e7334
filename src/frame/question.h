// A question of a run to the user. The worker waits, the window never does: it gets a Question, shows it when
// and how it likes, and replies from whatever thread. A stop of the run ends the waiting as well.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "frame/run_result.h"

namespace ts5 {

// How often a waiting run looks at its cancel request.
inline constexpr std::chrono::milliseconds kCancelPoll{20};

enum class Answer : std::uint8_t { Yes, No, Cancelled };
enum class QuestionButtons : std::uint8_t { YesNo, YesNoCancel, OkCancel };  // OK answers Yes
enum class MessageIcon : std::uint8_t { Information, Question, Exclamation };

struct QuestionText {
  std::string text = {};
  QuestionButtons buttons = QuestionButtons::YesNo;
  MessageIcon icon = MessageIcon::Question;
  Answer preset = Answer::Yes;            // the button that Enter presses
  std::optional<RunResult> results = {};  // shown in the results dialog in place of a message box
};

// What the asking thread waits on, shared with its question.
class QuestionState {
 public:
  void Reply(Answer answer);
  // Blocks until there is a reply. When stopped() becomes true first, the question is withdrawn and Cancelled
  // comes back.
  [[nodiscard]] Answer Wait(const std::function<bool()>& stopped);
  [[nodiscard]] bool Withdrawn() const;
  void OnWithdrawn(std::function<void()> action);

 private:
  mutable std::mutex mutex_;
  std::condition_variable replied_;
  std::optional<Answer> answer_;
  bool withdrawn_ = false;
  std::function<void()> onWithdrawn_;
};

// A question that waits for the user. The first reply counts; a question that is dropped without a reply,
// because its window went away, is answered with Cancelled.
class Question {
 public:
  Question(QuestionText text, std::shared_ptr<QuestionState> state);
  ~Question();
  Question(const Question&) = delete;
  Question& operator=(const Question&) = delete;

  [[nodiscard]] const QuestionText& Text() const { return text_; }
  void Reply(Answer answer);
  // The run was stopped meanwhile and nobody waits for the reply any more.
  [[nodiscard]] bool Withdrawn() const;
  // Called once when the question is withdrawn, at once if it is already, on the thread of the run: post a
  // message that closes the dialog, and nothing else.
  void OnWithdrawn(std::function<void()> action);

 private:
  QuestionText text_;
  std::shared_ptr<QuestionState> state_;
};

}  // namespace ts5
