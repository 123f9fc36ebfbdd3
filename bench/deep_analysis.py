"""Measures a deep analysis beside FFmpeg's filters, on a minute of 1080p.

    python3 bench/deep_analysis.py build/release/bin [REPETITIONS]

Each pair runs one after the other, several times; the figures are medians of CPU time, wall time and peak memory. The
ffmpeg command has the filters that give the same answers: blackdetect, freezedetect, scdet, idet, signalstats,
silencedetect, ebur128 and the muxer streamhash with MD5. Of these, signalstats alone takes half of the time and gives
much more than the luma that is wanted here; so the command is also measured without it.
"""

import sys
import tempfile
from pathlib import Path

from transcode import compare, ffmpeg, run

SECONDS = 60
# What a camera records, and what it becomes.
CODECS = {
    "ProRes 422 HQ": ["-c:v", "prores_ks", "-profile:v", 3, "-pix_fmt", "yuv422p10le"],
    "H.264": ["-c:v", "libx264", "-preset", "veryfast", "-b:v", "20M", "-pix_fmt", "yuv420p"],
}


def make_clip(path, codec):
    run(ffmpeg("-f", "lavfi", "-i", f"testsrc2=size=1920x1080:rate=25:duration={SECONDS}", "-f", "lavfi", "-i",
               f"sine=frequency=440:sample_rate=48000:duration={SECONDS}", "-vf", "noise=alls=8:allf=t", *codec,
               "-c:a", "pcm_s24le", "-ac", 2, path))


def main():
    if len(sys.argv) not in (2, 3):
        raise SystemExit(__doc__)
    analyzer = Path(sys.argv[1]) / "meridian"
    repetitions = int(sys.argv[2]) if len(sys.argv) == 3 else 3
    with tempfile.TemporaryDirectory() as name:
        for codec, words in CODECS.items():
            clip = Path(name) / "clip.mov"
            make_clip(clip, words)
            # As the codec decodes to, so that the hash is of the same samples.
            sound = ["-c:a", "pcm_s32le"]
            for further, note in ((",signalstats", ""), ("", ", beside no signalstats")):
                compare(f"deep analysis, {codec}{note}", [analyzer, "analyze", "--deep", clip],
                        ffmpeg("-i", clip, "-map", "0:v", "-map", "0:a", "-vf",
                               "blackdetect,freezedetect,scdet,idet" + further, "-af",
                               "silencedetect=n=-60dB:d=2,ebur128=peak=sample+true", *sound, "-f", "streamhash",
                               "-hash", "md5", Path(name) / "hashes"), repetitions)


if __name__ == "__main__":
    main()
