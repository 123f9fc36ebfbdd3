/// \file
/// What OpenImageIO says of an image, and whether a LUT can be applied to it without losing anything. For example:
///
///     checkSamples(input->spec(), path);
///     const auto [red, green, blue] = colorChannels(input->spec(), "beauty", path);
#pragma once

#include <OpenImageIO/imageio.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace meridian::command {

/// Throws CommandError with the file's name and what is wrong with it.
[[noreturn]] void throwImageError(const std::string& path, const std::string& why);

/// Returns an error text of OpenImageIO as one line.
[[nodiscard]] std::string asLine(std::string_view words);

/// Returns the type that a file's samples are converted in; absent if that would lose something.
[[nodiscard]] std::optional<OIIO::TypeDesc> workingType(const OIIO::ImageSpec& spec);

/// Returns the indices of red, green and blue: the channels R, G and B, or with a layer those named LAYER.R, LAYER.G
/// and LAYER.B. All three may also be in lower case. Throws CommandError, which names the layers that there are, if the
/// file does not have them.
[[nodiscard]] std::array<std::size_t, 3> colorChannels(const OIIO::ImageSpec& spec,
                                                       const std::optional<std::string>& layer,
                                                       const std::string& path);

/// Returns the bits of a code value. The reader spreads fewer bits over the whole sample and says how many there were.
[[nodiscard]] int codeValueBits(const OIIO::ImageSpec& spec);

/// Throws CommandError for a file that holds more than the one image that is read. Closes the file.
void checkIsAlone(OIIO::ImageInput& input, const std::string& path);

/// Throws CommandError for samples, channels and kinds of image that are not supported.
void checkSamples(const OIIO::ImageSpec& spec, const std::string& path);

/// Throws CommandError for DPX files that end early, and for kinds that OpenImageIO misreads without an error. Call it
/// before OpenImageIO opens the file.
void checkDpx(const std::string& path);

/// Returns the byte order of a DPX file as OpenImageIO's writer wants it, "big" or "little", which its reader does not
/// tell.
[[nodiscard]] std::string dpxByteOrder(const std::string& path);

}  // namespace meridian::command
