// meridian lut apply: a picture file led through a look-up table.
#include <string>
#include <utility>
#include <variant>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/lut/picture_lut.h"
#include "tools/meridian/command.h"
#include "tools/meridian/lut_arguments.h"
#include "tools/meridian/picture_file.h"
#include "tools/meridian/picture_module.h"
#include "tools/meridian/progress_bar.h"
#include "tools/meridian/replacement_file.h"

namespace meridian::command {
namespace {

unsigned readThreads(const Arguments& arguments) {
  constexpr std::int64_t most = 1024;
  const std::string text = arguments.value("threads").value_or("0");
  const auto threads = integerFromText(text);
  if (!threads || *threads < 0 || *threads > most) {
    throw UsageError("\"" + printable(text) + "\" is no number of threads; write an integer from 0 to " +
                     std::to_string(most));
  }
  return static_cast<unsigned>(*threads);
}

PictureLut preparedLut(const ParsedLutFile& file, const PictureFile& picture, const PictureLutOptions& options) {
  const auto depth = picture.bitDepth();
  if (!depth) return PictureLut::forFloats(file, options);
  // Depths of samples of 8 and 16 bits always have one.
  return *PictureLut::forCodeValues(file, *depth, *depth, options);
}

Status applyToPicture(const Arguments& arguments) {
  const unsigned threads = readThreads(arguments);
  const std::string from = *arguments.value("in");
  const std::string to = *arguments.value("out");
  const PictureFileModule& pictures = pictureFileModule();
  pictures.checkExtension(to);
  const auto file = readLut(arguments);
  const auto picture = pictures.open(from, threads);
  ReplacementFile replacement(to);
  picture->beginWriting(replacement.path(), to);

  ProgressBar bar;
  const auto step = [&bar](std::string_view name) { return [&bar, name](double portion) { bar.show(name, portion); }; };
  picture->read(step("reading"));
  const PictureLut lut = preparedLut(*file, *picture, chosenLookUp(arguments));
  const auto lookUp = [&lut, threads](const auto& view) {
    if (const auto fault = lut.apply(view, view, threads)) throw Refusal(std::string(description(*fault)));
  };
  picture->changeColors([&lookUp](const PictureFile::Colors& colors) { std::visit(lookUp, colors); }, step("applying"));
  picture->write(step("writing"));
  replacement.take();
  return done;
}

}  // namespace

Subcommand lutApplyCommand() {
  using enum Option::Kind;
  Subcommand command{
      .group = "lut",
      .name = "apply",
      .description = "Lead a picture through a look-up table",
      .details =
          "The picture is worked on in its own kind of samples: code values of 8 and 16 bits, of fewer bits such as a "
          "DPX\n"
          "file's 10 and 12, half and float. Other kinds, files of several pictures and deep pictures are refused.\n"
          "Metadata, alpha and further channels stay as they are. OUT's extension says its format, which has to\n"
          "hold such samples and channels. OUT is made beside its place and put there when it is complete and reads\n"
          "back; it may be IN. It belongs to whoever runs the command, with the permissions that it had.",
      .example =
          "meridian lut apply look.cube in.dpx out.dpx\n"
          "meridian lut apply look.cube shot.exr shot.exr --axis-order red-fastest --domain declared",
      .options =
          {lutFileOption(),
           {.kind = positional, .name = "in", .help = "The picture", .valueName = "IN", .path = true},
           {.kind = positional, .name = "out", .help = "The picture to write", .valueName = "OUT", .path = true}},
      .action = applyToPicture,
  };
  for (Option& option : lookUpOptions()) command.options.push_back(std::move(option));
  command.options.push_back({value, "threads", "How many threads work; 0, the default, for all cores", "N"});
  return command;
}

}  // namespace meridian::command
