"""The 73100 oscilloscope control from Python.

``Scope`` is the control: give it an address, ``initialize()`` it, then send commands, read replies, capture
waveforms as NumPy arrays, take screen images and keep set-ups. ``search()`` finds instruments,
``query_instrument()`` identifies one, and ``cvn73100.sim`` runs simulated instruments, so everything works without
hardware: with no I/O configuration, GPIB0 is a simulated bus with a supported instrument at address 7::

    import cvn73100
    scope = cvn73100.Scope()
    scope.address = "GPIB0::7::INSTR"
    scope.initialize()
    print(scope.query("*IDN?"))
    times, volts = scope.waveform(1, 1000)

Every failure raises ``ScopeError`` with the control's number, source and description; where one of Python's
own errors says the same, a subclass is that one too (``ScopeTimeoutError`` is a ``TimeoutError``,
``ScopeValueError`` a ``ValueError``, ...). Waits release the GIL and end on Ctrl-C.
"""

from ._types import (
    InstrumentRow,
    ScopeConnectionError,
    ScopeError,
    ScopeIndexError,
    ScopeIOError,
    ScopeKeyError,
    ScopeTimeoutError,
    ScopeTypeError,
    ScopeValueError,
    ScreenImage,
)
from ._native import (
    DEFAULT_ADDRESS,
    GPIB_ADDRESSES,
    GPIB_PORTS,
    RS232_BAUD_RATES,
    RS232_HANDSHAKE_DTR_DSR,
    RS232_HANDSHAKE_NONE,
    RS232_HANDSHAKE_XON_XOFF,
    RS232_PORTS,
    SUPPORTED_MODELS,
    AcquisitionType,
    Acquisition,
    AnalogChannel,
    AnalogChannels,
    IDNQueryResult,
    ImageFormat,
    IOConfiguration,
    Language,
    LogicBit,
    LogicChannel,
    Measure,
    OnOffState,
    ProbeCoupling,
    Scope,
    Setup,
    Setups,
    SupportMessageConnection,
    SupportMessageMode,
    TimeMode,
    TimeReference,
    Timebase,
    Trace,
    TraceChannel,
    Trigger,
    TriggerCoupling,
    TriggerMode,
    TriggerSlope,
    TriggerSource,
    Utilities,
    classify_reply,
    default_form_path,
    get_message_box_handler,
    query_instrument,
    search,
    set_message_box_handler,
)
from . import sim

__version__ = Scope.version

__all__ = [
    "DEFAULT_ADDRESS",
    "GPIB_ADDRESSES",
    "GPIB_PORTS",
    "RS232_BAUD_RATES",
    "RS232_HANDSHAKE_DTR_DSR",
    "RS232_HANDSHAKE_NONE",
    "RS232_HANDSHAKE_XON_XOFF",
    "RS232_PORTS",
    "SUPPORTED_MODELS",
    "AcquisitionType",
    "Acquisition",
    "AnalogChannel",
    "AnalogChannels",
    "IDNQueryResult",
    "ImageFormat",
    "IOConfiguration",
    "InstrumentRow",
    "Language",
    "LogicBit",
    "LogicChannel",
    "Measure",
    "OnOffState",
    "ProbeCoupling",
    "Scope",
    "ScopeConnectionError",
    "ScopeError",
    "ScopeIndexError",
    "ScopeIOError",
    "ScopeKeyError",
    "ScopeTimeoutError",
    "ScopeTypeError",
    "ScopeValueError",
    "ScreenImage",
    "Setup",
    "Setups",
    "SupportMessageConnection",
    "SupportMessageMode",
    "TimeMode",
    "TimeReference",
    "Timebase",
    "Trace",
    "TraceChannel",
    "Trigger",
    "TriggerCoupling",
    "TriggerMode",
    "TriggerSlope",
    "TriggerSource",
    "Utilities",
    "classify_reply",
    "default_form_path",
    "get_message_box_handler",
    "query_instrument",
    "search",
    "set_message_box_handler",
    "sim",
]

# The compiled classes present themselves as members of this package, where scripts and stubs find them.
for _name in __all__:
    _member = globals()[_name]
    if isinstance(_member, type) and _member.__module__.startswith(__name__ + "._"):
        _member.__module__ = __name__
del _name, _member
