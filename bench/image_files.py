"""`meridian lut apply` on whole image files beside a peer program on the same libraries.

    python3 bench/image_files.py build/release/bin

Both read, apply and write 3840 x 2160 pixels: PNG of 16 bits, EXR of half floats, and DPX of 10 bits. Only `meridian`
also reads the result back and compares it. The two take turns; printed are the medians of their wall and CPU times, and
where the peer's time goes. "load" is the start of the peer, nearly all of it the libraries that OpenImageIO needs, which
`meridian` loads as well. A sequence is 24 frames: one call of `meridian`, and 24 of the peer, which takes one image.
"""

import os
import random
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

REPETITIONS = 7


def write_cube(path, points=33):
    """Writes a look with some contrast as a .cube file."""
    numbers = random.Random(1)
    with path.open("w") as file:
        file.write(f"LUT_3D_SIZE {points}\n")
        for index in range(points**3):
            color = [index % points, index // points % points, index // points**2]
            values = [(3 - 2 * c / (points - 1)) * (c / (points - 1)) ** 2 * 0.98 + 0.02 * numbers.random() for c in color]
            file.write(" ".join(f"{value:.6f}" for value in values) + "\n")


def run(words):
    """Returns the wall and the CPU time in seconds, and what was printed."""
    start = time.perf_counter()
    process = subprocess.Popen(words, stdout=subprocess.PIPE, text=True)
    printed = process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - start
    if status != 0:
        raise SystemExit(f"{' '.join(map(str, words))} failed")
    return wall, usage.ru_utime + usage.ru_stime, printed


def median_pairs(ours, peers, repetitions):
    """Lets two functions take turns; returns the medians of each one's wall and CPU times, and all results of `peers`."""
    runs = [(ours(), peers()) for _ in range(repetitions + 1)][1:]
    medians = [[statistics.median(pair[side][figure] for pair in runs) for figure in (0, 1)] for side in (0, 1)]
    return medians, [peer for _, peer in runs]


def show(name, medians, parts=""):
    (wall, cpu), (peer_wall, peer_cpu) = medians
    print(f"{name}: meridian {wall:.2f} s (CPU {cpu:.2f}), peer {peer_wall:.2f} s (CPU {peer_cpu:.2f}{parts}), "
          f"peer needs {peer_wall / wall:.2f} times the time", flush=True)


def measure(programs, directory, extension):
    image = directory / f"in.{extension}"
    run([programs / "image-file-peer", "make", image])
    meridian = [programs / "meridian", "lut", "apply", directory / "look.cube"]
    peer = [programs / "image-file-peer", "apply", directory / "look.cube", image]
    medians, peers = median_pairs(lambda: run([*meridian, image, directory / f"ours.{extension}"]),
                                  lambda: run([*peer, directory / f"peer.{extension}"]), REPETITIONS)
    steps = {"load": []}
    for wall, _, printed in peers:
        seconds = {name: float(number) for name, number in map(str.split, printed.splitlines())}
        steps["load"].append(wall - sum(seconds.values()))
        for name in seconds:
            steps.setdefault(name, []).append(seconds[name])
    show(extension, medians, "".join(f", {name} {statistics.median(times):.2f}" for name, times in steps.items()))

    if extension != "dpx":
        return
    frames = [directory / f"frame{number}.dpx" for number in range(24)]
    for frame in frames:
        os.link(image, frame)
    graded = directory / "graded"
    graded.mkdir()

    def all_by_peer():
        runs = [run([*peer[:3], frame, graded / frame.name]) for frame in frames]
        return sum(wall for wall, _, _ in runs), sum(cpu for _, cpu, _ in runs)

    show("dpx sequence", median_pairs(lambda: run([*meridian, *frames, "--to", graded]), all_by_peer, 3)[0])


def main():
    programs = Path(sys.argv[1])
    with tempfile.TemporaryDirectory() as name:
        directory = Path(name)
        write_cube(directory / "look.cube")
        for extension in ("png", "exr", "dpx"):
            measure(programs, directory, extension)


main()
