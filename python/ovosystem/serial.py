"""Serial ports: a port from the text form of its settings, its time-outs and transfers, and
the machine's ports with their USB identity."""
import ctypes
from typing import NamedTuple, Tuple

from ._native import Handle, SerialTimeoutsStruct, check, lib, text_in, text_out
from .log import logger_handle

MAXDWORD = 0xFFFFFFFF


class SerialTimeouts(NamedTuple):
    """Milliseconds. A read ends after read_constant + read_multiplier x bytes, or a gap of
    read_interval between bytes; read_interval MAXDWORD with zero totals returns at once
    with what is there; all zero waits until a transfer is complete."""

    read_interval: int = 0
    read_constant: int = 0
    read_multiplier: int = 0
    write_constant: int = 0
    write_multiplier: int = 0


def _timeouts(timeouts):
    return SerialTimeoutsStruct(*timeouts)


class SerialPort(Handle):
    """An open port: `SerialPort("device=ttyUSB0;baud=9600;parity=none", SerialTimeouts(...))`.
    Transfers never raise: the time-outs end them short."""

    _close = lib.ovo_serial_close

    def __init__(self, settings, timeouts=None, logger=None):
        given = None if timeouts is None else ctypes.byref(_timeouts(timeouts))
        super().__init__(lib.ovo_serial_open, text_in(settings), given, logger_handle(logger))

    def set_timeouts(self, timeouts):
        check(lib.ovo_serial_set_timeouts(self._handle, ctypes.byref(_timeouts(timeouts))))

    def send(self, data):
        """Writes the bytes; the number written, fewer when the write time-outs ended it."""
        data = bytes(data)
        sent = ctypes.c_uint()
        check(lib.ovo_serial_send(self._handle, data, len(data), ctypes.byref(sent)))
        return sent.value

    def receive(self, size):
        """Up to size bytes, fewer when the read time-outs ended the read."""
        buffer = ctypes.create_string_buffer(size)
        received = ctypes.c_uint()
        check(lib.ovo_serial_receive(self._handle, buffer, size, ctypes.byref(received)))
        return buffer.raw[:received.value]

    @property
    def available(self):
        """The number of received bytes that wait to be read."""
        count = ctypes.c_uint()
        check(lib.ovo_serial_available(self._handle, ctypes.byref(count)))
        return count.value

    def purge(self):
        """Discards what waits in the receive and transmit queues."""
        check(lib.ovo_serial_purge(self._handle))


class PortInfo(NamedTuple):
    """A port; every field but the name is "" where the system does not tell it."""

    name: str
    description: str
    vendor_id: str
    product_id: str
    serial_number: str
    manufacturer: str
    product: str
    interface_number: str
    interface_name: str
    stable_paths: Tuple[str, ...]


def ports():
    """The serial ports that exist now, in natural order of their names."""
    made = ctypes.c_void_p()
    check(lib.ovo_port_list_make(ctypes.byref(made)))
    try:
        found = []
        for index in range(lib.ovo_port_list_count(made)):
            fields = [text_out(lib.ovo_port_list_field(made, index, field)) for field in range(9)]
            paths = tuple(text_out(lib.ovo_port_list_path(made, index, path))
                          for path in range(lib.ovo_port_list_path_count(made, index)))
            found.append(PortInfo(*fields, paths))
        return found
    finally:
        lib.ovo_port_list_free(made)
