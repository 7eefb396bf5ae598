"""ovosystem for Python: smart cards over PC/SC, serial ports, message channels between
processes, named mutexes and events, and logging, on the ovosystem library's C interface.

Objects that hold something of the library close with `close()` or at the end of a `with`
block; failures raise `ovosystem.Error` (ArgumentError, PlatformError) with the library's
own text; bytes go in and come out as `bytes`.
"""
from ._native import ArgumentError, Error, PlatformError, lib, text_out
from .cards import Card, CardEvent, CardEventKind, CardMonitor, MonitorStopped, Reader, ReaderState, readers
from .ipc import MINIMUM_CHANNEL_SIZE, MessageChannel, NamedEvent, NamedMutex
from .log import INFO, TRACE, Logger, setup as setup_logging
from .serial import MAXDWORD, PortInfo, SerialPort, SerialTimeouts, ports

__version__ = "0.2.0"


def library_version():
    """The version of the library that runs, "MAJOR.MINOR.PATCH"."""
    return text_out(lib.ovo_version())
