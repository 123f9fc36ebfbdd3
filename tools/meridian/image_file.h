// Image files: read whole, changed in their own kind of samples, and written with everything else unchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "meridian/lut/image_view.h"

namespace meridian::command {

/// An image on its way from one file to another. Failures throw CommandError with the file's name and the reason.
class ImageFile {
 public:
  /// Some rows of an image; code values at their real depth, which may be less than the bits of their samples.
  using Colors = std::variant<ImageView<std::uint8_t>, ImageView<std::uint16_t>, ImageView<float>>;

  /// Called with colours to change in place.
  using Change = std::function<void(const Colors&)>;

  /// Called with how much of a step is done, from 0 to 1.
  using Progress = std::function<void(double)>;

  ImageFile() = default;
  ImageFile(const ImageFile&) = delete;
  ImageFile& operator=(const ImageFile&) = delete;
  ImageFile(ImageFile&&) = delete;
  ImageFile& operator=(ImageFile&&) = delete;
  virtual ~ImageFile() = default;

  /// Returns the bit depth of the code values; absent for floating point.
  [[nodiscard]] virtual std::optional<int> bitDepth() const noexcept = 0;

  /// Begins the file to write at `path`. Throws CommandError if its format cannot hold the samples. `name` is what
  /// messages call it.
  virtual void beginWriting(const std::string& path, const std::string& name) = 0;

  virtual void read(const Progress& progress) = 0;

  /// Calls `change` with the colours from top to bottom, some rows at a time.
  virtual void changeColors(const Change& change, const Progress& progress) = 0;

  virtual void write(const Progress& progress) = 0;
};

/// The functions of the module of image files. It is a module of its own because OpenImageIO needs a third of a second
/// to load, which no other subcommand should pay for.
struct ImageFileModule {
  /// Throws CommandError if no image format has the path's extension.
  void (*checkExtension)(const std::string& path);

  /// Opens the file. Throws CommandError for what would not be kept whole: several images in one file, samples of other
  /// kinds, fewer than three channels. `threads` compress and decompress; 0 means as many as the machine runs at once.
  std::unique_ptr<ImageFile> (*open)(const std::string& path, unsigned threads);
};

/// The name of the function that returns the module's ImageFileModule.
inline constexpr const char* imageFileModuleEntry = "meridianImageFileModule";

}  // namespace meridian::command
