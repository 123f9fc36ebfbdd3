#!/usr/bin/env python3
"""Prints a list of transcode jobs with a LUT added to each: one argument vector a line, quoted as for a shell.

    add_lut.py show.cube jobs.txt > graded.txt

Jobs that have a LUT already keep theirs.
"""

import os
import shlex
import sys

import meridian


def main() -> int:
    if len(sys.argv) != 3:
        print(f"usage: {sys.argv[0]} LUT JOBS", file=sys.stderr)
        return 2
    path = os.path.abspath(sys.argv[1])
    meridian.set_logger(lambda level, message: None)  # the error says it
    try:
        facts = meridian.ParsedLutFile(path).description
    except meridian.LutError as error:
        print(error, file=sys.stderr)
        return 1
    print(f"adding a {facts.dimensions.description} of size {facts.size}", file=sys.stderr)
    with open(sys.argv[2], encoding="utf-8", errors="surrogateescape") as lines:
        for line in lines:
            words = shlex.split(line, comments=True)
            if not words:
                continue
            job = meridian.TranscodeCliArguments(words, maintain_original_ordering=True)
            if job.unknown_flags:
                print(f"left out, since they are no flags: {' '.join(job.unknown_flags)}", file=sys.stderr)
            if job.lut_file is None:
                job.lut_file = path
            print(shlex.join(job.command_line()))
    return 0


if __name__ == "__main__":
    sys.exit(main())
