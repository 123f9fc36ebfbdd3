"""Measures a list of 40 short clips on a cluster of Slurm of this machine alone, beside one process.

    python3 bench/farm.py build/release/bin [REPETITIONS]

The cluster has two CPUs and lives in a directory of its own; munge and slurm-wlm have to be installed. Each row gives the
time from handing the list over to its summary, and its ratio to the time of "transcode --jobs" in the same round. Slurm
looks for the next task once a second, so that the shortest clips cost most.
"""

import os
import shutil
import socket
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from transcode import ffmpeg, run

JOBS = 40
CLIPS = {
    "5 s of 1920x1080": ("1920x1080", 5, "960x540"),
    "2 s of 960x540": ("960x540", 2, "480x270"),
}
WAYS = {
    "a task for each job": [],
    "a task for each 5 jobs": ["--per-task", "5"],
    "a task of 2 CPUs for each job": ["--cpus", "2"],
}


def daemon(name):
    found = shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin:/sbin")
    if not found:
        raise SystemExit(f"{name} is not installed")
    return found


def free_port():
    with socket.socket() as opened:
        opened.bind(("127.0.0.1", 0))
        return opened.getsockname()[1]


class Cluster:
    """Slurm's daemons, in a directory."""

    def __init__(self, directory):
        self.directory = directory
        for name in ("munge", "state", "spool", "log"):
            (directory / name).mkdir()
        key = directory / "munge/key"
        key.write_bytes(os.urandom(1024))
        key.chmod(0o400)
        (directory / "munge").chmod(0o700)
        host = socket.gethostname().split(".")[0]
        user = subprocess.run(["id", "-un"], capture_output=True, text=True).stdout.strip()
        munge = directory / "munge"
        (directory / "slurm.conf").write_text(f"""ClusterName=bench
SlurmctldHost={host}(127.0.0.1)
AuthType=auth/munge
AuthInfo=socket={munge}/sock
SlurmUser={user}
SlurmdUser={user}
StateSaveLocation={directory}/state
SlurmdSpoolDir={directory}/spool
SlurmctldPidFile={directory}/slurmctld.pid
SlurmdPidFile={directory}/slurmd.pid
SlurmctldLogFile={directory}/log/slurmctld
SlurmdLogFile={directory}/log/slurmd
SlurmctldPort={free_port()}
SlurmdPort={free_port()}
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
ReturnToService=2
JobAcctGatherType=jobacct_gather/none
MailProg=/bin/true
SlurmdParameters=config_overrides
SchedulerParameters=sched_interval=1,sched_min_interval=0,batch_sched_delay=0
NodeName={host} NodeAddr=127.0.0.1 CPUs=2 RealMemory=500 State=UNKNOWN
PartitionName=all Nodes={host} Default=YES MaxTime=INFINITE State=UP
""")
        self.environment = {**os.environ, "SLURM_CONF": str(directory / "slurm.conf")}
        self.call(daemon("munged"), f"--key-file={munge}/key", f"--socket={munge}/sock", f"--pid-file={munge}/pid",
                  f"--log-file={munge}/log", f"--seed-file={munge}/seed", "--force")
        self.call(daemon("slurmctld"))
        self.call(daemon("slurmd"))
        while self.call("sinfo", "--noheader", "--format=%T") != "idle\n":
            time.sleep(0.1)

    def call(self, *words):
        return subprocess.run(list(map(str, words)), env=self.environment, check=True, stdout=subprocess.PIPE,
                              text=True).stdout

    def end(self):
        for name in ("slurmd.pid", "slurmctld.pid", "munge/pid"):
            try:
                os.kill(int((self.directory / name).read_text()), 9)
            except (OSError, ValueError):
                pass


def write_clip(path, dimensions, seconds):
    run(ffmpeg("-f", "lavfi", "-i", f"testsrc2=size={dimensions}:rate=25:duration={seconds}", "-f", "lavfi", "-i",
               f"sine=duration={seconds}", "-vf", "noise=alls=8:allf=t", "-c:v", "prores_ks", "-c:a", "pcm_s16le", path))


def write_list(directory, name, clip, dimensions):
    """Writes a list whose outputs are in a directory of their own."""
    (directory / name).mkdir()
    path = directory / f"{name}.txt"
    path.write_text("".join(f"-in_0_0 {clip} -out {directory}/{name}/{job}.mov -vcodec h264 -vbd 8 "
                            f"-dims {dimensions}\n" for job in range(JOBS)))
    return path


def measure(cluster, directory, meridian, repetitions, clip, dimensions):
    """Prints a row for each way to hand over the list of a clip."""
    ratios = {way: [] for way in WAYS}
    for repetition in range(repetitions):
        jobs = write_list(directory, f"alone{repetition}", clip, dimensions)
        start = time.monotonic()
        cluster.call(meridian, "transcode", "--jobs", jobs)
        alone = time.monotonic() - start
        for place, (way, options) in enumerate(WAYS.items()):
            jobs = write_list(directory, f"farm{repetition}-{place}", clip, dimensions)
            start = time.monotonic()
            cluster.call(meridian, "farm", "submit", *options, jobs)
            summary = Path(f"{jobs}.summary")
            while not summary.exists():
                time.sleep(0.05)
            elapsed = time.monotonic() - start
            if summary.read_text() != f"{JOBS} done, 0 failed\n":
                raise SystemExit(summary.read_text())
            ratios[way].append((elapsed / alone, elapsed, alone))
    for way, found in ratios.items():
        ratio, elapsed, alone = (statistics.median(column) for column in zip(*found))
        print(f"    {way}: {ratio:.2f} ({elapsed:.1f} s to {alone:.1f} s)", flush=True)


def main():
    if len(sys.argv) not in (2, 3):
        raise SystemExit(__doc__)
    meridian = Path(sys.argv[1]).resolve() / "meridian"
    repetitions = int(sys.argv[2]) if len(sys.argv) == 3 else 3
    with tempfile.TemporaryDirectory() as name:
        cluster = Cluster(Path(name))
        try:
            for place, (clip, (dimensions, seconds, proxy)) in enumerate(CLIPS.items()):
                directory = Path(name) / f"clips{place}"
                directory.mkdir()
                write_clip(directory / "clip.mov", dimensions, seconds)
                print(f"{JOBS} clips, {clip}:", flush=True)
                measure(cluster, directory, meridian, repetitions, directory / "clip.mov", proxy)
        finally:
            cluster.end()


if __name__ == "__main__":
    main()
