#!/usr/bin/env python3
"""Makes the model table, src/resources/printers.xml, of tools/models.txt; --check only compares the two."""
import pathlib
import sys
from xml.sax.saxutils import escape

ROOT = pathlib.Path(__file__).resolve().parent.parent
SOURCE = ROOT / "tools" / "models.txt"
TABLE = ROOT / "src" / "resources" / "printers.xml"

KEYS = ("maker", "CommandType", "options", "Colors", "models")

HEAD = """<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<!-- Made of tools/models.txt by tools/model_table.py. -->
<plist version="1.0">
<dict>
"""
TAIL = "</dict>\n</plist>\n"


def words(text):
    return [word.strip() for word in text.split(",")]


def read_group(block):
    """The fields of one group; lines that follow a field without a key of their own continue it."""
    fields, key = {}, None
    for line in block.splitlines():
        if line.startswith("#"):
            continue
        if not line.startswith(" "):
            key, colon, rest = line.partition(":")
            if not colon or key not in KEYS or key in fields:
                sys.exit(f"{SOURCE}: bad line: {line}")
            line = rest
        fields[key] = f"{fields.get(key, '')} {line}".strip()
    return fields


def entry_of(group):
    """What the models of a group share, in the order of the file."""
    entry = {"Colors": words(group["Colors"])} if "Colors" in group else {}
    if "CommandType" in group:
        entry["CommandType"] = group["CommandType"]
    if "options" in group:
        entry["options"] = words(group["options"])
    return entry


def read_models(text):
    """Each model's name with its entry, or with the name of the model that carries it."""
    models = {}
    for group in filter(None, map(read_group, text.split("\n\n"))):
        names = [f"{group['maker']} {name}" for name in words(group["models"])]
        for name in names:
            if name in models or name.endswith(" "):
                sys.exit(f"{SOURCE}: twice or empty: {name}")
            models[name] = names[0]
        models[names[0]] = entry_of(group)
    return models


def xml(value, indent):
    tabs = "\t" * indent
    if isinstance(value, str):
        return f"{tabs}<string>{escape(value)}</string>\n"
    if isinstance(value, list):
        return f"{tabs}<array>\n" + "".join(xml(item, indent + 1) for item in value) + f"{tabs}</array>\n"
    if not value:
        return f"{tabs}<dict/>\n"
    return f"{tabs}<dict>\n{pairs(value.items(), indent + 1)}{tabs}</dict>\n"


def pairs(items, indent):
    tabs = "\t" * indent
    return "".join(f"{tabs}<key>{escape(key)}</key>\n{xml(value, indent)}" for key, value in items)


def main() -> int:
    table = HEAD + pairs(sorted(read_models(SOURCE.read_text()).items()), 1) + TAIL
    if sys.argv[1:] == ["--check"]:
        same = TABLE.read_text() == table
        print("the model table is current" if same else "the model table is not what tools/model_table.py makes")
        return 0 if same else 1
    TABLE.write_text(table)
    return 0


if __name__ == "__main__":
    sys.exit(main())
