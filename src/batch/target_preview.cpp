#include "batch/target_preview.h"

#include "batch/json_text.h"
#include "batch/texts.h"
#include "frame/target_naming.h"
#include "modules/filter_modules.h"
#include "platform/base/text.h"

namespace ts5::batch {

int PreviewOnConsole(Console& console, Job job, DestinationRules rules, const RunShare& share, bool json) {
  const FilterModule* const module = FindModule(job.filter);
  if (module == nullptr || !module->target) {
    PrintError(console, Text(texts::BatchPreviewNone));
    return kExitUsage;
  }
  if (rules.origin != NameOrigin::Command) rules.origin = NameOrigin::Automatic;
  int status = kExitSuccess;
  Json rows = Json::array();
  const bool shared = share.parts > 1 && job.Mode() == SourceMode::List;
  if (shared) job.files.SelectAll();  // named together with the others
  std::uint64_t index = 0;
  for (const NamedItem& item : PreviewTargets(job, *module, rules, SystemDestinationFiles())) {
    if (shared && !share.Takes(index++)) continue;
    const bool named = Succeeded(item.target.code);
    if (!named) status = kExitFailed;
    if (json) {
      rows.push_back({{"source", item.source},
                      {"destination", named ? item.target.name : std::string()},
                      {"replaces", item.replaces},
                      {"code", Code(item.target.code)}});
      continue;
    }
    const TextId text = !named          ? texts::BatchPreviewFailed
                        : item.replaces ? texts::BatchPreviewReplaces
                                        : texts::BatchPreviewLine;
    console.out << Format(Text(text), item.source, item.target.name) << '\n';
  }
  if (json) console.out << JsonText({{"targets", rows}});
  return status;
}

}  // namespace ts5::batch
