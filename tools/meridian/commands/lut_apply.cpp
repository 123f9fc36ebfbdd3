// meridian lut apply: applies a LUT to an image file.
#include <string>
#include <utility>
#include <variant>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/image_lut.h"
#include "tools/meridian/command.h"
#include "tools/meridian/image_file.h"
#include "tools/meridian/image_module.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/progress_bar.h"
#include "tools/meridian/replacement_file.h"

namespace meridian::command {
namespace {

unsigned readThreads(const Arguments& arguments) {
  constexpr std::int64_t most = 1024;
  const std::string text = arguments.value("threads").value_or("0");
  const auto threads = integerFromText(text);
  if (!threads || *threads < 0 || *threads > most) {
    throw UsageError(inQuotes(text) + " is not a number of threads; expected an integer from 0 to " +
                     std::to_string(most));
  }
  return static_cast<unsigned>(*threads);
}

ImageLut preparedLut(const ParsedLutFile& file, const ImageFile& image, const ImageLutOptions& options) {
  const auto depth = image.bitDepth();
  if (!depth) return ImageLut::forFloats(file, options);
  // Samples of 8 and 16 bits always have a usable depth.
  return *ImageLut::forCodeValues(file, *depth, *depth, options);
}

Status applyToImage(const Arguments& arguments) {
  const unsigned threads = readThreads(arguments);
  const std::string from = *arguments.value("in");
  const std::string to = *arguments.value("out");
  const ImageFileModule& images = imageFileModule();
  images.checkExtension(to);
  const auto file = readLut(arguments);
  const auto image = images.open(from, threads);
  ReplacementFile replacement(to);
  image->beginWriting(replacement.path(), to);

  ProgressBar bar;
  const auto step = [&bar](std::string_view name) { return [&bar, name](double portion) { bar.show(name, portion); }; };
  image->read(step("reading"));
  const ImageLut lut = preparedLut(*file, *image, chosenImageLutOptions(arguments));
  const auto apply = [&lut, threads](const auto& view) {
    if (const auto applied = lut.apply(view, view, threads); !applied) {
      throw CommandError(std::string(description(applied.error())));
    }
  };
  image->changeColors([&apply](const ImageFile::Colors& colors) { std::visit(apply, colors); }, step("applying"));
  image->write(step("writing"));
  replacement.replace();
  return done;
}

}  // namespace

Subcommand lutApplyCommand() {
  using enum Option::Kind;
  Subcommand command{
      .group = "lut",
      .name = "apply",
      .description = "Apply a LUT to an image",
      .details =
          "Samples keep their type and bit depth: code values of up to 16 bits (10 and 12 in DPX), half and float.\n"
          "Other types, files of several images and deep images are not supported. Metadata, alpha\n"
          "and further channels stay as they are. OUT's extension decides its format, which has to support such\n"
          "samples and channels. OUT is written to a temporary file, verified, then renamed; it may be IN. It is\n"
          "owned by the user who runs the command and keeps the permissions that it had.",
      .example =
          "meridian lut apply look.cube in.dpx out.dpx\n"
          "meridian lut apply look.cube shot.exr shot.exr --axis-order red-fastest --domain declared",
      .options = {lutFileOption(),
                  {.kind = positional, .name = "in", .help = "The image", .valueName = "IN", .path = true},
                  {.kind = positional, .name = "out", .help = "The image to write", .valueName = "OUT", .path = true}},
      .action = applyToImage,
  };
  for (Option& option : imageLutOptions()) command.options.push_back(std::move(option));
  command.options.push_back({value, "threads", "The number of threads; 0, the default, uses all cores", "N"});
  return command;
}

}  // namespace meridian::command
