#include "tools/meridian/transcode_jobs.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <list>
#include <mutex>
#include <nlohmann/json.hpp>
#include <stop_token>
#include <thread>
#include <utility>
#include <vector>

#include "meridian/base/printable.h"
#include "meridian/concurrency/task_semaphore.h"
#include "meridian/serialization/transcode_plan_json.h"
#include "meridian/serialization/transcode_result_json.h"
#include "meridian/version.h"
#include "tools/meridian/engine_module.h"
#include "tools/meridian/interruption.h"
#include "tools/meridian/job_list.h"
#include "tools/meridian/job_results.h"
#include "tools/meridian/job_state.h"
#include "tools/meridian/output.h"
#include "tools/meridian/progress_bar.h"
#include "tools/meridian/transcode_progress.h"
#include "tools/meridian/transcoding.h"

namespace meridian::command {
namespace {

/// How a job ended.
enum class JobEnd : int { succeeded, failed, complete, cancelled };

constexpr const char* nameOf(JobEnd end) noexcept {
  constexpr std::array names{"done", "failed", "complete", "cancelled"};
  return names[static_cast<std::size_t>(end)];
}

/// Returns how many jobs run at a time: one for each two cores, since each has threads for decoding and encoding, and
/// one for each two gigabytes of memory, of which a UHD transcode takes up to one.
int usualParallel() {
  const unsigned cores = std::max(std::thread::hardware_concurrency(), 1U);
  constexpr long long memoryOfJob = 2LL << 30U;
  const long long memory = static_cast<long long>(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE);
  return static_cast<int>(std::clamp<long long>(std::min<long long>((cores + 1) / 2, memory / memoryOfJob), 1, 256));
}

/// A run of all jobs.
class JobsRun {
 public:
  explicit JobsRun(const JobsRequest& request)
      : request_(request),
        parallel_(request.only ? 1 : request.parallel.value_or(usualParallel())),
        threads_(std::max(std::thread::hardware_concurrency() / static_cast<unsigned>(parallel_), 1U)),
        slots_(parallel_),
        jobs_(readJobs(request.path)) {
    if (std::filesystem::is_regular_file(request.path)) {
      state_.emplace(request.path, request.only);
    } else if (request.resumes || request.only) {
      throw CommandError("--resume and --job need a list in a file, beside which it is kept what is complete");
    }
    if (!request.only) return;
    if (*request.only > jobs_.size()) {
      throw CommandError(inQuotes(request.path) + " has " + std::to_string(jobs_.size()) +
                         " jobs, and none with the number " + std::to_string(*request.only));
    }
    jobs_ = {jobs_[*request.only - 1]};
    results_.emplace(request.path);
  }

  [[nodiscard]] Status run(const std::stop_source& stop) {
    stop_ = stop.get_token();
    // Loaded before threads need it.
    static_cast<void>(engineModule());
    std::list<RunningJob> running;
    for (const Job& job : jobs_) {
      slots_.waitBlocking();
      if (stop_.stop_requested()) {
        slots_.signal();
        break;
      }
      running.remove_if([](const RunningJob& each) { return each.hasEnded.load(); });
      RunningJob& started = running.emplace_back();
      started.thread = std::jthread([this, &job, &started] {
        carryOutGuarded(job);
        started.hasEnded = true;
        slots_.signal();
      });
    }
    running.clear();
    if (!request_.only) printSummary();
    return counts_[1] > 0 || hasLostResult_ || stop_.stop_requested() ? failed : done;
  }

 private:
  /// The thread of a job. A thread that has ended keeps its memory until it is joined.
  struct RunningJob {
    std::atomic<bool> hasEnded = false;
    std::jthread thread;
  };

  void carryOutGuarded(const Job& job) {
    try {
      carryOut(job);
    } catch (const std::exception& error) {
      end(job, JobEnd::failed, Json(), {printable(error.what())});
    }
  }

  void carryOut(const Job& job) {
    if (!job.error.empty()) {
      end(job, JobEnd::failed, Json(), {job.error});
      return;
    }
    const EngineModule& engine = engineModule();
    auto planned = engine.plan(job.words);
    const bool isThere = !planned && isOnlyThere(planned.error());
    // What is there may be the complete output of this very job: it is planned as if it were to be replaced.
    const auto replacing = isThere && request_.resumes ? planReplacing(job) : std::nullopt;
    const TranscodePlan* plan = planned ? &*planned : nullptr;
    if (replacing) plan = &*replacing;
    const std::string hash = plan != nullptr ? jobHash(*plan, versions()) : std::string();
    const bool isComplete = plan != nullptr && request_.resumes && state_ && state_->isComplete(*plan, hash);
    if (isComplete || (replacing && isCompletedElsewhere(*plan, hash))) {
      completion_ = JobState::completionOf(*plan, hash);
      end(job, JobEnd::complete, Json(), {plan->output.path});
    } else if (planned) {
      transcodeOne(job, *planned, hash);
    } else {
      endUnplanned(job, planned.error());
    }
  }

  /// Returns whether another process completes this very job: a task is begun again where its machine does not answer,
  /// and goes on there all the same. Its output has its name a moment before its result is written.
  [[nodiscard]] bool isCompletedElsewhere(const TranscodePlan& plan, const std::string& hash) const {
    if (!request_.only || !request_.resumes) return false;
    constexpr int tries = 50;
    constexpr std::chrono::milliseconds between(100);
    for (int each = 0; each < tries && !stop_.stop_requested(); ++each) {
      if (JobState(request_.path, request_.only).isComplete(plan, hash)) return true;
      std::this_thread::sleep_for(between);
    }
    return false;
  }

  static std::optional<TranscodePlan> planReplacing(const Job& job) {
    TranscodeExplanation words = job.words;
    words.arguments.setShouldOverwrite(true);
    auto plan = engineModule().plan(explain(words.arguments.commandLine()));
    return plan ? std::optional<TranscodePlan>(*std::move(plan)) : std::nullopt;
  }

  static bool isOnlyThere(const std::vector<TranscodePlanError>& errors) {
    return std::ranges::all_of(
        errors, [](const TranscodePlanError& each) { return each.code == TranscodePlanErrorCode::outputExists; });
  }

  static std::string versions() { return std::string(versionText()) + " " + engineModule().ffmpegVersion(); }

  void warnOfState(const std::error_code& error) const {
    if (!error) return;
    const std::lock_guard lock(mutex_);
    std::cerr << "meridian: warning: " << inQuotes(state_->path()) << " cannot be written: " << error.message() << '\n';
  }

  /// Notes an output before it has its name: a process that is killed then knows it when it is begun again.
  void noteIntention(const Job& job, const Json& intention) {
    if (results_) {
      // Another process may have made it in the meantime; what says so is kept.
      const auto before = results_->read(job.number);
      if (before && JobState::isThere(before->value("completion", Json()))) return;
      results_->write(job.number, {{"job", job.number}, {"state", "publishing"}, {"completion", intention}});
    } else if (state_) {
      warnOfState(state_->add(intention));
    }
  }

  /// Keeps what the result of a job says of another output, which lines that were moved in the list leave there.
  void keepOtherCompletion(const Job& job, const Json& completion) {
    const auto before = results_->read(job.number);
    const Json other = before ? before->value("completion", Json()) : Json();
    if (!other.is_object() || other.value("output", Json()) == completion.value("output", Json())) return;
    if (JobState::isThere(other)) warnOfState(state_->add(other));
  }

  void transcodeOne(const Job& job, const TranscodePlan& plan, const std::string& hash) {
    // What became of it before does not count any more; and if results cannot be kept, nothing begins.
    if (results_) {
      keepOtherCompletion(job, JobState::intentionOf(plan, hash, 0, 0));
      results_->write(job.number, {{"job", job.number}, {"state", "running"}});
    }
    TranscodeReport progress(plan.output, TranscodeReport::Bar::hidden, stop_);
    const auto result =
        engineModule().transcode(plan, {.acceptsDamaged = request_.acceptsDamaged,
                                        .progress =
                                            [&](const TranscodeProgress& each) {
                                              progress.show(each);
                                              showBar();
                                            },
                                        .beforePublishing =
                                            [&](std::uint64_t size, std::uint64_t fileNumber) {
                                              noteIntention(job, JobState::intentionOf(plan, hash, size, fileNumber));
                                            },
                                        .stop = stop_,
                                        .threads = threads_});
    progress.end(result);
    if (!result && result.error().code == TranscodeRunErrorCode::outputExists && isCompletedElsewhere(plan, hash)) {
      completion_ = JobState::completionOf(plan, hash);
      end(job, JobEnd::complete, Json(), {plan.output.path});
      return;
    }
    if (!result) {
      const bool isCancelled = result.error().code == TranscodeRunErrorCode::interrupted;
      end(job, isCancelled ? JobEnd::cancelled : JobEnd::failed, Json(), {result.error().message()},
          {Json(result.error())});
      return;
    }
    std::vector<std::string> messages{summaryOf(*result)};
    completion_ = JobState::completionOf(plan, hash);
    if (state_ && !results_) {
      if (const auto error = state_->add(plan, hash)) {
        messages.push_back("warning: " + inQuotes(state_->path()) +
                           " cannot be written, so that --resume will repeat the job: " + error.message());
      }
    }
    for (const TranscodePlanWarning& warning : plan.warnings) messages.push_back("warning: " + warning.message());
    for (const TranscodeRunWarning& warning : result->warnings) messages.push_back("warning: " + warning.message());
    end(job, JobEnd::succeeded, Json(*result), messages);
  }

  void endUnplanned(const Job& job, const std::vector<TranscodePlanError>& errors) {
    std::vector<std::string> messages;
    for (const TranscodePlanError& error : errors) messages.push_back(error.message());
    end(job, JobEnd::failed, Json(), messages, Json(errors));
  }

  /// Prints how a job ended: the first message on standard output with its state, the others on standard error.
  void end(const Job& job, JobEnd how, const Json& result, const std::vector<std::string>& messages,
           Json errors = Json::array()) {
    const std::lock_guard lock(mutex_);
    if (bar_) bar_->clear();
    ++counts_[static_cast<std::size_t>(how)];
    if (how == JobEnd::failed && errors.empty()) errors.push_back({{"message", messages.front()}});
    if (results_) {
      try {
        writeResult(job, how, result, messages.front(), errors);
      } catch (const CommandError& error) {
        std::cerr << "meridian: job " << job.number << ": " << error.what() << '\n';
        hasLostResult_ = true;
      }
    }
    if (request_.isJson) {
      printJson({{"job", job.number}, {"state", nameOf(how)}, {"result", result}, {"errors", errors}},
                JsonForm::oneLine);
    } else {
      std::cout << job.number << ": " << nameOf(how) << ": " << messages.front() << '\n';
    }
    std::cout.flush();
    for (std::size_t place = 1; place < messages.size(); ++place) {
      std::cerr << "meridian: job " << job.number << ": " << messages[place] << '\n';
    }
  }

  /// A job that was cancelled has no result: its task may begin again.
  void writeResult(const Job& job, JobEnd how, const Json& result, const std::string& message,
                   const Json& errors) const {
    if (how == JobEnd::cancelled) return;
    // A task that begins again finds what it did itself, or what another one did in the meantime.
    const auto before = results_->read(job.number);
    const Json state = before ? before->value("state", Json()) : Json();
    const bool isThere = before && JobState::isThere(before->value("completion", Json()));
    if (isThere && state == nameOf(JobEnd::succeeded) && how != JobEnd::succeeded) return;
    if (isThere && state == "publishing" && how == JobEnd::complete) how = JobEnd::succeeded;
    std::array<char, 256> host{};
    if (gethostname(host.data(), host.size() - 1) != 0) host.front() = '\0';
    results_->write(job.number, {{"job", job.number},
                                 {"state", nameOf(how)},
                                 {"message", message},
                                 {"host", host.data()},
                                 {"completion", completion_},
                                 {"result", result},
                                 {"errors", errors}});
  }

  void showBar() {
    const std::lock_guard lock(mutex_);
    if (!bar_) bar_.emplace();
    const std::size_t ended = counts_[0] + counts_[1] + counts_[2];
    bar_->show(std::to_string(ended) + " of " + std::to_string(jobs_.size()) + " jobs",
               static_cast<double>(ended) / static_cast<double>(jobs_.size()));
  }

  void printSummary() {
    const std::lock_guard lock(mutex_);
    if (bar_) bar_->clear();
    const std::size_t cancelled = jobs_.size() - counts_[0] - counts_[1] - counts_[2];
    if (request_.isJson) {
      printJson({{"done", counts_[0]}, {"failed", counts_[1]}, {"complete", counts_[2]}, {"cancelled", cancelled}},
                JsonForm::oneLine);
      return;
    }
    std::string text = std::to_string(counts_[0]) + " done, " + std::to_string(counts_[1]) + " failed";
    if (counts_[2] > 0) text += ", " + std::to_string(counts_[2]) + " complete before";
    if (cancelled > 0) text += ", " + std::to_string(cancelled) + " cancelled";
    std::cout << text << '\n' << std::flush;
  }

  const JobsRequest& request_;
  int parallel_;
  /// Of each decoder and encoder.
  unsigned threads_;
  TaskSemaphore slots_;
  std::vector<Job> jobs_;
  std::optional<JobState> state_;
  /// Of one job alone, with what says that its output is complete.
  std::optional<JobResults> results_;
  Json completion_;
  bool hasLostResult_ = false;
  std::stop_token stop_;
  mutable std::mutex mutex_;
  std::optional<ProgressBar> bar_;
  /// By how jobs ended.
  std::array<std::size_t, 4> counts_{};
};

}  // namespace

Status transcodeJobs(const JobsRequest& request) {
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  const std::stop_source stop;
  // Before signals ask for a stop alone: a list that is a pipe may be waited for.
  JobsRun run(request);
  const StopOnInterruption interruption(stop);
  const Status status = run.run(stop);
  std::cout.flush();
  interruption.endIfInterrupted();
  return status;
}

}  // namespace meridian::command
