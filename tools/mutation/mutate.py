"""Plants faults and says which of them no test notices; scripts/mutate --help describes it."""

import argparse
import collections
import json
import os
import pickle
import queue
import re
import sys
import threading

from finder import find_faults, precompile
from known import as_entry, find_lapsed, read_known
from release_build import PROGRAMS
from selection import changed_lines, sample
from trial import Trials, record
from workshop import TOOLS, Workshop

ROOT = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", ".."))
LIMIT_OF_FAULTS = 60000
UNEXPLAINED_PERCENT = 2


def report(text):
    print(f"mutate: {text}", file=sys.stderr, flush=True)


def options():
    parser = argparse.ArgumentParser(
        prog="scripts/mutate",
        description="Plants faults, one at a time, into main/parser and platform, runs the tests that"
        " reach them, and lists the faults that no test notices. Fails when more than"
        f" {UNEXPLAINED_PERCENT} %% of them are neither noticed nor explained in"
        f" {TOOLS}/equivalent.txt.")
    parser.add_argument("--faults", type=int, default=1200,
                        help="how many, spread over all files (default: %(default)s)")
    parser.add_argument("--seed", default="1", help="which of them (default: %(default)s)")
    parser.add_argument("--since", metavar="COMMIT",
                        help="all faults in lines that differ from COMMIT, in place of a sample")
    parser.add_argument("--file", metavar="REGEX", default="",
                        help="only files whose paths match the regular expression")
    parser.add_argument("--budget", type=float, default=60,
                        help="seconds of tests after which a fault counts as unnoticed"
                        " (default: %(default)s)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(),
                        help="processes at a time (default: one a core)")
    parser.add_argument("--release", metavar="FOLDER", type=os.path.realpath,
                        help="a finished build for releases, to be taken as it is")
    parser.add_argument("--again", action="store_true",
                        help="try, with the tests as they are now, what the last run planted and did"
                        " not kill; the sources must be as they were")
    return parser.parse_args()


def choose(workshop, wanted):
    """The faults to be planted, with their numbers."""
    files = [name for name in workshop.scope if re.search(wanted.file, name)]
    if wanted.since:
        lines = changed_lines(ROOT, wanted.since)
        files = [name for name in files if name in lines]
    faults = [f for f in find_all(workshop, files, wanted.jobs) if f.file in files]
    report(f"{len(faults)} places for faults in {len({f.file for f in faults})} files")
    if wanted.since:
        chosen = [f for f in faults if lines[f.file].intersection(f.lines())]
    else:
        chosen = sample(faults, wanted.faults, wanted.seed)
    if len(chosen) > LIMIT_OF_FAULTS:
        raise SystemExit("mutate: too many faults for one table")
    for number, fault in enumerate(chosen, 1):
        fault.number = number
    return chosen


def find_all(workshop, files, jobs):
    """The faults in the files and some others, by way of the sources that include them."""
    prepared = {}
    tasks = []
    for name in sorted(workshop.touched(files)):
        library = workshop.release.library_of.get(name)
        if not library:
            continue
        flags = workshop.release.analysis_flags(name)
        if library not in prepared:
            prepared[library] = precompile(workshop.externals(library), flags)
        tasks.append((name, prepared[library] + flags))
    return find_faults(ROOT, set(workshop.scope), tasks, jobs, workshop.path("places"))


def try_all(workshop, coverage, faults, wanted):
    """The outcome of each fault. Also written to a file as they come, a line a fault."""
    outcomes = {}
    waiting = queue.SimpleQueue()
    for fault in faults:
        waiting.put(fault)
    lock = threading.Lock()

    def work(name, log):
        trials = Trials(workshop, coverage, name, wanted.budget)
        while True:
            try:
                fault = waiting.get_nowait()
            except queue.Empty:
                return
            outcome = trials.try_fault(fault)
            with lock:
                outcomes[fault.number] = outcome
                log.write(json.dumps([outcome.verdict, outcome.detail, str(fault), fault.key()]) + "\n")
                log.flush()
                if len(outcomes) % 100 == 0:
                    report(f"{len(outcomes)} of {len(faults)} tried")

    with open(results_path(workshop), "w") as log:
        threads = [threading.Thread(target=work, args=(n, log)) for n in range(wanted.jobs)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    return outcomes


def results_path(workshop):
    return workshop.path("results")


def planted_path(workshop):
    return workshop.path("planted.faults")


def last_run(workshop):
    """What was planted, and that part of it which was not killed."""
    with open(planted_path(workshop), "rb") as file:
        planted = pickle.load(file)
    with open(results_path(workshop)) as log:
        results = [json.loads(line) for line in log]
    alive = {tuple(key) for verdict, _, _, key in results if verdict in ("survived", "unreached")}
    return planted, [fault for fault in planted if fault.key() in alive]


def conclude(faults, outcomes):
    """Prints the survivors and the sum; returns the exit status."""
    constant = [f for f in faults if outcomes[f.number].verdict == "constant"]
    faults = [f for f in faults if outcomes[f.number].verdict != "constant"]
    known = read_known(os.path.join(ROOT, TOOLS, "equivalent.txt"))
    alive = [f for f in faults if outcomes[f.number].verdict != "killed"]
    unexplained = [f for f in alive if f.key() not in known]
    for fault in unexplained:
        outcome = outcomes[fault.number]
        print(f"\n# {fault.file}:{fault.line}: {fault.kind}, {outcome.verdict}: {outcome.detail}")
        print(as_entry(fault))
    for fault in faults:
        if outcomes[fault.number].verdict == "killed" and fault.key() in known:
            report(f"listed as equivalent, but killed: {fault}")
    for file, line, _ in find_lapsed(ROOT, known):
        report(f"listed as equivalent, but gone: {file}: {line}")
    kinds = collections.Counter(f.kind for f in faults)
    percent = 100 * len(unexplained) / max(1, len(faults))
    report(", ".join(f"{count} {kind}" for kind, count in kinds.most_common()))
    report(f"{len(faults)} faults in {len({f.file for f in faults})} files:"
           f" {len(faults) - len(alive)} killed, {len(alive) - len(unexplained)} equivalent,"
           f" {len(unexplained)} unexplained ({percent:.1f} %)")
    if constant:
        report(f"not counted: {len(constant)} in functions that only the compiler calls")
    return 1 if percent > UNEXPLAINED_PERCENT else 0


def main():
    wanted = options()
    workshop = Workshop(ROOT, wanted.jobs, wanted.release)
    if wanted.again:
        planted, tried = last_run(workshop)
    else:
        planted = choose(workshop, wanted)
        report(f"{len(planted)} faults chosen; building them takes a while")
    planted = workshop.compile(planted, report)
    with open(planted_path(workshop), "wb") as file:
        pickle.dump(planted, file)
    if not wanted.again:
        tried = planted
    coverage = record(workshop, PROGRAMS, wanted.jobs, report)
    return conclude(tried, try_all(workshop, coverage, tried, wanted))


if __name__ == "__main__":
    sys.exit(main())
