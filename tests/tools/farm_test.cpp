// Lists of transcodes on a real cluster of Slurm, of one machine, in a directory of its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>
#include <sstream>
#include <thread>

#include "tests/engine/made_media.h"
#include "tests/engine/numbered_clip.h"
#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using Words = std::vector<std::string>;

/// Returns the path of a program, also where the system keeps its daemons; empty if it is not installed.
std::string programOf(const std::string& name) {
  for (const char* const folder : {"/usr/sbin/", "/usr/bin/", "/sbin/", "/bin/"}) {
    if (access((folder + name).c_str(), X_OK) == 0) return folder + name;
  }
  return {};
}

int freePort() {
  const int opened = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  EXPECT_EQ(bind(opened, reinterpret_cast<sockaddr*>(&address), size), 0);
  EXPECT_EQ(getsockname(opened, reinterpret_cast<sockaddr*>(&address), &size), 0);
  close(opened);
  return ntohs(address.sin_port);
}

/// Waits until something holds, for as long as a slow machine may need.
bool waitUntil(const auto& holds, std::chrono::seconds most = std::chrono::seconds(240)) {
  const auto end = std::chrono::steady_clock::now() + most;
  while (std::chrono::steady_clock::now() < end) {
    if (holds()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return holds();
}

/// A cluster of this machine alone, whose daemons end with it.
class Farm : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* const program : {"munged", "slurmctld", "slurmd", "sbatch", "squeue", "scancel"}) {
      if (programOf(program).empty()) GTEST_SKIP() << program << " is not installed";
    }
    if (!isInstalled("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
    ASSERT_NO_FATAL_FAILURE(configure());
    start("munged",
          {"--key-file=" + path("munge/key"), "--socket=" + path("munge/sock"), "--pid-file=" + path("munge/pid"),
           "--log-file=" + path("munge/log"), "--seed-file=" + path("munge/seed"), "--force"});
    start("slurmctld");
    start("slurmd");
    ASSERT_TRUE(waitUntil([this] { return tool({"sinfo", "--noheader", "--format=%T"}).output == "idle\n"; }))
        << tool({"sinfo"}).output << tool({"sinfo"}).errors;
  }

  void TearDown() override {
    for (const char* const file : {"slurmd.pid", "slurmctld.pid", "munge/pid"}) {
      if (const auto process = processIn(file)) kill(*process, SIGKILL);
    }
  }

  [[nodiscard]] std::string path(const std::string& name) const { return (directory_.path() / name).string(); }

  [[nodiscard]] Outcome tool(const Words& words) const {
    return run(words, {{"SLURM_CONF=" + path("slurm.conf")}, {}});
  }
  [[nodiscard]] Outcome farm(const Words& words) const {
    Words command{MERIDIAN_COMMAND, "farm"};
    command.insert(command.end(), words.begin(), words.end());
    return tool(command);
  }

  void start(const std::string& daemon, const Words& options = {}) const {
    Words words{programOf(daemon)};
    words.insert(words.end(), options.begin(), options.end());
    const Outcome started = tool(words);
    ASSERT_EQ(started.status, 0) << daemon << ": " << started.errors;
  }

  [[nodiscard]] std::optional<pid_t> processIn(const std::string& file) const {
    std::ifstream stream(path(file));
    pid_t process = 0;
    return stream >> process && process > 1 ? std::optional(process) : std::nullopt;
  }

  void killAndStart(const std::string& daemon) const {
    const auto process = processIn(daemon + ".pid");
    ASSERT_TRUE(process) << daemon;
    kill(*process, SIGKILL);
    ASSERT_TRUE(waitUntil([&] { return kill(*process, 0) != 0; }));
    start(daemon);
  }

  /// Writes a list of jobs, each of which has a clip with numbers of its own.
  void writeJobs(const std::string& list, int count) const {
    std::string lines;
    for (int job = 0; job < count; ++job) {
      const std::string number = std::to_string(job);
      lines += "-in_0_0 " + path("clip" + std::to_string(job % clips) + ".mov") + " -out " +
               path("out" + number + ".mov") + " -vcodec h264 -vbd 8\n";
    }
    std::ofstream(path(list)) << lines;
  }

  void makeClips() const {
    for (int clip = 0; clip < clips; ++clip) {
      makeClip(path("clip" + std::to_string(clip) + ".mov"), {.frames = 30, .first = 100 * clip});
    }
  }

  void expectOutputs(int count) const {
    for (int job = 0; job < count; ++job) {
      EXPECT_EQ(numbersIn(path("out" + std::to_string(job) + ".mov")), numbersFrom(100 * (job % clips), 30)) << job;
    }
  }

  /// Returns a process that carries out a job of the list; nothing if none does.
  [[nodiscard]] std::optional<pid_t> jobProcess(const std::string& list) const {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
      std::ifstream file(entry.path() / "cmdline", std::ios::binary);
      const std::string words{std::istreambuf_iterator<char>(file), {}};
      const bool isJob = words.find("transcode") != std::string::npos && words.find("--job") != std::string::npos &&
                         words.find(path(list)) != std::string::npos && !words.starts_with("/bin/sh");
      if (isJob) return std::stoi(entry.path().filename().string());
    }
    return std::nullopt;
  }

  [[nodiscard]] std::size_t outputCount() const {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(directory_.path())) {
      if (entry.path().filename().string().starts_with("out")) ++count;
    }
    return count;
  }

  /// Waits for the summary. A task whose end the killed daemon did not report counts as running until its machine is
  /// asked again, and one that is begun again waits for two minutes: a test does not wait for either.
  [[nodiscard]] bool waitUntilSummary() const {
    constexpr std::chrono::seconds between(10);
    for (int round = 0; round < 24; ++round) {
      if (waitUntil([this] { return fs::exists(path("night.txt.summary")); }, between)) return true;
      static_cast<void>(tool({"scontrol", "reconfigure"}));
      std::istringstream waiting(
          tool({"squeue", "--noheader", "--array", "--states=PENDING", "--format=%i %r"}).output);
      for (std::string job, reason; waiting >> job >> reason;) {
        if (reason != "BeginTime") continue;
        static_cast<void>(tool({"scontrol", "update", "JobId=" + job, "StartTime=now"}));
      }
    }
    return false;
  }

  [[nodiscard]] std::string content(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static constexpr int clips = 4;

 private:
  void configure() const {
    for (const char* const folder : {"munge", "state", "spool", "log"}) fs::create_directory(path(folder));
    std::string key(1024, '\0');
    std::random_device random;
    for (char& byte : key) byte = static_cast<char>(random());
    std::ofstream(path("munge/key"), std::ios::binary) << key;
    fs::permissions(path("munge"), fs::perms::owner_all);
    fs::permissions(path("munge/key"), fs::perms::owner_read);
    std::array<char, 256> host{};
    ASSERT_EQ(gethostname(host.data(), host.size() - 1), 0);
    std::string name(host.data());
    name = name.substr(0, name.find('.'));
    const std::string user = run({"id", "-un"}).output;
    std::ofstream(path("slurm.conf"))
        << "ClusterName=test\nSlurmctldHost=" << name
        << "(127.0.0.1)\nAuthType=auth/munge\nAuthInfo=socket=" << path("munge/sock") << "\nSlurmUser=" << user
        << "SlurmdUser=" << user << "StateSaveLocation=" << path("state") << "\nSlurmdSpoolDir=" << path("spool")
        << "\nSlurmctldPidFile=" << path("slurmctld.pid") << "\nSlurmdPidFile=" << path("slurmd.pid")
        << "\nSlurmctldLogFile=" << path("log/slurmctld") << "\nSlurmdLogFile=" << path("log/slurmd")
        << "\nSlurmctldPort=" << freePort() << "\nSlurmdPort=" << freePort()
        << "\nProctrackType=proctrack/linuxproc\nTaskPlugin=task/none\nSelectType=select/cons_tres\n"
           "SelectTypeParameters=CR_Core\nReturnToService=2\nJobAcctGatherType=jobacct_gather/none\nMailProg=/bin/"
           "true\n"
           "SlurmdParameters=config_overrides\nBatchStartTimeout=1\nSlurmdTimeout=30\n"
           "SchedulerParameters=sched_interval=1,sched_min_interval=0,batch_sched_delay=0,bf_interval=1\nNodeName="
        << name << " NodeAddr=127.0.0.1 CPUs=2 RealMemory=500 State=UNKNOWN\nPartitionName=all Nodes=" << name
        << " Default=YES MaxTime=INFINITE State=UP\n";
  }

  TemporaryDirectory directory_;
};

TEST_F(Farm, CarriesOutEveryJobAlthoughTasksAndDaemonsAreKilled) {
  constexpr int jobs = 40;
  makeClips();
  writeJobs("night.txt", jobs);
  const Outcome submitted = farm({"submit", "--engine", "slurm", "--cpus", "1", "--per-task", "2", path("night.txt")});
  ASSERT_EQ(submitted.status, 0) << submitted.errors;
  EXPECT_THAT(submitted.output, HasSubstr("40 jobs handed over as Slurm's job "));
  EXPECT_THAT(farm({"submit", path("night.txt")}).errors, HasSubstr("is being carried out as Slurm's job"));

  ASSERT_TRUE(waitUntil([this] { return outputCount() >= 3; }));
  std::optional<pid_t> killed;
  EXPECT_TRUE(waitUntil([&] { return (killed = jobProcess("night.txt")).has_value(); }));
  if (killed) kill(*killed, SIGKILL);
  // The daemon writes down what was handed to it some seconds later.
  ASSERT_TRUE(waitUntil([this] { return content("state/job_state").find("night.txt summary") != std::string::npos; }));
  ASSERT_NO_FATAL_FAILURE(killAndStart("slurmctld"));
  ASSERT_TRUE(waitUntil([this] { return outputCount() >= 8; }));
  ASSERT_NO_FATAL_FAILURE(killAndStart("slurmd"));

  EXPECT_TRUE(waitUntilSummary()) << tool({"squeue"}).output;
  EXPECT_EQ(content("night.txt.summary"), "40 done, 0 failed\n");
  expectOutputs(jobs);
  const Outcome status = farm({"status", path("night.txt")});
  EXPECT_EQ(status.status, 0) << status.errors;
  EXPECT_EQ(status.output, "40 done, 0 failed\n");
  // What was complete is known to a run on this machine alone, too.
  EXPECT_THAT(run({MERIDIAN_COMMAND, "transcode", "--jobs", path("night.txt"), "--resume"}).output,
              HasSubstr("40 complete before"));
}

TEST_F(Farm, CancelsGoesOnAndSaysWhatFailed) {
  constexpr int jobs = 12;
  makeClips();
  writeJobs("night.txt", jobs);
  std::ofstream(path("night.txt"), std::ios::app)
      << "-in_0_0 " << path("none.mov") << " -out " << path("none.out.mov") << "\n";
  ASSERT_EQ(farm({"submit", path("night.txt")}).status, 0);
  ASSERT_TRUE(waitUntil([this] { return outputCount() >= 2; }));
  EXPECT_EQ(farm({"cancel", path("night.txt")}).status, 0);
  ASSERT_TRUE(waitUntil([this] { return tool({"squeue", "--noheader"}).output.empty(); }));
  const Outcome cancelled = farm({"status", path("night.txt")});
  EXPECT_EQ(cancelled.status, 1);
  EXPECT_THAT(cancelled.output, HasSubstr(" cancelled\n"));

  ASSERT_EQ(farm({"submit", path("night.txt")}).status, 0);
  ASSERT_TRUE(waitUntil([this] { return fs::exists(path("night.txt.summary")); }));
  EXPECT_THAT(content("night.txt.summary"), AllOf(HasSubstr("13: failed: "), HasSubstr("none.mov"),
                                                  HasSubstr(" complete before"), HasSubstr(", 1 failed,")));
  const json status = json::parse(farm({"status", "--json", path("night.txt")}).output);
  EXPECT_EQ(status["counts"]["failed"], 1);
  EXPECT_EQ(status["counts"]["lost"], 0);
  expectOutputs(jobs);
}

TEST_F(Farm, SaysWhatIsWrong) {
  std::ofstream(path("empty")) << "# nothing\n";
  EXPECT_EQ(farm({"submit", path("none")}).status, 1);
  EXPECT_EQ(farm({"submit", path("empty")}).status, 1);
  EXPECT_THAT(farm({"status", path("empty")}).errors, HasSubstr("was not handed over"));
  writeJobs("night.txt", 1);
  const Outcome refused = farm({"submit", "--option", "--partition=none", path("night.txt")});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.errors, AllOf(HasSubstr("sbatch"), HasSubstr("partition")));
  EXPECT_EQ(farm({"submit", "--engine", "other", path("night.txt")}).status, 2);
}

}  // namespace
}  // namespace meridian::test
