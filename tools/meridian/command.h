// What a subcommand is: pure definitions, from which the parser, the help, the manual page and the completion are made.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace meridian::command {

/// Exit statuses. Every subcommand ends with one of these.
enum Status : int { done = 0, refused = 1, wrongUsage = 2 };

/// A command line that says something else than the user can have meant; ends the command with `wrongUsage`.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Words that were understood but are refused; ends the command with `refused`. The text is safe for a terminal.
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Option {
  enum class Kind { flag, value, positional };

  Kind kind = Kind::flag;
  /// Without dashes.
  std::string name;
  std::string help;
  /// What the help calls the value.
  std::string valueName = {};
  /// The values that it takes; empty for any.
  std::vector<std::string_view> choices = {};
  /// Whether a positional may be left out.
  bool optional = false;
  /// Whether a positional takes all the words there are.
  bool repeated = false;
};

/// What a subcommand was called with.
struct Arguments {
  /// The options given, with their values; none for a flag.
  std::map<std::string, std::vector<std::string>, std::less<>> given;
  /// The words behind the first "--", which are the transcoder's.
  std::vector<std::string_view> words;

  [[nodiscard]] bool has(std::string_view name) const { return given.contains(name); }
  [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
};

struct Subcommand {
  std::string name;
  std::string description;
  /// Command lines that show its use.
  std::string example;
  /// Whether it works on the words behind "--".
  bool takesWords = false;
  std::vector<Option> options = {};
  /// Names of options of which only one may be given.
  std::vector<std::string> exclusive = {};
  std::function<Status(const Arguments&)> action;
};

[[nodiscard]] Subcommand parseCommand();
[[nodiscard]] Subcommand renderCommand();
[[nodiscard]] Subcommand explainCommand();
[[nodiscard]] Subcommand setCommand();
[[nodiscard]] Subcommand flagsCommand();
[[nodiscard]] Subcommand presetsCommand();
[[nodiscard]] Subcommand extensionsCommand();
[[nodiscard]] Subcommand rateCommand();
[[nodiscard]] Subcommand timecodeCommand();
[[nodiscard]] Subcommand dimensionCommand();
[[nodiscard]] Subcommand completionCommand();
[[nodiscard]] Subcommand manualCommand();

/// All subcommands, in the order of the help.
[[nodiscard]] std::vector<Subcommand> allSubcommands();

/// What the command as a whole says of itself.
inline constexpr std::string_view purpose =
    "Rules of professional media work: command lines, presets, file types, frame rates, timecode";
inline constexpr std::string_view exitStatuses = "0 done, 1 understood but refused, 2 wrong usage";
inline constexpr std::string_view mainExample =
    "meridian explain -- -preset solvane_cloud -dims 1920x1080 -out /out/a.mov";

/// Explains a realistic command line: what the command shows when it is called with nothing.
void demonstrate();

/// Prints the explanation of an argument vector as a table for people.
void printExplanation(std::span<const std::string_view> words);

}  // namespace meridian::command
