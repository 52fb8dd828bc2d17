"""The list of faults that change nothing which a test could see."""

import os

FIELDS = ("file", "line", "fault", "why")


def read_known(path):
    """Reasons by Fault.key(). Entries are blocks of "field: text" lines; see equivalent.txt."""
    known = {}
    entry = {}
    with open(path, encoding="utf-8") as file:
        for text in [*file, ""]:
            text = text.strip()
            if text.startswith("#"):
                continue
            if not text:
                if entry:
                    missing = [field for field in FIELDS if not entry.get(field)]
                    if missing:
                        raise SystemExit(f"{path}: {entry} lacks {', '.join(missing)}")
                    known[(entry["file"], entry["line"], entry["fault"])] = entry["why"]
                entry = {}
                continue
            field, _, value = text.partition(": ")
            if field in FIELDS:
                entry[field] = value.strip()
            elif entry.get("why"):
                entry["why"] += " " + text
            else:
                raise SystemExit(f"{path}: {text}")
    return known


def as_entry(fault):
    """The block to be put into the list, once there is a reason."""
    file, line, change = fault.key()
    return f"file: {file}\nline: {line}\nfault: {change}\nwhy: "


def find_lapsed(root, known):
    """The keys whose file has that line no longer."""
    lapsed = []
    for key in known:
        path = os.path.join(root, key[0])
        lines = set()
        if os.path.exists(path):
            with open(path, encoding="utf-8") as file:
                lines = {" ".join(line.split()) for line in file}
        if key[1] not in lines:
            lapsed.append(key)
    return lapsed
