# Lets gdb show strings of kesplatform as their text. gdb loads this by itself for an installed
# library; otherwise: source kesplatform-gdb.py

import gdb
import gdb.printing


def text_of(rep):
    """The text that stands behind a TString::Rep, quoted; as much of it as gdb is told to show."""
    length = int(rep["lengthAndFlag"]) & 0x7FFFFFFF if rep else 0
    shown = min(length, gdb.parameter("print elements") or length)
    if shown == 0:
        return '""'
    start = int(rep) + rep.type.target().sizeof
    units = bytes(gdb.selected_inferior().read_memory(start, 2 * shown))
    # Half of a pair becomes U+FFFD.
    text = units.decode("utf-16-le", errors="replace")
    for plain, escaped in (("\\", "\\\\"), ('"', '\\"'), ("\n", "\\n"), ("\r", "\\r")):
        text = text.replace(plain, escaped)
    return '"' + text + ('"' if shown == length else '"...')


class StringPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        try:
            return text_of(self.value["m_rep"])
        except gdb.MemoryError:
            raise
        except gdb.error:
            # The program was compiled such that it does not tell what is in a string.
            return "TString at %s <no type information>" % self.value.address


def make_printers():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("kesplatform")
    printers.add_printer("TString", "^TString$", StringPrinter)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), make_printers(), replace=True)
