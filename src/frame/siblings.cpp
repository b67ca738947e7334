#include "frame/siblings.h"

#include <string_view>

#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/store/registry.h"

namespace ts5 {
namespace {

constexpr int kOldestMajorVersion = 3;
constexpr std::size_t kMaxVersionCharacters = 11;
constexpr std::size_t kMaxWindowClassCharacters = 63;
constexpr std::string_view kSequencerProgram = "rondel30.exe";

std::string ValueOf(const Registry& registry, const std::string& key, std::string_view name) {
  const auto values = registry.Read(key);
  return values ? std::string(values->Text(name).value_or("")) : std::string{};
}

// Version and window class; the program file is left to the caller. key receives the key of the version.
Sibling FindVersion(const Registry& registry, const std::string& product, std::string& key) {
  Sibling sibling;
  const std::string base = std::string(kLocalMachine) + "\\software\\qlw\\" + product;
  const std::string version = ValueOf(registry, base, "Current Version");
  if (version.empty() || CharacterCount(version) > kMaxVersionCharacters) return sibling;
  const auto dot = version.find('.');
  sibling.majorVersion = LeadingInteger(version);
  sibling.minorVersion =
      dot == std::string::npos ? 0 : LeadingInteger(std::string_view(version).substr(dot + 1));
  key = base + "\\" + version;
  return sibling;
}

void TakeProgram(Sibling& sibling, std::string windowClass, std::string program) {
  sibling.windowClass = FirstCharacters(windowClass, kMaxWindowClassCharacters);
  sibling.program = std::move(program);
  sibling.available = !sibling.program.empty() && FileExists(sibling.program);
}

}  // namespace

SiblingPrograms FindSiblings(const Registry& registry) {
  SiblingPrograms programs;
  std::string key;
  programs.sequencer = FindVersion(registry, "Rondelis", key);
  if (programs.sequencer.majorVersion >= kOldestMajorVersion) {
    const std::string directory = ValueOf(registry, key, "InstallDir");
    TakeProgram(programs.sequencer, ValueOf(registry, key, "WndClass"),
                directory.empty() ? std::string{} : JoinPath(directory, kSequencerProgram));
  }
  programs.score = FindVersion(registry, "Stavora", key);
  if (programs.score.majorVersion >= kOldestMajorVersion) {
    // Later versions are registered for the user who installed them.
    if (programs.score.majorVersion > kOldestMajorVersion) {
      key.replace(0, kLocalMachine.size(), kCurrentUser);
    }
    TakeProgram(programs.score, ValueOf(registry, key, "WndClass"), ValueOf(registry, key, "ExePath"));
  }
  return programs;
}

}  // namespace ts5
