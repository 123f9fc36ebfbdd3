"""The argument store, its properties, and explanations."""

import copy
import enum
import json
import os
import pickle
import re
import sys
import unittest.mock
from fractions import Fraction
from pathlib import Path, PurePosixPath

import pytest

import meridian
from meridian import TranscodeCliArguments as Arguments

NAMES = {name: getattr(meridian, name) for name in meridian.__all__}

PROPERTIES = meridian.transcode_properties()


def test_the_readme_of_a_job():
    arguments = Arguments(["-vr", "25", "-preset", "solvane_cloud", "-vcoedc", "h264"], maintain_original_ordering=True)
    assert not arguments.all_flags_are_valid and arguments.unknown_flags == ["-vcoedc"]
    assert arguments.invalid_key_value_lookup == {"-vcoedc": "h264"} and "-vr" in arguments and "-dims" in arguments
    assert arguments.command_line()[:2] == ["-vr", "25"] and arguments.video_format is meridian.SAVAvcH264Codec
    arguments.video_frame_rate = 23.976
    assert arguments.video_frame_rate == 23.976 and arguments.argument_flag_value("-vr") == "23.976"
    arguments.video_frame_rate = meridian.VideoFrameRate.ntsc30p
    assert arguments.argument_flag_value("-vr") == "29.97003"
    arguments.set_argument_flag_value("-vr", None)
    assert arguments.video_frame_rate is None and not arguments.has_argument_flag("-vr")
    assert Arguments().command_line() == [] and Arguments([]).unknown_flags is None
    assert arguments.cli_string() == "".join(arguments.command_line())


@pytest.mark.parametrize("property", PROPERTIES, ids=lambda p: p.name)
def test_every_property_is_set_read_and_removed_by_attribute_and_by_name(property):
    """The example passes as text and as a value, and both ways give the same store."""
    by_text, by_value = Arguments(), Arguments()
    by_text.set_property_text(property.name, property.example)
    value = getattr(by_text, property.name)
    assert value is not None and value == by_text.property_value(property.name)
    setattr(by_value, property.name, value)
    assert by_value == by_text and getattr(by_value, property.name) == value
    assert Arguments(by_text.command_line()).property_value(property.name) == value or property.kind.name == "text"
    shown = property.annotation.removesuffix(" | None").split("[")[0]
    expected = getattr(meridian, shown, None) or getattr(__import__("builtins"), shown)
    assert type(value) is expected
    assert by_text.property_text(property.name) is not None
    by_value.remove_property(property.name)
    setattr(by_text, property.name, None)
    default = Arguments().property_value(property.name)
    assert by_value.property_value(property.name) == default == getattr(by_text, property.name)
    for wrong in (object(), b"\xff" if "path" not in property.kind.name and property.kind.name != "file" else 1.5, 1j):
        with pytest.raises(TypeError, match=f"{property.name}: expected"):
            setattr(by_value, property.name, wrong)
    doc = getattr(Arguments, property.name).__doc__
    assert property.meaning in doc and property.unit in doc and property.when_absent in doc
    assert not re.search("[a-z][A-Z]", property.meaning + property.when_absent)
    assert pickle.loads(pickle.dumps(property)) == property


def test_the_list_says_what_is_known_about_each_property():
    rate = next(p for p in PROPERTIES if p.name == "video_frame_rate")
    assert (rate.unit, rate.flags, rate.when_absent) == ("frames per second", ["-vr"], "as the source")
    assert rate.kind is meridian.PropertyKind.frame_rate and rate.annotation == "float | None" and not rate.is_joint
    assert next(p for p in PROPERTIES if p.name == "audio_format").allowed_texts == ["lpcm", "aac", "apple_lossless"]
    assert len({p.name for p in PROPERTIES}) == len(PROPERTIES) and all(hasattr(Arguments, p.name) for p in PROPERTIES)


@pytest.mark.parametrize("name, value, error", [
    ("video_frame_rate", float("nan"), meridian.PropertyError), ("video_frame_rate", 1e300, meridian.PropertyError),
    ("video_frame_rate", 10**400, meridian.PropertyError), ("video_bit_depth", 2**63, OverflowError),
    ("video_bit_depth", 1.5, TypeError), ("video_bit_depth", True, TypeError), ("gpu_decode", 1, TypeError),
    ("output_file", "-x", meridian.PropertyError), ("output_file", "a\0b", meridian.PropertyError),
    ("video_format", "nonsense", meridian.PropertyError), ("video_crop_anchor", "tl", TypeError),
    ("video_dimensions", (1, 2, 3), TypeError), ("timecode", "01:00:00:00", TypeError),
    ("input_files", "a.mov", TypeError),
    ("ignored_audio_file_tracks", ["1"], TypeError), ("ignored_audio_file_tracks", [-1], meridian.PropertyError),
    ("output_file", "\ud800", UnicodeEncodeError)])
def test_bad_values_are_errors_that_change_nothing(name, value, error):
    arguments = Arguments(["-vr", "25"])
    before = copy.copy(arguments)
    with pytest.raises(error) as raised:
        setattr(arguments, name, value)
    assert arguments == before
    if error is meridian.PropertyError:
        assert raised.value.place == name and isinstance(raised.value, ValueError)


def test_unknown_names_get_a_suggestion_in_python_spelling():
    with pytest.raises(meridian.PropertyError, match="did you mean video_frame_rate"):
        Arguments().set_property_text("video_frame_rat", "25")
    Arguments().set_property_text("videoFrameRate", "25")


class Job(Arguments):
    title: str
    number = 1


class SlottedJob(Job):
    __slots__ = ("colour",)


@pytest.mark.parametrize("kind, name, hint", [
    (Arguments, "vido_format", "; did you mean video_format?"), (Job, "video_frame_rat", "; did you mean video_frame_rate?"),
    (SlottedJob, "coluor", "; did you mean colour?"), (Job, "titel", "; did you mean title?"), (Arguments, "xyz", ""),
    (Job, "xyz", "; to add one, declare it in the class")])
def test_a_misspelt_attribute_is_an_error_in_derived_classes_too(kind, name, hint):
    job = kind()
    with pytest.raises(AttributeError) as raised:
        setattr(job, name, 1)
    assert str(raised.value).endswith(f"object has no attribute '{name}'{hint}")
    for declared in [name for name in ("title", "number", "colour") if kind is SlottedJob]:
        setattr(job, declared, 5)
        assert getattr(job, declared) == 5
    job.video_bit_depth = 10
    assert job.video_bit_depth == 10
    if kind is not Arguments:
        job._private = 1
        job.number = 2
        del job.number
        assert job.number == 1 and job._private == 1


def test_values_of_other_types_that_stand_for_them():
    arguments = Arguments()
    arguments.video_dimensions = (1920, 1080)
    arguments.timecode_burn_font_color = (255, 128, 0)
    arguments.video_frame_rate = Fraction(24000, 1001)
    arguments.video_bit_depth = 10
    arguments.input_files = (Path("/card/a.mov"), b"/card/b.mov")
    arguments.lut_file = PurePosixPath("/Looks/Rec709.cube")
    width, height = arguments.video_dimensions
    assert (width, height) == (1920, 1080) and arguments.input_files == ["/card/a.mov", "/card/b.mov"]
    arguments.input_file_groups = {0: ["/a"], 3: ["/b", "/c"]}
    assert arguments.input_file_groups == {0: ["/a"], 3: ["/b", "/c"]} and arguments.first_input_file == "/a"
    arguments.input_file_groups = None
    assert arguments.input_files is None


def test_any_bytes_pass_through_unchanged(tmp_path):
    name = os.fsdecode(b"/card/caf\xe9\xff.mov")
    arguments = Arguments(["-out", name, "-clut", b"/looks/\x80.cube"])
    assert arguments.output_file == name and os.fsencode(arguments.lut_file) == b"/looks/\x80.cube"
    assert Arguments(arguments.command_line()) == arguments == pickle.loads(pickle.dumps(arguments))
    with pytest.raises(meridian.EncodingError) as raised:
        arguments.to_json()
    assert raised.value.place.startswith("/flagValueLookup")
    lut = tmp_path / os.fsdecode(b"l\xffok.cube")
    lut.write_text("LUT_1D_SIZE 256\n" + "".join(f"{i / 255} {i / 255} {i / 255}\n" for i in range(256)))
    assert meridian.ParsedLutFile(lut).path == str(lut) == meridian.ParsedLutFile(os.fsencode(lut)).path


@pytest.mark.parametrize("words", ["-vr 25", b"-vr", 1, [1], ["-vr", None], [["-vr"]]])
def test_what_is_no_vector_is_a_type_error(words):
    for function in (Arguments, meridian.explain, meridian.read_media_analysis_arguments):
        with pytest.raises(TypeError):
            function(words)


def test_an_iterator_that_fails_passes_its_error_on():
    with pytest.raises(ZeroDivisionError):
        Arguments(str(1 // zero) for zero in [1, 0])


def test_stores_are_copied_pickled_and_written_as_json_and_repr():
    arguments = Arguments(["-vcoedc", "h264", "-out", "/out/a.mov", "-overwrite"], maintain_original_ordering=True)
    for same in (copy.copy(arguments), copy.deepcopy(arguments), pickle.loads(pickle.dumps(arguments)),
                 Arguments.from_json(arguments.to_json()), Arguments.from_json(arguments.to_json().encode())):
        assert same == arguments and same is not arguments
        same.output_file = "/else"
        assert same != arguments and arguments.output_file == "/out/a.mov"
    valid = Arguments(["-out", "/out/a.mov", "-overwrite"], True)
    assert eval(repr(valid), NAMES) == valid and valid.ordered_flags == ["-out", "-overwrite"]
    assert Arguments.from_argument_lookup({"-VR": "25"}).flag_value_lookup == {"-vr": "25"}
    with pytest.raises(TypeError):
        hash(valid)
    for document in ("{", "[]", '{"flagValueLookup": 1}', "\ud800"):
        with pytest.raises(ValueError):
            Arguments.from_json(document)
    assert json.loads(valid.to_json())["orderedFlags"] == ["-out", "-overwrite"]


def test_explanations_say_what_became_of_every_word():
    words = ["stray", "-dims", "1280 x 720", "-vcoedc", "h264", "-preset", "solvane_cloud", "-vr", "23.976"]
    explanation = meridian.explain(words)
    dims = next(s for s in explanation.settings if s.flag == "-dims")
    assert dims.typed is None and dims.readable_text == "1280x720" and dims.property.name == "video_dimensions"
    assert isinstance(dims.warnings[0], meridian.TranscodeWarning) and isinstance(dims.warnings[0], Warning)
    rate = next(s for s in explanation.settings if s.flag == "-vr")
    assert rate.typed == 23.976 and rate.meaning == "23.976 fps = 24000/1001"
    assert rate.source is meridian.SettingSource.given
    rejected, = explanation.rejected_entries
    assert rejected.suggestion == "-vcodec" and "did you mean -vcodec?" in str(rejected.error)
    assert rejected.error.code is meridian.TranscodeErrorCode.unknown_flag
    dropped, = explanation.dropped_words
    assert (dropped.index, dropped.word) == (0, "stray")
    assert explanation.presets[0].preset is meridian.TranscodeCliPreset.cloud
    assert explanation.arguments == Arguments(words)
    lossy = Arguments()
    lossy.set_argument_flag_value("-tc_custom", "-X")
    assert meridian.reading_back_warnings(lossy)[0].code is meridian.TranscodeWarningCode.reads_back_differently


def test_analysis_options_read_back_and_name_their_errors(tmp_path):
    factory = meridian.MediaAnalysisCLIArgumentFactory
    basic = factory.BasicOptions([tmp_path / "a.mov"], tmp_path, tmp_path / "r.json", deep_analysis=True)
    image = factory.ImageOptions([0.25, 0.5], 1920, lut_to_apply="/l.cube")
    custodial = factory.CustodialOptions(42)
    words = [word for options in (basic, image, custodial) for word in options.command_line_arguments()]
    reading = meridian.read_media_analysis_arguments(words)
    assert (reading.basic, reading.image, reading.custodial) == (basic, image, custodial) and reading.warnings == []
    missing, = basic.errors()
    assert isinstance(missing, meridian.MediaAnalysisBasicOptionsError) and missing.place == str(tmp_path / "a.mov")
    assert missing.code is meridian.MediaAnalysisCLIError.path_to_analyze_does_not_exist
    codes = [error.code for error in factory.ImageOptions([], 0).errors()]
    assert codes == list(meridian.MediaAnalysisCLIImageError)
    assert factory.CustodialOptions(None, 1).warnings_of_writing()[0].place == "-parentAppNumber"
    unknown = meridian.read_media_analysis_arguments(["-what"])
    assert unknown.unknown_flags == ["-what"] and not unknown.all_flags_are_valid and unknown.image is None


def test_repeated_calls_keep_no_references():
    """Objects, the interpreter's counters and its allocated blocks are the same after a thousand calls."""
    arguments, codec, words = Arguments(), meridian.SAVHevcCodec, ["-vr", "25", "-x"]

    def calls():
        for _ in range(1000):
            arguments.video_format = codec
            arguments.video_format, arguments.video_dimensions, arguments.input_files
            arguments.video_crop_anchor = meridian.VideoCropAnchor.center
            Arguments(words).command_line(), meridian.explain(words).settings[0].property
            try:
                arguments.output_file = "-"
            except meridian.PropertyError:
                pass

    def counts():
        return [sys.getrefcount(o) for o in (codec, words, None, meridian.VideoCropAnchor.center)], sys.getallocatedblocks()

    calls()
    before = counts()
    calls()
    after = counts()
    assert max(abs(a - b) for a, b in zip(after[0], before[0])) < 10 and abs(after[1] - before[1]) < 100


def test_a_mapping_that_changes_while_it_is_read_does_no_harm():
    class Clearing:
        def __fspath__(self):
            entries.clear()
            return "/a"

    entries = {f"-in_0_{place}": Clearing() for place in range(100)}
    assert meridian.TranscodeCliArguments.from_argument_lookup(entries).input_files == ["/a"] * 100


@pytest.mark.parametrize(
    "groups, error", [({"a": []}, TypeError), ({1.0: []}, TypeError), ({True: []}, TypeError), ({2**70: []}, OverflowError)]
)
def test_groups_have_numbers(groups, error):
    arguments = meridian.TranscodeCliArguments(["-in_0_0", "/a"])
    with pytest.raises(error):
        arguments.input_file_groups = groups
    assert arguments.input_files == ["/a"]


@pytest.mark.parametrize("state", [([], None, 5), ({}, None, "abc"), ({}, None, [1]), ({}, 5, None), ({}, None)])
def test_a_pickle_of_anything_else_is_an_error(state):
    restore, (kind, name, *_) = meridian.TranscodeCliArguments().__reduce__()
    with pytest.raises(TypeError):
        restore(kind, name, *state)


def test_explanations_of_the_same_words_are_equal():
    words = ["stray", "-vcoedc", "h265", "-vr", "abc"]
    first, second = meridian.explain(words), meridian.explain(words)
    assert first.dropped_words[0] == second.dropped_words[0]
    assert hash(first.dropped_words[0]) == hash(second.dropped_words[0])
    assert first.settings == second.settings and first.rejected_entries == second.rejected_entries
    assert "-vcoedc" in repr(first.arguments) and (first.arguments == unittest.mock.ANY)
