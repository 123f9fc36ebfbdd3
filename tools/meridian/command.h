/// \file
/// Defines what a subcommand is. The parser, the help, the manual page and the completion are made from these
/// definitions. For example:
///
///     Subcommand manualCommand() {
///       return {.name = "manual", .description = "Print the manual page", .example = "meridian manual | man -l -",
///               .action = [](const Arguments&) { printManual(); return done; }};
///     }
#pragma once

#include <array>
#include <concepts>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/expected.h"
#include "meridian/cli/transcode_explanation.h"

namespace meridian::command {

/// Exit statuses. Every subcommand ends with one of these. A wrong name is wrong usage; a value that does not fit is a
/// failure, whether an option, an argument or a file gives it, because values mostly come from data.
enum Status : int {
  done = 0,
  /// A value does not fit ("rate abc", "set videoBitDepth=ten"), nothing was found or labelled, a check found
  /// something, or reading or writing failed.
  failed = 1,
  /// The command line is wrong: a subcommand, option, choice or property has an unknown name, a word is missing or
  /// unexpected, or options cannot be used together.
  wrongUsage = 2,
};

/// The command line is wrong; ends the command with `wrongUsage`. The message must be safe for a terminal.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The command line is valid, but the command failed; ends the command with `failed`.
class CommandError : public std::runtime_error {
 public:
  /// Takes a message that is safe for a terminal.
  explicit CommandError(const std::string& message) : std::runtime_error(message) {}
  /// Makes the message `"PLACE": WHY` of any two texts; escapes what is not safe for a terminal.
  CommandError(std::string_view place, std::string_view why);
  /// Takes the message of an error of the library, of the very type that it has, so that nothing is sliced off.
  template <typename LibraryError>
    requires requires(const LibraryError& error) {
      typename LibraryError::CodeType;
      { error.message() } -> std::convertible_to<std::string>;
    }
  explicit CommandError(const LibraryError& error) : std::runtime_error(error.message()) {}
};

/// Returns the value, or throws the error as a CommandError.
template <typename Value, typename E>
Value valueOf(Expected<Value, E> result) {
  if (!result) throw CommandError(result.error());
  if constexpr (!std::is_void_v<Value>) return *std::move(result);
}

/// An option or a positional argument of a subcommand.
struct Option {
  enum class Kind { flag, value, positional };

  /// A name that a value of the form NAME=VALUE may begin with.
  struct Name {
    std::string_view text;
    std::string_view meaning;
    /// The values that it accepts; empty if it accepts others.
    std::vector<std::string_view> values;
  };

  Kind kind = Kind::flag;
  /// Without dashes.
  std::string name;
  std::string help;
  /// What the help calls the value: "FILE".
  std::string valueName = {};
  /// The values that it accepts; empty if it accepts any.
  std::vector<std::string_view> choices = {};
  /// True if a positional may be left out.
  bool optional = false;
  /// True if it accepts several values, up to the next option.
  bool repeated = false;
  /// True if it may be given several times, each time with one value.
  bool severalTimes = false;
  /// True if it is a path, which a shell completes by itself.
  bool path = false;
  /// What its values may begin with, if these are of the form NAME=VALUE.
  std::vector<Name> names = {};
};

/// What a subcommand was called with.
struct Arguments {
  /// The options and positionals that were given, by name, with their values; a flag has none.
  std::map<std::string, std::vector<std::string>, std::less<>> given;
  /// The words after the first "--": an argument vector of the transcoder or the analysis tool.
  std::vector<std::string_view> words;

  /// Returns true if the option was given.
  [[nodiscard]] bool has(std::string_view name) const { return given.contains(name); }
  /// Returns the option's last value; absent if it was not given or has none.
  [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
};

/// A subcommand: what it is called, what its help says, what it accepts, and what it does.
struct Subcommand {
  /// The group that it belongs to: "lut"; empty if it belongs to none.
  std::string group = {};
  std::string name;
  /// One line, without a full stop.
  std::string description;
  /// What its own help and the manual say beyond that.
  std::string details = {};
  /// Command lines that show its use, one a line.
  std::string example;
  /// True if it reads the words after "--".
  bool takesWords = false;
  /// The option with which it reads words; empty if it always does.
  std::string wordsOption = {};
  /// The positional that may be given in place of the words; empty if there is none.
  std::string wordsAlternative = {};
  /// The options with which a file gives the words.
  std::vector<std::string> fileOptions = {};
  /// The flags that the words may contain, if these are not the transcoder's.
  std::vector<std::string> wordFlags = {};
  std::vector<Option> options = {};
  /// Names of options of which only one may be given.
  std::vector<std::string> exclusive = {};
  /// Throws UsageError for names that are wrong whatever the words after "--" are; called before these are asked for.
  std::function<void(const Arguments&)> checkNames = {};
  std::function<Status(const Arguments&)> action;

  /// Returns the name with which it is called: "parse", "lut info".
  [[nodiscard]] std::string fullName() const { return group.empty() ? name : group + " " + name; }
  /// Returns true if words after "--" are required with these options.
  [[nodiscard]] bool takesWordsWith(const Arguments& arguments) const {
    for (const std::string& option : fileOptions) {
      if (arguments.has(option)) return false;
    }
    if (!wordsAlternative.empty() && arguments.has(wordsAlternative)) return false;
    return takesWords && (wordsOption.empty() || arguments.has(wordsOption));
  }
  /// Returns true if it reads words with one of its options only, or without its positional.
  [[nodiscard]] bool wordsAreOptional() const { return !wordsOption.empty() || !wordsAlternative.empty(); }
};

/// Subcommands with a common first name: "lut info", "lut apply".
struct CommandGroup {
  std::string_view name;
  std::string_view description;
  std::string_view example;
};

inline constexpr auto commandGroups = std::to_array<CommandGroup>({
    {"lut", "Look-up tables (LUTs): show what a file holds, and apply it to samples and images",
     "meridian lut info look.cube\nmeridian lut apply look.cube in.dpx out.dpx"},
    {"farm", "Many machines: hand a list of transcodes to Slurm, see how far it is, and end it",
     "meridian farm submit night.txt\nmeridian farm status night.txt"},
});

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
[[nodiscard]] Subcommand filterCommand();
[[nodiscard]] Subcommand freeNameCommand();
[[nodiscard]] Subcommand cleanNameCommand();
[[nodiscard]] Subcommand transcodeCommand();
[[nodiscard]] Subcommand analyzeCommand();
[[nodiscard]] Subcommand analysisArgsCommand();
[[nodiscard]] Subcommand lutInfoCommand();
[[nodiscard]] Subcommand lutSampleCommand();
[[nodiscard]] Subcommand lutApplyCommand();
[[nodiscard]] Subcommand lutPlotCommand();
[[nodiscard]] Subcommand farmSubmitCommand();
[[nodiscard]] Subcommand farmStatusCommand();
[[nodiscard]] Subcommand farmCancelCommand();
[[nodiscard]] Subcommand farmSummaryCommand();
[[nodiscard]] Subcommand completionCommand();
[[nodiscard]] Subcommand manualCommand();

/// Returns all subcommands, in the order of the help.
[[nodiscard]] std::vector<Subcommand> allSubcommands();

/// What the command as a whole does.
inline constexpr std::string_view purpose =
    "Rules of professional media work: command lines, presets, file types, frame rates, timecode, LUTs";
inline constexpr std::string_view exitStatuses =
    "0 done, 1 failed (also a value that does not fit), 2 wrong usage (an unknown name, a missing or unexpected word)";
inline constexpr std::string_view mainExample =
    "meridian explain -- -preset solvane_cloud -dims 1920x1080 -out /out/a.mov";

/// Prints what `meridian` shows without arguments: a realistic command line explained, then a LUT applied.
void demonstrate();

/// Creates a LUT and an image, and prints the image before and after.
void demonstrateLut();

/// Prints the explanation of an argument vector as a table for people.
void printExplanation(const TranscodeExplanation& explanation, std::size_t wordCount);

}  // namespace meridian::command
