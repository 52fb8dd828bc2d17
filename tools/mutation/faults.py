"""A fault: one small change of the sources that is compiled in behind a switch."""

from dataclasses import dataclass, field


@dataclass
class Fault:
    """`pieces` is the source text that stands in place of [begin, end) once the fault is planted.

    A string is taken as it is, with "@" for the number of the fault; a pair is a range of the
    original text. The range that is flagged by `host` takes part in further planting, so that faults
    may nest; all others are copies for the case that this fault is on, and no other can be.
    """

    file: str
    begin: int
    end: int
    line: int
    last_line: int
    kind: str
    change: str  # what a reader is told: `a < b` becomes `a <= b`
    pieces: list
    host: tuple
    source_line: str = ""
    is_constexpr: bool = False  # in a function that may be there for the compiler alone
    number: int = field(default=0, compare=False)

    def lines(self):
        return range(self.line, self.last_line + 1)

    def key(self):
        """What stays the same when lines are added elsewhere in the file."""
        return (self.file, self.source_line, self.change)

    def __str__(self):
        return f"{self.file}:{self.line}: {self.kind}: {self.change}"


def one_line(text):
    return " ".join(text.split())
