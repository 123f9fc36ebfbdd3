// meridian lut apply: an image file led through a look-up table.
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
    throw UsageError(inQuotes(text) + " is no number of threads; write an integer from 0 to " + std::to_string(most));
  }
  return static_cast<unsigned>(*threads);
}

ImageLut preparedLut(const ParsedLutFile& file, const ImageFile& image, const ImageLutOptions& options) {
  const auto depth = image.bitDepth();
  if (!depth) return ImageLut::forFloats(file, options);
  // Depths of samples of 8 and 16 bits always have one.
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
  const ImageLut lut = preparedLut(*file, *image, chosenLookUp(arguments));
  const auto lookUp = [&lut, threads](const auto& view) {
    if (const auto fault = lut.apply(view, view, threads)) throw CommandError(std::string(description(*fault)));
  };
  image->changeColors([&lookUp](const ImageFile::Colors& colors) { std::visit(lookUp, colors); }, step("applying"));
  image->write(step("writing"));
  replacement.take();
  return done;
}

}  // namespace

Subcommand lutApplyCommand() {
  using enum Option::Kind;
  Subcommand command{
      .group = "lut",
      .name = "apply",
      .description = "Lead an image through a look-up table",
      .details =
          "The image is worked on in its own kind of samples: code values of 8 and 16 bits, of fewer bits such as a "
          "DPX\n"
          "file's 10 and 12, half and float. Other kinds, files of several images and deep images are refused.\n"
          "Metadata, alpha and further channels stay as they are. OUT's extension says its format, which has to\n"
          "hold such samples and channels. OUT is made beside its place and put there when it is complete and reads\n"
          "back; it may be IN. It belongs to whoever runs the command, with the permissions that it had.",
      .example =
          "meridian lut apply look.cube in.dpx out.dpx\n"
          "meridian lut apply look.cube shot.exr shot.exr --axis-order red-fastest --domain declared",
      .options = {lutFileOption(),
                  {.kind = positional, .name = "in", .help = "The image", .valueName = "IN", .path = true},
                  {.kind = positional, .name = "out", .help = "The image to write", .valueName = "OUT", .path = true}},
      .action = applyToImage,
  };
  for (Option& option : lookUpOptions()) command.options.push_back(std::move(option));
  command.options.push_back({value, "threads", "How many threads work; 0, the default, for all cores", "N"});
  return command;
}

}  // namespace meridian::command
