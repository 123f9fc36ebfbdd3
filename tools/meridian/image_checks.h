// What OpenImageIO says of an image, and whether a LUT can be applied to it without losing anything.
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

/// Returns the indices of red, green and blue by their names, or else the first three channels.
[[nodiscard]] std::array<std::size_t, 3> colorChannels(const OIIO::ImageSpec& spec);

/// Returns the bits of a code value. The reader spreads fewer bits over the whole sample and says how many there were.
[[nodiscard]] int codeValueBits(const OIIO::ImageSpec& spec);

/// Throws CommandError for a file that holds more than the one image that is read.
void checkIsAlone(OIIO::ImageInput& input, const std::string& path);

/// Throws CommandError for samples, channels and kinds of image that are not supported.
void checkSamples(const OIIO::ImageSpec& spec, const std::string& path);

/// Throws CommandError for a DPX file that ends early. The reader would not notice and return whatever the memory held.
void checkDpxIsWhole(const OIIO::ImageSpec& spec, const std::string& path);

}  // namespace meridian::command
