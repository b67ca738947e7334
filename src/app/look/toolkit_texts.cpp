#include "app/look/toolkit_texts.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>
#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace ts5 {
namespace {

using Row = std::pair<std::string_view, const char*>;

// By the toolkit's own text; in order of it.
constexpr auto kRows = std::to_array<Row>({
    {"%1\nFile not found.\nPlease verify the correct file name was given.",
     "%1\nDie Datei wurde nicht gefunden.\nBitte überprüfen Sie den Dateinamen."},
    {"%1 already exists.\nDo you want to replace it?",
     "%1 ist bereits vorhanden.\nSoll die Datei ersetzt werden?"},
    {"%1 bytes", "%1 Byte"},
    {"&Add to Custom Colors", "Zu den eigenen Farben &hinzufügen"},
    {"&Basic colors", "&Grundfarben"},
    {"&Choose", "&Wählen"},
    {"&Close", "&Schließen"},
    {"&Copy", "&Kopieren"},
    {"&Custom colors", "&Eigene Farben"},
    {"&Delete", "&Löschen"},
    {"&File name:", "&Dateiname:"},
    {"&Green:", "Grü&n:"},
    {"&HTML:", "HT&ML:"},
    {"&Help", "&Hilfe"},
    {"&New Folder", "&Neues Verzeichnis"},
    {"&No", "&Nein"},
    {"&OK", "&OK"},
    {"&Open", "Ö&ffnen"},
    {"&Paste", "&Einfügen"},
    {"&Pick Screen Color", "&Vom Bildschirm nehmen"},
    {"&Red:", "&Rot:"},
    {"&Redo", "&Wiederherstellen"},
    {"&Rename", "&Umbenennen"},
    {"&Sat:", "&Sättigung:"},
    {"&Save", "&Speichern"},
    {"&Select All", "&Alles auswählen"},
    {"&Step up", "Wert er&höhen"},
    {"&Undo", "&Rückgängig"},
    {"&Val:", "Hell&igkeit:"},
    {"&Yes", "&Ja"},
    {"'%1' is write protected.\nDo you want to delete it anyway?",
     "\"%1\" ist schreibgeschützt.\nSoll die Datei trotzdem gelöscht werden?"},
    {"A&lpha channel:", "De&ckkraft:"},
    {"All Files (*)", "Alle Dateien (*)"},
    {"Are you sure you want to delete '%1'?", "Wollen Sie \"%1\" wirklich löschen?"},
    {"Back", "Zurück"},
    {"Bl&ue:", "Bla&u:"},
    {"Bottom", "Zum Ende"},
    {"Cancel", "Abbrechen"},
    {"Close", "Schließen"},
    {"Computer", "Computer"},
    {"Copy &Link Location", "&Adresse des Verweises kopieren"},
    {"Create New Folder", "Neues Verzeichnis anlegen"},
    {"Create a New Folder", "Neues Verzeichnis anlegen"},
    {"Ctrl", "Strg"},
    {"Cu&t", "&Ausschneiden"},
    {"Cursor at %1, %2\nPress ESC to cancel", "Stelle %1, %2\nEsc bricht ab"},
    {"Date Modified", "Geändert am"},
    {"Del", "Entf"},
    {"Delete", "Löschen"},
    {"Detail View", "Einzelheiten"},
    {"Directories", "Verzeichnisse"},
    {"Directory:", "Verzeichnis:"},
    {"Drive", "Laufwerk"},
    {"File", "Datei"},
    {"File &name:", "Datei&name:"},
    {"File Folder", "Verzeichnis"},
    {"Files of type:", "Dateityp:"},
    {"Find Directory", "Verzeichnis suchen"},
    {"Folder", "Verzeichnis"},
    {"Forward", "Vor"},
    {"Go back", "Zurück"},
    {"Go forward", "Vor"},
    {"Go to the parent directory", "Zum übergeordneten Verzeichnis"},
    {"Hu&e:", "Farb&ton:"},
    {"Kind", "Art"},
    {"Left edge", "Ganz nach links"},
    {"List View", "Liste"},
    {"Look in:", "Suchen in:"},
    {"My Computer", "Computer"},
    {"Name", "Name"},
    {"New Folder", "Neues Verzeichnis"},
    {"OK", "OK"},
    {"Open", "Öffnen"},
    {"Page down", "Seite nach unten"},
    {"Page left", "Seite nach links"},
    {"Page right", "Seite nach rechts"},
    {"Page up", "Seite nach oben"},
    {"Parent Directory", "Übergeordnetes Verzeichnis"},
    {"Recent Places", "Zuletzt besucht"},
    {"Remove", "Entfernen"},
    {"Right edge", "Ganz nach rechts"},
    {"Save As", "Speichern unter"},
    {"Scroll Left", "Nach links rollen"},
    {"Scroll Right", "Nach rechts rollen"},
    {"Scroll down", "Nach unten rollen"},
    {"Scroll here", "Hierher rollen"},
    {"Scroll left", "Nach links rollen"},
    {"Scroll right", "Nach rechts rollen"},
    {"Scroll up", "Nach oben rollen"},
    {"Select All", "Alles auswählen"},
    {"Select Color", "Farbe wählen"},
    {"Shift", "Umschalt"},
    {"Shortcut", "Verknüpfung"},
    {"Show ", "Anzeigen "},
    {"Show &hidden files", "&Versteckte Dateien zeigen"},
    {"Sidebar", "Seitenleiste"},
    {"Size", "Größe"},
    {"Step &down", "Wert &verringern"},
    {"Top", "Zum Anfang"},
    {"Type", "Art"},
    {"Unknown", "Unbekannt"},
});
static_assert(std::is_sorted(kRows.begin(), kRows.end(),
                             [](const Row& a, const Row& b) { return a.first < b.first; }));

class ToolkitTexts : public QTranslator {
 public:
  using QTranslator::QTranslator;

  [[nodiscard]] QString translate(const char* /*context*/, const char* source, const char* /*remark*/,
                                  int /*number*/) const override {
    const std::string_view text(source != nullptr ? source : "");
    const auto row = std::lower_bound(kRows.begin(), kRows.end(), text,
                                      [](const Row& a, std::string_view b) { return a.first < b; });
    return row != kRows.end() && row->first == text ? QString::fromUtf8(row->second) : QString();
  }
  [[nodiscard]] bool isEmpty() const override { return false; }
};

}  // namespace

void InstallToolkitTexts(QCoreApplication& application) {
  QCoreApplication::installTranslator(new ToolkitTexts(&application));
  QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));  // dates and numbers likewise
}

}  // namespace ts5
