// Work that may take long (a slow directory, a sleeping drive), away from the window's thread. Pieces of work
// run one after the other on one thread; what each returns is then called on the thread that owns the worker.
//
// Destroying the worker forgets what has not begun and never waits long: work that hangs in the system is
// left behind and its result dropped.
#pragma once

#include <QObject>
#include <functional>
#include <memory>

namespace ts5 {

class BackgroundWorker : public QObject {
 public:
  using Done = std::function<void()>;  // what to do with the result

  explicit BackgroundWorker(QObject* parent = nullptr);
  ~BackgroundWorker() override;

  // work must hold all that it uses; the Done it returns may use the owner.
  void Start(std::function<Done()> work);
  // Forgets what has not begun, and the results of what has.
  void DropAll();

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace ts5
