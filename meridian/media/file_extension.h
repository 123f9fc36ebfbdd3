/// \file
/// The file types that the suite knows, by extension, and their groups. For example:
///
///     FileExtensionSet::videoFileExtensions().contains("/card/A001.MOV")  // true
///     fileExtensionIgnoringCase("MOV")                                    // FileExtension::mov
///     url(FileExtension::mov, "/out/clip")                                // "/out/clip.mov"
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "meridian/base/enumeration.h"
#include "meridian/export.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// A file extension. The raw value is the extension in lower case without its dot. Where that is not a C++ name, the
/// case is spelled out: `threeDL` is "3dl". `directory` is the empty text, since a directory has no extension. The raw
/// value of `targz` is "targ.gz", deliberately; "tar.gz" is not a raw value.
enum class FileExtension : std::uint8_t {
#define MERIDIAN_FILE_EXTENSION(name, rawValue) name,
#include "meridian/media/file_extension.def"
};

template <>
struct EnumerationTable<FileExtension> {
  static constexpr auto rows = std::to_array<EnumerationRow<FileExtension>>({
#define MERIDIAN_FILE_EXTENSION(name, rawValue) {FileExtension::name, rawValue},
#include "meridian/media/file_extension.def"
  });
};

/// Returns the extension's raw value, for comparisons that ignore case.
[[nodiscard]] constexpr std::string_view caseInsensitveRawValue(FileExtension extension) noexcept {
  return rawValue(extension);  // every raw value is case-folded already
}

/// Returns the extension whose raw value equals the text, ignoring case; absent if there is none. The text has no dot:
/// "MOV" gives `mov`, ".mov" nothing, and the empty text `directory`.
[[nodiscard]] MERIDIAN_API std::optional<FileExtension> fileExtensionIgnoringCase(std::string_view text);

/// Returns the end of a path that has the extension: ".mov" for `mov`, the empty text for `directory`.
[[nodiscard]] MERIDIAN_API std::string path(FileExtension extension);

/// Returns the base followed by `path(extension)`. The base is a path, or a URL without query and fragment.
[[nodiscard]] MERIDIAN_API std::string url(FileExtension extension, std::string_view base);

/// A set of file extensions in four 64-bit words. Iteration visits the members in declaration order.
class FileExtensionSet {
 public:
  constexpr FileExtensionSet() noexcept = default;
  constexpr FileExtensionSet(std::initializer_list<FileExtension> members) noexcept {
    for (const FileExtension member : members) insert(member);
  }

  /// Adds a member; no effect if it is one already.
  constexpr void insert(FileExtension member) noexcept { wordOf(member) |= bitOf(member); }
  /// Removes a member; no effect if it is not one.
  constexpr void remove(FileExtension member) noexcept { wordOf(member) &= ~bitOf(member); }

  /// Returns true if the extension is a member.
  [[nodiscard]] constexpr bool contains(FileExtension member) const noexcept {
    return (words_[static_cast<std::size_t>(member) / 64] & bitOf(member)) != 0;
  }

  /// Returns true if the extension of the path or URL is a member, ignoring case. Only a URL's path is used. A last
  /// component without an extension counts as `directory`.
  [[nodiscard]] MERIDIAN_API bool contains(std::string_view pathOrUrl) const;
  [[nodiscard]] MERIDIAN_API bool contains(const Url& url) const;

  /// Returns the number of members.
  [[nodiscard]] constexpr std::size_t size() const noexcept {
    std::size_t count = 0;
    for (const std::uint64_t word : words_) count += static_cast<std::size_t>(std::popcount(word));
    return count;
  }
  /// Returns true if there are no members.
  [[nodiscard]] constexpr bool empty() const noexcept { return *this == FileExtensionSet{}; }

  /// Returns the union, the intersection and the difference of two sets.
  friend constexpr FileExtensionSet operator|(FileExtensionSet left, const FileExtensionSet& right) noexcept {
    for (std::size_t i = 0; i < left.words_.size(); ++i) left.words_[i] |= right.words_[i];
    return left;
  }
  friend constexpr FileExtensionSet operator&(FileExtensionSet left, const FileExtensionSet& right) noexcept {
    for (std::size_t i = 0; i < left.words_.size(); ++i) left.words_[i] &= right.words_[i];
    return left;
  }
  friend constexpr FileExtensionSet operator-(FileExtensionSet left, const FileExtensionSet& right) noexcept {
    for (std::size_t i = 0; i < left.words_.size(); ++i) left.words_[i] &= ~right.words_[i];
    return left;
  }
  friend constexpr bool operator==(const FileExtensionSet&, const FileExtensionSet&) noexcept = default;

  /// Visits the members of a set, which must outlive it.
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = FileExtension;
    using difference_type = std::ptrdiff_t;
    using pointer = const FileExtension*;
    using reference = FileExtension;

    constexpr Iterator() noexcept = default;
    constexpr FileExtension operator*() const noexcept { return allCases<FileExtension>()[place_]; }
    constexpr Iterator& operator++() noexcept {
      ++place_;
      skipNonMembers();
      return *this;
    }
    constexpr Iterator operator++(int) noexcept {
      Iterator before = *this;
      ++*this;
      return before;
    }
    friend constexpr bool operator==(const Iterator& left, const Iterator& right) noexcept {
      return left.place_ == right.place_;
    }

   private:
    friend class FileExtensionSet;
    constexpr Iterator(const FileExtensionSet& set, std::size_t place) noexcept : set_(&set), place_(place) {
      skipNonMembers();
    }
    constexpr void skipNonMembers() noexcept {
      while (place_ < allCases<FileExtension>().size() && !set_->contains(allCases<FileExtension>()[place_])) ++place_;
    }

    const FileExtensionSet* set_ = nullptr;
    std::size_t place_ = 0;
  };

  /// Return the ends of the iteration over the members.
  [[nodiscard]] constexpr Iterator begin() const noexcept { return {*this, 0}; }
  [[nodiscard]] constexpr Iterator end() const noexcept { return {*this, allCases<FileExtension>().size()}; }

  /// Contains archives, disk images, packages and bundles.
  [[nodiscard]] static constexpr FileExtensionSet archiveExtensions() noexcept;
  /// Contains text documents, spreadsheets and presentations.
  [[nodiscard]] static constexpr FileExtensionSet documentExtensions() noexcept;
  /// Contains still images, camera raw ones too.
  [[nodiscard]] static constexpr FileExtensionSet imageFileExtensions() noexcept;
  /// Contains only `bak`, deliberately.
  [[nodiscard]] static constexpr FileExtensionSet sidecarFileExtensions() noexcept;
  /// Contains the files whose presence shows that a clip beside them is incomplete.
  [[nodiscard]] static constexpr FileExtensionSet incompleteFileIndicatorExtensions() noexcept;
  /// Contains files with audio but no video.
  [[nodiscard]] static constexpr FileExtensionSet audioOnlyFileExtensions() noexcept;
  /// Contains video clips.
  [[nodiscard]] static constexpr FileExtensionSet videoFileExtensions() noexcept;
  /// Contains `audioOnlyFileExtensions` without `iff` and `mpa`.
  [[nodiscard]] static constexpr FileExtensionSet musicFileExtensions() noexcept;
  /// Contains raw video clips.
  [[nodiscard]] static constexpr FileExtensionSet rawMultimediaFileExtensions() noexcept;
  /// Contains the frames of raw image sequences.
  [[nodiscard]] static constexpr FileExtensionSet rawImageSequenceFileExtensions() noexcept;
  /// Contains the suite's reports.
  [[nodiscard]] static constexpr FileExtensionSet solvaneReportFileExtensions() noexcept;
  /// Contains LUTs.
  [[nodiscard]] static constexpr FileExtensionSet colorLutFileExtensions() noexcept;
  /// Contains the video and the audio extensions.
  [[nodiscard]] static constexpr FileExtensionSet multimediaFileExtensions() noexcept;
  /// Contains everything outside `multimediaFileExtensions`.
  [[nodiscard]] static constexpr FileExtensionSet extensionsWithoutVideoMedia() noexcept;

 private:
  static constexpr std::uint64_t bitOf(FileExtension member) noexcept {
    return std::uint64_t{1} << (static_cast<std::size_t>(member) % 64);
  }
  constexpr std::uint64_t& wordOf(FileExtension member) noexcept {
    return words_[static_cast<std::size_t>(member) / 64];
  }

  std::array<std::uint64_t, (allCases<FileExtension>().size() + 63) / 64> words_{};
};

constexpr FileExtensionSet FileExtensionSet::archiveExtensions() noexcept {
  using enum FileExtension;
  return {zip, bundle, dmg, xarchive, plugin, pkg, xpc, jar, fcpbundle, component};
}

constexpr FileExtensionSet FileExtensionSet::documentExtensions() noexcept {
  using enum FileExtension;
  return {doc, docx, xml, mhl, pdf, odf, ods, odt, xls, xlsx, ppt, pptx, rtf, txt};
}

constexpr FileExtensionSet FileExtensionSet::imageFileExtensions() noexcept {
  using enum FileExtension;
  return {ai,   ari, arx, bmp, cr2, dds,      dng, dpx, eps, gif, heic, ico,  jpeg, jpg,
          insp, nef, nrw, png, psd, pspimage, rmf, svg, tga, thm, tif,  tiff, yuv,  webp};
}

constexpr FileExtensionSet FileExtensionSet::sidecarFileExtensions() noexcept {
  using enum FileExtension;
  return {bak};
}

constexpr FileExtensionSet FileExtensionSet::incompleteFileIndicatorExtensions() noexcept {
  using enum FileExtension;
  return {mdt, rsv};
}

constexpr FileExtensionSet FileExtensionSet::audioOnlyFileExtensions() noexcept {
  using enum FileExtension;
  return {aif, aiff, au, caf, flac, iff, m4a, m4r, mp3, mpa, wav, wma};
}

constexpr FileExtensionSet FileExtensionSet::videoFileExtensions() noexcept {
  using enum FileExtension;
  return {threeG2, threeGP, avi, braw, cine, crm, flv, insv, lrv, lvm, m4v, mjpeg,
          mp4,     mpg,     mov, mts,  mxf,  r3d, rdc, rm,   swf, vob, wmv};
}

constexpr FileExtensionSet FileExtensionSet::musicFileExtensions() noexcept {
  using enum FileExtension;
  return {aif, aiff, au, caf, flac, m4a, m4r, mp3, wma, wav};
}

constexpr FileExtensionSet FileExtensionSet::rawMultimediaFileExtensions() noexcept {
  using enum FileExtension;
  return {braw, cine, crm, mxf, r3d};
}

constexpr FileExtensionSet FileExtensionSet::rawImageSequenceFileExtensions() noexcept {
  using enum FileExtension;
  return {ari, arx, dng, dpx, insp, nef, nrw, raw, rmf};
}

constexpr FileExtensionSet FileExtensionSet::solvaneReportFileExtensions() noexcept {
  using enum FileExtension;
  return {csv, mhl, pdf, txt};
}

constexpr FileExtensionSet FileExtensionSet::colorLutFileExtensions() noexcept {
  using enum FileExtension;
  return {alut, cms, cube, dat, ilut, lut, mga, olut, oneDlut, threeDL, threeDMesh, txt, xml};
}

constexpr FileExtensionSet FileExtensionSet::multimediaFileExtensions() noexcept {
  return videoFileExtensions() | audioOnlyFileExtensions();
}

constexpr FileExtensionSet FileExtensionSet::extensionsWithoutVideoMedia() noexcept {
  FileExtensionSet all;
  for (const FileExtension extension : allCases<FileExtension>()) all.insert(extension);
  return all - multimediaFileExtensions();
}

/// A group and its name, for tools that list the groups.
struct FileExtensionGroup {
  std::string_view name;
  FileExtensionSet (*members)() noexcept;
};

/// Lists every group of `FileExtensionSet`.
inline constexpr auto fileExtensionGroups = std::to_array<FileExtensionGroup>({
    {"archiveExtensions", &FileExtensionSet::archiveExtensions},
    {"documentExtensions", &FileExtensionSet::documentExtensions},
    {"imageFileExtensions", &FileExtensionSet::imageFileExtensions},
    {"sidecarFileExtensions", &FileExtensionSet::sidecarFileExtensions},
    {"incompleteFileIndicatorExtensions", &FileExtensionSet::incompleteFileIndicatorExtensions},
    {"audioOnlyFileExtensions", &FileExtensionSet::audioOnlyFileExtensions},
    {"videoFileExtensions", &FileExtensionSet::videoFileExtensions},
    {"musicFileExtensions", &FileExtensionSet::musicFileExtensions},
    {"rawMultimediaFileExtensions", &FileExtensionSet::rawMultimediaFileExtensions},
    {"rawImageSequenceFileExtensions", &FileExtensionSet::rawImageSequenceFileExtensions},
    {"solvaneReportFileExtensions", &FileExtensionSet::solvaneReportFileExtensions},
    {"colorLutFileExtensions", &FileExtensionSet::colorLutFileExtensions},
    {"multimediaFileExtensions", &FileExtensionSet::multimediaFileExtensions},
    {"extensionsWithoutVideoMedia", &FileExtensionSet::extensionsWithoutVideoMedia},
});

}  // namespace meridian::inline v0_2
