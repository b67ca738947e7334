// A drive that answers anything, with every reply out of the input. Its first byte chooses: what the program
// reads from a disc and says of it, or ('w') what it asks a recorder on the way to a disc. Of each reply a
// first byte below 64 refuses the command with the three sense bytes behind it; above, so many bytes behind
// it are the data, which go on from their beginning.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "disc/copy_source.h"
#include "disc/disc_info.h"
#include "disc/disc_plan.h"
#include "platform/disc/cd_drive.h"

using namespace ts5;

namespace {

constexpr std::size_t kMostCommands = 400;  // then there is no disc any more

class AnyDrive final : public ScsiTransport {
 public:
  explicit AnyDrive(ByteView input) : input_(input) {}

  ScsiReply Send(const ScsiCommand& command) override {
    if (++commands_ > kMostCommands || input_.empty()) return {false, {2, 0x3A, 0}, 0};
    const std::uint8_t what = Next();
    if (what < 64) {
      SenseData sense{Next(), Next(), Next()};
      // A drive that is getting ready would be waited for.
      if (sense.key == 2) sense.code = 0x3A;
      return {false, sense, 0};
    }
    const std::size_t count = std::min<std::size_t>(what - 64, command.in.size());
    for (std::size_t i = 0; i < count; ++i) command.in[i] = Next();
    for (std::size_t i = count; i < command.in.size() && count > 0; ++i)
      command.in[i] = command.in[i - count];
    return {true, {}, command.in.size()};
  }

 private:
  std::uint8_t Next() {
    if (input_.empty()) return 0;
    const std::uint8_t byte = input_.front();
    input_ = input_.subspan(1);
    return byte;
  }

  ByteView input_;
  std::size_t commands_ = 0;
};

void ReadDisc(CdDrive& drive) {
  const disc::DiscReport report = disc::ReadDiscReport(drive, true);
  (void)disc::DiscRows(report);
  if (!report.toc) return;
  for (const TocTrack& track : report.toc->tracks) (void)disc::TrackRows(drive, report, track.number);
  disc::CopySource source(drive, *report.toc);
  std::vector<disc::ProjectTrack> tracks;
  for (std::size_t i = 0; i < source.Tracks().size(); ++i) {
    (void)source.FindPauseOf(i);
    tracks.push_back(source.Project(i, true, source.Direct(i, true)));
  }
  if (tracks.empty()) return;
  const disc::DiscPlan plan = disc::DiscPlan::AtOnce(tracks, {});
  if (plan.layout.tracks.size() != tracks.size()) abort();
  Bytes sound(4 * kAudioSectorBytes);
  if (const auto stream = tracks.front().open()) (void)(*stream)->Read(sound);
}

void WriteDisc(CdDrive& drive) {
  (void)drive.Name();
  (void)drive.ReadCapabilities();
  (void)drive.SendOpc();
  WriteParameters wanted;
  wanted.catalogue = "0123456789012";
  (void)drive.SetWriteParameters(wanted);
  if (const auto next = drive.ReadNextWritable())
    (void)drive.WriteSectors(*next->nextWritable, Bytes(2 * kAudioSectorBytes));
  (void)drive.SynchronizeCache();
  (void)drive.Close(CloseWhat::Session);
  drive.SetAudioMute(true);
  Bytes sound(2 * kAudioSectorBytes);
  std::vector<bool> good;
  (void)drive.ReadCdAudioChecked(Lba{}, sound, good);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace std::chrono_literals;
  if (size == 0) return 0;
  CdDrive drive(std::make_unique<AnyDrive>(ByteView(data + 1, size - 1)), DrivePace{1ms, 0ms, 0ms});
  (data[0] == 'w' ? WriteDisc : ReadDisc)(drive);
  return 0;
}
