"""The plain Python types of the module: the error classes and the records the control hands back."""

from typing import NamedTuple

HELP_FILE = "Cvn73100.hlp"


class ScopeError(Exception):
    """An error of the control, the I/O library or the automation server.

    ``number`` is the error number as the control raises it (for example -2147221124, error 380 over the
    object-error base 0x80040000, "Invalid property value."); ``source`` and ``description`` are the texts
    of the message catalogue in the current language, unchanged; ``help_file`` is the control's help file.
    """

    def __init__(self, number, source, description, help_file=HELP_FILE):
        super().__init__(number, source, description, help_file)
        self.number = number
        self.source = source
        self.description = description
        self.help_file = help_file
        self._os_error_fields()

    def __str__(self):
        # Catalogue texts separate their lines with CR LF; a traceback wants plain line ends.
        description = self.description.replace("\r\n", "\n")
        return f"{self.number}: {self.source}: {description}"

    def __reduce__(self):
        return (type(self), (self.number, self.source, self.description, self.help_file))


    def _os_error_fields(self):
        # OSError reads its arguments as (errno, strerror, filename) and keeps two of them; ours are not those.
        if isinstance(self, OSError):
            self.args = (self.number, self.source, self.description, self.help_file)
            self.errno, self.strerror, self.filename = None, self.description, None


# The subclasses below are also the standard exception a caller of an instrument library expects; the control
# picks one by the error number.


class ScopeIndexError(ScopeError, IndexError):
    """A position outside a collection or a port table (error 9, "Subscript out of range")."""


class ScopeKeyError(ScopeError, KeyError):
    """A setup name that is not in the collection (error 5); ``key`` is the name asked for."""

    def __init__(self, number, source, description, help_file=HELP_FILE, key=None):
        super().__init__(number, source, description, help_file)
        self.key = key

    def __str__(self):
        return f"{self.key!r}: {super().__str__()}"

    def __reduce__(self):
        return (type(self), (self.number, self.source, self.description, self.help_file, self.key))


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


class InstrumentRow(NamedTuple):
    """One row of the Search Instruments list."""

    #: The reply's model field; "Unknown" when the reply had none.
    model: str
    #: True for a supported model ("X" indicates supported instrument.).
    supported: bool
    #: The address as the list shows it: "COM2", or a GPIB address without its resource class, "GPIB0::7".
    address: str
    #: The reply's first field; "Unknown" when the reply had no comma.
    manufacturer: str
    #: The raw "*IDN?" reply; "" for an address that did not answer.
    reply: str
    #: The instrument address to give Scope.address: "GPIB0::7::INSTR", "COM2".
    full_address: str
    #: The row is the control's current address.
    connected: bool


class ScreenImage(NamedTuple):
    """A screen image as the instrument sent it."""

    #: The encoded image file.
    data: bytes
    #: Its ImageFormat.
    format: int
    #: "image/bmp", "image/gif", ...
    mime_type: str
    width: int
    height: int
