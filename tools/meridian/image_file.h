/// \file
/// Image files: read whole, changed in their own kind of samples, and written with everything else unchanged. For
/// example:
///
///     const auto image = module.open("in.dpx", std::nullopt);
///     image->convert({file.descriptor(), file.unfinishedPath(), "out.dpx", *imageFormatOfExtension("dpx")},
///                    change, progress);
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "meridian/lut/image_view.h"
#include "tools/meridian/image_format.h"

namespace meridian::command {

/// An image on its way from one file to another. Failures throw CommandError with the file's name and the reason.
class ImageFile {
 public:
  /// Some rows of an image; code values at their real depth, which may be less than the bits of their samples.
  using Colors = std::variant<ImageView<std::uint8_t>, ImageView<std::uint16_t>, ImageView<float>>;

  /// Called with colours to change in place.
  using Change = std::function<void(const Colors&)>;

  /// Called with a step and how much of it is done, from 0 to 1.
  using Progress = std::function<void(std::string_view step, double portion)>;

  /// An open, empty file, which can also be opened at `path`. `name` is what messages call it. The format is one with a
  /// storage.
  struct Output {
    int descriptor = -1;
    std::string path;
    std::string name;
    const ImageFormat& format;
  };

  ImageFile() = default;
  ImageFile(const ImageFile&) = delete;
  ImageFile& operator=(const ImageFile&) = delete;
  ImageFile(ImageFile&&) = delete;
  ImageFile& operator=(ImageFile&&) = delete;
  virtual ~ImageFile() = default;

  /// Returns the bit depth of the code values; absent for floating point.
  [[nodiscard]] virtual std::optional<int> bitDepth() const noexcept = 0;

  /// Reads the image, calls `change` with its colours from top to bottom, some rows at a time, and writes it to the
  /// output. Then reads it back and compares it with what was written. Throws CommandError, also if the format cannot
  /// hold the samples. Call it once.
  virtual void convert(const Output& output, const Change& change, const Progress& progress) = 0;
};

/// The functions of the module of image files. It is a module of its own because OpenImageIO needs a third of a second
/// to load, which no other subcommand should pay for.
struct ImageFileModule {
  /// Sets how many threads compress and decompress, all images together, from 1 to 1024. With 1, the thread that
  /// converts an image does it; with more, an image is also read in one thread while another writes it. Call it once,
  /// before any image is opened.
  void (*useThreads)(unsigned threads);

  /// Opens the file, whose first bytes decide the format. The colours are its channels R, G and B, or those of the
  /// layer. Throws CommandError for other formats, for files without these channels, and for what would not be kept
  /// whole: several images in one file and samples of other kinds. May be called from several threads at once.
  std::unique_ptr<ImageFile> (*open)(const std::string& path, const std::optional<std::string>& layer);
};

/// The name of the function that returns the module's ImageFileModule.
inline constexpr const char* imageFileModuleEntry = "meridianImageFileModule";

}  // namespace meridian::command
