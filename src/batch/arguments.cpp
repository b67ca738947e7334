#include "batch/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "batch/texts.h"
#include "platform/base/text.h"

namespace ts5::batch {

// The options go through CLI11. Arguments by place do not: it takes "[a]" apart as a list and "-1" for an
// option, and both may be meant as they stand.
struct Arguments::Parser {
  CLI::App app;
  struct Single {
    std::optional<std::string>* target;
    std::string value;
    CLI::Option* option;
  };
  std::vector<std::unique_ptr<Single>> singles;
  struct Place {
    std::string name;
    std::string* required = nullptr;
    std::optional<std::string>* optional = nullptr;
    std::vector<std::string>* rest = nullptr;
    std::size_t least = 0;
  };
  std::vector<Place> places;
};

namespace {

bool LooksLikeOption(std::string_view text) {
  return text.size() > 1 && text[0] == '-' && !(text[1] >= '0' && text[1] <= '9');
}

// The option that a message of the parser begins with or holds.
std::string OptionIn(std::string_view message) {
  const std::size_t start = message.find("--");
  if (start == std::string_view::npos) return std::string(message);
  const std::size_t end = message.find_first_of(": ", start);
  return std::string(message.substr(start, end == std::string_view::npos ? end : end - start));
}

}  // namespace

Arguments::Arguments(std::string_view command, TextId summary, TextId examples)
    : command_(command), summary_(summary), examples_(examples), parser_(std::make_unique<Parser>()) {
  parser_->app.set_help_flag();
  parser_->app.allow_extras();
  parser_->app.add_flag("-h,--help,--hilfe", help_);
}

Arguments::~Arguments() = default;

void Arguments::Flag(std::string_view name, bool& target, TextId help) {
  parser_->app.add_flag(std::string(name), target);
  rows_.push_back({std::string(name), "", help, Row::Kind::Flag});
}

void Arguments::Option(std::string_view name, std::string_view value, std::optional<std::string>& target,
                       TextId help) {
  auto single = std::make_unique<Parser::Single>(Parser::Single{&target, "", nullptr});
  single->option = parser_->app.add_option(std::string(name), single->value);
  single->option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  parser_->singles.push_back(std::move(single));
  rows_.push_back({std::string(name), std::string(value), help, Row::Kind::Option});
}

void Arguments::Repeated(std::string_view name, std::string_view value, std::vector<std::string>& target,
                         TextId help) {
  parser_->app.add_option(std::string(name), target)->allow_extra_args(false);
  rows_.push_back({std::string(name), std::string(value), help, Row::Kind::Repeated});
}

void Arguments::Required(std::string_view name, std::string& target, TextId help) {
  parser_->places.push_back({.name = std::string(name), .required = &target});
  rows_.push_back({std::string(name), "", help, Row::Kind::Required});
}

void Arguments::Optional(std::string_view name, std::optional<std::string>& target, TextId help) {
  parser_->places.push_back({.name = std::string(name), .optional = &target});
  rows_.push_back({std::string(name), "", help, Row::Kind::Optional});
}

void Arguments::Rest(std::string_view name, std::vector<std::string>& target, TextId help,
                     std::size_t least) {
  parser_->places.push_back({.name = std::string(name), .rest = &target, .least = least});
  rows_.push_back({std::string(name), "", help, Row::Kind::Rest, least});
}

std::optional<int> Arguments::Read(std::span<const std::string> line, Console& console) {
  try {
    // The parser wants the last argument first.
    parser_->app.parse(std::vector<std::string>(line.rbegin(), line.rend()));
  } catch (const CLI::ParseError& error) {
    return WrongUsage(console, command_, Format(Text(texts::BatchOptionWrong), OptionIn(error.what())));
  }
  for (const auto& single : parser_->singles) {
    if (single->option->count() > 0) *single->target = single->value;
  }

  std::vector<std::string> words;
  bool onlyWords = false;
  for (const std::string& word : parser_->app.remaining()) {
    if (!onlyWords && word == "--") {
      onlyWords = true;
    } else if (!onlyWords && LooksLikeOption(word)) {
      return WrongUsage(console, command_, Format(Text(texts::BatchOptionUnknown), word));
    } else {
      words.push_back(word);
    }
  }

  std::string missing;
  std::size_t next = 0;
  for (const Parser::Place& place : parser_->places) {
    if (place.rest != nullptr) {
      for (; next < words.size(); ++next) place.rest->push_back(words[next]);
      if (place.rest->size() < place.least && missing.empty()) missing = place.name;
    } else if (next < words.size()) {
      (place.required != nullptr ? *place.required : place.optional->emplace()) = words[next++];
    } else if (place.required != nullptr && missing.empty()) {
      missing = place.name;
    }
  }
  if (help_) {
    console.out << Help();
    return kExitSuccess;
  }
  if (!missing.empty()) {
    return WrongUsage(console, command_, Format(Text(texts::BatchArgumentMissing), missing));
  }
  if (next < words.size()) {
    return WrongUsage(console, command_, Format(Text(texts::BatchArgumentTooMuch), words[next]));
  }
  return std::nullopt;
}

std::string Arguments::Usage() const {
  std::string usage = std::string(kProgramName) + " " + command_;
  for (const Row& row : rows_) {
    const std::string whole = row.value.empty() ? row.name : row.name + " " + row.value;
    switch (row.kind) {
      case Row::Kind::Flag:
      case Row::Kind::Option:
      case Row::Kind::Optional:
        usage += " [" + whole + "]";
        break;
      case Row::Kind::Repeated:
        usage += " [" + whole + "]...";
        break;
      case Row::Kind::Required:
        usage += " " + whole;
        break;
      case Row::Kind::Rest:
        usage += row.least > 0 ? " " + whole + "..." : " [" + whole + "...]";
        break;
    }
  }
  return usage;
}

std::string Arguments::Help() const {
  std::string help = Format(Text(texts::BatchUsage), Usage()) + "\n\n" + std::string(Text(summary_)) + "\n\n";
  std::size_t width = 0;
  for (const Row& row : rows_) width = std::max(width, CharacterCount(row.name + " " + row.value));
  for (const Row& row : rows_) {
    const std::string_view text = Text(row.help);
    std::string name = row.value.empty() ? row.name : row.name + " " + row.value;
    for (const std::string_view line : Split(text, '\n')) {
      help += "  " + Padded(name, width + 2) + std::string(line) + "\n";
      name.clear();
    }
  }
  if (tail_) help += tail_();
  help += "\n" + std::string(Text(texts::BatchExamples)) + "\n";
  const TextId examples = fitting_ ? fitting_() : examples_;
  for (const std::string_view line : Split(Text(examples), '\n')) help += "  " + std::string(line) + "\n";
  return help;
}

}  // namespace ts5::batch
