#!/usr/bin/env python3
"""The rules of the layers: includes form no circle, the core knows no Qt, and only the transports open sockets."""
import pathlib
import re
import sys

SRC = pathlib.Path(__file__).resolve().parent.parent / "src"
WINDOW_FILES = ("app/", "diagnostics/", "discovery/avahi_", "discovery/bonjour_browser")
SOCKET_FOLDERS = ("transport/net", "netproto")
INCLUDE = re.compile(r'^\s*#include\s+([<"])([^">]+)[">]', re.M)
SOCKET_CALL = re.compile(r"(?<!\w)::(socket|connect|bind|listen|accept|sendto|recvfrom|recv|send)\(")


def is_window_file(name: str) -> bool:
    return name.startswith(WINDOW_FILES)


def read_tree():
    files = sorted(p for p in SRC.rglob("*") if p.suffix in (".h", ".cpp"))
    return {str(p.relative_to(SRC)): p.read_text() for p in files}


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
    faults += [f"circle among includes: {c}" for c in circles(graph)]
    print("\n".join(faults) or f"{len(tree)} files, no fault")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
