/// \file
/// LUT files read as their formats publish them: .cube and .3dl files. For example:
///
///     const auto lut = readPublishedLut(Url::fromFilePath("/looks/show.cube"));
///     if (!lut && isOfOtherFormat(lut.error())) return readOtherwise();  // as below
///     if (!lut) return report(lut.error().message());
///     for (const LutWarning& warning : lut->warnings) report(warning.message());
///     if (const auto done = applyLut(*lut, image, image); !done) report(description(done.error()));
///
/// Other files are for other readers, which isOfOtherFormat says:
///
/// - Error otherPublishedFormat: the file is in another format that `LutFormat` names, such as .csp, .spi3d or CLF. A
///   caller reads it with another library, such as OpenColorIO, hands the colours over as the stages of a
///   `PublishedLut`, and applies that; the command "meridian lut" does so.
/// - Error noPublishedFormat: the file is in none of them. `ParsedLutFactory` reads it if it has rows of three numbers,
///   and `ImageLut` applies that too.
///
/// The published descriptions that are followed:
///
/// - `.cube`: Adobe Systems, "Cube LUT Specification", version 1.0, 2013, and the LUT_1D_INPUT_RANGE and
///   LUT_3D_INPUT_RANGE lines of the IRIDAS "LUT Formats" pages that it goes back to, which also allow a 1D and a 3D
///   table in one file. Red runs fastest. Inputs are DOMAIN_MIN to DOMAIN_MAX, 0 to 1 if nothing is declared. In a file
///   of two tables the 1D rows come first and are applied first; each table has its own range line, and the DOMAIN
///   lines apply to the first table. A range line overrides the DOMAIN lines. Contradictions are warned of.
/// - `.3dl`: Autodesk, "Lustre User Guide", "3D LUTs", 2009: `3DMESH`, `Mesh` with the input depth n for 2^n + 1 points
///   and the depth of the values, a line of mesh values, then rows of code values, blue running fastest. Files of other
///   programs leave lines out. Then the cube's size is that of the rows, and a depth that is not declared is implied by
///   the highest value v: 8 bits for v to 511, 10 to 2047, 12 to 8191, otherwise 16, as OpenColorIO infers it. Mesh
///   values that are 2 code values or more off a straight line are a curve before the cube (a shaper), as in
///   OpenColorIO.
#pragma once

#include "meridian/base/expected.h"
#include "meridian/export.h"
#include "meridian/lut/lut_error.h"
#include "meridian/lut/lut_format.h"
#include "meridian/lut/lut_stages.h"
#include "meridian/platform/url.h"

namespace meridian::inline v0_2 {

/// Reads a LUT as its format publishes it. The contents decide what the format is; the extension only where they leave
/// it open. Takes time linear in the file's size and, besides its rows (24 bytes each), about two megabytes; a declared
/// size is never trusted with memory. Numbers are those of DecimalNumber::fromText: neither NaN nor infinite.
///
/// Returns otherPublishedFormat for a format that is recognised but not read, and noPublishedFormat for a file that no
/// published format claims (`isOfOtherFormat` is true for both). Returns refersToOtherFile for a CLF or CTF file that
/// has another file applied, which no reader should be given; a file of these formats is read to its end to find that
/// out. Throws nothing but std::bad_alloc.
[[nodiscard]] MERIDIAN_API Expected<PublishedLut, LutError> readPublishedLut(const Url& file);

/// Returns the published format of a file, whether it is read here or not; noPublishedFormat if it is in none, and the
/// errors of opening and reading. Reads the file's beginning, up to its first row.
[[nodiscard]] MERIDIAN_API Expected<LutFormat, LutError> publishedLutFormat(const Url& file);

}  // namespace meridian::inline v0_2
