#include "meridian/fs/name_schemes.h"

#include <algorithm>

#include "meridian/base/integer_arithmetic.h"
#include "meridian/base/precondition.h"
#include "meridian/platform/path_text.h"

namespace meridian::inline v0_2::detail {

PathScheme::PathScheme(const Url& path)
    : path_(path.path()), directory_(deletingLastPathComponent(path_)), base_(path.lastPathComponent()) {
  const std::string_view extension = path.pathExtension();
  if (extension.empty()) return;
  extensionPart_ = "." + std::string(extension);
  base_.remove_suffix(extensionPart_.size());
}

std::vector<std::string> PathScheme::paths(std::string_view suffix) const {
  if (suffix.empty()) return {path_};
  // In the root this gives "/clip 2.mov", where a plain concatenation would give "//clip 2.mov".
  return {appendingPathComponent(directory_, std::string(base_).append(suffix).append(extensionPart_))};
}

std::string NameScheme::name(std::string_view suffix) const {
  std::string name(baseName_);
  name += suffix;
  // An empty extension shows its dot only after a number: existing applications expect "clip", then "clip 2.".
  if (extension_ && (!suffix.empty() || !extension_->empty())) name.append(".").append(*extension_);
  return name;
}

std::vector<std::string> NameScheme::paths(std::string_view suffix) const {
  const std::string name = this->name(suffix);
  std::vector<std::string> paths;
  paths.reserve(directories_.size());
  for (const Url& directory : directories_) paths.push_back(directory.appendingPathComponent(name).path());
  return paths;
}

SetScheme::SetScheme(std::span<const Url> directories, std::string_view fileName,
                     std::span<const std::string> extensions)
    : directories_(directories), fileName_(fileName) {
  for (const std::string& extension : extensions) {
    if (std::ranges::find(extensions_, extension) == extensions_.end()) extensions_.push_back(extension);
  }
}

std::string SetScheme::name(std::string_view suffix, std::string_view extension) const {
  return std::string(fileName_).append(suffix).append(".").append(extension);
}

std::vector<std::string> SetScheme::paths(std::string_view suffix) const {
  std::vector<std::string> paths;
  paths.reserve(directories_.size() * extensions_.size());
  for (const Url& directory : directories_) {
    for (const std::string& extension : extensions_) {
      paths.push_back(directory.appendingPathComponent(name(suffix, extension)).path());
    }
  }
  return paths;
}

std::string nextSuffix(char mark, std::int64_t& number) {
  const auto next = checkedSum(number, 1);
  if (!next) preconditionFailed("no number is left for an unused file name");
  number = *next;
  return mark + std::to_string(number);
}

}  // namespace meridian::inline v0_2::detail
