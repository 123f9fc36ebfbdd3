// The only file that uses OpenImageIO, a module of its own that the command loads when it is asked for an image.
#include "tools/meridian/image_file.h"

#include <OpenImageIO/fmath.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <span>
#include <system_error>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/command.h"

namespace meridian::command {
namespace {

using OIIO::ImageInput;
using OIIO::ImageOutput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
  throw CommandError(inQuotes(path) + " " + printable(why));
}

/// The library's words as one line.
std::string asLine(std::string_view words) {
  std::string line;
  for (const char c : words) line += c == '\n' ? std::string(line.empty() ? "" : "; ") : std::string(1, c);
  while (line.ends_with("; ")) line.resize(line.size() - 2);
  return line.empty() ? "its reader or writer does not say why" : line;
}

/// What a reader or writer says went wrong.
template <typename Side>
std::string faultOf(const Side& side) {
  return asLine(side.geterror());
}

/// What the samples of a file are worked on as; absent where that would lose something.
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

/// Red, green and blue by their names, else the first three.
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

/// The bits of a code value. The reader spreads fewer bits over the whole sample and says how many there were.
int codeValueBits(const ImageSpec& spec) {
  const int sampleBits = static_cast<int>(spec.format.size()) * 8;
  const int said = spec.get_int_attribute("oiio:BitsPerSample", sampleBits);
  return said >= 1 && said < sampleBits ? said : sampleBits;
}

/// A code value spread over the whole sample: its bits again and again, so that the largest stays the largest.
template <typename Sample>
Sample spread(Sample value, int bits) {
  unsigned spreadValue = 0;
  for (int shift = static_cast<int>(sizeof(Sample)) * 8 - bits; shift > -bits; shift -= bits) {
    spreadValue |= shift >= 0 ? unsigned{value} << shift : unsigned{value} >> -shift;
  }
  return static_cast<Sample>(spreadValue);
}

/// Refuses a file that holds more than the one image that is read.
void checkIsAlone(ImageInput& input, const std::string& path) {
  if (input.seek_subimage(1, 0)) refuse(path, "holds several images, of which only the first could be kept");
  if (input.seek_subimage(0, 1)) refuse(path, "holds smaller versions of its image, which could not be kept");
  static_cast<void>(input.geterror());
  if (!input.seek_subimage(0, 0)) refuse(path, "cannot be read: " + faultOf(input));
}

void checkSamples(const ImageSpec& spec, const std::string& path) {
  if (spec.deep) refuse(path, "is a deep image, whose pixels hold lists of samples");
  if (spec.depth > 1) refuse(path, "is a volume, and no image");
  for (const char* const name : {"tiff:ColorSpace", "jpeg:ColorSpace"}) {
    if (spec.get_string_attribute(name) == "CMYK")
      refuse(path, "holds the colours of print (CMYK), not red, green, blue");
  }
  if (spec.nchannels < 3) {
    refuse(path, "has " + std::to_string(spec.nchannels) + (spec.nchannels == 1 ? " channel" : " channels") +
                     "; a look-up table needs red, green and blue");
  }
  const auto isWorkable = [](const TypeDesc& format) {
    return format == TypeDesc::UINT8 || format == TypeDesc::UINT16 || format == TypeDesc::HALF ||
           format == TypeDesc::FLOAT;
  };
  const bool allAre = isWorkable(spec.format) && std::ranges::all_of(spec.channelformats, isWorkable);
  if (!allAre) {
    refuse(path, "has samples of a kind that is not worked on here (" + std::string(spec.format.c_str()) +
                     "); these are: 8- and 16-bit code values, half and float");
  }
}

/// Refuses a DPX file that ends early, of which the reader says nothing and gives whatever the memory held.
void checkDpxIsWhole(const ImageSpec& spec, const std::string& path) {
  std::array<unsigned char, 812> head{};
  std::ifstream file(path, std::ios::binary);
  if (!file.read(reinterpret_cast<char*>(head.data()), head.size())) refuse(path, "ends within its header");
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
    refuse(path, "cannot be read: it ends before its last row");
  }
}

/// The written file's description: everything of the read one's but what the writer cannot do, and but what is said of
/// the samples as they were.
ImageSpec outputSpec(const ImageSpec& read, const ImageOutput& output) {
  ImageSpec spec = read;
  if (!output.supports("tiles")) spec.tile_width = spec.tile_height = spec.tile_depth = 0;
  if (!output.supports("channelformats")) spec.channelformats.clear();
  for (const char* const name : {"oiio:ConstantColor", "oiio:AverageColor", "oiio:SHA-1", "thumbnail_width",
                                 "thumbnail_height", "thumbnail_nchannels", "thumbnail_image"}) {
    spec.erase_attribute(name);
  }
  return spec;
}

/// Passes the library's word of progress on.
bool tellProgress(void* progress, float portion) {
  (*static_cast<const ImageFile::Progress*>(progress))(double{portion});
  return false;  // go on
}

struct Freed {
  void operator()(void* memory) const noexcept { std::free(memory); }  // NOLINT(cppcoreguidelines-no-malloc)
};

/// An image that OpenImageIO reads and writes.
class OpenImageIoFile final : public ImageFile {
 public:
  OpenImageIoFile(const std::string& path, unsigned threads);

  [[nodiscard]] std::optional<int> bitDepth() const noexcept override {
    return type_ == TypeDesc::FLOAT ? std::nullopt : std::optional(bits_);
  }
  void beginWriting(const std::string& path, const std::string& name) override;
  void read(const Progress& progress) override;
  void changeColors(const Change& change, const Progress& progress) override;
  void write(const Progress& progress) override;

 private:
  [[nodiscard]] std::size_t width() const { return static_cast<std::size_t>(spec_.width); }
  [[nodiscard]] std::size_t height() const { return static_cast<std::size_t>(spec_.height); }
  [[nodiscard]] std::size_t channelCount() const { return static_cast<std::size_t>(spec_.nchannels); }

  void allocate();
  void checkIsWhole(const Progress& progress);
  [[noreturn]] void refuseOutput(std::string why) const;
  [[nodiscard]] bool keepsChannels(const ImageSpec& wanted) const;
  template <typename Sample>
  [[nodiscard]] Sample* row(std::size_t place) const {
    return reinterpret_cast<Sample*>(samples_.get()) + place * width() * channelCount();
  }
  template <typename Sample>
  void changeAs(const Change& change, const Progress& progress);
  template <typename Sample>
  void changeGathered(const Change& change, std::size_t first, std::size_t count);

  std::string path_;
  std::string outputPath_;
  std::string outputName_;
  std::unique_ptr<ImageInput> input_;
  std::unique_ptr<ImageOutput> output_;
  ImageSpec spec_;
  TypeDesc type_;
  std::array<std::size_t, 3> channels_{};
  int bits_ = 0;
  std::unique_ptr<std::byte, Freed> samples_;
};

/// The memory comes from the system as zeros, so that nothing of this process can get into an image.
void OpenImageIoFile::allocate() {
  const std::uint64_t count = OIIO::clamped_mult64(spec_.image_pixels(), static_cast<std::uint64_t>(spec_.nchannels));
  samples_.reset(static_cast<std::byte*>(std::calloc(count, type_.size())));  // NOLINT(cppcoreguidelines-no-malloc)
  if (samples_ == nullptr) {
    refuse(path_, "is too large for the memory: " + std::to_string(spec_.width) + " x " + std::to_string(spec_.height) +
                      " pixels of " + std::to_string(spec_.nchannels) + " channels");
  }
}

/// Leads the colours through an image of their own, at their real depth; the other channels are not touched.
template <typename Sample>
void OpenImageIoFile::changeGathered(const Change& change, std::size_t first, std::size_t count) {
  constexpr int sampleBits = static_cast<int>(sizeof(Sample)) * 8;
  const int shift = sampleBits - bits_;
  const std::size_t pixels = count * width();
  Sample* const image = row<Sample>(first);
  std::vector<Sample> colors(pixels * 3);
  const auto forEach = [&](const auto& work) {
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
      for (std::size_t channel = 0; channel < 3; ++channel) {
        work(colors[pixel * 3 + channel], image[pixel * channelCount() + channels_[channel]]);
      }
    }
  };
  forEach([&](Sample& color, const Sample& sample) {
    if constexpr (std::is_integral_v<Sample>) {
      color = static_cast<Sample>(sample >> shift);
    } else {
      color = sample;
    }
  });
  change(ImageView<Sample>::packed(ImageLayout::rgb, colors.data(), width(), count, bits_));
  forEach([&](const Sample& color, Sample& sample) {
    if constexpr (std::is_integral_v<Sample>) {
      sample = shift == 0 ? color : spread(color, bits_);
    } else {
      sample = color;
    }
  });
}

template <typename Sample>
void OpenImageIoFile::changeAs(const Change& change, const Progress& progress) {
  constexpr std::size_t bandPixels = std::size_t{1} << 22U;
  const std::size_t bandRows = std::max<std::size_t>(1, bandPixels / width());
  const bool isPlain =
      channels_ == std::array<std::size_t, 3>{0, 1, 2} && channelCount() <= 4 && bits_ == ImageView<Sample>::sampleBits;
  const ImageLayout layout = channelCount() == 3 ? ImageLayout::rgb : ImageLayout::rgba;
  for (std::size_t first = 0; first < height(); first += bandRows) {
    const std::size_t count = std::min(bandRows, height() - first);
    if (isPlain) {
      change(ImageView<Sample>::packed(layout, row<Sample>(first), width(), count));
    } else {
      changeGathered<Sample>(change, first, count);
    }
    progress(static_cast<double>(first + count) / static_cast<double>(height()));
  }
}

void checkExtension(const std::string& path) {
  const std::string extension(pathExtension(path));
  if (extension.empty()) refuse(path, "has no extension, which would say what kind of image to write");
  // A name for throwing images away and one for showing them, which write no file.
  const bool writesFile = extension != "null" && extension != "nul" && extension != "term";
  if (writesFile && ImageOutput::create(extension)) return;
  static_cast<void>(OIIO::geterror());
  refuse(path, "cannot be written: no kind of image that is known here has the extension " + inQuotes(extension));
}

OpenImageIoFile::OpenImageIoFile(const std::string& path, unsigned threads) : path_(path) {
  const int most = static_cast<int>(std::min(threads, 1024U));
  OIIO::attribute("threads", most);
  OIIO::attribute("exr_threads", most);
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) refuse(path, "cannot be read: " + error.message());
  if (!std::filesystem::is_regular_file(status)) refuse(path, "is no file");
  if (!std::ifstream(path)) refuse(path, "cannot be opened");

  ImageSpec wishes;
  // Else colours would be multiplied by alpha in reading, and divided again in writing.
  wishes.attribute("oiio:UnassociatedAlpha", 1);
  input_ = ImageInput::open(path, &wishes);
  if (!input_) refuse(path, "is no image that can be read: " + asLine(OIIO::geterror()));
  checkIsAlone(*input_, path);
  spec_ = input_->spec();
  checkSamples(spec_, path);
  if (std::string_view(input_->format_name()) == "dpx") checkDpxIsWhole(spec_, path);
  type_ = *workingType(spec_);
  channels_ = colorChannels(spec_);
  bits_ = codeValueBits(spec_);
  if (type_ == TypeDesc::FLOAT) bits_ = ImageView<float>::sampleBits;
}

void OpenImageIoFile::beginWriting(const std::string& path, const std::string& name) {
  outputPath_ = path;
  outputName_ = name;
  output_ = ImageOutput::create(std::string(pathExtension(path)));
  if (!output_) refuse(name, "cannot be written: " + asLine(OIIO::geterror()));
  const ImageSpec wanted = outputSpec(spec_, *output_);
  // This writer ends the process at more channels instead of saying so.
  if (std::string_view(output_->format_name()) == "dpx" && wanted.nchannels > 4) {
    refuse(name, "cannot be written: dpx files do not hold the " + std::to_string(wanted.nchannels) + " channels of " +
                     inQuotes(path_));
  }
  if (!output_->open(path, wanted)) refuseOutput(faultOf(*output_));
  if (!keepsChannels(wanted)) {
    refuse(name, std::string("cannot be written: ") + output_->format_name() + " files do not hold the " +
                     std::to_string(wanted.nchannels) + " channels of " + inQuotes(path_));
  }
  if (output_->spec().format != wanted.format) {
    refuse(name, std::string("cannot be written: ") + output_->format_name() + " files hold no samples of the kind \"" +
                     wanted.format.c_str() + "\", which " + inQuotes(path_) + " has");
  }
}

void OpenImageIoFile::read(const Progress& progress) {
  allocate();
  Progress teller = progress;
  const bool isRead = input_->read_image(0, 0, 0, spec_.nchannels, type_, samples_.get(), OIIO::AutoStride,
                                         OIIO::AutoStride, OIIO::AutoStride, &tellProgress, &teller);
  // Some readers fill in what is missing and only leave word of it.
  if (!isRead || input_->has_error()) refuse(path_, "cannot be read: " + faultOf(*input_));
  input_->close();
}

void OpenImageIoFile::changeColors(const Change& change, const Progress& progress) {
  if (type_ == TypeDesc::UINT8) {
    changeAs<std::uint8_t>(change, progress);
  } else if (type_ == TypeDesc::UINT16) {
    changeAs<std::uint16_t>(change, progress);
  } else {
    changeAs<float>(change, progress);
  }
}

void OpenImageIoFile::write(const Progress& progress) {
  Progress teller = progress;
  const bool isWritten = output_->write_image(type_, samples_.get(), OIIO::AutoStride, OIIO::AutoStride,
                                              OIIO::AutoStride, &tellProgress, &teller);
  // Closing writes what is still held back, and may fail on its own.
  const bool isClosed = output_->close();
  if (!isWritten || !isClosed) refuseOutput(faultOf(*output_));
  checkIsWhole(progress);
}

/// Reads the written file back: not every writer notices that a disk is full. The samples are no longer needed, so
/// their memory serves.
void OpenImageIoFile::checkIsWhole(const Progress& progress) {
  constexpr std::string_view fault = "it does not read back; is there room on the disk?";
  const auto written = ImageInput::open(outputPath_);
  static_cast<void>(OIIO::geterror());
  if (!written) refuseOutput(std::string(fault));
  const ImageSpec& spec = written->spec();
  const bool fits = spec.width == spec_.width && spec.height == spec_.height && spec.nchannels == spec_.nchannels;
  if (!fits) refuseOutput(std::string(fault));
  if (std::string_view(written->format_name()) == "dpx") checkDpxIsWhole(spec, outputPath_);
  Progress teller = progress;
  const bool isRead = written->read_image(0, 0, 0, spec.nchannels, type_, samples_.get(), OIIO::AutoStride,
                                          OIIO::AutoStride, OIIO::AutoStride, &tellProgress, &teller);
  if (!isRead || written->has_error()) {
    static_cast<void>(written->geterror());
    refuseOutput(std::string(fault));
  }
}

/// Refuses with the file's own name in place of the one that it is written under.
void OpenImageIoFile::refuseOutput(std::string why) const {
  for (std::size_t place = why.find(outputPath_); place != std::string::npos; place = why.find(outputPath_)) {
    why.replace(place, outputPath_.size(), outputName_);
  }
  refuse(outputName_, "cannot be written: " + why);
}

/// Whether the writer, which is open, writes every channel.
bool OpenImageIoFile::keepsChannels(const ImageSpec& wanted) const {
  const bool hasAlpha = wanted.alpha_channel >= 0;
  if (output_->spec().nchannels != wanted.nchannels || (hasAlpha && output_->supports("alpha") == 0)) return false;
  return wanted.nchannels <= (hasAlpha ? 4 : 3) || output_->supports("nchannels") != 0;
}

}  // namespace

extern "C" const ImageFileModule* meridianImageFileModule() {
  static constexpr ImageFileModule module{&checkExtension,
                                          [](const std::string& path, unsigned threads) -> std::unique_ptr<ImageFile> {
                                            return std::make_unique<OpenImageIoFile>(path, threads);
                                          }};
  return &module;
}

}  // namespace meridian::command
