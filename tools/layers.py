#!/usr/bin/env python3
"""The rules of the layers: includes form no circle, the core knows no Qt, only the transports open sockets, and foreign
bytes are read by the byte reader alone."""
import pathlib
import re
import sys

SRC = pathlib.Path(__file__).resolve().parent.parent / "src"
WINDOW_FILES = ("app/", "diagnostics/", "discovery/avahi_", "discovery/bonjour_browser")
SOCKET_FOLDERS = ("transport/net", "netproto")
INCLUDE = re.compile(r'^\s*#include\s+([<"])([^">]+)[">]', re.M)
SOCKET_CALL = re.compile(r"(?<!\w)::(socket|connect|bind|listen|accept|sendto|recvfrom|recv|send)\(")
# Foreign bytes go through ByteReader or string_view searches. Not judged: what reads for all others (support), socket
# addresses, and the window.
RAW_ACCESS = re.compile(r"\b(reinterpret_cast|mem(?:cpy|move|chr|cmp)|str(?:len|cpy|cat|chr|str|tok)|sscanf|ato[il]f?)\b")
RAW_ACCESS_ALLOWED = ("support/", "transport/net/sockets.cpp", "app/", "filter/window_loader.cpp")
BYTES_NAME = re.compile(r"\b(?:Bytes|std::span<const std::uint8_t>)&?\s+(\w+)")


def is_window_file(name: str) -> bool:
    return name.startswith(WINDOW_FILES)


def read_tree():
    files = sorted(p for p in SRC.rglob("*") if p.suffix in (".h", ".cpp"))
    return {str(p.relative_to(SRC)): p.read_text() for p in files}


def raw_accesses(name: str, text: str):
    """What reads bytes without the byte reader: C's functions, and a span of bytes with an index."""
    if name.startswith(RAW_ACCESS_ALLOWED):
        return
    names = "|".join(set(BYTES_NAME.findall(text))) or "$^"
    indexed = re.compile(rf"(?<![\w.])(?:{names})\[")
    for number, line in enumerate(text.splitlines(), 1):
        code = line.split("//")[0]
        if RAW_ACCESS.search(code) or indexed.search(code):
            yield f"{name}:{number}: foreign bytes are read by ByteReader (support/byte_reader.h)"


def circles(graph):
    state, trail, found = {}, [], []

    def visit(node):
        state[node] = "open"
        trail.append(node)
        for target in graph.get(node, ()):
            if state.get(target) == "open":
                found.append(" -> ".join(trail[trail.index(target):] + [target]))
            elif target not in state:
                visit(target)
        trail.pop()
        state[node] = "done"

    for node in graph:
        if node not in state:
            visit(node)
    return found


def main() -> int:
    tree = read_tree()
    faults = []
    graph = {}
    for name, text in tree.items():
        own = [target for quote, target in INCLUDE.findall(text) if quote == '"' and target in tree]
        graph[name] = own
        system = [target for quote, target in INCLUDE.findall(text) if quote == "<"]
        if not is_window_file(name):
            faults += [f"{name}: the core includes Qt: {t}" for t in system if re.match(r"Q[A-Z]|Qt", t)]
            faults += [f"{name}: the core includes the window: {t}" for t in own if is_window_file(t)]
        if not name.startswith(SOCKET_FOLDERS) and SOCKET_CALL.search(text):
            faults.append(f"{name}: calls the socket interface itself")
        faults += raw_accesses(name, text)
    faults += [f"circle among includes: {c}" for c in circles(graph)]
    print("\n".join(faults) or f"{len(tree)} files, no fault")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
