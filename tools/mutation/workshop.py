"""The folder in which planted sources are compiled and linked with the tests.

Tests, and what no fault touches, are taken as the build for releases has compiled them. Objects with
faults come first in the link, so that of inline functions that the tests have too, theirs are used.
"""

import collections
import json
import os
import re
import shlex
import subprocess

from planter import plant

LIBRARIES = ("kesplatform", "kescorexml_objects")
PROGRAMS = ("platform_tests", "parser_tests")
TOOLS = "tools/mutation"
LINKED = ("-lgmock_main -lgmock -lgtest -lxerces-c -lexpat -lQt6Core -lpthread").split()
# What is planted is neither warned about nor debugged, and built quickly.
FLAGS = "-w -O1 -g0"
OWN_HEADERS = ("kescorexml/", "kesplatform/")


class Workshop:
    def __init__(self, root, jobs, release):
        self.root = root
        self.jobs = jobs
        self.release = release or os.path.join(root, "build", "release")
        self.folder = os.path.join(root, "build", "mutation")
        self.planted = os.path.join(self.folder, "planted")
        os.makedirs(self.folder, exist_ok=True)
        self.scope = sorted(name for name in self.list_files("main/parser", "platform")
                            if name.endswith((".cpp", ".h")))
        if not release:
            self.build_release()
        self.read_commands()

    def list_files(self, *folders):
        names = subprocess.check_output(["git", "ls-files", "-z", "--cached", "--others",
                                         "--exclude-standard", "--", *folders], cwd=self.root)
        return [name for name in names.decode().split("\0")
                if name and os.path.isfile(os.path.join(self.root, name))]

    def build_release(self):
        for command in (["cmake", "--preset", "release", "-DKESCOREXML_TESTS=ON"],
                        ["cmake", "--build", "--preset", "release", f"-j{self.jobs}", "--target",
                         *PROGRAMS]):
            with open(os.path.join(self.folder, "release.log"), "w") as log:
                subprocess.run(command, cwd=self.root, check=True, stdout=log)

    def read_commands(self):
        """How the release compiles the sources in scope; its objects of the libraries and tests."""
        with open(os.path.join(self.release, "compile_commands.json")) as file:
            entries = json.load(file)
        home = os.path.dirname(os.path.dirname(self.release))
        self.commands = {}
        self.library_of = {}
        self.objects = collections.defaultdict(dict)
        for entry in entries:
            output = re.search(r" -o (\S+)", entry["command"])[1]
            target = re.search(r"CMakeFiles/(\w+)\.dir/", output)
            if not target or target[1] not in LIBRARIES + PROGRAMS or output.endswith(".gch"):
                continue
            name = os.path.relpath(entry["file"], home)
            self.objects[target[1]][name] = os.path.join(self.release, output)
            if name in self.scope:
                command = re.sub(re.escape(home) + "/(?!build/)", self.root + "/", entry["command"])
                self.commands[name] = command
                self.library_of[name] = target[1]

    def flags(self, name, root):
        """The flags for a source, with the sources in scope below `root`."""
        words = shlex.split(self.commands[name])
        kept = words[1:words.index("-o")]
        for folder in ("main/parser", "platform/public"):
            kept = [word.replace(f"{self.root}/{folder}", f"{root}/{folder}") for word in kept]
        return kept

    def analysis_flags(self, name):
        """Those that tell the analysing compiler what the sources mean."""
        flags = []
        words = iter(self.flags(name, self.root))
        for word in words:
            if word in ("-isystem", "-include"):
                flags += [word, next(words)]
            elif word.startswith(("-I", "-D", "-std")):
                flags.append(word)
        return flags

    def externals(self, library):
        """A header of all headers of other projects that the sources of a library include."""
        names = [n for n in self.scope if n.startswith("platform/") == (library == "kesplatform")
                 or n.startswith("platform/public/")]
        headers = set()
        for name in names:
            with open(os.path.join(self.root, name), encoding="utf-8") as file:
                headers.update(re.findall(r"^#include (<[^>]+>)", file.read(), re.M))
        lines = [f"#include {h}\n" for h in sorted(headers) if not h[1:].startswith(OWN_HEADERS)]
        path = os.path.join(self.folder, f"externals.{library}.h")
        write_changed(path, "".join(lines))
        return path

    def plant(self, faults):
        """Writes the sources with all of `faults`; leaves alone those that stay as they are."""
        by_file = collections.defaultdict(list)
        for fault in faults:
            by_file[fault.file].append(fault)
        header = os.path.join(self.root, TOOLS, "MutationSwitch.h")
        for name in self.scope:
            with open(os.path.join(self.root, name), encoding="latin-1", newline="") as file:
                text = file.read()
            if name in by_file:
                text = plant(text, by_file[name], header)
            write_changed(os.path.join(self.planted, name), text)
        self.touched = self.touched_sources(set(by_file))

    def touched_sources(self, files):
        """The sources that hold a fault or include, by whatever way, a header that does."""
        included = {}
        for name in self.scope:
            with open(os.path.join(self.root, name), encoding="utf-8") as file:
                included[name] = {os.path.basename(h) for h in
                                  re.findall(r'^#include [<"]([^>"]+)[>"]', file.read(), re.M)}
        public = {}
        for name in self.list_files("public"):
            with open(os.path.join(self.root, name), encoding="utf-8") as file:
                public[name] = {os.path.basename(h) for h in
                                re.findall(r'^#include [<"]([^>"]+)[>"]', file.read(), re.M)}
        included.update(public)
        touched = {os.path.basename(name) for name in files}
        while True:
            more = {os.path.basename(name) for name, headers in included.items()
                    if headers & touched} - touched
            if not more:
                break
            touched |= more
        return [name for name in self.commands if os.path.basename(name) in touched]

    def write_build(self):
        """The build.ninja of all that is compiled anew."""
        lines = ["rule cxx", "  command = $launcher c++ $flags -MD -MF $out.d -c $in -o $out",
                 "  depfile = $out.d", "  deps = gcc",
                 "rule share", "  command = c++ -shared $in -lQt6Core -o $out",
                 "rule link", "  command = c++ @$out.rsp -o $out", "  rspfile = $out.rsp",
                 "  rspfile_content = $in $libraries", "launcher =", ""]
        planted = {}
        for library in LIBRARIES:
            sources = [n for n in self.touched if self.library_of[n] == library]
            if not sources:
                continue
            externals = self.externals(library)
            flags = " ".join(map(shlex.quote, self.flags(sources[0], self.planted)))
            lines += [f"build {externals}.gch: cxx {externals}", f"  flags = {flags} {FLAGS} -x c++-header"]
            for name in sources:
                planted[name] = os.path.join("objects", name + ".o")
                flags = " ".join(map(shlex.quote, self.flags(name, self.planted)))
                lines += [f"build {planted[name]}: cxx {self.planted}/{name} | {externals}.gch",
                          f"  flags = -include {externals} {flags} {FLAGS}"]
        recorder = os.path.join(self.root, TOOLS, "TestRecorder.cpp")
        lines += [f"build objects/TestRecorder.o: cxx {recorder}", "  flags = -std=c++20 -O1"]
        # Tests put functions of their own in place of some of the platform's, a shared library.
        platform, library = (
            [planted.get(name, kept) for name, kept in self.objects[library].items()]
            for library in LIBRARIES)
        shared = os.path.join(self.folder, "libkesplatform.so")
        lines.append(f"build {shared}: share {' '.join(platform)}")
        libraries = sorted(library, key=os.path.isabs)
        libraries += ["objects/TestRecorder.o", shared]
        for program in PROGRAMS:
            tests = list(self.objects[program].values())
            lines += [f"build {program}: link {' '.join(libraries + tests)}",
                      f"  libraries = -Wl,-rpath,{self.folder} {' '.join(LINKED)}"]
        lines.append(f"build libraries: phony {' '.join(libraries)}")
        write_changed(os.path.join(self.folder, "build.ninja"), "\n".join(lines) + "\n")

    def compile(self, faults, report):
        """Builds the tests and returns the faults without those that do not compile."""
        for target in ("libraries", *PROGRAMS):
            while True:
                self.plant(faults)
                self.write_build()
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
        with open(os.path.join(self.folder, "build.log"), "w") as log:
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

    def program(self, name):
        return os.path.join(self.folder, name)


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
