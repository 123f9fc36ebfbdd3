/// \file
/// Writes how far a transcode is to the file of "-progress_file", for the application that started it. For example:
///
///     ProgressFile file("/tmp/progress.jsonl", stop);
///     file.write(line);
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <stop_token>
#include <string>

namespace meridian::command {

/// JSON Lines in a new file, a FIFO or a device. A line is written at once and whole.
class ProgressFile {
 public:
  /// Creates the file, replaces the progress of another transcode, or opens the FIFO, for whose reader it waits until a
  /// stop is requested. Throws CommandError if that fails, or if the file holds something else.
  ProgressFile(const std::string& path, const std::stop_token& stop);
  ProgressFile(const ProgressFile&) = delete;
  ProgressFile& operator=(const ProgressFile&) = delete;
  ProgressFile(ProgressFile&&) = delete;
  ProgressFile& operator=(ProgressFile&&) = delete;
  ~ProgressFile();

  /// Returns false for a file that holds something other than progress. It may be anything that a mistyped path names,
  /// such as a clip.
  [[nodiscard]] static bool mayReplace(const std::string& path);

  /// Writes a document as a line. A reader of a FIFO that has gone, or that is too slow, misses lines, since a
  /// transcode does not wait for it.
  void write(const nlohmann::ordered_json& document) const;

 private:
  int descriptor_ = -1;
};

}  // namespace meridian::command
