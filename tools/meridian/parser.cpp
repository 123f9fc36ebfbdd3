// The only file that uses CLI11.
#include "tools/meridian/parser.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <memory>

#include "meridian/base/printable.h"
#include "meridian/version.h"

namespace meridian::command {
namespace {

std::string exampleOf(std::string_view example) {
  std::string text = "Example:\n  ";
  for (const char c : example) text += c == '\n' ? std::string("\n  ") : std::string(1, c);
  return text;
}

/// Help for subcommands that take words: what stands behind "--" never comes to this parser, so it does not know of it.
class WordsFormatter : public CLI::Formatter {
 public:
  explicit WordsFormatter(std::string words) : words_(std::move(words)) {}

  std::string make_usage(const CLI::App* app, std::string name) const override {
    std::string usage = Formatter::make_usage(app, std::move(name));
    usage.insert(usage.find_last_not_of('\n') + 1, " " + words_);
    return usage;
  }

 private:
  std::string words_;
};

CLI::Option* addOption(CLI::App& app, const Option& option, Arguments& arguments) {
  if (option.kind == Option::Kind::flag) {
    return app.add_flag_callback(
        "--" + option.name, [&arguments, &option] { arguments.given[option.name]; }, option.help);
  }
  const auto store = [&arguments, &option](const CLI::results_t& values) {
    arguments.given[option.name] = values;
    return true;
  };
  const bool positional = option.kind == Option::Kind::positional;
  // A positional is named as its value, so that the help's usage line says what stands there.
  CLI::Option* const added = app.add_option(positional ? option.valueName : "--" + option.name, store, option.help);
  added->type_name(positional ? "" : option.valueName);
  if (option.repeated) added->expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args();
  if (option.severalTimes) added->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  return added;
}

CLI::App* addSubcommand(CLI::App& app, const Subcommand& subcommand, Arguments& arguments) {
  CLI::App* const added = app.add_subcommand(subcommand.name, subcommand.description);
  std::map<std::string_view, CLI::Option*> byName;
  for (const Option& option : subcommand.options) byName[option.name] = addOption(*added, option, arguments);
  for (const std::string& one : subcommand.exclusive) {
    for (const std::string& other : subcommand.exclusive) {
      if (one < other) byName.at(one)->excludes(byName.at(other));
    }
  }
  if (subcommand.takesWords) {
    added->formatter(std::make_shared<WordsFormatter>(subcommand.wordsAreOptional() ? "[-- WORD...]" : "-- WORD..."));
  }
  added->footer((subcommand.details.empty() ? "" : subcommand.details + "\n\n") + exampleOf(subcommand.example));
  return added;
}

/// The parser's counterpart of a group, made with the first of its subcommands.
CLI::App& groupApp(CLI::App& app, const std::string& name) {
  const auto made = app.get_subcommands([&name](const CLI::App* each) { return each->get_name() == name; });
  if (!made.empty()) return *made.front();
  const auto& group = *std::ranges::find(commandGroups, name, &CommandGroup::name);
  CLI::App* const added = app.add_subcommand(name, std::string(group.description));
  added->require_subcommand(0, 1);
  added->footer(exampleOf(group.example));
  return *added;
}

/// The subcommand that the words led to, or the group or whole that they stopped at.
const CLI::App& reached(const CLI::App& app) {
  const auto used = app.get_subcommands();
  return used.empty() ? app : reached(*used.front());
}

std::string calledAs(const CLI::App& app) {
  return app.get_parent() == nullptr ? app.get_name() : calledAs(*app.get_parent()) + " " + app.get_name();
}

/// A word that the parser does not know is the better clue to what went wrong, so positionals are missed only here.
void checkPositionals(const Subcommand& subcommand, const Arguments& arguments) {
  for (const Option& option : subcommand.options) {
    if (option.kind != Option::Kind::positional || option.optional || arguments.has(option.name)) continue;
    throw UsageError(option.valueName + " is missing");
  }
}

/// Where a subcommand takes no words of the transcoder, "--" ends its options: what follows are positionals, even with
/// a dash before them, each for the first that takes one more.
void takeWordsAsPositionals(const Subcommand& subcommand, Arguments& arguments) {
  if (arguments.words.empty()) return;
  if (std::ranges::find(subcommand.options, Option::Kind::positional, &Option::kind) == subcommand.options.end()) {
    throw UsageError("\"meridian " + subcommand.fullName() + "\" takes no words behind \"--\"" +
                     (subcommand.wordsOption.empty() ? "" : " without --" + subcommand.wordsOption));
  }
  for (const std::string_view word : arguments.words) {
    const auto taker = std::ranges::find_if(subcommand.options, [&arguments](const Option& option) {
      return option.kind == Option::Kind::positional && (option.repeated || !arguments.has(option.name));
    });
    if (taker == subcommand.options.end()) throw UsageError("not expected: " + printable(word));
    arguments.given[taker->name].emplace_back(word);
  }
}

void checkChoices(const Subcommand& subcommand, const Arguments& arguments) {
  for (const Option& option : subcommand.options) {
    const auto value = arguments.value(option.name);
    if (!value || option.choices.empty() || std::ranges::find(option.choices, *value) != option.choices.end()) continue;
    std::string message = "there is no " + option.name + " " + inQuotes(*value) + "; there is:";
    for (const std::string_view choice : option.choices) message += "\n  " + std::string(choice);
    throw UsageError(message);
  }
}

std::string wordsHint(const Subcommand& subcommand) {
  const std::string& example = subcommand.example;
  const std::size_t begin = example.rfind('\n', example.find(" -- ")) + 1;  // npos + 1 is 0: the first line
  return "the argument vector stands behind \"--\": " + example.substr(begin, example.find('\n', begin) - begin);
}

}  // namespace

Parsed parseWords(std::span<const Subcommand> subcommands, std::span<const std::string_view> all) {
  Parsed parsed;
  CLI::App app(std::string(purpose), "meridian");
  app.set_version_flag("--version", "meridian " + std::string(versionText()));
  app.require_subcommand(0, 1);
  app.footer(exampleOf(mainExample) + "\n\nExit status: " + std::string(exitStatuses) +
             ".\nCalled with nothing, meridian shows a demonstration.");
  std::map<const CLI::App*, const Subcommand*> bySubApp;
  for (const Subcommand& subcommand : subcommands) {
    CLI::App& parent = subcommand.group.empty() ? app : groupApp(app, subcommand.group);
    bySubApp[addSubcommand(parent, subcommand, parsed.arguments)] = &subcommand;
  }

  // Nothing behind the first "--" is an option, whatever it looks like.
  const auto separator = std::ranges::find(all, "--");
  std::vector<std::string> own(all.begin(), separator);
  const bool hasWords = separator != all.end();
  if (hasWords) parsed.arguments.words.assign(separator + 1, all.end());

  const auto chosen = [&]() -> const Subcommand* {
    const auto found = bySubApp.find(&reached(app));
    return found == bySubApp.end() ? nullptr : found->second;
  };
  const auto see = [&] { return "\n\"" + calledAs(reached(app)) + " --help\" says how it is used."; };
  try {
    std::ranges::reverse(own);  // the parser takes them from the end
    app.parse(std::move(own));
  } catch (const CLI::CallForHelp&) {
    parsed.text = app.help();
    return parsed;
  } catch (const CLI::CallForVersion& version) {
    parsed.text = std::string(version.what()) + "\n";
    return parsed;
  } catch (const CLI::ParseError& error) {
    std::string message = printable(error.what());
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
      // The parser's own message names them backwards.
      message = "not expected:";
      for (const std::string& word : app.remaining(true)) message += " " + printable(word);
    }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
      message = "an option is given without its value, or twice: " + message;
    }
    const bool lacksSeparator = chosen() != nullptr && chosen()->takesWordsWith(parsed.arguments) && !hasWords;
    throw UsageError(message + (lacksSeparator ? "\n" + wordsHint(*chosen()) : "") + see());
  }

  parsed.subcommand = chosen();
  if (parsed.subcommand == nullptr) throw UsageError("no subcommand is given" + see());
  const bool takesWords = parsed.subcommand->takesWordsWith(parsed.arguments);
  if (takesWords && !hasWords) throw UsageError(wordsHint(*parsed.subcommand) + see());
  try {
    if (!takesWords && hasWords) takeWordsAsPositionals(*parsed.subcommand, parsed.arguments);
    checkPositionals(*parsed.subcommand, parsed.arguments);
    checkChoices(*parsed.subcommand, parsed.arguments);
  } catch (const UsageError& error) {
    throw UsageError(error.what() + see());
  }
  return parsed;
}

}  // namespace meridian::command
