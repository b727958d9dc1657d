#!/usr/bin/python3
"""*IDN? on an open VXI-11 link to the simulator's gateway: ours against PyVISA-py's, on the same gateway.

Starts `cvn73100-sim --vxi11 127.0.0.1` (registered with the host's portmapper; rpcbind is started here when none
runs, which needs root), times PyVISA-py's query on an open session, then runs our benchmark program's Vxi11Query
against the same gateway. Prints one JSON object with the medians in seconds and their ratio.

Run with /usr/bin/python3: pyvisa and pyvisa-py are Debian packages of that interpreter."""

import argparse
import json
import os
import socket
import statistics
import subprocess
import sys
import time

import pyvisa


def listening(port):
    probe = socket.socket()
    try:
        probe.bind(("127.0.0.1", port))
        return False
    except OSError:
        return True
    finally:
        probe.close()


def wait_for(condition, seconds=5.0):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            sys.exit("timed out waiting for a peer to start")
        time.sleep(0.01)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sim", required=True, help="the cvn73100-sim program")
    parser.add_argument("--bench", required=True, help="the cvn73100_network_bench program")
    parser.add_argument("--queries", type=int, default=2000)
    args = parser.parse_args()

    started = []
    try:
        if not listening(111):
            started.append(subprocess.Popen(["/usr/sbin/rpcbind", "-f", "-w"]))
            wait_for(lambda: listening(111))
        sim = subprocess.Popen([args.sim, "--vxi11", "127.0.0.1"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               text=True)
        started.append(sim)
        endpoint = sim.stdout.readline().strip()

        rm = pyvisa.ResourceManager("@py")
        inst = rm.open_resource("TCPIP0::127.0.0.1::gpib0,7::INSTR")
        inst.timeout = 2000
        inst.read_termination = "\n"
        times = []
        for _ in range(args.queries):
            start = time.perf_counter()
            inst.query("*IDN?")
            times.append(time.perf_counter() - start)
        inst.close()
        pyvisa_s = statistics.median(times)

        out = subprocess.run([args.bench, "--benchmark_filter=^Vxi11Query", "--benchmark_format=json",
                              "--benchmark_repetitions=5"],
                             env=dict(os.environ, CVN73100_BENCH_VXI11=endpoint), check=True, capture_output=True,
                             text=True).stdout
        runs = [b for b in json.loads(out)["benchmarks"] if b.get("aggregate_name") == "median"]
        ours_s = runs[0]["real_time"] * 1e-6
        print(json.dumps({"ours_query_s": ours_s, "pyvisa_query_s": pyvisa_s, "ours_over_pyvisa": ours_s / pyvisa_s,
                          "endpoint": endpoint}))
    finally:
        for process in reversed(started):
            process.terminate()
            process.wait()


if __name__ == "__main__":
    main()
