// The arguments of one command: what it takes, its German help, and the reading of a command line.
//
//   bool json = false;
//   std::vector<std::string> files;
//   Arguments arguments("info", texts::BatchInfoSummary, texts::BatchInfoExamples);
//   arguments.Flag("--json", json, texts::BatchHelpJson);
//   arguments.Rest("FILE", files, texts::BatchHelpInfoFiles, 1);
//   if (const auto status = arguments.Read(line, console)) return *status;
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "batch/console.h"
#include "batch/texts.h"
#include "platform/base/strings.h"

namespace ts5::batch {

class Arguments {
 public:
  Arguments(std::string_view command, TextId summary, TextId examples);
  ~Arguments();
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;

  // The targets must outlive Read.
  void Flag(std::string_view name, bool& target, TextId help);
  void Option(std::string_view name, std::string_view value, std::optional<std::string>& target, TextId help);
  void Repeated(std::string_view name, std::string_view value, std::vector<std::string>& target, TextId help);
  // Arguments by place, in the order of these calls.
  void Required(std::string_view name, std::string& target, TextId help);
  void Optional(std::string_view name, std::optional<std::string>& target, TextId help);
  // All further ones; fewer than least is wrong usage.
  void Rest(std::string_view name, std::vector<std::string>& target, TextId help, std::size_t least);
  // What the help says at its end, known only when the other arguments are read.
  void HelpTail(std::function<std::string()> tail) { tail_ = std::move(tail); }
  // Examples that fit the arguments, instead of those of the command.
  void HelpExamples(std::function<TextId()> examples) { fitting_ = std::move(examples); }

  // Nothing when the command may go on; else its exit status: the help was asked for and is printed, or the
  // line is wrong and this is said.
  [[nodiscard]] std::optional<int> Read(std::span<const std::string> line, Console& console);

  [[nodiscard]] std::string Help() const;

 private:
  struct Row {
    std::string name;   // "--dest" or "FILE"
    std::string value;  // "FILE" of "--dest FILE"
    TextId help;
    enum class Kind { Flag, Option, Repeated, Required, Optional, Rest } kind;
    std::size_t least = 0;
  };
  struct Parser;

  [[nodiscard]] std::string Usage() const;

  std::string command_;
  TextId summary_;
  TextId examples_;
  std::vector<Row> rows_;
  std::function<std::string()> tail_;
  std::function<TextId()> fitting_;
  bool help_ = false;
  std::unique_ptr<Parser> parser_;
};

}  // namespace ts5::batch
