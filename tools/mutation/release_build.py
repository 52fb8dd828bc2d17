"""What the build for releases knows: how sources are compiled, and the objects that it made."""

import collections
import json
import os
import re
import shlex
import subprocess

LIBRARIES = ("kesplatform", "kescorexml_objects")
PROGRAMS = ("platform_tests", "parser_tests")


class ReleaseBuild:
    def __init__(self, root, folder):
        """Takes a finished build, which may be that of another checkout of the same sources."""
        self.root = root
        self.folder = folder
        self.home = os.path.dirname(os.path.dirname(folder))
        self.commands = {}  # of the sources in main/parser, platform and tests
        self.library_of = {}  # of those in main/parser and platform
        self.objects = collections.defaultdict(dict)  # by target and source
        with open(os.path.join(folder, "compile_commands.json")) as file:
            for entry in json.load(file):
                self.add(entry)

    @staticmethod
    def bring_up_to_date(root, jobs, log_path):
        commands = (["cmake", "--preset", "release", "-DKESCOREXML_TESTS=ON"],
                    ["cmake", "--build", "--preset", "release", f"-j{jobs}", "--target", *PROGRAMS])
        with open(log_path, "w") as log:
            for command in commands:
                subprocess.run(command, cwd=root, check=True, stdout=log)

    def add(self, entry):
        output = re.search(r" -o (\S+)", entry["command"])[1]
        target = re.search(r"CMakeFiles/(\w+)\.dir/", output)
        if not target or target[1] not in LIBRARIES + PROGRAMS or output.endswith(".gch"):
            return
        name = os.path.relpath(entry["file"], self.home)
        self.objects[target[1]][name] = os.path.join(self.folder, output)
        if name.startswith(("main/parser/", "platform/main/", "tests/")):
            command = re.sub(re.escape(self.home) + "/(?!build/)", self.root + "/", entry["command"])
            self.commands[name] = command
        if name.startswith(("main/parser/", "platform/main/")):
            self.library_of[name] = target[1]

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
