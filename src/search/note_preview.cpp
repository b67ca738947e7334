#include "search/note_preview.h"

#include <chrono>
#include <utility>

namespace ts5 {
namespace {

constexpr auto kLength = std::chrono::milliseconds(350);
constexpr std::uint8_t kProgramChange = 0xC0;
constexpr std::uint8_t kNoteOn = 0x90;
constexpr std::uint8_t kVelocity = 100;

}  // namespace

NotePreview::NotePreview(Opener opener) : opener_(std::move(opener)) {}

NotePreview::~NotePreview() {
  Release();
}

void NotePreview::Play(const std::string& device, int program, int key) {
  if (key < 0 || key > 127 || program < 0 || program > 127) return;
  {
    const std::scoped_lock lock(mutex_);
    next_ = Note{device, static_cast<std::uint8_t>(program), static_cast<std::uint8_t>(key)};
  }
  changed_.notify_one();
  if (!thread_.joinable()) thread_ = std::jthread([this](const std::stop_token& stop) { Run(stop); });
}

void NotePreview::Release() {
  thread_ = {};
  next_.reset();
}

void NotePreview::Run(const std::stop_token& stop) {
  std::unique_ptr<MidiOutput> output;
  std::optional<std::string> opened;  // the device that was asked for last
  std::unique_lock lock(mutex_);
  while (changed_.wait(lock, stop, [this] { return next_.has_value(); })) {
    const Note note = *std::exchange(next_, std::nullopt);
    lock.unlock();
    if (opened != note.device) {
      output.reset();
      opened = note.device;
      if (auto device = opener_(note.device)) output = *std::move(device);
    }
    bool sounds = output && Succeeded(output->Send(ShortMidiMessage(kProgramChange, note.program))) &&
                  Succeeded(output->Send(ShortMidiMessage(kNoteOn, note.key, kVelocity)));
    lock.lock();
    if (!sounds) {
      output.reset();
      continue;
    }
    changed_.wait_for(lock, stop, kLength, [this] { return next_.has_value(); });
    if (Failed(output->Send(ShortMidiMessage(kNoteOn, note.key, 0)))) output.reset();
  }
}

}  // namespace ts5
