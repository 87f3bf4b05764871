#!/usr/bin/env python3
"""side_by_side.py BUILD_DIR [--write] [PART...]: how fast the program is, next to what a person would use instead.

Prints a Markdown table for each part, all of them without PART; --write also puts them into docs/performance.md, between
the lines <!-- PART --> and <!-- /PART -->. To be run as ./dev bench does: in a network of its own, with the virtual USB.

What stands next to each other is measured in turn, A B C A B C, after a round that does not count: load on the machine
and what it has in memory are the same for all. Tables have the median and the least of the rounds.
"""
import contextlib
import json
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs" / "performance.md"
LONGEST = 120  # seconds, of one command
READY = 20  # seconds, until a server answers

FILTERS = pathlib.Path("/usr/lib/cups/filter")
FILTER_PPD = "/usr/share/ppd/cupsfilters/pxlmono.ppd"
SNMP_AGENTS = {"127.0.1.14": "lexmark_c543", "127.0.1.20": "hp_officejet_pro_k550", "127.0.1.21": "brother_mfc_8440"}
SNMP_ADDRESS = "127.0.1.14"
SNMP_PRINTER = f"Network:Lexmark C543 ({SNMP_ADDRESS})"
SNMP_TABLES = ("1.3.6.1.2.1.25.3.5.1", "1.3.6.1.2.1.43.11.1.1")  # hrPrinter, prtMarkerSupplies
IPP_PRINTER = "Mac:Office @ server"
IPP_URI = "ipp://127.0.0.1:631/printers/office"
IPP_TEST = """{ OPERATION Get-Printer-Attributes
GROUP operation
ATTR charset attributes-charset utf-8
ATTR language attributes-natural-language en
ATTR uri printer-uri $uri
ATTR keyword requested-attributes all }
"""


class Missing(Exception):
    """A part cannot be measured here; the text says why."""


def run(*command, **options):
    """The standard output of a command that succeeds."""
    return subprocess.run([str(word) for word in command], check=True, timeout=LONGEST, stdout=subprocess.PIPE,
                          text=True, **options).stdout


def in_turn(rounds, measures):
    """{name: measure} becomes {name: [value of each round]}."""
    values = {name: [] for name in measures}
    for number in range(rounds + 1):
        for name, measure in measures.items():
            value = measure()
            if number:
                values[name].append(value)
    return values


def table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join(f"| {' | '.join(map(str, line))} |" for line in lines)


def column(rounds, index):
    return [values[index] for values in rounds]


def digits(number):
    """Three figures, as far as they are before the point or behind it."""
    return f"{number:.{2 if number < 10 else 1 if number < 100 else 0}f}"


def ms(microseconds):
    return digits(microseconds / 1000)


def ratio(value, ours):
    return f"{value / ours:.1f} ×"


def median_and_least(values, show=ms):
    return f"{show(statistics.median(values))} ({show(min(values))})"


def compared(first_head, measured, columns):
    """Rows of what was measured in turn, the first one ours. `columns`: head, index, how to show a value."""
    head = [first_head]
    for title, _, _ in columns:
        head += [title, "to ours"]
    ours = next(iter(measured.values()))
    rows = []
    for name, rounds in measured.items():
        row = [name]
        for _, index, show in columns:
            values = column(rounds, index)
            row += [median_and_least(values, show),
                    ratio(statistics.median(values), statistics.median(column(ours, index)))]
        rows.append(row)
    return table(head, rows)


def not_here(names):
    return "".join(f"\n\nNot on this machine, so not measured: {name}." for name in names)


class Bench:
    def __init__(self, build):
        self.bin = build / "bin"
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="bench-", dir=build))
        self.home = self.folder / "home"
        self.home.mkdir()
        self.children = []
        self.usb = {"LD_PRELOAD": os.environ["TINTORAL_USB_PRELOAD"]} if "TINTORAL_USB_PRELOAD" in os.environ else {}
        self.printers_run = False

    def environment(self, **more):
        plain = {name: value for name, value in os.environ.items() if name != "XDG_CONFIG_HOME"}
        return {**plain, "HOME": str(self.home), **more}

    def ours(self, name):
        path = self.bin / name
        if not path.exists():
            raise Missing(f"{name} is not built")
        return path

    def start(self, *command, **options):
        child = subprocess.Popen([str(word) for word in command], cwd=ROOT, stdout=subprocess.DEVNULL,
                                 stderr=subprocess.DEVNULL, **options)
        self.children.append(child)

    def stop(self):
        for child in self.children:
            child.terminate()
            with contextlib.suppress(subprocess.TimeoutExpired):
                child.wait(5)
        shutil.rmtree(self.folder, ignore_errors=True)

    # --- printers -----------------------------------------------------------------------------------------------------

    def update(self, rounds, printer_id=""):
        """A list (id, outcome, pauses, silence, libusb, what is left of each round; µs) of the printers, or of one."""
        lines = run(self.ours("update_bench"), rounds, *filter(None, [printer_id]),
                    env=self.environment(**self.usb)).splitlines()
        fields = [line.split("\t") for line in lines]
        return [(f[0], f[1], *map(float, f[2:5]), list(map(float, f[5:]))) for f in fields]

    def wait_for_levels(self, printer_id):
        end = time.monotonic() + READY
        while self.update(1, printer_id)[0][1] != "levels":
            if time.monotonic() > end:
                raise Missing(f"{printer_id} does not answer")
            time.sleep(0.1)

    def need_printers(self):
        """The virtual printers of ./dev demo, once."""
        if self.printers_run:
            return
        self.printers_run = True
        self.start(self.ours("tintoral-virtual-printers"))
        for address, printer in SNMP_AGENTS.items():
            self.start("tests/support/snmp/start_agent.sh", address, f"tools/demo/{printer}.oids", self.folder / printer)
        self.start("tools/demo/cupsd.sh", self.folder / "cups")
        run(self.ours("tintoral-demo-home"), "seed", env=self.environment(**self.usb))
        for printer in (SNMP_PRINTER, IPP_PRINTER):
            self.wait_for_levels(printer)

    def process(self, *command, may_fail=False, **variables):
        """(µs, KiB) of a process; one that fails may be quick for the wrong reason."""
        words = run(self.ours("process_bench"), *command, env=self.environment(**variables)).split()
        if words[2] != "0" and not may_fail:
            raise Missing(f"{command[0]} fails")
        return float(words[0]), int(words[1])


# --- the parts --------------------------------------------------------------------------------------------------------


def filter_part(bench):
    arguments = ("1", "user", "title", "1", "")
    filters = {"`tintoral`, as a filter": bench.ours("tintoral")}
    for name in ("commandtops", "rastertoepson", "commandtoescpx"):
        filters[f"`{name}`"] = FILTERS / name
    here = {name: path for name, path in filters.items() if path.exists()}
    measured = in_turn(20, {name: lambda path=path: bench.process(path, *arguments, may_fail=path.parent == FILTERS,
                                                                  PPD=FILTER_PPD)
                            for name, path in here.items()})
    columns = [("exec to exit, ms", 0, ms), ("memory at its peak, MiB", 1, lambda kib: digits(kib / 1024))]
    return compared("filter, nothing to do", measured, columns) + not_here(filters.keys() - here.keys())


def datagrams_sent():
    udp = [line.split() for line in pathlib.Path("/proc/net/snmp").read_text().splitlines() if line.startswith("Udp:")]
    return int(dict(zip(*udp))["OutDatagrams"])


def counted(measure):
    """The result of a measurement and the datagrams that it took, requests and answers."""
    before = datagrams_sent()
    result = measure()
    return result, datagrams_sent() - before


def walk(bench, tool, version):
    commands = " && ".join(f"{tool} -v{version} -c public -On -m '' {SNMP_ADDRESS} {oid}" for oid in SNMP_TABLES)
    return bench.process("sh", "-c", commands)


def beside_ours(bench, printer_id, peers, rounds):
    """Our update of that printer, the same as a process, and the peers ({name: measure of a process}), in turn."""
    def in_process():
        return (bench.update(5, printer_id)[0][-1][-1],)

    measures = {"an update, in the window": in_process,
                "the same as a process": lambda: bench.process(bench.ours("update_bench"), "1", printer_id)}
    return in_turn(rounds, {**measures, **peers})


def snmp_part(bench):
    bench.need_printers()
    tools = {"snmpwalk": "1", "snmpbulkwalk": "2c"}
    peers = {f"`{tool}`, version {version}": lambda tool=tool, version=version: walk(bench, tool, version)
             for tool, version in tools.items() if shutil.which(tool)}
    measured = beside_ours(bench, SNMP_PRINTER, peers, 9)
    text = compared("status and supplies by SNMP", measured, [("ms", 0, ms)])
    packets = {"an update": counted(lambda: bench.update(1, SNMP_PRINTER))[1],
               **{name: counted(measure)[1] for name, measure in peers.items()}}
    text += "\n\nDatagrams, requests and answers together: "
    text += ", ".join(f"{name} {count}" for name, count in packets.items()) + "."
    return text + not_here(tool for tool in tools if not shutil.which(tool))


def ipp_part(bench):
    bench.need_printers()
    test = bench.folder / "attributes.test"
    test.write_text(IPP_TEST)
    commands = {"ipptool": ("ipptool", IPP_URI, test),
                "lpstat": ("lpstat", "-h", "127.0.0.1:631", "-l", "-p", "office")}
    peers = {f"`{tool}`": lambda command=command: bench.process(*command)
             for tool, command in commands.items() if shutil.which(tool)}
    measured = beside_ours(bench, IPP_PRINTER, peers, 9)
    return (compared("a queue of cupsd by IPP", measured, [("ms", 0, ms)])
            + not_here(tool for tool in commands if not shutil.which(tool)))


@contextlib.contextmanager
def display():
    read, write = os.pipe()
    command = ["Xvfb", "-displayfd", str(write), "-screen", "0", "1000x800x24", "-nolisten", "tcp", "-noreset"]
    server = subprocess.Popen(command, pass_fds=[write], stderr=subprocess.DEVNULL)
    os.close(write)
    try:
        with os.fdopen(read) as number:
            yield f":{number.readline().strip()}"
    finally:
        server.terminate()
        server.wait(5)


def first_paint(bench, variables, command):
    session = ("dbus-run-session", "--") if shutil.which("dbus-run-session") else ()
    words = run(*session, bench.ours("paint_bench"), command, env=bench.environment(**variables),
                stderr=subprocess.DEVNULL).split()
    return tuple(map(float, words))


def window_part(bench):
    bench.need_printers()
    programs = {"`tintoral`": bench.ours("tintoral"), "`system-config-printer`": shutil.which("system-config-printer")}
    here = {name: path for name, path in programs.items() if path}
    with display() as number:
        variables = {"DISPLAY": number, "QT_QPA_PLATFORM": "xcb", "GDK_BACKEND": "x11", "NO_AT_BRIDGE": "1",
                     "CUPS_SERVER": "127.0.0.1"}
        measured = in_turn(5, {name: lambda path=path: first_paint(bench, variables, path)
                               for name, path in here.items()})
    columns = [("exec to window, ms", 0, ms), ("exec to picture, ms", 1, ms),
               ("memory (PSS), MiB", 2, lambda kib: digits(kib / 1024))]
    return compared("window", measured, columns) + not_here(programs.keys() - here.keys())


WAYS = {  # what the demo's printers stand for, by the start of their id
    "USB:EPSON Stylus C84": "USB, Epson remote mode", "USB:EPSON Stylus Photo R200": "USB, Epson D4",
    "USB:Canon": "USB, Canon", "USB:HP": "USB, HP device ID", "Network:Canon iP": "raw port, Canon",
    "Network:Canon MG": "raw port, Canon IVEC", "Network:EPSON AcuLaser": "raw port, Epson laser",
    "Network:EPSON Stylus Photo R300": "raw port, Epson RC0", "Network:EPSON Stylus CX6400": "raw port, Epson RC1",
    "Network:EPSON Stylus Photo R800": "raw port, Epson RC", "Network:EPSON Stylus Photo R2400": "raw port, Epson D4",
    "Network:Lexmark": "Printer MIB (SNMP)", "Network:HP": "SNMP, HP device ID", "Network:Brother": "SNMP, two supplies",
    "Mac:": "IPP", "BJNP:": "BJNP", "AirPort:": "base station"}


def way_of(printer_id):
    return next((way for start, way in WAYS.items() if printer_id.startswith(start)), printer_id)


def update_part(bench):
    bench.need_printers()
    rows = []
    for printer_id, outcome, pauses, silence, libusb, rounds in bench.update(5):
        if outcome != "levels":
            rows.append([way_of(printer_id), outcome, "", "", ""])
            continue
        demanded = [whole(microseconds / 1000) for microseconds in (pauses, silence)]
        rows.append([way_of(printer_id), *demanded, ms(libusb) if libusb else "", median_and_least(rounds)])
    head = ["way to the printer", "pauses, ms", "silence, ms", "emulated USB, ms", "all else, ms"]
    return table(head, rows) + ("" if bench.usb else not_here(["umockdev, for the USB printers"]))


# --- Google Benchmark -------------------------------------------------------------------------------------------------

PARSERS = {
    "epsonBinary": "Epson `@BDC ST2`", "epsonText": "Epson `@BDC ST`", "epsonLaser": "Epson `@EJL STATUS`",
    "canonPlain": "Canon `BST:`, `CIR:`", "canonIvec": "Canon IVEC", "canonWarnings": "Canon `DWS:`",
    "hpPens": "HP device ID, `S:`", "hpVStatus": "HP device ID, `VSTATUS:`", "deviceID": "make and model of a device ID",
    "snmpMessage": "SNMP message, eight columns", "ippMessage": "IPP message, three markers", "bjnpPacket": "BJNP packet",
    "baseStation": "base station, a whole session with its socket", "txtRecord": "TXT record",
    "modelTable": "the model table, at start"}
DRAWINGS = {"levelView": "level view, six inks", "icon": "icon", "chart": "2-D chart, a year of six inks, 720 × 420",
            "chart3d/Smooth": "3-D chart, the same", "chart3d/InMotion": "3-D chart, while it is turned"}
HISTORY = {
    "openAndDraw": ("read the file and draw the chart", "100 ms"), "redraw/0": ("draw it again, 1 month", "16 ms"),
    "redraw/1": ("4 months", "16 ms"), "redraw/6": ("19 months", "16 ms"),
    "append": ("store one update: read, add, replace the file, flushed to disk", "150 ms"),
    "lastLevel": ("the last levels, at start", ""), "readFile/Binary": ("read the file: binary, 3.1 MB", ""),
    "readFile/Xml": ("read the file: XML, 20 MB", ""), "writeFile/Binary": ("write the file: binary", ""),
    "writeFile/Xml": ("write the file: XML", ""), "exportCsv": ("the readings as CSV", "")}
NANOSECONDS = {"ns": 1, "us": 1000, "ms": 1000000}


def google(bench, name, repetitions, least_time, elapsed=()):
    """{benchmark: ([ns of each repetition], bytes of the input or None)}; repetitions in random turn. Processor time, but
    of those in `elapsed`, which wait for a disk."""
    options = {"repetitions": repetitions, "min_time": least_time, "enable_random_interleaving": "true", "format": "json"}
    report = json.loads(run(bench.ours(name), *(f"--benchmark_{key}={value}" for key, value in options.items()),
                            env=bench.environment(), stderr=subprocess.DEVNULL))
    results = {}
    for entry in report["benchmarks"]:
        if entry.get("error_occurred"):
            sys.exit(f"{name}: {entry['name']}: {entry['error_message']}")
        if entry["run_type"] == "iteration":
            times, _ = results.setdefault(entry["run_name"], ([], entry.get("bytes")))
            clock = "real_time" if entry["run_name"] in elapsed else "cpu_time"
            times.append(entry[clock] * NANOSECONDS[entry["time_unit"]])
    return results


def whole(number):
    return f"{number:,.0f}"


def parser_part(bench):
    results = google(bench, "parser_bench", 5, 0.05)
    rows = []
    for name, text in PARSERS.items():
        times, size = results[name]
        rows.append([text, f"{size:.0f}" if size else "", median_and_least(times, whole)])
    return table(["what is read", "bytes", "ns"], rows)


def drawing_part(bench):
    results = google(bench, "drawing_bench", 5, 0.1)
    rows = []
    for name, text in DRAWINGS.items():
        scales = [[time_ / 1000 for time_ in results[f"{name}/{scale}"][0]] for scale in (1, 2)]
        rows.append([text, *(median_and_least(times, whole) for times in scales)])
    return table(["picture", "µs at 1 pixel to the point", "µs at 2"], rows)


def history_part(bench):
    results = google(bench, "history_bench", 3, 0.1, elapsed={"append"})
    rows = [[text, median_and_least([time_ / 1000 for time_ in results[name][0]]), limit]
            for name, (text, limit) in HISTORY.items()]
    return table(["ten years of readings", "ms", "at most"], rows)


PARTS = {"filter": filter_part, "window": window_part, "snmp": snmp_part, "ipp": ipp_part, "update": update_part,
         "parsers": parser_part, "drawing": drawing_part, "history": history_part}


def put_into_page(part, text):
    begin, end = f"<!-- {part} -->\n", f"<!-- /{part} -->"
    page = PAGE.read_text()
    before, found, rest = page.partition(begin)
    _, found_end, after = rest.partition(end)
    if not found or not found_end:
        sys.exit(f"{PAGE}: no place for {part}")
    PAGE.write_text(f"{before}{begin}{text}\n{end}{after}")


def main(build, *arguments):
    writes = "--write" in arguments
    parts = [argument for argument in arguments if argument != "--write"] or list(PARTS)
    unknown = [part for part in parts if part not in PARTS]
    if unknown:
        sys.exit(f"no part {unknown[0]}; there are: {' '.join(PARTS)}")
    bench = Bench(pathlib.Path(build).resolve())
    try:
        for part in parts:
            try:
                text = PARTS[part](bench)
            except Missing as missing:
                text = f"Not measured: {missing}."
            print(f"## {part}\n\n{text}\n", flush=True)
            if writes:
                put_into_page(part, text)
    finally:
        bench.stop()


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit("usage: side_by_side.py BUILD_DIR [--write] [PART...]")
    main(*sys.argv[1:])
