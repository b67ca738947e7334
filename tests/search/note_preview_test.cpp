#include "search/note_preview.h"

#include <gmock/gmock.h>

#include <condition_variable>
#include <mutex>

namespace ts5 {
namespace {

using ::testing::ElementsAre;

// What devices got, and how many are open.
struct Devices {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::string> opened;
  std::vector<std::uint32_t> messages;
  int open = 0;

  void WaitFor(std::size_t count) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return messages.size() >= count; });
  }
};

class Recorded final : public MidiOutput {
 public:
  explicit Recorded(Devices& devices) : devices_(devices) {}
  ~Recorded() override {
    const std::scoped_lock lock(devices_.mutex);
    --devices_.open;
  }
  Outcome Send(std::uint32_t message) override {
    {
      const std::scoped_lock lock(devices_.mutex);
      devices_.messages.push_back(message);
    }
    devices_.changed.notify_all();
    return Outcome::Success;
  }
  Outcome SendSystemExclusive(ByteView) override { return Outcome::Success; }

 private:
  Devices& devices_;
};

TEST(NotePreviewTest, KeepsItsDeviceAndEndsEveryNote) {
  Devices devices;
  NotePreview preview([&](const std::string& name) -> Result<std::unique_ptr<MidiOutput>> {
    const std::scoped_lock lock(devices.mutex);
    devices.opened.push_back(name);
    if (name == "fort") return Failure(Outcome::TargetFailed);
    ++devices.open;
    return std::make_unique<Recorded>(devices);
  });
  preview.Play("Orgel", 19, 60);
  devices.WaitFor(3);
  preview.Play("Orgel", 19, 62);
  devices.WaitFor(6);
  preview.Play("Orgel", 19, 128);  // no key
  preview.Release();
  EXPECT_EQ(devices.open, 0);
  EXPECT_THAT(devices.opened, ElementsAre("Orgel"));
  EXPECT_THAT(devices.messages, ElementsAre(0x13C0U, 0x643C90U, 0x003C90U, 0x13C0U, 0x643E90U, 0x003E90U));
  // A device that does not open is silent; another one is opened all the same.
  preview.Play("fort", 0, 60);
  preview.Play("Flöte", 0, 64);
  devices.WaitFor(8);
  preview.Release();
  EXPECT_EQ(devices.open, 0);
  EXPECT_EQ(devices.messages.back(), 0x004090U);
}

}  // namespace
}  // namespace ts5
