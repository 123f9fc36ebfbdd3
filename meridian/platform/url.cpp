#include "meridian/platform/url.h"

#include "meridian/platform/url_text.h"

namespace meridian::inline v0_2 {

std::optional<Url> Url::fromText(std::string_view text) {
  const auto url = splitUrl(text);
  if (!url || !isWellFormed(*url)) return std::nullopt;
  const std::string_view host = url->authority.value_or("");
  std::string path = percentDecoded(url->path);
  if (url->scheme == "file" && (host.empty() || host == "localhost") && url->afterPath.empty()) {
    return fromFilePath(std::move(path));
  }
  const auto beforePath = text.substr(0, text.size() - url->path.size() - url->afterPath.size());
  return Url(std::move(path),
             std::make_shared<const Affixes>(Affixes{std::string(beforePath), std::string(url->afterPath)}));
}

std::string Url::text() const {
  std::string path = percentEncodedPath(path_);
  if (affixes_ == nullptr) return (path.starts_with('/') ? "file://" : "file:") + path;
  // Without an authority, a path that begins with two separators would parse as one.
  if (!hasAuthority() && path.starts_with("//")) path.replace(1, 1, "%2F");
  return affixes_->beforePath + path + affixes_->afterPath;
}

}  // namespace meridian::inline v0_2
