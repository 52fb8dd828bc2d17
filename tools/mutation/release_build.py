"""What the build for releases knows: how sources are compiled, linked, and the objects that it makes."""

import collections
import json
import os
import re
import shlex
import subprocess

LIBRARIES = ("kesplatform", "kescorexml_objects")
PROGRAMS = ("platform_tests", "parser_tests")
# What the objects of a target become a part of.
OWNERS = {"test_support": PROGRAMS, "scanner_test_support": ("parser_tests",),
          **{target: (target,) for target in LIBRARIES + PROGRAMS}}


class ReleaseBuild:
    def __init__(self, root, folder):
        """Takes a finished build, which may be that of another checkout of the same sources."""
        self.root = root
        self.folder = folder
        self.home = os.path.dirname(os.path.dirname(folder))
        self.commands = {}  # of the sources in main/parser, platform and tests
        self.library_of = {}  # of those in main/parser and platform
        self.united = {}  # by the source in which tests are compiled together: their sources
        self.objects = collections.defaultdict(dict)  # by library or program, and source
        with open(os.path.join(folder, "compile_commands.json")) as file:
            for entry in json.load(file):
                self.add(entry)

    @staticmethod
    def configure(root):
        subprocess.run(["cmake", "--preset", "release", "-DKESCOREXML_TESTS=ON"], cwd=root, check=True,
                       stdout=subprocess.DEVNULL)

    def make(self, objects, jobs, log_path):
        names = [os.path.relpath(name, self.folder) for name in objects]
        with open(log_path, "w") as log:
            subprocess.run(["ninja", "-C", self.folder, f"-j{jobs}", *names], check=True, stdout=log)

    def add(self, entry):
        output = re.search(r" -o (\S+)", entry["command"])[1]
        target = re.search(r"CMakeFiles/(\w+)\.dir/", output)
        if not target or target[1] not in OWNERS or output.endswith(".gch"):
            return
        name = os.path.relpath(entry["file"], self.home)
        for owner in OWNERS[target[1]]:
            self.objects[owner][name] = os.path.join(self.folder, output)
        if "/Unity/" in name:
            self.united[name] = self.sources_in(entry["file"])
        if name in self.united or name.startswith(("main/parser/", "platform/main/", "tests/")):
            command = re.sub(re.escape(self.home) + "/(?!build/)", self.root + "/", entry["command"])
            self.commands[name] = command
        if name.startswith(("main/parser/", "platform/main/")):
            self.library_of[name] = target[1]

    def sources_in(self, united):
        with open(united) as file:
            return [os.path.relpath(name, self.home)
                    for name in re.findall(r'^#include "([^"]+)"', file.read(), re.M)]

    def tests_header(self, program):
        """The header of all that the tests of the program include."""
        return os.path.join(self.folder, "tests", f"{program}-includes.h")

    def link_flags(self, program):
        with open(os.path.join(self.folder, "build.ninja")) as file:
            match = re.search(rf"^build bin/{program}\b.*\n(?:  (?!LINK_FLAGS).*\n)*  LINK_FLAGS = (.*)",
                              file.read(), re.M)
        return match[1] if match else ""

    def flags(self, name, planted=None):
        """The flags for a source; with the headers below `planted` in place of the tree's own."""
        words = shlex.split(self.commands[name])
        flags = words[1:words.index("-o")]
        if "-Winvalid-pch" in flags:
            # Made of the tree's own headers.
            at = flags.index("-Winvalid-pch")
            del flags[at:at + 3]
        if planted:
            for folder in ("main/parser", "platform/public"):
                flags = [w.replace(f"{self.root}/{folder}", f"{planted}/{folder}") for w in flags]
        return flags

    def analysis_flags(self, name):
        """Those that tell the analysing compiler what the sources mean."""
        flags = []
        words = iter(self.flags(name))
        for word in words:
            if word in ("-isystem", "-include"):
                flags += [word, next(words)]
            elif word.startswith(("-I", "-D", "-std")):
                flags.append(word)
        return flags
