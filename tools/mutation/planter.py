"""Writes the sources with faults planted in them, each behind its switch."""


def plant(text, faults, switch_header):
    """The text of a file with all `faults` in it. Lines keep their numbers."""
    # Of faults that share a place the first stands outermost.
    ordered = sorted(faults, key=lambda f: (f.begin, -f.end, f.number))
    return f'#include "{switch_header}"\n#line 1\n' + _render(text, 0, len(text), ordered)


def _render(text, begin, end, faults):
    parts = []
    position = begin
    while faults:
        fault = faults[0]
        inside = [f for f in faults[1:] if f.end <= fault.end]
        parts.append(text[position:fault.begin])
        parts.append(_render_fault(text, fault, inside))
        position = fault.end
        faults = [f for f in faults[1:] if f.begin >= fault.end]
    parts.append(text[position:end])
    return "".join(parts)


def _render_fault(text, fault, inside):
    parts = []
    for piece in fault.pieces:
        if isinstance(piece, str):
            parts.append(piece.replace("@", str(fault.number)))
        elif piece == fault.host:
            begin, end = piece
            nested = [f for f in inside if begin <= f.begin and f.end <= end]
            parts.append(_render(text, begin, end, nested))
        else:
            parts.append(" ".join(text[piece[0]:piece[1]].split("\n")))
    return "".join(parts)
