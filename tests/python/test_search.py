"""Finding and identifying instruments: the search over the simulated bus and a pty, and the identity query."""

import pytest

import cvn73100
from cvn73100 import IDNQueryResult, InstrumentRow, ScopeError, sim
from conftest import INVALID_PROPERTY_VALUE

DEFAULT_BUS = [
    # (full address, model, supported)
    ("GPIB0::3::INSTR", "73199B", False),
    ("GPIB0::7::INSTR", "73135D", True),
    ("GPIB0::12::INSTR", "44210A", False),
]


def summary(rows):
    return [(row.full_address, row.model, row.supported) for row in rows]


def test_search_lists_the_instruments_on_the_simulated_bus(instrument):
    rows = cvn73100.search()
    assert summary(rows) == DEFAULT_BUS
    seven = rows[1]
    assert isinstance(seven, InstrumentRow)
    assert (seven.address, seven.manufacturer, seven.reply) == ("GPIB0::7", "Corvane Technologies", instrument.idn)
    # A new control is at GPIB0::7::INSTR.
    assert [row.connected for row in rows] == [False, True, False]

    extra_model = cvn73100.SUPPORTED_MODELS[4]
    with sim.start(20, model=extra_model) as extra:
        rows = cvn73100.search(include_silent=True)
    assert summary(row for row in rows if row.reply) == DEFAULT_BUS + [(extra.resource, extra_model, True)]
    assert [row.full_address for row in rows] == [f"GPIB0::{a}::INSTR" for a in range(31)]


def test_a_search_hands_its_findings_to_the_control_only_when_applied(instrument):
    with sim.start_pty(com_port=3, silent=True):
        # A control's I/O library reads the board map when the control is made.
        scope = cvn73100.Scope()
        rows = scope.search(exclude_silent_ports=True)
        assert not scope.io_configuration.rs232_port_installed(3)
        assert scope.io_configuration.rs232_port_included(3)

        rows = scope.search(exclude_silent_ports=True, apply=True)
    assert summary(rows) == DEFAULT_BUS
    assert scope.io_configuration.rs232_port_installed(3) and scope.io_configuration.gpib_port_installed(0)
    assert not scope.io_configuration.rs232_port_included(3)
    assert scope.address == "GPIB0::7::INSTR"


def test_search_finds_a_serial_instrument_on_a_pty_and_reports_progress(instrument):
    progress = []
    with sim.start_pty(com_port=1, model="73107B") as pty:
        rows = cvn73100.search(progress=lambda step, total, text: progress.append((step, total)))
    assert pty.com_port == 1 and pty.device_path.startswith("/dev/")
    assert summary(rows)[0] == ("COM1", "73107B", True)
    assert summary(rows)[1:] == DEFAULT_BUS
    steps = [step for step, _ in progress]
    total = progress[-1][1]
    assert steps == sorted(steps) and steps[-1] == total and total >= 32


def test_an_exception_in_the_progress_callback_ends_the_search(instrument):
    def interrupt(step, total, text):
        if step == 5:
            raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        cvn73100.search(progress=interrupt)


@pytest.mark.parametrize(
    "address, options, expected",
    [
        ("GPIB0::7::INSTR", None, IDNQueryResult.SUPPORTED),
        ("GPIB0::3::INSTR", None, IDNQueryResult.UNSUPPORTED_MODEL),
        ("GPIB0::12::INSTR", None, IDNQueryResult.NOT_FAMILY),
        ("GPIB0::21::INSTR", {"idn": "73135D"}, IDNQueryResult.NOT_IEEE4882),
        ("GPIB0::22::INSTR", {"silent": True}, IDNQueryResult.NO_RESPONSE),
        ("GPIB0::5::INSTR", None, IDNQueryResult.NO_RESPONSE),
        ("GPIB1::7::INSTR", None, IDNQueryResult.PORT_NOT_FOUND),
    ],
)
def test_query_instrument_classifies_the_reply(instrument, address, options, expected):
    if options is not None:
        sim.start(int(address.split("::")[1]), **options)
    try:
        code, reply = cvn73100.query_instrument(address)
    finally:
        sim.stop_all()
    assert code is expected
    if expected is IDNQueryResult.SUPPORTED:
        assert reply == instrument.idn
    assert cvn73100.classify_reply(reply) is (expected if reply else IDNQueryResult.NO_RESPONSE)


def test_query_instrument_over_a_pty_and_a_garbled_reply(instrument):
    with sim.start_pty(com_port=2, garbage=True):
        code, reply = cvn73100.query_instrument("COM2::Baud=9600")
    # The reply's bytes are not text; they arrive one character per byte.
    assert code is IDNQueryResult.NOT_IEEE4882 and reply and "," not in reply


def test_query_instrument_refuses_an_invalid_address():
    with pytest.raises(ScopeError) as info:
        cvn73100.query_instrument("GPIB0::31::INSTR")
    assert info.value.number == INVALID_PROPERTY_VALUE
