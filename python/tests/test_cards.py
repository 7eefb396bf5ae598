"""Cards through the package, against pcscd with the virtual reader and the virtual card."""
import threading
import time

import pytest

import ovosystem
from conftest import VIRTUAL_READER, wait_until
from ovosystem import CardEventKind, ReaderState

SELECT_MASTER_FILE = bytes.fromhex("00 A4 00 0C 02 3F 00")


def test_the_reader_list_shows_each_reader_with_its_state_and_the_card_atr(virtual_card):
    readers = {reader.name: reader for reader in ovosystem.readers()}
    inserted = readers[VIRTUAL_READER]
    assert inserted.state == ReaderState.CARD and inserted.atr[:1] == b"\x3b"
    assert readers["Virtual PCD 00 01"] == ("Virtual PCD 00 01", ReaderState.EMPTY, b"")
    with ovosystem.Card(VIRTUAL_READER) as card:
        card.connect()
        state, atr = card.status()
    assert state in (5, 6) and atr == inserted.atr  # negotiable or specific, by pcsc-lite's version


def test_command_units_are_exchanged_and_traced(virtual_card, tmp_path):
    ovosystem.setup_logging(console=False, directory=tmp_path, suffix="cards", level=ovosystem.TRACE)
    with ovosystem.Card(VIRTUAL_READER, ovosystem.Logger("pytest.card")) as card:
        card.connect()
        assert card.transmit(SELECT_MASTER_FILE) == b"\x90\x00"
        # A missing file is the card's answer, not a failure.
        assert card.transmit(bytearray.fromhex("00 A4 00 0C 02 3F 01"))[-2:] == b"\x6a\x82"
    log = next(tmp_path.glob("*-cards.log")).read_text()
    assert "[pytest.card     ] -> 00 A4 00 0C 02 3F 00 \n" in log
    assert "[pytest.card     ] <- 90 00 \n" in log


@pytest.mark.parametrize("step, text", [
    (lambda card: card.connect(), "::SCardConnect() failed: SCard error: 0x"),
    (lambda card: card.transmit(SELECT_MASTER_FILE), "::SCardTransmit() failed: SCard error: 0x"),
    (lambda card: card.status(), "not connected"),
])
def test_failures_carry_the_service_text(step, text):
    try:
        card = ovosystem.Card("no such reader")
    except ovosystem.PlatformError as failure:
        pytest.skip(f"needs a PC/SC service: {failure}")
    with card, pytest.raises(ovosystem.PlatformError, match=text.replace("(", r"\(").replace(")", r"\)")):
        step(card)
    with pytest.raises(ovosystem.ArgumentError, match="the Card is closed"):
        card.connect()


def test_the_monitor_tells_what_is_there_then_each_change(virtual_card):
    with ovosystem.CardMonitor() as monitor:
        first = []
        while (event := monitor.next_event(timeout=1)) is not None:
            first.append(event)
        assert (CardEventKind.READER_ADDED, VIRTUAL_READER, b"") in first
        inserted = [event for event in first if event.kind == CardEventKind.CARD_INSERTED]
        assert [(event.reader, event.atr[:1]) for event in inserted] == [(VIRTUAL_READER, b"\x3b")]
        assert monitor.next_event(timeout=0) is None  # nothing new: the time ran out
        virtual_card.terminate()
        assert monitor.next_event(timeout=10) == (CardEventKind.CARD_REMOVED, VIRTUAL_READER, b"")


def test_a_stop_from_another_thread_ends_a_wait_at_once_the_iteration_and_every_later_wait():
    try:
        monitor = ovosystem.CardMonitor()
    except ovosystem.PlatformError as failure:
        pytest.skip(f"needs a PC/SC service: {failure}")
    with monitor:
        while monitor.next_event(timeout=1) is not None:  # what is there
            pass
        stopper = threading.Timer(0.1, monitor.stop)
        stopper.start()
        started = time.monotonic()
        with pytest.raises(ovosystem.MonitorStopped):
            monitor.next_event(timeout=30)  # the one wait of the library, not the iteration's slices
        stopper.join()
        assert time.monotonic() - started < 5
        assert list(monitor) == []  # the iteration ends
        started = time.monotonic()
        with pytest.raises(ovosystem.MonitorStopped):
            monitor.next_event(timeout=30)
        assert time.monotonic() - started < 10
