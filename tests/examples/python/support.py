"""What the tests of the module share. python_test starts broker and service and
tells their process ids and the database."""

from __future__ import annotations

import contextlib
import os
import pathlib
import signal
import sqlite3
import threading
import time
import unittest
from typing import Callable, Iterator

import vptz

SECONDS = 10.0


def wait_until(condition: Callable[[], object], seconds: float = SECONDS) -> bool:
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.01)
    return True


class Connected(unittest.TestCase):
    def setUp(self) -> None:
        self.client = vptz.Client()
        self.client.connect("python-test")
        self.addCleanup(self.client.disconnect)
        self.camera = self.client.device(1)

    def is_still(self) -> bool:
        return self.client.ptz_profile(1, "ptz0").pan.speed == 0.0


def is_stopped(thread: pathlib.Path) -> bool:
    """Whether a thread, named by its folder in /proc, stands still or has ended."""
    try:
        return (thread / "stat").read_text().rpartition(")")[2].split()[0] == "T"
    except (FileNotFoundError, ProcessLookupError):
        return True


@contextlib.contextmanager
def stopped(process: str) -> Iterator[int]:
    """Holds BROKER or SERVICE still: none of its threads runs any more."""
    pid = int(os.environ[f"VPTZ_TEST_{process}"])
    os.kill(pid, signal.SIGSTOP)
    while not all(is_stopped(thread) for thread in pathlib.Path(f"/proc/{pid}/task").iterdir()):
        time.sleep(0.001)
    try:
        yield pid
    finally:
        os.kill(pid, signal.SIGCONT)


@contextlib.contextmanager
def locked_database() -> Iterator[None]:
    """Lets nobody else read the database."""
    connection = sqlite3.connect(os.environ["VPTZ_TEST_DATABASE"], isolation_level=None, timeout=SECONDS)
    connection.execute("BEGIN EXCLUSIVE")
    try:
        yield
    finally:
        connection.execute("ROLLBACK")
        connection.close()


def sockets() -> int:
    """How many connections this process has."""
    links = []
    for descriptor in os.listdir("/proc/self/fd"):
        with contextlib.suppress(OSError):  # the folder's own is closed again
            links.append(os.readlink(f"/proc/self/fd/{descriptor}"))
    return sum(link.startswith("socket:") for link in links)


def waited_for_processor() -> float:
    """How long this process's threads, and broker and service, waited for a processor, in seconds."""
    pids = [str(os.getpid()), os.environ["VPTZ_TEST_BROKER"], os.environ["VPTZ_TEST_SERVICE"]]
    files = [file for pid in pids for file in pathlib.Path("/proc", pid, "task").glob("*/schedstat")]
    total = 0
    for file in files:
        with contextlib.suppress(OSError):  # the thread has ended meanwhile
            total += int(file.read_text().split()[1])
    return total / 1e9


class Interrupt:
    """Sends this process a signal after a while, from another thread."""

    def __init__(self, number: int = signal.SIGINT, after: float = 0.2) -> None:
        self._number = number
        self._timer = threading.Timer(after, self._send)
        self.sent_at = float("inf")

    def __enter__(self) -> Interrupt:
        self._timer.start()
        return self

    def __exit__(self, *_: object) -> None:
        self._timer.cancel()
        self._timer.join()

    def _send(self) -> None:
        self.waited_before = waited_for_processor()
        self.sent_at = time.monotonic()
        os.kill(os.getpid(), self._number)

    def delay(self) -> float:
        """Since the signal, less what was waited for a processor: that is the machine's."""
        return time.monotonic() - self.sent_at - (waited_for_processor() - self.waited_before)
