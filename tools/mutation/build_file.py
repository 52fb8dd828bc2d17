"""Writes the build.ninja by which planted sources are compiled and linked with the tests.

What no fault touches is taken as the build for releases has compiled it, and so are tests that include
private headers without faults only. Objects with faults come first in the link, so that of inline
functions of public headers, which all tests have too, theirs are used.
"""

import os
import shlex

from release_build import LIBRARIES, PROGRAMS

LIBRARY_FLAGS = "-lgmock_main -lgmock -lgtest -lxerces-c -lexpat -lQt6Core -lpthread"
# What is planted is neither warned about nor debugged, and built quickly.
COMPILE_FLAGS = "-w -O1 -g0"
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
  rspfile_content = $in $libraries
"""


def build_text(release, planted, folder, recorder, touched, externals):
    """The text of the file. `externals` are the headers of other projects, a file for each library."""
    lines = [RULES]
    built = {}
    for library in LIBRARIES:
        sources = [name for name in touched if release.library_of.get(name) == library]
        if not sources:
            continue
        header = externals[library]
        flags = _quoted(release.flags(sources[0], planted))
        lines += [f"build {header}.gch: cxx {header}",
                  f"  flags = {flags} {COMPILE_FLAGS} -x c++-header"]
        for name in sources:
            built[name] = f"objects/{name}.o"
            flags = _quoted(release.flags(name, planted))
            lines += [f"build {built[name]}: cxx {planted}/{name} | {header}.gch",
                      f"  flags = -include {header} {flags} {COMPILE_FLAGS}"]
    root = release.root
    for name in touched:
        if name.startswith("tests/"):
            built[name] = f"objects/{name}.o"
            lines += [f"build {built[name]}: cxx {root}/{name}",
                      f"  flags = {_quoted(release.flags(name, planted))} -w -g0"]
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
        objects = " ".join(libraries + tests)
        lines += [f"build {program}: link {objects}",
                  f"  libraries = -Wl,-rpath,{folder} {LIBRARY_FLAGS}"]
    lines.append(f"build all: phony {' '.join(PROGRAMS)}")
    return "\n".join(lines) + "\n"


def _quoted(words):
    return " ".join(map(shlex.quote, words))
