// The catalogue of the seventeen filters: what each is called, which files it takes, which panels the main
// window shows for it, and how its tile looks.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/filter_id.h"
#include "platform/strings.h"

namespace ts5 {

enum class DestinationKinds : std::uint32_t {
  File = 1,          // a file or directory only
  FileOrScreen = 2,  // the screen as well: the searches
};

// Panels of the main window while the filter is the current one; a descriptor holds a set of them.
enum PanelFlags : std::uint32_t {
  kPanelFile = 0x01,    // destination file or directory
  kPanelScreen = 0x04,  // destination screen with the protocol line
  kPanelMidiDevices = 0x08,
  kPanelAudioDevices = 0x10,
  kPanelDiscDrives = 0x20,  // writers
  kPanelPrinters = 0x40,
};

// What opens when the filter is chosen.
enum class ParameterWindow : std::uint8_t {
  Dialog,       // a modal dialog
  Playback,     // the job's playback window
  Modeless,     // a window that stays beside the main window
  DecoderPage,  // the settings page of the decoder of the selected file
};

struct FilterDescriptor {
  FilterId id;
  std::string_view identifier;  // "MidiConverter"
  TextId name;
  TextId description;
  ParameterWindow window;
  std::string_view dialogTemplate;  // "" for the players

  // Extensions without dot, lower case. An empty extension is matched only by an entry without one.
  std::span<const std::string_view> single;
  std::span<const std::string_view> several;
  std::span<const std::string_view>
      wholeList;  // not empty: runs over the whole list when nothing is selected

  DestinationKinds destinations;
  std::uint32_t panels;   // PanelFlags
  std::uint32_t colour1;  // 0x00BBGGRR, bottom of the tile
  std::uint32_t colour2;  // top of the tile

  [[nodiscard]] std::string_view Name() const { return Text(name); }
  [[nodiscard]] std::string_view Description() const { return Text(description); }
  [[nodiscard]] bool Shows(PanelFlags panel) const { return (panels & panel) != 0; }
};

// In FilterId order.
[[nodiscard]] std::span<const FilterDescriptor, kFilterCount> FilterCatalogue();
// id must be one of the seventeen.
[[nodiscard]] const FilterDescriptor& Descriptor(FilterId id);
// By identifier without regard to case, by display name, or by number; None when nothing fits.
[[nodiscard]] FilterId FindFilter(std::string_view text);

[[nodiscard]] constexpr bool IsPlayer(FilterId id) {
  return id == FilterId::MidiPlayer || id == FilterId::AudioPlayer || id == FilterId::ScorePlayer;
}
[[nodiscard]] constexpr bool IsSearch(FilterId id) {
  return id == FilterId::ScoreSearch || id == FilterId::MidiSearch;
}

// What the file type list of a save dialog depends on beside the filter.
struct TargetFilterContext {
  bool wmaInterface = false;  // the chosen encoder interface makes Windows Media files
  bool sourceIsXml = false;   // the source is an .xml file
};
// The file types of the save dialog for a destination, as "label|patterns|".
[[nodiscard]] std::string_view TargetFileFilter(FilterId id, TargetFilterContext context);

// One row of a file dialog's type list.
struct FileFilter {
  std::string label;                  // "Mididatei (*.mid;*.rmi;*.rdl)"
  std::vector<std::string> patterns;  // "*.mid", "*.rmi", "*.rdl"
};
// Takes "label|pattern;pattern|label|...|" apart.
[[nodiscard]] std::vector<FileFilter> ParseFileFilter(std::string_view text);

}  // namespace ts5
