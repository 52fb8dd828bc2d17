"""Writes the build.ninja by which planted sources are compiled and linked with the tests.

What no fault touches is taken as the build for releases compiles it, and so are tests that include
private headers without faults only. Objects with faults come first in the link, so that of inline
functions of public headers, which all tests have too, theirs are used.
"""

import os
import shlex

from release_build import LIBRARIES, PROGRAMS

LIBRARY_FLAGS = "-lgmock_main -lgmock -lgtest -lxerces-c -lexpat -lQt6Core -lpthread"
# What is planted is neither warned about nor debugged, and built quickly.
COMPILE_FLAGS = "-w -O1 -g0"
TEST_FLAGS = "-w -g0"
RULES = """\
rule cxx
  command = c++ $flags -MD -MF $out.d -c $in -o $out
  depfile = $out.d
  deps = gcc
rule share
  command = c++ -shared $in -lQt6Core -o $out
rule link
  command = c++ @$out.rsp -o $out
  rspfile = $out.rsp
  rspfile_content = $flags $in $libraries
"""


def build_text(release, planted, folder, recorder, touched, headers):
    """The text of the file. `headers` are to be compiled once: of each library, a file of those of other
    projects; of each program, a file of those that its tests include.
    """
    lines = [RULES]
    built = {}

    def compile_with(header, sources, options):
        """Sources by name, with a header that is compiled once."""
        if sources:
            flags = _quoted(release.flags(next(iter(sources)), planted))
            lines.extend([f"build {header}.gch: cxx {header}", f"  flags = {flags} {options} -x c++-header"])
        for name, path in sources.items():
            built[name] = f"objects/{name}.o"
            flags = _quoted(release.flags(name, planted))
            lines.extend([f"build {built[name]}: cxx {path} | {header}.gch",
                          f"  flags = -include {header} {flags} {options}"])

    for library in LIBRARIES:
        compile_with(headers[library], {name: f"{planted}/{name}" for name in touched
                                        if release.library_of.get(name) == library}, COMPILE_FLAGS)
    for program in PROGRAMS:
        compile_with(headers[program], {name: f"{release.home}/{name}" for name in touched
                                        if name in release.united and name in release.objects[program]},
                     TEST_FLAGS)
    for name in touched:
        if name.startswith("tests/"):
            built[name] = f"objects/{name}.o"
            lines += [f"build {built[name]}: cxx {release.root}/{name}",
                      f"  flags = {_quoted(release.flags(name, planted))} {TEST_FLAGS}"]
    lines += [f"build objects/TestRecorder.o: cxx {recorder}", "  flags = -std=c++20 -O1"]
    platform, library = ([built.get(name, kept) for name, kept in release.objects[target].items()]
                         for target in LIBRARIES)
    # Tests put functions of their own in place of some of the platform's, a shared library.
    shared = os.path.join(folder, "libkesplatform.so")
    libraries = [*sorted(library, key=os.path.isabs), "objects/TestRecorder.o", shared]
    lines += [f"build {shared}: share {' '.join(platform)}",
              f"build libraries: phony {' '.join(libraries)}"]
    for program in PROGRAMS:
        tests = [built.get(name, kept) for name, kept in release.objects[program].items()]
        objects = " ".join(libraries + sorted(tests, key=os.path.isabs))
        lines += [f"build {program}: link {objects}",
                  f"  flags = {release.link_flags(program)}",
                  f"  libraries = -Wl,-rpath,{folder} {LIBRARY_FLAGS}"]
    lines.append(f"build all: phony {' '.join(PROGRAMS)}")
    return "\n".join(lines) + "\n"


def _quoted(words):
    return " ".join(map(shlex.quote, words))
