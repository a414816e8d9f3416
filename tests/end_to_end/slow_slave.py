"""A controller that takes its time: it answers in order, each request once, so many milliseconds
after it came, and forgets none when the next one comes. A register holds the last four digits of
its number on the line. Ctrl-C ends it once it has answered everything.

slow_slave.py PORT STATION:MILLISECONDS..."""

import argparse
import os
import select
import signal
import time

from frames import with_crc


def answer(request):
    station, function = request[:2]
    first, count = int.from_bytes(request[2:4], "big"), int.from_bytes(request[4:6], "big")
    if function == 3:
        data = b"".join((a % 10000).to_bytes(2, "big") for a in range(first, first + count))
        reply = bytes((station, function, len(data) & 0xFF)) + data
    elif function in (6, 8):
        return request
    else:
        reply = bytes((station, function | 0x80, 1))
    return with_crc(reply)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("port")
    parser.add_argument("stations", nargs="+")
    arguments = parser.parse_args()
    delays = {int(s): int(ms) / 1000 for s, ms in (each.split(":") for each in arguments.stations)}
    line = os.open(arguments.port, os.O_RDWR | os.O_NOCTTY)
    ending = []
    signal.signal(signal.SIGINT, lambda *_: ending.append(True))
    print("ready", flush=True)
    heard = b""
    due = []  # time and reply, in order
    while due or not ending:
        wait = max(0, due[0][0] - time.monotonic()) if due else 0.05
        if select.select([line], [], [], wait)[0]:
            heard += os.read(line, 4096)
            while len(heard) >= 8:
                request, heard = heard[:8], heard[8:]
                if request[0] in delays and with_crc(request[:6]) == request:
                    due.append((time.monotonic() + delays[request[0]], answer(request)))
        while due and due[0][0] <= time.monotonic():
            os.write(line, due.pop(0)[1])


if __name__ == "__main__":
    main()
