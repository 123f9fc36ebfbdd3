/// \file
/// Where the library's messages go. For example:
///
///     setLogger(std::make_shared<ApplicationLogger>());
///     log(LogLevel::error, "MRD_CLUT_PTFB-", "no such LUT");
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/base/precondition.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// Whether a message reports an error or only informs.
enum class LogLevel : std::uint8_t { error, info };

template <>
struct EnumerationTable<LogLevel> {
  static constexpr auto rows = std::to_array<EnumerationRow<LogLevel>>({
      {LogLevel::error, "error"},
      {LogLevel::info, "info"},
  });
};

/// The tag that begins every message and says which place in the library logged it: "MRD_", the area, "_", a code and
/// "-", in capitals and digits ("MRD_CLUT_PTFB-"). A tag of another form does not compile.
class LogTag {
 public:
  // NOLINTNEXTLINE(google-explicit-constructor): a tag is written as the text that it is.
  consteval LogTag(const char* text) : text_(text) {
    if (!isTag(text_)) preconditionFailed("LogTag: not of the form MRD_AREA_CODE-");
  }

  [[nodiscard]] constexpr std::string_view text() const noexcept { return text_; }

 private:
  static consteval bool isTag(std::string_view text) {
    constexpr std::string_view prefix = "MRD_";
    if (!text.starts_with(prefix) || !text.ends_with('-')) return false;
    text.remove_prefix(prefix.size());
    text.remove_suffix(1);
    const std::size_t underscore = text.find('_');
    if (underscore == std::string_view::npos) return false;
    return isWord(text.substr(0, underscore)) && isWord(text.substr(underscore + 1));
  }
  static consteval bool isWord(std::string_view text) {
    return !text.empty() && text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789") == std::string_view::npos;
  }

  std::string_view text_;
};

/// Receives the library's messages. Applications implement it to forward them to their own log. Called from any thread,
/// and from several at once.
class MERIDIAN_API Logger {
 public:
  Logger() = default;
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;
  Logger(Logger&&) = delete;
  Logger& operator=(Logger&&) = delete;
  virtual ~Logger();

  /// `message` begins with its tag and has no newline at its end. It may hold any bytes from outside input.
  virtual void log(LogLevel level, std::string_view message) = 0;
};

/// Returns the current logger. The default one writes each message as a line to standard error ("error: MRD_..."), with
/// control characters escaped ("\x1b"), so that no file name can forge a line or send terminal sequences.
[[nodiscard]] MERIDIAN_API std::shared_ptr<Logger> currentLogger();

/// Replaces the logger, from any thread; null restores the default. A message that another thread is logging may still
/// reach the old one.
MERIDIAN_API void setLogger(std::shared_ptr<Logger> logger);

/// Passes the tag followed by the text to the current logger.
MERIDIAN_API void log(LogLevel level, LogTag tag, std::string_view text);

}  // namespace meridian::inline v0_2
