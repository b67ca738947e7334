// The one table of the workbench's commands. It makes the menus, the keyboard accelerators, the status-bar
// hints (the text of the command's number in the string table) and the help topics.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "frame/filter_catalogue.h"
#include "frame/run_state.h"
#include "platform/base/strings.h"

namespace ts5 {

enum class CommandId : std::uint16_t {
  HelpContents = 522,
  HelpUse = 524,
  HelpKeys = 526,
  TrackPause = 529,
  Settings = 20151,
  About = 40001,
  Quit = 40002,
  MaximiseList = 40003,
  StopByEscape = 40005,
  TakeDrive = 40007,
  NextArea = 40009,
  Run = 40012,
  Delete = 40013,
  Rename = 40014,
  PickFiles = 40015,
  FindFiles = 40016,
  MoveUp = 40017,
  MoveDown = 40018,
  OpenList = 40019,
  SaveList = 40020,
  ClearList = 40022,
  Properties = 40024,
  Stop = 40025,
  DeleteJob = 40026,
  RenameJob = 40027,
  NewJob = 40028,
  SearchResults = 40029,
  CreateMp3Interface = 40030,
  ManageMp3Interfaces = 40031,
  DiscInformation = 40032,
  ContextHelp = 40033,
  SwitchListMode = 40071,
  ShowSearchResult = 40073,
  ClearListSilently = 40075,
  PlayerRestart = 40086,
  PlayerPrevious = 40087,
  PlayerNext = 40088,
  PreviousArea = 40172,
  PrintSearchResults = 40173,
  PrinterSetup = 40174,
  EraseDisc = 40178,
  PlayHit = 40180,
  CopyHits = 40181,
  RestoreJob = 40182,
  ShowNotation = 40183,
  SelectAllFiles = 40184,
  ListenFile = 40190,
  FilterList = 40195,
  ListColumns = 40196,
  TakeOrder = 40197,
  UndoRun = 40198,
};

// Commands with a running number: job buttons, filter tiles and the collapse buttons of the tiles.
inline constexpr int kFirstJobCommand = 2002;
inline constexpr int kFirstTileCommand = 4003;
inline constexpr int kFirstToggleCommand = 4020;

enum class MenuId : std::uint8_t { None, File, View, Action, Job, Help };
inline constexpr std::size_t kMenuCount = 6;

struct Command {
  CommandId id;
  MenuId menu;
  bool startsGroup;             // a line above it in its menu
  TextId text;                  // menu text, with its keys after a tab where it has some
  std::string_view keys;        // everywhere; portable key names separated by blanks
  std::string_view playerKeys;  // only while the active job's filter is a player
  std::string_view helpTopic;   // "" for the contents
  FilterId needs;               // the filter whose room carries the command out; None when it is always there
};

[[nodiscard]] std::span<const Command> Commands();
[[nodiscard]] const Command& CommandOf(CommandId id);
// The title of a menu in the menu bar.
[[nodiscard]] TextId MenuTitle(MenuId menu);

// Which keys are live. Off: while a list label is edited.
enum class AcceleratorTable : std::uint8_t { Off, Standard, Player };
[[nodiscard]] inline AcceleratorTable AcceleratorsOf(FilterId filter) {
  return IsPlayer(filter) ? AcceleratorTable::Player : AcceleratorTable::Standard;
}

// What the run commands are called under a filter: conversions are carried out, players play and pause,
// discs are burnt or copied.
struct RunWording {
  TextId button;
  TextId menu;
  TextId stopMenu;
};
[[nodiscard]] RunWording RunWordingOf(FilterId filter, RunState state);
// While a disc is written, the run button is the one that cancels.
[[nodiscard]] bool RunButtonStops(FilterId filter, RunState state);

}  // namespace ts5
