#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "meridian/cli/transcode_cli_arguments.h"
#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

using nlohmann::json;
using test::Outcome;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

/// Reads argument vectors from a file of the test.
class FromFile : public testing::Test {
 protected:
  [[nodiscard]] Outcome run(Words command, const std::string& contents) const {
    command.insert(command.begin(), MERIDIAN_COMMAND);
    command.insert(command.end(), {"--from", directory_.write("input", contents)});
    return test::run(command);
  }

  /// Returns the words that "render --json" makes of the contents, one list for each vector.
  [[nodiscard]] std::vector<Words> rendered(const std::string& contents) const {
    const Outcome outcome = run({"render", "--json", "--keep-order"}, contents);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    std::vector<Words> vectors;
    std::istringstream lines(outcome.output);
    for (std::string line; std::getline(lines, line);) vectors.push_back(json::parse(line).get<Words>());
    return vectors;
  }

  test::TemporaryDirectory directory_;
};

TEST_F(FromFile, EveryFormGivesTheSameVector) {
  const Words words{"-out", "/out/A \"1\"\n'$`.mov", "-vr", "25", "-overwrite", "", "-foo", "x"};
  const Words valid(words.begin(), words.end() - 2);
  const auto printed = [&words](Words command) {
    command.insert(command.begin(), MERIDIAN_COMMAND);
    command.insert(command.end(), {"--keep-order", "--"});
    command.insert(command.end(), words.begin(), words.end());
    return test::run(command).output;
  };
  const std::string store = printed({"parse"});
  for (const std::string& text :
       {store, "\xef\xbb\xbf" + store, json(words).dump(), json(words).dump(2), printed({"render", "--null"}),
        printed({"render", "--shell"}), "# a comment\r\n\r\n" + json(words).dump() + "\r\n"}) {
    EXPECT_THAT(rendered(text), ElementsAre(valid)) << text;
  }
  // A line of a document may be a document itself.
  EXPECT_THAT(rendered("{\"orderedFlags\":\n[]\n, \"flagValueLookup\":\n  {\"-vn\": \"\"}\n}\n"),
              ElementsAre(Words{"-vn", ""}));
  // The rejected entries of a store are kept.
  EXPECT_THAT(run({"explain", "--strict"}, store).errors, HasSubstr("line 1: \"-foo\": is not a flag"));
  EXPECT_EQ(json::parse(run({"parse"}, store).output), json::parse(store));
}

TEST_F(FromFile, AStoreIsNotNormalisedAgain) {
  const std::string store = R"({"flagValueLookup": {"-wmt_text": "Hello", "-c_space": "sRGB"}})";
  EXPECT_THAT(rendered(store), ElementsAre(Words{"-wmt_text", "Hello", "-c_space", "sRGB"}));
  const Outcome set = run({"set", "videoBitDepth=10", "--shell"}, store);
  EXPECT_EQ(set.output, "-wmt_text Hello -c_space sRGB -vbd 10\n");
  EXPECT_THAT(set.errors, HasSubstr("line 1: warning: \"-wmt_text\": will be read differently"));
}

TEST_F(FromFile, ShellWordsAreSplitByQuotingAlone) {
  const struct {
    std::string text;
    Words words;
  } cases[] = {
      {R"(-out a\ b'c "d'"e \'" -vr)", {"-out", "a bc \"de \\'", "-vr", ""}},
      {R"(-out "\$\`\"\\\a" -web)", {"-out", "$`\"\\\\a", "-web", ""}},
      {"-out a\\\nb \\\n  -web\n", {"-out", "ab", "-web", ""}},
      {"-out a\\\r\nb\r\n", {"-out", "ab"}},
      {"-out \"a\\\nb\"", {"-out", "ab"}},
      {"-out '' -web", {"-out", "", "-web", ""}},
      {"-out a#b~=c'[1]{d,e}?'!", {"-out", "a#b~=c[1]{d,e}?!"}},
      {"\t-out\t'$HOME/*;|&<>()'", {"-out", "$HOME/*;|&<>()"}},
      {"-out '\xff\xc3'", {"-out", "\xef\xbf\xbd\xef\xbf\xbd"}},  // JSON shows these so
  };
  for (const auto& [text, words] : cases) EXPECT_THAT(rendered(text), ElementsAre(words)) << text;
  EXPECT_EQ(run({"render"}, "-out '/\xff.mov'").output, "-out\n/\xff.mov\n");
  EXPECT_EQ(run({"render"}, std::string("-out\0/\xff.mov", 11)).output, "-out\n/\xff.mov\n");
  using namespace std::string_literals;
  EXPECT_THAT(rendered("-out\0a\n-b\0-web\0\n-out\0c\0\n"s),
              ElementsAre(Words{"-out", "a\n-b", "-web", ""}, Words{"-out", "c"}));
}

TEST_F(FromFile, RefusesWhatAShellWouldInterpret) {
  const struct {
    std::string text;
    std::string says;
  } cases[] = {
      {"-out \"$HOME\"", "line 1, column 7: has an unquoted character that a shell would interpret: $; put it in"},
      {"-clut /l/a?.cube", "has an unquoted character that a shell would interpret: ?"},
      {"-out \u00e9 `x`", "line 1, column 8: has an unquoted character that a shell would interpret: `;"},
      {"-out *.mov", "column 6"},
      {"-out {a,b}.mov", "column 6"},
      {"-out [ab].mov", "column 6"},
      {"-out a;b", "column 7"},
      {"\n-out a|b", "line 2, column 7"},
      {"-out a &", "column 8"},
      {"-out a <b", "column 8"},
      {"-out a >b", "column 8"},
      {"-out (a", "column 6"},
      {"-out a)", "column 7"},
      {"-out ~/a", "column 6"},
      {"-out a # why", "column 8"},
      {"-out 'a", "line 1, column 6: has a quotation that is not closed: ';"},
      {"-out \\\n \"a", "line 2, column 2: has a quotation that is not closed: \";"},
  };
  for (const auto& [text, says] : cases) {
    const Outcome outcome = run({"render"}, text);
    EXPECT_EQ(outcome.status, 1) << text;
    EXPECT_THAT(outcome.output, IsEmpty()) << text;
    EXPECT_THAT(outcome.errors, AllOf(StartsWith("meridian: line "), HasSubstr(says))) << text;
  }
}

TEST_F(FromFile, RefusesWhatIsNotAVector) {
  const struct {
    std::string text;
    std::string says;
  } cases[] = {
      {"", "input\": has no argument vector"},
      {" \n# only a comment\n", "has no argument vector"},
      {"\xff\xfe-\0o\0", "is UTF-16; save it as UTF-8"},
      {"{\"flagValueLookup\":\n {\"-a\": x}}", "line 2, column 9: is not JSON"},
      {R"({"flagValueLookup": {"-a": "1", "-a": "2"}})", "has a JSON member twice: -a"},
      {R"(["-out", "a\u0000"])", "has a NUL in a JSON text"},
      {R"({"\u0000": 1})", "has a NUL in a JSON text"},
      {R"(["-vr", 25])", "word 2 is not a text but number"},
      {R"({"flagValueLookup": {"-vr": 25}})", "/flagValueLookup/-vr: expected a string, found number"},
      {std::string(1000000, '['), "nested more than 64 levels deep"},
      {std::string(100, '[') + std::string(100, ']'), "nested more than 64 levels deep"},
      {std::string((std::size_t{64} << 20U) + 1, ' '), "is larger than 64 MiB"},
  };
  for (const auto& [text, says] : cases) {
    const Outcome outcome = run({"render"}, text);
    EXPECT_EQ(outcome.status, 1) << says;
    EXPECT_THAT(outcome.output, IsEmpty()) << says;
    EXPECT_THAT(outcome.errors, HasSubstr(says));
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
  }
}

TEST_F(FromFile, NumbersTheFindingsOfABatchAndWorksOnAllLines) {
  const std::string jobs =
      "# jobs\n"
      "-out a.mov -vr 25\n"
      "\n"
      "-vcoedc h264 -out b.mov stray\n"
      "-out 'c.mov\n"
      "-dims '1280 x 720' -vr 24 -vr 25 -web on\n"
      "-out d.mov -vr\n";
  const Outcome strict = run({"explain", "--strict"}, jobs);
  EXPECT_EQ(strict.status, 1);
  for (const std::string finding :
       {"line 4: \"-vcoedc\": is not a flag of the transcoder; did you mean -vcodec?",
        "line 4: \"stray\": belongs to no flag", "line 5, column 6: has a quotation that is not closed",
        "line 6: \"-dims\": cannot be parsed", "line 6: \"-vr\": is repeated",
        "line 6: \"-web\": accepts no value but consumed", "line 7: \"-vr\": needs a value"}) {
    EXPECT_THAT(strict.errors, HasSubstr("meridian: " + finding));
  }
  EXPECT_EQ(std::ranges::count(strict.errors, '\n'), 7) << strict.errors;
  EXPECT_THAT(strict.output, AllOf(HasSubstr("Line 2\n"), HasSubstr("Line 7\n"), Not(HasSubstr("Line 5\n"))));
  EXPECT_EQ(run({"explain", "--strict"}, "-out a.mov -vr 25\n-out b.mov\n").status, 0);

  const Outcome documents = run({"explain", "--json"}, jobs);
  EXPECT_EQ(documents.status, 1);  // line 5
  std::istringstream lines(documents.output);
  std::vector<int> numbers;
  for (std::string line; std::getline(lines, line);) numbers.push_back(json::parse(line)["line"].get<int>());
  EXPECT_THAT(numbers, ElementsAre(2, 4, 6, 7));

  const Outcome shell = run({"render"}, "-out '/a b'\n-web\n");
  EXPECT_EQ(shell.output, "-out '/a b'\n-web ''\n");
  const Outcome terminated = run({"render", "--null"}, "-out '/a b'\n-web\n");
  EXPECT_EQ(terminated.status, 1);
  EXPECT_THAT(terminated.errors, HasSubstr("would run together"));
  const Outcome set = run({"set", "outputFile=-x"}, "-out a\n-out b\n");
  EXPECT_THAT(set.errors, AllOf(HasSubstr("line 1: \"outputFile\": cannot begin"), HasSubstr("line 2: ")));

  // Lists and stores, one a line; a faulty line does not end the batch.
  const Outcome listed =
      run({"render", "--json"}, "[\"-out\", \"a\"]\n[\"-out\",\n# c\n{\"flagValueLookup\": {}}\n[]\n");
  EXPECT_EQ(listed.output, "[\"-out\",\"a\"]\n[]\n[]\n");
  EXPECT_THAT(listed.errors, StartsWith("meridian: line 2, column 9: is not JSON"));
}

TEST_F(FromFile, WarnsOfAQuotationThatHoldsSeveralLines) {
  const Outcome outcome = run({"render", "--json"}, "-out 'a\n-vr 25\n-out b' -web\n");
  EXPECT_EQ(outcome.output, "[\"-out\",\"a\\n-vr 25\\n-out b\",\"-web\",\"\"]\n");
  EXPECT_THAT(outcome.errors, HasSubstr("warning: line 1, column 6: this quotation goes on in the next line"));
}

TEST_F(FromFile, AcceptsFilesAndPipesOnly) {
  const auto shell = [](const std::string& script) { return test::run({"bash", "-c", script, MERIDIAN_COMMAND}); };
  EXPECT_EQ(shell(R"(echo -web | "$0" render --shell --from -)").output, "-web ''\n");
  EXPECT_EQ(shell(R"("$0" render --shell --from <(echo -web))").output, "-web ''\n");
  EXPECT_THAT(shell(R"(yes | "$0" render --from -)").errors, HasSubstr("is larger than 64 MiB"));
  const std::pair<std::string, std::string> refused[] = {
      {"/dev/zero", "\"/dev/zero\": is not a file or a pipe"},
      {"/tmp", "\"/tmp\": is not a file or a pipe"},
      {"/none\x1b", "\"/none\\x1b\": cannot be read: No such file"},
      {"", "cannot be read"},
  };
  for (const auto& [path, says] : refused) {
    const Outcome outcome = test::run({MERIDIAN_COMMAND, "render", "--from", path});
    EXPECT_EQ(outcome.status, 1) << path;
    EXPECT_THAT(outcome.errors, HasSubstr(says));
  }
  const Outcome both = test::run({MERIDIAN_COMMAND, "render", "--from", "-", "--", "-web"});
  EXPECT_EQ(both.status, 2);
  EXPECT_THAT(both.errors, HasSubstr("--from and words after \"--\" cannot be used together"));
}

TEST(StrictReading, FailsForWhateverWillNotBeUsed) {
  const struct {
    Words words;
    int status;
    std::string says;
  } cases[] = {
      {{"-out", "a.mov", "-vr", "25", "-preset", "solvane_cloud", "-dims", "1x1"}, 0, ""},
      {{"-web", "-web", "-VCODEC", "H264"}, 0, ""},
      {{"-vcoedc", "h265"}, 1, "\"-vcoedc\": is not a flag"},
      {{"-preset", "cloud"}, 1, "does not name a preset"},
      {{"-dims", "big"}, 1, "\"-dims\": cannot be parsed"},
      {{"-c_space", "srgb"}, 1, "\"-c_space\": has a value that no argument vector can carry"},
      {{"-web", "yes"}, 1, "accepts no value"},
      {{"-vr"}, 1, "needs a value"},
      {{"-vr", "24", "-vr", "25"}, 1, "is repeated"},
      {{"-preset", "fast", "-preset", "solvane_cloud"},
       1,
       "\"-preset\": is repeated, and the last value wins: previously"},
      {{"-tc_custom", "01:00:00:00", "-tc_match"}, 1, "\"-tc_match\": is not used: the timecode is custom; remove"},
      {{"-wmf_path", "/Looks/Logo.png"}, 1, "was written differently"},
      {{"-hello", "x"}, 1, "was accepted only because"},
      {{"-in", "x"}, 1, "is not an input file"},
      {{"-ac_omit", "x"}, 1, "leaves out no audio track"},
      {{"stray"}, 1, "\"stray\": belongs to no flag"},
  };
  for (const auto& [words, status, says] : cases) {
    for (const std::string subcommand : {"explain", "parse"}) {
      Words command{MERIDIAN_COMMAND, subcommand, "--strict", "--"};
      command.insert(command.end(), words.begin(), words.end());
      const Outcome outcome = test::run(command);
      EXPECT_EQ(outcome.status, status) << testing::PrintToString(command) << outcome.errors;
      EXPECT_THAT(outcome.errors, HasSubstr(says));
      EXPECT_EQ(outcome.errors.empty(), status == 0) << outcome.errors;
      EXPECT_THAT(outcome.output, Not(IsEmpty()));
    }
  }
}

TEST(StrictReading, ParseAndRenderTellOfStrayWords) {
  for (const std::string subcommand : {"parse", "render", "set"}) {
    Words command{MERIDIAN_COMMAND, subcommand, "--", "-out", "a.mov", "st\x1bray"};
    if (subcommand == "set") command.insert(command.begin() + 2, "videoBitDepth=10");
    const Outcome outcome = test::run(command);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "meridian: warning: \"st\\x1bray\": belongs to no flag\n");
  }
}

}  // namespace
}  // namespace meridian
