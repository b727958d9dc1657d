"""Shared set-up of the Python binding tests.

The tests run against the process's simulated GPIB bus (the I/O library's embedded default) and, for the serial
path, against simulated instruments on pseudo-terminals. The environment is pinned before the module creates
any I/O manager, so that a board map or a form in the user's home never takes part.
"""

import atexit
import os
import shutil
import tempfile

_ROOT = tempfile.mkdtemp(prefix="cvn73100-pytest-")
atexit.register(shutil.rmtree, _ROOT, ignore_errors=True)
for _folder in ("config", "tmp"):
    os.makedirs(os.path.join(_ROOT, _folder))
# No config file: GPIB0 is the simulated bus. No COM port leads anywhere unless a test maps one to a pty, so a
# search never waits on the serial ports of the machine that runs the tests.
os.environ["CVN73100_IO_CONF"] = os.path.join(_ROOT, "io.conf")
for _port in range(1, 5):
    os.environ[f"CVN73100_COM{_port}"] = "none"
for _board in range(4):
    os.environ.pop(f"CVN73100_GPIB{_board}", None)
# The default form and the support-message log go to folders of their own.
os.environ["XDG_CONFIG_HOME"] = os.path.join(_ROOT, "config")
os.environ["TMPDIR"] = os.path.join(_ROOT, "tmp")

import pytest  # noqa: E402

import cvn73100  # noqa: E402
from cvn73100 import sim  # noqa: E402

INVALID_PROPERTY_VALUE = -2147221124
OBJECT_ERROR_BASE = -2147221504


@pytest.fixture
def instrument():
    """The supported instrument at GPIB0::7, back at its reset state after the test."""
    device = sim.bus_instrument(7)
    device.send("*RST;*CLS")
    yield device
    device.send("*RST;*CLS")


@pytest.fixture
def scope(instrument):
    """A control connected to GPIB0::7::INSTR."""
    control = cvn73100.Scope()
    control.address = "GPIB0::7::INSTR"
    control.initialize()
    yield control
    control.close_connection()
    sim.stop_all()
