#include "platform/disc/sense.h"

#include <algorithm>
#include <array>

#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr int kAny = -1;

struct SenseRule {
  std::uint8_t key;
  int code;       // or kAny
  int qualifier;  // or kAny
  SenseAction action;
};

// The first row that fits holds.
constexpr std::array kRules{
    SenseRule{sense::kNotReady, sense::kNoMedium, kAny, SenseAction::GiveUp},
    SenseRule{sense::kNotReady, 0x04, 0x01, SenseAction::Wait},  // becoming ready
    SenseRule{sense::kNotReady, 0x04, 0x04, SenseAction::Wait},  // format in progress
    SenseRule{sense::kNotReady, 0x04, 0x07, SenseAction::Wait},  // operation in progress
    SenseRule{sense::kNotReady, 0x04, 0x08, SenseAction::Wait},  // long write in progress
    SenseRule{sense::kNotReady, 0x04, kAny, SenseAction::GiveUp},
    SenseRule{sense::kNotReady, kAny, kAny, SenseAction::Wait},
    SenseRule{sense::kUnitAttention, 0x28, kAny, SenseAction::GiveUp},  // another disc
    SenseRule{sense::kUnitAttention, kAny, kAny, SenseAction::Again},
    SenseRule{sense::kMediumError, 0x11, kAny, SenseAction::Again},  // unreadable now
    SenseRule{sense::kMediumError, 0x02, kAny, SenseAction::Again},  // no seek complete
    SenseRule{sense::kMediumError, 0x09, kAny, SenseAction::Again},  // tracking lost
    SenseRule{sense::kMediumError, kAny, kAny, SenseAction::GiveUp},
    SenseRule{0x0B, kAny, kAny, SenseAction::Again},  // aborted command
    SenseRule{0x00, 0x00, 0x00, SenseAction::Again},  // it did not reach the drive
};

}  // namespace

SenseAction ActionFor(const SenseData& sense) {
  const auto fits = [&](const SenseRule& rule) {
    return rule.key == sense.key && (rule.code == kAny || rule.code == sense.code) &&
           (rule.qualifier == kAny || rule.qualifier == sense.qualifier);
  };
  const auto* const rule = std::ranges::find_if(kRules, fits);
  return rule == kRules.end() ? SenseAction::GiveUp : rule->action;
}

std::string SenseText(const SenseData& sense) {
  return Format("%02X/%02X/%02X", sense.key, sense.code, sense.qualifier);
}

}  // namespace ts5
