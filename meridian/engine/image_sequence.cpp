#include "meridian/engine/image_sequence.h"

#include <algorithm>
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
  std::string extension;
  std::int64_t number = 0;
};

bool isImageExtension(std::string_view extension) {
  std::string lowercased(extension);
  std::ranges::transform(lowercased, lowercased.begin(), detail::lowercasedAscii);
  // The suite has no case for OpenEXR, which is an image all the same.
  if (lowercased == "exr") return true;
  const auto known = fromRawValue<FileExtension>(lowercased);
  return known && FileExtensionSet::imageFileExtensions().contains(*known);
}

std::optional<NumberedName> numberedName(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || !isImageExtension(name.substr(dot + 1))) return std::nullopt;
  std::size_t begin = dot;
  while (begin > 0 && detail::isDigit(name[begin - 1])) --begin;
  constexpr std::size_t mostDigits = 18;  // so many always fit
  if (begin == dot || dot - begin > mostDigits) return std::nullopt;
  NumberedName result{std::string(name.substr(0, begin)), std::string(name.substr(dot + 1))};
  for (const char digit : name.substr(begin, dot - begin)) result.number = result.number * 10 + (digit - '0');
  return result;
}

}  // namespace

Expected<ImageSequence, MediaError> imageSequence(const std::string& folder) {
  using enum MediaErrorCode;
  std::error_code error;
  std::filesystem::directory_iterator entry(folder, error);
  if (error) return Unexpected(MediaError{notOpened, folder, {}, error});

  ImageSequence sequence;
  std::vector<std::pair<std::int64_t, std::string>> images;
  std::optional<NumberedName> first;
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (nameIsHidden(name)) continue;
    auto numbered = numberedName(name);
    std::error_code itemError;
    if (!numbered || !entry->is_regular_file(itemError)) continue;
    if (first && (first->beforeNumber != numbered->beforeNumber || first->extension != numbered->extension)) {
      return Unexpected(MediaError{noImageSequence, folder,
                                   "it holds more than one, such as " + inQuotes(first->beforeNumber) + " and " +
                                       inQuotes(numbered->beforeNumber) + " in front of the numbers"});
    }
    const std::uintmax_t size = entry->file_size(itemError);
    if (!itemError) sequence.size += size;
    images.emplace_back(numbered->number, entry->path().string());
    if (!first) first = std::move(numbered);
  }
  if (error) return Unexpected(MediaError{notRead, folder, {}, error});
  if (images.empty()) return Unexpected(MediaError{noImageSequence, folder});

  std::ranges::sort(images);
  sequence.firstNumber = images.front().first;
  sequence.lastNumber = images.back().first;
  std::int64_t distinct = 1;
  for (std::size_t place = 1; place < images.size(); ++place) {
    if (images[place].first != images[place - 1].first) ++distinct;
  }
  sequence.missingCount = sequence.lastNumber - sequence.firstNumber + 1 - distinct;
  sequence.paths.reserve(images.size());
  for (auto& [number, path] : images) sequence.paths.push_back(std::move(path));
  return sequence;
}

}  // namespace meridian::inline v0_2
