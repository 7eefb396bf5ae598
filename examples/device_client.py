#!/usr/bin/env python3
"""A Python client of the library: one command unit to a card, and a question and its answer
between two processes through a message channel, logged to the console and to a daily file
in the current directory (YYYY-MM-DD-device-client.log), the traffic traced.

    device_client.py card ["READER NAME"]   SELECT of the master file, the status word
    device_client.py answer CHANNEL &       waits for a question, answers it
    device_client.py ask CHANNEL            asks, prints the answer
"""
import sys
import time

import ovosystem

CHANNEL_SIZE = 8192  # the same in every process that joins
QUESTION, ANSWER = 1, 2


def card(log, name=None):
    readers = ovosystem.readers()
    if not readers and name is None:
        print("no reader: is the PC/SC service running?")
        return 1
    with ovosystem.Card(name or readers[0].name, log) as reader:
        reader.connect()
        response = reader.transmit(bytes.fromhex("00 A4 00 0C 02 3F 00"))
    # A status word other than 9000 is the card's answer, not a failure.
    print(f"status word {response[-2:].hex().upper()}")
    return 0 if response[-2:] == b"\x90\x00" else 1


def receive(channel, id, seconds=10):
    """A receive does not wait: poll for a message of that identifier."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        message = channel.receive(id)
        if message is not None:
            return message
        time.sleep(0.005)
    return None


def converse(log, role, name):
    # The first process makes the channel, the second joins it; it lives while either
    # holds it, so each stays until the other has taken its message.
    with ovosystem.MessageChannel(name, CHANNEL_SIZE) as channel:
        if role == "ask":
            channel.send(QUESTION, b"what time is it?")
        message = receive(channel, ANSWER if role == "ask" else QUESTION)
        if message is None:
            print(f"no {'answer' if role == 'ask' else 'question'}")
            return 1
        print(f"{'answer' if role == 'ask' else 'question'}: {message.decode()}")
        log.trace_bytes(role, message)
        if role == "answer":
            channel.send(ANSWER, b"time to answer")
            while len(channel):  # stays until the answer is taken
                time.sleep(0.005)
    return 0


def main(words):
    # Set up first: loggers taken later copy the root's channels and level.
    ovosystem.setup_logging(console=True, directory=".", suffix="device-client", level=ovosystem.TRACE)
    log = ovosystem.Logger("device-client")
    try:
        if words[:1] == ["card"] and len(words) <= 2:
            return card(log, *words[1:])
        if words[:1] in (["ask"], ["answer"]) and len(words) == 2:
            return converse(log, *words)
    except ovosystem.Error as failure:  # no service, the reader gone, the card removed
        print(f"failed: {failure}")
        return 1
    print("usage: device_client.py card [READER] | answer CHANNEL | ask CHANNEL")
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
