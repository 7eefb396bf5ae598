"""Smart cards over PC/SC: the readers, card connections, and the monitor of readers and cards."""
import ctypes
import enum
from typing import NamedTuple

from ._native import (OK, STOPPED, TIMEOUT, CardEventStruct, Handle, bytes_at, check, lib, milliseconds,
                      text_in, text_out)
from .log import logger_handle


class ReaderState(enum.IntEnum):
    EMPTY = 0
    CARD = 1
    CARD_UNREADABLE = 2  # mute: no answer to reset, no ATR
    CARD_EXCLUSIVE = 3  # held exclusively by another program; its ATR is given
    UNAVAILABLE = 4  # the service cannot use the reader


class Reader(NamedTuple):
    name: str
    state: ReaderState
    atr: bytes


def readers():
    """The readers of the PC/SC service, each with its state and its card's ATR, as
    `ovo readers` shows them; empty when there are none or no service answers."""
    made = ctypes.c_void_p()
    check(lib.ovo_reader_list_make(ctypes.byref(made)))
    try:
        found = []
        for index in range(lib.ovo_reader_list_count(made)):
            size = ctypes.c_uint()
            atr = lib.ovo_reader_list_atr(made, index, ctypes.byref(size))
            found.append(Reader(text_out(lib.ovo_reader_list_name(made, index)),
                                ReaderState(lib.ovo_reader_list_state(made, index)), bytes_at(atr, size.value)))
        return found
    finally:
        lib.ovo_reader_list_free(made)


class Card(Handle):
    """A reader's card: `with Card(name) as card: card.connect(); card.transmit(...)`.
    The end of the block disconnects and closes."""

    _close = lib.ovo_card_close

    def __init__(self, reader, logger=None):
        super().__init__(lib.ovo_card_open, text_in(reader), logger_handle(logger))

    def connect(self):
        """Connects, shared, with T=0 or T=1; nothing happens when connected."""
        check(lib.ovo_card_connect(self._handle))

    def transmit(self, command):
        """Sends a command unit (bytes) and gives the response, its status word last."""
        command = bytes(command)
        response, size = ctypes.c_void_p(), ctypes.c_uint()
        check(lib.ovo_card_transmit(self._handle, command, len(command), ctypes.byref(response),
                                    ctypes.byref(size)))
        return bytes_at(response.value, size.value)

    def status(self):
        """(state, ATR) of the connected card: state 6 is "specific", a protocol set up."""
        state, atr, size = ctypes.c_int(), ctypes.c_void_p(), ctypes.c_uint()
        check(lib.ovo_card_status(self._handle, ctypes.byref(state), ctypes.byref(atr), ctypes.byref(size)))
        return state.value, bytes_at(atr.value, size.value)

    def disconnect(self):
        check(lib.ovo_card_disconnect(self._handle))


class CardEventKind(enum.IntEnum):
    READER_ADDED = 0
    READER_REMOVED = 1
    CARD_INSERTED = 2
    CARD_REMOVED = 3


class CardEvent(NamedTuple):
    kind: CardEventKind
    reader: str
    atr: bytes  # with CARD_INSERTED


class MonitorStopped(Exception):
    """The card monitor was stopped."""


class CardMonitor(Handle):
    """Readers and cards as they come and go: first what is there, then each change.
    Iterating waits for events until `stop()` is called from another thread."""

    _close = lib.ovo_card_monitor_close
    _SLICE_MS = 500  # an iteration waits in slices, so that the interpreter sees Ctrl-C

    def __init__(self):
        super().__init__(lib.ovo_card_monitor_open)

    def next_event(self, timeout=None):
        """The next event, waiting up to timeout seconds (None: no limit); None when the
        time ran out. Raises MonitorStopped once the monitor was stopped."""
        event = CardEventStruct()
        if timeout is not None:
            status = check(lib.ovo_card_monitor_next(self._handle, milliseconds(timeout, 0), ctypes.byref(event)))
        else:
            status = TIMEOUT
            while status == TIMEOUT:
                status = check(lib.ovo_card_monitor_next(self._handle, self._SLICE_MS, ctypes.byref(event)))
        if status == STOPPED:
            raise MonitorStopped()
        if status != OK:
            return None
        return CardEvent(CardEventKind(event.kind), text_out(event.reader), bytes_at(event.atr, event.atr_size))

    def __iter__(self):
        return self

    def __next__(self):
        try:
            return self.next_event()
        except MonitorStopped:
            raise StopIteration from None

    def stop(self):
        """From any thread: ends a wait, and every later one at once."""
        check(lib.ovo_card_monitor_stop(self._handle))
