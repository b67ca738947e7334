#include "score/score_system.h"

#include <algorithm>

namespace ts5 {
namespace {

constexpr unsigned kPollEvery = 4096;  // records

SystemStaff& StaffOf(ScoreSystem& system, const StaffHeader& header) {
  const auto found = std::ranges::find(system.staves, std::size_t{header.layout}, &SystemStaff::layout);
  if (found != system.staves.end()) return *found;
  SystemStaff& staff = system.staves.emplace_back();
  staff.layout = header.layout;
  staff.time = header.time;
  return staff;
}

class SystemReader {
 public:
  SystemReader(ScoreSource& in, std::size_t layouts, const std::function<bool()>& stopped)
      : in_(in), layouts_(layouts), stopped_(stopped) {}

  ScoreSystem Read() {
    ScoreSystem system;
    const SystemHeader header = ReadSystemHeader(in_);
    system.tempo = header.tempo;
    for (std::uint32_t i = 0; i < header.staves && in_.Ok(); ++i) {
      const StaffHeader staff = ReadStaffHeader(in_);
      in_.Require(staff.layout < layouts_);
      if (in_.Ok()) ReadVoices(staff.voices, StaffOf(system, staff));
      Poll();
    }
    return system;
  }

 private:
  void ReadVoices(std::uint32_t count, SystemStaff& staff) {
    for (std::uint32_t i = 0; i < count && in_.Ok(); ++i) {
      const VoiceHeader header = ReadVoiceHeader(in_);
      if (i < kMaxVoices) {
        staff.places[i] = {in_.Position(), header.objects};
        staff.voices = std::max<std::size_t>(staff.voices, i + 1);
      }
      for (std::uint32_t k = 0; k < header.objects && in_.Ok(); ++k) {
        (void)ReadObject(in_);
        Poll();
      }
      Poll();
    }
  }

  void Poll() {
    if (++records_ % kPollEvery == 0 && stopped_ && stopped_()) in_.Invalid();
  }

  ScoreSource& in_;
  std::size_t layouts_;
  const std::function<bool()>& stopped_;
  unsigned records_ = 0;
};

}  // namespace

ScoreSystem ReadSystem(ScoreSource& in, std::size_t layouts, const std::function<bool()>& stopped) {
  return SystemReader(in, layouts, stopped).Read();
}

}  // namespace ts5
