#!/usr/bin/python3
"""The cost of one identification query, ours against PyVISA-py's, on the same pseudo-terminal.

cvn73100-sim serves one simulated instrument on a pty. On that node:
- PyVISA-py (Debian's python3-pyvisa-py, pure Python over pyserial) opens the port, asks *IDN? and closes it;
  and asks *IDN? again and again on a port it keeps open;
- the control runs its identification query (open, hold the handshake lines down, *IDN?, hold them down again,
  close) in bench/discovery/QueryOverhead.cpp, which knows to the nanosecond how long each of the query's waits
  must last and reports the rest; and the control, through the cvn73100 module in this process, asks *IDN?
  again and again on an initialised connection.
The same query is also timed as a whole `cvnscope test COM1` run, start of the program included.
Prints one JSON object with every time in seconds (medians).

Run with /usr/bin/python3: pyvisa, pyvisa-py and the module's NumPy are Debian packages of that interpreter."""

import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import pyvisa

# The identification query over RS-232 waits six times: the settle time and TXDelay while the lines are down,
# before and after the exchange, and TXDelay after each of its two writes; each wait ends on the first tick of
# the millisecond counter after its start + its length.
SETTLE_MS = 10
TX_DELAYS_MS = (50, 0)
SERIAL_ADDRESS = "COM1::Baud=9600,Handshake=DTR_DSR"


def mandated_s(tx_delay_ms):
    """The waits' lengths as asked, without the rounding to the tick."""
    return (2 * (SETTLE_MS + tx_delay_ms) + 2 * tx_delay_ms) / 1000.0


def timed(action, count):
    times = []
    for _ in range(count):
        start = time.perf_counter()
        action()
        times.append(time.perf_counter() - start)
    return statistics.median(times)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sim", required=True, help="the cvn73100-sim program")
    parser.add_argument("--cvnscope", required=True, help="the cvnscope program")
    parser.add_argument("--query-overhead", required=True, help="the query_overhead program")
    parser.add_argument("--python-path", required=True, help="the folder holding the built cvn73100 package")
    parser.add_argument("--queries", type=int, default=1000, help="queries on an open session")
    parser.add_argument("--cycles", type=int, default=40, help="open, *IDN?, close cycles")
    parser.add_argument("--query-cycles", type=int, default=100,
                        help="identification queries, each paired with its floor, per transmit delay")
    args = parser.parse_args()

    home = tempfile.mkdtemp(prefix="cvncompare.")
    sim = subprocess.Popen([args.sim, "--pty"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    node = sim.stdout.readline().strip()
    # The control finds the node as COM1, whatever this computer's own I/O configuration says.
    env = {"CVN73100_COM1": node, "CVN73100_IO_CONF": os.path.join(home, "no-io.conf"), "TMPDIR": home,
           "XDG_CONFIG_HOME": home}
    os.environ.update(env)
    sys.path.insert(0, args.python_path)
    import cvn73100

    result = {"node": node, "settle_ms": SETTLE_MS}
    try:
        manager = pyvisa.ResourceManager("@py")
        name = f"ASRL{node}::INSTR"
        options = dict(read_termination="\n", write_termination="\n", timeout=5000, baud_rate=9600)

        session = manager.open_resource(name, **options)
        identity = session.query("*IDN?")
        result["identity"] = identity
        result["pyvisa_query_s"] = timed(lambda: session.query("*IDN?"), args.queries)
        session.close()

        def pyvisa_cycle():
            resource = manager.open_resource(name, **options)
            if resource.query("*IDN?") != identity:
                raise RuntimeError("PyVISA-py read a wrong identity")
            resource.close()

        result["pyvisa_cycle_s"] = timed(pyvisa_cycle, args.cycles)
        manager.close()

        for tx_delay in TX_DELAYS_MS:
            measured = json.loads(subprocess.run(
                [args.query_overhead, SERIAL_ADDRESS, node, str(args.query_cycles), str(tx_delay)],
                env=dict(os.environ),
                check=True, capture_output=True, text=True).stdout)
            result[f"ours_cycle_tx{tx_delay}_s"] = measured["total_s"]
            result[f"waits_tx{tx_delay}_s"] = measured["mandated_s"]
            result[f"overhead_tx{tx_delay}_s"] = measured["overhead_s"]
            result[f"query_floor_tx{tx_delay}_s"] = measured["query_floor_s"]
            result[f"above_floor_tx{tx_delay}_s"] = measured["above_floor_s"]
            result[f"exchange_floor_tx{tx_delay}_s"] = measured["exchange_floor_s"]
            result[f"open_port_floor_tx{tx_delay}_s"] = measured["open_port_floor_s"]
            result[f"mandated_tx{tx_delay}_s"] = mandated_s(tx_delay)

        scope = cvn73100.Scope()
        scope.address = SERIAL_ADDRESS
        scope.initialize()
        if scope.query("*IDN?") != identity:
            raise RuntimeError("the control's session read a wrong identity")
        result["ours_query_s"] = timed(lambda: scope.query("*IDN?"), args.queries)
        scope.close_connection()
        del scope

        def program(*command):
            return lambda: subprocess.run([args.cvnscope, *command], env=dict(os.environ), check=True,
                                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

        # The program's start and end alone, with a command that does no I/O; then the identification query.
        result["cvnscope_start_s"] = timed(program("address", SERIAL_ADDRESS), args.cycles)
        result["cvnscope_test_s"] = timed(program("test", "COM1"), args.cycles)
    finally:
        sim.terminate()
        sim.wait(timeout=10)
        shutil.rmtree(home, ignore_errors=True)

    pyvisa_cycle = result["pyvisa_cycle_s"]
    for tx_delay in TX_DELAYS_MS:
        result[f"overhead_tx{tx_delay}_over_pyvisa"] = result[f"overhead_tx{tx_delay}_s"] / pyvisa_cycle
        # Each side above the bare system calls its own exchange needs: the query's sequence with its waits for
        # us, a plain open, *IDN?, read, close for PyVISA-py.
        ours = result[f"above_floor_tx{tx_delay}_s"]
        theirs = pyvisa_cycle - result[f"exchange_floor_tx{tx_delay}_s"]
        result[f"pyvisa_above_floor_tx{tx_delay}_s"] = theirs
        result[f"above_floor_tx{tx_delay}_over_pyvisa"] = max(ours, 0.0) / theirs
    result["query_over_pyvisa"] = result["ours_query_s"] / result["pyvisa_query_s"]
    open_floor = min(result[f"open_port_floor_tx{tx}_s"] for tx in TX_DELAYS_MS)
    result["open_port_floor_s"] = open_floor
    result["query_above_floor_over_pyvisa"] = (max(result["ours_query_s"] - open_floor, 0.0) /
                                               (result["pyvisa_query_s"] - open_floor))
    program_overhead = result["cvnscope_test_s"] - result["waits_tx50_s"]
    result["cvnscope_overhead_s"] = program_overhead
    result["cvnscope_overhead_over_pyvisa"] = program_overhead / pyvisa_cycle
    json.dump(result, sys.stdout, indent=2)
    print()


if __name__ == "__main__":
    main()
