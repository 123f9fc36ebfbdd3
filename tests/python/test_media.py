"""Rates, timecode, sizes and containers."""

from decimal import Decimal
from fractions import Fraction

import numpy
import pytest

import meridian
from meridian import TimecodeComponents, VideoFrameRate


@pytest.mark.parametrize("given, rate", [
    (23.976, VideoFrameRate.ntsc24p), (Fraction(24000, 1001), VideoFrameRate.ntsc24p), (25, VideoFrameRate.pal25p),
    (Fraction(60000, 1001), VideoFrameRate.ntsc60p), (12.5, VideoFrameRate.custom(Fraction(25, 2))),
    (23.98, VideoFrameRate.custom(Fraction(1199, 50))), (Decimal("23.976"), VideoFrameRate.ntsc24p),
    (Decimal("12.3456789"), VideoFrameRate.custom(Fraction(123456789, 10**7))), (numpy.uint8(25), VideoFrameRate.pal25p),
    (numpy.float32(29.97), VideoFrameRate.ntsc30p), (numpy.float32(12.5), VideoFrameRate.custom(Fraction(25, 2))),
    (numpy.float64(23.976), VideoFrameRate.ntsc24p)])
def test_numbers_match_the_standard_rates(given, rate):
    assert VideoFrameRate(given) == rate and isinstance(rate.raw_value, Fraction)
    assert float(rate) == float(rate.raw_value)


@pytest.mark.parametrize("given, error", [
    (float("nan"), ValueError), (float("inf"), ValueError), (2**63, ValueError), (Fraction(1, 2**64), ValueError),
    (Decimal("NaN"), ValueError), (Decimal("-Infinity"), ValueError), (Decimal(24000) / 1001, ValueError),
    (10**5000, ValueError), (2**62, ValueError), ("25", TypeError), (None, TypeError), (True, TypeError),
    (25j, TypeError), (numpy.True_, TypeError), (numpy.complex64(25), TypeError)], ids=lambda value: type(value).__name__)
def test_what_is_not_a_rate_is_an_error_of_its_kind(given, error):
    for function in (VideoFrameRate, lambda rate: meridian.timecode_of_frame(0, rate)):
        with pytest.raises(error) as raised:
            function(given)
        assert type(raised.value) in (error, meridian.TimecodeError)
    if error is ValueError:
        assert raised.value.code is meridian.TimecodeErrorCode.rate_without_timecode
    with pytest.raises(ValueError):
        meridian.FrameRate.custom(10**400)


def test_standard_rates_know_their_names():
    rates = meridian.standard_video_frame_rates()
    assert len(rates) == 14 and all(getattr(VideoFrameRate, rate.kind.name) == rate for rate in rates)
    assert VideoFrameRate.ntsc30p.formatted_string == "29.97 FPS"
    assert meridian.describe_frame_rate(23.976) == "23.976 fps = 24000/1001"
    assert meridian.standard_rate_displayed_alike(VideoFrameRate(23.98)) == VideoFrameRate.ntsc24p


@pytest.mark.parametrize("rate, drop", [(29.97, True), (59.94, True), (25, False), (Fraction(24000, 1001), False)])
def test_frame_numbers_and_timecodes_are_inverse(rate, drop):
    seen = set()
    for number in range(0, 200000, 977):
        timecode = meridian.timecode_of_frame(number, rate, drop)
        assert meridian.frame_number(timecode, rate) == number
        assert TimecodeComponents.from_timecode(timecode.timecode_string) == timecode
        seen.add(timecode)
    assert len(seen) == len(range(0, 200000, 977))


def test_timecode_that_labels_nothing_is_an_error():
    with pytest.raises(meridian.TimecodeError) as raised:
        meridian.frame_number(TimecodeComponents.from_timecode("00:01:00;00"), 29.97)
    assert raised.value.code is meridian.TimecodeErrorCode.dropped_label and raised.value.place == "00:01:00;00"
    assert TimecodeComponents.from_timecode("1:2:3") is None
    assert str(TimecodeComponents.sanitized_timecode("1:2:3")) == "01:02:03:00"
    hours, *_, drop = TimecodeComponents(1, 2, 3, 4)
    assert (hours, drop) == (1, False)
    for bad in ({"hours": 2**63}, {"hours": 1.5}, {"hours": "1"}):
        with pytest.raises(TypeError):
            TimecodeComponents(**bad)


def test_choices_of_conversion_settings():
    assert meridian.FrameRate.from_raw_value(25) == meridian.FrameRate.fps25
    assert meridian.FrameRate.fps23_98.raw_value == 23.967
    assert meridian.VideoDimension.seven_twenty_p.description == "HD (1280 x 720)"
    dnx = meridian.VideoDimension.all_allowed_options(meridian.ConversionCodecType.dnxhd)
    assert [dimension.kind.name for dimension in dnx] == ["match", "seven_twenty_p", "ten_eighty_p"]
    assert meridian.RgbColor.from_text("#ff8000").text == "255,128,0" and meridian.RgbColor.from_text("orange") is None
    with pytest.raises(TypeError):
        meridian.RgbColor(256, 0, 0)


def test_containers_and_extensions():
    containers = meridian.MediaFormatConstants
    assert containers.enumerate_containers_for_file_extension("MOV") == [meridian.SLVMediaFileContainerQuickTimeMovie]
    assert "mov" in containers.enumerate_valid_file_extensions_for_media_container("QuickTime")
    assert len(containers.alphabetical_enumeration_of_corporations()) == 15
    assert meridian.FileExtension.mov in meridian.file_extension_groups()["video_file_extensions"]
    assert meridian.file_extension_ignoring_case("MOV") is meridian.FileExtension.mov
    assert meridian.file_extension_ignoring_case(".mov") is None
