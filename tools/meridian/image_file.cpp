// Reads and writes image files by OpenImageIO: the module that the command loads when it needs an image.
#include "tools/meridian/image_file.h"

#include <OpenImageIO/fmath.h>
#include <OpenImageIO/half.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <concepts>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <limits>
#include <span>
#include <system_error>
#include <utility>

#include "meridian/base/printable.h"
#include "meridian/platform/path_text.h"
#include "tools/meridian/command.h"
#include "tools/meridian/descriptor_proxy.h"
#include "tools/meridian/image_checks.h"
#include "tools/meridian/image_format.h"

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
  // The DPX writer would announce padding and leave it out.
  spec.erase_attribute("dpx:EndOfLinePadding");
  spec.erase_attribute("dpx:EndOfImagePadding");
  return spec;
}

/// Returns true if the compression keeps only what the eye sees.
bool isLossyCompression(std::string_view compression) {
  constexpr std::array<std::string_view, 6> lossy{"jpeg", "pxr24", "b44", "b44a", "dwaa", "dwab"};
  return std::ranges::find(lossy, compression.substr(0, compression.find(':'))) != lossy.end();
}

/// Returns the file's first bytes, at most `signatureBytes`.
std::string firstBytesOf(const std::string& path) {
  std::string bytes(signatureBytes, '\0');
  std::ifstream file(path, std::ios::binary);
  if (!file) throwImageError(path, "cannot be opened: " + std::generic_category().message(errno));
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

/// Returns the format of a file, by its first bytes or else by its extension.
const ImageFormat& inputFormat(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) throwImageError(path, "cannot be read: " + error.message());
  if (!std::filesystem::is_regular_file(status)) throwImageError(path, "is not a regular file");
  if (const ImageFormat* const format = imageFormatOfSignature(firstBytesOf(path))) return *format;
  const ImageFormat* const named = imageFormatOfExtension(pathExtension(path));
  if (named != nullptr && named->signatures[0].empty()) return *named;
  throwImageError(path, "is not an image of a supported format; supported are " + imageFormatNames(false));
}

/// How far samples that were read back differ from those written.
struct Difference {
  bool isAny = false;
  double sum = 0;
  double scale = 0;

  /// For lossy formats: true if an average sample is off by a fifth of the range, or in floating point of the average
  /// value, in which case a part of the image is probably missing: what is missing is read as grey or black. Noise, the
  /// worst case for them, comes back closer: 0.18 of the range for JPEG and WebP, against 0.25 for grey.
  [[nodiscard]] bool isLarge() const { return sum > scale / 5; }
};

/// Compares code values, of which the lowest `shift` bits of a sample are not part.
template <std::unsigned_integral Sample>
Difference differenceOf(std::span<const Sample> written, std::span<const Sample> read, int shift) {
  Difference difference;
  for (std::size_t i = 0; i < written.size(); ++i) {
    const int distance = std::abs((written[i] >> shift) - (read[i] >> shift));
    difference.isAny |= distance != 0;
    difference.sum += distance;
    difference.scale += std::numeric_limits<Sample>::max() >> shift;
  }
  return difference;
}

/// Compares samples in floating point. In lossy formats, infinity and NaN may be stored as any value.
template <typename Sample>
  requires(!std::unsigned_integral<Sample>)
Difference differenceOf(std::span<const Sample> written, std::span<const Sample> read) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  Difference difference;
  for (std::size_t i = 0; i < written.size(); ++i) {
    const double from{float{written[i]}};
    const double to{float{read[i]}};
    const bool isEqual = from == to || (std::isnan(from) && std::isnan(to));
    difference.isAny |= !isEqual;
    if (!std::isfinite(from)) continue;
    difference.scale += std::abs(from);
    difference.sum += std::isfinite(to) ? std::abs(from - to) : infinity;
  }
  return difference;
}

struct Freed {
  void operator()(void* memory) const noexcept { std::free(memory); }  // NOLINT(cppcoreguidelines-no-malloc)
};

/// An image that OpenImageIO reads and writes.
class OpenImageIoFile final : public ImageFile {
 public:
  OpenImageIoFile(const std::string& path, const std::optional<std::string>& layer);

  [[nodiscard]] std::optional<int> bitDepth() const noexcept override {
    return type_.is_floating_point() ? std::nullopt : std::optional(bits_);
  }
  void convert(const Output& output, const Change& change, const Progress& progress) override;

 private:
  [[nodiscard]] std::size_t width() const { return static_cast<std::size_t>(spec_.width); }
  [[nodiscard]] std::size_t height() const { return static_cast<std::size_t>(spec_.height); }
  [[nodiscard]] std::size_t channelCount() const { return static_cast<std::size_t>(spec_.nchannels); }

  /// The rows that are read, changed and written at a time: those of whole chunks in every compression.
  static constexpr std::size_t stepRows = 256;

  void allocate();
  void readRows(std::size_t first, std::size_t count);
  void beginWriting(const Output& output);
  void changeRows(const Change& change, std::size_t first, std::size_t count);
  void writeRows(std::size_t first, std::size_t count);
  void endWriting();
  void checkWritten(bool succeeded);
  void checkIsStorable(std::size_t first, std::size_t count) const;
  void checkIsWhole(const Progress& progress);
  template <typename Sample>
  void checkRows(ImageInput& input, std::size_t first, std::size_t count) const;
  [[nodiscard]] bool storesHalf() const;
  [[nodiscard]] std::vector<float> asStored(std::span<const float> samples) const;
  [[nodiscard]] bool isLossless() const;
  [[noreturn]] void throwDoesNotHold(const std::string& what) const;
  [[noreturn]] void throwOutputError(std::string why) const;
  [[nodiscard]] bool keepsChannels() const;
  [[nodiscard]] bool keepsSamples() const;
  template <typename Sample>
  [[nodiscard]] Sample* row(std::size_t index) const {
    return static_cast<Sample*>(rowBytes(index));
  }
  [[nodiscard]] void* rowBytes(std::size_t index) const {
    return samples_.get() + index * width() * channelCount() * type_.size();
  }
  template <typename Color, typename Sample>
  void changeCopy(const Change& change, std::span<Sample> samples, const auto& colorOf, const auto& sampleOf) const;
  template <typename Sample>
  [[nodiscard]] ImageView<Sample> colors(std::size_t first, std::size_t count) const;

  std::string path_;
  std::string outputPath_;
  std::string outputName_;
  std::unique_ptr<ImageInput> input_;
  const ImageFormat* outputFormat_ = nullptr;
  // The writer is destroyed before what it writes to.
  std::optional<DescriptorProxy> written_;
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

/// Changes copies of the colours, made of the samples, and puts samples made of the changed ones in their place.
template <typename Color, typename Sample>
void OpenImageIoFile::changeCopy(const Change& change, std::span<Sample> samples, const auto& colorOf,
                                 const auto& sampleOf) const {
  const std::size_t stride = channelCount();
  const std::size_t pixels = samples.size() / stride;
  std::vector<Color> colors(pixels * 3);
  const auto forEach = [&](const auto& work) {
    for (std::size_t channel = 0; channel < 3; ++channel) {
      Color* const plane = colors.data() + channel * pixels;
      Sample* const sample = samples.data() + channels_[channel];
      for (std::size_t pixel = 0; pixel < pixels; ++pixel) work(plane[pixel], sample[pixel * stride]);
    }
  };
  forEach([&](Color& color, const Sample& sample) { color = colorOf(sample); });
  const CodeValueFormat format(ImageView<Color>::hasCodeValues ? bits_ : ImageView<Color>::sampleBits);
  change(ImageView<Color>::packed(ImageLayout::planarRgb, colors.data(), width(), pixels / width(), format));
  forEach([&](const Color& color, Sample& sample) { sample = sampleOf(color); });
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

void OpenImageIoFile::changeRows(const Change& change, std::size_t first, std::size_t count) {
  const std::size_t size = count * width() * channelCount();
  const auto changeCodes = [&]<typename Sample>(Sample* samples) {
    const int shift = ImageView<Sample>::sampleBits - bits_;
    if (shift == 0) return change(colors<Sample>(first, count));
    changeCopy<Sample>(
        change, std::span(samples, size), [shift](Sample sample) { return static_cast<Sample>(sample >> shift); },
        [this](Sample code) { return spread(code, bits_); });
  };
  if (type_ == TypeDesc::UINT8) {
    changeCodes(row<std::uint8_t>(first));
  } else if (type_ == TypeDesc::UINT16) {
    changeCodes(row<std::uint16_t>(first));
  } else if (type_ == TypeDesc::HALF) {
    changeCopy<float>(
        change, std::span(row<half>(first), size), [](half sample) { return float{sample}; },
        [](float color) { return half(color); });
  } else {
    change(colors<float>(first, count));
  }
}

OpenImageIoFile::OpenImageIoFile(const std::string& path, const std::optional<std::string>& layer) : path_(path) {
  const ImageFormat& format = inputFormat(path);
  if (format.formatName == "dpx") checkDpx(path);
  ImageSpec wishes;
  // Otherwise colours would be multiplied by alpha when read and divided again when written.
  wishes.attribute("oiio:UnassociatedAlpha", 1);
  input_ = ImageInput::create(std::string(format.formatName));
  if (!input_) throwImageError(path, "cannot be read: " + asLine(OIIO::geterror()));
  if (!input_->open(path, spec_, wishes)) {
    throwImageError(path, std::string("is not a ") + std::string(format.name) +
                              " image that can be read: " + asLine(input_->geterror()));
  }
  checkIsAlone(*input_, path);
  // Some readers cannot return to the first image, so the file is opened again.
  if (!input_->open(path, spec_, wishes)) throwImageError(path, "cannot be read: " + asLine(input_->geterror()));
  checkSamples(spec_, path);
  if (format.formatName == "webp" && spec_.nchannels > 3) {
    throwImageError(path, "has alpha, which the WebP reader multiplies into the colours; not supported");
  }
  if (format.formatName == "dpx") spec_.attribute("oiio:Endian", dpxByteOrder(path));
  type_ = *workingType(spec_);
  channels_ = colorChannels(spec_, layer, path);
  bits_ = codeValueBits(spec_);
}

void OpenImageIoFile::convert(const Output& output, const Change& change, const Progress& progress) {
  allocate();
  const std::size_t step = spec_.tile_width > 0 ? height() : stepRows;
  // With both, rows are read by the thread that waits for them if the system has no further thread.
  const auto policy =
      OIIO::get_int_attribute("threads") > 1 ? std::launch::async | std::launch::deferred : std::launch::deferred;
  const auto countFrom = [this, step](std::size_t first) { return std::min(step, height() - first); };
  const auto readAhead = [&](std::size_t first) {
    return std::async(policy, [this, first, count = countFrom(first)] { readRows(first, count); });
  };
  std::future<void> reading = readAhead(0);
  for (std::size_t first = 0; first < height(); first += step) {
    reading.get();
    const std::size_t next = first + countFrom(first);
    if (next < height()) reading = readAhead(next);
    // Not before rows were read, since a writer that is left unused may print a message of its own.
    if (first == 0) beginWriting(output);
    changeRows(change, first, next - first);
    writeRows(first, next - first);
    progress("converting", static_cast<double>(next) / static_cast<double>(height()));
  }
  input_->close();
  endWriting();
  checkIsWhole(progress);
}

void OpenImageIoFile::beginWriting(const Output& output) {
  outputPath_ = output.path;
  outputName_ = output.name;
  outputFormat_ = &output.format;
  output_ = ImageOutput::create(std::string(outputFormat_->formatName));
  if (!output_) throwOutputError(asLine(OIIO::geterror()));
  const ImageSpec wanted = outputSpec(spec_, *output_);
  // Before the writer is open: some terminate the process or print messages of their own.
  if (!keepsChannels()) throwDoesNotHold("the " + std::to_string(wanted.nchannels) + " channels");
  const std::string samples = "the samples of type \"" + std::string(wanted.format.c_str()) + "\"";
  if (!keepsSamples()) throwDoesNotHold(samples);
  written_.emplace(output.descriptor, output.name);
  // The TIFF writer reads what it has written, which it does not do through a proxy; it notices failures by itself.
  const bool isByPath = outputFormat_->formatName == "tiff";
  if (!isByPath && !output_->set_ioproxy(&*written_))
    throwOutputError("this OpenImageIO cannot write it to an open file; update OpenImageIO");
  if (!output_->open(isByPath ? output.path : output.name, wanted)) throwOutputError(asLine(output_->geterror()));
  if (output_->spec().nchannels != wanted.nchannels) {
    throwDoesNotHold("the " + std::to_string(wanted.nchannels) + " channels");
  }
  if (output_->spec().format != wanted.format) throwDoesNotHold(samples);
}

/// Reads some rows; of tiles, all.
void OpenImageIoFile::readRows(std::size_t first, std::size_t count) {
  const int begin = spec_.y + static_cast<int>(first);
  const int end = begin + static_cast<int>(count);
  const bool isRead = spec_.tile_width > 0 ? input_->read_image(0, 0, 0, spec_.nchannels, type_, samples_.get())
                                           : input_->read_scanlines(0, 0, begin, end, spec_.z, 0, spec_.nchannels,
                                                                    type_, rowBytes(first));
  // Some readers fill in what is missing and only leave an error text.
  if (!isRead || input_->has_error()) throwImageError(path_, "cannot be read: " + asLine(input_->geterror()));
}

/// Writes some rows; tiles, when the last rows are there.
void OpenImageIoFile::writeRows(std::size_t first, std::size_t count) {
  checkIsStorable(first, count);
  const bool hasTiles = output_->spec().tile_width > 0;
  if (hasTiles && first + count < height()) return;
  const int begin = spec_.y + static_cast<int>(first);
  const int end = begin + static_cast<int>(count);
  checkWritten(hasTiles ? output_->write_image(type_, samples_.get())
                        : output_->write_scanlines(begin, end, spec_.z, type_, rowBytes(first)));
}

/// Closing writes what is still buffered, and may fail on its own.
void OpenImageIoFile::endWriting() { checkWritten(output_->close()); }

void OpenImageIoFile::checkWritten(bool succeeded) {
  if (const int failure = written_->failure(); failure != 0) {
    throwOutputError(std::generic_category().message(failure));
  }
  if (!succeeded) throwOutputError(asLine(output_->geterror()));
}

/// The HDR writer stores something else for negative and infinite samples and for NaN, without an error.
void OpenImageIoFile::checkIsStorable(std::size_t first, std::size_t count) const {
  if (outputFormat_->formatName != "hdr") return;
  const std::span samples(row<float>(first), count * width() * channelCount());
  if (std::ranges::any_of(samples, [](float sample) { return !(sample >= 0) || !std::isfinite(sample); })) {
    throwOutputError("HDR files do not hold negative or infinite samples or NaN, which this image has");
  }
}

bool OpenImageIoFile::isLossless() const {
  if (!outputFormat_->storage->isLossless || isLossyCompression(output_->spec().get_string_attribute("compression"))) {
    return false;
  }
  // Colours that alpha was multiplied into are divided again where a format wants them so, and then truncated.
  const bool isDivided = spec_.alpha_channel >= 0 && spec_.get_int_attribute("oiio:UnassociatedAlpha") == 0 &&
                         (outputFormat_->formatName == "png" || outputFormat_->formatName == "targa");
  return !isDivided;
}

bool OpenImageIoFile::storesHalf() const {
  const ImageSpec& spec = output_->spec();
  return spec.format == TypeDesc::HALF ||
         std::ranges::find(spec.channelformats, TypeDesc(TypeDesc::HALF)) != spec.channelformats.end();
}

/// Returns the samples as the file holds them: half where its channel is half.
std::vector<float> OpenImageIoFile::asStored(std::span<const float> samples) const {
  const ImageSpec& spec = output_->spec();
  const int count = static_cast<int>(samples.size());
  std::vector<std::uint16_t> halves(samples.size());
  std::vector<float> stored(samples.size());
  OIIO::convert_pixel_values(TypeDesc::FLOAT, samples.data(), TypeDesc::HALF, halves.data(), count);
  OIIO::convert_pixel_values(TypeDesc::HALF, halves.data(), TypeDesc::FLOAT, stored.data(), count);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (spec.channelformat(static_cast<int>(i % channelCount())) != TypeDesc::HALF) stored[i] = samples[i];
  }
  return stored;
}

/// Compares some rows of the written file with the samples.
template <typename Sample>
void OpenImageIoFile::checkRows(ImageInput& input, std::size_t first, std::size_t count) const {
  const ImageSpec& spec = input.spec();
  std::vector<Sample> read(count * width() * channelCount());
  const int begin = spec.y + static_cast<int>(first);
  const int end = begin + static_cast<int>(count);
  const bool isRead = spec.tile_width > 0
                          ? input.read_tiles(0, 0, spec.x, spec.x + spec.width, begin, end, spec.z, spec.z + 1, 0,
                                             spec.nchannels, type_, read.data())
                          : input.read_scanlines(0, 0, begin, end, spec.z, 0, spec.nchannels, type_, read.data());
  if (!isRead || input.has_error()) throwOutputError("it cannot be read back: " + asLine(input.geterror()));
  const std::span<const Sample> written(row<Sample>(first), read.size());
  if (std::memcmp(written.data(), read.data(), written.size_bytes()) == 0) return;
  Difference difference;
  if constexpr (std::unsigned_integral<Sample>) {
    // Readers spread fewer bits over a sample in ways that differ in the last one, so the code values are compared.
    const int shift = codeValueBits(spec) == bits_ ? ImageView<Sample>::sampleBits - bits_ : 0;
    difference = differenceOf<Sample>(written, read, shift);
  } else if constexpr (std::same_as<Sample, float>) {
    difference = storesHalf() ? differenceOf<float>(asStored(written), read) : differenceOf<float>(written, read);
  } else {
    difference = differenceOf<Sample>(written, read);
  }
  if (isLossless() ? difference.isAny : difference.isLarge()) {
    throwOutputError("the written file differs from the result; check the volume, or write another format");
  }
}

/// Reads the written file back, since not every writer notices that something was not stored.
void OpenImageIoFile::checkIsWhole(const Progress& progress) {
  const auto input = ImageInput::create(std::string(outputFormat_->formatName));
  if (!input) throwOutputError("it cannot be read back");
  ImageSpec wishes;
  wishes.attribute("oiio:UnassociatedAlpha", spec_.get_int_attribute("oiio:UnassociatedAlpha"));
  ImageSpec spec;
  if (!input->open(outputPath_, spec, wishes)) {
    throwOutputError("it cannot be read back: " + asLine(input->geterror()));
  }
  if (spec.width != spec_.width || spec.height != spec_.height || spec.nchannels != spec_.nchannels) {
    throwOutputError("it reads back with another size or other channels");
  }
  // Small enough that a missing part shows in lossy formats; whole tiles.
  constexpr std::size_t bandRows = 16;
  const std::size_t step = spec.tile_height > 0 ? static_cast<std::size_t>(spec.tile_height) : bandRows;
  for (std::size_t first = 0; first < height(); first += step) {
    const std::size_t count = std::min(step, height() - first);
    if (type_ == TypeDesc::UINT8) {
      checkRows<std::uint8_t>(*input, first, count);
    } else if (type_ == TypeDesc::UINT16) {
      checkRows<std::uint16_t>(*input, first, count);
    } else if (type_ == TypeDesc::HALF) {
      checkRows<half>(*input, first, count);
    } else {
      checkRows<float>(*input, first, count);
    }
    progress("checking", static_cast<double>(first + count) / static_cast<double>(height()));
  }
}

void OpenImageIoFile::throwDoesNotHold(const std::string& what) const {
  throw CommandError(inQuotes(outputName_) + " cannot be written: " + std::string(outputFormat_->name) +
                     " files do not hold " + what + " of " + inQuotes(path_));
}

/// Throws CommandError with the file's own name in place of the one at which it is open.
void OpenImageIoFile::throwOutputError(std::string why) const {
  for (std::size_t position = why.find(outputPath_); position != std::string::npos; position = why.find(outputPath_)) {
    why.replace(position, outputPath_.size(), outputName_);
  }
  throwImageError(outputName_, "cannot be written: " + why);
}

/// Returns true if the format holds every channel.
bool OpenImageIoFile::keepsChannels() const {
  const int most = outputFormat_->storage->mostChannels;
  return most == 0 || spec_.nchannels <= (spec_.alpha_channel >= 0 ? most : std::min(most, 3));
}

/// Returns true if the format holds samples of that size.
bool OpenImageIoFile::keepsSamples() const {
  const ImageStorage& storage = *outputFormat_->storage;
  if (type_ == TypeDesc::UINT8) return storage.eightBits;
  return type_ == TypeDesc::UINT16 ? storage.sixteenBits : storage.floating;
}

}  // namespace

extern "C" const ImageFileModule* meridianImageFileModule() {
  static constexpr ImageFileModule module{
      [](unsigned threads) {
        const int count = static_cast<int>(threads);
        OIIO::attribute("threads", count);
        // With a pool of one thread, images would wait for each other; -1 is no pool.
        OIIO::attribute("exr_threads", count == 1 ? -1 : count);
      },
      [](const std::string& path, const std::optional<std::string>& layer) -> std::unique_ptr<ImageFile> {
        return std::make_unique<OpenImageIoFile>(path, layer);
      }};
  return &module;
}

}  // namespace meridian::command
