"""Named objects through the package: a channel between two processes, a mutex whose holder
is killed, an event between threads."""
import signal
import threading

import pytest

import ovosystem
from conftest import run_peer, wait_until

ANSWERER = """
import sys, time, ovosystem
with ovosystem.MessageChannel(sys.argv[1], 8192) as channel:
    while (question := channel.receive(1)) is None:
        time.sleep(0.005)
    channel.send(2, question[::-1])
    while len(channel):
        time.sleep(0.005)
"""

HOLDER = """
import sys, time, ovosystem
mutex = ovosystem.NamedMutex(sys.argv[1])
mutex.lock()
print("held", flush=True)
time.sleep(60)
"""


def test_two_processes_exchange_bytes_through_a_channel(name):
    answerer = run_peer(ANSWERER, name)
    with ovosystem.MessageChannel(name, 8192) as channel:
        assert channel.send(1, b"\x00ask\xff")
        answers = []
        assert wait_until(lambda: answers.append(channel.receive(2)) or answers[-1] is not None, 30)
        assert answers[-1] == b"\xffksa\x00"
        assert answerer.wait(timeout=30) == 0 and len(channel) == 0


def test_a_channel_takes_by_identifier_and_refuses_what_does_not_fit(name):
    with ovosystem.MessageChannel(name, ovosystem.MINIMUM_CHANNEL_SIZE + 10) as channel:
        assert channel.send(7, b"seven") and channel.send(8, b"") and channel.send(7, b"77")
        assert not channel.send(9, b"too long") and len(channel) == 3  # 5 bytes of room were left
        assert channel.receive(8) == b"" and channel.receive(0) == b"seven" and channel.receive(7) == b"77"
        assert channel.receive(0) is None
    with pytest.raises(ovosystem.ArgumentError, match="the MessageChannel is closed"):
        channel.receive()
    with pytest.raises(ovosystem.PlatformError, match="cannot hold the table; the minimum is 4113"):
        ovosystem.MessageChannel(name, 4112)


def test_a_mutex_whose_holder_is_killed_goes_to_the_next(name):
    holder = run_peer(HOLDER, name)
    assert holder.stdout.readline() == "held\n"
    with ovosystem.NamedMutex(name) as mutex:
        assert not mutex.try_lock(0.1)
        holder.send_signal(signal.SIGKILL)
        holder.wait()
        with mutex.held():
            assert mutex.try_lock(0)  # taken again by its owner
            mutex.unlock()


def test_an_event_lets_one_wait_through_and_its_name_is_its_makers(name):
    with ovosystem.NamedEvent(name) as event:
        waiter = threading.Thread(target=event.wait)
        waiter.start()
        event.set()
        waiter.join(30)
        assert not waiter.is_alive()
        with pytest.raises(ovosystem.PlatformError, match=r"::CreateEvent\( '.*' \) failed: 5"):
            ovosystem.NamedEvent(name)
