// One workbench per registry: a second start hands its files over to the first, which comes to the front.
//
//   SingleInstance instance(DefaultRegistryPath());
//   if (!instance.Claim(files)) return 0;   // the first one has them
//   instance.Listen([&](const std::vector<std::string>& files) { ... });
//
// The first holds a lock beside its socket ($XDG_RUNTIME_DIR), which goes with the process, however it ends.
// Where there is no such directory every start is a first one; the registry bears that, too.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/descriptor.h"
#include "platform/programs/sibling_link.h"

namespace ts5 {

class SingleInstance {
 public:
  explicit SingleInstance(const std::string& registryPath);

  // True for the first, also when one that is there does not answer. False: it has taken the files (absolute
  // paths).
  [[nodiscard]] bool Claim(const std::vector<std::string>& files);
  // What a further start brings, on the thread that calls this.
  void Listen(std::function<void(const std::vector<std::string>& files)> wake);

 private:
  void Take();

  std::string name_;
  FileDescriptor lock_;
  std::optional<SiblingReceiver> receiver_;
  std::unique_ptr<QSocketNotifier> notifier_;
  std::function<void(const std::vector<std::string>&)> wake_;
};

}  // namespace ts5
