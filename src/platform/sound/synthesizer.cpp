#include "platform/sound/synthesizer.h"

#include <fluidsynth.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "platform/base/casts.h"
#include "platform/base/quiet.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

template <auto Free>
struct Deleter {
  template <typename T>
  void operator()(T* object) const {
    Free(object);
  }
};

void SilenceOnce() {
  static const bool silenced = [] {
    for (const int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG}) {
      fluid_set_log_function(level, nullptr, nullptr);
    }
    return true;
  }();
  (void)silenced;
}

}  // namespace

struct Synthesizer::State {
  std::unique_ptr<fluid_settings_t, Deleter<delete_fluid_settings>> settings;
  std::unique_ptr<fluid_synth_t, Deleter<delete_fluid_synth>> synth;
};

Synthesizer::Synthesizer(std::unique_ptr<State> state) : state_(std::move(state)) {}
Synthesizer::~Synthesizer() = default;

std::string Synthesizer::InstalledSoundFont() {
  const char* const chosen = std::getenv("STAVORA_SOUNDFONT");  // NOLINT(concurrency-mt-unsafe)
  const std::array<std::string, 4> places = {
      chosen != nullptr ? chosen : "", "/usr/share/sounds/sf2/TimGM6mb.sf2",
      "/usr/share/sounds/sf2/default-GM.sf2", "/usr/share/soundfonts/default.sf2"};
  const auto* const found = std::ranges::find_if(
      places, [](const std::string& place) { return !place.empty() && FileExists(place); });
  return found == places.end() ? std::string{} : *found;
}

Result<std::unique_ptr<Synthesizer>> Synthesizer::Create(std::uint32_t sampleRate,
                                                         const std::string& soundFont) {
  SilenceOnce();
  const std::string font = soundFont.empty() ? InstalledSoundFont() : soundFont;
  // A sound font is a RIFF form "sfbk"; anything else never reaches the library.
  const auto start = ReadFileStart(font, 12);
  if (!start || start->size() != 12 || !AsText(*start).starts_with("RIFF") ||
      !AsText(*start).ends_with("sfbk")) {
    return Failure(Outcome::SourceFailed);
  }

  const QuietLibraries quiet;
  auto state = std::make_unique<State>();
  state->settings.reset(new_fluid_settings());
  if (!state->settings) return Failure(Outcome::LibraryFailed);
  fluid_settings_setnum(state->settings.get(), "synth.sample-rate", sampleRate);
  fluid_settings_setint(state->settings.get(), "synth.midi-channels", 16);
  state->synth.reset(new_fluid_synth(state->settings.get()));
  if (!state->synth) return Failure(Outcome::LibraryFailed);
  if (fluid_synth_sfload(state->synth.get(), font.c_str(), 1) == FLUID_FAILED)
    return Failure(Outcome::SourceFailed);
  return std::unique_ptr<Synthesizer>(new Synthesizer(std::move(state)));
}

void Synthesizer::ShortMessage(std::uint32_t message) {
  fluid_synth_t* const synth = state_->synth.get();
  const int channel = static_cast<int>(message & 0x0F);
  const int first = static_cast<int>(message >> 8 & 0x7F);
  const int second = static_cast<int>(message >> 16 & 0x7F);
  switch (message & 0xF0) {
    case 0x80:
      fluid_synth_noteoff(synth, channel, first);
      break;
    case 0x90:
      if (second == 0) {
        fluid_synth_noteoff(synth, channel, first);
      } else {
        fluid_synth_noteon(synth, channel, first, second);
      }
      break;
    case 0xA0:
      fluid_synth_key_pressure(synth, channel, first, second);
      break;
    case 0xB0:
      fluid_synth_cc(synth, channel, first, second);
      break;
    case 0xC0:
      fluid_synth_program_change(synth, channel, first);
      break;
    case 0xD0:
      fluid_synth_channel_pressure(synth, channel, first);
      break;
    case 0xE0:
      fluid_synth_pitch_bend(synth, channel, first | second << 7);
      break;
    default:
      break;
  }
}

void Synthesizer::SystemExclusive(ByteView message) {
  if (message.size() < 3 || message.front() != 0xF0 || message.back() != 0xF7) return;
  const auto length = NarrowTo<int>(message.size() - 2);
  if (!length) return;
  fluid_synth_sysex(state_->synth.get(), reinterpret_cast<const char*>(message.data()) + 1, *length, nullptr,
                    nullptr, nullptr, 0);
}

void Synthesizer::Reset() {
  fluid_synth_system_reset(state_->synth.get());
}

void Synthesizer::Render(std::span<float> interleaved) {
  const auto frames = static_cast<int>(interleaved.size() / 2);
  fluid_synth_write_float(state_->synth.get(), frames, interleaved.data(), 0, 2, interleaved.data(), 1, 2);
}

}  // namespace ts5
