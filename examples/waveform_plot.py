#!/usr/bin/python3
"""Capture one channel of a 73100 oscilloscope and plot it.

With no I/O configuration the built-in simulated instrument answers at GPIB0::7::INSTR, so this runs on any
computer. From the build tree:

    PYTHONPATH=build/python /usr/bin/python3 examples/waveform_plot.py --output waveform.png

The plot needs matplotlib (Debian: python3-matplotlib); without it the samples are printed instead. For the
simulated instrument the plot also shows the signal it was given, so the two curves lie on each other.
"""

import argparse
import os
import sys

import cvn73100
from cvn73100 import sim


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--address", default=cvn73100.DEFAULT_ADDRESS, help="instrument address (%(default)s)")
    parser.add_argument("--channel", type=int, default=1, choices=range(1, 5), help="analog channel (%(default)s)")
    parser.add_argument(
        "--points", type=int, default=1000, choices=(0, 100, 250, 500, 1000, 2000), help="points (%(default)s)"
    )
    parser.add_argument("--output", help="save the plot to this file instead of showing it")
    return parser.parse_args()


def simulated(scope):
    """The simulated instrument behind the scope's address, when there is one."""
    io = scope.io_configuration
    if not io.active_port_is_gpib:
        return None
    return sim.bus_instrument(io.active_port_gpib_address, board=io.gpib_port_index(io.active_io_port))


def print_samples(times, volts, identity):
    print(f"{identity}: {len(times)} points, {volts.min():.4g} V to {volts.max():.4g} V")
    print("time (s)        volts")
    step = max(len(times) // 20, 1)
    for t, v in zip(times[::step], volts[::step]):
        print(f"{t:<+15.6e} {v:+.5f}")


def plot(times, volts, identity, channel, reference, output):
    import matplotlib

    if output or not (os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY")):
        matplotlib.use("Agg")
    import matplotlib.pyplot as plt

    figure, axes = plt.subplots(figsize=(9, 4.5))
    axes.plot(times * 1e3, volts, label=f"channel {channel}")
    if reference is not None:
        axes.plot(times * 1e3, reference, "--", linewidth=1, label="simulated signal")
    axes.set_xlabel("time after trigger (ms)")
    axes.set_ylabel("volts")
    axes.set_title(identity)
    axes.grid(True, alpha=0.3)
    axes.legend(loc="upper right")
    figure.tight_layout()
    if output or matplotlib.get_backend().lower() == "agg":
        path = output or "waveform.png"
        figure.savefig(path)
        print(f"plot written to {os.path.abspath(path)}")
    else:
        plt.show()


def main():
    args = arguments()
    try:
        with cvn73100.Scope() as scope:
            scope.address = args.address
            scope.initialize()
            identity = scope.query("*IDN?")
            # An instrument sends no record for a channel that is off.
            scope.analog_channels[args.channel].display = cvn73100.OnOffState.ON
            times, volts = scope.waveform(args.channel, args.points)
            instrument = simulated(scope)
    except cvn73100.ScopeError as error:
        print(f"error {error}", file=sys.stderr)
        return 1

    # The signal as the channel's settings show it (coupling, averaging).
    reference = instrument.channel_volts(args.channel, times) if instrument is not None else None
    try:
        plot(times, volts, identity, args.channel, reference, args.output)
    except ImportError:
        print_samples(times, volts, identity)
    return 0


if __name__ == "__main__":
    sys.exit(main())
