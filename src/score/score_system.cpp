#include "score/score_system.h"

#include <algorithm>

namespace ts5 {
namespace {

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
  SystemReader(ScoreSource& in, std::size_t layouts) : in_(in), layouts_(layouts) {}

  ScoreSystem Read() {
    ScoreSystem system;
    const SystemHeader header = ReadSystemHeader(in_);
    system.tempo = header.tempo;
    for (std::uint32_t i = 0; i < header.staves && in_.Ok(); ++i) {
      const StaffHeader staff = ReadStaffHeader(in_);
      in_.Require(staff.layout < layouts_);
      if (in_.Ok()) ReadVoices(staff.voices, StaffOf(system, staff));
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
      for (std::uint32_t k = 0; k < header.objects && in_.Ok(); ++k) (void)ReadObject(in_);
    }
  }

  ScoreSource& in_;
  std::size_t layouts_;
};

}  // namespace

ScoreSystem ReadSystem(ScoreSource& in, std::size_t layouts) {
  return SystemReader(in, layouts).Read();
}

}  // namespace ts5
