// The file types that the suite knows, by extension, and their groups.
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

namespace meridian::inline v0_2 {

/// A file extension. The raw value is the extension in lower case without its dot; where that is no C++ name, the case
/// is spelled out. `directory` has the empty text, because a folder has no extension; the raw value of `targz` is
/// "targ.gz", spelled so on purpose; "tar.gz" is no raw value.
enum class FileExtension : std::uint8_t {
  // clang-format off
  oneDlut, threeDM, threeDS, threeDL, threeDMesh, threeG2, threeGP, sevenZ, aacdb, ai, aif, aiff, alf4, alut, aml,
  apk, app, ari, arx, asp, aspx, au, avi, b, bak, bat, bdm, bim, bin, bmp, braw, bundle, c, cab, caf, cbr, cer, cfg,
  cgi, cif, cine, classExt, cmf, cms, com, component, cpf, cpi, cpl, cpp, cr2, crm, crx, csr, cs, css, csv, cube, cue,
  cur, dat, db, dbf, dcr, dds, deb, dem, deskthemepack, dll, dmg, dmp, dng, doc, docx, dpx, drv, dtd, dwg, dxf, eps,
  exe, fcpbundle, fla, flac, flv, fnt, folder, directory, fon, gadget, gam, ged, gif, gpx, gz, heic, hqx, htm, html,
  icns, ico, ics, iff, ilut, indd, ini, insp, insv, iso, jar, java, jpeg, jpg, js, jsp, key, keychain, kml, kmz, lnk,
  log, look, lrv, lua, lut, lvm, m, m3u, m4a, m4r, m4v, mdb, mdf, mdt, mga, mhl, mid, mif, mim, mjpeg, mp3, mp4, mpa,
  mpg, mov, mpl, mrk, msg, msi, mts, mxf, nef, nes, nrw, odf, ods, odt, olut, otf, pages, part, pdb, pct, pdf, php,
  pkg, pl, plugin, png, pot, ppn, pps, ppt, pptx, prev, prf, psd, pspimage, py, r3d, rar, raw, rdc, rm, rmf, rom, rpm,
  rss, rsv, rtf, sav, schema, sdf, sh, sidecar, sif, sitx, sln, smi, sql, srt, svg, swf, swift, sys, tar, targz,
  tax2016, tax2019, tdt, tex, tga, thm, tid, tif, tiff, tmp, toast, torrent, ttf, txt, uue, vb, vcd, vcf, vcxproj,
  vob, wav, webp, wma, wmv, wpd, wps, wsf, xarchive, xcodeproj, xhtml, xlr, xls, xlsx, xml, xpc, yuv, zip, zipx
  // clang-format on
};

template <>
struct EnumerationTable<FileExtension> {
  // clang-format off
  static constexpr auto rows = std::to_array<EnumerationRow<FileExtension>>({
      {FileExtension::oneDlut, "1dlut"},
      {FileExtension::threeDM, "3dm"},
      {FileExtension::threeDS, "3ds"},
      {FileExtension::threeDL, "3dl"},
      {FileExtension::threeDMesh, "3dmesh"},
      {FileExtension::threeG2, "3g2"},
      {FileExtension::threeGP, "3gp"},
      {FileExtension::sevenZ, "7z"},
      {FileExtension::aacdb, "aacdb"},
      {FileExtension::ai, "ai"},
      {FileExtension::aif, "aif"},
      {FileExtension::aiff, "aiff"},
      {FileExtension::alf4, "alf4"},
      {FileExtension::alut, "alut"},
      {FileExtension::aml, "aml"},
      {FileExtension::apk, "apk"},
      {FileExtension::app, "app"},
      {FileExtension::ari, "ari"},
      {FileExtension::arx, "arx"},
      {FileExtension::asp, "asp"},
      {FileExtension::aspx, "aspx"},
      {FileExtension::au, "au"},
      {FileExtension::avi, "avi"},
      {FileExtension::b, "b"},
      {FileExtension::bak, "bak"},
      {FileExtension::bat, "bat"},
      {FileExtension::bdm, "bdm"},
      {FileExtension::bim, "bim"},
      {FileExtension::bin, "bin"},
      {FileExtension::bmp, "bmp"},
      {FileExtension::braw, "braw"},
      {FileExtension::bundle, "bundle"},
      {FileExtension::c, "c"},
      {FileExtension::cab, "cab"},
      {FileExtension::caf, "caf"},
      {FileExtension::cbr, "cbr"},
      {FileExtension::cer, "cer"},
      {FileExtension::cfg, "cfg"},
      {FileExtension::cgi, "cgi"},
      {FileExtension::cif, "cif"},
      {FileExtension::cine, "cine"},
      {FileExtension::classExt, "class"},
      {FileExtension::cmf, "cmf"},
      {FileExtension::cms, "cms"},
      {FileExtension::com, "com"},
      {FileExtension::component, "component"},
      {FileExtension::cpf, "cpf"},
      {FileExtension::cpi, "cpi"},
      {FileExtension::cpl, "cpl"},
      {FileExtension::cpp, "cpp"},
      {FileExtension::cr2, "cr2"},
      {FileExtension::crm, "crm"},
      {FileExtension::crx, "crx"},
      {FileExtension::csr, "csr"},
      {FileExtension::cs, "cs"},
      {FileExtension::css, "css"},
      {FileExtension::csv, "csv"},
      {FileExtension::cube, "cube"},
      {FileExtension::cue, "cue"},
      {FileExtension::cur, "cur"},
      {FileExtension::dat, "dat"},
      {FileExtension::db, "db"},
      {FileExtension::dbf, "dbf"},
      {FileExtension::dcr, "dcr"},
      {FileExtension::dds, "dds"},
      {FileExtension::deb, "deb"},
      {FileExtension::dem, "dem"},
      {FileExtension::deskthemepack, "deskthemepack"},
      {FileExtension::dll, "dll"},
      {FileExtension::dmg, "dmg"},
      {FileExtension::dmp, "dmp"},
      {FileExtension::dng, "dng"},
      {FileExtension::doc, "doc"},
      {FileExtension::docx, "docx"},
      {FileExtension::dpx, "dpx"},
      {FileExtension::drv, "drv"},
      {FileExtension::dtd, "dtd"},
      {FileExtension::dwg, "dwg"},
      {FileExtension::dxf, "dxf"},
      {FileExtension::eps, "eps"},
      {FileExtension::exe, "exe"},
      {FileExtension::fcpbundle, "fcpbundle"},
      {FileExtension::fla, "fla"},
      {FileExtension::flac, "flac"},
      {FileExtension::flv, "flv"},
      {FileExtension::fnt, "fnt"},
      {FileExtension::folder, "folder"},
      {FileExtension::directory, ""},
      {FileExtension::fon, "fon"},
      {FileExtension::gadget, "gadget"},
      {FileExtension::gam, "gam"},
      {FileExtension::ged, "ged"},
      {FileExtension::gif, "gif"},
      {FileExtension::gpx, "gpx"},
      {FileExtension::gz, "gz"},
      {FileExtension::heic, "heic"},
      {FileExtension::hqx, "hqx"},
      {FileExtension::htm, "htm"},
      {FileExtension::html, "html"},
      {FileExtension::icns, "icns"},
      {FileExtension::ico, "ico"},
      {FileExtension::ics, "ics"},
      {FileExtension::iff, "iff"},
      {FileExtension::ilut, "ilut"},
      {FileExtension::indd, "indd"},
      {FileExtension::ini, "ini"},
      {FileExtension::insp, "insp"},
      {FileExtension::insv, "insv"},
      {FileExtension::iso, "iso"},
      {FileExtension::jar, "jar"},
      {FileExtension::java, "java"},
      {FileExtension::jpeg, "jpeg"},
      {FileExtension::jpg, "jpg"},
      {FileExtension::js, "js"},
      {FileExtension::jsp, "jsp"},
      {FileExtension::key, "key"},
      {FileExtension::keychain, "keychain"},
      {FileExtension::kml, "kml"},
      {FileExtension::kmz, "kmz"},
      {FileExtension::lnk, "lnk"},
      {FileExtension::log, "log"},
      {FileExtension::look, "look"},
      {FileExtension::lrv, "lrv"},
      {FileExtension::lua, "lua"},
      {FileExtension::lut, "lut"},
      {FileExtension::lvm, "lvm"},
      {FileExtension::m, "m"},
      {FileExtension::m3u, "m3u"},
      {FileExtension::m4a, "m4a"},
      {FileExtension::m4r, "m4r"},
      {FileExtension::m4v, "m4v"},
      {FileExtension::mdb, "mdb"},
      {FileExtension::mdf, "mdf"},
      {FileExtension::mdt, "mdt"},
      {FileExtension::mga, "mga"},
      {FileExtension::mhl, "mhl"},
      {FileExtension::mid, "mid"},
      {FileExtension::mif, "mif"},
      {FileExtension::mim, "mim"},
      {FileExtension::mjpeg, "mjpeg"},
      {FileExtension::mp3, "mp3"},
      {FileExtension::mp4, "mp4"},
      {FileExtension::mpa, "mpa"},
      {FileExtension::mpg, "mpg"},
      {FileExtension::mov, "mov"},
      {FileExtension::mpl, "mpl"},
      {FileExtension::mrk, "mrk"},
      {FileExtension::msg, "msg"},
      {FileExtension::msi, "msi"},
      {FileExtension::mts, "mts"},
      {FileExtension::mxf, "mxf"},
      {FileExtension::nef, "nef"},
      {FileExtension::nes, "nes"},
      {FileExtension::nrw, "nrw"},
      {FileExtension::odf, "odf"},
      {FileExtension::ods, "ods"},
      {FileExtension::odt, "odt"},
      {FileExtension::olut, "olut"},
      {FileExtension::otf, "otf"},
      {FileExtension::pages, "pages"},
      {FileExtension::part, "part"},
      {FileExtension::pdb, "pdb"},
      {FileExtension::pct, "pct"},
      {FileExtension::pdf, "pdf"},
      {FileExtension::php, "php"},
      {FileExtension::pkg, "pkg"},
      {FileExtension::pl, "pl"},
      {FileExtension::plugin, "plugin"},
      {FileExtension::png, "png"},
      {FileExtension::pot, "pot"},
      {FileExtension::ppn, "ppn"},
      {FileExtension::pps, "pps"},
      {FileExtension::ppt, "ppt"},
      {FileExtension::pptx, "pptx"},
      {FileExtension::prev, "prev"},
      {FileExtension::prf, "prf"},
      {FileExtension::psd, "psd"},
      {FileExtension::pspimage, "pspimage"},
      {FileExtension::py, "py"},
      {FileExtension::r3d, "r3d"},
      {FileExtension::rar, "rar"},
      {FileExtension::raw, "raw"},
      {FileExtension::rdc, "rdc"},
      {FileExtension::rm, "rm"},
      {FileExtension::rmf, "rmf"},
      {FileExtension::rom, "rom"},
      {FileExtension::rpm, "rpm"},
      {FileExtension::rss, "rss"},
      {FileExtension::rsv, "rsv"},
      {FileExtension::rtf, "rtf"},
      {FileExtension::sav, "sav"},
      {FileExtension::schema, "schema"},
      {FileExtension::sdf, "sdf"},
      {FileExtension::sh, "sh"},
      {FileExtension::sidecar, "sidecar"},
      {FileExtension::sif, "sif"},
      {FileExtension::sitx, "sitx"},
      {FileExtension::sln, "sln"},
      {FileExtension::smi, "smi"},
      {FileExtension::sql, "sql"},
      {FileExtension::srt, "srt"},
      {FileExtension::svg, "svg"},
      {FileExtension::swf, "swf"},
      {FileExtension::swift, "swift"},
      {FileExtension::sys, "sys"},
      {FileExtension::tar, "tar"},
      {FileExtension::targz, "targ.gz"},
      {FileExtension::tax2016, "tax2016"},
      {FileExtension::tax2019, "tax2019"},
      {FileExtension::tdt, "tdt"},
      {FileExtension::tex, "tex"},
      {FileExtension::tga, "tga"},
      {FileExtension::thm, "thm"},
      {FileExtension::tid, "tid"},
      {FileExtension::tif, "tif"},
      {FileExtension::tiff, "tiff"},
      {FileExtension::tmp, "tmp"},
      {FileExtension::toast, "toast"},
      {FileExtension::torrent, "torrent"},
      {FileExtension::ttf, "ttf"},
      {FileExtension::txt, "txt"},
      {FileExtension::uue, "uue"},
      {FileExtension::vb, "vb"},
      {FileExtension::vcd, "vcd"},
      {FileExtension::vcf, "vcf"},
      {FileExtension::vcxproj, "vcxproj"},
      {FileExtension::vob, "vob"},
      {FileExtension::wav, "wav"},
      {FileExtension::webp, "webp"},
      {FileExtension::wma, "wma"},
      {FileExtension::wmv, "wmv"},
      {FileExtension::wpd, "wpd"},
      {FileExtension::wps, "wps"},
      {FileExtension::wsf, "wsf"},
      {FileExtension::xarchive, "xarchive"},
      {FileExtension::xcodeproj, "xcodeproj"},
      {FileExtension::xhtml, "xhtml"},
      {FileExtension::xlr, "xlr"},
      {FileExtension::xls, "xls"},
      {FileExtension::xlsx, "xlsx"},
      {FileExtension::xml, "xml"},
      {FileExtension::xpc, "xpc"},
      {FileExtension::yuv, "yuv"},
      {FileExtension::zip, "zip"},
      {FileExtension::zipx, "zipx"},
  });
  // clang-format on
};

/// The extension's raw value for comparisons that ignore case.
[[nodiscard]] constexpr std::string_view caseInsensitveRawValue(FileExtension extension) noexcept {
  return rawValue(extension);  // every raw value is its own case folding
}

/// The extension whose raw value equals the text without regard to case; absent when there is none. The text carries no
/// dot: "MOV" gives `mov`, ".mov" nothing, the empty text `directory`.
[[nodiscard]] MERIDIAN_API std::optional<FileExtension> fileExtensionIgnoringCase(std::string_view text);

/// The extension as it ends a path: its raw value behind a dot, and the empty text for `directory`.
[[nodiscard]] MERIDIAN_API std::string path(FileExtension extension);

/// The base, a path or a URL without query and fragment, with `path(extension)` put at its end: ("/out/clip", mov)
/// gives "/out/clip.mov".
[[nodiscard]] MERIDIAN_API std::string url(FileExtension extension, std::string_view base);

/// A set of file extensions, as small as four words. Iterating visits the members in declaration order.
class FileExtensionSet {
 public:
  constexpr FileExtensionSet() noexcept = default;
  constexpr FileExtensionSet(std::initializer_list<FileExtension> members) noexcept {
    for (const FileExtension member : members) insert(member);
  }

  constexpr void insert(FileExtension member) noexcept { wordOf(member) |= bitOf(member); }
  constexpr void remove(FileExtension member) noexcept { wordOf(member) &= ~bitOf(member); }

  [[nodiscard]] constexpr bool contains(FileExtension member) const noexcept {
    return (words_[static_cast<std::size_t>(member) / 64] & bitOf(member)) != 0;
  }

  /// Whether the extension of the path or URL names a member, without regard to case. A last component without
  /// extension names `directory`.
  [[nodiscard]] MERIDIAN_API bool contains(std::string_view pathOrUrl) const;

  [[nodiscard]] constexpr std::size_t size() const noexcept {
    std::size_t count = 0;
    for (const std::uint64_t word : words_) count += static_cast<std::size_t>(std::popcount(word));
    return count;
  }
  [[nodiscard]] constexpr bool empty() const noexcept { return *this == FileExtensionSet{}; }

  /// The members of either set, of both sets, and of the left set alone.
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

  [[nodiscard]] constexpr Iterator begin() const noexcept { return {*this, 0}; }
  [[nodiscard]] constexpr Iterator end() const noexcept { return {*this, allCases<FileExtension>().size()}; }

  [[nodiscard]] static constexpr FileExtensionSet archiveExtensions() noexcept;
  [[nodiscard]] static constexpr FileExtensionSet documentExtensions() noexcept;
  [[nodiscard]] static constexpr FileExtensionSet imageFileExtensions() noexcept;
  /// Only bak, on purpose.
  [[nodiscard]] static constexpr FileExtensionSet sidecarFileExtensions() noexcept;
  /// Files that show that something beside them is incomplete.
  [[nodiscard]] static constexpr FileExtensionSet incompleteFileIndicatorExtensions() noexcept;
  [[nodiscard]] static constexpr FileExtensionSet audioOnlyFileExtensions() noexcept;
  [[nodiscard]] static constexpr FileExtensionSet videoFileExtensions() noexcept;
  /// As audioOnlyFileExtensions, without iff and mpa.
  [[nodiscard]] static constexpr FileExtensionSet musicFileExtensions() noexcept;
  [[nodiscard]] static constexpr FileExtensionSet rawMultimediaFileExtensions() noexcept;
  [[nodiscard]] static constexpr FileExtensionSet rawImageSequenceFileExtensions() noexcept;
  [[nodiscard]] static constexpr FileExtensionSet solvaneReportFileExtensions() noexcept;
  [[nodiscard]] static constexpr FileExtensionSet colorLutFileExtensions() noexcept;
  /// Everything that can hold moving images or sound.
  [[nodiscard]] static constexpr FileExtensionSet multimediaFileExtensions() noexcept;
  /// Everything that cannot.
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

/// A group by its name, for tools that list the groups.
struct FileExtensionGroup {
  std::string_view name;
  FileExtensionSet (*members)() noexcept;
};

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
