#include "support/home.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <utility>

namespace ts5::test {
namespace {

constexpr const char* kDirectory = "XDG_DATA_HOME";

}  // namespace

OwnEnvironment::OwnEnvironment() {
  const std::string& home = place_.Path();
  const std::array<std::pair<const char*, std::string>, 6> variables = {{
      {kDirectory, home},
      {"XDG_RUNTIME_DIR", home},
      {"TMPDIR", home},
      {"STAVORA_REGISTRY", home + "/registry.sqlite"},
      {"STAVORA_SCSI_FAULTS", home + "/faults.json"},
      {"PULSE_SERVER", "unix:" + home + "/native"},
  }};
  for (const auto& [name, value] : variables) ::setenv(name, value.c_str(), 1);
}

Home::Home() : Place(std::getenv(kDirectory)) {
  for (const auto& entry : std::filesystem::directory_iterator(Path())) {
    std::error_code ignored;
    std::filesystem::remove_all(entry.path(), ignored);
  }
}

}  // namespace ts5::test
