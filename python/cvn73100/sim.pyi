"""The simulated 73100 oscilloscope."""

from typing import overload

import numpy as np
import numpy.typing as npt

_Seconds = float | npt.ArrayLike

class Instrument:
    """A simulated 73100 oscilloscope: four analog channels and 16 logic bits that speak IEEE 488.2 and SCPI."""

    def __init__(
        self,
        *,
        idn: str | None = None,
        manufacturer: str | None = None,
        model: str | None = None,
        serial: str | None = None,
        firmware: str | None = None,
        silent: bool = False,
        garbage: bool = False,
        drop_mid_block: bool = False,
        late_reply_ms: int = 0,
        line_baud: int = 0,
    ) -> None: ...
    idn: str
    identity: tuple[str, str, str, str]
    silent: bool
    garbage: bool
    drop_mid_block: bool
    late_reply_ms: int
    line_baud: int
    def send(self, message: str) -> None: ...
    def query(self, message: str, timeout: float = 2.0) -> str: ...
    def device_clear(self) -> None: ...
    def errors(self) -> list[int]: ...
    @overload
    def channel_volts(self, channel: int, seconds: float) -> float: ...
    @overload
    def channel_volts(self, channel: int, seconds: npt.ArrayLike) -> npt.NDArray[np.float64]: ...

class BusInstrument:
    """An instrument started on the simulated GPIB bus (sim.start)."""

    @property
    def instrument(self) -> Instrument: ...
    @property
    def board(self) -> int: ...
    @property
    def address(self) -> int: ...
    @property
    def resource(self) -> str: ...
    @property
    def running(self) -> bool: ...
    def stop(self) -> None: ...
    def __enter__(self) -> BusInstrument: ...
    def __exit__(self, *args: object) -> None: ...

class PtyInstrument:
    """An instrument served on a pseudo-terminal (sim.start_pty)."""

    @property
    def instrument(self) -> Instrument: ...
    @property
    def device_path(self) -> str: ...
    @property
    def com_port(self) -> int | None: ...
    @property
    def running(self) -> bool: ...
    def stop(self) -> None: ...
    def __enter__(self) -> PtyInstrument: ...
    def __exit__(self, *args: object) -> None: ...

def start(
    address: int = 7,
    *,
    board: int = 0,
    instrument: Instrument | None = None,
    idn: str | None = ...,
    manufacturer: str | None = ...,
    model: str | None = ...,
    serial: str | None = ...,
    firmware: str | None = ...,
    silent: bool = ...,
    garbage: bool = ...,
    drop_mid_block: bool = ...,
    late_reply_ms: int = ...,
    line_baud: int = ...,
) -> BusInstrument:
    """Places a simulated instrument at ``address`` on the process's simulated GPIB bus."""

def start_pty(
    *,
    com_port: int | None = None,
    instrument: Instrument | None = None,
    idn: str | None = ...,
    manufacturer: str | None = ...,
    model: str | None = ...,
    serial: str | None = ...,
    firmware: str | None = ...,
    silent: bool = ...,
    garbage: bool = ...,
    drop_mid_block: bool = ...,
    late_reply_ms: int = ...,
    line_baud: int = ...,
) -> PtyInstrument:
    """Serves a simulated instrument as an RS-232 instrument on a new pseudo-terminal."""

def bus_instrument(address: int = 7, *, board: int = 0) -> Instrument | None: ...
def running() -> list[BusInstrument | PtyInstrument]: ...
def stop_all() -> None: ...
@overload
def signal_volts(channel: int, seconds: float) -> float: ...
@overload
def signal_volts(channel: int, seconds: npt.ArrayLike) -> npt.NDArray[np.float64]: ...
def signal_hz(channel: int) -> float: ...
@overload
def logic_word(seconds: float) -> int: ...
@overload
def logic_word(seconds: npt.ArrayLike) -> npt.NDArray[np.uint16]: ...
