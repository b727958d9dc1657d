"""The 73100 oscilloscope control from Python."""

import enum
import os
from typing import Any, Callable, Iterator, NamedTuple, Sequence, overload

import numpy as np
import numpy.typing as npt

from . import sim as sim

_Path = str | os.PathLike[str]
_FloatArray = npt.NDArray[np.float64]

__version__: str

DEFAULT_ADDRESS: str
GPIB_PORTS: range
RS232_PORTS: range
GPIB_ADDRESSES: range
RS232_BAUD_RATES: tuple[int, ...]
RS232_HANDSHAKE_NONE: int
RS232_HANDSHAKE_XON_XOFF: int
RS232_HANDSHAKE_DTR_DSR: int
SUPPORTED_MODELS: tuple[str, ...]

# --- Errors ---

class ScopeError(Exception):
    """An error of the control, the I/O library or the automation server."""

    number: int
    source: str
    description: str
    help_file: str
    def __init__(self, number: int, source: str, description: str, help_file: str = ...) -> None: ...

class ScopeIndexError(ScopeError, IndexError):
    """A position outside a collection or a port table (error 9, "Subscript out of range")."""

class ScopeKeyError(ScopeError, KeyError):
    """A setup name that is not in the collection (error 5); ``key`` is the name asked for."""

    key: str | None
    def __init__(
        self, number: int, source: str, description: str, help_file: str = ..., key: str | None = None
    ) -> None: ...

class ScopeValueError(ScopeError, ValueError):
    """A value the control or the instrument refuses: an invalid property value, address or argument."""

class ScopeTypeError(ScopeError, TypeError):
    """A value of the wrong kind (error 13, "Type mismatch")."""

class ScopeTimeoutError(ScopeError, TimeoutError):
    """No complete reply within the control's ``timeout``."""

class ScopeConnectionError(ScopeError, ConnectionError):
    """No instrument at the address, a connection that went away, or none open."""

class ScopeIOError(ScopeError, OSError):
    """A port that cannot be opened (no such device, no permission, busy) or a line or file that failed."""

# --- Records ---

class InstrumentRow(NamedTuple):
    """One row of the Search Instruments list."""

    model: str
    supported: bool
    address: str
    manufacturer: str
    reply: str
    full_address: str
    connected: bool

class ScreenImage(NamedTuple):
    """A screen image as the instrument sent it."""

    data: bytes
    format: ImageFormat
    mime_type: str
    width: int
    height: int

# --- Enumerations ---

class Language(enum.IntEnum):
    """The language of the control's messages, by country code (Scope.country_code)."""

    ENGLISH = 1
    FRENCH = 33
    SPANISH = 34
    ITALIAN = 39
    GERMAN = 49
    JAPANESE = 81
    KOREAN = 82
    TRADITIONAL_CHINESE = 886

class AcquisitionType(enum.IntEnum):
    """How the instrument acquires (Scope.acquisition.type)."""

    AVERAGE = 1
    PEAK = 2
    GLITCH = 3
    REAL = 4
    AUTO = 5
    NORMAL = 6

class OnOffState(enum.IntEnum):
    """Whether a channel or trace is displayed."""

    OFF = 0
    ON = 1

class ProbeCoupling(enum.IntEnum):
    """The input coupling of an analog channel."""

    DC = 1
    GND = 2
    AC = 3

class ImageFormat(enum.IntEnum):
    """The file format of a screen image."""

    BMP = 0
    GIF = 3
    WMF = 4
    EMF = 5
    TIF = 6
    JPG = 7

class TimeMode(enum.IntEnum):
    """The time base mode."""

    DELAYED = 1
    XY = 2
    ROLL = 3
    NORMAL = 4

class TimeReference(enum.IntEnum):
    """Where on the screen the time base delay is measured from."""

    CENTER = 1
    RIGHT = 2
    LEFT = 3

class TriggerMode(enum.IntEnum):
    """The trigger mode."""

    AUTO = 1
    NORMAL = 2
    AUTO_LEVEL = 3

class TriggerSource(enum.IntEnum):
    """The signal the instrument triggers on."""

    CHANNEL1 = 1
    CHANNEL2 = 2
    CHANNEL3 = 3
    CHANNEL4 = 4
    EXTERNAL = 5
    LINE = 6
    LOGIC_D0 = 10
    LOGIC_D1 = 11
    LOGIC_D2 = 12
    LOGIC_D3 = 13
    LOGIC_D4 = 14
    LOGIC_D5 = 15
    LOGIC_D6 = 16
    LOGIC_D7 = 17
    LOGIC_D8 = 18
    LOGIC_D9 = 19
    LOGIC_D10 = 20
    LOGIC_D11 = 21
    LOGIC_D12 = 22
    LOGIC_D13 = 23
    LOGIC_D14 = 24
    LOGIC_D15 = 25

class TriggerSlope(enum.IntEnum):
    """The edge the instrument triggers on."""

    POSITIVE = 1
    NEGATIVE = 2

class TriggerCoupling(enum.IntEnum):
    """The coupling of the trigger input."""

    DC = 1
    AC = 2

class IDNQueryResult(enum.IntEnum):
    """The outcome of an identification query (query_instrument).

    SUPPORTED: Success -- Instrument was found and is a supported QD 73100-Series Scope.
    UNSUPPORTED_MODEL: Instrument was found -- but is not a supported QD 73100-Series Scope.
    NOT_FAMILY: Instrument was found -- but is not an QD 73100-Series Scope and is not compatible with this software.
    NOT_IEEE4882: Instrument was found -- but is not an IEEE 488.2 compliant QD 73100-Series Scope
    NO_RESPONSE: Instrument NOT found.
    PORT_NOT_FOUND: This I/O port was NOT found.
    WRONG_PORT_TYPE: the address is not of the kind the query serves (GPIB for RS-232 or the reverse).
    """

    SUPPORTED = 0
    UNSUPPORTED_MODEL = 1
    NOT_FAMILY = 2
    NOT_IEEE4882 = 3
    NO_RESPONSE = 4
    PORT_NOT_FOUND = 5
    WRONG_PORT_TYPE = 6

class SupportMessageMode(enum.IntFlag):
    """Switches of the support messages (Scope.support_message_mode)."""

    MESSAGE_BOX = 1
    LOG_FILE = 2
    EVENT = 4
    ASSERT = 8

# --- The I/O configuration ---

class IOConfiguration:
    """The instrument ports and the port in use. Choose the I/O ports and GPIB addresses that a search visits."""

    def __init__(self) -> None: ...
    def copy(self) -> IOConfiguration: ...
    def __eq__(self, other: object) -> bool: ...
    def gpib_port_installed(self, port: int) -> bool: ...
    def set_gpib_port_installed(self, port: int, value: bool) -> None: ...
    def gpib_port_included(self, port: int) -> bool: ...
    def set_gpib_port_included(self, port: int, value: bool) -> None: ...
    def rs232_port_installed(self, port: int) -> bool: ...
    def set_rs232_port_installed(self, port: int, value: bool) -> None: ...
    def rs232_port_included(self, port: int) -> bool: ...
    def set_rs232_port_included(self, port: int, value: bool) -> None: ...
    def gpib_port_includes(self, port: int, address: int) -> bool: ...
    def set_gpib_port_includes(self, port: int, address: int, value: bool) -> None: ...
    def gpib_instrument_found(self, port: int, address: int) -> bool: ...
    def baud_rate(self, port: int) -> int: ...
    def set_baud_rate(self, port: int, value: int) -> None: ...
    def parity(self, port: int) -> int: ...
    def set_parity(self, port: int, value: int) -> None: ...
    def handshake(self, port: int) -> int: ...
    def set_handshake(self, port: int, value: int) -> None: ...
    @property
    def has_installed_ports(self) -> bool: ...
    active_io_port: str
    @property
    def active_port_is_gpib(self) -> bool: ...
    active_port_gpib_address: int
    active_port_baud_rate: int
    active_port_handshake: int
    dtr_only: bool
    """Use DTR/DSR Handshake only."""
    active_address_string: str
    @property
    def active_automation_server_address(self) -> str: ...
    active_address_instrument_id: str
    def is_string_gpib(self, address: str) -> bool: ...
    def is_valid_gpib_port_string(self, port: str) -> bool: ...
    def is_valid_rs232_port_string(self, port: str) -> bool: ...
    def gpib_port_string(self, index: int) -> str: ...
    def rs232_port_string(self, index: int) -> str: ...
    def gpib_port_index(self, address: str) -> int: ...
    def rs232_port_index(self, address: str) -> int: ...
    def gpib_instrument_address(self, address: str) -> int: ...
    def find_all(self, scope: Scope) -> None: ...
    def find_gpib_port(self, port: int, scope: Scope) -> bool: ...
    def find_rs232_port(self, port: int, scope: Scope) -> bool: ...
    data: list[Any]

# --- Set-ups ---

class Setup:
    """One saved instrument set-up: learn string, model, firmware version, name and comments."""

    WILDCARD_VERSION: str
    def __init__(self) -> None: ...
    name: str
    """Names may not contain spaces or the "|" character."""
    comments: str
    """Comments may not contain the "|" character."""
    @property
    def learn_string(self) -> bytes | None: ...
    @property
    def model(self) -> str: ...
    @property
    def version(self) -> str: ...
    @property
    def parent(self) -> Setups | None: ...
    def get_from_instrument(self) -> None: ...
    def send_to_instrument(self) -> None:
        """Sending a setup will change the instrument configuration."""
    def read_from_file(self, path: _Path) -> None: ...
    def save_to_file(self, path: _Path) -> None: ...
    def is_learn_string_compatible(self, instrument_model: str, instrument_version: str) -> bool: ...
    def copy_from(self, source: Setup) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __hash__(self) -> int: ...

class Setups:
    """The control's set-ups: a sequence counted from 0 (``setups[0]``), keyed by name (``setups['Name']``)."""

    def __init__(self) -> None: ...
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[Setup]: ...
    @overload
    def __getitem__(self, key: int | str) -> Setup: ...
    @overload
    def __getitem__(self, key: slice) -> list[Setup]: ...
    def __delitem__(self, key: int | str) -> None: ...
    def __contains__(self, key: object) -> bool: ...
    def add(self, name: str) -> Setup:
        """Names may not contain spaces or the "|" character. Error.  Setup names must be unique."""
    def remove(self, key: int | str) -> None: ...
    def item(self, index: int | str) -> Setup:
        """By position counted from 1, as the control counts, or by name."""
    def names(self) -> list[str]: ...
    def copy_from(self, source: Setups) -> None: ...
    initial_directory: str
    get_learn_string_on_add: bool
    last_instrument_setup: str
    def __eq__(self, other: object) -> bool: ...
    def __hash__(self) -> int: ...

# --- The sub-objects ---

class Acquisition:
    type: AcquisitionType | int
    count: int

class AnalogChannel:
    @property
    def number(self) -> int: ...
    display: OnOffState | int
    coupling: ProbeCoupling | int
    probe_attenuation: int
    range: float
    offset: float

class AnalogChannels(Sequence[AnalogChannel]):
    def __len__(self) -> int: ...
    def __getitem__(self, number: int) -> AnalogChannel: ...  # type: ignore[override]
    def __iter__(self) -> Iterator[AnalogChannel]: ...
    def __contains__(self, number: object) -> bool: ...

class LogicBit:
    @property
    def number(self) -> int: ...
    display: OnOffState | int

class LogicChannel(Sequence[LogicBit]):
    def __len__(self) -> int: ...
    def __getitem__(self, number: int) -> LogicBit: ...  # type: ignore[override]
    def __iter__(self) -> Iterator[LogicBit]: ...
    def __contains__(self, number: object) -> bool: ...

class TraceChannel:
    @property
    def number(self) -> int: ...
    display: OnOffState | int

class Trace(Sequence[TraceChannel]):
    def __len__(self) -> int: ...
    def __getitem__(self, number: int) -> TraceChannel: ...  # type: ignore[override]
    def __iter__(self) -> Iterator[TraceChannel]: ...
    def __contains__(self, number: object) -> bool: ...

class Measure:
    def frequency(self, channel: int = 1) -> float: ...
    def vpp(self, channel: int = 1) -> float: ...
    def v_average(self, channel: int = 1) -> float: ...

class Timebase:
    mode: TimeMode | int
    range: float
    delay: float
    reference: TimeReference | int

class Trigger:
    mode: TriggerMode | int
    source: TriggerSource | int
    slope: TriggerSlope | int
    level: float
    coupling: TriggerCoupling | int

class Utilities:
    @property
    def manufacturer(self) -> str: ...
    @property
    def model(self) -> str: ...
    @property
    def serial_number(self) -> str: ...
    @property
    def firmware_version(self) -> str: ...
    @property
    def instrument_model(self) -> str: ...
    @property
    def instrument_firmware_version(self) -> str: ...
    def reset_instrument(self) -> None: ...
    def check_instrument_id(self) -> bool: ...
    def read_state_data(self) -> bytes | None: ...
    def write_state_data(self, learn_string: bytes | None) -> None: ...
    def query_instrument_error(self) -> str: ...
    def drain_instrument_errors(self) -> list[str]: ...

class SupportMessageConnection:
    def disconnect(self) -> None: ...
    def __enter__(self) -> SupportMessageConnection: ...
    def __exit__(self, *args: object) -> None: ...

# --- The control ---

class Scope:
    """The 73100 oscilloscope control."""

    version: str
    def __init__(self, form: _Path | None = None) -> None: ...
    address: str
    """The instrument address; an invalid one raises ScopeError -2147221124 ("Invalid property value.")."""
    address_instrument_id: str
    @property
    def automation_server_address(self) -> str: ...
    def initialize(self) -> None: ...
    def close_connection(self) -> None: ...
    @property
    def instrument_connected(self) -> bool: ...
    reset_on_initialize: bool
    check_id_on_initialize: bool
    tx_delay: int
    timeout: int
    """How long a read waits for a reply, in milliseconds; running out raises ScopeTimeoutError."""
    @property
    def connection_name(self) -> str: ...
    def __enter__(self) -> Scope: ...
    def __exit__(self, *args: object) -> None: ...
    def write(self, data: str | bytes | bytearray | memoryview) -> None: ...
    @overload
    def read(self) -> str: ...
    @overload
    def read(self, *, block: bool) -> str | bytes: ...
    @overload
    def query(self, command: str) -> str: ...
    @overload
    def query(self, command: str, *, block: bool) -> str | bytes: ...
    def read_bytes(self, count: int) -> bytes: ...
    def write_bytes(self, data: bytes | bytearray | memoryview) -> None: ...
    def auto_scale(self) -> None: ...
    def digitize(self) -> None: ...
    def run(self) -> None: ...
    def single_trigger(self) -> None: ...
    def stop_trigger(self) -> None: ...
    def waveform(self, channel: int = 1, points: int = 1000) -> tuple[_FloatArray, _FloatArray]: ...
    def waveforms(self, points: int = 1000) -> list[tuple[_FloatArray, _FloatArray]]: ...
    def logic_data(self, points: int = 1000) -> tuple[_FloatArray, npt.NDArray[np.int32]]: ...
    def screen_image(self, format: ImageFormat | int = ImageFormat.BMP) -> ScreenImage: ...
    def save_screen_image(self, path: _Path, format: ImageFormat | int = ImageFormat.BMP) -> None: ...
    @property
    def setups(self) -> Setups: ...
    io_configuration: IOConfiguration
    search_criteria: list[Any]
    country_code: Language | int
    """Asian languages are not supported on this computer: such a language raises ScopeError -2147221124."""
    font_name: str
    font_size: int
    support_message_mode: SupportMessageMode | int
    def connect_support_message(self, callback: Callable[[str], object]) -> SupportMessageConnection: ...
    debug_enabled: bool
    @property
    def help_file(self) -> str: ...
    initial_search_mode: bool
    dtr_only: bool
    dont_show_io_handshake_warning: bool
    last_io_handshake_address: str
    def save_properties(self, path: _Path | None = None) -> str: ...
    def load_properties(self, path: _Path | None = None) -> str: ...
    def write_properties(self) -> dict[str, Any]: ...
    def read_properties(self, properties: dict[str, Any]) -> None: ...
    @property
    def acquisition(self) -> Acquisition: ...
    @property
    def analog_channels(self) -> AnalogChannels: ...
    @property
    def logic_channel(self) -> LogicChannel: ...
    @property
    def measure(self) -> Measure: ...
    @property
    def timebase(self) -> Timebase: ...
    @property
    def trigger(self) -> Trigger: ...
    @property
    def trace(self) -> Trace: ...
    @property
    def utilities(self) -> Utilities: ...
    def search(
        self,
        *,
        include_silent: bool = False,
        exclude_silent_ports: bool = False,
        apply: bool = False,
        progress: Callable[[int, int, str], object] | None = None,
        parallel: bool = False,
    ) -> list[InstrumentRow]: ...

# --- Functions ---

def search(
    scope: Scope | None = None,
    *,
    include_silent: bool = False,
    exclude_silent_ports: bool = False,
    apply: bool = False,
    progress: Callable[[int, int, str], object] | None = None,
    parallel: bool = False,
) -> list[InstrumentRow]:
    """Searches the included COM ports and GPIB addresses for instruments that answer "*IDN?"."""

def query_instrument(
    address: str, scope: Scope | None = None, *, tx_delay: int | None = None
) -> tuple[IDNQueryResult, str]:
    """Asks the instrument at ``address`` for its identity: ``(code, reply)``."""

def classify_reply(reply: str) -> IDNQueryResult: ...
def default_form_path() -> str: ...
def set_message_box_handler(handler: Callable[[str, str, int], int | None] | None) -> None: ...
def get_message_box_handler() -> Callable[[str, str, int], int | None] | None: ...
