#include "app/shell/command_table.h"

#include <algorithm>
#include <array>

#include "app/texts.h"
#include "frame/texts.h"
#include "search/texts.h"

namespace ts5 {
namespace {

using enum MenuId;
using C = CommandId;
namespace T = texts;
constexpr FilterId kAlways = FilterId::None;

constexpr std::array kCommands{
    Command{C::OpenList, File, false, T::MenuOpenList, "Ctrl+O", "", "Befehle-Datei-Öffnen.htm", kAlways},
    Command{C::SaveList, File, false, T::MenuSaveList, "Ctrl+S", "", "Befehle-Datei-Speichern.htm", kAlways},
    Command{C::PickFiles, File, true, T::MenuPickFiles, "Ctrl+A", "", "quellmedium.htm", kAlways},
    Command{C::FindFiles, File, false, T::MenuFindFiles, "F3", "", "quellmedium.htm", kAlways},
    Command{C::SelectAllFiles, File, false, T::MenuSelectAllFiles, "Ctrl+Shift+A", "", "quellmedium.htm",
            kAlways},
    Command{C::ClearList, File, true, T::MenuClearList, "Ctrl+Del", "", "quellmedium.htm", kAlways},
    Command{C::Delete, File, false, T::MenuDelete, "Del", "", "quellmedium.htm", kAlways},
    Command{C::MoveUp, File, false, T::MenuMoveUp, "Ctrl+Up", "", "quellmedium.htm", kAlways},
    Command{C::MoveDown, File, false, T::MenuMoveDown, "Ctrl+Down", "", "quellmedium.htm", kAlways},
    Command{C::Rename, File, false, T::MenuRename, "", "", "quellmedium.htm", kAlways},
    Command{C::PrinterSetup, File, true, T::MenuPrinterSetup, "", "", "", FilterId::Artworker},
    Command{C::ListenFile, File, true, T::MenuListenFile, "", "", "quellmedium.htm", kAlways},
    Command{C::Properties, File, false, T::MenuProperties, "Ctrl+E", "", "quellmedium.htm", kAlways},
    Command{C::ShowNotation, File, false, T::MenuShowNotation, "Ctrl+B", "", "notenbild.htm", kAlways},
    Command{C::Quit, File, true, T::MenuQuit, "Ctrl+W", "", "hauptfenster.htm", kAlways},

    Command{C::MaximiseList, View, false, T::MenuMaximiseList, "F5", "", "quellmedium.htm", kAlways},
    Command{C::FilterList, View, true, T::MenuFilterList, "Ctrl+F", "", "quellmedium.htm", kAlways},
    Command{C::ListColumns, View, false, T::MenuListColumns, "", "", "quellmedium.htm", kAlways},
    Command{C::TakeOrder, View, false, T::MenuTakeOrder, "", "", "quellmedium.htm", kAlways},
    Command{C::SwitchListMode, View, false, T::MenuSwitchListMode, "F10", "", "quellmedium.htm", kAlways},
    Command{C::SearchResults, View, true, T::MenuSearchResults, "", "", "Befehle-Aktion-Suchergebnisse.htm",
            FilterId::MidiSearch},

    Command{C::Run, Action, false, T::MenuRun, "Ctrl+Return Ctrl+Enter", "Space", "zielmedium.htm", kAlways},
    Command{C::Stop, Action, false, T::MenuStop, "Ctrl+End", "", "zielmedium.htm", kAlways},
    Command{C::UndoRun, Action, false, T::MenuUndoRun, "", "", "Befehle-aktion-ausführen-ergebnisse.htm",
            kAlways},
    Command{C::PlayerRestart, Action, false, T::CommandPlayerRestart, "", "Backspace", "playback.htm",
            FilterId::MidiPlayer},
    Command{C::PlayerPrevious, Action, false, T::CommandPlayerPrevious, "", "PgUp", "playback.htm",
            FilterId::MidiPlayer},
    Command{C::PlayerNext, Action, false, T::CommandPlayerNext, "", "PgDown", "playback.htm",
            FilterId::MidiPlayer},
    Command{C::CreateMp3Interface, Action, true, T::MenuCreateMp3Interface, "", "",
            "Befehle-Aktion-MP3Interfaceerstellen.htm", FilterId::AudioCompressor},
    Command{C::ManageMp3Interfaces, Action, false, T::MenuManageMp3Interfaces, "", "",
            "Befehle-Aktion-MP3Interfaceverwalten.htm", FilterId::AudioCompressor},
    Command{C::EraseDisc, Action, true, T::MenuEraseDisc, "", "", "Befehle-Aktion-DeleteDisc.htm",
            FilterId::CdBurner},
    Command{C::DiscInformation, Action, false, T::MenuDiscInformation, "", "", "laufwerke.htm",
            FilterId::CdBurner},
    Command{C::TrackPause, Action, false, T::MenuTrackPause, "", "", "freiedateiliste.htm",
            FilterId::CdBurner},
    Command{C::ShowSearchResult, Action, true, T::MenuShowSearchResult, "", "",
            "Befehle-Aktion-Suchergebnisse.htm", FilterId::MidiSearch},
    Command{C::PlayHit, Action, false, T::PlayHit, "F9", "", "Befehle-Aktion-Suchergebnisse.htm",
            FilterId::MidiSearch},
    Command{C::CopyHits, Action, false, T::CopyHits, "", "", "Befehle-Aktion-Suchergebnisse.htm",
            FilterId::MidiSearch},
    Command{C::PrintSearchResults, Action, false, T::MenuPrintSearchResults, "Ctrl+P", "",
            "Befehle-Aktion-Suchergebnisse.htm", FilterId::MidiSearch},
    Command{C::Settings, Action, true, T::MenuSettings, "", "", "Befehle-Aktion-Einstellungen-Allgemein.htm",
            kAlways},

    Command{C::NewJob, Job, false, T::MenuNewJob, "Ctrl+N", "", "Befehle-Job-Neu.htm", kAlways},
    Command{C::DeleteJob, Job, false, T::MenuDeleteJob, "Shift+Del", "", "Befehle-Job-Löschen.htm", kAlways},
    Command{C::RestoreJob, Job, false, T::MenuRestoreJob, "", "", "Befehle-Job-Löschen.htm", kAlways},
    Command{C::RenameJob, Job, false, T::MenuRenameJob, "", "", "Befehle-Job-Umbenennen.htm", kAlways},

    Command{C::HelpContents, Help, false, T::MenuHelpContents, "F1", "", "", kAlways},
    Command{C::ContextHelp, Help, false, T::MenuContextHelp, "Ctrl+F1", "", "", kAlways},
    Command{C::HelpUse, Help, true, T::MenuHelpUse, "", "", "hilfeverwenden.htm", kAlways},
    Command{C::HelpKeys, Help, false, T::MenuHelpKeys, "", "", "tastenkürzel.htm", kAlways},
    Command{C::About, Help, true, T::MenuAbout, "", "", "", kAlways},

    Command{C::StopByEscape, None, false, T::MenuStop, "Esc", "", "zielmedium.htm", kAlways},
    Command{C::TakeDrive, None, false, T::DriveSelectorName, "", "", "quellmedium.htm", kAlways},
    Command{C::NextArea, None, false, T::CommandNextArea, "F6", "", "tastenkürzel.htm", kAlways},
    Command{C::PreviousArea, None, false, T::CommandPreviousArea, "Shift+F6", "", "tastenkürzel.htm",
            kAlways},
    Command{C::ClearListSilently, None, false, T::MenuClearList, "", "", "quellmedium.htm", kAlways},
};

constexpr std::array<TextId, kMenuCount> kMenuTitles{T::MenuFile,   T::MenuFile, T::MenuView,
                                                     T::MenuAction, T::MenuJob,  T::MenuHelp};

}  // namespace

std::span<const Command> Commands() {
  return kCommands;
}

const Command& CommandOf(CommandId id) {
  return *std::ranges::find(kCommands, id, &Command::id);
}

TextId MenuTitle(MenuId menu) {
  return kMenuTitles.at(static_cast<std::size_t>(menu));
}

RunWording RunWordingOf(FilterId filter, RunState state) {
  const bool running = state != RunState::Idle;
  if (IsPlayer(filter)) {
    const bool plays = running && state != RunState::Paused && state != RunState::Stopped;
    return plays ? RunWording{T::RunButtonPause, T::MenuPause, T::MenuStopPlayback}
                 : RunWording{T::RunButtonPlay, T::MenuPlay, T::MenuStopPlayback};
  }
  const TextId stop = T::RunButtonCancel;  // what the button says while a disc is written
  switch (IsFilter(filter) ? Descriptor(filter).words : RunWords::Run) {
    case RunWords::Burn:
      return {running ? stop : T::RunButtonBurn, T::MenuBurn, T::MenuStop};
    case RunWords::Copy:
      return {running ? stop : T::RunButtonCopy, T::MenuCopy, T::MenuStop};
    default:
      return {T::RunButtonRun, T::MenuRun, T::MenuStop};
  }
}

bool RunButtonStops(FilterId filter, RunState state) {
  return Has(filter, kWritesDisc) && state != RunState::Idle;
}

}  // namespace ts5
