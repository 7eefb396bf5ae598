"""Serial ports through the package, against a pseudo-terminal whose far end plays the device."""
import ctypes
import time

import pytest

import ovosystem
from conftest import wait_until
from ovosystem import MAXDWORD, SerialTimeouts
from ovosystem._native import OK, TIMEOUT, lib

ANSWERING = SerialTimeouts(read_interval=50, read_constant=500, write_constant=1000)


def open_port(device, timeouts=ANSWERING):
    return ovosystem.SerialPort(f"device={device.path};baud=9600;data=8;parity=none;stop=1", timeouts)


def test_a_request_and_its_answer(device):
    with open_port(device) as port:
        assert port.send(b"\x02A\x00\x03") == 4
        assert device.read(4) == b"\x02A\x00\x03"
        device.write(b"\x06\x00\xff")
        assert port.receive(16) == b"\x06\x00\xff"  # the gap after the last byte ends the read


@pytest.mark.parametrize("timeouts, waits", [
    (SerialTimeouts(read_constant=300), 0.25),             # the total time-out ends an empty read
    (SerialTimeouts(read_interval=MAXDWORD), 0),            # what is there, at once
    (SerialTimeouts(read_constant=200, read_multiplier=100), 0.25),  # 200 + 100 x 1 ms
])
def test_time_outs_end_a_read_short(device, timeouts, waits):
    with open_port(device, SerialTimeouts()) as port:
        port.set_timeouts(timeouts)  # on the open port
        started = time.monotonic()
        assert port.receive(1) == b""
        elapsed = time.monotonic() - started
        assert waits <= elapsed < waits + 5


def test_purge_discards_what_waits(device):
    with open_port(device, SerialTimeouts(read_interval=MAXDWORD)) as port:
        device.write(b"\x01\x02\x03\x04")
        assert wait_until(lambda: port.available == 4, 5)
        port.purge()
        assert port.available == 0 and port.receive(4) == b""


@pytest.mark.parametrize("settings, kind, text", [
    ("device=ttyS0;baud=fast", ovosystem.ArgumentError, "NumebrParser - bad format"),
    ("device=ttyS0;data=99999999999", ovosystem.ArgumentError, "NumberParser - out of range"),
    ("device=/dev/null", ovosystem.PlatformError, "::GetCommState( '/dev/null' ) failed. error = 1"),
    ("device=/dev/ovo-missing;baud=9600", ovosystem.PlatformError, "can't open '/dev/ovo-missing'. error = 2"),
    ("baud=9600", ovosystem.PlatformError, "can't open ''. error = 123"),
])
def test_settings_that_open_no_port_raise_with_the_library_text(settings, kind, text):
    with pytest.raises(kind) as failure:
        ovosystem.SerialPort(settings)
    assert text in str(failure.value)


def test_the_port_list_leaves_pseudo_terminals_out(device):
    for port in ovosystem.ports():
        assert port.name and device.path not in (f"/dev/{port.name}", *port.stable_paths)


def test_the_c_interface_answers_timeout_for_a_transfer_cut_short(device):
    with open_port(device, SerialTimeouts(read_interval=MAXDWORD)) as port:
        device.write(b"\x06")
        assert wait_until(lambda: port.available == 1, 5)
        buffer, count = ctypes.create_string_buffer(4), ctypes.c_uint()
        assert lib.ovo_serial_receive(port._handle, buffer, 4, ctypes.byref(count)) == TIMEOUT and count.value == 1
        assert lib.ovo_serial_send(port._handle, b"\x15", 1, ctypes.byref(count)) == OK and count.value == 1
