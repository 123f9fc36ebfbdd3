#include "meridian/cli/sanitizer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <tuple>

#include "meridian/base/text.h"
#include "tests/cli/random_words.h"

namespace meridian {
namespace {

using Options = CLISanitizationOptions;
using OptionalOptions = std::optional<Options>;
/// Valid or not, the flag, and one of its values or none.
using Report = std::tuple<bool, std::string, std::optional<std::string>>;

/// Different options for flags of different lengths: "-b" trims its values, "-bb" lower-cases them, too, "-bbb" keeps
/// them.
Options optionsFor(std::string_view flag) { return Options(flag.size() % 4); }

std::vector<Report> reportsOf(const CLIArgumentSanitizer& sanitizer, const std::vector<std::string>& words) {
  std::vector<Report> reports;
  const auto reporting = [&reports](bool valid) {
    return [&reports, valid](std::string_view flag, std::optional<std::string_view> value) {
      reports.emplace_back(valid, flag, value);
    };
  };
  sanitizer.enumerateSanitizedCLIEntries(std::vector<std::string_view>(words.begin(), words.end()), optionsFor,
                                         reporting(true), reporting(false));
  return reports;
}

std::string treated(std::string text, OptionalOptions options) {
  if (options && (options->rawValue() & 1) != 0) text = lowercased(text);
  if (options && (options->rawValue() & 2) != 0) text = trimmed(text);
  return text;
}

/// The plain definition: find all flags, then report each with the words up to the next one.
std::vector<Report> plainReportsOf(const CLIArgumentSanitizer& sanitizer, const std::vector<std::string>& words) {
  std::vector<std::pair<std::size_t, std::string>> flags;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string flag = treated(words[i], sanitizer.flagSanitizationOptions());
    if (flag.starts_with('-')) flags.emplace_back(i, flag);
  }
  std::vector<Report> reports;
  for (std::size_t i = 0; i < flags.size(); ++i) {
    const auto& [place, flag] = flags[i];
    const bool valid = std::ranges::any_of(sanitizer.validCommandFlags(),
                                           [&](const auto& known) { return containsIgnoringCase(flag, known); });
    const std::size_t end = i + 1 < flags.size() ? flags[i + 1].first : words.size();
    for (std::size_t value = place + 1; value < end; ++value) {
      reports.emplace_back(valid, flag, treated(words[value], optionsFor(flag)));
    }
    if (place + 1 == end) reports.emplace_back(valid, flag, std::nullopt);
  }
  return reports;
}

TEST(SanitizerTest, ReportsEachFlagWithAllValuesUpToTheNextFlag) {
  CLIArgumentSanitizer sanitizer({"-a", "-b"});
  const std::vector<std::string> words{"x", "-b", " Y ", "", "-BB", " Y ", "-b", "-abb", " Y ", "- a", " -a", "-a "};
  EXPECT_EQ(reportsOf(sanitizer, words), (std::vector<Report>{{true, "-b", "Y"},
                                                              {true, "-b", ""},
                                                              {true, "-BB", "y"},
                                                              {true, "-b", std::nullopt},
                                                              {true, "-abb", " Y "},
                                                              {false, "- a", "-a"},
                                                              {true, "-a ", std::nullopt}}));
  sanitizer.setFlagSanitizationOptions(Options::lowercase | Options::trimWhiteSpace);
  EXPECT_EQ(reportsOf(sanitizer, {" -A", "-a ", "\u3000-B", "\u00A0"}),
            (std::vector<Report>{{true, "-a", std::nullopt}, {true, "-a", std::nullopt}, {true, "-b", ""}}));
  EXPECT_EQ(reportsOf(CLIArgumentSanitizer({}), {"-a", "x"}), (std::vector<Report>{{false, "-a", "x"}}));
}

TEST(SanitizerTest, AgreesWithThePlainDefinition) {
  RandomWords random(2);
  for (int round = 0; round < 10000; ++round) {
    std::vector<std::string> known;
    while (random.below(4) != 0) known.emplace_back(random.oneOf(flagDescriptions).text);
    const auto options = random.below(5);
    const CLIArgumentSanitizer sanitizer(known, options < 4 ? OptionalOptions(options) : std::nullopt);
    const std::vector<std::string> words = random.vector();
    SCOPED_TRACE(shown(words));
    ASSERT_EQ(reportsOf(sanitizer, words), plainReportsOf(sanitizer, words));
  }
}

TEST(SanitizerTest, EachBitOfTheOptionsIsOneTreatment) {
  const std::string text = "\u00A0 \u00C9T\u00C9 \n";
  const std::array expected{text, std::string("\u00A0 \u00E9t\u00E9 \n"), std::string("\u00C9T\u00C9"),
                            std::string("\u00E9t\u00E9")};
  for (std::size_t bits = 0; bits < 4; ++bits) EXPECT_EQ(Options(bits).sanitize(text), expected[bits]) << bits;
  EXPECT_EQ((Options::lowercase | Options::trimWhiteSpace).rawValue(), 3U);
  EXPECT_FALSE(Options::lowercase.contains(Options::trimWhiteSpace));
  EXPECT_FALSE(Options::lowercase.contains(Options::lowercase | Options::trimWhiteSpace));
}

TEST(SanitizerTest, ValuesOfHousekeepingFlagsAreTrimmed) {
  EXPECT_EQ(cliFlag(CLICustodialFlag::parentPid), "-parentPid");
  EXPECT_EQ(cliFlag(CLICustodialFlag::parentAppNumber), "-parentAppNumber");
  for (const CLICustodialFlag flag : allCases<CLICustodialFlag>()) {
    EXPECT_EQ(sanitizeAllCLIFlags(flag).sanitize(" 42\n"), "42");
    EXPECT_TRUE(sanitizeAllCLIFlags(flag, Options::lowercase).contains(Options::trimWhiteSpace));
  }
}

}  // namespace
}  // namespace meridian
