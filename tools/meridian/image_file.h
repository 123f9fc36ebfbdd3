// Image files: read as a whole, changed in their own kind of samples, and written with everything else kept.
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

/// An image on its way from one file to another. What goes wrong throws CommandError, with the file's name and the
/// fault.
class ImageFile {
 public:
  /// Red, green and blue of some rows; code values at their real depth, which may be less than their samples have bits.
  using Colors = std::variant<ImageView<std::uint8_t>, ImageView<std::uint16_t>, ImageView<float>>;

  /// Is handed colours, to be changed in place.
  using Change = std::function<void(const Colors&)>;

  /// Is told how much of a step is done, from 0 to 1.
  using Progress = std::function<void(double)>;

  ImageFile() = default;
  ImageFile(const ImageFile&) = delete;
  ImageFile& operator=(const ImageFile&) = delete;
  ImageFile(ImageFile&&) = delete;
  ImageFile& operator=(ImageFile&&) = delete;
  virtual ~ImageFile() = default;

  /// The depth of the code values; absent for floating point.
  [[nodiscard]] virtual std::optional<int> bitDepth() const noexcept = 0;

  /// Begins the file to write at `path`, and refuses a format that cannot hold the samples. `name` is what messages
  /// call it.
  virtual void beginWriting(const std::string& path, const std::string& name) = 0;

  virtual void read(const Progress& progress) = 0;

  /// Hands over the colours from top to bottom, some rows at a time.
  virtual void changeColors(const Change& change, const Progress& progress) = 0;

  virtual void write(const Progress& progress) = 0;
};

/// What the module of image files offers. It is a module of its own because its library takes a third of a second to
/// load, which no other subcommand should pay for.
struct ImageFileModule {
  /// Throws CommandError where no writer of images knows the path's extension.
  void (*checkExtension)(const std::string& path);

  /// Opens the file, and refuses what would not come through whole: several images in one file, samples of other
  /// kinds, fewer than three channels. `threads` are for packing and unpacking, 0 as many as the machine runs at once.
  std::unique_ptr<ImageFile> (*open)(const std::string& path, unsigned threads);
};

/// The function by which the module gives what it offers.
inline constexpr const char* imageFileModuleEntry = "meridianImageFileModule";

}  // namespace meridian::command
