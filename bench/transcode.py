"""`meridian transcode` beside the `ffmpeg` command that does the same.

    python3 bench/transcode.py build/release/bin [REPETITIONS]

Clips of 1920 x 1080 pixels with noise and two tracks of sound become a proxy of 960 x 540 pixels (H.264 at 3 Mb/s, AAC)
with a LUT of 33 points and burnt-in timecode, the same without LUT and burn-in, a clip of their own size with the LUT
(H.264, and Motion JPEG, whose encoder costs less), and a ProRes proxy. The two take turns (5 times by default); printed
are the medians of their CPU and wall times and of their peak memory, and the ratios. The media are made by `ffmpeg`.
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SECONDS = 5


def run(words):
    """Returns the CPU time, the wall time in seconds and the peak memory in MiB."""
    start = time.perf_counter()
    process = subprocess.Popen(list(map(str, words)), stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0:
        raise SystemExit(f"{' '.join(map(str, words))} failed")
    return usage.ru_utime + usage.ru_stime, time.perf_counter() - start, usage.ru_maxrss / 1024


def ffmpeg(*words):
    return ["ffmpeg", "-v", "error", "-nostdin", "-y", *words]


def compare(name, ours, peer, repetitions):
    runs = [(run(ours), run(peer)) for _ in range(repetitions + 1)][1:]
    (cpu, wall, memory), (peer_cpu, peer_wall, peer_memory) = (
        [statistics.median(pair[side][figure] for pair in runs) for figure in range(3)] for side in (0, 1))
    print(f"{name}: CPU {cpu / peer_cpu:.2f} ({cpu:.2f} s to {peer_cpu:.2f} s), "
          f"wall {wall / peer_wall:.2f} ({wall:.2f} s to {peer_wall:.2f} s), "
          f"memory {memory / peer_memory:.2f} ({memory:.0f} MiB to {peer_memory:.0f} MiB)", flush=True)


def write_look(path):
    """Writes a LUT of 33 points a side with a contrast curve and a warm tint."""
    with open(path, "w") as file:
        file.write("LUT_3D_SIZE 33\n")
        curve = lambda x: x * x * (3 - 2 * x)
        for blue in range(33):
            for green in range(33):
                for red in range(33):
                    r, g, b = curve(red / 32), curve(green / 32), curve(blue / 32)
                    file.write(f"{min(r * 1.04, 1):.6f} {g * 0.98 + r * 0.02:.6f} {b * 0.93 + g * 0.02:.6f}\n")


def make_clip(path):
    run(ffmpeg("-f", "lavfi", "-i", f"testsrc2=size=1920x1080:rate=25:duration={SECONDS}", "-f", "lavfi", "-i",
               f"sine=frequency=440:sample_rate=48000:duration={SECONDS}", "-vf",
               "noise=alls=8:allf=t,format=yuv422p10le,setparams=range=tv:color_primaries=bt709:color_trc=bt709:"
               "colorspace=bt709", "-map", "0:v", "-map", "1:a", "-map", "1:a", "-c:v", "prores_ks", "-profile:v", 3,
               "-c:a", "pcm_s24le", "-ac", 2, "-timecode", "01:00:00:00", path))


def main():
    if len(sys.argv) not in (2, 3):
        raise SystemExit(__doc__)
    transcoder = Path(sys.argv[1]) / "meridian-transcoder"
    repetitions = int(sys.argv[2]) if len(sys.argv) == 3 else 5
    with tempfile.TemporaryDirectory() as name:
        directory = Path(name)
        clip, look, out = directory / "clip.mov", directory / "look.cube", directory / "out.mov"
        make_clip(clip)
        write_look(look)
        font = subprocess.run(["fc-match", "-f", "%{file}", "monospace"], capture_output=True, text=True).stdout
        ours = lambda *words: [transcoder, "-in_0_0", clip, "-out", out, "-overwrite", *words]
        tagged = ["-color_primaries", "bt709", "-color_trc", "bt709", "-colorspace", "bt709"]
        peer = lambda filters, *words: ffmpeg("-i", clip, "-map", "0:v", "-map", "0:a", "-vf", filters, *tagged, *words, out)
        scale, lut = "scale=960:540:flags=bicubic", f"lut3d=file={look}"
        burn = (f"drawtext=fontfile={font}:fontsize=21.6:fontcolor=white:box=1:boxcolor=black:x=(w-tw)/2:y=h-th-14:"
                "timecode='01\\:00\\:00\\:00':rate=25")
        proxy = ["-c:v", "libx264", "-b:v", "3M", "-maxrate", "4.5M", "-bufsize", "6M", "-c:a", "aac", "-b:a", "128k"]
        h264 = ["-vcodec", "h264", "-vbd", "8", "-vbr", "3", "-acodec", "aac"]
        small = ["-dims", "960x540"]
        compare("proxy with LUT and burn-in",
                ours(*h264, *small, "-clut", look, "-tc_match", "-tc_burn"),
                peer(f"{scale},{lut},format=yuv420p,{burn}", *proxy), repetitions)
        compare("proxy", ours(*h264, *small), peer(f"{scale},format=yuv420p", *proxy), repetitions)
        compare("LUT at source size, H.264", ours("-vcodec", "h264", "-vbd", "8", "-vbr", "20", "-acopy", "-clut", look),
                peer(f"{lut},format=yuv420p", "-c:v", "libx264", "-b:v", "20M", "-maxrate", "30M", "-bufsize", "40M",
                     "-c:a", "copy"), repetitions)
        compare("LUT at source size, Motion JPEG", ours("-vcodec", "mjpeg", "-acopy", "-clut", look),
                peer(f"{lut},format=yuvj422p", "-c:v", "mjpeg", "-q:v", 3, "-c:a", "copy"), repetitions)
        compare("ProRes proxy", ours("-vcodec", "prores422proxy", "-acopy"),
                peer("null", "-c:v", "prores_ks", "-profile:v", 0, "-c:a", "copy"), repetitions)


if __name__ == "__main__":
    main()
