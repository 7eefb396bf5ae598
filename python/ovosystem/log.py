"""Logging: the root logger to the console and a daily file, loggers by name, traced bytes."""
import ctypes

from ._native import check, lib, text_in

INFO, TRACE = 0, 1


def setup(console=True, directory=None, suffix=None, level=0):
    """Sends the root logger, and every logger taken after it, to the console (standard
    error) and, with a directory, to the daily file DIRECTORY/YYYY-MM-DD-SUFFIX.log, at a
    level (0: info, 1: trace too). Set up first, before loggers are taken."""
    check(lib.ovo_log_setup(1 if console else 0, None if directory is None else text_in(str(directory)),
                            None if suffix is None else text_in(suffix), level))


class Logger:
    """A logger of the process-wide registry: `Logger("reader.pcsc")`. It lives as long as
    the process, so there is nothing to close."""

    def __init__(self, name=""):
        found = ctypes.c_void_p()
        check(lib.ovo_logger_get(text_in(name), ctypes.byref(found)))
        self.name = name
        self._as_parameter_ = found

    def set_level(self, level):
        """Below 0 nothing passes, 0 the info family, 1 and above the trace family too."""
        check(lib.ovo_logger_set_level(self, level))

    def info(self, message):
        check(lib.ovo_log_message(self, INFO, text_in(message)))

    def trace(self, message):
        check(lib.ovo_log_message(self, TRACE, text_in(message)))

    def info_bytes(self, title, data):
        """The title and "XX " for each byte, on one line."""
        self._bytes(lib.ovo_log_bytes, INFO, title, data)

    def trace_bytes(self, title, data):
        self._bytes(lib.ovo_log_bytes, TRACE, title, data)

    def info_dump(self, title, data):
        """The title and a dump of 16 bytes a line (at least one byte)."""
        self._bytes(lib.ovo_log_dump, INFO, title, data)

    def trace_dump(self, title, data):
        self._bytes(lib.ovo_log_dump, TRACE, title, data)

    def _bytes(self, function, family, title, data):
        data = bytes(data)
        check(function(self, family, text_in(title), data, len(data)))


def logger_handle(logger):
    """What the device objects take: a Logger, or None for none."""
    return None if logger is None else logger._as_parameter_
