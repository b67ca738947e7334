// The way to a sibling program, with a hit that it is to show: on a thread of its own at the lowest priority,
// for it may have to wait until the program has started.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "frame/search_hit.h"
#include "frame/siblings.h"
#include "platform/base/strings.h"

class QObject;

namespace ts5 {

class SiblingVisit {
 public:
  // done is called on the owner's thread when the visit has ended, with what to tell the user then; never
  // after Leave. The owner calls Leave before it goes.
  SiblingVisit(QObject* owner, std::function<void(std::optional<TextId>)> done);
  ~SiblingVisit() { Leave(); }
  SiblingVisit(const SiblingVisit&) = delete;
  SiblingVisit& operator=(const SiblingVisit&) = delete;

  // One of them, once.
  void ToSequencer(const SearchHit& hit, const Sibling& sequencer);
  // find looks the program up; it is called on the owner's thread, again while the program starts.
  void ToScoreProgram(const SearchHit& hit, std::function<Sibling()> find);
  // The visit is given up without waiting for it.
  void Leave();
  [[nodiscard]] bool Ended() const;

 private:
  struct State;
  void Begin(std::function<std::optional<TextId>()> visit);

  std::shared_ptr<State> state_;
};

}  // namespace ts5
