// meridian dimension: shows which output-size choice a size in pixels is.
#include <iostream>
#include <nlohmann/json.hpp>

#include "meridian/base/numbers.h"
#include "meridian/base/printable.h"
#include "meridian/cli/dimensions_text.h"
#include "meridian/media/video_dimension.h"
#include "tools/meridian/command.h"
#include "tools/meridian/output.h"

namespace meridian::command {
namespace {

double readPixels(std::string_view text, std::string_view name) {
  const auto pixels = doubleFromText(text);
  if (!pixels) throw CommandError(inQuotes(text) + " is not a " + std::string(name) + "; expected a number of pixels");
  return *pixels;
}

/// Reads two numbers, or one text in the form of the transcoder's command line ("1920x1080").
Size readSize(const Arguments& arguments) {
  const std::string width = *arguments.value("width");
  const auto height = arguments.value("height");
  if (height) return {readPixels(width, "width"), readPixels(*height, "height")};
  const auto size = sizeFromDimensionsText(width);
  if (!size) throw CommandError(inQuotes(width) + " is not a size; expected 1920 1080 or 1920x1080");
  return *size;
}

Json asJson(const Size& size) { return {{"width", size.width}, {"height", size.height}}; }

Status showDimension(const Arguments& arguments) {
  const Size size = readSize(arguments);
  const auto choice = VideoDimension::fromStored(VideoSizingKind::pixels, size);
  if (!choice) {
    throw CommandError(shortestDecimalText(size.width) + " x " + shortestDecimalText(size.height) +
                       " is not a size: width and height must be above 0 and finite");
  }
  if (arguments.has("json")) {
    printJson({{"case", rawValue(choice->kind())},
               {"description", choice->description()},
               {"pickerDescription", choice->pickerDescription()},
               {"tag", choice->tag()},
               {"size", asJson(choice->size())},
               {"previewSize", asJson(choice->previewSize())}});
    return done;
  }
  std::cout << styled(Style::heading, choice->description()) << '\n';
  printTable({{{"case", Style::name}, {std::string(rawValue(choice->kind()))}},
              {{"in a list", Style::name}, {choice->pickerDescription()}},
              {{"tag", Style::name}, {choice->tag()}}});
  return done;
}

}  // namespace

Subcommand dimensionCommand() {
  return {
      .name = "dimension",
      .description = "Show which output-size choice a size in pixels is",
      .example = "meridian dimension 1920 1080",
      .options =
          {{Option::Kind::positional, "width", "The width in pixels, or both as WIDTHxHEIGHT", "WIDTH"},
           {Option::Kind::positional, "height", "The height in pixels; omit it after WIDTHxHEIGHT", "HEIGHT", {}, true},
           {Option::Kind::flag, "json", "Print JSON: case, description, pickerDescription, tag, size, previewSize"}},
      .action = showDimension,
  };
}

}  // namespace meridian::command
