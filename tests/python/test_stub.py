"""The type stub, as mypy reads it, and the examples."""

import os
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

import meridian

PACKAGE = Path(meridian.__file__).parent
SOURCES = Path(os.environ["MERIDIAN_SOURCES"])
EXAMPLES = SOURCES / "examples" / "python"


@pytest.fixture(scope="module")
def mypy(tmp_path_factory):
    """Runs mypy or stubtest, which see the stub alone."""
    if shutil.which("stubtest", path="/usr/bin") is None:
        pytest.skip("mypy is not installed")
    directory = tmp_path_factory.mktemp("mypy")
    (directory / "stubs" / "meridian").mkdir(parents=True)
    shutil.copy(PACKAGE / "__init__.pyi", directory / "stubs" / "meridian")
    environment = {**os.environ, "MYPYPATH": str(directory / "stubs"), "PYTHONPATH": str(PACKAGE.parent)}

    def run(module, *words):
        # The checker itself, which is not built with a sanitizer.
        if module == "mypy":
            environment.pop("LD_PRELOAD", None)
        return subprocess.run([sys.executable, "-m", module, *words], capture_output=True, text=True, cwd=directory,
                              env=environment).stdout

    return run


def test_the_stub_and_the_examples_pass_mypy_strictly(mypy):
    files = ["stubs/meridian/__init__.pyi", *map(str, sorted(EXAMPLES.glob("*.py")))]
    # matplotlib of Debian has no types.
    assert mypy("mypy", "--strict", "--ignore-missing-imports", *files).startswith("Success")


def test_the_stub_has_the_names_of_the_module_and_no_others(mypy):
    # pybind11's classes have a metaclass, and the ones without a constructor an __init__ that raises.
    known = ("metaclass differs", '__init__ is inconsistent, stub does not have *args argument "args"')
    lines = mypy("mypy.stubtest", "--concise", "meridian").splitlines()
    assert len(lines) > 10, lines
    assert [line for line in lines if not line.endswith(known[0]) and not line.endswith(known[1])] == []


def test_the_stub_catches_mistakes(mypy, tmp_path):
    script = tmp_path / "mistakes.py"
    script.write_text("import meridian\na = meridian.TranscodeCliArguments()\n"
                      "a.video_frame_rat = 1\na.video_bit_depth = 'x'\n"
                      "a.video_crop_anchor = meridian.TimecodeSource.match\nx: int = a.output_file\n")
    found = [line.split(":")[1] for line in mypy("mypy", "--strict", str(script)).splitlines() if "error:" in line]
    assert found == ["3", "4", "5", "6"]


def test_the_guide_passes_mypy_strictly(mypy, tmp_path):
    guide = (SOURCES / "docs" / "python.md").read_text()
    first = guide.split("```python\n")[1].split("```")[0]
    script = tmp_path / "guide.py"
    script.write_text("import subprocess, sys\nfrom fractions import Fraction\nfrom pathlib import Path\n"
                      "card = Path('/card')\ndimensions = '1920x1080'\n" + first +
                      "arguments.video_frame_rate = Fraction(25)\narguments.video_dimensions = (1920, 1080)\n"
                      "arguments.lut_file = card\narguments.video_format = 'h264'\n"
                      "arguments.flag_value_lookup = {'-out': card}\n")
    assert mypy("mypy", "--strict", str(script)).startswith("Success")


def run(name, *words):
    done = subprocess.run([sys.executable, str(EXAMPLES / name), *map(str, words)], capture_output=True, text=True)
    return done.returncode, done.stdout, done.stderr


def test_the_examples_run(tmp_path):
    jobs = tmp_path / "jobs.txt"
    jobs.write_text("-in_0_0 /a.mov -out /b.mov -vcoedc h264\n# a comment\n\n"
                    "-out /c.mov -dims '1280 x 720'\n-out /d.mov -vr 25\n")
    status, out, _ = run("check_job_list.py", jobs)
    assert status == 1 and "did you mean -vcodec?" in out and "did you mean 1280x720?" in out and "line 5" not in out
    looks = tmp_path / "ramp.cube"
    rows = "".join(f"{(i / 255) ** 2} {i / 255} {(i / 255) ** .5}\n" for i in range(256))
    looks.write_text("LUT_1D_SIZE 256\n" + rows)
    status, out, _ = run("add_lut.py", looks, jobs)
    assert status == 0 and out.count(f"-clut {looks}") == 3
    assert run("add_lut.py", tmp_path / "none.cube", jobs)[0] == 1
    (tmp_path / "card").mkdir()
    (tmp_path / "card" / "a.mov").write_text("12345")
    (tmp_path / "card" / ".DS_Store").touch()
    status, out, _ = run("walk_card.py", tmp_path / "card")
    assert status == 0 and "a.mov" in out and ".DS_Store" not in out.splitlines()[0]
    status, out, error = run("plot_lut.py", looks, tmp_path / "plot.png")
    assert (tmp_path / "plot.png").stat().st_size > 10000 if status == 0 else "matplotlib" in error
