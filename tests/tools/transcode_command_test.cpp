// meridian transcode and meridian-transcoder, as people and applications start them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/engine/made_media.h"
#include "tests/support/process.h"

namespace meridian::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ContainsRegex;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

Words joinedWords(Words words, const Words& others) {
  words.insert(words.end(), others.begin(), others.end());
  return words;
}

Outcome planOf(const Words& words, const Words& options = {}) {
  return run(joinedWords(joinedWords({MERIDIAN_COMMAND, "transcode", "--plan"}, joinedWords(options, {"--"})), words));
}

Outcome transcoder(const Words& words, const RunOptions& options = {}) {
  return run(joinedWords({MERIDIAN_TRANSCODER}, words), options);
}

Words linesOf(const std::string& text) {
  Words lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(Transcoder, PrintsEveryListing) {
  const struct {
    std::string flag;
    std::string says;
  } cases[] = {
      {"-h", "\n  -in_GROUP_PLACE VALUE"},
      {"-codecs", "\n  mjpeg           mjpeg"},
      {"-formats", "\n  qt     QuickTime"},
      {"-version", "\nlibavcodec "},
      {"-acknowledge", "Apache License, version 2.0\n"},
      {"-presets", "solvane_4444xq"},
      {"-aspect_scalings", "letterbox\n"},
      {"-crop_anchors", "tl\n"},
      {"-color_spaces", "sRGB\n"},
      {"-audio_channel_layouts", "stereo\n"},
      {"-tc_burn_anchors", "br\n"},
      {"-gpu_platforms", "(no GPU can be used here|vaapi|cuda)\n"},
  };
  for (const auto& [flag, says] : cases) {
    const Outcome outcome = transcoder({"-isTranscoder", flag});
    EXPECT_EQ(outcome.status, 0) << flag;
    EXPECT_THAT(outcome.output, ContainsRegex(says)) << flag;
    EXPECT_EQ(run({MERIDIAN_COMMAND, "transcode", "--", flag}).output, outcome.output) << flag;
  }
  EXPECT_EQ(transcoder({"--help"}).output, transcoder({"-h"}).output);
  EXPECT_EQ(transcoder({"--version"}).output, transcoder({"-version"}).output);
  EXPECT_EQ(transcoder({}).status, 2);
  EXPECT_EQ(transcoder({"-codecs"}, {{}, "/dev/full"}).status, 1);
}

TEST(Transcoder, LoadsTheEngineOnlyWhereItIsNeeded) {
  const RunOptions traced{{"LD_DEBUG=files"}, {}};
  EXPECT_THAT(run({MERIDIAN_COMMAND, "--help"}, traced).errors, AllOf(HasSubstr("libc.so"), Not(HasSubstr("libav"))));
  EXPECT_THAT(run({MERIDIAN_COMMAND, "explain", "--", "-vn"}, traced).errors, Not(HasSubstr("libav")));
  EXPECT_THAT(run({MERIDIAN_COMMAND, "transcode", "--", "-codecs"}, traced).errors, HasSubstr("libavcodec"));
}

TEST(Transcoder, SaysWhatIsMissingWithoutTheEngine) {
  const TemporaryDirectory elsewhere;
  const std::string command = (elsewhere.path() / "meridian").string();
  std::filesystem::copy_file(MERIDIAN_COMMAND, command);
  for (const Words& words : {Words{"transcode", "--"}, Words{"explain", "--plan", "--"}}) {
    const Outcome outcome = run(joinedWords(joinedWords({command}, words), {"-codecs"}));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, AllOf(HasSubstr("built without FFmpeg"), HasSubstr("media-engine")));
  }
}

class PlannedClip : public MadeMedia {
 protected:
  void SetUp() override {
    MadeMedia::SetUp();
    if (IsSkipped()) return;
    make({{"clip.mov",
           "-map 0 -map 1 -c:v mpeg4 -r 24 -timecode 01:00:00:00 -metadata creation_time=2026-01-20T23:30:00Z"}});
  }

  [[nodiscard]] Words clipWords(const Words& others) const {
    return joinedWords({"-in_0_0", path("clip.mov"), "-out", path("new.mov")}, others);
  }
};

TEST_F(PlannedClip, IsDescribedToPeopleAndMachines) {
  const Words words = clipWords({"-vcodec", "mp4", "-dims", "32x18", "-tc_match", "-tc_track", "-crop_anchor", "tl"});
  const Outcome text = planOf(words);
  EXPECT_EQ(text.status, 0);
  EXPECT_THAT(text.output,
              AllOf(StartsWith("Sources\n  -in_0_0  \"" + path("clip.mov") + "\""), HasSubstr("\n  scale "),
                    HasSubstr("with mpeg4"), HasSubstr("\n  track 0 "), HasSubstr("01:00:00:00"),
                    HasSubstr("\nOutput\n  file       \"" + path("new.mov") + "\"")));
  EXPECT_THAT(linesOf(text.errors), ElementsAre(StartsWith("meridian: warning: \"-crop_anchor\": has no effect")));

  const Outcome machine = planOf(words, {"--json"});
  EXPECT_EQ(machine.status, 0);
  EXPECT_THAT(machine.errors, IsEmpty());
  const json document = json::parse(machine.output);
  EXPECT_EQ(document["errors"], json::array());
  EXPECT_EQ(document["plan"]["sources"][0]["parts"][0]["path"], path("clip.mov"));
  EXPECT_EQ(document["plan"]["video"]["encoder"]["name"], "mpeg4");
  EXPECT_EQ(document["plan"]["timecode"]["text"], "01:00:00:00");
  EXPECT_EQ(document["plan"]["warnings"][0]["place"], "-crop_anchor");

  const std::string blanks = path("two  blanks in  a name.mov");
  const Outcome narrow = runOnTerminal(
      joinedWords({"sh", "-c", "stty cols 60; exec \"$0\" \"$@\"", MERIDIAN_COMMAND, "transcode", "--plan", "--"},
                  joinedWords({"-in_0_0", path("clip.mov"), "-out", blanks}, Words(words.begin() + 4, words.end()))),
      {{"TERM=xterm"}, {}});
  EXPECT_THAT(narrow.output, HasSubstr("\x1b[1mVideo\x1b[0m"));
  EXPECT_THAT(narrow.output, HasSubstr("\n           "));  // continues below its column
  EXPECT_THAT(narrow.output, AllOf(HasSubstr('"' + blanks + '"'), Not(ContainsRegex("[0-9]\r\n +fps"))));
  for (const std::string& line : linesOf(narrow.output)) {
    const bool canBeBroken = line.find(' ', 13) != std::string::npos && !line.starts_with("meridian: ") &&
                             line.find(blanks) == std::string::npos;
    if (canBeBroken) {
      EXPECT_LE(line.size(), 61U) << line;  // with the carriage return
    }
  }
  EXPECT_THAT(directory().names(), ElementsAre("clip.mov"));
}

TEST_F(PlannedClip, GivesEveryErrorAtOnce) {
  const Words words =
      clipWords({"-out", path("none/new.mov"), "-vcodec", "mp4", "-dims", "7x7", "-vr", "900", "-vcoedc", "h264"});
  const auto place = [](const std::string& flag) { return StartsWith("meridian-transcoder: \"" + flag + "\": "); };
  const Outcome outcome = transcoder(words);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, IsEmpty());
  EXPECT_THAT(linesOf(outcome.errors),
              testing::UnorderedElementsAre(place("-vcoedc"), place("-out"), place("-dims"), place("-vr")));

  const Outcome machine = planOf(words, {"--json"});
  EXPECT_EQ(machine.status, 1);
  EXPECT_EQ(json::parse(machine.output)["plan"], nullptr);
  EXPECT_EQ(json::parse(machine.output)["errors"].size(), 4U);
}

TEST_F(PlannedClip, IsExplainedWithItsPlanWhereThatIsAsked) {
  const Words words = clipWords({"-vcodec", "mp4", "-dims", "7x7", "-crop_anchor", "tl"});
  const auto explained = [&](const Words& options) {
    return run(joinedWords(joinedWords({MERIDIAN_COMMAND, "explain"}, options), joinedWords({"--"}, words)));
  };
  EXPECT_THAT(explained({}).output, Not(HasSubstr("Plan\n")));
  const Outcome text = explained({"--plan", "--strict"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.output, HasSubstr("\nPlan\n  -dims  "));
  EXPECT_THAT(text.errors, HasSubstr("meridian: \"-dims\": "));
  const json plan = json::parse(explained({"--plan", "--json"}).output)["plan"];
  EXPECT_EQ(plan["errors"].size(), 1U);
  EXPECT_FALSE(json::parse(explained({"--json"}).output).contains("plan"));
}

TEST_F(PlannedClip, TakesTimeAndFontsFromItsSurroundings) {
  const Words words = clipWords({"-vcodec", "mp4", "-tc_creation", "-tc_burn"});
  const Words command = joinedWords({MERIDIAN_COMMAND, "transcode", "--plan", "--"}, words);
  // Half past eleven in the evening, and five hours earlier.
  EXPECT_THAT(run(command, {{"TZ=UTC"}, {}}).output, HasSubstr("  start   23:30:00:00"));
  EXPECT_THAT(run(command, {{"TZ=EST5"}, {}}).output, HasSubstr("  start   18:30:00:00"));
  const std::string noFonts = directory().write("fonts.conf", "<fontconfig></fontconfig>");
  EXPECT_THAT(run(command, {{"FONTCONFIG_FILE=" + noFonts}, {}}).errors,
              HasSubstr("meridian: \"-tc_burn\": needs a font, and none is found"));
}

TEST_F(PlannedClip, StaysWithinBoundsForHostileWords) {
  const std::string name = "bad \xff\x1b[31m\n.mov";
  directory().write(name, "no media");
  Words many;
  for (int place = 0; place < 3000; ++place) {
    many.insert(many.end(), {"-in_0_" + std::to_string(place), "/nowhere/" + std::to_string(place)});
  }
  const struct {
    Words words;
    std::size_t errors;
  } cases[] = {
      {{"-in_0_0", path(name), "-out", path(name)}, 2},
      {{"-in_0_0", "\x1b[2J", "-out", path("\x1b]0;x\x07.mov"), "-\xff\x1b[m", "\x1b[m"}, 2},
      {{"", "", "-"}, 3},
      {{"-in_0_0", std::string(100000, 'a'), "-out", path("new.mov")}, 1},
      {{"-in_0_0", path("clip.mov"), "-out", path(std::string(300, 'a') + ".mov")}, 1},
      {{"-in_0_0", directory().path(), "-out", path("new.mov")}, 1},
      {joinedWords(many, {"-out", path("new.mov")}), 3000},
      {{"-in_0_0", path("clip.mov"), "-out", path("new.mov"), "-progress_file", path("clip.mov")}, 1},
  };
  const std::string before = content("clip.mov");
  for (const auto& [words, errors] : cases) {
    const Outcome outcome = transcoder(words);
    const std::string first = words.size() > 1 ? words[1].substr(0, 40) : "";
    EXPECT_EQ(outcome.status, 1) << first;
    EXPECT_THAT(linesOf(outcome.errors), Each(StartsWith("meridian-transcoder: \"-"))) << first;
    EXPECT_EQ(linesOf(outcome.errors).size(), errors) << outcome.errors.substr(0, 1000);
    EXPECT_THAT(outcome.errors, Not(HasSubstr("\x1b"))) << first;
  }
  EXPECT_EQ(content("clip.mov"), before);
}

TEST_F(PlannedClip, MayBeOneOfSeveralInAFile) {
  const std::string jobs = directory().write("jobs.txt", "-in_0_0 '" + path("clip.mov") + "' -out '" + path("new.mov") +
                                                             "'\n-out /nowhere/a.mov\n-crop_anchors\n");
  const Outcome text = run({MERIDIAN_COMMAND, "transcode", "--plan", "--from", jobs});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.output, HasSubstr("\n  copy  mpeg4"));
  EXPECT_THAT(linesOf(text.errors), AllOf(testing::SizeIs(2), Each(StartsWith("meridian: line 2: \"-"))));
  const Words documents = linesOf(run({MERIDIAN_COMMAND, "transcode", "--plan", "--json", "--from", jobs}).output);
  ASSERT_EQ(documents.size(), 3U);
  EXPECT_EQ(json::parse(documents[1])["line"], 2);
  EXPECT_EQ(json::parse(documents[2]), (json{{"line", 3}, {"listing", transcoder({"-crop_anchors"}).output}}));
}

}  // namespace
}  // namespace meridian::test
