#!/usr/bin/env python3
"""Checks a list of transcode jobs for typos: one argument vector a line, quoted as for a shell.

    check_job_list.py jobs.txt

Exits with 1 if a line has a flag that does not exist, a value that does not fit, or a word that belongs to no flag.
"""

import shlex
import sys

import meridian


def problems(words: list[str]) -> list[str]:
    """Returns what a person should look at, a line for each."""
    explanation = meridian.explain(words)
    found = [str(entry.error) for entry in explanation.rejected_entries]
    found += [str(word.warning) for word in explanation.dropped_words]
    # A warning without a remedy only reports what happened.
    found += [str(w) for setting in explanation.settings for w in setting.warnings if w.remedy]
    return found


def main() -> int:
    if len(sys.argv) != 2:
        print(f"usage: {sys.argv[0]} JOBS", file=sys.stderr)
        return 2
    jobs = doubtful = 0
    with open(sys.argv[1], encoding="utf-8", errors="surrogateescape") as lines:
        for number, line in enumerate(lines, start=1):
            words = shlex.split(line, comments=True)
            if not words:
                continue
            jobs += 1
            found = problems(words)
            if found:
                doubtful += 1
                print(f"line {number}:", *found, sep="\n  ")
    print(f"{jobs} jobs, {doubtful} with problems")
    return 1 if doubtful else 0


if __name__ == "__main__":
    sys.exit(main())
