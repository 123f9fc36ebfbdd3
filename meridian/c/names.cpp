#include "meridian/c/names.h"

#include <algorithm>

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

MeridianClaim* claimOf(m::Expected<std::vector<m::ClaimedFile>, m::ClaimError> files, MeridianError** error) {
  if (files) return new MeridianClaim{*std::move(files)};
  std::ignore = m::c::failed(error, files.error());
  return nullptr;
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
  return created(error, [&] { return claimOf(m::claimFile(urlOf(path)), error); });
}

MeridianClaim* meridian_claim_create_amongst_directories(MeridianText base_name, MeridianText extension,
                                                         const MeridianText* directories, size_t directory_count,
                                                         MeridianError** error) noexcept {
  return created(error, [&] {
    return claimOf(m::claimFileAmongstDirectories(viewOf(base_name), urlsOf(directories, directory_count),
                                                  optionalViewOf(extension)),
                   error);
  });
}

MeridianClaim* meridian_claim_create_consistent(MeridianText name, const MeridianText* extensions,
                                                size_t extension_count, const MeridianText* directories,
                                                size_t directory_count, MeridianError** error) noexcept {
  return created(error, [&] {
    return claimOf(m::claimConsistentFiles(urlsOf(directories, directory_count), viewOf(name),
                                           stringsOf(extensions, extension_count)),
                   error);
  });
}

size_t meridian_claim_count(const MeridianClaim* claim) noexcept { return claim->files.size(); }

MeridianClaimedFile meridian_claim_at(const MeridianClaim* claim, size_t index) noexcept {
  const m::ClaimedFile& file = claim->files[index];
  return {textOf(&file.url.path()), textOf(&file.extension)};
}

void meridian_claim_destroy(MeridianClaim* claim) noexcept { delete claim; }
