"""The library's C interface through ctypes: loading, the prototypes, failures as exceptions."""
import ctypes
import os
import sys
from ctypes import POINTER, c_char_p, c_int, c_uint, c_void_p

# The major version whose interface this package calls: the SONAME's number.
ABI_MAJOR = 0

OK, TIMEOUT, STOPPED, EMPTY, FULL = 0, 1, 2, 3, 4
ERROR_ARGUMENT, ERROR_SYSTEM, ERROR_MEMORY = -1, -2, -3


class Error(Exception):
    """A failure of the library, with its own text; `status` is the C interface's code."""

    def __init__(self, text, status):
        super().__init__(text)
        self.status = status


class ArgumentError(Error, ValueError):
    """A value or text that the library refuses, or a closed object."""


class PlatformError(Error, OSError):
    """The platform or a service failed; the text carries its code."""


def text_in(text):
    """A str as the library's bytes: UTF-8, and undecodable bytes as they came."""
    return text.encode("utf-8", "surrogateescape")


def text_out(raw):
    return raw.decode("utf-8", "surrogateescape")


def _load():
    given = os.environ.get("OVOSYSTEM_LIBRARY")
    name = given or ("ovosystem.dll" if sys.platform == "win32" else f"libovosystem.so.{ABI_MAJOR}")
    try:
        return ctypes.CDLL(name)
    except OSError as failure:
        raise ImportError(f"the ovosystem library ({name}) cannot be loaded: {failure}; install it "
                          "(libovosystem0), or set OVOSYSTEM_LIBRARY to its path") from failure


lib = _load()


class CardEventStruct(ctypes.Structure):
    _fields_ = [("kind", c_int), ("reader", c_char_p), ("atr", c_void_p), ("atr_size", c_uint)]


class SerialTimeoutsStruct(ctypes.Structure):
    _fields_ = [(name, c_uint) for name in ("read_interval", "read_constant", "read_multiplier",
                                            "write_constant", "write_multiplier")]


_handle = c_void_p
_PROTOTYPES = {
    "ovo_last_error": (c_char_p, []),
    "ovo_version": (c_char_p, []),
    # logging
    "ovo_log_setup": (c_int, [c_int, c_char_p, c_char_p, c_int]),
    "ovo_logger_get": (c_int, [c_char_p, POINTER(_handle)]),
    "ovo_logger_set_level": (c_int, [_handle, c_int]),
    "ovo_log_message": (c_int, [_handle, c_int, c_char_p]),
    "ovo_log_bytes": (c_int, [_handle, c_int, c_char_p, c_char_p, c_uint]),
    "ovo_log_dump": (c_int, [_handle, c_int, c_char_p, c_char_p, c_uint]),
    # cards
    "ovo_reader_list_make": (c_int, [POINTER(_handle)]),
    "ovo_reader_list_count": (c_uint, [_handle]),
    "ovo_reader_list_name": (c_char_p, [_handle, c_uint]),
    "ovo_reader_list_state": (c_int, [_handle, c_uint]),
    "ovo_reader_list_atr": (c_void_p, [_handle, c_uint, POINTER(c_uint)]),
    "ovo_reader_list_free": (None, [_handle]),
    "ovo_card_open": (c_int, [c_char_p, _handle, POINTER(_handle)]),
    "ovo_card_connect": (c_int, [_handle]),
    "ovo_card_transmit": (c_int, [_handle, c_char_p, c_uint, POINTER(c_void_p), POINTER(c_uint)]),
    "ovo_card_status": (c_int, [_handle, POINTER(c_int), POINTER(c_void_p), POINTER(c_uint)]),
    "ovo_card_disconnect": (c_int, [_handle]),
    "ovo_card_close": (None, [_handle]),
    "ovo_card_monitor_open": (c_int, [POINTER(_handle)]),
    "ovo_card_monitor_next": (c_int, [_handle, c_uint, POINTER(CardEventStruct)]),
    "ovo_card_monitor_stop": (c_int, [_handle]),
    "ovo_card_monitor_close": (None, [_handle]),
    # serial ports
    "ovo_serial_open": (c_int, [c_char_p, POINTER(SerialTimeoutsStruct), _handle, POINTER(_handle)]),
    "ovo_serial_set_timeouts": (c_int, [_handle, POINTER(SerialTimeoutsStruct)]),
    "ovo_serial_send": (c_int, [_handle, c_char_p, c_uint, POINTER(c_uint)]),
    "ovo_serial_receive": (c_int, [_handle, c_char_p, c_uint, POINTER(c_uint)]),
    "ovo_serial_available": (c_int, [_handle, POINTER(c_uint)]),
    "ovo_serial_purge": (c_int, [_handle]),
    "ovo_serial_close": (None, [_handle]),
    "ovo_port_list_make": (c_int, [POINTER(_handle)]),
    "ovo_port_list_count": (c_uint, [_handle]),
    "ovo_port_list_field": (c_char_p, [_handle, c_uint, c_int]),
    "ovo_port_list_path_count": (c_uint, [_handle, c_uint]),
    "ovo_port_list_path": (c_char_p, [_handle, c_uint, c_uint]),
    "ovo_port_list_free": (None, [_handle]),
    # named objects
    "ovo_channel_open": (c_int, [c_char_p, c_uint, POINTER(_handle)]),
    "ovo_channel_send": (c_int, [_handle, c_uint, c_char_p, c_uint]),
    "ovo_channel_receive": (c_int, [_handle, c_uint, POINTER(c_void_p), POINTER(c_uint)]),
    "ovo_channel_count": (c_int, [_handle, POINTER(c_uint)]),
    "ovo_channel_close": (None, [_handle]),
    "ovo_mutex_open": (c_int, [c_char_p, POINTER(_handle)]),
    "ovo_mutex_lock": (c_int, [_handle]),
    "ovo_mutex_try_lock": (c_int, [_handle, c_int]),
    "ovo_mutex_unlock": (c_int, [_handle]),
    "ovo_mutex_close": (None, [_handle]),
    "ovo_event_open": (c_int, [c_char_p, POINTER(_handle)]),
    "ovo_event_set": (c_int, [_handle]),
    "ovo_event_wait": (c_int, [_handle]),
    "ovo_event_close": (None, [_handle]),
}
for _name, (_result, _arguments) in _PROTOTYPES.items():
    _function = getattr(lib, _name)
    _function.restype = _result
    _function.argtypes = _arguments


def check(status):
    """The status when it is an answer; a failure raises with the library's text."""
    if status >= 0:
        return status
    text = text_out(lib.ovo_last_error())
    kind = {ERROR_ARGUMENT: ArgumentError, ERROR_SYSTEM: PlatformError}.get(status, Error)
    raise kind(text, status)


def bytes_at(address, size):
    return ctypes.string_at(address, size) if size else b""


def milliseconds(seconds, forever):
    """A wait in seconds as the library's milliseconds; None waits for `forever`."""
    if seconds is None:
        return forever
    if seconds < 0:
        raise ValueError(f"a wait is no shorter than 0 seconds, not {seconds}")
    return min(int(seconds * 1000), 0x7FFFFFFF)


class Handle:
    """An object of the library that `close()` (or the end of a `with` block) gives back."""

    _close = None

    def __init__(self, opener, *arguments):
        self._pointer = None
        made = c_void_p()
        check(opener(*arguments, ctypes.byref(made)))
        self._pointer = made

    @property
    def _handle(self):
        if self._pointer is None:
            raise ArgumentError(f"the {type(self).__name__} is closed", ERROR_ARGUMENT)
        return self._pointer

    def close(self):
        """Gives the object back to the library; later calls raise ArgumentError."""
        if self._pointer is not None:
            pointer, self._pointer = self._pointer, None
            type(self)._close(pointer)

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()

    def __del__(self):
        if getattr(self, "_pointer", None) is not None:
            self.close()
