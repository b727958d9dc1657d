"""Waits on the instrument: other threads run meanwhile, Ctrl-C ends them, the time limit is the script's, and
the errors are also Python's standard ones."""

import os
import signal
import threading
import time

import pytest

import cvn73100
from cvn73100 import ScopeConnectionError, ScopeValueError, sim
from conftest import INVALID_PROPERTY_VALUE, OBJECT_ERROR_BASE

LATE_MS = 1000


@pytest.fixture
def slow_scope():
    """A control at an instrument whose replies come LATE_MS after the query."""
    with sim.start(9, late_reply_ms=LATE_MS) as device:
        control = cvn73100.Scope()
        control.address = device.resource
        yield control
        control.close_connection()


def test_another_thread_runs_while_a_reply_is_awaited(slow_scope):
    done, ticks = threading.Event(), []
    thread = threading.Thread(target=lambda: [ticks.append(1) for _ in iter(done.is_set, True)])
    thread.start()
    slow_scope.query("*IDN?")
    done.set()
    thread.join()
    # A thread left to run ticks hundreds of thousands of times a second; with the GIL held it got a few ticks.
    assert len(ticks) > 20_000


def test_ctrl_c_ends_a_wait_promptly(slow_scope):
    sent = []
    interrupt = lambda: (time.sleep(0.3), sent.append(time.monotonic()), os.kill(os.getpid(), signal.SIGINT))
    threading.Thread(target=interrupt).start()
    with pytest.raises(KeyboardInterrupt):
        slow_scope.query("*IDN?")
    assert time.monotonic() - sent[0] < 0.1


def test_the_timeout_bounds_a_read_and_holds_for_later_connections(slow_scope):
    assert slow_scope.timeout == 5000
    slow_scope.timeout = 200
    slow_scope.close_connection()
    start = time.monotonic()
    with pytest.raises(cvn73100.ScopeTimeoutError) as info:
        slow_scope.query("*IDN?")
    assert 0.2 <= time.monotonic() - start < LATE_MS / 1000
    assert isinstance(info.value, TimeoutError) and info.value.errno is None
    assert slow_scope.timeout == 200


@pytest.mark.parametrize(
    "action, cls, standard, number",
    [
        (lambda s: setattr(s, "address", "GPIB9::99::INSTR"), ScopeValueError, ValueError, INVALID_PROPERTY_VALUE),
        (lambda s: setattr(s, "timeout", -1), ScopeValueError, ValueError, OBJECT_ERROR_BASE + 1207),
        (lambda s: s.read_properties({"Address": object()}), cvn73100.ScopeTypeError, TypeError, 13),
        (lambda s: s.setups["Delta"], cvn73100.ScopeKeyError, KeyError, 5),
        (lambda s: s.setups[5], cvn73100.ScopeIndexError, IndexError, 9),
        # The I/O library's error arrives with its own number.
        (lambda s: (setattr(s, "address", "GPIB0::5::INSTR"), s.initialize()), ScopeConnectionError, OSError,
         OBJECT_ERROR_BASE + 1102),
    ],
    ids=["address", "timeout", "type", "key", "index", "no listener"],
)
def test_errors_are_pythons_own_as_well(instrument, action, cls, standard, number):
    with pytest.raises(cls) as info:
        action(cvn73100.Scope())
    assert type(info.value) is cls and isinstance(info.value, standard) and info.value.number == number
    if cls is cvn73100.ScopeKeyError:
        assert info.value.key == "Delta" and str(info.value).startswith("'Delta': 5: ")
