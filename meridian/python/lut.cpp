#include <memory>

#include "meridian/lut/image_lut.h"
#include "meridian/lut/lut_description.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/lut/parsed_lut_factory.h"
#include "meridian/lut/published_lut.h"
#include "meridian/python/errors.h"
#include "meridian/python/image_buffer.h"
#include "meridian/python/module.h"
#include "meridian/python/record.h"
#include "meridian/python/strided_images.h"

namespace meridian::inline v0_2::python {
namespace {

using py::literals::operator""_a;
using ColorTuple = std::tuple<double, double, double>;
using Image = Typed<"Buffer">;

/// A LUT file, shared with the memory views of its rows.
struct Lut {
  std::shared_ptr<const ParsedLutFile> file;
};

/// How a LUT is applied, as the keywords of `apply` say.
struct Application {
  std::optional<int> bitDepth;
  std::optional<int> outputBitDepth;
  CodeValueRange range = CodeValueRange::full;
  std::optional<CodeValueRange> outputRange;
  ImageLutOptions options;
  unsigned threads = 1;
};

Lut opened(const Path& path) {
  auto file = withoutLock([&path] { return ParsedLutFactory::parsing(path.url()); });
  return {std::shared_ptr<const ParsedLutFile>(valueOrRaise(std::move(file)))};
}

PublishedLut openedAsPublished(const Path& path) {
  return valueOrRaise(withoutLock([&path] { return readPublishedLut(path.url()); }));
}

py::list listOf(const std::vector<LutWarning>& warnings) {
  py::list list;
  for (const LutWarning& warning : warnings) list.append(errorOf(warning));
  return list;
}

/// Returns the samples' own bits, for a depth that is not given.
int bitsOf(SampleType type) {
  return visitSamples(type, []<typename Sample>(std::type_identity<Sample>) { return ImageView<Sample>::sampleBits; });
}

/// Makes an array like the image: of numpy if the program uses it, else a memoryview.
py::object newImageLike(const ImageBuffer& image) {
  const auto shape = py::make_tuple(image.height(), image.width(), image.channels());
  constexpr auto names =
      std::to_array<std::pair<const char*, const char*>>({{"uint8", "B"}, {"uint16", "H"}, {"float32", "f"}});
  const auto& [type, format] = names.at(static_cast<std::size_t>(image.sample()));
  const py::dict modules = py::module_::import("sys").attr("modules");
  if (modules.contains("numpy") && !modules["numpy"].is_none()) return modules["numpy"].attr("empty")(shape, type);
  const auto bytes = py::module_::import("builtins").attr("bytearray");
  const std::size_t size =
      image.height() * image.width() * image.channels() * static_cast<std::size_t>(bitsOf(image.sample()) / 8);
  const auto memory = py::module_::import("builtins").attr("memoryview")(bytes(size));
  return memory.attr("cast")(format, shape);
}

template <typename Sample, LutForImages File>
Expected<void, ImageErrorCode> appliedTo(const File& file, const ImageBuffer& source, const ImageBuffer& destination,
                                         const Application& application) {
  const int depth = application.bitDepth.value_or(ImageView<Sample>::sampleBits);
  const CodeValueFormat from{depth, application.range};
  const CodeValueFormat to{application.outputBitDepth.value_or(depth),
                           application.outputRange.value_or(application.range)};
  const auto read = source.view<const Sample>(from);
  const auto written = destination.view<Sample>(to);
  if constexpr (ImageView<Sample>::hasCodeValues) {
    const auto lut = ImageLut::forCodeValues(file, from, to, application.options);
    if (!lut) return Unexpected(lut.error());
    return applyStrided<Sample>(*lut, read, written, application.threads);
  } else {
    return applyStrided<Sample>(ImageLut::forFloats(file, application.options), read, written, application.threads);
  }
}

template <LutForImages File>
void applyTo(const File& file, const ImageBuffer& source, const ImageBuffer& destination,
             const Application& application) {
  const py::gil_scoped_release release;
  const auto applied = visitSamples(source.sample(), [&]<typename Sample>(std::type_identity<Sample>) {
    return appliedTo<Sample>(file, source, destination, application);
  });
  if (applied) return;
  const py::gil_scoped_acquire acquire;
  raise(errorOf(applied.error()));
}

template <LutForImages File>
py::object apply(const File& file, const py::object& image, const py::object& out, const Application& application) {
  const ImageBuffer source(image, ImageBuffer::Access::read, "image");
  py::object result = out.is_none() ? newImageLike(source) : out;
  const ImageBuffer destination(result, ImageBuffer::Access::write, "out");
  if (source.sample() == SampleType::float32 && (application.bitDepth || application.outputBitDepth)) {
    throw py::value_error(std::string(application.bitDepth ? "bit_depth" : "output_bit_depth") +
                          ": floating-point samples have none; leave it out, or convert the image to code values");
  }
  if (source.sample() != destination.sample()) throw py::type_error("image and out have different types of samples");
  if (!source.isSameAs(destination) && source.mayOverlap(destination)) {
    throw py::value_error("image and out overlap without being the same; copy one of them");
  }
  applyTo(file, source, destination, application);
  return result;
}

using CodeTuple = std::tuple<std::uint64_t, std::uint64_t, std::uint64_t>;

CodeTuple convertedAsPublished(const PublishedLut& lut, std::uint64_t red, std::uint64_t green, std::uint64_t blue,
                               std::int64_t inputBitDepth, std::optional<std::int64_t> outputBitDepth) {
  const std::int64_t output = outputBitDepth.value_or(inputBitDepth);
  for (const std::int64_t depth : {inputBitDepth, output}) {
    if (depth < 1 || depth > 63) throw py::value_error("the bit depth of code values is not 1 to 63");
  }
  const auto codes = appliedToCodeValues(lut, {red, green, blue}, inputBitDepth, output);
  return {codes[0], codes[1], codes[2]};
}

std::optional<CodeTuple> converted(const Lut& lut, std::uint64_t red, std::uint64_t green, std::uint64_t blue,
                                   std::int64_t inputBitDepth, std::optional<std::int64_t> outputBitDepth) {
  const auto sample = lut.file->inputConverter().convertIfPossible(red, green, blue, inputBitDepth, outputBitDepth);
  if (!sample) return std::nullopt;
  return CodeTuple(sample->red, sample->green, sample->blue);
}

py::buffer_info rowsOf(const Lut& lut) {
  const auto rows = lut.file->orderedValues().colors();
  static_assert(sizeof(LutColor) == 3 * sizeof(double));
  return py::buffer_info(const_cast<double*>(&rows.data()->red), sizeof(double),  // NOLINT: read-only
                         py::format_descriptor<double>::format(), 2,
                         {static_cast<py::ssize_t>(rows.size()), py::ssize_t{3}},
                         {static_cast<py::ssize_t>(sizeof(LutColor)), static_cast<py::ssize_t>(sizeof(double))},
                         /*readonly=*/true);
}

ColorTuple tupleOf(const LutColor& color) { return {color.red, color.green, color.blue}; }

void addDescription(py::module_& module) {
  using Description = LutDescription;
  Record<Description>(module, "LutDescription", "What a LUT file holds.")
      .field("dimensions", &Description::dimensions, "Whether it is a 1D LUT or a cube.")
      .field("valueType", &Description::valueType, "Whether its numbers are code values or floating point.")
      .field("size", &Description::size, "The points per axis of a cube, or the rows of a 1D LUT.")
      .field("rows", &Description::rows, "The rows of the file.")
      .field("inputBitDepth", &Description::inputBitDepth, "The depth in bits of the code values looked up; or None.")
      .field("valueBitDepth", &Description::valueBitDepth, "The depth in bits of the code values returned; or None.")
      .field("lowValue", &Description::lowValue, "The smallest of its values.")
      .field("highValue", &Description::highValue, "The largest of its values.")
      .fact(
          "domainMinimum", [](const Description& lut) { return tupleOf(lut.declaredDomain.minimum); },
          "The smallest input that the file declares for each channel, 0 if it declares none.", /*isField=*/true)
      .fact(
          "domainMaximum", [](const Description& lut) { return tupleOf(lut.declaredDomain.maximum); },
          "The largest input that the file declares for each channel, 1 if it declares none.", /*isField=*/true)
      .fact(
          "declaresDomain", [](const Description& lut) { return lut.declaredDomain.isDeclared; },
          "Whether the file declares a range of input values.", /*isField=*/true)
      .done();
  module.def("can_convert_all", &canConvertAll, "lut"_a, "output_bit_depth"_a,
             "Returns whether convert_if_possible() is certain to have a result for every sample.");
}

void addPublishedLut(py::module_& module) {
  py::class_<PublishedLut> type(
      module, "PublishedLut",
      "A LUT as its file's format publishes it, so that images look as in other programs. It may be used from several "
      "threads at once.\n\nThe axis order and the domain are the file's.");
  type.def(
      py::init(&openedAsPublished), "path"_a,
      "Reads a .cube or .3dl file. Raises LutError; the codes other_published_format (.csp, .spi3d, CLF and so on) and "
      "no_published_format mean that the file may be a LUT for another reader: for the latter ParsedLutFile, for "
      "the former a library such as OpenColorIO.");
  type.def_property_readonly("path", [](const PublishedLut& lut) { return shown(lut.path); }, "Its path.");
  type.def_property_readonly("format", [](const PublishedLut& lut) { return lut.format; }, "Its published format.");
  type.def_property_readonly(
      "warnings", [](const PublishedLut& lut) { return Typed<"list[LutWarning]">(listOf(lut.warnings)); },
      "What may surprise about the file.");
  type.def_property_readonly(
      "description", [](const PublishedLut& lut) { return describe(lut); },
      "The kind, size and range of its last 1D LUT or cube, and the domain of its first; it has no rows.");
  type.def(
      "convert", &convertedAsPublished, "red"_a, "green"_a, "blue"_a, "input_bit_depth"_a,
      "output_bit_depth"_a = py::none(),
      "Returns the nearest code values of the LUT's result for those of a pixel. Depths are 1 to 63 bits; without an "
      "output depth the result has the input's.");
  type.def(
      "apply",
      [](const PublishedLut& lut, const Image& image, const Typed<"Buffer | None">& out, std::optional<int> bitDepth,
         std::optional<int> outputBitDepth, CodeValueRange range, std::optional<CodeValueRange> outputRange,
         LutInterpolation interpolation, unsigned threads) {
        return Typed<"Any">(
            apply(lut, image, out,
                  {bitDepth, outputBitDepth, range, outputRange, {.interpolation = interpolation}, threads}));
      },
      "image"_a, "out"_a = py::none(), py::kw_only(), "bit_depth"_a = py::none(), "output_bit_depth"_a = py::none(),
      "range"_a = CodeValueRange::full, "output_range"_a = py::none(), "interpolation"_a = LutInterpolation::trilinear,
      "threads"_a = 1,
      "Applies the LUT to every pixel of an image and returns the result, as ParsedLutFile.apply() does. Code values "
      "are rounded to the nearest.");
}

}  // namespace

void addLut(py::module_& module) {
  addDescription(module);
  addPublishedLut(module);
  py::class_<Lut> type(module, "ParsedLutFile", py::buffer_protocol(),
                       "A LUT read from a file. It may be used from several threads at once.\n\nnumpy.asarray(lut) is "
                       "an array of its rows, float64 of shape (rows, 3), without a copy.");
  type.def(
      py::init(&opened), "path"_a,
      "Reads a LUT from a text file as the suite does; PublishedLut reads it as its format says. Raises LutError with "
      "the reason, which is also a FileNotFoundError for a missing file.");
  type.def_buffer(&rowsOf);
  type.def_property_readonly("path", [](const Lut& lut) { return shown(lut.file->file().path()); }, "Its path.");
  type.def_property_readonly(
      "description", [](const Lut& lut) { return describe(*lut.file); }, "Its kind, size and range.");
  type.def_property_readonly(
      "warnings", [](const Lut& lut) { return Typed<"list[LutWarning]">(listOf(warningsOf(*lut.file))); },
      "What may surprise about the LUT, read as the suite does.");
  type.def_property_readonly(
      "dimensions", [](const Lut& lut) { return lut.file->dimensions(); }, "Whether it is a 1D LUT or a cube.");
  type.def_property_readonly(
      "ordered_values",
      [](const py::object& self) {
        auto view = py::reinterpret_steal<py::object>(PyMemoryView_FromObject(self.ptr()));
        if (!view) throw py::error_already_set();
        return Typed<"memoryview">(std::move(view));
      },
      "A view of the rows in file order: float64, of shape (rows, 3). It keeps the LUT alive.");
  type.def(
      "convert_if_possible", &converted, "red"_a, "green"_a, "blue"_a, "input_bit_depth"_a,
      "output_bit_depth"_a = py::none(),
      "Returns the LUT's result for the code values of a pixel; None where it has none. Depths are in bits; without "
      "an output depth the result has the input's.");
  type.def(
      "apply",
      [](const Lut& lut, const Image& image, const Typed<"Buffer | None">& out, std::optional<int> bitDepth,
         std::optional<int> outputBitDepth, CodeValueRange range, std::optional<CodeValueRange> outputRange,
         LutInterpolation interpolation, LutAxisOrder axisOrder, LutInputDomain domain, LutRounding rounding,
         unsigned threads) {
        return Typed<"Any">(apply(
            *lut.file, image, out,
            {bitDepth, outputBitDepth, range, outputRange, {interpolation, axisOrder, domain, rounding}, threads}));
      },
      "image"_a, "out"_a = py::none(), py::kw_only(), "bit_depth"_a = py::none(), "output_bit_depth"_a = py::none(),
      "range"_a = CodeValueRange::full, "output_range"_a = py::none(), "interpolation"_a = LutInterpolation::trilinear,
      "axis_order"_a = LutAxisOrder::blueFastest, "domain"_a = LutInputDomain::dataRange,
      "rounding"_a = LutRounding::truncate, "threads"_a = 1,
      "Applies the LUT to every pixel of an image and returns the result.\n\n"
      "image is any object with a buffer of shape (height, width, 3 or 4) of uint8, uint16 or float32, with any "
      "strides: "
      "numpy arrays, also mirrored, sliced or transposed ones. It is not copied, and other threads of Python run "
      "meanwhile. out is where the results go, of the same type of samples; it may be image itself, and must not "
      "overlap "
      "it otherwise. Without out a new array is made: of numpy if the program has imported it, else a memoryview. "
      "Alpha "
      "is kept, and opaque where only out has it.\n\n"
      "bit_depth is that of the code values in bits, by default all bits of a sample; output_bit_depth and "
      "output_range "
      "are those of image by default. Floating-point samples are on the scale from 0 to 1. threads work on bands of "
      "rows; 0 means as many as the machine runs at once. Images whose strides do not suit each other are applied row "
      "by row or, where one is mirrored against the other, pixel by pixel, by one thread.\n\n"
      "Raises TypeError for another type of samples; ValueError for another shape or byte order, for an out that may "
      "not "
      "be written to, and where the two overlap; ImageError, which is a ValueError, for unequal sizes and a bit depth "
      "or range that does not fit.");
}

}  // namespace meridian::inline v0_2::python
