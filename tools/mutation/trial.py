"""Runs tests against one fault at a time."""

import collections
import concurrent.futures
import os
import resource
import signal
import struct
import subprocess
import threading
import time
from dataclasses import dataclass

TABLE_BYTES = 65536
MEMORY_BYTES = 4 << 30


@dataclass
class Test:
    program: str
    name: str
    stem: str  # of its source file: FooTest
    seconds: float


@dataclass
class Outcome:
    """What became of a fault, and by what or after what.

    "killed", "survived", "unreached"; or "constant" for one in a function that only the compiler
    calls, where no switch can be thrown.
    """

    verdict: str
    detail: str


class Table:
    """The file through which a test program learns which fault is on; see MutationSwitch.h."""

    def __init__(self, path):
        self.path = path
        self.select(0)

    def select(self, number):
        with open(self.path, "wb") as file:
            file.write(struct.pack("=I", number).ljust(TABLE_BYTES, b"\0"))


def run_tests(program, table, tests_file, seconds, cpu_seconds, extra=None):
    """The exit status of a test program; 124 when it takes longer. Ends all that it has started."""
    environment = dict(os.environ, MUTATION_TABLE=table.path, **(extra or {}))
    command = [program, "--gtest_brief=1", "--gtest_catch_exceptions=1"]
    if tests_file:
        command.append(f"--gtest_flagfile={tests_file}")

    def limit():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY_BYTES, MEMORY_BYTES))
        if cpu_seconds:
            signal.setitimer(signal.ITIMER_PROF, cpu_seconds)

    process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               preexec_fn=limit, start_new_session=True)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        return 124
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


class Coverage:
    """Which tests pass which switches."""

    def __init__(self):
        self.tests = {}
        self.reaching = collections.defaultdict(set)
        self.before_tests = set()
        self.lock = threading.Lock()

    def read(self, program, path):
        with self.lock, open(path) as file:
            for line in file:
                name, source, seconds, passed = line.rstrip("\n").split("\t")
                numbers = {int(n) for n in passed.split()}
                if name == "*":
                    self.before_tests |= numbers
                    continue
                stem = os.path.splitext(os.path.basename(source))[0]
                key = (program, name)
                self.tests[key] = Test(program, name, stem, float(seconds))
                for number in numbers:
                    self.reaching[number].add(key)

    def tests_for(self, fault):
        """In the order in which they are worth running: those written for the file, then the quick.

        A switch that is passed once a process, or before any test, is ascribed to one test, or to
        none, although others depend on it: the tests of the file are tried in any case.
        """
        stem = os.path.splitext(os.path.basename(fault.file))[0]
        keys = set(self.reaching.get(fault.number, ()))
        if not keys and fault.number not in self.before_tests:
            return []
        own = {key for key, test in self.tests.items() if test.stem == stem + "Test"}
        if fault.number in self.before_tests:
            keys = set(self.tests)
        tests = [self.tests[key] for key in keys | own]
        return sorted(tests, key=lambda t: (t.seconds > 1 or (t.program, t.name) not in own,
                                            t.seconds, t.name))


class Trials:
    """Tries faults in one table, one after the other."""

    # A process for the tests of the first so many seconds, then one for the next, and so on: most
    # faults fall to one of the first tests.
    STEPS = (0.1, 1.0, 5.0, 15.0, 40.0)

    def __init__(self, workshop, coverage, name, budget):
        self.workshop = workshop
        self.coverage = coverage
        self.table = Table(workshop.path(f"table.{name}"))
        self.tests_file = workshop.path(f"tests.{name}")
        self.budget = budget

    def batches(self, tests):
        """Lists of tests of one program each; ends when the budget of seconds is used up."""
        steps = iter(self.STEPS)
        limit = next(steps)
        batch, seconds, total = [], 0.0, 0.0
        for test in tests:
            if batch and seconds + test.seconds > limit:
                yield from self.by_program(batch)
                batch, seconds, limit = [], 0.0, next(steps, limit)
            if total + test.seconds > self.budget:
                break
            batch.append(test)
            seconds += test.seconds
            total += test.seconds
        yield from self.by_program(batch)

    @staticmethod
    def by_program(batch):
        for program in sorted({test.program for test in batch}, reverse=True):
            yield [test for test in batch if test.program == program]

    def try_fault(self, fault):
        tests = self.coverage.tests_for(fault)
        if not tests:
            verdict = "constant" if fault.is_constexpr else "unreached"
            return Outcome(verdict, "no test passes it")
        tried = 0
        for batch in self.batches(tests):
            status = self.run(fault.number, batch)
            if status != 0:
                how = {124: "time", -signal.SIGPROF: "time", -signal.SIGKILL: "time"}.get(status, status)
                return Outcome("killed", f"{how} in {len(batch)} tests from {batch[0].name}")
            tried += len(batch)
        return Outcome("survived", f"{tried} of the {len(tests)} tests that reach it")

    def run(self, number, batch):
        with open(self.tests_file, "w") as file:
            file.write("--gtest_filter=" + ":".join(test.name for test in batch) + "\n")
        self.table.select(number)
        seconds = sum(test.seconds for test in batch)
        program = self.workshop.path(batch[0].program)
        # What is busy for that much longer goes round for ever; what is idle waits for ever, unless
        # other programs keep the cores busy.
        return run_tests(program, self.table, self.tests_file, 60 + 40 * seconds,
                         0.8 + 5 * seconds)


def record(workshop, programs, jobs, report):
    """Runs all tests once, without a fault, to learn what each passes."""
    start = time.monotonic()
    coverage = Coverage()
    # More parts than processes, since some tests take long.
    parts = 4 * jobs

    def run_part(program, part):
        path = workshop.path(f"coverage.{program}.{part}")
        if os.path.exists(path):
            os.remove(path)
        table = Table(workshop.path(f"table.record.{program}.{part}"))
        status = run_tests(workshop.path(program), table, None, 7200, 0,
                           {"MUTATION_RECORD": path, "GTEST_TOTAL_SHARDS": str(parts),
                            "GTEST_SHARD_INDEX": str(part)})
        os.remove(table.path)
        if status != 0:
            report(f"part {part} of {program} fails without a fault ({status})")
        coverage.read(program, path)

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        tasks = [pool.submit(run_part, program, part) for part in range(parts)
                 for program in programs]
        for task in tasks:
            task.result()
    report(f"{len(coverage.tests)} tests recorded in {time.monotonic() - start:.0f} s")
    return coverage
