#include "tools/meridian/image_checks.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "meridian/base/printable.h"
#include "tools/meridian/command.h"

namespace meridian::command {

using OIIO::ImageInput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

void throwImageError(const std::string& path, const std::string& why) {
  throw CommandError(inQuotes(path) + " " + printable(why));
}

std::string asLine(std::string_view words) {
  std::string line;
  for (const char c : words) line += c == '\n' ? std::string(line.empty() ? "" : "; ") : std::string(1, c);
  while (line.ends_with("; ")) line.resize(line.size() - 2);
  return line.empty() ? "no reason given by its reader or writer" : line;
}

std::optional<TypeDesc> workingType(const ImageSpec& spec) {
  switch (spec.format.basetype) {
    case TypeDesc::UINT8:
    case TypeDesc::UINT16:
      return spec.format;
    case TypeDesc::HALF:
    case TypeDesc::FLOAT:
      return TypeDesc(TypeDesc::FLOAT);
    default:
      return std::nullopt;
  }
}

std::array<std::size_t, 3> colorChannels(const ImageSpec& spec) {
  std::array<std::size_t, 3> places{0, 1, 2};
  const std::array<std::string_view, 3> names{"R", "G", "B"};
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const int place = spec.channelindex(names[channel]);
    if (place < 0) return {0, 1, 2};
    places[channel] = static_cast<std::size_t>(place);
  }
  return places;
}

int codeValueBits(const ImageSpec& spec) {
  const int sampleBits = static_cast<int>(spec.format.size()) * 8;
  const int said = spec.get_int_attribute("oiio:BitsPerSample", sampleBits);
  return said >= 1 && said < sampleBits ? said : sampleBits;
}

void checkIsAlone(ImageInput& input, const std::string& path) {
  if (input.seek_subimage(1, 0)) throwImageError(path, "holds several images, of which only the first would be kept");
  if (input.seek_subimage(0, 1)) throwImageError(path, "holds smaller versions of its image, which would be lost");
  static_cast<void>(input.geterror());
  if (!input.seek_subimage(0, 0)) throwImageError(path, "cannot be read: " + asLine(input.geterror()));
}

void checkSamples(const ImageSpec& spec, const std::string& path) {
  if (spec.deep) throwImageError(path, "is a deep image, whose pixels hold lists of samples");
  if (spec.depth > 1) throwImageError(path, "is a volume, not an image");
  for (const char* const name : {"tiff:ColorSpace", "jpeg:ColorSpace"}) {
    if (spec.get_string_attribute(name) == "CMYK") throwImageError(path, "is CMYK; a LUT needs red, green and blue");
  }
  if (spec.nchannels < 3) {
    throwImageError(path, "has " + std::to_string(spec.nchannels) + (spec.nchannels == 1 ? " channel" : " channels") +
                              "; a LUT needs red, green and blue");
  }
  const auto isWorkable = [](const TypeDesc& format) {
    return format == TypeDesc::UINT8 || format == TypeDesc::UINT16 || format == TypeDesc::HALF ||
           format == TypeDesc::FLOAT;
  };
  const bool allAre = isWorkable(spec.format) && std::ranges::all_of(spec.channelformats, isWorkable);
  if (!allAre) {
    throwImageError(path, "has unsupported samples (" + std::string(spec.format.c_str()) +
                              "); supported are 8- and 16-bit code values, half and float");
  }
}

void checkDpxIsWhole(const ImageSpec& spec, const std::string& path) {
  std::array<unsigned char, 812> head{};
  std::ifstream file(path, std::ios::binary);
  if (!file.read(reinterpret_cast<char*>(head.data()), head.size())) throwImageError(path, "ends within its header");
  const auto number = [&head](std::size_t place, std::size_t bytes) {
    const bool isLittleEndian = head[0] == 'X';
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i) value = value << 8U | head[place + (isLittleEndian ? bytes - 1 - i : i)];
    return value;
  };
  constexpr std::uint64_t undefined = 0xFFFFFFFF;
  const std::uint64_t offset = number(808, 4) == undefined ? number(4, 4) : number(808, 4);
  const std::uint64_t descriptor = head[800];
  const std::uint64_t bits = head[803];
  const bool isPlainRgb = (descriptor == 50 || descriptor == 51 || descriptor == 52) && number(806, 2) == 0;
  if (!isPlainRgb) return;
  const bool isFilled = number(804, 2) != 0;
  const auto samples = static_cast<std::uint64_t>(spec.width) * static_cast<std::uint64_t>(spec.nchannels);
  std::uint64_t rowBytes = samples * bits / 8;
  if (isFilled && bits == 10) rowBytes = (samples + 2) / 3 * 4;
  if (isFilled && bits == 12) rowBytes = samples * 2;
  std::error_code error;
  const std::uint64_t size = std::filesystem::file_size(path, error);
  if (!error && size < offset + rowBytes * static_cast<std::uint64_t>(spec.height)) {
    throwImageError(path, "cannot be read: it ends before its last row");
  }
}

}  // namespace meridian::command
