#include "frame/guarded_profile.h"

#include <string>

namespace ts5 {
namespace {

constexpr std::string_view kLineKey = "======";
constexpr std::size_t kLineLength = 46;
constexpr std::string_view kStopKey = "Stop!!";
constexpr std::string_view kStopText =
    "Diese Datei wurde automatisch erzeugt und darf AUF KEINEN FALL editiert werden !!";

}  // namespace

void WriteGuard(Profile& profile, std::string_view section) {
  profile.Write(section, kLineKey, std::string(kLineLength, '='));
  profile.Write(section, kStopKey, kStopText);
}

bool HasGuard(const Profile& profile, std::string_view section) {
  return profile.Find(section, kStopKey).has_value();
}

}  // namespace ts5
