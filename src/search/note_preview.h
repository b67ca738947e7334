// Lets single notes sound while they are entered, on a thread of its own: opening a device never makes the
// editor wait. The device stays open between the notes. Of notes that come faster than they sound the last
// one counts; a device that cannot be opened, or has gone, stays silent until another one is asked for.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/base/outcome.h"
#include "platform/sound/midi_out.h"

namespace ts5 {

class NotePreview {
 public:
  using Opener = std::function<Result<std::unique_ptr<MidiOutput>>(const std::string& device)>;

  explicit NotePreview(Opener opener);
  ~NotePreview();
  NotePreview(const NotePreview&) = delete;
  NotePreview& operator=(const NotePreview&) = delete;

  // key and program: 0..127; others are silent.
  void Play(const std::string& device, int program, int key);
  // Ends the sound and closes the device; when it returns, others can open it.
  void Release();

 private:
  struct Note {
    std::string device;
    std::uint8_t program;
    std::uint8_t key;
  };
  void Run(const std::stop_token& stop);

  Opener opener_;
  std::mutex mutex_;
  std::condition_variable_any changed_;
  std::optional<Note> next_;
  std::jthread thread_;  // from the first note to Release
};

}  // namespace ts5
