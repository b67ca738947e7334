#include "batch/commands.h"

#include <array>

#include "batch/texts.h"
#include "frame/texts.h"
#include "platform/base/text.h"

namespace ts5::batch {
namespace {

constexpr std::array kCommands{
    Command{"filters", texts::BatchFiltersSummary, FiltersCommand},
    Command{"jobs", texts::BatchJobsSummary, JobsCommand},
    Command{"type", texts::BatchTypeSummary, TypeCommand},
    Command{"info", texts::BatchInfoSummary, InfoCommand},
    Command{"attributes", texts::BatchAttributesSummary, AttributesCommand},
    Command{"interfaces", texts::BatchInterfacesSummary, InterfacesCommand},
    Command{"score", texts::BatchScoreSummary, ScoreCommand},
    Command{"run", texts::BatchRunSummary, RunCommand},
    Command{"job", texts::BatchJobSummary, JobCommand},
    Command{"resume", texts::BatchResumeSummary, ResumeCommand},
    Command{"codecs", texts::BatchCodecsSummary, CodecsCommand},
    Command{"cd", texts::BatchCdSummary, CdCommand},
    Command{"layout", texts::BatchLayoutSummary, LayoutCommand},
    Command{"results", texts::BatchResultsSummary, ResultsCommand},
    Command{"registry", texts::BatchRegistrySummary, RegistryCommand},
};
constexpr CommandGroup kProgram{"", kCommands, texts::BatchOverview, texts::BatchOverviewExamples};

}  // namespace

int RunBatch(CommandLine line, Console& console) {
  return Guarded(console, [&]() -> int {
    if (line.empty() || line.front() != "--version") return Dispatch(kProgram, line, console);
    console.out << Format(Text(texts::BatchVersion), Text(texts::ApplicationTitle), TS5_VERSION) << '\n';
    return kExitSuccess;
  });
}

}  // namespace ts5::batch
