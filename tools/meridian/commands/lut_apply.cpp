// meridian lut apply: applies a LUT to image files.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/image_lut.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/command.h"
#include "tools/meridian/image_file.h"
#include "tools/meridian/image_format.h"
#include "tools/meridian/image_module.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/lut_reading.h"
#include "tools/meridian/progress_bar.h"
#include "tools/meridian/replacement_file.h"

namespace meridian::command {
namespace {

/// Returns the number of threads to use, from 1 to 1024.
unsigned readThreads(const Arguments& arguments) {
  constexpr std::int64_t most = 1024;
  const std::string text = arguments.value("threads").value_or("0");
  const auto threads = integerFromText(text);
  if (!threads || *threads < 0 || *threads > most) {
    throw CommandError(inQuotes(text) + " is not a number of threads; expected an integer from 0 to " +
                       std::to_string(most));
  }
  if (*threads > 0) return static_cast<unsigned>(*threads);
  return static_cast<unsigned>(std::clamp<std::int64_t>(std::thread::hardware_concurrency(), 1, most));
}

/// Returns the format in which a file of this name is written. Throws CommandError if there is none.
const ImageFormat& writtenFormat(const std::string& path) {
  const std::string_view extension = pathExtension(path);
  const std::string supported = "; formats that can be written: " + imageFormatNames(true);
  if (extension.empty()) {
    throw CommandError(inQuotes(path) + " has no extension; give one such as .exr, which decides the format");
  }
  const ImageFormat* const format = imageFormatOfExtension(extension);
  if (format == nullptr) {
    throw CommandError(inQuotes(path) + " cannot be written: no supported image format has the extension " +
                       inQuotes(extension) + supported);
  }
  if (!format->storage) {
    throw CommandError(inQuotes(path) + " cannot be written: " + std::string(format->name) + " files can only be read" +
                       supported);
  }
  return *format;
}

/// A LUT that is prepared once for each bit depth. May be used from several threads at once.
class PreparedLuts {
 public:
  explicit PreparedLuts(const ChosenLut& lut) : lut_(lut) {}

  const ImageLut& forImage(const ImageFile& image) {
    const auto depth = image.bitDepth();
    const std::lock_guard lock(mutex_);
    auto found = byDepth_.find(depth);
    if (found == byDepth_.end()) found = byDepth_.emplace(depth, prepared(depth)).first;
    return found->second;
  }

 private:
  [[nodiscard]] ImageLut prepared(std::optional<int> depth) const {
    // Samples of 8 and 16 bits always have a usable depth.
    return depth ? lut_.forCodeValues(*depth, *depth) : lut_.forFloats();
  }

  const ChosenLut& lut_;
  std::mutex mutex_;
  std::map<std::optional<int>, ImageLut> byDepth_;
};

/// An image to read and the path at which its result is written.
struct ImageJob {
  std::string from;
  std::string to;
};

/// What all images of a call have in common.
struct LutApplication {
  const ImageFileModule& images;
  PreparedLuts& luts;
  std::optional<std::string> layer;
  unsigned threadsPerImage = 1;

  /// Calls `show` with the step and how much of it is done. Throws CommandError.
  void apply(const ImageJob& job, const ImageFile::Progress& show) const {
    const auto image = images.open(job.from, layer);
    const ImageFormat& format = writtenFormat(job.to);
    WholeFile replacement = createReplacement(job.to);
    const ImageLut& lut = luts.forImage(*image);
    const auto change = [this, &lut](const auto& view) {
      if (const auto applied = lut.apply(view, view, threadsPerImage); !applied) {
        throw CommandError(std::string(description(applied.error())));
      }
    };
    image->convert(
        {replacement.descriptor(), replacement.unfinishedPath(), job.to, format},
        [&change](const ImageFile::Colors& colors) { std::visit(change, colors); }, show);
    publishReplacement(replacement, job.to);
  }
};

/// Returns the text of the exception that is being handled, safe for a terminal.
std::string errorText(const ImageJob& job) {
  try {
    throw;
  } catch (const CommandError& error) {
    return error.what();
  } catch (const std::bad_alloc&) {
    return inQuotes(job.from) + " cannot be processed: there is too little memory";
  } catch (const std::exception& error) {
    return inQuotes(job.from) + " cannot be processed: " + printable(error.what());
  }
}

/// Calls `work`. Returns why it failed, safe for a terminal; absent if it is done.
template <typename Work>
std::optional<std::string> errorOf(const ImageJob& job, const Work& work) noexcept {
  try {
    work();
    return std::nullopt;
  } catch (...) {
    try {
      return errorText(job);
    } catch (...) {
      // So short that no memory is allocated for it.
      return "out of memory";
    }
  }
}

Status applyToImage(const LutApplication& application, const ImageJob& job) {
  ProgressBar bar;
  const auto error = errorOf(
      job, [&] { application.apply(job, [&bar](std::string_view step, double portion) { bar.show(step, portion); }); });
  bar.clear();
  if (error) throw CommandError(*error);
  return done;
}

/// Images that several workers process, one image each at a time, so that as many images are in memory as there are
/// workers. Progress and errors are printed by the thread that calls.
class ImageBatch {
 public:
  ImageBatch(const LutApplication& application, std::span<const ImageJob> jobs)
      : application_(application), jobs_(jobs) {
    errors_.reserve(jobs.size());
  }

  /// Returns the number of images that failed.
  std::size_t run(unsigned count) {
    std::vector<std::jthread> workers;
    workers.reserve(count);
    try {
      while (workers.size() < count) workers.emplace_back([this] { work(); });
    } catch (const std::exception&) {  // the system's limit or too little memory
      if (workers.empty()) throw CommandError("cannot start a thread; free memory or raise the limit (ulimit -u)");
    }
    return watch();
  }

 private:
  void work() noexcept {
    for (std::size_t next = next_++; next < jobs_.size(); next = next_++) {
      auto error = errorOf(jobs_[next], [&] { application_.apply(jobs_[next], [](std::string_view, double) {}); });
      const std::lock_guard lock(mutex_);
      ++done_;
      // Nothing is allocated: there is room for an error of each image.
      if (error) errors_.push_back(*std::move(error));
      changed_.notify_one();
    }
  }

  std::size_t watch() {
    ProgressBar bar;
    std::size_t shown = 0;
    std::size_t printed = 0;
    while (shown < jobs_.size()) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return done_ > shown; });
      shown = done_;
      const auto errors = std::span<const std::string>(errors_).subspan(printed);
      lock.unlock();
      if (!errors.empty()) bar.clear();
      for (const std::string& error : errors) std::cerr << "meridian: " << error << '\n';
      printed += errors.size();
      bar.show(std::to_string(shown) + " of " + std::to_string(jobs_.size()) + " images",
               static_cast<double>(shown) / static_cast<double>(jobs_.size()));
    }
    return printed;
  }

  const LutApplication& application_;
  std::span<const ImageJob> jobs_;
  std::atomic<std::size_t> next_{0};
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t done_ = 0;
  std::vector<std::string> errors_;
};

/// Throws CommandError if the result of an image would replace another image of the call, or its result: by a symbolic
/// link, so that a LUT would be applied twice.
void checkAreApart(std::span<const ImageJob> jobs) {
  const auto resolved = [](const std::string& path) {
    std::error_code error;
    const std::filesystem::path canonical = std::filesystem::weakly_canonical(path, error);
    return error ? std::filesystem::path(path) : canonical;
  };
  std::map<std::filesystem::path, const ImageJob*> byResult;
  for (const ImageJob& job : jobs) {
    const auto [same, isNew] = byResult.emplace(resolved(job.to), &job);
    if (!isNew) {
      throw CommandError(inQuotes(same->second->to) + " and " + inQuotes(job.to) +
                         " are the same file; write the images to another directory");
    }
  }
  for (const ImageJob& job : jobs) {
    const auto same = byResult.find(resolved(job.from));
    if (same != byResult.end() && same->second != &job) {
      throw CommandError(inQuotes(job.from) + " is also the result of " + inQuotes(same->second->from) +
                         "; write the images to another directory");
    }
  }
}

/// Returns IN and OUT, or with --to each IN and its path in DIR.
std::vector<ImageJob> readJobs(const Arguments& arguments) {
  const std::vector<std::string>& paths = arguments.given.at("images");
  const auto directory = arguments.value("to");
  if (!directory) {
    if (paths.size() == 2) return {{paths[0], paths[1]}};
    throw UsageError(paths.size() < 2 ? "OUT is missing: give IN OUT, or IN... --to DIR"
                                      : "several images need a directory to write them to: give IN... --to DIR");
  }
  std::vector<ImageJob> jobs;
  std::map<std::string, std::string, std::less<>> byName;
  for (const std::string& path : paths) {
    const std::string name(lastPathComponent(path));
    const auto [same, isNew] = byName.emplace(name, path);
    if (!isNew) {
      throw UsageError(inQuotes(same->second) + " and " + inQuotes(path) +
                       " would be written to the same file; give images of different names");
    }
    jobs.push_back({path, appendingPathComponent(*directory, name)});
  }
  std::error_code error;
  if (!std::filesystem::is_directory(*directory, error)) {
    throw CommandError(inQuotes(*directory) + (error ? ": " + error.message() : " is not a directory"));
  }
  checkAreApart(jobs);
  return jobs;
}

Status applyToImages(const Arguments& arguments) {
  const unsigned threads = affordableThreads(readThreads(arguments));
  const std::vector<ImageJob> jobs = readJobs(arguments);
  const auto workers = static_cast<unsigned>(std::min<std::size_t>(threads, jobs.size()));
  const ChosenLut lut = readChosenLut(arguments, LutReading::published);
  printWarnings(lut.warnings);
  PreparedLuts luts(lut);
  const ImageFileModule& images = imageFileModule();
  const LutApplication application{images, luts, arguments.value("layer"), threads / workers};
  startThreads(images, application.threadsPerImage == 1 ? 1 : threads);
  if (!arguments.has("to")) return applyToImage(application, jobs.front());
  const std::size_t failures = ImageBatch(application, jobs).run(workers);
  if (failures == 0) return done;
  throw CommandError(std::to_string(failures) + " of " + std::to_string(jobs.size()) +
                     (jobs.size() == 1 ? " image" : " images") + " failed");
}

}  // namespace

Subcommand lutApplyCommand() {
  using enum Option::Kind;
  Subcommand command{
      .group = "lut",
      .name = "apply",
      .description = "Apply a LUT to an image, or to many",
      .details =
          "Formats: " + imageFormatNames(false) +
          ".\nThe first bytes of IN decide its format (TGA: its extension), OUT's extension decides OUT's. Cineon and\n"
          "PFM are only read, WebP has no alpha; JPEG, WebP and HDR do not keep samples exactly.\n\n"
          "Samples keep their type and bit depth: code values of up to 16 bits (10 and 12 in DPX), half and float.\n"
          "Other types, files of several images and deep images are not supported. Metadata, alpha\n"
          "and further channels stay as they are. OUT's format has to support such samples and channels. OUT is\n"
          "written to a temporary file, read back, then renamed; it may be IN. It is owned by the user who runs\n"
          "the command and keeps the permissions that it had.\n\n"
          "FILE is read as its format publishes it: .cube and .3dl, and with OpenColorIO .csp, .spi1d, .spi3d,\n"
          ".spimtx, .itx, .lut, .m3d, .vf, .cub, CLF and CTF. Other texts are read as the suite reads them, with a\n"
          "warning. Warnings say what may surprise about FILE, and what to do.\n\n"
          "With --to, each image is written to DIR under its own name; DIR may be the one that the images are\n"
          "in. The other images are still done if one fails; the status is then 1.",
      .example =
          "meridian lut apply look.cube in.dpx out.dpx\n"
          "meridian lut apply look.clf shot.exr shot.exr --interpolation tetrahedral\n"
          "meridian lut apply look.cube scan/*.dpx --to graded",
      .options = {lutFileOption(),
                  {.kind = positional,
                   .name = "images",
                   .help = "IN OUT: the image and the one to write; with --to, the images",
                   .valueName = "IMAGES",
                   .repeated = true,
                   .path = true},
                  {.kind = value,
                   .name = "to",
                   .help = "The directory to write the images to, each under its own name",
                   .valueName = "DIR",
                   .path = true},
                  {.kind = value,
                   .name = "layer",
                   .help =
                       "The layer to change: the channels NAME.R, NAME.G and NAME.B instead of R, G and B; needed in "
                       "a file without channels R, G and B, even if it has a single layer",
                   .valueName = "NAME"}},
      .action = applyToImages,
  };
  command.options.push_back(readingOption(LutReading::published));
  for (Option& option : imageLutOptions()) command.options.push_back(std::move(option));
  command.options.push_back(
      {value, "threads",
       "The number of threads, and with --to of images in memory; 0, the default, uses all cores. Fewer are used "
       "where the memory is limited (ulimit -v)",
       "N"});
  return command;
}

}  // namespace meridian::command
