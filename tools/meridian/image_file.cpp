// Reads and writes image files by OpenImageIO: the module that the command loads when it needs an image.
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
#include "tools/meridian/image_checks.h"

namespace meridian::command {
namespace {

using OIIO::ImageInput;
using OIIO::ImageOutput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

/// Returns a code value spread over the whole sample: its bits are repeated, so that the largest stays the largest.
template <typename Sample>
Sample spread(Sample value, int bits) {
  unsigned spreadValue = 0;
  for (int shift = static_cast<int>(sizeof(Sample)) * 8 - bits; shift > -bits; shift -= bits) {
    spreadValue |= shift >= 0 ? unsigned{value} << shift : unsigned{value} >> -shift;
  }
  return static_cast<Sample>(spreadValue);
}

/// Returns the description of the file to write: that of the file read, without what the writer does not support and
/// without what describes the samples before the LUT.
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

/// Passes OpenImageIO's reports of progress on.
bool tellProgress(void* progress, float portion) {
  (*static_cast<const ImageFile::Progress*>(progress))(double{portion});
  return false;  // do not cancel
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
  [[noreturn]] void throwOutputError(std::string why) const;
  [[nodiscard]] bool keepsChannels(const ImageSpec& wanted) const;
  template <typename Sample>
  [[nodiscard]] Sample* row(std::size_t place) const {
    return reinterpret_cast<Sample*>(samples_.get()) + place * width() * channelCount();
  }
  template <typename Sample>
  void changeAs(const Change& change, const Progress& progress);
  template <typename Sample>
  void changeCopy(const Change& change, std::size_t first, std::size_t count);
  template <typename Sample>
  [[nodiscard]] ImageView<Sample> colors(std::size_t first, std::size_t count) const;

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

/// The memory comes from the system as zeros, so that nothing else of this process can get into an image.
void OpenImageIoFile::allocate() {
  const std::uint64_t count = OIIO::clamped_mult64(spec_.image_pixels(), static_cast<std::uint64_t>(spec_.nchannels));
  samples_.reset(static_cast<std::byte*>(std::calloc(count, type_.size())));  // NOLINT(cppcoreguidelines-no-malloc)
  if (samples_ == nullptr) {
    throwImageError(path_, "is too large for the memory: " + std::to_string(spec_.width) + " x " +
                               std::to_string(spec_.height) + " pixels of " + std::to_string(spec_.nchannels) +
                               " channels");
  }
}

/// Changes the colours of code values that have fewer bits than their samples, in a copy at their real depth.
template <typename Sample>
void OpenImageIoFile::changeCopy(const Change& change, std::size_t first, std::size_t count) {
  const int shift = ImageView<Sample>::sampleBits - bits_;
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
  forEach([&](Sample& color, const Sample& sample) { color = static_cast<Sample>(sample >> shift); });
  change(ImageView<Sample>::packed(ImageLayout::rgb, colors.data(), width(), count, bits_));
  forEach([&](const Sample& color, Sample& sample) { sample = spread(color, bits_); });
}

/// Returns the colours of some rows, which are changed in place; other channels are not touched.
template <typename Sample>
ImageView<Sample> OpenImageIoFile::colors(std::size_t first, std::size_t count) const {
  const auto pixelStride = static_cast<std::ptrdiff_t>(channelCount() * sizeof(Sample));
  const auto rowStride = static_cast<std::ptrdiff_t>(width()) * pixelStride;
  ImageView<Sample> view{.width = width(), .height = count};
  for (std::size_t channel = 0; channel < 3; ++channel) {
    view.planes[channel] = {row<Sample>(first) + channels_[channel], rowStride, pixelStride};
  }
  // Alpha is part of the view only where the samples are then plain RGBA, which is read and written fastest.
  const bool isRgba = channelCount() == 4 && channels_ == std::array<std::size_t, 3>{0, 1, 2};
  if (isRgba) view.alpha() = {row<Sample>(first) + 3, rowStride, pixelStride};
  return view;
}

template <typename Sample>
void OpenImageIoFile::changeAs(const Change& change, const Progress& progress) {
  constexpr std::size_t bandPixels = std::size_t{1} << 22U;
  const std::size_t bandRows = std::max<std::size_t>(1, bandPixels / width());
  for (std::size_t first = 0; first < height(); first += bandRows) {
    const std::size_t count = std::min(bandRows, height() - first);
    if (bits_ == ImageView<Sample>::sampleBits) {
      change(colors<Sample>(first, count));
    } else if constexpr (ImageView<Sample>::hasCodeValues) {
      changeCopy<Sample>(change, first, count);
    }
    progress(static_cast<double>(first + count) / static_cast<double>(height()));
  }
}

void checkExtension(const std::string& path) {
  const std::string extension(pathExtension(path));
  if (extension.empty()) throwImageError(path, "has no extension; give one such as .exr, which decides the format");
  // Names for discarding and for displaying images, which write no file.
  const bool writesFile = extension != "null" && extension != "nul" && extension != "term";
  if (writesFile && ImageOutput::create(extension)) return;
  static_cast<void>(OIIO::geterror());
  throwImageError(path, "cannot be written: no image format has the extension " + inQuotes(extension));
}

OpenImageIoFile::OpenImageIoFile(const std::string& path, unsigned threads) : path_(path) {
  const int most = static_cast<int>(std::min(threads, 1024U));
  OIIO::attribute("threads", most);
  OIIO::attribute("exr_threads", most);
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) throwImageError(path, "cannot be read: " + error.message());
  if (!std::filesystem::is_regular_file(status)) throwImageError(path, "is not a file");
  if (!std::ifstream(path)) throwImageError(path, "cannot be opened");

  ImageSpec wishes;
  // Otherwise colours would be multiplied by alpha when read and divided again when written.
  wishes.attribute("oiio:UnassociatedAlpha", 1);
  input_ = ImageInput::open(path, &wishes);
  if (!input_) throwImageError(path, "is not an image that can be read: " + asLine(OIIO::geterror()));
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
  if (!output_) throwImageError(name, "cannot be written: " + asLine(OIIO::geterror()));
  const ImageSpec wanted = outputSpec(spec_, *output_);
  // This writer terminates the process for more channels instead of reporting an error.
  if (std::string_view(output_->format_name()) == "dpx" && wanted.nchannels > 4) {
    throwImageError(name, "cannot be written: dpx files do not hold the " + std::to_string(wanted.nchannels) +
                              " channels of " + inQuotes(path_));
  }
  if (!output_->open(path, wanted)) throwOutputError(asLine(output_->geterror()));
  if (!keepsChannels(wanted)) {
    throwImageError(name, std::string("cannot be written: ") + output_->format_name() + " files do not hold the " +
                              std::to_string(wanted.nchannels) + " channels of " + inQuotes(path_));
  }
  if (output_->spec().format != wanted.format) {
    throwImageError(name, std::string("cannot be written: ") + output_->format_name() +
                              " files do not hold samples of type \"" + wanted.format.c_str() + "\", which " +
                              inQuotes(path_) + " has");
  }
}

void OpenImageIoFile::read(const Progress& progress) {
  allocate();
  Progress teller = progress;
  const bool isRead = input_->read_image(0, 0, 0, spec_.nchannels, type_, samples_.get(), OIIO::AutoStride,
                                         OIIO::AutoStride, OIIO::AutoStride, &tellProgress, &teller);
  // Some readers fill in what is missing and only leave an error text.
  if (!isRead || input_->has_error()) throwImageError(path_, "cannot be read: " + asLine(input_->geterror()));
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
  // Closing writes what is still buffered, and may fail on its own.
  const bool isClosed = output_->close();
  if (!isWritten || !isClosed) throwOutputError(asLine(output_->geterror()));
  checkIsWhole(progress);
}

/// Reads the written file back, since not every writer notices that a disk is full, into the memory of the samples,
/// which are no longer needed.
void OpenImageIoFile::checkIsWhole(const Progress& progress) {
  constexpr std::string_view notReadBack = "it cannot be read back; check that the disk is not full";
  const auto written = ImageInput::open(outputPath_);
  static_cast<void>(OIIO::geterror());
  if (!written) throwOutputError(std::string(notReadBack));
  const ImageSpec& spec = written->spec();
  const bool fits = spec.width == spec_.width && spec.height == spec_.height && spec.nchannels == spec_.nchannels;
  if (!fits) throwOutputError(std::string(notReadBack));
  if (std::string_view(written->format_name()) == "dpx") checkDpxIsWhole(spec, outputPath_);
  Progress teller = progress;
  const bool isRead = written->read_image(0, 0, 0, spec.nchannels, type_, samples_.get(), OIIO::AutoStride,
                                          OIIO::AutoStride, OIIO::AutoStride, &tellProgress, &teller);
  if (!isRead || written->has_error()) {
    static_cast<void>(written->geterror());
    throwOutputError(std::string(notReadBack));
  }
}

/// Throws CommandError with the file's own name in place of its temporary one.
void OpenImageIoFile::throwOutputError(std::string why) const {
  for (std::size_t place = why.find(outputPath_); place != std::string::npos; place = why.find(outputPath_)) {
    why.replace(place, outputPath_.size(), outputName_);
  }
  throwImageError(outputName_, "cannot be written: " + why);
}

/// Returns whether the writer, which is open, writes every channel.
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
