#include "batch/job_surroundings.h"

#include "frame/cd_tracks.h"
#include "modules/filter_modules.h"
#include "platform/disc/volumes.h"

namespace ts5::batch {

JobSurroundings SystemJobSurroundings() {
  return JobSurroundingsOf(VolumeTable::OfThisMachine(), FindModule, FindAudioCd);
}

}  // namespace ts5::batch
