"""LUT files, and images in numpy arrays and other buffers, with numpy as the reference."""

import array
import ctypes
import gc
import sys
import weakref

import numpy
import pytest

import meridian
import other_threads

SIZE = 9
TYPES = [numpy.uint8, numpy.uint16, numpy.float32]


@pytest.fixture(scope="module")
def colors():
    """A cube from 0 to 1 as numpy has it: colors[red, green, blue]."""
    grid = numpy.stack(numpy.meshgrid(*[numpy.linspace(0, 1, SIZE)] * 3, indexing="ij"), axis=-1)
    look = grid ** [0.8, 1.1, 1.3] * (0.7 + 0.3 * grid[..., ::-1])
    return numpy.round(look, 6)


@pytest.fixture(scope="module")
def lut(colors, tmp_path_factory):
    path = tmp_path_factory.mktemp("luts") / "look.cube"
    rows = "".join("{:.6f} {:.6f} {:.6f}\n".format(*row) for row in colors.reshape(-1, 3))
    path.write_text(f"LUT_3D_SIZE {SIZE}\n{rows}")
    return meridian.ParsedLutFile(path)


def picture(dtype, height=13, width=17, channels=3):
    random = numpy.random.default_rng(7)
    if dtype is numpy.float32:
        return random.random((height, width, channels), dtype)
    return random.integers(0, numpy.iinfo(dtype).max, (height, width, channels), dtype, endpoint=True)


def by_samples(lut, image, bits, out_bits):
    """The library's definition, pixel by pixel."""
    result = numpy.empty(image.shape, image.dtype)
    for place in numpy.ndindex(image.shape[:2]):
        result[place][:3] = lut.convert_if_possible(*map(int, image[place][:3]), bits, out_bits)
    if image.shape[2] == 4:
        result[..., 3] = image[..., 3] >> (bits - out_bits) if out_bits < bits else image[..., 3]
    return result


def by_numpy(colors, image):
    """Trilinear interpolation in double precision."""
    place = numpy.clip(image[..., :3].astype(float), 0, 1) / colors.max() * (SIZE - 1)
    place = numpy.minimum(place, SIZE - 1)
    low = numpy.minimum(place.astype(int), SIZE - 2)
    part = place - low
    result = 0
    for corner in numpy.ndindex(2, 2, 2):
        weight = numpy.prod(numpy.where(corner, part, 1 - part), axis=-1, keepdims=True)
        result = result + weight * colors[tuple(numpy.moveaxis(low + corner, -1, 0))]
    return result


def test_facts_and_rows(lut, colors):
    facts = lut.description
    assert facts.dimensions is lut.dimensions is meridian.LutDimensions.cube
    assert (facts.size, facts.rows) == (SIZE, SIZE**3)
    assert facts.value_type is meridian.LutValueType.floating_point and facts.input_bit_depth is None
    assert facts.domain_maximum == (1, 1, 1) and not facts.declares_domain and facts.high_value == colors.max()
    assert numpy.array_equal(numpy.asarray(lut), colors.reshape(-1, 3)) and lut.ordered_values.readonly
    assert meridian.can_convert_all(facts, 10) and lut.convert_if_possible(0, 0, 0, 10) == (0, 0, 0)


def test_rows_keep_the_file_alive(tmp_path):
    path = tmp_path / "ramp.cube"
    path.write_text("LUT_1D_SIZE 256\n" + "".join(f"{i / 255} {i / 255} {i / 255}\n" for i in range(256)))
    rows = numpy.asarray(meridian.ParsedLutFile(path))
    gc.collect()
    assert rows[-1].tolist() == [1, 1, 1] and not rows.flags.writeable


@pytest.mark.parametrize("bits, out_bits", [(10, 10), (16, 16), (16, 12), (12, 16)])
@pytest.mark.parametrize("channels", [3, 4])
def test_code_values_are_those_of_the_definition(lut, bits, out_bits, channels):
    image = picture(numpy.uint16, 5, 7, channels) >> (16 - bits)
    result = lut.apply(image, bit_depth=bits, output_bit_depth=out_bits)
    expected = by_samples(lut, image, bits, out_bits)
    assert result.dtype == numpy.uint16 and numpy.array_equal(result[..., :3], expected[..., :3])


def test_bytes_are_those_of_the_definition(lut):
    image = picture(numpy.uint8)
    assert numpy.array_equal(lut.apply(image), by_samples(lut, image, 8, 8))


def test_floats_are_those_of_numpy(lut, colors):
    image = picture(numpy.float32) * 1.5 - 0.25
    result = lut.apply(image)
    assert result.dtype == numpy.float32 and numpy.allclose(result, by_numpy(colors, image), atol=2e-6)


# Views of a picture as programs make them. Each is applied into each.
VIEWS = {
    "packed": lambda p: p,
    "bottom up": lambda p: p[::-1],
    "mirrored": lambda p: p[:, ::-1],
    "turned": lambda p: p[::-1, ::-1],
    "BGR": lambda p: p[..., ::-1],
    "every second": lambda p: numpy.repeat(numpy.repeat(p, 2, 0), 2, 1)[::2, ::2],
    "within": lambda p: numpy.pad(p, ((2, 3), (4, 5), (0, 0)))[2:-3, 4:-5],
    "planar": lambda p: numpy.ascontiguousarray(p.transpose(2, 0, 1)).transpose(1, 2, 0),
    "columns": lambda p: numpy.ascontiguousarray(p.transpose(1, 0, 2)).transpose(1, 0, 2),
    "columns mirrored": lambda p: numpy.ascontiguousarray(p.transpose(1, 0, 2))[::-1, ::-1].transpose(1, 0, 2),
    "Fortran": lambda p: numpy.asfortranarray(p),
    "lines of planes": lambda p: numpy.ascontiguousarray(p.transpose(0, 2, 1)).transpose(0, 2, 1),
    "RGB of RGBA": lambda p: numpy.concatenate([p, p[..., :1]], axis=2)[..., :3],
}


@pytest.mark.parametrize("dtype", TYPES)
@pytest.mark.parametrize("source", VIEWS)
@pytest.mark.parametrize("target", VIEWS)
def test_all_strides_give_what_a_packed_copy_gives(lut, dtype, source, target):
    image = VIEWS[source](picture(dtype))
    before = image.copy()
    expected = lut.apply(numpy.ascontiguousarray(image), rounding=meridian.LutRounding.nearest)
    out = VIEWS[target](numpy.zeros_like(expected, order="C"))
    base = out
    while base.base is not None:
        base = base.base
    outside = base.size - out.size
    assert lut.apply(image, out, rounding=meridian.LutRounding.nearest) is out
    assert numpy.array_equal(out, expected) and numpy.array_equal(image, before)
    if outside:
        assert numpy.count_nonzero(base) <= out.size
    in_place = VIEWS[source](picture(dtype))
    if numpy.shares_memory(in_place, in_place):
        assert lut.apply(in_place, in_place, rounding=meridian.LutRounding.nearest) is in_place
        assert numpy.array_equal(in_place, expected)


def test_shapes_without_strides_of_their_own(lut):
    one = picture(numpy.uint16, 1, 1)
    assert numpy.array_equal(lut.apply(one), by_samples(lut, one, 16, 16))
    constant = numpy.broadcast_to(picture(numpy.uint16, 1, 1), (4, 5, 3))
    assert numpy.array_equal(lut.apply(constant), numpy.broadcast_to(lut.apply(constant[:1, :1].copy()), (4, 5, 3)))
    for shape in [(0, 5, 3), (5, 0, 3), (0, 0, 4)]:
        assert lut.apply(numpy.empty(shape, numpy.uint8)).shape == shape


def test_buffers_without_numpy(lut):
    samples = array.array("H", [0, 30000, 65535, 1, 2, 3])
    image = memoryview(samples).cast("B").cast("H", (1, 2, 3))
    out = memoryview(bytearray(12)).cast("H", (1, 2, 3))
    assert lut.apply(image, out=out) is out
    assert [out[0, 0, c] for c in range(3)] == list(lut.convert_if_possible(0, 30000, 65535, 16))
    numpy_modules = {name: sys.modules.pop(name) for name in ["numpy"]}
    try:
        made = lut.apply(image)
    finally:
        sys.modules.update(numpy_modules)
    assert isinstance(made, memoryview) and made.tolist() == out.tolist()


def test_alpha_is_kept_and_opaque_where_there_was_none(lut):
    rgb, rgba = picture(numpy.uint8), picture(numpy.uint8, channels=4)
    assert numpy.array_equal(lut.apply(rgba)[..., 3], rgba[..., 3])
    out = numpy.zeros_like(rgba)
    lut.apply(rgb, out)
    assert (out[..., 3] == 255).all() and numpy.array_equal(out[..., :3], lut.apply(rgb))
    assert numpy.array_equal(lut.apply(rgba, rgb.copy()), lut.apply(rgba)[..., :3])


def test_options_reach_the_library(lut):
    image = picture(numpy.uint16) >> 6
    plain = lut.apply(image, bit_depth=10)
    limited = meridian.CodeValueRange.limited
    for options in ({"interpolation": meridian.LutInterpolation.tetrahedral},
                    {"rounding": meridian.LutRounding.nearest},
                    {"axis_order": meridian.LutAxisOrder.red_fastest}, {"range": limited}, {"output_range": limited}):
        assert not numpy.array_equal(lut.apply(image, bit_depth=10, **options), plain), options
    assert numpy.array_equal(lut.apply(image, bit_depth=10, threads=0), plain)
    assert lut.apply(image, bit_depth=10, range=limited).min() >= 4


def zeros(shape=(2, 2, 3), type="B"):
    return numpy.zeros(shape, type)


@pytest.mark.parametrize("image, out, options, error, text", [
    (zeros(type="d"), None, {}, TypeError,
     'image: expected samples of uint8, uint16 or float32, found the format "d"'),
    (zeros(type="h"), None, {}, TypeError, 'found the format "h"'),
    (zeros(type=">u2"), None, {}, ValueError, "image: its samples have the other byte order"),
    (zeros((2, 2)), None, {}, ValueError, r"expected the shape \(height, width, 3 or 4\), found \(2, 2\)"),
    (zeros((3, 2, 2)), None, {}, ValueError, r"found \(3, 2, 2\); transpose planar images"),
    (zeros(), zeros(type="H"), {}, TypeError, "different types"),
    (zeros(), zeros((2, 3, 3)), {}, meridian.ImageError, "width or height"),
    (zeros(), bytes(12), {}, ValueError, "out: expected the shape"),
    (zeros(), numpy.broadcast_to(numpy.uint8(0), (2, 2, 3)), {}, ValueError, "out: is read-only"),
    (zeros(),
     numpy.lib.stride_tricks.as_strided(zeros(9), (2, 2, 3), (3, 1, 1)), {}, ValueError, "overlap each other"),
    ([[[0, 0, 0]]], None, {}, TypeError, "image: expected an array of uint8, uint16 or float32, found list"),
    (zeros(), None, {"bit_depth": 10}, meridian.ImageError, "bit depth"),
    (zeros(type="H"), None, {"bit_depth": 0}, meridian.ImageError, "bit depth"),
    (zeros(type="f"), None, {"range": meridian.CodeValueRange.limited}, meridian.ImageError, "range"),
    (zeros(type="f"), None, {"bit_depth": 10}, ValueError, "bit_depth: floating-point samples have none"),
    (zeros(type="f"), None, {"output_bit_depth": 32}, ValueError, "output_bit_depth: floating-point samples have none"),
    (zeros(), None, {"threads": -1}, TypeError, r"^expected apply\(.*\), found apply\(.*, threads=int\)$"),
    (zeros(), None, {"range": "full"}, TypeError, "range=str"),
])
def test_images_that_do_not_fit_are_errors(lut, image, out, options, error, text):
    with pytest.raises(error, match=text):
        lut.apply(image, out, **options)


def test_images_that_overlap_without_being_the_same_are_refused(lut):
    whole = picture(numpy.uint8, 8, 10)
    for image, out in [(whole[:-1], whole[1:]), (whole, whole[::-1]), (whole[:, :6], whole[:, 4:]),
                       (whole, whole[..., ::-1])]:
        with pytest.raises(ValueError, match="overlap"):
            lut.apply(image, out)
    expected = lut.apply(whole[:, :5].copy())
    lut.apply(whole[:, :5], whole[:, 5:])
    assert numpy.array_equal(whole[:, 5:], expected)
    expected = lut.apply(whole[:4].copy())
    lut.apply(whole[:4], whole[4:])
    assert numpy.array_equal(whole[4:], expected)


# Parts of one buffer: planes, packed pixels, fields, every second column, halves of a line, single pixels.
PARTS = {
    "planes left and right": lambda b: (b.reshape(3, 8, 12).transpose(1, 2, 0), numpy.s_[:, :6], numpy.s_[:, 6:]),
    "planes top and bottom": lambda b: (b.reshape(3, 8, 12).transpose(1, 2, 0), numpy.s_[:4], numpy.s_[4:]),
    "planes, mirrored": lambda b: (b.reshape(3, 8, 12).transpose(1, 2, 0)[::-1, ::-1], numpy.s_[:, :6], numpy.s_[:, 6:]),
    "planes by columns": lambda b: (b.reshape(3, 12, 8).transpose(2, 1, 0), numpy.s_[:, :6], numpy.s_[:, 6:]),
    "fields": lambda b: (b.reshape(8, 12, 3), numpy.s_[::2], numpy.s_[1::2]),
    "columns": lambda b: (b.reshape(8, 12, 3), numpy.s_[:, ::2], numpy.s_[:, 1::2]),
    "eyes": lambda b: (b.reshape(8, 6, 6), numpy.s_[..., :3], numpy.s_[..., 3:]),
    "one line": lambda b: (b.reshape(8, 12, 3)[2:3], numpy.s_[:, :6], numpy.s_[:, 6:]),
    "one column": lambda b: (b.reshape(8, 12, 3)[:, 2:3], numpy.s_[:4], numpy.s_[4:]),
    "pixels": lambda b: (b.reshape(8, 12, 3), numpy.s_[2:3, 2:3], numpy.s_[2:3, 3:4]),
}


@pytest.mark.parametrize("dtype", TYPES)
@pytest.mark.parametrize("parts", PARTS)
def test_parts_of_one_buffer_that_share_no_sample_are_applied(lut, parts, dtype):
    buffer = picture(dtype, 8, 12).ravel()
    whole, left, right = PARTS[parts](buffer)
    expected = whole.copy()
    expected[right] = lut.apply(whole[left].copy())
    lut.apply(whole[left], whole[right])
    assert numpy.array_equal(whole, expected)


def test_images_of_one_buffer_are_refused_exactly_where_they_share_samples(lut):
    """Windows of planes and of packed pixels at every distance, beside numpy's own exact answer."""
    buffer = picture(numpy.uint16, 9, 11).ravel()
    refused = 0
    for whole in (buffer.reshape(3, 9, 11).transpose(1, 2, 0), buffer.reshape(9, 11, 3)):
        for row, column, step in numpy.ndindex(6, 8, 2):
            image, out = whole[2:5, 3:6], whole[row:row + 3:step + 1, column:column + 3]
            image = image[:out.shape[0]] if step == 0 else whole[2:5:2, 3:6]
            shares = numpy.shares_memory(image, out) and (row, column) != (2, 3)
            try:
                lut.apply(image, out)
            except ValueError:
                refused += 1
                assert shares
            else:
                assert not shares
    assert refused > 40


def test_other_threads_run_while_a_lut_is_applied(lut):
    image = numpy.zeros((2160, 3840, 3), numpy.uint16)
    assert other_threads.run_during(lambda: lut.apply(image, image))


def test_applying_copies_nothing_and_lets_go_of_the_buffers(lut):
    image, out = picture(numpy.uint16), picture(numpy.uint16)
    before = sys.getrefcount(image), sys.getrefcount(out)
    for _ in range(100):
        lut.apply(image, out)
        pytest.raises(TypeError, lut.apply, image.astype(float), out)
        pytest.raises(ValueError, lut.apply, image, out[:, :, 0])
    assert (sys.getrefcount(image), sys.getrefcount(out)) == before
    data = bytearray(12)
    lut.apply(memoryview(data).cast("B", (2, 2, 3)), out=memoryview(bytearray(12)).cast("B", (2, 2, 3)))
    data.extend(b"x")  # fails while a buffer is held


def test_a_lut_goes_when_nothing_holds_it(tmp_path):
    path = tmp_path / "ramp.cube"
    path.write_text("LUT_1D_SIZE 256\n" + "".join(f"{i / 255} {i / 255} {i / 255}\n" for i in range(256)))
    lut = meridian.ParsedLutFile(path)
    watched = weakref.ref(lut)
    rows = lut.ordered_values
    del lut
    assert watched() is not None and rows[255, 0] == 1
    rows.release()
    assert watched() is None


@pytest.mark.parametrize("text, code", [
    ("", "no_rows"), ("0 0 0\n" * 200, "unknown_dimensions"),
    ("LUT_1D_SIZE 300\n" + "0 0 0\n" * 300, "unusable_row_count"),
    ("LUT_1D_SIZE 128\n" + "0 0 0\n" * 128, "too_few_rows"), ("<?xml version='1.0'?><a/>", "xml_document")])
def test_files_that_are_no_luts_say_why(tmp_path, text, code):
    path = tmp_path / "bad.cube"
    path.write_text(text)
    with pytest.raises(meridian.LutError) as raised:
        meridian.ParsedLutFile(path)
    assert raised.value.code is meridian.LutErrorCode[code] and raised.value.place == str(path)


def test_published_files_have_their_own_axes_and_round(tmp_path):
    path = tmp_path / "look.cube"
    # Red is fastest and three times as wide, so that no result is half an integer.
    rows = "".join(f"{1 - i % 2} {i // 2 % 2} {i // 4}\n" for i in range(8))
    path.write_text("LUT_3D_SIZE 2\nDOMAIN_MAX 3 1 1\n" + rows + "the end\n")
    lut = meridian.PublishedLut(path)
    assert lut.format is meridian.LutFormat.cube and lut.path == str(path)
    assert [warning.code for warning in lut.warnings] == [meridian.LutWarningCode.ignored_lines]
    assert lut.warnings[0].remedy == "check what they say"
    assert lut.description.size == 2 and lut.description.domain_maximum == (3, 1, 1) and lut.description.rows == 0
    assert lut.convert(255, 7, 9, 8) == (170, 7, 9) and lut.convert(1023, 0, 1023, 10, 8) == (170, 0, 255)
    for dtype in TYPES:
        image = picture(dtype)
        largest = 1 if dtype is numpy.float32 else numpy.iinfo(dtype).max
        red = 1 - image[..., 0].astype(float) / largest / 3
        expected = image.copy()
        expected[..., 0] = red if largest == 1 else numpy.floor(red * largest + 0.5)
        assert numpy.allclose(lut.apply(image), expected, atol=1e-6 if largest == 1 else 0)
    codes = {warning.code for warning in meridian.ParsedLutFile(path).warnings}
    assert meridian.LutWarningCode.other_axis_order in codes and meridian.LutWarningCode.domain_not_applied in codes
    with pytest.raises(ValueError):
        lut.convert(1, 2, 3, 64)
    path.write_text("0 0 0\n" * 256)
    with pytest.raises(meridian.LutError) as raised:
        meridian.PublishedLut(path)
    assert raised.value.code is meridian.LutErrorCode.no_published_format


def test_buffers_that_state_no_strides(lut):
    image = ((ctypes.c_uint16 * 3) * 5 * 4)()
    memoryview(image).cast("B")[:] = bytes(range(120))
    expected = lut.apply(numpy.array(image))
    lut.apply(image, image)
    assert numpy.array_equal(numpy.array(image), expected)


def test_without_numpy_the_result_is_a_memoryview(lut, monkeypatch):
    monkeypatch.setitem(sys.modules, "numpy", None)
    assert isinstance(lut.apply(memoryview(bytes(12)).cast("B", (2, 2, 3))), memoryview)


def test_other_threads_run_while_a_file_is_opened(tmp_path):
    path = tmp_path / "slow.cube"
    path.write_text("LUT_3D_SIZE 60\n" + "0.123456 0.234567 0.345678\n" * 60**3)
    assert other_threads.run_during(lambda: meridian.ParsedLutFile(path))
