#include "audio/encode/engine_info.h"

#include "audio/encode/texts.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/media/lame_sink.h"
#include "platform/media/shine_sink.h"

namespace ts5::encode {
namespace {

constexpr std::uint64_t kMostLicence = std::uint64_t{1} << 20;
constexpr const char* kSystemLicence = "/usr/share/common-licenses/LGPL-2";

}  // namespace

std::string EngineVersionText(Mp3Engine engine) {
  const bool blade = engine == Mp3Engine::Blade;
  const auto version = blade ? ShineVersion() : LameVersion();
  if (!version) return std::string(Text(texts::EngineNotOpened));
  return Format(Text(blade ? texts::EngineBladeVersion : texts::EngineLameVersion), version->major,
                version->minor, version->day, version->month, version->year) +
         "\n" + Format(Text(texts::EngineLibrary), version->name, version->full);
}

std::string EngineLicence() {
  for (const std::string& path :
       {JoinPath(InstalledDirectory(), "copying.txt"), std::string(kSystemLicence)}) {
    if (const auto text = ReadFile(path, kMostLicence)) return std::string(AsText(*text));
  }
  return std::string(Text(texts::EngineNoLicence));
}

}  // namespace ts5::encode
