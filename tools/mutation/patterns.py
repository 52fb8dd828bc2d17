"""What a fault looks like at each kind of place."""

import re

from clang import cindex

from faults import Fault, one_line

K = cindex.CursorKind
T = cindex.TypeKind

OPERATORS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "<<": ">>", ">>": "<<",
    "&": "|", "|": "&", "^": "&", "&&": "||", "||": "&&",
    "+=": "-=", "-=": "+=", "*=": "+=", "|=": "&=", "&=": "|=", "<<=": ">>=", ">>=": "<<=",
}
# Other readings of a comparison, which are mistaken for it as easily.
SECOND_OPERATORS = {"<": ">", ">": "<", "<=": "==", ">=": "=="}
INTEGERS = {T.CHAR_U, T.UCHAR, T.CHAR16, T.CHAR32, T.USHORT, T.UINT, T.ULONG, T.ULONGLONG, T.CHAR_S,
            T.SCHAR, T.SHORT, T.INT, T.LONG, T.LONGLONG, T.WCHAR}
LOOPS = {K.FOR_STMT, K.CXX_FOR_RANGE_STMT, K.WHILE_STMT}
# Functions whose arguments may be swapped.
SYMMETRIC = re.compile(r"max|min|swap|equals|_mm_(cmpeq|max|min|or|and)_\w+")
# Calls that nobody notices except by the clock.
HINTS = re.compile(r"reserve|Prefetch\w*|__builtin_prefetch|__builtin_ia32_vzeroupper")
LITERALS = {K.INTEGER_LITERAL, K.CHARACTER_LITERAL, K.CXX_BOOL_LITERAL_EXPR}


def peel(cursor):
    """The expression inside the conversions that the compiler added around it."""
    while cursor.kind == K.UNEXPOSED_EXPR:
        children = list(cursor.get_children())
        if len(children) != 1 or span(children[0]) != span(cursor):
            break
        cursor = children[0]
    return cursor


def span(cursor):
    extent = cursor.extent
    return (extent.start.offset, extent.end.offset)


class Patterns:
    def __init__(self):
        self.faults = []
        self.is_constexpr = False

    def add(self, source, place, kind, after, pieces, host):
        begin, end = place
        text = source.text
        copied = [piece for piece in pieces if isinstance(piece, tuple) and piece != host]
        if begin >= end:
            return
        # Copies are put on one line, so that all others keep their numbers.
        if any(mark in text[b:e] for b, e in copied for mark in ("//", "/*", "\n#", 'R"')):
            return
        line = text.count("\n", 0, begin) + 1
        last_line = line + text.count("\n", begin, end)
        after = after if isinstance(after, str) else "".join(
            text[p[0]:p[1]] if isinstance(p, tuple) else p for p in after)
        before = one_line(text[begin:end])
        change = f"`{before}` becomes `{one_line(after)}`" if after else f"`{before}` is left out"
        if change.isascii():
            self.faults.append(Fault(source.path, begin, end, line, last_line, kind, change, pieces,
                                     host, source.line_text(line), self.is_constexpr))

    def choose(self, source, place, kind, alternative):
        self.add(source, place, kind, alternative,
                 ["(mutation::On(@) ? ", *alternative, " : ", place, ")"], place)

    def wrap(self, source, place, kind, function, after):
        self.add(source, place, kind, after, [f"mutation::{function}(@, ", place, ")"], place)

    def expression(self, source, cursor, parent):
        kind = cursor.kind
        if kind in (K.BINARY_OPERATOR, K.COMPOUND_ASSIGNMENT_OPERATOR):
            self.binary(source, span(cursor), list(cursor.get_children()))
        elif kind == K.UNARY_OPERATOR:
            self.unary(source, cursor)
        elif kind in LITERALS:
            self.literal(source, cursor, parent)
        elif kind == K.CALL_EXPR:
            self.call(source, cursor, parent)
        elif kind == K.CONDITIONAL_OPERATOR:
            self.condition(source, list(cursor.get_children())[0])
        elif kind == K.ARRAY_SUBSCRIPT_EXPR:
            index = list(cursor.get_children())[1]
            if peel(index).kind not in LITERALS:
                self.off_by_one(source, index)

    def binary(self, source, place, operands):
        if len(operands) != 2:
            return
        left, right = span(operands[0]), span(operands[1])
        if not place[0] <= left[0] < left[1] <= right[0] < right[1] <= place[1]:
            return
        operator = source.text[left[1]:right[0]].strip()
        pointers = [operand.type.get_canonical().kind == T.POINTER for operand in operands]
        for table in (OPERATORS, SECOND_OPERATORS):
            other = table.get(operator)
            if other and not (all(pointers) and other == "+"):
                self.choose(source, place, "operator", [left, f" {other} ", right])

    def unary(self, source, cursor):
        place = span(cursor)
        text = source.text[place[0]:place[1]]
        operand = span(list(cursor.get_children())[0])
        for operator, other in (("++", "--"), ("--", "++")):
            if text.startswith(operator):
                self.choose(source, place, "operator", [other, operand])
            elif text.endswith(operator):
                self.choose(source, place, "operator", [operand, other])
        if text[0] in "-~" and not text.startswith("--"):
            self.choose(source, place, "operator", [operand])
        elif text[0] == "!" and not text.startswith("!="):
            self.wrap(source, place, "negated condition", "Flip", [operand])

    def literal(self, source, cursor, parent):
        place = span(cursor)
        before = source.text[:place[0]].rstrip()[-1:]
        if parent.kind in (K.DECL_REF_EXPR, K.MEMBER_REF_EXPR, K.TYPE_REF, K.TEMPLATE_REF):
            return  # an argument of a template
        if parent.kind in (K.VAR_DECL, K.FIELD_DECL) and before not in "=({":
            return  # a bound of an array, a width of bits
        text = source.text[place[0]:place[1]]
        if not re.match(r"[0-9uUL']|true|false", text):
            return  # what a macro stands for
        if cursor.kind == K.CXX_BOOL_LITERAL_EXPR:
            self.wrap(source, place, "constant", "Flip", "false" if text == "true" else "true")
            return
        self.wrap(source, place, "constant", "More", f"{text} + 1")
        if cursor.kind == K.INTEGER_LITERAL and text.rstrip("uUlL") != "0":
            self.wrap(source, place, "constant", "Less", f"{text} - 1")

    def call(self, source, cursor, parent):
        place = span(cursor)
        if parent.kind in (K.VAR_DECL, K.FIELD_DECL) and place[0] == parent.location.offset:
            return  # a constructor: the name of the variable is a part of it
        arguments = list(cursor.get_arguments())
        if cursor.spelling.startswith("operator"):
            self.binary(source, place, arguments)
            return
        if HINTS.fullmatch(cursor.spelling):
            return
        symmetric = SYMMETRIC.fullmatch(cursor.spelling)
        for first, second in () if symmetric else zip(arguments, arguments[1:]):
            a, b = span(first), span(second)
            if not place[0] <= a[0] < a[1] <= b[0] < b[1] < place[1]:
                continue
            same = first.type.get_canonical().spelling == second.type.get_canonical().spelling
            if same and source.text[a[0]:a[1]] != source.text[b[0]:b[1]]:
                swapped = [(place[0], a[0]), b, (a[1], b[0]), a, (b[1], place[1])]
                self.choose(source, place, "swapped arguments", swapped)
        for argument in arguments:
            if peel(argument).kind in (K.BINARY_OPERATOR, K.MEMBER_REF_EXPR, K.DECL_REF_EXPR):
                self.off_by_one(source, argument)

    def off_by_one(self, source, cursor):
        inner = peel(cursor)
        place = span(inner)
        if inner.type.get_canonical().kind in INTEGERS and inner.referenced is not None or (
                inner.kind == K.BINARY_OPERATOR and inner.type.get_canonical().kind in INTEGERS):
            if "&" not in str(inner.referenced and inner.referenced.type.spelling):
                self.wrap(source, place, "off by one", "More", f"{source.text[place[0]:place[1]]} + 1")

    def condition(self, source, cursor):
        inner = peel(cursor)
        place = span(inner)
        text = source.text[place[0]:place[1]]
        is_equality = (inner.kind == K.BINARY_OPERATOR and re.search("[!=]=", text)
                       or inner.spelling in ("operator==", "operator!="))
        # The negations of those are planted by way of their operators.
        if inner.kind not in LITERALS and not text.startswith("!") and not is_equality:
            self.add(source, place, "negated condition", f"!({text})",
                     ["mutation::Flip(@, static_cast<bool>(", place, "))"], place)

    def statements(self, source, parent, children, result):
        kind = parent.kind
        if kind == K.IF_STMT:
            head = source.text[span(parent)[0]:].split("(", 1)[0]
            if children and children[0].kind.is_expression() and "constexpr" not in head:
                self.condition(source, children[0])
            bodies = children[1:]
        elif kind == K.WHILE_STMT:
            if children and children[0].kind.is_expression():
                self.condition(source, children[0])
            bodies = children[-1:]
        elif kind == K.DO_STMT:
            self.condition(source, children[-1])
            bodies = children[:1]
        elif kind in LOOPS:
            bodies = children[-1:]
        elif kind in (K.COMPOUND_STMT, K.CASE_STMT, K.DEFAULT_STMT):
            bodies = children
        else:
            return
        for body in bodies:
            self.statement(source, body, parent, result)

    def statement(self, source, cursor, parent, result):
        place = span(cursor)
        inner = cursor
        while inner.kind == K.UNEXPOSED_EXPR and len(list(inner.get_children())) == 1:
            inner = list(inner.get_children())[0]
        dropped = (K.CALL_EXPR, K.BINARY_OPERATOR, K.COMPOUND_ASSIGNMENT_OPERATOR, K.UNARY_OPERATOR,
                   K.CXX_DELETE_EXPR)
        if HINTS.fullmatch(inner.spelling or ""):
            return
        if inner.kind in dropped or cursor.kind in (K.BREAK_STMT, K.CONTINUE_STMT):
            self.drop(source, place)
        elif cursor.kind == K.RETURN_STMT:
            self.returned(source, cursor, result)
        elif cursor.kind == K.DECL_STMT and parent.kind == K.COMPOUND_STMT:
            self.guard(source, cursor, parent)

    def drop(self, source, place):
        self.add(source, place, "dropped statement", "",
                 ["if (mutation::On(@)) {} else ", place], place)

    def returned(self, source, cursor, result):
        children = list(cursor.get_children())
        if not children:
            self.drop(source, span(cursor))
            return
        value = peel(children[0])
        if result is None or value.kind in LITERALS:
            return
        canonical = result.get_canonical()
        place = span(value)
        text = source.text[place[0]:place[1]]
        if canonical.kind == T.BOOL:
            self.condition(source, value)
        elif canonical.kind in INTEGERS and value.type.get_canonical().kind in INTEGERS:
            self.wrap(source, place, "changed return", "More", f"{text} + 1")
        elif canonical.kind in (T.RECORD, T.POINTER) and text not in ("nullptr", "{}"):
            whole = span(cursor)
            self.add(source, whole, "changed return", "return {}",
                     ["if (mutation::On(@)) return {}; else ", whole], whole)

    def guard(self, source, cursor, block):
        """A variable that nothing names again is there for what its constructor and destructor do."""
        variables = list(cursor.get_children())
        if len(variables) != 1 or variables[0].kind != K.VAR_DECL:
            return
        variable = variables[0]
        kind = variable.type.get_canonical()
        place = span(cursor)
        text = source.text[place[0]:place[1]]
        name = variable.spelling
        match = re.fullmatch(r"(.*?)\b" + re.escape(name) + r"\s*([({])(.*)[)}]\s*;", text, re.S)
        body = source.text[place[1]:span(block)[1]]
        if kind.kind != T.RECORD or not match or re.search(r"\b" + re.escape(name) + r"\b", body):
            return
        held = re.sub(r"^const ", "", kind.spelling)
        if "(" in held or match.group(1).split()[:1] == ["static"]:
            return
        arguments = (place[0] + match.start(3), place[0] + match.end(3))
        self.add(source, place, "dropped guard", "",
                 [f"std::optional<{held}> {name}; if (!mutation::On(@)) {name}.emplace(", arguments,
                  ");"], arguments)
