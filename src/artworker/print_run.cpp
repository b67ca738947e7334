#include "artworker/print_run.h"

#include <QBuffer>
#include <QByteArray>
#include <QGuiApplication>
#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>

#include "artworker/element_notes.h"
#include "artworker/layout_file.h"
#include "artworker/pages.h"
#include "artworker/printers.h"
#include "artworker/sheet_painter.h"
#include "artworker/sheet_plan.h"
#include "artworker/texts.h"
#include "frame/failure_reason.h"
#include "frame/run.h"
#include "frame/run_target.h"
#include "frame/target_naming.h"
#include "frame/texts.h"
#include "platform/base/bytes.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/fault.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5::artworker {
namespace {

constexpr std::array kObjectNames = {texts::ArtworkLabel, texts::ArtworkInlay, texts::ArtworkBooklet};

const std::array kRemarks = {
    Remark{Code(Outcome::OutOfMemory), texts::RemarkOutOfMemory},
    Remark{Code(Outcome::Cancelled), texts::RemarkCancelled},
    Remark{Code(Outcome::TargetFailed), texts::RemarkTargetFailed},
    Remark{Code(Outcome::WriteFailed), texts::RemarkWriteFailed},
    Remark{kDrawingFailed, texts::RemarkDrawingFailed},
    Remark{kPrinterFailed, texts::RemarkPrinterFailed},
    Remark{kDocumentNotBegun, texts::RemarkPrintingFailed},
    Remark{kPageNotEnded, texts::RemarkPageFailed},
    Remark{kDocumentNotEnded, texts::RemarkDocumentFailed},
};

std::string PrinterName(const std::string& printer) {
  return printer.empty() ? std::string(Text(texts::PdfPrinter)) : printer;
}

std::vector<ArtworkBackground> BackgroundsOf(const ArtworkerParameters& parameters) {
  if (!parameters.backgrounds.empty()) return parameters.backgrounds;
  return {ArtworkBackground{
      .colour1 = std::uint32_t{kMaxColour}, .colour2 = std::uint32_t{kMaxColour}, .gradient = 0, .name = {}}};
}

// One document: where its bytes go until it is whole, and what happens to it then.
class Printing {
 public:
  Printing(Run& run, const ArtworkerParameters& parameters)
      : run_(run),
        parameters_(parameters),
        layout_(FilledLayout(parameters_.layout, parameters_.disc)),
        backgrounds_(BackgroundsOf(parameters_)),
        printer_(PrinterName(run.Devices().output.empty() ? parameters_.printer : run.Devices().output)),
        naming_(run.GetJob(), run.Destination(), run.Files()) {}

  void Print() {
    run_.StatusText(Text(texts::PrintBegins));
    SheetPlan plan = PlanSheets(parameters_);
    if (parameters_.calibration) plan.sheets.push_back({CalibrationSheet(), {}});
    run_.StatusText(Text(texts::PrinterInitialising));
    RunItem item;
    item.destination = printer_;
    ForgetFault();
    item.code = printer_ == Text(texts::PdfPrinter) ? IntoFile(plan, item.destination) : OntoPaper(plan);
    run_.Result().counts[0] = printed_;
    if (item.code == 0) {
      run_.StatusText(Text(texts::PrintEnded));
    } else {
      run_.AddStatus({.code = item.code, .number = item.code == kDrawingFailed ? kDrawingNotCopied : 0});
      if (const auto fault = TakeFault())
        item.reason = FailureReason(Outcome::WriteFailed, {}, item.destination, fault);
    }
    std::vector<std::string> remarks = run_.Remarks();
    if (!item.reason.empty()) remarks.push_back(item.reason);
    if (plan.apart) remarks.emplace_back(Text(texts::SheetsApart));
    for (std::string& lack : LacksOf(parameters_.layout, parameters_.printWhat))
      remarks.push_back(std::move(lack));
    run_.Result().remarks = std::move(remarks);
    run_.Result().items.push_back(std::move(item));
  }

 private:
  // These give the code that the run ends with, 0 for success.

  std::int32_t IntoFile(const SheetPlan& plan, std::string& name) {
    PlannedTarget target = NameTarget();
    name = target.name;
    if (Failed(target.code)) return Code(target.code);
    if (target.taking == Taking::Ask && run_.Files().exists(target.name)) {
      if (!MayReplace(target.name)) return Code(Outcome::Cancelled);
      target.taking = Taking::Replace;
    }
    (void)ClearAbandonedFiles(std::string(DirectoryOf(target.name)));
    auto file = StagedFile::Create(target.name);
    if (!file) return Code(file.error());
    if (const std::int32_t code = Draw(plan, *file); code != 0) return code;
    const auto taken = PutTarget(run_, *file, std::move(target), naming_,
                                 [this](const std::string& there) { return MayReplace(there); });
    if (!taken && taken.error() == Outcome::Cancelled) return Code(Outcome::Cancelled);
    if (!taken) return NotEnded(kDocumentNotEnded);
    name = *taken;
    printed_ = drawn_;
    return 0;
  }

  std::int32_t OntoPaper(const SheetPlan& plan) {
    const auto printers = SystemPrinters();
    if (std::ranges::find(printers, printer_) == printers.end()) return kPrinterFailed;
    for (const Sheet& sheet : plan.sheets) {
      if (!TakesPaper(printer_, sheet.size) && !MayUseOtherPaper(sheet.size)) return Code(Outcome::Cancelled);
    }
    // A document that is sent to a printer has one paper.
    for (const SheetPlan& document : ByPaper(plan)) {
      if (const std::int32_t code = Send(document); code != 0) return code;
      printed_ = drawn_;
    }
    return 0;
  }

  std::int32_t Send(const SheetPlan& plan) {
    auto spool = TemporaryFile::Create(kTemporaryPrefix, {}, ".pdf");
    auto file = spool ? StagedFile::Create(spool->Path()) : Failure(spool.error());
    if (!file) return Code(file.error());
    if (const std::int32_t code = Draw(plan, *file); code != 0) return code;
    if (Failed(file->Commit())) return NotEnded(kDocumentNotEnded);
    if (SendDocument(printer_, spool->Path(), plan.sheets.front().size, [this] { return run_.Cancelled(); }))
      return 0;
    return run_.Cancelled() ? Code(Outcome::Cancelled) : kPrinterFailed;
  }

  std::int32_t Draw(const SheetPlan& plan, StagedFile& file) {
    run_.StatusText(Text(texts::PrinterInitialised));
    run_.StatusText(Text(texts::DocumentPreparing));
    PdfDocument document(file, QString::fromUtf8(Text(texts::ArtworkDocument)));
    run_.StatusText(Text(texts::DocumentPrepared));
    for (std::size_t i = 0; i < plan.sheets.size(); ++i) {
      if (run_.Cancelled()) return Code(Outcome::Cancelled);
      run_.Progress(static_cast<std::uint32_t>(i + 1), static_cast<std::uint32_t>(plan.sheets.size()));
      if (!document.BeginPage(plan.sheets[i].size, parameters_.fit))
        return i == 0 ? kDocumentNotBegun : NotEnded(kPageNotEnded);
      if (run_.Cancelled()) return Code(Outcome::Cancelled);
      if (!DrawSheet(document, plan.sheets[i])) return kDrawingFailed;
    }
    return Failed(document.Finish()) ? NotEnded(kDocumentNotEnded) : 0;
  }

  bool DrawSheet(PdfDocument& document, const Sheet& sheet) {
    QPainter& page = document.Page();
    if (sheet.objects.empty()) PaintCalibration(page, sheet.size, printer_, parameters_.fit);
    const PlacedObject* before = nullptr;
    for (const PlacedObject& placed : sheet.objects) {
      const std::string_view name = Text(kObjectNames[IndexOf(placed.id)]);
      const bool another = before == nullptr || before->id != placed.id;
      if (another) run_.StatusText(Format(Text(texts::ObjectSending), name));
      PaintPlaced(page,
                  {layout_, backgrounds_, pictures_, Holds(parameters_.printBorder, placed.id), kPicturesDpi},
                  placed);
      if (Holds(parameters_.printMarks, placed.id)) PaintMarks(page, layout_, placed);
      before = &placed;
      if (document.Broken()) {
        run_.StatusText(Format(Text(texts::ObjectNotSent), name));
        return false;
      }
      if (!another) continue;
      run_.StatusText(Format(Text(texts::ObjectSent), name));
      run_.StatusText(Format(Text(texts::ObjectEnding), name));
      run_.StatusText(Format(Text(texts::ObjectEnded), name));
      ++drawn_;
    }
    return !document.Broken();
  }

  std::int32_t NotEnded(std::int32_t code) {
    run_.StatusText(Text(texts::PageNotEnded));
    return code;
  }

  // What the user named, else a name beside the layout's file.
  PlannedTarget NameTarget() {
    const std::string& chosen = run_.GetJob().destinationName;
    if (!chosen.empty()) return naming_.Chosen(chosen);
    const std::string unnamed =
        JoinPath(HomeDirectory(), Format("%s.%s", Text(texts::ArtworkDocument), kLayoutExtension));
    const std::string& layout = parameters_.fileName;
    return naming_.Automatic({.extension = "pdf"}, layout.empty() ? unnamed : layout);
  }

  bool MayReplace(const std::string& target) {
    run_.StatusText(target);
    return run_.Ask({.text = std::string(Text(texts::AskOverwriteTarget)),
                     .icon = MessageIcon::Exclamation}) == Answer::Yes;
  }

  bool MayUseOtherPaper(Size sheet) {
    const std::string text = Format(Text(texts::AskOtherPaper), printer_, sheet.width, sheet.height);
    run_.ProtocolLine(Split(text, '\n').front());
    return run_.Ask({.text = text, .icon = MessageIcon::Exclamation}) == Answer::Yes;
  }

  // That of the first object that is printed, else of the label.
  [[nodiscard]] Size CalibrationSheet() const {
    for (const ArtworkObjectId id : kObjectIds) {
      if (Holds(parameters_.printWhat, id)) return parameters_.layout.Object(id).sheet;
    }
    return parameters_.layout.objects.front().sheet;
  }

  Run& run_;
  const ArtworkerParameters& parameters_;
  ArtworkLayout layout_;  // filled
  std::vector<ArtworkBackground> backgrounds_;
  std::string printer_;
  TargetNaming naming_;
  Pictures pictures_;
  std::uint32_t drawn_ = 0;    // objects
  std::uint32_t printed_ = 0;  // those in documents that came to their end
};

}  // namespace

void RunArtworkerPrint(Run& run, const ArtworkerParameters& parameters) {
  Printing(run, parameters).Print();
}

void TakeGround(ArtworkerParameters& parameters, const Registry& registry) {
  parameters.backgrounds = LoadBackgrounds(registry);
  parameters.fit = LoadPrinterFit(registry, PrinterName(parameters.printer));
}

void PrepareDrawing() {
  if (QCoreApplication::instance() != nullptr) return;
  // What the toolkit has to say of a machine without a desktop is of no use to anybody.
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  static int count = 3;
  static std::array<char[16], 3> words = {"stavora-ts5", "-platform", "offscreen"};
  static std::array<char*, 4> arguments = {words[0], words[1], words[2], nullptr};
  static const QGuiApplication application(count, arguments.data());
}

Result<Bytes> PictureFile(const ArtworkerParameters& parameters, ArtworkObjectId id, double dpi) {
  Pictures pictures;
  const std::vector<ArtworkBackground> backgrounds = BackgroundsOf(parameters);
  const ArtworkLayout layout = FilledLayout(parameters.layout, parameters.disc);
  const QImage picture =
      PictureOf({layout, backgrounds, pictures, Holds(parameters.printBorder, id)}, id, dpi);
  if (picture.isNull()) return Failure(Outcome::InvalidParameter);
  QByteArray png;
  QBuffer buffer(&png);
  if (!picture.save(&buffer, "PNG")) return Failure(Outcome::OutOfMemory);
  return Bytes(png.begin(), png.end());
}

FilterModule ArtworkerModule() {
  using P = ArtworkerParameters;
  ModuleOf<P> module;
  module.id = FilterId::Artworker;
  module.fields = ArtworkerFields();
  module.remarks = kRemarks;
  module.missing = [](const P& own) -> std::optional<TextId> {
    if (own.printWhat == 0 && !own.calibration) return texts::NothingToPrint;
    return std::nullopt;
  };
  module.run = RunArtworkerPrint;
  return MakeModule(std::move(module));
}

}  // namespace ts5::artworker
