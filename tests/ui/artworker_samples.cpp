// The windows of the Artworker with something in them.
#include <QKeyEvent>
#include <QTabWidget>
#include <algorithm>

#include "artworker/background_list.h"
#include "artworker/templates.h"
#include "artworker/ui/artworker_window.h"
#include "artworker/ui/background_dialog.h"
#include "artworker/ui/fit_dialog.h"
#include "artworker/ui/layout_canvas.h"
#include "artworker/ui/shape_dialogs.h"
#include "artworker/ui/sheets_dialog.h"
#include "artworker/ui/symbol_dialog.h"
#include "artworker/ui/template_gallery.h"
#include "artworker/ui/text_dialog.h"
#include "dialogs_support.h"

namespace ts5 {
namespace {

using namespace artworker;

// What the windows refer to lives as long as the program.
struct Ground {
  std::vector<ArtworkBackground> stored = {{0xFFFFFF, 0xFFFFFF, 0, "Weiß Uni"},
                                           {0x7A4E1D, 0xF7D38F, 1, "Morgen"}};
  BackgroundList::Links links = {.load = [this] { return stored; },
                                 .save =
                                     [this](const std::vector<ArtworkBackground>& all) {
                                       stored = all;
                                       return Outcome::Success;
                                     }};
  BackgroundList backgrounds{links};
  ArtworkerParameters parameters;
};
Ground& TheGround() {
  static Ground ground;
  return ground;
}

std::unique_ptr<QWidget> Editor(DialogHost& host, int page) {
  Ground& ground = TheGround();
  const std::vector<Template> templates = LoadTemplates(TemplateDirectory());
  const auto concert = std::ranges::find(templates, "Konzert", &Template::name);
  if (concert != templates.end())
    ground.parameters.layout = AdoptTemplate(*concert, ground.backgrounds).value_or(NewLayout());
  ArtworkerWindow::Subject subject;
  subject.title = "Chorprobe";
  subject.parameters = [&ground] { return &ground.parameters; };
  subject.running = [] { return false; };
  subject.printers = {"PDF-Datei"};
  subject.folder = "/home/clara/Musik";
  subject.backgrounds = ground.links;
  subject.facts = SampleDisc;
  subject.printerChosen = [] {};
  subject.print = [] {};
  subject.edited = [] {};
  subject.fits = {.load = [](const std::string&) { return PrinterFit{}; },
                  .save = [](const std::string&, const PrinterFit&) { return Outcome::Success; }};
  auto window = std::make_unique<ArtworkerWindow>(std::move(subject), host, nullptr);
  Child<QTabWidget>(*window, "pages").setCurrentIndex(page);
  if (page == 2) {
    LayoutCanvas& canvas = window->CanvasOf(ArtworkObjectId::Booklet);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_PageUp, Qt::NoModifier);
    for (int i = 0; i < 2; ++i) QApplication::sendEvent(&canvas, &key);
  }
  return window;
}

ArtworkElement SampleElement(decltype(ArtworkElement::content) content) {
  ArtworkElement element;
  element.content = std::move(content);
  element.borderWidth = 5;
  element.box = {100, 100, 800, 300};
  return element;
}

}  // namespace

std::vector<WindowSample> ArtworkerWindowSamples() {
  const auto editor = [](const char* name, int page) {
    return WindowSample{name, [page](DialogHost& host) { return Editor(host, page); }};
  };
  return {editor("artworker-label", 0),
          editor("artworker-heftchen", 2),
          editor("artworker-layout", 3),
          editor("artworker-optionen", 4),
          {"artworker-vorlagen",
           [](DialogHost& host) {
             auto gallery = std::make_unique<TemplateGallery>(LoadTemplates(TemplateDirectory()), DiscFacts{},
                                                              host, nullptr);
             for (int i = 0; i < 40; ++i) QApplication::processEvents();
             return gallery;
           }},
          {"artworker-text",
           [](DialogHost& host) {
             TextField field;
             SetText(field, "{Interpret}\n{Titel}");
             return std::make_unique<TextDialog>(SampleElement(field), TheGround().backgrounds, host,
                                                 nullptr);
           }},
          {"artworker-ellipse",
           [](DialogHost& host) {
             return std::make_unique<EllipseDialog>(SampleElement(Ellipse{}), TheGround().backgrounds, host,
                                                    nullptr);
           }},
          {"artworker-abbildung",
           [](DialogHost& host) {
             Image image;
             image.file = TemplateDirectory() + "/konzert_label.svg";
             const auto keep = [](const QImage&) { return Result<std::string>(std::string()); };
             return std::make_unique<ImageDialog>(SampleElement(image), TheGround().backgrounds,
                                                  std::string(), keep, host, nullptr);
           }},
          {"artworker-hintergrund",
           [](DialogHost& host) {
             return std::make_unique<BackgroundDialog>(TheGround().backgrounds, host, nullptr);
           }},
          {"artworker-blaetter",
           [](DialogHost& host) {
             ArtworkerParameters parameters = TheGround().parameters;
             parameters.backgrounds = TheGround().stored;
             parameters.disc = SampleDisc();
             parameters.labelGrid = {1, 2};
             parameters.shareSheet = true;
             parameters.printMarks = kAllObjects;
             return std::make_unique<SheetsDialog>(parameters, host, nullptr);
           }},
          {"artworker-drucker",
           [](DialogHost& host) {
             return std::make_unique<FitDialog>("Laserdrucker_Probenraum", PrinterFit{.right = 5, .down = -3},
                                                host, nullptr);
           }},
          {"artworker-symbol",
           [](DialogHost& host) { return std::make_unique<SymbolDialog>(QFont("Arial"), host, nullptr); }}};
}

}  // namespace ts5
