"""The Python module beside C++ in the same run, and its parser beside argparse.

    PYTHONPATH=build/release/python python3 bench/python_face.py build/release/bin/meridian-bench

The C++ figures are those of meridian-bench, of the same vector, the same LUT and the same image; it needs the C
interface. Medians throughout.
"""

import argparse
import json
import re
import statistics
import subprocess
import sys
import tempfile
import time
import timeit
from pathlib import Path

import meridian
import numpy

SOURCES = Path(__file__).parent


def vector(name):
    """Returns the words of a list in argument_vectors.h."""
    text = (SOURCES / "argument_vectors.h").read_text()
    return re.findall(r'"([^"]*)"', re.search(rf"\b{name} =\s+std::to_array<[^>]*>\(\{{(.*?)\}}\)", text, re.DOTALL)[1])


def cpp_figures(program, names, repetitions):
    """Returns the medians of benchmarks in nanoseconds."""
    printed = subprocess.run(
        [program, f"--benchmark_filter=^({'|'.join(names)})$", "--benchmark_format=json",
         f"--benchmark_repetitions={repetitions}", "--benchmark_min_time=0.1", "--benchmark_report_aggregates_only=true"],
        check=True, capture_output=True, text=True).stdout
    units = {"ns": 1, "us": 1e3, "ms": 1e6}
    return {run["run_name"]: run["real_time"] * units[run["time_unit"]]
            for run in json.loads(printed)["benchmarks"] if run["aggregate_name"] == "median"}


def nanoseconds(function, repetitions=9):
    timer = timeit.Timer(function)
    count, _ = timer.autorange()
    count = max(1, count // 4)
    return statistics.median(seconds / count for seconds in timer.repeat(repetitions, count)) * 1e9


def line(what, python, other, name):
    scale, unit = (1, "ns") if python < 1e4 else (1e3, "us") if python < 1e7 else (1e6, "ms")
    print(f"{what:44} {python / scale:8.1f} {unit}   {name} {other / scale:8.1f} {unit}   ratio {python / other:6.2f}")


def read_properties(cpp):
    arguments = meridian.TranscodeCliArguments(vector("propertyWords"))
    for name, benchmark in [("gpu_decode", "switch"), ("video_format", "enumerated"), ("video_profile", "text"),
                            ("lut_file", "file"), ("video_frame_rate", "float"), ("video_bit_depth", "integer"),
                            ("video_dimensions", "dimensions"), ("timecode", "timecode")]:
        taken = nanoseconds(lambda: getattr(arguments, name))
        line(f"read {name}", taken - nanoseconds(lambda: name), cpp[f"c_read_{benchmark}/meridian"], "C++")


def argparse_parser(words):
    """Returns a parser of the same vocabulary; of numbered flags it knows those of the vector."""
    parser = argparse.ArgumentParser(add_help=False, allow_abbrev=False)
    public = [getattr(meridian, name) for name in meridian.__all__]
    types = [value for value in public if isinstance(value, type) and hasattr(value, "accepts_arguments")]
    flags = {flag: flag.accepts_arguments for t in types for flag in t.all_cases()}
    flags.update({word: True for word in words if word.startswith("-in_")})
    for flag, takes_value in flags.items():
        parser.add_argument(flag, **({} if takes_value else {"action": "store_true"}))
    return parser


def parse(cpp):
    words = vector("words")
    parser = argparse_parser(words)
    known, unknown = parser.parse_known_args(words)
    assert known.vr == "23.976" and known.overwrite and not unknown
    assert meridian.TranscodeCliArguments(words).video_frame_rate == 23.976
    ours = nanoseconds(lambda: meridian.TranscodeCliArguments(words))
    line(f"parse a vector of {len(words)} words", ours, cpp["c_parse/meridian"], "C++")
    line("", ours, nanoseconds(lambda: parser.parse_known_args(words)), "argparse")


def apply(program, rounds=9):
    """Alternates with C++, so that both meet the same machine. The LUT and the image are those of c_face.cpp."""
    width, height = 3840, 2160
    image = (numpy.arange(width * height * 3, dtype=numpy.uint64) * 7 % 1024).astype(numpy.uint16)
    image = image.reshape(height, width, 3)
    out = numpy.empty_like(image)
    with tempfile.TemporaryDirectory() as directory:
        path = Path(directory, "bench.cube")
        path.write_text("LUT_3D_SIZE 33\n" + "".join(
            f"{row // 1089 / 40 + 0.1:g} {row // 33 % 33 / 32:g} {row % 33 / 32:g}\n" for row in range(33**3)))
        lut = meridian.ParsedLutFile(path)
    lut.apply(image, out, bit_depth=10)  # so that the memory of the results is there, as it is in C++
    ours, theirs = [], []
    for _ in range(rounds):
        theirs.append(cpp_figures(program, ["c_apply_lut/meridian"], 3)["c_apply_lut/meridian"])
        runs = timeit.repeat(lambda: lut.apply(image, out, bit_depth=10), number=1, repeat=5)
        ours.append(statistics.median(runs) * 1e9)
    # Each round by itself, since other work on the machine comes and goes.
    ratio = statistics.median(other / own for own, other in zip(ours, theirs))
    taken, cpp = statistics.median(ours), statistics.median(theirs)
    line(f"apply a cube to {width} x {height}, uint16", taken, cpp, "C++")
    print(f"{'':44} {ratio:.3f} of the C++ speed, the median of {rounds} rounds")


def import_module():
    def run(statement):
        begin = time.perf_counter()
        subprocess.run([sys.executable, "-c", statement], check=True)
        return time.perf_counter() - begin

    pairs = [(run("pass"), run("import meridian")) for _ in range(40)]
    taken = statistics.median(loaded - bare for bare, loaded in pairs)
    print(f"import meridian {taken * 1e3:.1f} ms, beside {statistics.median(bare for bare, _ in pairs) * 1e3:.1f} ms "
          "for the interpreter alone")


def main():
    if len(sys.argv) != 2:
        sys.exit(f"usage: {sys.argv[0]} MERIDIAN_BENCH")
    cpp = cpp_figures(sys.argv[1], ["c_read_.*/meridian", "c_parse/meridian"], 5)
    read_properties(cpp)
    parse(cpp)
    apply(sys.argv[1])
    import_module()


if __name__ == "__main__":
    main()
