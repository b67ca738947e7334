#include "artworker/printers.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "artworker/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/programs/process.h"

namespace ts5::artworker {
namespace {

using namespace std::chrono_literals;

constexpr std::array kPaperNames = {"A3", "A4", "A5"};  // in the order of kPaperSizes
constexpr std::string_view kAnySize = "Custom.";

std::optional<std::string_view> PaperName(Size sheet) {
  const auto found = std::ranges::find(kPaperSizes, Upright(sheet));
  if (found == kPaperSizes.end()) return std::nullopt;
  return kPaperNames[static_cast<std::size_t>(found - kPaperSizes.begin())];
}

// "A4", "*A4", "A4.Borderless"
bool Names(std::string_view listed, std::string_view paper) {
  if (listed.starts_with('*')) listed.remove_prefix(1);
  return listed == paper || (listed.starts_with(paper) && listed[paper.size()] == '.');
}

}  // namespace

std::vector<std::string> SystemPrinters() {
  ProcessRun how;
  how.timeout = 5s;
  const auto listed = RunProcess("lpstat", {"-e"}, how);
  std::vector<std::string> printers;
  if (!listed || listed->status != 0) return printers;
  for (const std::string_view line : Split(AsText(listed->output), '\n')) {
    if (!Trim(line).empty()) printers.emplace_back(Trim(line));
  }
  return printers;
}

bool ListsPaper(std::string_view options, Size sheet) {
  const auto name = PaperName(sheet);
  for (const std::string_view line : Split(options, '\n')) {
    if (!line.starts_with("PageSize/")) continue;
    return std::ranges::any_of(Split(line, ' '), [&](std::string_view word) {
      return word.starts_with(kAnySize) || (name && Names(word, *name));
    });
  }
  return true;
}

bool TakesPaper(const std::string& printer, Size sheet) {
  ProcessRun how;
  how.timeout = 5s;
  const auto listed = RunProcess("lpoptions", {"-p", printer, "-l"}, how);
  return !listed || listed->status != 0 || ListsPaper(AsText(listed->output), sheet);
}

bool SendDocument(const std::string& printer, const std::string& path, Size sheet,
                  const std::function<bool()>& cancelled) {
  const Size upright = Upright(sheet);
  const auto name = PaperName(sheet);
  const std::vector<std::string> arguments{
      "-d", printer,
      "-t", std::string(Text(texts::ArtworkDocument)),
      "-o", "print-scaling=none",
      "-o", "media=" + (name ? std::string(*name) : Format("Custom.%ix%imm", upright.width, upright.height)),
      "--", path};
  ProcessRun how;
  how.timeout = 60s;
  how.cancelled = cancelled;
  const auto sent = RunProcess("lp", arguments, how);
  return sent && sent->status == 0;
}

}  // namespace ts5::artworker
