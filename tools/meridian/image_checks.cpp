#include "tools/meridian/image_checks.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ranges>
#include <system_error>
#include <vector>

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
      // A file with channels of both types may state half, too.
      return spec.channelformats.empty() ? spec.format : TypeDesc(TypeDesc::FLOAT);
    case TypeDesc::FLOAT:
      return spec.format;
    default:
      return std::nullopt;
  }
}

namespace {

using ChannelIndices = std::array<std::size_t, 3>;

/// The largest number of names that an error lists.
constexpr std::size_t mostNames = 12;

std::optional<ChannelIndices> channelsOfLayer(const ImageSpec& spec, const std::string& layer) {
  const std::string prefix = layer.empty() ? "" : layer + ".";
  for (const std::array<std::string_view, 3>& names :
       {std::array<std::string_view, 3>{"R", "G", "B"}, std::array<std::string_view, 3>{"r", "g", "b"}}) {
    ChannelIndices indices{};
    const bool allAre = std::ranges::all_of(std::views::iota(0U, 3U), [&](unsigned color) {
      const auto found = std::ranges::find(spec.channelnames, prefix + std::string(names[color]));
      indices[color] = static_cast<std::size_t>(found - spec.channelnames.begin());
      return found != spec.channelnames.end();
    });
    if (allAre) return indices;
  }
  return std::nullopt;
}

/// Returns the layers that have red, green and blue, each once, in the file's order.
std::vector<std::string> colorLayers(const ImageSpec& spec) {
  std::vector<std::string> layers;
  for (const std::string& channel : spec.channelnames) {
    const std::string layer = channel.substr(0, std::min(channel.rfind('.'), channel.size()));
    if (layer.size() == channel.size() || layer.empty()) continue;
    if (std::ranges::find(layers, layer) == layers.end() && channelsOfLayer(spec, layer)) layers.push_back(layer);
  }
  return layers;
}

std::string quotedList(const std::vector<std::string>& names) {
  std::string list;
  for (std::size_t i = 0; i < std::min(names.size(), mostNames); ++i) list += (i == 0 ? "" : ", ") + inQuotes(names[i]);
  if (names.size() > mostNames) list += " and " + std::to_string(names.size() - mostNames) + " more";
  return list;
}

/// Throws CommandError; `why` is already safe for a terminal.
[[noreturn]] void throwQuotedError(const std::string& path, const std::string& why) {
  throw CommandError(inQuotes(path) + " " + why);
}

}  // namespace

ChannelIndices colorChannels(const ImageSpec& spec, const std::optional<std::string>& layer, const std::string& path) {
  const bool isNamed = layer && !layer->empty();
  if (const auto indices = channelsOfLayer(spec, layer.value_or("")); indices && (isNamed || !layer)) return *indices;
  const std::vector<std::string> layers = colorLayers(spec);
  std::string known = "it has no layer with channels R, G and B";
  if (layers.size() == 1) known = "its layer with channels R, G and B is " + quotedList(layers);
  if (layers.size() > 1) known = "its layers with channels R, G and B are " + quotedList(layers);
  if (isNamed) throwQuotedError(path, "has no layer " + inQuotes(*layer) + " with channels R, G and B; " + known);
  if (layer) throwQuotedError(path, "cannot be read: the name of the layer is empty; " + known);
  if (layers.empty()) {
    throwQuotedError(
        path, "has no channels R, G and B, which a LUT needs; its channels are " + quotedList(spec.channelnames));
  }
  throwQuotedError(path, "has no channels R, G and B outside of layers; " + known + ": choose with --layer NAME");
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
  input.close();
}

void checkSamples(const ImageSpec& spec, const std::string& path) {
  if (spec.deep) throwImageError(path, "is a deep image, whose pixels hold lists of samples");
  if (spec.depth > 1) throwImageError(path, "is a volume, not an image");
  for (const char* const name : {"tiff:ColorSpace", "jpeg:ColorSpace"}) {
    if (spec.get_string_attribute(name) == "CMYK") throwImageError(path, "is CMYK; a LUT needs red, green and blue");
  }
  // CIE L*a*b*, its ICC and ITU variants, and LogLuv, of which red, green and blue are not known.
  constexpr std::array notRgb{8, 9, 10, 32844, 32845};
  if (std::ranges::find(notRgb, spec.get_int_attribute("tiff:PhotometricInterpretation")) != notRgb.end()) {
    throwImageError(path, "is CIE L*a*b* or LogLuv; a LUT needs red, green and blue");
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

namespace {

/// The header of a DPX file up to the first image element, as SMPTE 268M lays it out.
class DpxHeader {
 public:
  explicit DpxHeader(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file.read(bytes_.data(), static_cast<std::streamsize>(bytes_.size())))
      throwImageError(path, "cannot be read: it ends within its header");
  }

  [[nodiscard]] bool isLittleEndian() const noexcept { return bytes_[0] == 'X'; }

  /// Returns the unsigned number of `count` bytes at `offset`; absent if all its bits are set, which means undefined.
  [[nodiscard]] std::optional<std::uint64_t> number(std::size_t offset, std::size_t count) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const char byte = bytes_[offset + (isLittleEndian() ? count - 1 - i : i)];
      value = value << 8U | static_cast<unsigned char>(byte);
    }
    return value == (std::uint64_t{1} << 8U * count) - 1 ? std::nullopt : std::optional(value);
  }

 private:
  std::array<char, 820> bytes_{};
};

}  // namespace

void checkDpx(const std::string& path) {
  const DpxHeader header(path);
  const auto throwUnsupported = [&path](const std::string& why) { throwImageError(path, "cannot be read: " + why); };
  if (header.number(770, 2).value_or(1) > 1) throwImageError(path, "holds several images, which would not all be kept");
  if (header.number(780, 4).value_or(0) != 0) throwUnsupported("DPX files of signed samples are not supported");
  if (header.number(806, 2).value_or(0) != 0) throwUnsupported("run-length encoded DPX files are not supported");
  constexpr std::uint64_t rgb = 50;
  constexpr std::uint64_t abgr = 52;
  const std::uint64_t descriptor = header.number(800, 1).value_or(0);
  const std::uint64_t rows = header.number(776, 4).value_or(0);
  if (rows == 0 || header.number(772, 4).value_or(0) == 0) throwImageError(path, "has no pixels");
  if (header.number(768, 2).value_or(0) > 3) {
    throwUnsupported("DPX files whose lines run from top to bottom are not supported");
  }
  if (descriptor >= 1 && descriptor <= 9) throwImageError(path, "has 1 channel; a LUT needs red, green and blue");
  if (descriptor < rgb || descriptor > abgr) {
    throwUnsupported("only DPX files of RGB, RGBA and ABGR are supported; its image descriptor is " +
                     std::to_string(descriptor));
  }
  const std::uint64_t channels = descriptor == rgb ? 3 : 4;
  const std::uint64_t bits = header.number(803, 1).value_or(0);
  const bool isPadded = bits == 10 || bits == 12;
  if (!isPadded && bits != 8 && bits != 16 && bits != 32) {
    throwUnsupported("a DPX bit depth of " + std::to_string(bits) + " is not supported; expected 8, 10, 12, 16 or 32");
  }
  const std::uint64_t packing = header.number(804, 2).value_or(0);
  if (isPadded && packing > 2)
    throwUnsupported("its packing of samples is not supported (" + std::to_string(packing) + ")");
  const std::uint64_t rowSamples = header.number(772, 4).value_or(0) * channels;
  const bool isFilled = isPadded && packing != 0;
  // OpenImageIO loses the last sample of each row.
  if (isFilled && bits == 10 && rowSamples % 3 == 1) {
    throwUnsupported(
        "10-bit DPX with alpha is not supported at this width unless its samples are packed; export it packed or with "
        "16 bits");
  }
  std::uint64_t rowBytes = (rowSamples * bits + 31) / 32 * 4;
  if (!isPadded) rowBytes = rowSamples * bits / 8;
  if (isFilled) rowBytes = bits == 10 ? (rowSamples + 2) / 3 * 4 : rowSamples * 2;
  rowBytes += header.number(812, 4).value_or(0);
  const std::uint64_t offset = header.number(808, 4).value_or(header.number(4, 4).value_or(0));
  std::error_code error;
  const std::uint64_t size = std::filesystem::file_size(path, error);
  if (error) throwImageError(path, "cannot be read: " + error.message());
  // OpenImageIO reserves memory for the user's data before it looks for them.
  constexpr std::uint64_t headerBytes = 2048;
  if (header.number(32, 4).value_or(0) > std::max(size, headerBytes) - headerBytes) {
    throwImageError(path, "cannot be read: it ends before its user data do");
  }
  if (size < offset || (rowBytes != 0 && (size - offset) / rowBytes < rows)) {
    throwImageError(path, "cannot be read: it ends before its last row");
  }
}

std::string dpxByteOrder(const std::string& path) { return DpxHeader(path).isLittleEndian() ? "little" : "big"; }

}  // namespace meridian::command
