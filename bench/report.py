#!/usr/bin/python3
"""Runs every benchmark program of a build, the PyVISA-py comparison and a plain `cp`, and writes the
performance report (docs/PERFORMANCE.md) with each figure as a ratio and the command that reproduces it.

Usage: bench/report.py --build build-bench --out docs/PERFORMANCE.md   (bench/run does this after building)"""

import argparse
import datetime
import json
import os
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time

UNITS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def seconds(entry):
    return entry["real_time"] * UNITS[entry["time_unit"]]


class Results:
    """The entries of one benchmark program's JSON output."""

    def __init__(self, program, entries):
        self.program = program
        self.entries = entries

    def pick(self, pattern):
        """The entry whose name matches `pattern`; the median when the run was repeated."""
        rx = re.compile(pattern)
        hits = [e for e in self.entries if rx.search(e["name"])]
        for e in hits:
            if e.get("run_type") == "aggregate" and e.get("aggregate_name") == "median":
                return e
        hits = [e for e in hits if e.get("run_type", "iteration") == "iteration"]
        if not hits:
            raise KeyError(f"{self.program}: no benchmark matches {pattern}")
        if len(hits) == 1:
            return hits[0]
        # Repetitions without aggregates: the median by time, counters taken from that run.
        hits.sort(key=seconds)
        return hits[len(hits) // 2]


# Programs under bench/ that are not Google Benchmark programs: pyvisa_compare.py runs them itself.
OWN_PROTOCOL = {"query_overhead"}


def run_programs(build, work):
    """Runs every benchmark program under <build>/bench; returns {program name: Results}."""
    results = {}
    root = os.path.join(build, "bench")
    programs = []
    for folder, _, files in os.walk(root):
        for name in files:
            path = os.path.join(folder, name)
            if name in OWN_PROTOCOL:
                continue
            if os.access(path, os.X_OK) and not name.endswith((".so", ".a", ".sh")) and "CMakeFiles" not in path:
                programs.append(path)
    for path in sorted(programs):
        name = os.path.basename(path)
        out = os.path.join(work, name + ".json")
        log = os.path.join(work, name + ".txt")
        print(f"bench/run: {os.path.relpath(path, build)}", file=sys.stderr, flush=True)
        with open(log, "w") as console:
            subprocess.run([path, f"--benchmark_out={out}", "--benchmark_out_format=json"], check=True,
                           stdout=console, stderr=subprocess.STDOUT, cwd=work)
        with open(out) as f:
            results[name] = Results(name, json.load(f)["benchmarks"])
        results[name].console = open(log).read()
        results[name].path = os.path.relpath(path, build)
    return results


def time_cp(size, runs=30):
    """Median wall time of the `cp` program copying a file of `size` bytes (a fresh target each time)."""
    with tempfile.TemporaryDirectory() as folder:
        source = os.path.join(folder, "source.scp")
        with open(source, "wb") as f:
            f.write(os.urandom(size))
        times = []
        for i in range(runs):
            target = os.path.join(folder, f"copy{i % 2}.scp")
            start = time.perf_counter()
            subprocess.run(["cp", source, target], check=True)
            times.append(time.perf_counter() - start)
        return statistics.median(times)


class LoadSampler:
    """Samples the 1-minute load average every few seconds while the benchmarks run."""

    def __init__(self, period=5.0):
        self.samples = []
        self._stop = threading.Event()
        self._thread = threading.Thread(target=self._run, args=(period,), daemon=True)
        self._thread.start()

    def _run(self, period):
        while not self._stop.wait(period):
            self.samples.append(os.getloadavg()[0])

    def stop(self):
        self._stop.set()
        self._thread.join()
        return self.samples or [os.getloadavg()[0]]


def machine():
    model = ""
    try:
        with open("/proc/cpuinfo") as f:
            model = next((line.split(":", 1)[1].strip() for line in f if line.startswith("model name")), "")
    except OSError:
        pass
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True).stdout.splitlines()[:1]
    return {"cpu": model, "cores": os.cpu_count(), "kernel": platform.release(),
            "compiler": compiler[0] if compiler else "?"}


def fmt(value, digits=3):
    if value is None:
        return "—"
    if abs(value) >= 100:
        return f"{value:.0f}"
    return f"{value:.{digits}g}"


def meets(value, goal):
    """'yes' / 'no' for a goal written as '<= 0.1', '>= 0.95', '< 0.02'."""
    if goal is None or value is None:
        return ""
    op, bound = goal.split()
    bound = float(bound)
    ok = {"<=": value <= bound, "<": value < bound, ">=": value >= bound, ">": value > bound}[op]
    return "yes" if ok else "**no**"


def fuzz_counts(source):
    path = os.path.join(source, "docs", "fuzz-counts.txt")
    return open(path).read().rstrip() if os.path.exists(path) else None


FUZZ_HEADING = "## Fuzzing"


def fuzz_section(fuzz):
    lines = [FUZZ_HEADING + "\n"]
    if fuzz:
        lines += ["Inputs run per target, from `docs/fuzz-counts.txt` (written by `scripts/fuzz`):\n", "```", fuzz,
                  "```"]
    else:
        lines.append("`docs/fuzz-counts.txt` has not been written yet: run `scripts/fuzz` to produce the counts.")
    return lines + [""]


def refresh_fuzz_section(report, source):
    """Puts the current fuzz counts into an existing report, leaving every other section as it was."""
    text = open(report).read()
    start = text.index(FUZZ_HEADING + "\n")
    end = text.index("\n## ", start + len(FUZZ_HEADING)) + 1
    with open(report, "w") as f:
        f.write(text[:start] + "\n".join(fuzz_section(fuzz_counts(source))) + "\n" + text[end:])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build")
    parser.add_argument("--out", required=True)
    parser.add_argument("--source", default=os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    parser.add_argument("--fuzz-only", action="store_true", help="only refresh the fuzzing section of --out")
    args = parser.parse_args()
    if args.fuzz_only:
        refresh_fuzz_section(args.out, args.source)
        return
    if not args.build:
        parser.error("--build is required")
    build = os.path.abspath(args.build)
    # The commands are shown for the default build folder of bench/run.
    bdir = "build-bench"

    sampler = LoadSampler()
    started = datetime.datetime.now(datetime.timezone.utc)
    work = tempfile.mkdtemp(prefix="cvnbench.")
    results = run_programs(build, work)

    print("bench/run: PyVISA-py comparison", file=sys.stderr, flush=True)
    compare = json.loads(subprocess.run(
        ["/usr/bin/python3", os.path.join(args.source, "bench", "pyvisa_compare.py"),
         "--sim", os.path.join(build, "simulator", "cvn73100-sim"),
         "--cvnscope", os.path.join(build, "cli", "cvnscope"), "--python-path", os.path.join(build, "python"),
         "--query-overhead", os.path.join(build, "bench", "discovery", "query_overhead")],
        check=True, capture_output=True, text=True).stdout)

    rows = []  # (area, figure, ratio, goal, measured, command)

    def add(area, figure, ratio, goal, measured, command):
        rows.append((area, figure, ratio, goal, measured, command))

    # --- Per-query overhead against PyVISA-py. ---
    pv = (f"/usr/bin/python3 bench/pyvisa_compare.py --sim {bdir}/simulator/cvn73100-sim "
          f"--cvnscope {bdir}/cli/cvnscope --python-path {bdir}/python "
          f"--query-overhead {bdir}/bench/discovery/query_overhead")
    py_cycle = compare["pyvisa_cycle_s"] * 1e3
    for tx in (50, 0):
        us = lambda key: compare[key] * 1e6  # noqa: E731
        add("Query", f"Identification query on the simulator's pty, TXDelay {tx} ms: our time above its mandated "
            "waits and above the bare system calls of the same sequence / PyVISA-py's open + `*IDN?` + close "
            "above the bare system calls of that", compare[f"above_floor_tx{tx}_over_pyvisa"], "<= 0.1",
            f"{us(f'above_floor_tx{tx}_s'):.0f} µs (median of {us(f'overhead_tx{tx}_s'):.0f} − "
            f"{us(f'query_floor_tx{tx}_s'):.0f} paired by round) / "
            f"({py_cycle * 1e3:.0f} − {us(f'exchange_floor_tx{tx}_s'):.0f}) µs", pv)
        add("Query", "… the same without taking off either side's bare system calls: our time above the mandated "
            "waits / PyVISA-py's whole cycle", compare[f"overhead_tx{tx}_over_pyvisa"], None,
            f"{us(f'overhead_tx{tx}_s'):.0f} µs / {py_cycle * 1e3:.0f} µs", pv)
    add("Query", "`*IDN?` on an open connection, through the control, same pty: ours / PyVISA-py's, each above a "
        "bare write and read", compare["query_above_floor_over_pyvisa"], "<= 0.1",
        f"({compare['ours_query_s'] * 1e6:.1f} − {compare['open_port_floor_s'] * 1e6:.1f}) µs / "
        f"({compare['pyvisa_query_s'] * 1e6:.0f} − {compare['open_port_floor_s'] * 1e6:.1f}) µs", pv)
    add("Query", "… the same, whole: ours / PyVISA-py's", compare["query_over_pyvisa"], None,
        f"{compare['ours_query_s'] * 1e6:.1f} µs / {compare['pyvisa_query_s'] * 1e6:.0f} µs", pv)
    add("Query", "Identification query as a whole `cvnscope test COM1` run (program start included: "
        f"`cvnscope address` alone takes {compare['cvnscope_start_s'] * 1e3:.1f} ms): above the mandated waits / "
        "PyVISA-py's cycle", compare["cvnscope_overhead_over_pyvisa"], None,
        f"({compare['cvnscope_test_s'] * 1e3:.1f} − {compare['waits_tx50_s'] * 1e3:.1f}) ms / {py_cycle:.3f} ms", pv)
    iolib = results.get("cvn73100_iolib_bench")
    if iolib:
        ours = seconds(iolib.pick(r"^Query/backend:0"))
        add("Query", "`*IDN?` on an open port through the I/O library alone, its own pty (C++, no Python) / "
            "PyVISA-py on the simulator's pty", ours / compare["pyvisa_query_s"], None,
            f"{ours * 1e6:.0f} µs / {compare['pyvisa_query_s'] * 1e6:.0f} µs",
            f"{bdir}/bench/iolib/cvn73100_iolib_bench --benchmark_filter='^Query'")

    # --- VXI-11. ---
    network = results.get("cvn73100_network_bench")
    if network:
        print("bench/run: VXI-11 comparison", file=sys.stderr, flush=True)
        cmd = (f"/usr/bin/python3 bench/vxi11_compare.py --sim {bdir}/simulator/cvn73100-sim "
               f"--bench {bdir}/bench/network/cvn73100_network_bench")
        run = subprocess.run(["/usr/bin/python3", os.path.join(args.source, "bench", "vxi11_compare.py"),
                              "--sim", os.path.join(build, "simulator", "cvn73100-sim"),
                              "--bench", os.path.join(build, "bench", "network", "cvn73100_network_bench")],
                             capture_output=True, text=True)
        if run.returncode == 0:  # needs a portmapper, or root to start rpcbind
            vx = json.loads(run.stdout)
            add("Network", "`*IDN?` on an open VXI-11 link to the simulator's gateway (portmapper lookup done): "
                "ours / PyVISA-py's", vx["ours_over_pyvisa"], "<= 0.5",
                f"{vx['ours_query_s'] * 1e6:.0f} µs / {vx['pyvisa_query_s'] * 1e6:.0f} µs", cmd)
        e = network.pick(r"^Vxi11Block")
        add("Network", f"Screen image as a {e['block_B'] / 2**20:.2f} MiB BMP block through VXI-11 on loopback (our "
            "client, the simulator's gateway): bytes per second / a plain loopback TCP copy of the same size",
            e["bytes_per_second"] / e["tcp_copy_bytes_per_second"], ">= 0.5",
            f"{e['bytes_per_second'] / 1e6:.0f} MB/s / {e['tcp_copy_bytes_per_second'] / 1e6:.0f} MB/s",
            f"{bdir}/bench/network/cvn73100_network_bench --benchmark_filter=Vxi11Block")
        try:
            e = network.pick(r"^Rfc2217PacedLine")
        except KeyError:  # skipped: ser2net is not installed
            e = None
        if e:
            add("Line", f"ASCII waveform reply (~{e['bytes'] / 1000:.0f} kB) from an instrument paced at 9600 baud, "
                "through ser2net's RFC 2217 (the I/O library's device-server line): bytes per second / line rate",
                e["fraction_of_line_rate"], ">= 0.95", f"{seconds(e):.1f} s per reply",
                f"{bdir}/bench/network/cvn73100_network_bench --benchmark_filter=Rfc2217PacedLine")

    # --- Line rate. ---
    if iolib:
        for baud in (9600, 57600):
            e = iolib.pick(rf"^PacedLine/baud:{baud}/")
            add("Line", f"ASCII waveform reply (~{e['bytes'] / 1000:.0f} kB) over a pty paced at {baud} baud, "
                "I/O library: bytes per second / line rate", e["fraction_of_line_rate"], ">= 0.95",
                f"CPU {e['cpu_per_wall']:.3f} of wall",
                f"{bdir}/bench/iolib/cvn73100_iolib_bench --benchmark_filter='PacedLine/baud:{baud}'")
    server = results.get("server_bench")
    if server:
        names = {0: "learn string", 1: "waveform (WORD, 1000 points)", 3: "GIF screen image"}
        for baud in (9600, 57600):
            for transfer, what in names.items():
                try:
                    e = server.pick(rf"^BM_Paced/transfer:{transfer}/baud:{baud}/")
                except KeyError:
                    continue
                add("Line", f"{what} ({e['payload_B']:.0f} B) through the server's block reader at {baud} baud: "
                    "wire bytes per second / line rate", e["line_ratio"], ">= 0.95",
                    f"{seconds(e) * 1e3:.0f} ms per transfer",
                    f"{bdir}/bench/server/server_bench --benchmark_filter='BM_Paced/transfer:{transfer}/baud:{baud}'")

    if server:
        try:
            e = server.pick(r"^BM_SettingsWriteCheck")
        except KeyError:
            e = None
        if e:
            add("Query", "A settings write that checks the instrument's error queue, unpaced pty: checked write / "
                "bare write", e["checked_per_bare"], None,
                f"{e['checked_us']:.1f} µs / {e['bare_us']:.1f} µs",
                f"{bdir}/bench/server/server_bench --benchmark_filter=BM_SettingsWriteCheck")
            add("Query", "… the check's cost in round trips: (checked − bare write) / one `*OPC?` query",
                e["extra_round_trips"], "<= 1", f"({e['checked_us']:.1f} − {e['bare_us']:.1f}) µs / "
                f"{e['query_us']:.1f} µs", f"{bdir}/bench/server/server_bench --benchmark_filter=BM_SettingsWriteCheck")

    # --- The default search. ---
    search = results.get("discovery_bench")
    if search:
        e = search.pick(r"^BM_DefaultSearch")
        add("Search", "Default search (4 COM ports, 3 silent; GPIB0 0..30, one instrument): wall time / sum of its "
            "mandated waits", e["wall_over_waits"], "<= 1.05",
            f"{e['wall_ms']:.0f} ms / {e['mandated_ms']:.0f} ms", f"{bdir}/bench/discovery/discovery_bench")
        add("CPU", "Default search: process CPU time / wall time", e["cpu_share"], "< 0.05", "",
            f"{bdir}/bench/discovery/discovery_bench")
        one = search.pick(r"^BM_ParallelSilentPorts/ports:1")
        four = search.pick(r"^BM_ParallelSilentPorts/ports:4")
        add("Search", "Parallel search of four silent COM ports: wall time / that of one silent port",
            four["wall_ms"] / one["wall_ms"], "<= 1.1", f"{four['wall_ms']:.0f} ms / {one['wall_ms']:.0f} ms",
            f"{bdir}/bench/discovery/discovery_bench --benchmark_filter=BM_ParallelSilentPorts")
        add("CPU", "Parallel search of four silent COM ports: process CPU time / wall time", four["cpu_share"],
            "< 0.05", "", f"{bdir}/bench/discovery/discovery_bench --benchmark_filter=BM_ParallelSilentPorts")

    # --- CPU while waiting. ---
    if iolib:
        backends = {0: "COM on a pty", 1: "simulated GPIB bus", 2: "Prologix adapter over TCP"}
        for backend, what in backends.items():
            e = iolib.pick(rf"^WaitCpu/backend:{backend}/")
            add("CPU", f"Waiting out a 2.5 s read timeout, silent instrument, {what}: CPU of the waiting thread / wall",
                e["cpu_per_wall"], "< 0.02", f"whole process {e['process_cpu_per_wall']:.4f}",
                f"{bdir}/bench/iolib/cvn73100_iolib_bench --benchmark_filter='WaitCpu/backend:{backend}'")

    # --- Setup files against cp. ---
    setups = results.get("setups_bench")
    if setups:
        read_write = seconds(setups.pick(r"^BM_SetupFileReadWrite"))
        write = seconds(setups.pick(r"^BM_SetupFileWrite"))
        copy = seconds(setups.pick(r"^BM_PlainCopy"))
        synced = seconds(setups.pick(r"^BM_PlainReadWriteSynced"))
        print("bench/run: cp", file=sys.stderr, flush=True)
        cp = time_cp((1 << 20) + 100)
        cmd = f"{bdir}/bench/setups/setups_bench"
        add("Files", "1 MiB setup file read + atomic durable write (temp file, fsync, rename) / `cp` of the same "
            "size (the program, timed from Python)", read_write / cp, "<= 3",
            f"{read_write * 1e3:.2f} ms / {cp * 1e3:.2f} ms", cmd + " and bench/report.py (time_cp)")
        add("Files", "… / in-process copy (std::filesystem::copy_file)", read_write / copy, "<= 3",
            f"{read_write * 1e3:.2f} ms / {copy * 1e3:.2f} ms", cmd)
        add("Files", "… / plain read + write + fsync of the same bytes", read_write / synced, "<= 3",
            f"{read_write * 1e3:.2f} ms / {synced * 1e3:.2f} ms; the write alone {write * 1e3:.2f} ms", cmd)

    # --- The form's property bag. ---
    form = results.get("form_bench")
    if form:
        small, large = seconds(form.pick(r"^BM_FormLoad/1000$")), seconds(form.pick(r"^BM_FormLoad/40000$"))
        add("Files", "Form of 40,000 properties loaded: time per key / time per key with 1,000 (1 when linear)",
            (large / 40000) / (small / 1000), "<= 2", f"{large * 1e3:.1f} ms / {small * 1e3:.2f} ms",
            f"{bdir}/bench/form/form_bench")

    # --- Parser throughput. ---
    simulator = results.get("cvn73100_sim_bench")
    if simulator:
        def rate(pattern):
            return simulator.pick(pattern)["bytes_per_second"]
        cmd = f"{bdir}/bench/simulator/cvn73100_sim_bench"
        parse, bound = rate(r"^BM_ParseMessage$"), rate(r"^BM_ParseLowerBound_Memchr$")
        add("Parsers", "Simulator's SCPI message parser: bytes per second / memchr over the same message",
            parse / bound, None, f"{parse / 1e6:.0f} MB/s / {bound / 1e6:.0f} MB/s", cmd + " --benchmark_filter='Parse'")
        for size in (4096, 1 << 20):
            frame, copy = rate(rf"^BM_FrameBlockMessage/{size}$"), rate(rf"^BM_CopyLowerBound_Memcpy/{size}$")
            add("Parsers", f"Message framer on a {size} B block of line feeds / memcpy", frame / copy, None,
                f"{frame / 1e6:.0f} MB/s / {copy / 1e6:.0f} MB/s", cmd + f" --benchmark_filter='/{size}$'")
    if setups and simulator:
        e = setups.pick(r"^BM_SetupFileRead/")
        copy = simulator.pick(r"^BM_CopyLowerBound_Memcpy/1048576$")
        add("Parsers", "Setup-file reader (every header field checked, 1 MiB learn string, from the page cache): "
            "bytes per second / memcpy of 1 MiB", e["bytes_per_second"] / copy["bytes_per_second"], None,
            f"{e['bytes_per_second'] / 1e6:.0f} MB/s / {copy['bytes_per_second'] / 1e6:.0f} MB/s",
            f"{bdir}/bench/setups/setups_bench --benchmark_filter=Read")

    load = sampler.stop()
    finished = datetime.datetime.now(datetime.timezone.utc)
    m = machine()

    fuzz = fuzz_counts(args.source)

    out = []
    w = out.append
    w("# Performance\n")
    w("How fast the control is, as ratios against a lower bound or a peer. Every figure comes from `bench/run`, which "
      "builds the benchmarks (Release) into `build-bench/`, runs every program under `bench/`, compares with "
      "PyVISA-py and `cp`, and writes this file; the last column is the command that reproduces one figure on its "
      "own (from the repository root, after `bench/run` or `cmake --build build-bench`).\n")
    w("## This run\n")
    w(f"- {started:%Y-%m-%d %H:%M} – {finished:%H:%M} UTC, {m['cores']} cores ({m['cpu']}), Linux {m['kernel']}, "
      f"{m['compiler']}, Release build")
    busy = max(load) > 1.5
    w(f"- Load average (1 min) sampled every 5 s while the benchmarks ran: mean {statistics.mean(load):.1f}, "
      f"highest {max(load):.1f}, on {m['cores']} cores; the benchmarks themselves account for up to about 1. "
      + ("Other work shared the machine at times: wall-clock figures carry that noise, most of all the "
         "comparisons with a peer measured at another moment (PyVISA-py, cp)."
         if busy else "Nothing else of note ran meanwhile."))
    w("")
    w("## Figures\n")
    w("| Area | Figure | Ratio | Goal | Met | Measured | Command |")
    w("|---|---|---|---|---|---|---|")
    for area, figure, ratio, goal, measured, command in rows:
        w(f"| {area} | {figure} | {fmt(ratio)} | {goal or '—'} | {meets(ratio, goal)} | {measured} | `{command}` |")
    w("")
    w("## Notes\n")
    w("- **Mandated waits.** Over RS-232 the identification query must wait six times (four at TXDelay 0): the "
      "settle time (10 ms) and TXDelay while the handshake lines are down, before and after the exchange, and "
      "TXDelay after each of its two writes; each wait ends on the first tick of the millisecond counter after "
      "its start + its length. `query_overhead` (bench/discovery/QueryOverhead.cpp) records, for every wait, the "
      "instant it read the counter and the instant of the tick that ends it, so the mandated time of each query "
      f"is known to the nanosecond ({compare['waits_tx50_s'] * 1e3:.2f} ms at TXDelay 50, "
      f"{compare['waits_tx0_s'] * 1e3:.2f} ms at 0, medians); the rest is ours.")
    w("- **Floors.** In the same run on the same node, `query_overhead` also times the bare system calls of each "
      "side's exchange and nothing else: for the query, open, raw 8N1 settings, flush, CR LF, `*IDN?`, read, "
      "close, with the same waits; for PyVISA-py, open, raw settings, `*IDN?`, read, close; on an open port, the "
      "write and the read. No implementation can spend less, and on this pty most of that time is the simulator "
      "being woken by each write, so each side's overhead is taken above its own floor. Without the floors "
      "(second row of each pair) the ratio is dominated by the floors themselves: our query writes twice where "
      "PyVISA-py writes once.")
    w("- **Waking on the tick.** A wait sleeps (an absolute `clock_nanosleep`) until 0.2 ms before its tick and "
      "reads the clock for the rest: the kernel wakes a sleeper tens of microseconds late, more than the whole "
      "overhead budget. That costs about 0.2 ms of CPU per wait, under 1% of a core over a query (the search's CPU row includes "
      "it).")
    w("- **Line rate.** The simulator paces its output at the line rate (baud / 10 bytes per second); a ratio "
      "of 1 means the transfer is as fast as the line allows, and the small shortfall is the query's own "
      "round trip and the block header.")
    w("- **Search.** A silent COM port costs its mandated waits and the 2.5 s reply limit; the ratio shows what the "
      "search adds to that floor.")
    w("- **Files.** The control's save is durable (fsync) and atomic (temporary file and rename), `cp` is neither; "
      "the row against a plain synced write shows the price of atomicity alone.")
    w("- **Parsers** have no goal of their own; the ratio says how close each comes to only touching its bytes.")
    w("")
    out.extend(fuzz_section(fuzz))
    w("## Raw results\n")
    w("Every benchmark of every program, as Google Benchmark reported it (real time per iteration and the counters).\n")
    for name, r in sorted(results.items()):
        w(f"### `{r.path}`\n")
        w("| Benchmark | Time | Counters |")
        w("|---|---|---|")
        for e in r.entries:
            if e.get("run_type") == "aggregate" and e.get("aggregate_name") != "median":
                continue
            skip = {"name", "run_name", "run_type", "repetitions", "repetition_index", "threads", "iterations",
                    "real_time", "cpu_time", "time_unit", "family_index", "per_family_instance_index",
                    "aggregate_name", "aggregate_unit", "label", "error_occurred", "error_message"}
            counters = ", ".join(f"{k} {fmt(v)}" for k, v in e.items() if k not in skip and isinstance(v, (int, float)))
            label = f" ({e['label']})" if e.get("label") else ""
            w(f"| `{e['name']}`{label} | {e['real_time']:.4g} {e['time_unit']} | {counters} |")
        w("")
    w("PyVISA-py comparison (seconds, medians):\n")
    w("```json")
    w(json.dumps(compare, indent=2))
    w("```")

    with open(args.out, "w") as f:
        f.write("\n".join(out) + "\n")
    shutil.rmtree(work, ignore_errors=True)
    print(f"bench/run: wrote {args.out}", file=sys.stderr)


if __name__ == "__main__":
    main()
