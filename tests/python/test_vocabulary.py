"""Constants, enumerations, names, and what every error and value has."""

import copy
import enum
import inspect
import keyword
import os
import pickle
import re
import subprocess
import sys
from fractions import Fraction
from pathlib import Path

import pytest

import meridian

SOURCES = Path(os.environ["MERIDIAN_SOURCES"])

NAMES = {name: getattr(meridian, name) for name in meridian.__all__}


def listed(file, macro=r"MERIDIAN_\w+"):
    """Returns the names and texts of a list's entries."""
    text = (SOURCES / "meridian" / file).read_text()
    return re.findall(rf"^{macro}\((\w+),\s*\"([^\"]*)\"", text, re.MULTILINE)


def snake(name):
    """The rule for names, as Python writes it."""
    name = re.sub(r"(?<=[^A-Z_])([A-Z])", r"_\1", name)
    return re.sub(r"(?<=[A-Z])([A-Z])(?=[a-z])", r"_\1", name).lower()


def test_every_constant_of_the_lists_is_exported_with_its_text():
    lists = ["cli/transcode_flags.def", "cli/transcode_values.def", "media/media_names.def", "media/avm_constants.def"]
    entries = [entry for file in lists for entry in listed(file)]
    for name, text in entries:
        assert getattr(meridian, name) == text, name
    exported = {name for name in meridian.__all__ if re.match(r"SAV|SLV|kAVM", name)
                and not isinstance(getattr(meridian, name), type)}
    assert exported == {name for name, _ in entries} | {"kAVMVideoQualityLevelMax", "kAVMVideoQualityLvelMin"}
    assert (meridian.kAVMVideoQualityLevelMax, meridian.kAVMVideoQualityLvelMin) == (1.0, 0.0)


def test_file_extensions_are_those_of_the_list():
    entries = listed("media/file_extension.def", "MERIDIAN_FILE_EXTENSION")
    assert [(e.name, e.value) for e in meridian.FileExtension] == [(snake(name), text) for name, text in entries]


def test_names_are_made_from_those_of_cpp_by_one_rule():
    words = set()
    for header in [*(SOURCES / "meridian").rglob("*.h"), *(SOURCES / "meridian").rglob("*.def")]:
        if header.relative_to(SOURCES / "meridian").parts[0] not in ("c", "objc", "python"):
            words.update(re.findall(r"[A-Za-z]\w*", header.read_text()))
    known = words | {snake(word) for word in words}
    # Python's own manners: what C++ spells as an operator, a parameter of main or a template has another name.
    manners = {"from_json", "to_json", "path", "paths", "files", "property_value", "set_property_text", "TypedText",
               "Enumeration", "annotation", "accepted_annotation", "description", "remedy", "code", "place", "detail", "typed", "errors",
               "Claim",
               "domain_minimum", "domain_maximum", "declares_domain", "arguments", "errno", "strerror", "filename",
               "remove", "ImageError", "args", "with_traceback", "add_note", "characters_written", "filename2"}
    for name in [*meridian.__all__, "Warning"]:
        value = getattr(meridian, name)
        assert name in known | manners, name
        if isinstance(value, type):
            for member in vars(value):
                if not member.startswith("_") and not issubclass(value, enum.Enum):
                    assert member in known | manners or re.match(r"SAV", member), f"{name}.{member}"
    assert not any(keyword.iskeyword(e.name) for e in meridian.FileExtension)


def test_everything_public_has_a_docstring_and_reads_as_part_of_the_package():
    for name in meridian.__all__:
        value = getattr(meridian, name)
        if isinstance(value, type):
            assert value.__doc__ and value.__module__ == "meridian" and value.__qualname__ == name, name
            made = vars(value).get("__init__")
            if "__init__(" in str(getattr(made, "__doc__", "")):
                assert len(made.__doc__.strip().splitlines()) > 1, name
            for member, what in vars(value).items():
                if isinstance(what, type) and not member.startswith("_"):
                    assert (what.__module__, what.__qualname__) == ("meridian", f"{name}.{member}")
                    assert eval(what.__qualname__, NAMES) is what and what.__init__.__doc__.count("\n") > 1
                if isinstance(what, property) or (callable(what) and not member.startswith("_")):
                    assert what.__doc__, f"{name}.{member}"
        elif callable(value):
            assert "->" in value.__doc__ and len(value.__doc__.splitlines()) > 2, name


def test_typed_texts_are_str_and_know_their_facts():
    flag = meridian.SAVVideoFrameRateFlag
    assert isinstance(flag, str) and flag == "-vr" and {"-vr": 1}[flag] == 1 and f"{flag}" == "-vr"
    assert type(flag) is meridian.SAVTranscodeVideoArgumentFlag and eval(repr(flag), NAMES) == flag
    assert flag.accepts_arguments and not meridian.SAVNoVideoFlag.accepts_arguments
    codec = meridian.SAVTranscodeArgumentVideoCodecValue
    assert codec.from_raw_value("h265") is meridian.SAVHevcCodec and codec.from_raw_value("H265") is None
    assert codec("h264").permitted_extensions == [meridian.FileExtension.mp4, meridian.FileExtension.mov]
    assert codec("x").conversion_codec_type is None and codec.cli_flag == "-vcodec"
    assert meridian.SAVMp4Format.preferred_file_extension is meridian.FileExtension.mp4
    assert len(meridian.SAVTranscodeArgumentAudioFormatValue.all_cases()) == 3


def test_enumerations_are_enums_with_descriptions():
    kinds = [v for v in NAMES.values() if isinstance(v, type) and issubclass(v, enum.Enum) and len(v)]
    assert len(kinds) > 30
    for kind in kinds:
        for member in kind:
            assert kind(member.value) is member and isinstance(member.description, str)
            assert pickle.loads(pickle.dumps(member)) is member
    assert meridian.ItemFilteringOption.only_listed_extensions.value == 1
    assert meridian.TranscodeAudioQuality.medium.av_audio_quality == 64
    assert meridian.LutErrorCode.not_opened.remedy == "check the spelling and that you may read it"


VALUES = [
    meridian.VideoFrameRate.ntsc24p, meridian.VideoFrameRate(12.5), meridian.VideoFrameRate.custom(Fraction(25)),
    meridian.FrameRate.halfstep, meridian.FrameRate.custom(47.952), meridian.VideoDimension.ten_eighty_p,
    meridian.VideoDimension.custom(2048, 858), meridian.VideoDimension.scaled(0.9),
    meridian.TimecodeComponents(1, 2, 3, 4, True), meridian.TimecodeComponents(hours=-(2**63)), meridian.Size(0.5, 2),
    meridian.RgbColor(255, 128, 0), meridian.SAVHevcCodec, meridian.SAVTranscodeArgumentFlag("-caf\udce9"),
    meridian.ItemDecision(True, meridian.ItemFilterRule.hidden),
]


@pytest.mark.parametrize("value", VALUES, ids=repr)
def test_values_are_equal_hashed_copied_pickled_and_written_as_they_are(value):
    names = {**NAMES, "Fraction": Fraction}
    for same in (copy.copy(value), copy.deepcopy(value), pickle.loads(pickle.dumps(value)), eval(repr(value), names)):
        assert same == value and hash(same) == hash(value) and type(same) is type(value)
    assert all(value != other for other in VALUES if other is not value) and value != object()


def test_errors_are_those_that_python_users_expect():
    error = pytest.raises(meridian.LutError, meridian.ParsedLutFile, "/no\x1bne.cube").value
    assert isinstance(error, (meridian.Error, OSError)) and error.errno == 2 and error.filename == "/no\x1bne.cube"
    assert str(error) == ('"/no\\x1bne.cube": cannot be opened: No such file or directory; '
                          "check the spelling and that you may read it")
    assert error.code is meridian.LutErrorCode.not_opened and error.remedy == error.code.remedy
    again = pickle.loads(pickle.dumps(error))
    assert (str(again), again.code, again.place, again.errno) == (str(error), error.code, error.place, 2)
    assert isinstance(error, FileNotFoundError) and type(again) is type(error) and again == error
    for name in meridian.__all__:
        value = getattr(meridian, name)
        if inspect.isclass(value) and issubclass(value, Exception) and value is not meridian.Error:
            assert issubclass(value, (ValueError, OSError, Warning)), name


def test_errors_about_types_are_one_line_without_contents():
    arguments, factory = meridian.TranscodeCliArguments(), meridian.MediaAnalysisCLIArgumentFactory
    for call, message in [
        (lambda: meridian.Size("a", height=1),
         "expected meridian.Size(width: float, height: float), found meridian.Size(str, height=int)"),
        (lambda: arguments.has_argument_flag(["-vr"] * 1000),
         "expected has_argument_flag(self: meridian.TranscodeCliArguments, flag: str), "
         "found has_argument_flag(meridian.TranscodeCliArguments, list)"),
        (lambda: meridian.explain([1] * 1000), "expected explain(words: Iterable[StrOrBytesPath], "
         "maintain_original_ordering: bool = False), found explain(list)"),
        (lambda: meridian.SAVHevcCodec.from_raw_value(1),
         "expected from_raw_value(raw_value: str), found from_raw_value(int)"),
        (lambda: meridian.explain(*range(1000)), "expected explain(words: Iterable[StrOrBytesPath], "
         f"maintain_original_ordering: bool = False), found explain({'int, ' * 16}...)"),
        (lambda: factory.CustodialOptions("x"), "expected meridian.MediaAnalysisCLIArgumentFactory.CustodialOptions("
         "parent_pid: Optional[int] = None, parent_app_number: Optional[int] = None), "
         "found meridian.MediaAnalysisCLIArgumentFactory.CustodialOptions(str)")]:
        with pytest.raises(TypeError) as raised:
            call()
        assert str(raised.value) == message


def test_every_public_enumeration_is_on_the_face_or_in_the_list_of_what_is_left_out():
    headers = re.findall(r"PUBLIC_HEADERS\n([^)]*)\)", (SOURCES / "meridian/CMakeLists.txt").read_text())
    declared = [name for header in " ".join(headers).split()
                for name in re.findall(r"^enum class (\w+)", (SOURCES / "meridian" / header).read_text(), re.MULTILINE)]
    table = (SOURCES / "docs/python.md").read_text().split("## What it leaves out")[1]
    left_out = set(re.findall(r"`(\w+)`", table))
    assert len(declared) > 45
    for name in declared:
        assert (name in meridian.__all__) != (name in left_out), name


def test_a_logger_receives_messages_and_its_errors_stay_outside(capfd):
    heard = []
    meridian.set_logger(lambda level, text: heard.append((level, text)))
    pytest.raises(meridian.LutError, meridian.ParsedLutFile, "/none.cube")
    meridian.set_logger(lambda level, text: 1 / 0)
    hook, sys.unraisablehook = sys.unraisablehook, lambda raised: heard.append(raised.exc_type)
    try:
        pytest.raises(meridian.LutError, meridian.ParsedLutFile, "/none.cube")
    finally:
        sys.unraisablehook = hook
        meridian.set_logger(None)
    assert heard[0][0] is meridian.LogLevel.error and heard[0][1].startswith("MRD_") and heard[1] is ZeroDivisionError
    script = "import meridian; meridian.set_logger(print)"
    assert subprocess.run([sys.executable, "-c", script]).returncode == 0


def test_importing_needs_nothing_but_python():
    script = "import sys, meridian; print([m for m in ('numpy', 'fractions', 'pathlib', 'typing') if m in sys.modules])"
    assert subprocess.check_output([sys.executable, "-S", "-c", script]) == b"[]\n"


def test_threads_that_ask_for_an_enumeration_get_the_same_one():
    script = """
import sys, threading, meridian
sys.setswitchinterval(1e-7)
barrier = threading.Barrier(16)
found = []
def ask():
    barrier.wait()
    found.append(meridian.VideoCropAnchor)
threads = [threading.Thread(target=ask) for _ in range(16)]
for thread in threads: thread.start()
for thread in threads: thread.join()
arguments = meridian.TranscodeCliArguments()
for member in meridian.VideoCropAnchor:
    arguments.video_crop_anchor = member
    assert arguments.video_crop_anchor is member
assert len(set(found)) == 1
"""
    for _ in range(8):
        subprocess.run([sys.executable, "-c", script], check=True)
