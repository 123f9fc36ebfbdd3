// The only file that uses CLI11.
#include "tools/meridian/parser.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <memory>

#include "meridian/base/joined.h"
#include "meridian/base/printable.h"
#include "meridian/cli/nearest_text.h"
#include "meridian/version.h"
#include "tools/meridian/vector_input.h"

namespace meridian::command {
namespace {

/// Each name on a line of its own.
std::string asList(const std::vector<std::string_view>& names) { return "\n  " + joined(names, "\n  "); }

/// Says that a name is not known: suggests the nearest, or lists them all. `noun` says what it names.
std::string unknownName(const std::string& noun, std::string_view name, const std::vector<std::string_view>& known) {
  const std::string message = "unknown " + noun + " " + inQuotes(name) + "; ";
  if (const auto nearest = nearestText(name, known)) return message + "did you mean " + std::string(*nearest) + "?";
  return message + "known " + noun + "s:" + asList(known);
}

std::string exampleOf(std::string_view example) {
  std::string text = "Example:\n  ";
  for (const char c : example) text += c == '\n' ? std::string("\n  ") : std::string(1, c);
  return text;
}

/// Adds the words after "--" to the help. CLI11 never sees them, so it does not know of them.
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
  // A positional has its value's name, so that the help's usage line shows what it is.
  CLI::Option* const added = app.add_option(positional ? option.valueName : "--" + option.name, store, option.help);
  added->type_name(positional ? "" : option.valueName);
  if (option.repeated) added->expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args();
  // An option that is given more than once by mistake is reported by checkRepetitions, which names it in plain words.
  if (!positional) added->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
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
    std::string words = subcommand.wordsAreOptional() ? "[-- WORD...]" : "-- WORD...";
    for (const std::string& option : subcommand.fileOptions) words += " | --" + option + " FILE";
    if (!subcommand.fileOptions.empty()) words = "(" + words + ")";
    added->formatter(std::make_shared<WordsFormatter>(std::move(words)));
  }
  std::string footer;
  if (!subcommand.fileOptions.empty()) footer += std::string(fromDetails) + "\n\n";
  if (!subcommand.details.empty()) footer += subcommand.details + "\n\n";
  added->footer(footer + exampleOf(subcommand.example));
  return added;
}

/// CLI11's counterpart of a group, created with the first of its subcommands.
CLI::App& groupApp(CLI::App& app, const std::string& name) {
  const auto made = app.get_subcommands([&name](const CLI::App* each) { return each->get_name() == name; });
  if (!made.empty()) return *made.front();
  const auto& group = *std::ranges::find(commandGroups, name, &CommandGroup::name);
  CLI::App* const added = app.add_subcommand(name, std::string(group.description));
  added->require_subcommand(0, 1);
  added->footer(exampleOf(group.example));
  return *added;
}

/// The subcommand that was called, or the group or the whole command if the words name no subcommand.
const CLI::App& reached(const CLI::App& app) {
  const auto used = app.get_subcommands();
  return used.empty() ? app : reached(*used.front());
}

std::string calledAs(const CLI::App& app) {
  return app.get_parent() == nullptr ? app.get_name() : calledAs(*app.get_parent()) + " " + app.get_name();
}

/// CLI11 does not know which positionals are required: an unknown word explains more than a missing one, so it has to
/// be reported first.
void checkPositionals(const Subcommand& subcommand, const Arguments& arguments) {
  for (const Option& option : subcommand.options) {
    if (option.kind != Option::Kind::positional || option.optional || arguments.has(option.name)) continue;
    throw UsageError(option.valueName + " is missing");
  }
}

/// Returns what the help calls a positional: "FILES".
const std::string& positionalName(const Subcommand& subcommand, std::string_view name) {
  return std::ranges::find(subcommand.options, name, &Option::name)->valueName;
}

/// In a subcommand that reads no words, "--" ends the options: the words after it are positionals, even if they begin
/// with "-", and each goes to the first positional that accepts another value.
void takeWordsAsPositionals(const Subcommand& subcommand, Arguments& arguments) {
  for (const std::string& option : subcommand.fileOptions) {
    if (arguments.has(option)) throw UsageError("--" + option + " and words after \"--\" cannot be used together");
  }
  if (!subcommand.wordsAlternative.empty()) {
    throw UsageError(positionalName(subcommand, subcommand.wordsAlternative) +
                     " and words after \"--\" cannot be used together");
  }
  if (arguments.words.empty()) return;
  if (std::ranges::find(subcommand.options, Option::Kind::positional, &Option::kind) == subcommand.options.end()) {
    throw UsageError("\"meridian " + subcommand.fullName() + "\" accepts no words after \"--\"" +
                     (subcommand.wordsOption.empty() ? "" : " without --" + subcommand.wordsOption));
  }
  for (const std::string_view word : arguments.words) {
    const auto taker = std::ranges::find_if(subcommand.options, [&arguments](const Option& option) {
      return option.kind == Option::Kind::positional && (option.repeated || !arguments.has(option.name));
    });
    if (taker == subcommand.options.end()) throw UsageError("unexpected argument: " + printable(word));
    arguments.given[taker->name].emplace_back(word);
  }
}

void checkChoices(const Subcommand& subcommand, const Arguments& arguments) {
  for (const Option& option : subcommand.options) {
    const auto value = arguments.value(option.name);
    if (!value || option.choices.empty() || std::ranges::find(option.choices, *value) != option.choices.end()) continue;
    throw UsageError(unknownName(option.name, *value, option.choices));
  }
}

void checkRepetitions(const Subcommand& subcommand, const Arguments& arguments) {
  for (const Option& option : subcommand.options) {
    if (option.kind != Option::Kind::value || option.repeated || option.severalTimes) continue;
    const auto given = arguments.given.find(option.name);
    if (given == arguments.given.end() || given->second.size() < 2) continue;
    throw UsageError("--" + option.name + " is given more than once");
  }
}

/// The first name of each subcommand, or within a group the second one, in the order of the help.
std::vector<std::string_view> namesWithin(std::string_view group, std::span<const Subcommand> subcommands) {
  std::vector<std::string_view> names;
  for (const Subcommand& each : subcommands) {
    const std::string_view name = group.empty() && !each.group.empty() ? each.group : each.name;
    const bool belongs = group.empty() || each.group == group;
    if (belongs && std::ranges::find(names, name) == names.end()) names.push_back(name);
  }
  return names;
}

/// The names of the options that may be meant where CLI11 stopped, with their dashes.
std::vector<std::string> optionsKnownTo(const CLI::App& app, const Subcommand* chosen) {
  std::vector<std::string> known{"--help"};
  if (&reached(app) == &app) known.emplace_back("--version");
  if (chosen == nullptr) return known;
  for (const Option& option : chosen->options) {
    if (option.kind != Option::Kind::positional) known.push_back("--" + option.name);
  }
  return known;
}

/// Which words CLI11 does not know.
std::string unknownWords(const CLI::App& app, const Subcommand* chosen, std::span<const Subcommand> subcommands) {
  const std::vector<std::string> words = app.remaining(true);
  const std::string& first = words.front();
  if (first.starts_with('-')) {
    const std::vector<std::string> known = optionsKnownTo(app, chosen);
    const std::string name = first.substr(0, first.find('='));
    // A single dash may be meant as two.
    const auto nearest = nearestText(name.starts_with("--") ? name : "-" + name,
                                     std::vector<std::string_view>(known.begin(), known.end()));
    const std::string message = "unknown option " + printable(name) + "; ";
    if (nearest) return message + "did you mean " + std::string(*nearest) + "?";
    if (first.starts_with("--") || chosen == nullptr) return message + "known options: " + joined(known, " ");
  }
  if (chosen == nullptr) {
    const CLI::App& group = reached(app);
    if (group.get_parent() != nullptr) {
      return unknownName("subcommand", first, namesWithin(group.get_name(), subcommands));
    }
    const auto names = namesWithin("", subcommands);
    const auto member = std::ranges::find_if(
        subcommands, [&first](const Subcommand& each) { return !each.group.empty() && each.name == first; });
    if (member == subcommands.end()) return unknownName("subcommand", first, names);
    return "unknown subcommand " + inQuotes(first) + "; did you mean " + member->fullName() + "?";
  }
  std::string message = words.size() == 1 ? "unexpected argument:" : "unexpected arguments:";
  for (const std::string& word : words) message += " " + printable(word);
  return message;
}

/// CLI11's error in plain words. Its own messages give the words backwards, or say "1 required TEXT missing".
std::string plainMessage(const CLI::ParseError& error, const CLI::App& app, const Subcommand* chosen,
                         std::span<const Subcommand> subcommands) {
  std::string message = printable(error.what());
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) return unknownWords(app, chosen, subcommands);
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr && chosen != nullptr) {
    const std::string name = message.substr(0, message.find(':'));
    const auto isNamed = [&name](const Option& option) { return "--" + option.name == name; };
    const auto option = std::ranges::find_if(chosen->options, isNamed);
    return name + " needs a value" + (option == chosen->options.end() ? "" : ": " + option->valueName);
  }
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
    constexpr std::string_view verb = " excludes ";
    if (const std::size_t place = message.find(verb); place != std::string::npos) {
      return message.replace(place, verb.size(), " and ") + " cannot be used together";
    }
  }
  return message;
}

std::string wordsHint(const Subcommand& subcommand) {
  const std::string& example = subcommand.example;
  const std::size_t begin = example.rfind('\n', example.find(" -- ")) + 1;  // npos + 1 is 0: the first line
  const std::string fromFile =
      subcommand.fileOptions.empty() ? "" : ", or into a file for --" + subcommand.fileOptions.front();
  // A positional beside options for files belongs to another option.
  const std::string instead = subcommand.wordsAlternative.empty() || !subcommand.fileOptions.empty()
                                  ? ""
                                  : "give " + positionalName(subcommand, subcommand.wordsAlternative) + ", or ";
  return instead + "put the argument vector after \"--\"" + fromFile +
         ", for example: " + example.substr(begin, example.find('\n', begin) - begin);
}

}  // namespace

Parsed parseWords(std::span<const Subcommand> subcommands, std::span<const std::string_view> all) {
  Parsed parsed;
  CLI::App app(std::string(purpose), "meridian");
  app.set_version_flag("--version", "meridian " + std::string(versionText()));
  app.require_subcommand(0, 1);
  app.footer(exampleOf(mainExample) + "\n\nExit status: " + std::string(exitStatuses) +
             ".\nWithout arguments, meridian shows a demonstration.");
  std::map<const CLI::App*, const Subcommand*> bySubApp;
  for (const Subcommand& subcommand : subcommands) {
    CLI::App& parent = subcommand.group.empty() ? app : groupApp(app, subcommand.group);
    bySubApp[addSubcommand(parent, subcommand, parsed.arguments)] = &subcommand;
  }

  // No word after the first "--" is an option, even if it begins with "-".
  const auto separator = std::ranges::find(all, "--");
  std::vector<std::string> own(all.begin(), separator);
  const bool hasWords = separator != all.end();
  if (hasWords) parsed.arguments.words.assign(separator + 1, all.end());

  const auto chosen = [&]() -> const Subcommand* {
    const auto found = bySubApp.find(&reached(app));
    return found == bySubApp.end() ? nullptr : found->second;
  };
  const auto see = [&] { return "\n\"" + calledAs(reached(app)) + " --help\" shows the usage."; };
  try {
    std::ranges::reverse(own);  // CLI11 takes them from the end
    app.parse(std::move(own));
  } catch (const CLI::CallForHelp&) {
    parsed.text = app.help();
    return parsed;
  } catch (const CLI::CallForVersion& version) {
    parsed.text = std::string(version.what()) + "\n";
    return parsed;
  } catch (const CLI::ParseError& error) {
    const std::string message = plainMessage(error, app, chosen(), subcommands);
    const bool lacksSeparator = chosen() != nullptr && chosen()->takesWordsWith(parsed.arguments) && !hasWords;
    throw UsageError(message + (lacksSeparator ? "\n" + wordsHint(*chosen()) : "") + see());
  }

  parsed.subcommand = chosen();
  if (parsed.subcommand == nullptr) throw UsageError("no subcommand is given" + see());
  if (parsed.subcommand->checkNames) parsed.subcommand->checkNames(parsed.arguments);
  const bool takesWords = parsed.subcommand->takesWordsWith(parsed.arguments);
  if (takesWords && !hasWords) throw UsageError(wordsHint(*parsed.subcommand) + see());
  try {
    if (!takesWords && hasWords) takeWordsAsPositionals(*parsed.subcommand, parsed.arguments);
    checkPositionals(*parsed.subcommand, parsed.arguments);
    checkRepetitions(*parsed.subcommand, parsed.arguments);
    checkChoices(*parsed.subcommand, parsed.arguments);
  } catch (const UsageError& error) {
    throw UsageError(error.what() + see());
  }
  return parsed;
}

}  // namespace meridian::command
