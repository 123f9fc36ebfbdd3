#include "meridian/engine/image_sequence.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "meridian/base/ascii.h"
#include "meridian/base/printable.h"
#include "meridian/media/file_extension.h"
#include "meridian/platform/file_queries.h"

namespace meridian::inline v0_2 {
namespace {

struct NumberedName {
  std::string beforeNumber;
  /// In lower case.
  std::string extension;
  std::int64_t number = 0;
};

std::optional<NumberedName> numberedName(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || !isImageName(name)) return std::nullopt;
  std::string extension(name.substr(dot + 1));
  std::ranges::transform(extension, extension.begin(), detail::lowercasedAscii);
  std::size_t begin = dot;
  while (begin > 0 && detail::isDigit(name[begin - 1])) --begin;
  constexpr std::size_t mostDigits = 18;  // so many always fit
  if (begin == dot || dot - begin > mostDigits) return std::nullopt;
  NumberedName result{std::string(name.substr(0, begin)), std::move(extension)};
  for (const char digit : name.substr(begin, dot - begin)) result.number = result.number * 10 + (digit - '0');
  return result;
}

}  // namespace

bool isImageName(std::string_view name) {
  std::string extension(name.substr(name.rfind('.') + 1));
  std::ranges::transform(extension, extension.begin(), detail::lowercasedAscii);
  // The suite has no case for OpenEXR, which is an image all the same.
  if (extension == "exr") return true;
  const auto known = fromRawValue<FileExtension>(extension);
  return known && FileExtensionSet::imageFileExtensions().contains(*known);
}

std::optional<std::int64_t> stepOfNumbers(std::string_view path, std::string_view nextPath) {
  const auto first = numberedName(path);
  const auto next = numberedName(nextPath);
  if (!first || !next || first->beforeNumber != next->beforeNumber || first->extension != next->extension) {
    return std::nullopt;
  }
  return next->number - first->number;
}

Expected<ImageSequence, MediaError> imageSequence(const std::string& directory, const DescriptionLimits& limits) {
  using enum MediaErrorCode;
  const auto deadline = limits.deadline();
  std::error_code error;
  std::filesystem::directory_iterator entry(directory, error);
  if (error) return Unexpected(MediaError{notOpened, directory, {}, error});

  ImageSequence sequence;
  std::vector<std::pair<std::int64_t, std::string>> images;
  std::optional<NumberedName> first;
  std::uint64_t entries = 0;
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (++entries > limits.directoryEntries) {
      return Unexpected(MediaError{limitReached, directory, "it has too many entries"});
    }
    if (std::chrono::steady_clock::now() > deadline) {
      return Unexpected(MediaError{limitReached, directory, "the time limit was reached"});
    }
    const std::string name = entry->path().filename().string();
    if (nameIsHidden(name)) continue;
    auto numbered = numberedName(name);
    std::error_code itemError;
    if (!numbered || !entry->is_regular_file(itemError)) continue;
    if (first && (first->beforeNumber != numbered->beforeNumber || first->extension != numbered->extension)) {
      const std::string other = std::filesystem::path(images.front().second).filename().string();
      return Unexpected(MediaError{noImageSequence, directory,
                                   "it holds more than one, such as those of " + inQuotes(std::min(other, name)) +
                                       " and " + inQuotes(std::max(other, name))});
    }
    const std::uintmax_t size = entry->file_size(itemError);
    if (!itemError) sequence.size += size;
    images.emplace_back(numbered->number, entry->path().string());
    if (!first) first = std::move(numbered);
  }
  if (error) return Unexpected(MediaError{notRead, directory, {}, error});
  if (images.empty()) return Unexpected(MediaError{noImageSequence, directory});

  std::ranges::sort(images);
  sequence.firstNumber = images.front().first;
  sequence.lastNumber = images.back().first;
  std::int64_t distinct = 1;
  for (std::size_t place = 1; place < images.size(); ++place) {
    if (images[place].first != images[place - 1].first) ++distinct;
  }
  sequence.missingCount = sequence.lastNumber - sequence.firstNumber + 1 - distinct;
  sequence.repeatedCount = static_cast<std::int64_t>(images.size()) - distinct;
  sequence.paths.reserve(images.size());
  sequence.numbers.reserve(images.size());
  for (auto& [number, path] : images) {
    sequence.paths.push_back(std::move(path));
    sequence.numbers.push_back(number);
  }
  return sequence;
}

}  // namespace meridian::inline v0_2
