// meridian analyze and meridian-media-analysis, as people and applications start them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/engine/made_media.h"
#include "tests/support/process.h"

namespace meridian::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

class AnalyzeCommandTest : public MadeMedia {
 protected:
  void SetUp() override {
    MadeMedia::SetUp();
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(
        make({{"clip.mov", "-map 0:v -map 1:a -c:v mjpeg -c:a pcm_s16le -timecode 01:00:00;00 -r 30000/1001"},
              {"sound.wav", "-map 1:a"}}));
    std::filesystem::create_directory(path("work"));
  }

  /// Returns the words of the tool for these media.
  [[nodiscard]] Words wordsFor(const Words& media, const Words& further = {}) const {
    Words words{MERIDIAN_MEDIA_ANALYSIS};
    for (const std::string& each : media) words.insert(words.end(), {"-pathToAnalyze", each});
    words.insert(words.end(), {"-workDirectory", path("work"), "-resultsFilePath", path("results.json")});
    words.insert(words.end(), further.begin(), further.end());
    return words;
  }

  /// Returns words for an analysis that takes far longer than the test.
  [[nodiscard]] Words longWords(const Words& further = {}) const {
    Words words = wordsFor(Words(500, path("clip.mov")),
                           {"-snapshotLocation", "0", "0.2", "0.4", "0.6", "0.8", "1", "-maxImageWidth", "64"});
    words.insert(words.end(), further.begin(), further.end());
    return words;
  }

  [[nodiscard]] bool waitForImages() const {
    for (int waited = 0; waited < 2000; ++waited) {
      for (const auto& entry : std::filesystem::recursive_directory_iterator(path("work"))) {
        if (entry.path().extension() == ".jpg") return true;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
  }

  [[nodiscard]] bool nothingIsLeft() const {
    return std::filesystem::is_empty(path("work")) && !std::filesystem::exists(path("results.json"));
  }
};

/// Starts a program whose messages nobody reads, and whose output goes to the descriptor if there is one.
pid_t started(const Words& words, int output = -1) {
  const pid_t process = fork();
  if (process != 0) return process;
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  static_cast<void>(std::freopen("/dev/null", "w", stderr));
  if (output >= 0) dup2(output, STDOUT_FILENO);
  execv(arguments.front(), arguments.data());
  _exit(127);
}

TEST_F(AnalyzeCommandTest, DecodesEverythingAndDrawsIt) {
  const std::string clip = path("clip.mov");
  const std::string page = path("page.png");
  const Outcome shown = run({MERIDIAN_COMMAND, "analyze", "--deep", clip});
  EXPECT_EQ(shown.status, 0) << shown.errors;
  EXPECT_THAT(shown.output, AllOf(HasSubstr("\n  Counted    9 frames, 0:00.3, constant rate"), HasSubstr("\n  Luma"),
                                  HasSubstr(" of the images\n"), HasSubstr("\n  Loudness   nothing above -70 LUFS")));
#ifdef MERIDIAN_HAS_PLOTS
  EXPECT_EQ(run({MERIDIAN_COMMAND, "analyze", "--deep", "--plot", page, clip}).status, 0);
  const std::string size =
      run({"ffprobe", "-v", "error", "-show_entries", "stream=codec_name,width,height", "-of", "csv=p=0", page}).output;
  EXPECT_THAT(size, StartsWith("png,1600,900"));
  // What is analysed is never replaced.
  EXPECT_EQ(run({MERIDIAN_COMMAND, "analyze", "--deep", "--plot", page, page}).status, 1);
  // What cannot be shown is drawn without it: sound alone, and images alone.
  EXPECT_EQ(run({MERIDIAN_COMMAND, "analyze", "--deep", "--plot", page, path("sound.wav")}).status, 0);
  // Nor is an image that is a single pixel wide in the filmstrip.
  const std::string column = path("column.png");
  ASSERT_EQ(run({"ffmpeg", "-v", "error", "-nostdin", "-f", "lavfi", "-i", "color=s=16x4000", "-frames:v", "1", column})
                .status,
            0);
  EXPECT_EQ(run({MERIDIAN_COMMAND, "analyze", "--deep", "--plot", page, column}).status, 0);
#endif

  const Outcome document = run({MERIDIAN_COMMAND, "analyze", "--json", "--", "-pathToAnalyze", clip, "-deepAnalysis"});
  EXPECT_EQ(document.status, 0) << document.errors;
  const json deep = json::parse(document.output)["files"][0]["deep"];
  EXPECT_EQ(deep["video"]["frameCount"], 9);
  EXPECT_EQ(deep["video"]["md5"].get<std::string>().size(), 32U);
  EXPECT_EQ(deep["audio"][0]["silent"], json::array());
  EXPECT_EQ(deep["errorCount"], 0);

  // A copy without its end is an error, and what is left of it is shown all the same.
  ASSERT_EQ(run({"ffmpeg", "-v", "error", "-i", clip, "-c", "copy", "-f", "nut", path("cut.nut")}).status, 0);
  std::filesystem::resize_file(path("cut.nut"), std::filesystem::file_size(path("cut.nut")) * 2 / 3);
  const Outcome cut = run({MERIDIAN_COMMAND, "analyze", "--deep", path("cut.nut")});
  EXPECT_THAT(cut.output, HasSubstr("\n  Counted"));

  for (const Words& words : std::vector<Words>{{"--plot", page, clip},
                                               {"--deep", "--plot", page, clip, clip},
                                               {"--deep", "--plot", path("page.jpg"), clip},
                                               {"--deep", "--plot", path("none/page.png"), clip}}) {
    Words command{MERIDIAN_COMMAND, "analyze"};
    command.insert(command.end(), words.begin(), words.end());
    EXPECT_THAT(run(command).status, testing::AnyOf(1, 2));
  }
}

TEST_F(AnalyzeCommandTest, ShowsPeopleWhatIsInMedia) {
  const std::string clip = path("clip.mov");
  const Outcome one = run({MERIDIAN_COMMAND, "analyze", clip});
  EXPECT_EQ(one.status, 0);
  EXPECT_THAT(one.output,
              AllOf(StartsWith(clip + "\n  Container  QuickTime, "), HasSubstr("\n  Video      JPEG"),
                    HasSubstr(", 64x36, 29.97 FPS,"), HasSubstr("\n  Timecode   01:00:00;00 to 01:00:00;08,")));
  std::filesystem::create_directory(path("other"));
  std::filesystem::copy_file(clip, path("other/clip.mov"));
  EXPECT_THAT(run({MERIDIAN_COMMAND, "analyze", clip, path("other/clip.mov"), path("sound.wav")}).output,
              AllOf(HasSubstr(clip), HasSubstr(path("other/clip.mov")), HasSubstr("\n  sound.wav")));
  const std::string far = path("a long name\n\x1b[31m of which the terminal has no room at all.mov");
  std::filesystem::copy_file(clip, far);
  const Outcome several = run({MERIDIAN_COMMAND, "analyze", clip, path("none"), path("sound.wav"), far});
  EXPECT_EQ(several.status, 1);
  EXPECT_THAT(several.output,
              AllOf(StartsWith("  FILE"), HasSubstr("\n  clip.mov"), HasSubstr("  64x36"), HasSubstr("\\n\\x1b[31m of"),
                    HasSubstr("no room at all.mov"), Not(HasSubstr("none"))));
  EXPECT_THAT(several.errors, StartsWith("meridian: \"" + path("none") + "\": "));
  // The terminal of the tests has 80 columns.
  const Outcome narrow = runOnTerminal(
      {"sh", "-c", "stty cols 80; exec \"$@\"", "-", MERIDIAN_COMMAND, "analyze", clip, far}, {{"NO_COLOR=1"}, {}});
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = narrow.output.find('\n', begin)) != std::string::npos; begin = end + 1) {
    EXPECT_LE(end - begin, 81U) << narrow.output;
  }
  EXPECT_THAT(narrow.output, AllOf(HasSubstr("..."), HasSubstr("left out for want of width: ")));
  const json results = json::parse(run({MERIDIAN_COMMAND, "analyze", "--json", clip}).output);
  EXPECT_EQ(results["files"][0]["startTimecodeText"], "01:00:00;00");
}

TEST_F(AnalyzeCommandTest, ShowsProgressOnOneLine) {
  const std::string name = path("A001C003_230101_R1AB_" + std::string(60, 'a') + ".mov");
  std::filesystem::copy_file(path("clip.mov"), name);
  Words words{"sh", "-c", "stty cols 80; exec timeout 2 \"$@\"", "-"};
  const Words analysis =
      wordsFor(Words(2000, name), {"-snapshotLocation", "0", "0.2", "0.4", "0.6", "0.8", "1", "-maxImageWidth", "64"});
  words.insert(words.end(), analysis.begin(), analysis.end());
  const std::string shown = runOnTerminal(words, {{"TERM=xterm"}, {}}).output;
  std::size_t count = 0;
  for (std::size_t place = 0; (place = shown.find("of 2000", place)) != std::string::npos; ++place) {
    const std::size_t begin = shown.rfind('K', place) + 1;
    EXPECT_LT(std::min(shown.find('\r', place), shown.size()) - begin, 80U) << shown;
    ++count;
  }
  EXPECT_GT(count, 0U) << shown;
}

TEST_F(AnalyzeCommandTest, RefusesWordsThatCannotBeCarriedOut) {
  const struct {
    Words words;
    int status;
    std::string says;
  } cases[] = {
      {{MERIDIAN_COMMAND, "analyze"}, 2, "give FILES, or put the argument vector after \"--\""},
      {{MERIDIAN_COMMAND, "analyze", "a", "--", "b"}, 2, "FILES and words after \"--\" cannot be used together"},
      {{MERIDIAN_MEDIA_ANALYSIS}, 2, "no arguments are given"},
      {{MERIDIAN_COMMAND, "analyze", "--json", "--", "-resultsFilePath", path("r.json")}, 2, "give only one of them"},
      {wordsFor({path("clip.mov")}, {"-lut", "a.cube"}), 1, "\"-lut\": is not a flag of the analysis tool"},
      {wordsFor({path("clip.mov")}, {"-lutFile", "-a.cube"}), 1, "\"-lutFile\": needs a value"},
      {wordsFor({path("clip.mov")}, {"-parentPid", "abc"}), 1, "\"-parentPid\": needs a whole number"},
      {wordsFor({path("clip.mov")}, {"-snapshotLocation", "0.5", "half", "-maxImageWidth", "9"}), 1,
       "\"-snapshotLocation\": needs a number"},
      {{MERIDIAN_MEDIA_ANALYSIS, "-pathToAnalyze", path("clip.mov"), "-workDirectory", "/tmp"},
       1,
       "no path for the results"},
      {wordsFor({path("clip.mov")}, {"-resultsFilePath", path("clip.mov")}), 1,
       "already exists and is not overwritten"},
      {wordsFor({path("clip.mov")}, {"-snapshotLocation", "1.5", "-maxImageWidth", "9"}), 1,
       "\"1.5\": is not a location"},
  };
  const std::string clip = content("clip.mov");
  for (const auto& each : cases) {
    const Outcome outcome = run(each.words);
    EXPECT_EQ(outcome.status, each.status) << each.says;
    EXPECT_THAT(outcome.errors, HasSubstr(each.says));
    EXPECT_THAT(outcome.output, IsEmpty());
  }
  EXPECT_TRUE(nothingIsLeft());
  EXPECT_EQ(content("clip.mov"), clip);
}

TEST_F(AnalyzeCommandTest, TakesAnyPath) {
  const Words names{"a b.mov", "a\nb.mov", "\xff.mov", "%d.mov", "http:x.mov", "folder/clip.mov", "-x.mov"};
  std::filesystem::create_directory(path("folder"));
  Words paths;
  for (const std::string& name : names) {
    std::filesystem::copy_file(path("clip.mov"), path(name));
    paths.push_back(path(name));
  }
  const Outcome outcome =
      run(wordsFor(paths, {"-snapshotLocation", "1", "-maxImageWidth", "32", "-analysisId", "\xc3\xa9\n%s"}));
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(outcome.errors, HasSubstr("meridian-media-analysis: warning: 1 path is not valid UTF-8"));
  const json results = json::parse(content("results.json"));
  ASSERT_EQ(results["files"].size(), names.size());
  EXPECT_EQ(results["files"][1]["path"], paths[1]);
  for (std::size_t item = 1; item <= names.size(); ++item) {
    EXPECT_TRUE(std::filesystem::exists(path("work/\xc3\xa9\n%s/\xc3\xa9\n%s-" + std::to_string(item) + "-1.jpg")))
        << item;
  }
}

TEST_F(AnalyzeCommandTest, LeavesNothingWhenASignalOrItsParentEndsIt) {
  for (const int signal : {SIGTERM, SIGINT}) {
    const pid_t process = started(longWords());
    EXPECT_TRUE(waitForImages());
    kill(process, signal);
    EXPECT_EQ(waitForStatus(process), 128 + signal);
    EXPECT_TRUE(nothingIsLeft());
  }
  // Signals that come together, and one that the program was started to ignore.
  const pid_t both = started(longWords());
  EXPECT_TRUE(waitForImages());
  kill(both, SIGINT);
  kill(both, SIGTERM);
  EXPECT_THAT(waitForStatus(both), testing::AnyOf(128 + SIGINT, 128 + SIGTERM));
  EXPECT_TRUE(nothingIsLeft());
  std::signal(SIGHUP, SIG_IGN);
  const pid_t deaf = started(longWords());
  std::signal(SIGHUP, SIG_DFL);
  EXPECT_TRUE(waitForImages());
  kill(deaf, SIGHUP);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(waitpid(deaf, nullptr, WNOHANG), 0);
  kill(deaf, SIGTERM);
  EXPECT_EQ(waitForStatus(deaf), 128 + SIGTERM);
  EXPECT_TRUE(nothingIsLeft());
  const pid_t parent = started({"/bin/sleep", "600"});
  const pid_t process = started(longWords({"-parentPid", std::to_string(parent)}));
  EXPECT_TRUE(waitForImages());
  kill(parent, SIGKILL);
  EXPECT_EQ(waitForStatus(process), 1);
  EXPECT_TRUE(nothingIsLeft());
  waitForStatus(parent);

  // One that is not there any more.
  const Outcome orphan = run(longWords({"-parentPid", std::to_string(parent)}));
  EXPECT_EQ(orphan.status, 1);
  EXPECT_THAT(orphan.errors, AllOf(HasSubstr("-parentPid"), HasSubstr("has ended")));
  EXPECT_TRUE(nothingIsLeft());
  EXPECT_EQ(run(wordsFor({path("clip.mov")}, {"-parentPid", std::to_string(getpid())})).status, 0);
}

TEST_F(AnalyzeCommandTest, HasWholeResultsOrNone) {
  const pid_t process = started(longWords());
  EXPECT_TRUE(waitForImages());
  kill(process, SIGKILL);
  EXPECT_EQ(waitForStatus(process), 128 + SIGKILL);
  EXPECT_FALSE(std::filesystem::exists(path("results.json")));
  std::filesystem::remove_all(path("work"));
  std::filesystem::create_directory(path("work"));

  // Results that cannot be printed: on a full device, to nobody, and to a reader that lets them wait.
  const Words printed{MERIDIAN_COMMAND,
                      "analyze",
                      "--json",
                      "--",
                      "-pathToAnalyze",
                      path("clip.mov"),
                      "-workDirectory",
                      path("work"),
                      "-snapshotLocation",
                      "0",
                      "-maxImageWidth",
                      "64"};
  const Outcome unprinted = run(printed, {{}, "/dev/full"});
  EXPECT_EQ(unprinted.status, 1);
  EXPECT_THAT(unprinted.errors, HasSubstr("standard output cannot be written"));
  EXPECT_TRUE(nothingIsLeft());
  Words closed{"sh", "-c", "\"$@\" | :", "-"};
  closed.insert(closed.end(), printed.begin(), printed.end());
  static_cast<void>(run(closed));
  EXPECT_TRUE(nothingIsLeft());
  Words many = printed;
  many.insert(many.begin() + 4, "-pathToAnalyze");
  many.insert(many.begin() + 5, 60, path("clip.mov"));
  std::array<int, 2> pipeline{};
  ASSERT_EQ(::pipe(pipeline.data()), 0);
  const pid_t blocked = started(many, pipeline[1]);
  int waiting = 0;
  for (int waited = 0; waiting < 65'536 && waited < 2000; ++waited) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ioctl(pipeline[0], FIONREAD, &waiting);
  }
  kill(blocked, SIGTERM);
  EXPECT_EQ(waitForStatus(blocked), 128 + SIGTERM);
  EXPECT_TRUE(nothingIsLeft());
  close(pipeline[0]);
  close(pipeline[1]);

  // Files may have 1 KiB: neither the image nor the results fit.
  const auto limited = [this](const std::string& limit, const Words& words) {
    Words command{"sh", "-c", "ulimit -f " + limit + "; exec \"$@\"", "-"};
    command.insert(command.end(), words.begin(), words.end());
    return run(command, {{}, path("output")});
  };
  const Words words = wordsFor({path("clip.mov")}, {"-snapshotLocation", "0", "-maxImageWidth", "64"});
  const Outcome full = limited("1", words);
  EXPECT_EQ(full.status, 1);
  EXPECT_TRUE(nothingIsLeft());
  // With 16 KiB, only the results of many media do not.
  const Outcome half =
      limited("16", wordsFor(Words(20, path("clip.mov")), {"-snapshotLocation", "0", "-maxImageWidth", "64"}));
  EXPECT_EQ(half.status, 1);
  EXPECT_TRUE(nothingIsLeft());
}

}  // namespace
}  // namespace meridian::test
