#!/usr/bin/env python3
"""Prints what a copying application copies of a camera card, and why it leaves out the rest.

    walk_card.py /Volumes/A001
"""

import os
import sys

import meridian


def main() -> int:
    if len(sys.argv) != 2:
        print(f"usage: {sys.argv[0]} CARD", file=sys.stderr)
        return 2
    settings = meridian.ItemFilter(
        ignore_hidden_items=True,
        force_path_components=meridian.default_force_ignore_path_components(),
    )
    errors: list[meridian.TreeWalkError] = []
    left_out: list[meridian.TreeItem] = []
    files = size = 0
    for item in meridian.walk_tree(sys.argv[1], settings, errors.append):
        if item.decision.is_ignored:
            left_out.append(item)
        elif item.kind is meridian.ItemKind.file:
            bytes_of_file = os.lstat(item).st_size
            print(f"{bytes_of_file:>15,}  {os.path.relpath(item, sys.argv[1])!a}")
            files += 1
            size += bytes_of_file
    print(f"{size:>15,}  bytes in {files} files to copy")
    for item in left_out:
        print(f"{'left out':>15}  {os.path.relpath(item, sys.argv[1])!a}: {item.decision.rule.value}")
    for error in errors:
        print(error, file=sys.stderr)
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
