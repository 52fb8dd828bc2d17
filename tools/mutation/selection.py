"""Which of all faults are planted."""

import collections
import hashlib
import math
import re
import subprocess


def sample(faults, number, seed):
    """About `number` faults, of each file its share and a few at least.

    A hash decides, so that the same seed finds the same faults after changes elsewhere.
    """
    by_file = collections.defaultdict(list)
    for fault in faults:
        by_file[fault.file].append(fault)
    chosen = []
    for file in sorted(by_file):
        share = max(3, math.ceil(number * len(by_file[file]) / len(faults)))
        ordered = sorted(by_file[file], key=lambda f: _rank(f, seed))
        chosen += ordered[:share]
    return chosen


def _rank(fault, seed):
    return hashlib.sha1(repr((seed, fault.key())).encode()).digest()


def changed_lines(root, commit):
    """The lines, by file, that differ from a commit in the working tree."""
    diff = subprocess.check_output(
        ["git", "diff", "--unified=0", "--no-color", "--no-ext-diff", "--src-prefix=a/", "--dst-prefix=b/",
         commit, "--", "main/parser", "platform"],
        cwd=root, text=True, errors="replace")
    lines = collections.defaultdict(set)
    file = None
    for text in diff.splitlines():
        if text.startswith("+++ "):
            file = text[6:]
        match = re.match(r"@@ -\S+ \+(\d+)(?:,(\d+))? @@", text)
        if match:
            first, count = int(match[1]), int(match[2] or 1)
            lines[file].update(range(first, first + count))
    return lines
