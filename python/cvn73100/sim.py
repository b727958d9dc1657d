"""The simulated 73100 oscilloscope, so that a script or a notebook runs without hardware.

With no I/O configuration the control's GPIB0 is the process's simulated bus, with a supported 73135D at address
7. ``start`` places more instruments on that bus, ``start_pty`` serves one on a pseudo-terminal as an RS-232
instrument, and ``signal_volts`` gives the formula of the signals they measure::

    from cvn73100 import Scope, sim
    with sim.start(address=9, model="73105B") as bench:
        scope = Scope()
        scope.address = bench.resource
        times, volts = scope.waveform(1, 1000)
        expected = sim.signal_volts(1, times)
"""

from ._native import sim as _sim

Instrument = _sim.Instrument
BusInstrument = _sim.BusInstrument
PtyInstrument = _sim.PtyInstrument
start = _sim.start
start_pty = _sim.start_pty
bus_instrument = _sim.bus_instrument
running = _sim.running
stop_all = _sim.stop_all
signal_volts = _sim.signal_volts
signal_hz = _sim.signal_hz
logic_word = _sim.logic_word

__all__ = [
    "Instrument",
    "BusInstrument",
    "PtyInstrument",
    "start",
    "start_pty",
    "bus_instrument",
    "running",
    "stop_all",
    "signal_volts",
    "signal_hz",
    "logic_word",
]

for _name in __all__:
    _member = globals()[_name]
    if isinstance(_member, type):
        _member.__module__ = __name__
del _name, _member
