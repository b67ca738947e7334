#include "converters/xml_converter.h"

#include <algorithm>

#include "converters/item_losses.h"
#include "converters/score_formats.h"
#include "converters/texts.h"
#include "frame/item_run.h"
#include "frame/loss_remarks.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/input_file.h"
#include "platform/files/paths.h"
#include "score/score_info.h"

namespace ts5::converters {
namespace {

constexpr Remark kRemarks[] = {
    {-104, texts::RemarkWrongFormat},    {-1400, texts::XmlRemarkNotCreated},
    {-1401, texts::XmlRemarkInfo},       {-1402, texts::XmlRemarkElement},
    {-1403, texts::XmlRemarkLayout},     {-1405, texts::XmlRemarkSystem},
    {-1408, texts::XmlRemarkUnexpected}, {-1, texts::XmlRemarkUnexpected},
    {-6, texts::XmlRemarkUnexpected},    {-300, texts::XmlRemarkSource},
    {-103, texts::XmlRemarkNotOpened},   {-101, texts::RemarkWriteFailed},
    {-200, texts::XmlRemarkNotCreated},  {-7, texts::XmlRemarkNotDone},
    {-5, texts::RemarkCancelled},        {-2, texts::RemarkOutOfMemory},
};

// What the filter calls the faults of the readers.
Outcome Told(Outcome code) {
  switch (code) {
    case Outcome::OldScore:
      return Outcome::WrongFormat;
    case Outcome::DamagedScore:
    case Outcome::ReadFailed:
      return Outcome::SourceFailed;
    default:
      return code;
  }
}

ScoreFormat TargetFormat(const std::string& target, ScoreFormat source) {
  if (const auto named = ScoreFormatOfName(target)) return *named;
  return source == ScoreFormat::StvXml || source == ScoreFormat::Score ? ScoreFormat::MusicXml
                                                                       : ScoreFormat::StvXml;
}

Outcome ConvertItem(const XmlConverterParameters& own, ItemWork& work) {
  const CancelCheck cancelled = [&work] { return work.Cancelled(); };
  const auto input = InputFile::Open(work.source);
  if (!input) return Outcome::SourceNotOpened;
  auto file = input->ReadAll(kMaxScoreFile, cancelled);
  if (!file) return Told(file.error());
  const auto source = ScoreFormatOf(*file);
  auto score = ReadAnyScore(*file, cancelled);
  *file = {};  // the document has it all
  if (!score) {
    const ScoreFault& fault = score.error();
    if (fault.bar >= 0 && fault.staff >= 0 && Told(fault.code) == Outcome::SourceFailed)
      work.line = Format(Text(texts::XmlRemarkSourceAt), fault.bar + 1, fault.staff + 1);
    return Told(fault.code);
  }
  constexpr double kRead = 0.5;  // of the work
  work.progress(kRead);
  ApplyObjectMask(score->document, static_cast<std::uint32_t>(own.objects));
  const ScoreFormat format = TargetFormat(work.targetName, *source);
  const WorkWatch watch{cancelled, [&work](double done) { work.progress(kRead + done * (1 - kRead)); }};
  const auto written = WriteAnyScore(score->document, format, score->losses, watch);
  if (!written) return written.error();
  return WriteWithLosses(work, *written, ItemLosses(score->losses));
}

void RunXmlConverter(Run& run, const XmlConverterParameters& own) {
  ItemFilter filter;
  filter.independent = true;
  filter.convert = [&own](ItemWork& work) { return ConvertItem(own, work); };
  RunItems(run, filter);
  AddLossRemarks(run.Result());
}

}  // namespace

FilterModule XmlConverterModule() {
  ModuleOf<XmlConverterParameters> module;
  module.id = FilterId::XmlConverter;
  FieldTable<XmlConverterParameters> table;
  table.Integer("XMLConvProps", &XmlConverterParameters::objects, INT32_MIN, INT32_MAX);
  module.fields = table.Build();
  module.run = RunXmlConverter;
  module.remarks = kRemarks;
  module.target = [](const XmlConverterParameters&, const std::string& source) {
    const auto format = ScoreFormatOfName(source);
    const bool toMusicXml = format == ScoreFormat::StvXml || format == ScoreFormat::Score;
    return toMusicXml ? TargetRule{.extension = "xml", .fileTypes = texts::FileFilterToMusicXml}
                      : TargetRule{.extension = "stvx", .fileTypes = texts::FileFilterToStvXml};
  };
  module.stop.status = texts::Stopping;
  return MakeModule(std::move(module));
}

}  // namespace ts5::converters
