// Transcodes carried out by the command and the program: what they tell, how they end, and lists of them.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <thread>

#include "tests/engine/made_media.h"
#include "tests/engine/numbered_clip.h"
#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

extern char** environ;

namespace meridian::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using Words = std::vector<std::string>;

class TranscodeRun : public testing::Test {
 protected:
  void SetUp() override {
    if (!isInstalled("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
    makeClip(path("in.mov"), {.frames = 24});
  }

  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }

  /// Splits a text at its blanks; a word that begins with "@" names a file of the test.
  [[nodiscard]] Words wordsOf(const std::string& text) const {
    std::istringstream stream(text);
    Words words(std::istream_iterator<std::string>(stream), {});
    for (std::string& word : words) {
      if (word.starts_with('@')) word = path(word.substr(1));
    }
    return words;
  }

  [[nodiscard]] Outcome transcoder(const std::string& text) const {
    Words words = wordsOf(text);
    words.insert(words.begin(), MERIDIAN_TRANSCODER);
    return run(words);
  }

  [[nodiscard]] Outcome command(const std::string& text) const {
    Words words = wordsOf(text);
    words.insert(words.begin(), {MERIDIAN_COMMAND, "transcode"});
    return run(words);
  }

  [[nodiscard]] Words linesOf(const std::string& name) const {
    std::ifstream file(path(name));
    Words lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  [[nodiscard]] const TemporaryDirectory& directory() const { return directory_; }

 private:
  TemporaryDirectory directory_;
};

TEST_F(TranscodeRun, TellsHowFarItIs) {
  makeClip(path("long.mov"), {.frames = 250});
  const Outcome outcome = transcoder(
      "-in_0_0 @long.mov -out @out.mov -vcodec h265 -vbd 8 -dims 960x540 -aspect_scaling stretch "
      "-progress_file @progress -progress_prefix at=");
  ASSERT_EQ(outcome.status, 0) << outcome.errors;
  const Words lines = linesOf("progress");
  ASSERT_GE(lines.size(), 2U);
  double portion = 0;
  for (std::size_t place = 0; place < lines.size(); ++place) {
    const json line = json::parse(lines[place]);
    EXPECT_GE(line["portion"].get<double>(), portion);
    portion = line["portion"];
    EXPECT_EQ(line["state"], place + 1 < lines.size() ? "running" : "done");
    EXPECT_EQ(line["frames"], 250);
    EXPECT_TRUE(line["fps"].is_number() && line["speed"].is_number() && line.contains("eta"));
  }
  EXPECT_EQ(portion, 1);
  EXPECT_EQ(json::parse(lines.back())["error"], nullptr);
  EXPECT_THAT(outcome.output, AllOf(testing::StartsWith("at=0."), testing::EndsWith("\nat=1.0000\n")));
}

TEST_F(TranscodeRun, ReplacesProgressButNothingElse) {
  makeClip(path("in.mov"), {.frames = 5});
  makeClip(path("precious.mov"), {.frames = 5});
  const auto size = std::filesystem::file_size(path("precious.mov"));
  const Outcome refused = transcoder("-in_0_0 @in.mov -out @out.mov -vcodec h264 -progress_file @precious.mov");
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.errors, HasSubstr("holds something else; check the path of -progress_file"));
  EXPECT_EQ(std::filesystem::file_size(path("precious.mov")), size);
  EXPECT_FALSE(std::filesystem::exists(path("out.mov")));
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(transcoder("-in_0_0 @in.mov -out @out.mov -vcodec h264 -overwrite -progress_file @progress").status, 0);
    EXPECT_EQ(json::parse(linesOf("progress").back())["state"], "done");
  }
}

TEST_F(TranscodeRun, PrintsItsResult) {
  const Outcome text = command("-- -in_0_0 @in.mov -out @a.mov -vcodec h264");
  ASSERT_EQ(text.status, 0) << text.errors;
  EXPECT_THAT(text.output, AllOf(HasSubstr("a.mov: 24 frames, 0.96 s, "), HasSubstr(" MB in ")));
  const Outcome outcome = command("--json -- -in_0_0 @in.mov -out @b.mov -vcodec h264 -web");
  const json result = json::parse(outcome.output)["result"];
  EXPECT_EQ(result["frames"], 24);
  EXPECT_EQ(result["bytes"], std::filesystem::file_size(path("b.mov")));
  EXPECT_EQ(result["output"]["video"][0]["codec"], "H.264");
  // What fails says why, in the progress file too.
  directory().write("broken.mov", "not a movie");
  const Outcome failed = command("--json -- -in_0_0 @broken.mov -out @c.mov -vcodec h264 -progress_file @progress");
  EXPECT_EQ(failed.status, 1);
  EXPECT_EQ(json::parse(failed.output)["errors"][0]["code"], "inputNotRead");
  EXPECT_EQ(json::parse(linesOf("progress").back())["state"], "failed");
  EXPECT_THAT(directory().names(), ElementsAre("a.mov", "b.mov", "broken.mov", "in.mov", "progress"));
}

TEST_F(TranscodeRun, WritesProgressToAFifoWhoseReaderMayGo) {
  ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
  std::thread reader([this] {
    std::ifstream fifo(path("fifo"));
    std::string line;
    std::getline(fifo, line);
  });
  const Outcome outcome = transcoder("-in_0_0 @in.mov -out @out.mov -vcodec h264 -progress_file @fifo");
  reader.join();
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(numbersIn(path("out.mov")), numbersFrom(0, 24));
}

/// Starts a program without waiting for it.
pid_t started(const Words& command) {
  std::vector<char*> words;
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  pid_t child = 0;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  EXPECT_EQ(posix_spawn(&child, words[0], &actions, nullptr, words.data(), environ), 0);
  posix_spawn_file_actions_destroy(&actions);
  return child;
}

TEST_F(TranscodeRun, LeavesNothingHoweverItEnds) {
  makeClip(path("long.mov"), {.frames = 100});
  directory().write("old.mov", "precious");
  std::mt19937 random(1);
  int ended = 0;
  for (int round = 0; round < MERIDIAN_KILLS; ++round) {
    const int signal = std::array{SIGKILL, SIGTERM, SIGINT}[static_cast<std::size_t>(round % 3)];
    const bool replaces = round % 2 == 0;
    Words words = wordsOf(std::string("-in_0_0 @long.mov -vcodec h264 -dims 1280x720 -aspect_scaling stretch -out ") +
                          (replaces ? "@old.mov -overwrite" : "@new.mov") + " -progress_file @progress");
    words.insert(words.begin(), MERIDIAN_TRANSCODER);
    const pid_t child = started(words);
    std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution(1, 500)(random)));
    kill(child, signal);
    const int status = waitForStatus(child);
    if (status == 0) {
      // It was faster than the signal.
      std::filesystem::remove(path("new.mov"));
      directory().write("old.mov", "precious");
      continue;
    }
    ++ended;
    EXPECT_EQ(status, 128 + signal);
    EXPECT_THAT(directory().names(), testing::IsSubsetOf({"in.mov", "long.mov", "old.mov", "progress"})) << signal;
    EXPECT_EQ(std::filesystem::file_size(path("old.mov")), 8U);
    const Words lines = linesOf("progress");
    EXPECT_TRUE(signal == SIGKILL || lines.empty() || json::parse(lines.back())["state"] == "cancelled");
    std::filesystem::remove(path("progress"));
  }
  EXPECT_GT(ended, 0);
}

TEST_F(TranscodeRun, SaysThatTheVolumeIsFull) {
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{100'000, before.rlim_max};
  std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  const Outcome outcome = transcoder("-in_0_0 @in.mov -out @out.mov -vcodec prores422hq");
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, SIG_DFL);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, AllOf(HasSubstr("out.mov"), HasSubstr("cannot be written"), HasSubstr("too large")));
  EXPECT_THAT(directory().names(), ElementsAre("in.mov"));
}

TEST_F(TranscodeRun, CarriesOutAListAndResumesIt) {
  makeClip(path("b.mov"), {.frames = 12});
  directory().write("look.cube", "LUT_1D_SIZE 2\n0 0 0\n1 1 1\n");
  const auto line = [this](const std::string& words) {
    std::string text;
    for (const std::string& word : wordsOf(words)) text += (text.empty() ? "" : " ") + word;
    return text + "\n";
  };
  directory().write("jobs", line("-in_0_0 @in.mov -out @1.mov -vcodec h264 -clut @look.cube") +
                                line("-in_0_0 @b.mov -out @2.mov") + line("-in_0_0 @none.mov -out @3.mov") +
                                line("-in_0_0 @in.mov -out @4.mov -vcodec mjpeg"));
  const Outcome first = command("--jobs @jobs --parallel 2");
  EXPECT_EQ(first.status, 1);
  EXPECT_THAT(first.output, AllOf(HasSubstr("1: done: "), HasSubstr("2: done: "), HasSubstr("3: failed: "),
                                  HasSubstr("4: done: "), HasSubstr("\n3 done, 1 failed\n")));
  EXPECT_EQ(numbersIn(path("1.mov")), numbersFrom(0, 24));

  // A LUT that was changed, and an output that was: both are made again.
  directory().write("look.cube", "LUT_1D_SIZE 2\n0 0 0\n0.9 1 1\n");
  std::filesystem::resize_file(path("4.mov"), 100);
  std::ofstream(path("jobs.state"), std::ios::app) << "{\"output\": \"half a li";
  const Outcome refused = command("--jobs @jobs --resume --json");
  EXPECT_EQ(refused.status, 1);
  Words states;
  std::istringstream lines(refused.output);
  for (std::string each; std::getline(lines, each);) {
    const json document = json::parse(each);
    if (document.contains("state")) states.push_back(document["job"].dump() + document["state"].dump());
  }
  EXPECT_THAT(states, testing::UnorderedElementsAre("1\"failed\"", "2\"complete\"", "3\"failed\"", "4\"failed\""));
  std::filesystem::remove(path("1.mov"));
  std::filesystem::remove(path("4.mov"));
  makeClip(path("none.mov"), {.frames = 2});
  const Outcome second = command("--jobs @jobs --resume");
  EXPECT_EQ(second.status, 0) << second.errors;
  EXPECT_THAT(second.output, HasSubstr("\n3 done, 0 failed, 1 complete before\n"));
  const Outcome third = command("--jobs @jobs --resume");
  EXPECT_EQ(third.status, 0) << third.errors;
  EXPECT_THAT(third.output, HasSubstr("\n0 done, 0 failed, 4 complete before\n"));
}

TEST_F(TranscodeRun, TakesListsOfAllKindsOfFiles) {
  const std::string name = path("n\xff.mov");
  const auto list = [&](const Words& words) {
    std::string text;
    for (const std::string& word : words) text += word + '\0';
    return text + '\n';
  };
  directory().write("jobs", list({"-in_0_0", path("in.mov"), "-out", name}));
  // A name that is not UTF-8 is known again.
  EXPECT_EQ(command("--jobs @jobs").status, 0);
  EXPECT_THAT(command("--jobs @jobs --resume").output, HasSubstr("0 done, 0 failed, 1 complete before"));
  // Beside a pipe nothing can be kept.
  std::filesystem::remove(name);
  const std::string script = "\"" MERIDIAN_COMMAND "\" transcode --jobs <(cat \"$0\")";
  const Outcome piped = run({"bash", "-c", script, path("jobs")});
  EXPECT_EQ(piped.status, 0) << piped.errors;
  EXPECT_THAT(piped.output, HasSubstr("1 done, 0 failed"));
  EXPECT_EQ(run({"bash", "-c", script + " --resume", path("jobs")}).status, 1);
  // What keeps the state is looked at before any work.
  std::filesystem::remove(name);
  std::filesystem::remove(path("jobs.state"));
  std::filesystem::create_directory(path("jobs.state"));
  EXPECT_THAT(command("--jobs @jobs").errors, HasSubstr("jobs.state"));
  EXPECT_FALSE(std::filesystem::exists(name));
  // A list that never comes is given up as other commands give up theirs.
  ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
  EXPECT_EQ(run({"timeout", "-k", "10", "0.5", MERIDIAN_COMMAND, "transcode", "--jobs", path("fifo")}).status, 124);
}

TEST_F(TranscodeRun, CarriesOutOneJobInTwoProcessesAtOnce) {
  std::string jobs = "# the first is not carried out\n";
  for (const std::string words : {"-in_0_0 @none.mov -out @none.mov", "-in_0_0 @in.mov -out @out.mov -vcodec h264"}) {
    for (const std::string& word : wordsOf(words)) jobs += word + " ";
    jobs += "\n";
  }
  directory().write("jobs", jobs);
  const std::string task = "'" MERIDIAN_COMMAND "' transcode --job 2 --resume \"$0\"";
  const Outcome both =
      run({"sh", "-c", task + " & " + task + "; first=$?; wait $!; exit $((first + $?))", path("jobs")});
  EXPECT_EQ(both.status, 0) << both.output << both.errors;
  EXPECT_EQ(numbersIn(path("out.mov")), numbersFrom(0, 24));
  std::ifstream file(path("jobs.results/2.json"));
  const json result = json::parse(file);
  EXPECT_EQ(result["state"], "done");
  EXPECT_EQ(result["completion"]["output"], path("out.mov"));
  EXPECT_THAT(command("--job 2 --resume @jobs").output, HasSubstr("2: complete: "));
  for (const std::string words : {"--job 3 @jobs", "--job 0 @jobs", "--job x @jobs", "--job 1 @jobs"}) {
    EXPECT_EQ(command(words).status, 1) << words;
  }
  for (const std::string words : {"--job 1", "@jobs", "--job 1 --jobs @jobs", "--job 1 --plan @jobs"}) {
    EXPECT_EQ(command(words).status, 2) << words;
  }
  // If results cannot be kept, nothing begins.
  std::filesystem::remove_all(path("jobs.results"));
  directory().write("jobs.results", "");
  std::filesystem::remove(path("out.mov"));
  const Outcome unkept = command("--job 2 @jobs");
  EXPECT_EQ(unkept.status, 1);
  EXPECT_THAT(unkept.errors, HasSubstr("jobs.results"));
  EXPECT_FALSE(std::filesystem::exists(path("out.mov")));
}

TEST_F(TranscodeRun, RefusesJobsThatWriteWhatOthersUse) {
  std::filesystem::create_directory_symlink(directory().path(), path("again"));
  std::string jobs;
  for (const std::string words :
       {"-in_0_0 @in.mov -out @a.mov", "-in_0_0 @in.mov -out @again/a.mov", "-in_0_0 @in.mov -out @b.mov",
        "-in_0_0 @b.mov -out @c.mov", "-in_0_0 @in.mov -out @d.mov -progress_file @in.mov"}) {
    for (const std::string& word : wordsOf(words)) jobs += word + " ";
    jobs += "\n";
  }
  directory().write("jobs", jobs);
  const Outcome outcome = command("--jobs @jobs");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output,
              AllOf(HasSubstr("1: failed: writes "), HasSubstr("as job 2 does"), HasSubstr("3: failed: writes "),
                    HasSubstr("which job 4 reads"), HasSubstr("5: failed: writes ")));
  EXPECT_EQ(numbersIn(path("in.mov")), numbersFrom(0, 24));
  EXPECT_EQ(command("--jobs @none").status, 1);
  EXPECT_EQ(command("--jobs - --resume").status, 2);
  EXPECT_EQ(command("--resume -- -codecs").status, 2);
}

}  // namespace
}  // namespace meridian::test
