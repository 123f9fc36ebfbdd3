"""`meridian-media-analysis` beside the commands of FFmpeg.

    python3 bench/media_analysis.py build/release/bin [FILES]

Ten stills of a two-minute clip of 1920 x 1080 pixels, H.264 with a key frame every ten seconds, as JPEG of 960 x 540
pixels, beside ten runs of `ffmpeg -ss`; and the description of FILES files (100 by default, in turn a QuickTime movie, an
MXF file, a transport stream and a WAVE file) by one run, beside as many runs of `ffprobe -show_format -show_streams`. The
two take turns; printed are the medians of their wall and CPU times. The media are made by `ffmpeg`.
"""

import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

REPETITIONS = 3
SECONDS = 120
LOCATIONS = [step / 9 for step in range(10)]


def run(words):
    """Returns the wall and the CPU time in seconds."""
    start = time.perf_counter()
    process = subprocess.Popen(words, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        raise SystemExit(f"{' '.join(map(str, words))} failed")
    return time.perf_counter() - start, usage.ru_utime + usage.ru_stime


def total(times):
    """Returns the sum of the wall times and of the CPU times."""
    return tuple(sum(part) for part in zip(*times))


def ffmpeg(*words):
    return ["ffmpeg", "-v", "error", "-nostdin", "-y", *map(str, words)]


def compare(name, ours, peers):
    runs = [(ours(), peers()) for _ in range(REPETITIONS + 1)][1:]
    (wall, cpu), (peer_wall, peer_cpu) = (
        [statistics.median(pair[side][figure] for pair in runs) for figure in (0, 1)] for side in (0, 1))
    print(f"{name}: meridian {wall:.2f} s (CPU {cpu:.2f}), ffmpeg {peer_wall:.2f} s (CPU {peer_cpu:.2f}), "
          f"{cpu / peer_cpu:.2f} of its CPU time", flush=True)


def analyze(program, directory, media, further=()):
    """Returns a function that analyses the media and removes the results."""
    work = directory / "work"

    def once():
        work.mkdir()
        words = [program, *(word for each in media for word in ("-pathToAnalyze", each)), "-workDirectory", work,
                 "-resultsFilePath", work / "results.json", *further]
        times = run(words)
        shutil.rmtree(work)
        return times

    return once


def measure_stills(program, directory):
    clip = directory / "clip.mp4"
    run(ffmpeg("-f", "lavfi", "-i", f"testsrc2=size=1920x1080:rate=25:duration={SECONDS}", "-vf", "noise=alls=8:allf=t",
               "-c:v", "libx264", "-preset", "veryfast", "-crf", 28, "-g", 250, "-bf", 3, "-pix_fmt", "yuv420p", clip))
    # The last frame itself, since the command finds none at the duration.
    times = [min(location * SECONDS, SECONDS - 0.04) for location in LOCATIONS]
    compare("ten stills",
            analyze(program, directory, [clip],
                    ["-maxImageWidth", "960", "-snapshotLocation", *map(str, LOCATIONS)]),
            lambda: total(run(ffmpeg("-ss", second, "-i", clip, "-frames:v", 1, "-vf", "scale=960:-1", "-q:v", 7.8,
                                     directory / "still.jpg")) for second in times))


def measure_descriptions(program, directory, count):
    made = [directory / name for name in ("a.mov", "b.mxf", "c.ts", "d.wav")]
    run(ffmpeg("-f", "lavfi", "-i", "testsrc2=size=1920x1080:rate=25:duration=2", "-f", "lavfi", "-i",
               "sine=sample_rate=48000:duration=2",
               "-c:v", "prores_ks", "-timecode", "01:00:00:00", made[0],
               "-c:v", "mpeg2video", "-c:a", "pcm_s16le", made[1],
               "-c:v", "libx264", "-preset", "veryfast", "-c:a", "aac", made[2],
               "-map", "1:a", made[3]))
    media = []
    for number in range(count):
        source = made[number % len(made)]
        media.append(directory / f"{number}{source.suffix}")
        os.link(source, media[-1])
    compare(f"{count} files", analyze(program, directory, media),
            lambda: total(run(["ffprobe", "-v", "error", "-show_format", "-show_streams", each]) for each in media))


def main():
    program = Path(sys.argv[1]).resolve() / "meridian-media-analysis"
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100
    with tempfile.TemporaryDirectory() as name:
        measure_descriptions(program, Path(name), count)
        measure_stills(program, Path(name))


if __name__ == "__main__":
    main()
