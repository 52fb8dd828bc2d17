"""The folder in which faults are planted and built."""

import collections
import os
import re
import subprocess

from build_file import build_text
from planter import plant
from release_build import LIBRARIES, PROGRAMS, ReleaseBuild

TOOLS = "tools/mutation"
OWN_HEADERS = ("kescorexml/", "kesplatform/")


class Workshop:
    def __init__(self, root, jobs, release_folder):
        self.root = root
        self.jobs = jobs
        self.folder = os.path.join(root, "build", "mutation")
        self.planted = os.path.join(self.folder, "planted")
        os.makedirs(self.folder, exist_ok=True)
        self.scope = self.list_files("main/parser", "platform")
        self.makes_release = not release_folder
        if self.makes_release:
            release_folder = os.path.join(root, "build", "release")
            ReleaseBuild.configure(root)
        self.release = ReleaseBuild(root, release_folder)

    def path(self, name):
        return os.path.join(self.folder, name)

    def list_files(self, *folders):
        """The sources below the folders."""
        names = subprocess.check_output(["git", "ls-files", "-z", "--cached", "--others",
                                         "--exclude-standard", "--", *folders], cwd=self.root)
        return sorted(name for name in names.decode().split("\0") if name.endswith((".cpp", ".h"))
                      and os.path.isfile(os.path.join(self.root, name)))

    def includes(self, name, marks='<"'):
        with open(os.path.join(self.root, name), encoding="utf-8") as file:
            return re.findall(rf'^#include [{marks}]([^>"]+)[>"]', file.read(), re.M)

    def externals(self, library):
        """A header of all headers of other projects that the sources of a library include."""
        headers = set()
        for name in self.scope:
            if name.startswith("platform/public/") or (
                    name.startswith("platform/") == (library == "kesplatform")):
                headers.update(self.includes(name, "<"))
        # Some are included only where the standard library has them.
        lines = [f"#if __has_include(<{h}>)\n#include <{h}>\n#endif\n"
                 for h in sorted(headers) if not h.startswith(OWN_HEADERS)]
        path = self.path(f"externals.{library}.h")
        write_changed(path, "".join(lines))
        return path

    def tests_header(self, program):
        """A header of what the tests of a program include, to be compiled with the planted headers."""
        path = self.path(f"tests.{program}.h")
        write_changed(path, f'#include "{self.release.tests_header(program)}"\n')
        return path

    def plant(self, faults):
        """Writes the sources with all of `faults`; leaves alone those that stay as they are. Then what
        is not touched is made.
        """
        by_file = collections.defaultdict(list)
        for fault in faults:
            by_file[fault.file].append(fault)
        switch_header = os.path.join(self.root, TOOLS, "MutationSwitch.h")
        for name in self.scope:
            with open(os.path.join(self.root, name), encoding="latin-1", newline="") as file:
                text = file.read()
            if name in by_file:
                text = plant(text, by_file[name], switch_header)
            write_changed(os.path.join(self.planted, name), text)
        touched = self.touched(set(by_file))
        write_changed(self.path("build.ninja"), build_text(
            self.release, self.planted, self.folder,
            os.path.join(self.root, TOOLS, "TestRecorder.cpp"), touched,
            {library: self.externals(library) for library in LIBRARIES}
            | {program: self.tests_header(program) for program in PROGRAMS}))
        if self.makes_release:
            untouched = {path for objects in self.release.objects.values()
                         for name, path in objects.items() if name not in touched}
            self.release.make(sorted(untouched), self.jobs, self.path("release.log"))

    def touched(self, files):
        """What is to be compiled anew: the sources that hold a fault, and those that include a header
        that does, by whatever way. Of tests, those that get at a private header, and those of the
        platform.
        """
        private = [name for name in files if not name.startswith("platform/public/")]
        libraries = self.includers(files, self.scope + self.list_files("public"))
        headers = [name for name in self.scope if name.endswith(".h")]
        tests = self.includers(private, self.list_files("tests") + headers)
        platform_tests = self.includers(files, self.list_files("tests/platform") + headers)

        def is_touched(name):
            if name in self.release.united:
                return any(map(is_touched, self.release.united[name]))
            if name.startswith("tests/platform/"):
                return os.path.basename(name) in platform_tests
            return os.path.basename(name) in (tests if name.startswith("tests/") else libraries)

        return [name for name in self.release.commands if is_touched(name)]

    def includers(self, files, candidates):
        """The base names of the files and of the candidates that include them."""
        included = {name: {os.path.basename(header) for header in self.includes(name)}
                    for name in candidates}
        touched = {os.path.basename(name) for name in files}
        count = 0
        while count != len(touched):
            count = len(touched)
            touched |= {os.path.basename(name) for name, headers in included.items()
                        if headers & touched}
        return touched

    def compile(self, faults, report):
        """Builds the tests and returns the faults without those that do not compile."""
        for target in ("libraries", "all"):
            while True:
                self.plant(faults)
                output = self.run_build(target)
                if output is None:
                    break
                broken = self.broken_lines(output)
                kept = [f for f in faults if not broken[f.file].intersection(f.lines())]
                if len(kept) == len(faults):
                    raise SystemExit(f"{output[-4000:]}\nmutate: the build fails for other reasons")
                report(f"{len(faults) - len(kept)} faults do not compile")
                faults = kept
        return faults

    def run_build(self, target):
        """Nothing when the build goes well, else what it printed."""
        result = subprocess.run(["ninja", "-C", self.folder, f"-j{self.jobs}", "-k0", target],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                errors="replace")
        with open(self.path("build.log"), "w") as log:
            log.write(result.stdout)
        return None if result.returncode == 0 else result.stdout

    def broken_lines(self, output):
        """The lines that the compiler's errors name, by file; or else those that instantiate them."""
        lines = collections.defaultdict(set)
        for block in re.split(r"\n(?=FAILED: )", output):
            named = re.findall(r"^([^\s:]+):(\d+):\d+: +(?:fatal )?error:", block, re.M)
            if not any(name.startswith(self.planted) for name, _ in named):
                named = re.findall(r"([^\s:]+):(\d+):\d+: +required (?:from|by)", block)
            for name, line in named:
                lines[os.path.relpath(name, self.planted)].add(int(line))
        return lines


def write_changed(path, text):
    """Bytes stand as characters of that number, as the planter counts them."""
    try:
        with open(path, encoding="latin-1", newline="") as file:
            if file.read() == text:
                return
    except FileNotFoundError:
        os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="latin-1", newline="") as file:
        file.write(text)
