// What a subcommand is: pure definitions, from which the parser, the help, the manual page and the completion are made.
#pragma once

#include <array>
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
  /// Whether it takes all the words there are, up to the next option.
  bool repeated = false;
  /// Whether a value may be given several times, one word each.
  bool severalTimes = false;
  /// Whether it is a path, which a shell completes by itself.
  bool path = false;
};

/// What a subcommand was called with.
struct Arguments {
  /// The options given, with their values; none for a flag.
  std::map<std::string, std::vector<std::string>, std::less<>> given;
  /// The words behind the first "--": an argument vector of the transcoder or the analysis tool.
  std::vector<std::string_view> words;

  [[nodiscard]] bool has(std::string_view name) const { return given.contains(name); }
  [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
};

struct Subcommand {
  /// The group that it belongs to; empty for one that stands on its own.
  std::string group = {};
  std::string name;
  std::string description;
  /// What its own help and the manual say beyond that.
  std::string details = {};
  /// Command lines that show its use.
  std::string example;
  /// Whether it works on the words behind "--".
  bool takesWords = false;
  /// The option that it takes words with; empty where it always does.
  std::string wordsOption = {};
  /// The flags that the words may hold, where these are not the transcoder's.
  std::vector<std::string> wordFlags = {};
  std::vector<Option> options = {};
  /// Names of options of which only one may be given.
  std::vector<std::string> exclusive = {};
  std::function<Status(const Arguments&)> action;

  /// As it is called: "parse", "lut info".
  [[nodiscard]] std::string fullName() const { return group.empty() ? name : group + " " + name; }
  /// Whether words belong behind these options.
  [[nodiscard]] bool takesWordsWith(const Arguments& arguments) const {
    return takesWords && (wordsOption.empty() || arguments.has(wordsOption));
  }
  [[nodiscard]] bool wordsAreOptional() const { return !wordsOption.empty(); }
};

/// Subcommands that are called behind a common name.
struct CommandGroup {
  std::string_view name;
  std::string_view description;
  std::string_view example;
};

inline constexpr auto commandGroups = std::to_array<CommandGroup>({
    {"lut", "Look-up tables (LUTs): show what a file holds, and apply it to samples and images",
     "meridian lut info look.cube\nmeridian lut apply look.cube in.dpx out.dpx"},
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
[[nodiscard]] Subcommand analysisArgsCommand();
[[nodiscard]] Subcommand lutInfoCommand();
[[nodiscard]] Subcommand lutSampleCommand();
[[nodiscard]] Subcommand lutApplyCommand();
[[nodiscard]] Subcommand lutPlotCommand();
[[nodiscard]] Subcommand completionCommand();
[[nodiscard]] Subcommand manualCommand();

/// All subcommands, in the order of the help.
[[nodiscard]] std::vector<Subcommand> allSubcommands();

/// What the command as a whole says of itself.
inline constexpr std::string_view purpose =
    "Rules of professional media work: command lines, presets, file types, frame rates, timecode, look-up tables";
inline constexpr std::string_view exitStatuses = "0 done, 1 understood but refused, 2 wrong usage";
inline constexpr std::string_view mainExample =
    "meridian explain -- -preset solvane_cloud -dims 1920x1080 -out /out/a.mov";

/// What the command shows when it is called with nothing: a realistic command line explained, then a look applied.
void demonstrate();

/// Makes a look and an image, and shows the image before and after.
void demonstrateLut();

/// Prints the explanation of an argument vector as a table for people.
void printExplanation(std::span<const std::string_view> words);

}  // namespace meridian::command
