"""Finds the places where faults can be planted, with the compiler's own view of the sources."""

import hashlib
import multiprocessing
import os
import pickle

from clang import cindex

from faults import one_line
from patterns import Patterns

K = cindex.CursorKind

FUNCTIONS = {
    K.FUNCTION_DECL,
    K.CXX_METHOD,
    K.CONSTRUCTOR,
    K.DESTRUCTOR,
    K.CONVERSION_FUNCTION,
    K.FUNCTION_TEMPLATE,
}
SCOPES = {
    K.NAMESPACE,
    K.CLASS_DECL,
    K.STRUCT_DECL,
    K.CLASS_TEMPLATE,
    K.CLASS_TEMPLATE_PARTIAL_SPECIALIZATION,
    K.LINKAGE_SPEC,
    K.UNEXPOSED_DECL,
}
# Nothing in these is decided at run time.
CONSTANT = {K.STATIC_ASSERT, K.PARM_DECL, K.CXX_UNARY_EXPR, K.TEMPLATE_TYPE_PARAMETER,
            K.TEMPLATE_NON_TYPE_PARAMETER, K.TYPE_ALIAS_DECL, K.TYPEDEF_DECL}


class Source:
    """The bytes of a file as text of one character a byte, since the compiler counts bytes."""

    def __init__(self, root, path):
        self.path = path
        with open(os.path.join(root, path), "rb") as file:
            self.text = file.read().decode("latin-1")
        self.lines = self.text.split("\n")

    def line_text(self, line):
        return one_line(self.lines[line - 1].encode("latin-1").decode("utf-8"))


class Finder:
    """Goes over one translation unit and the headers of the project that no other had."""

    def __init__(self, root, scope):
        self.root = root
        self.scope = scope
        self.done = set()
        self.index = cindex.Index.create()

    def path_of(self, name):
        path = os.path.relpath(os.path.realpath(name), self.root)
        return path if path in self.scope else None

    def find(self, main_file, arguments):
        unit = self.index.parse(os.path.join(self.root, main_file), arguments)
        # The compiler stumbles over its own declaration when it reads a prepared header.
        errors = [d for d in unit.diagnostics if d.severity >= cindex.Diagnostic.Error
                  and "__va_list_tag" not in d.spelling]
        for error in errors[:3]:
            print(f"note: {error}", flush=True)
        self.sources = {}
        self.names = {}
        self.patterns = Patterns()
        self.scan(unit.cursor)
        self.done.update(self.sources)
        return self.patterns.faults

    def source_of(self, cursor):
        file = cursor.location.file
        if file is None:
            return None
        name = file.name
        if name not in self.names:
            path = self.path_of(name)
            if path and path not in self.done:
                self.names[name] = self.sources.setdefault(path, Source(self.root, path))
            else:
                self.names[name] = None
        return self.names[name]

    def scan(self, parent):
        """Declarations, down to the functions."""
        for cursor in parent.get_children():
            source = self.source_of(cursor)
            if source is None:
                continue
            if cursor.kind in FUNCTIONS:
                self.scan_function(source, cursor)
            elif cursor.kind in SCOPES:
                self.scan(cursor)
            elif cursor.kind == K.FIELD_DECL:
                self.scan_body(source, cursor, None)

    def scan_function(self, source, function):
        result = None
        if function.kind not in (K.CONSTRUCTOR, K.DESTRUCTOR):
            result = function.result_type
        begin = function.extent.start.offset
        outer = self.patterns.is_constexpr
        self.patterns.is_constexpr = "constexpr" in source.text[begin:function.location.offset].split()
        for child in function.get_children():
            if child.kind.is_statement() or child.kind.is_expression():
                self.patterns.expression(source, child, function)
                self.scan_body(source, child, result)
        self.patterns.is_constexpr = outer

    def scan_body(self, source, parent, result):
        children = [c for c in parent.get_children() if c.kind not in CONSTANT]
        if parent.kind == K.CASE_STMT:
            children = children[1:]
        if parent.kind == K.LAMBDA_EXPR:
            result = None
        self.patterns.statements(source, parent, children, result)
        for child in children:
            if child.kind == K.VAR_DECL and self.is_constant(source, child):
                continue
            if child.kind in FUNCTIONS or child.kind in SCOPES:
                self.scan_function(source, child) if child.kind in FUNCTIONS else self.scan(child)
                continue
            self.patterns.expression(source, child, parent)
            self.scan_body(source, child, result)

    @staticmethod
    def is_constant(source, variable):
        extent = variable.extent
        line_start = source.text.rfind("\n", 0, extent.start.offset) + 1
        return "constexpr" in source.text[line_start:variable.location.offset].split()


_state = {}


def _start(root, scope):
    _state["finder"] = Finder(root, scope)


def _work(task):
    return _state["finder"].find(*task)


def precompile(header, flags):
    """Flags by which the analysis reads a header from a prepared file."""
    unit = cindex.Index.create().parse(header, ["-x", "c++-header", *flags],
                                       options=cindex.TranslationUnit.PARSE_INCOMPLETE)
    unit.save(header + ".analysed")
    return ["-include-pch", header + ".analysed"]


def find_faults(root, scope, tasks, workers, cache):
    """All faults in the files of `scope`, in a stable order. A task is (source, arguments).

    The file `cache` keeps them for as long as the sources and this program stay as they are.
    """
    state = _state_of(root, sorted(scope), tasks)
    if os.path.exists(cache):
        with open(cache, "rb") as file:
            cached_state, faults = pickle.load(file)
        if cached_state == state:
            return faults
    found = {}
    with multiprocessing.Pool(workers, _start, (root, scope)) as pool:
        for faults in pool.imap_unordered(_work, tasks):
            for fault in faults:
                found.setdefault((fault.file, fault.begin, -fault.end, fault.kind, fault.change), fault)
    faults = [found[key] for key in sorted(found)]
    with open(cache, "wb") as file:
        pickle.dump((state, faults), file)
    return faults


def _state_of(root, files, tasks):
    digest = hashlib.sha1(repr(tasks).encode())
    own = os.path.dirname(__file__)
    for path in [os.path.join(root, name) for name in files] + sorted(
            os.path.join(own, name) for name in ("finder.py", "patterns.py", "faults.py")):
        with open(path, "rb") as file:
            digest.update(path.encode() + file.read())
    return digest.hexdigest()
