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

void ReadVoices(ScoreSource& in, std::uint32_t count, SystemStaff& staff) {
  for (std::uint32_t i = 0; i < count && in.Ok(); ++i) {
    const VoiceHeader header = ReadVoiceHeader(in);
    if (i < kMaxVoices) {
      staff.places[i] = {in.Position(), header.objects};
      staff.voices = std::max<std::size_t>(staff.voices, i + 1);
    }
    for (std::uint32_t k = 0; k < header.objects && in.Ok(); ++k) (void)ReadObject(in);
  }
}

}  // namespace

ScoreSystem ReadSystem(ScoreSource& in, std::size_t layouts) {
  ScoreSystem system;
  const SystemHeader header = ReadSystemHeader(in);
  system.tempo = header.tempo;
  for (std::uint32_t i = 0; i < header.staves && in.Ok(); ++i) {
    const StaffHeader staff = ReadStaffHeader(in);
    in.Require(staff.layout < layouts);
    if (in.Ok()) ReadVoices(in, staff.voices, StaffOf(system, staff));
  }
  return system;
}

}  // namespace ts5
