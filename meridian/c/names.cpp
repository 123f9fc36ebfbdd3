#include "meridian/c/names.h"

#include <algorithm>
#include <memory>

#include "meridian/c/handles.h"
#include "meridian/fs/claimed_files.h"
#include "meridian/fs/free_names.h"

namespace m = meridian;
using m::c::created;
using m::c::optionalViewOf;
using m::c::stringsOf;
using m::c::textOf;
using m::c::viewOf;

struct MeridianClaim {
  std::vector<m::ClaimedFile> files;
};

namespace {

m::Url urlOf(MeridianText path) { return m::Url::fromFilePath(std::string(viewOf(path))); }

std::vector<m::Url> urlsOf(const MeridianText* paths, std::size_t count) {
  std::vector<m::Url> urls;
  urls.reserve(count);
  std::transform(paths, paths + count, std::back_inserter(urls), urlOf);
  return urls;
}

/// Makes the claim that the work returns. Its handle comes first: without it the files would have no owner.
template <typename Work>
MeridianClaim* claimed(MeridianError** error, Work&& work) noexcept {
  return created(error, [&]() -> MeridianClaim* {
    auto claim = std::make_unique<MeridianClaim>();
    m::Expected<std::vector<m::ClaimedFile>, m::ClaimError> files = work();
    if (!files) {
      std::ignore = m::c::failed(error, files.error());
      return nullptr;
    }
    claim->files = *std::move(files);
    return claim.release();
  });
}

}  // namespace

MeridianString* meridian_free_path_create(MeridianText path, MeridianError** error) noexcept {
  return created(error, [&] { return new MeridianString{m::filePathAdjustedForCollision(urlOf(path)).path()}; });
}

MeridianString* meridian_free_name_create(MeridianText base_name, MeridianText extension,
                                          const MeridianText* directories, size_t directory_count,
                                          MeridianError** error) noexcept {
  return created(error, [&] {
    return new MeridianString{m::lastPathComponentAdjustedForCollision(
        viewOf(base_name), urlsOf(directories, directory_count), optionalViewOf(extension))};
  });
}

MeridianTexts* meridian_free_paths_create(MeridianText name, const MeridianText* extensions, size_t extension_count,
                                          const MeridianText* directories, size_t directory_count,
                                          MeridianError** error) noexcept {
  return created(error, [&] {
    const auto wanted = stringsOf(extensions, extension_count);
    const m::UrlsByExtension found = m::consistentFilePathsAdjustedForCollisionAcrossDirectories(
        urlsOf(directories, directory_count), viewOf(name), wanted);
    std::vector<std::string> paths;
    for (const std::string& extension : wanted) {
      if (const auto place = found.find(extension); place != found.end()) paths.push_back(place->second.path());
    }
    return new MeridianTexts(std::move(paths));
  });
}

MeridianClaim* meridian_claim_create(MeridianText path, MeridianError** error) noexcept {
  return claimed(error, [&] { return m::claimFile(urlOf(path)); });
}

MeridianClaim* meridian_claim_create_amongst_directories(MeridianText base_name, MeridianText extension,
                                                         const MeridianText* directories, size_t directory_count,
                                                         MeridianError** error) noexcept {
  return claimed(error, [&] {
    return m::claimFileAmongstDirectories(viewOf(base_name), urlsOf(directories, directory_count),
                                          optionalViewOf(extension));
  });
}

MeridianClaim* meridian_claim_create_consistent(MeridianText name, const MeridianText* extensions,
                                                size_t extension_count, const MeridianText* directories,
                                                size_t directory_count, MeridianError** error) noexcept {
  return claimed(error, [&] {
    return m::claimConsistentFiles(urlsOf(directories, directory_count), viewOf(name),
                                   stringsOf(extensions, extension_count));
  });
}

size_t meridian_claim_count(const MeridianClaim* claim) noexcept { return claim->files.size(); }

MeridianClaimedFile meridian_claim_at(const MeridianClaim* claim, size_t index) noexcept {
  const m::ClaimedFile& file = claim->files[index];
  return {textOf(&file.url.path()), textOf(&file.extension)};
}

void meridian_claim_destroy(MeridianClaim* claim) noexcept { delete claim; }
