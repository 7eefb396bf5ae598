"""What the tests share: unique names, the virtual card, a pseudo-terminal as a device."""
import os
import pathlib
import select
import subprocess
import sys
import time
import uuid

import pytest

import ovosystem

ROOT = pathlib.Path(__file__).resolve().parents[2]
VIRTUAL_READER = "Virtual PCD 00 00"


def wait_until(condition, seconds):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.05)
    return True


def run_peer(code, *arguments):
    """Another process running code with this package, its standard output piped."""
    return subprocess.Popen([sys.executable, "-c", code, *arguments], stdout=subprocess.PIPE, text=True)


@pytest.fixture
def name():
    return f"pytest-{os.getpid()}-{uuid.uuid4().hex[:8]}"


def card_state():
    states = {reader.name: reader.state for reader in ovosystem.readers()}
    return states.get(VIRTUAL_READER)


@pytest.fixture
def virtual_card():
    """The virtual ISO 7816 card in the virtual reader, for the length of a test."""
    if card_state() is None:
        pytest.skip("needs pcscd with the virtual reader (the test command starts one)")
    path = f"{ROOT}/scripts/vicc_shim:/usr/lib/python3/site-packages/virtualsmartcard"
    card = subprocess.Popen(["/usr/bin/python3", "/usr/bin/vicc", "-t", "iso7816"],
                            env=dict(os.environ, PYTHONPATH=path), stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL)
    try:
        assert wait_until(lambda: card_state() == ovosystem.ReaderState.CARD, 30), "the virtual card did not come"
        yield card
    finally:
        card.terminate()
        card.wait()
        wait_until(lambda: card_state() == ovosystem.ReaderState.EMPTY, 10)


class Device:
    """The far end of a pseudo-terminal whose near end the library opens by its path."""

    def __init__(self):
        self.fd, self._near = os.openpty()
        self.path = os.ttyname(self._near)

    def read(self, size, seconds=5):
        data = b""
        end = time.monotonic() + seconds
        while len(data) < size and select.select([self.fd], [], [], max(0, end - time.monotonic()))[0]:
            data += os.read(self.fd, size - len(data))
        return data

    def write(self, data):
        os.write(self.fd, data)

    def close(self):
        os.close(self.fd)
        os.close(self._near)


@pytest.fixture
def device():
    far = Device()
    yield far
    far.close()
