"""Objects that processes of one login session share by name: the message channel, the
mutex and the event."""
import contextlib
import ctypes

from ._native import EMPTY, FULL, Handle, bytes_at, check, lib, milliseconds, text_in

MINIMUM_CHANNEL_SIZE = 4113  # the table of 256 messages


class MessageChannel(Handle):
    """A bounded queue of byte messages in shared memory, made by the first process that
    opens its name and joined by the others, with the same size."""

    _close = lib.ovo_channel_close

    def __init__(self, name, size):
        super().__init__(lib.ovo_channel_open, text_in(name), size)

    def send(self, id, data):
        """Appends a message; False, with nothing sent, when there is no room for it."""
        data = bytes(data)
        return check(lib.ovo_channel_send(self._handle, id, data, len(data))) != FULL

    def receive(self, id=0):
        """The oldest message with that identifier (0: of all), or None. Nothing waits."""
        data, size = ctypes.c_void_p(), ctypes.c_uint()
        if check(lib.ovo_channel_receive(self._handle, id, ctypes.byref(data), ctypes.byref(size))) == EMPTY:
            return None
        return bytes_at(data.value, size.value)

    def __len__(self):
        """The number of messages in the queue."""
        count = ctypes.c_uint()
        check(lib.ovo_channel_count(self._handle, ctypes.byref(count)))
        return count.value


class NamedMutex(Handle):
    """A mutex of threads of any process; a holder that died leaves it to the next."""

    _close = lib.ovo_mutex_close

    def __init__(self, name):
        super().__init__(lib.ovo_mutex_open, text_in(name))

    def lock(self):
        check(lib.ovo_mutex_lock(self._handle))

    def try_lock(self, timeout=0):
        """True when this thread holds the mutex within timeout seconds (None: no limit)."""
        return check(lib.ovo_mutex_try_lock(self._handle, milliseconds(timeout, -1))) == 0

    def unlock(self):
        check(lib.ovo_mutex_unlock(self._handle))

    @contextlib.contextmanager
    def held(self):
        """`with mutex.held():` locks, and unlocks at the end of the block."""
        self.lock()
        try:
            yield self
        finally:
            self.unlock()


class NamedEvent(Handle):
    """An event that resets by itself: one set() lets one wait() through. Only its maker
    opens a name, so share the object between threads, not the name."""

    _close = lib.ovo_event_close

    def __init__(self, name):
        super().__init__(lib.ovo_event_open, text_in(name))

    def set(self):
        check(lib.ovo_event_set(self._handle))

    def wait(self):
        check(lib.ovo_event_wait(self._handle))
