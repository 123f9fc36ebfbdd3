// meridian manual: the manual page, generated from the definitions of the subcommands.
#include <algorithm>
#include <iostream>

#include "meridian/version.h"
#include "tools/meridian/command.h"
#include "tools/meridian/vector_input.h"

namespace meridian::command {
namespace {

/// The text with everything escaped that roff would interpret.
std::string roff(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\\') {
      result += "\\e";
    } else if (c == '-') {
      result += "\\-";
    } else {
      if ((c == '.' || c == '\'') && (result.empty() || result.back() == '\n')) result += "\\&";
      result += c;
    }
  }
  return result;
}

std::string bold(std::string_view text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + roff(text) + "\\fR"; }

void printSynopsis(const Subcommand& subcommand) {
  std::cout << bold("meridian " + subcommand.fullName()) << " [" << italic("OPTION") << "...]";
  for (const Option& option : subcommand.options) {
    if (option.kind != Option::Kind::positional) continue;
    const std::string name = italic(option.valueName) + (option.repeated ? "..." : "");
    std::cout << ' ' << (option.optional ? "[" + name + "]" : name);
  }
  if (subcommand.takesWords) {
    std::string words = bold("--") + ' ' + italic("WORD") + "...";
    for (const std::string& option : subcommand.fileOptions) {
      words += " | " + bold("--" + option) + ' ' + italic("FILE");
    }
    if (!subcommand.fileOptions.empty()) words = "(" + words + ")";
    std::cout << ' ' << (subcommand.wordsAreOptional() ? "[" + words + "]" : words);
  }
  std::cout << '\n';
}

void printOption(const Option& option) {
  std::cout << ".TP\n";
  if (option.kind == Option::Kind::positional) {
    std::cout << italic(option.valueName);
  } else {
    std::cout << bold("--" + option.name);
    if (option.kind == Option::Kind::value) {
      std::cout << ' ' << italic(option.valueName) << (option.repeated ? "..." : "");
    }
  }
  std::cout << '\n' << roff(option.help) << '\n';
}

/// Prints a text whose indented lines, a list, are not filled.
void printDetails(std::string_view details) {
  bool isList = false;
  for (std::size_t begin = 0; begin < details.size();) {
    const std::size_t end = std::min(details.find('\n', begin), details.size());
    const std::string_view line = details.substr(begin, end - begin);
    if (line.starts_with(' ') != isList) {
      isList = !isList;
      std::cout << (isList ? ".nf\n" : ".fi\n");
    }
    std::cout << (line.empty() ? ".PP" : roff(line)) << '\n';
    begin = end + 1;
  }
  if (isList) std::cout << ".fi\n";
}

void printExample(std::string_view example) { std::cout << ".EX\n" << roff(example) << "\n.EE\n"; }

void printManual() {
  const std::vector<Subcommand> subcommands = allSubcommands();
  std::cout << ".TH MERIDIAN 1 \"" MERIDIAN_DATE "\" \"meridian " << versionText() << "\"\n"
            << ".SH NAME\nmeridian \\- " << roff(purpose) << "\n.SH SYNOPSIS\n";
  for (std::size_t place = 0; place < subcommands.size(); ++place) {
    if (place > 0) std::cout << ".br\n";
    printSynopsis(subcommands[place]);
  }
  std::cout << ".SH DESCRIPTION\nShows and applies the rules by which the suite's applications write and read their\n"
            << "settings. The words after the first " << bold("--")
            << " are an argument vector of the transcoder, unless\n"
            << "a command says otherwise.\n"
            << "Without arguments, " << bold("meridian") << " shows a demonstration.\n.SH COMMANDS\n";
  for (const Subcommand& subcommand : subcommands) {
    std::cout << ".SS meridian " << roff(subcommand.fullName()) << '\n' << roff(subcommand.description) << ".\n";
    printDetails(subcommand.details);
    for (const Option& option : subcommand.options) printOption(option);
    std::cout << ".PP\nExample:\n";
    printExample(subcommand.example);
  }
  std::cout << ".PP\nEach command accepts " << bold("--help") << ", and " << bold("meridian --version")
            << " prints the version.\n.SH ARGUMENT VECTORS IN FILES\n";
  printDetails(fromDetails);
  std::cout << ".SH ENVIRONMENT\n.TP\n"
            << bold("NO_COLOR") << "\nIf it is set, even to the empty text, no colours are written.\n";
  std::cout << ".SH EXIT STATUS\n" << roff(exitStatuses) << ".\n.SH EXAMPLES\n";
  printExample(mainExample);
}

}  // namespace

Subcommand manualCommand() {
  return {
      .name = "manual",
      .description = "Print the manual page",
      .example = "meridian manual | man -l -",
      .action =
          [](const Arguments&) {
            printManual();
            return done;
          },
  };
}

}  // namespace meridian::command
