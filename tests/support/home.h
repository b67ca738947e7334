// The home of a test program. Its main() makes it before any thread and points the environment there: no test
// touches the files of whoever runs it, and none changes the environment.
#pragma once

#include "support/test_data.h"

namespace ts5::test {

// For main(): XDG_DATA_HOME, XDG_RUNTIME_DIR and TMPDIR are one directory, STAVORA_REGISTRY is
// registry.sqlite in it, STAVORA_SCSI_FAULTS faults.json, and the sound server listens at "native", if one
// does.
class OwnEnvironment {
 public:
  OwnEnvironment();

 private:
  TemporaryDirectory place_;
};

// That directory, empty.
class Home : public Place {
 public:
  Home();
};

}  // namespace ts5::test
