"""Clients are made, dropped and inherited while others are at work."""

from __future__ import annotations

import gc
import os
import resource
import subprocess
import sys
import threading
import unittest
from typing import Callable, List

import vptz
from support import Connected, stopped, wait_until


def run(program: str, prepare: Callable[[], None] = lambda: None) -> None:
    """Runs a program that must end well, and write nothing to its standard error."""
    result = subprocess.run([sys.executable, "-X", "dev", "-W", "ignore::DeprecationWarning", "-c", program],
                            capture_output=True, text=True, timeout=50, preexec_fn=prepare)
    if (result.returncode, result.stderr) != (0, ""):
        raise AssertionError(f"ended with {result.returncode}: {result.stderr}")


def files() -> int:
    return len(os.listdir("/proc/self/fd"))


class ReplacementTest(Connected):
    def test_lookups_find_every_device_while_another_thread_replaces_its_client(self) -> None:
        expected = self.client.device_count()
        found: List[int] = []
        ended = threading.Event()

        def look_up() -> None:
            client = vptz.Client()
            while not ended.is_set():
                found.append(client.device_count())

        threads = [threading.Thread(target=look_up) for _ in range(2)]
        for thread in threads:
            thread.start()
        for _ in range(200):
            vptz.Client().version()
        ended.set()
        for thread in threads:
            thread.join()
        self.assertEqual(set(found), {expected})

    def test_clients_that_were_dropped_during_a_call_go_when_there_is_none(self) -> None:
        def drop(count: int) -> None:
            for _ in range(count):
                client = vptz.Client()
                client.connect("short-lived")
                del client
            gc.collect()

        def settles(expected: int) -> bool:
            def is_reached() -> bool:
                drop(1)
                return files() <= expected

            return wait_until(is_reached)

        drop(2)
        before = files()
        with stopped("SERVICE"):
            thread = threading.Thread(target=lambda: self.assertRaises(vptz.VptzError, self.client.status, 2))
            thread.start()
            drop(20)
            thread.join()
        self.assertTrue(settles(before))


class ForkTest(unittest.TestCase):
    def test_a_child_looks_up_whatever_other_threads_do_with_clients(self) -> None:
        run("""
import os, threading, time, vptz
ended = threading.Event()
def replace():
    while not ended.is_set():
        vptz.Client().version()
threads = [threading.Thread(target=replace) for _ in range(3)]
for thread in threads:
    thread.start()
def ends(child):
    deadline = time.monotonic() + 10
    while time.monotonic() < deadline:
        pid, status = os.waitpid(child, os.WNOHANG)
        if pid == child:
            return status == 0
        time.sleep(0.001)
    os.kill(child, 9)
    os.waitpid(child, 0)
    return False
ended_well = 0
for _ in range(100):
    child = os.fork()
    if child == 0:
        try:
            os._exit(0 if vptz.Client().device_count() > 0 else 1)
        finally:
            os._exit(2)
    if not ends(child):
        break
    ended_well += 1
ended.set()
for thread in threads:
    thread.join()
assert ended_well == 100, ended_well
""")

    def test_a_child_that_a_signal_handler_makes_within_a_call_does_not_go_on_waiting(self) -> None:
        with stopped("SERVICE"):
            run("""
import os, signal, threading, vptz
child = -1
def fork(*_):
    global child
    child = os.fork()
signal.signal(signal.SIGUSR1, fork)
client = vptz.Client()
client.connect("forks")
threading.Timer(0.1, os.kill, (os.getpid(), signal.SIGUSR1)).start()
try:
    client.status(timeout=3)
except vptz.VptzError as error:
    if child == 0:
        os._exit(0 if error.name == "ENOTCONN" else 1)
    assert error.name == "ETIMEDOUT", error
assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
""")


class NoThreadTest(unittest.TestCase):
    def test_a_stop_is_sent_though_no_thread_can_be_started(self) -> None:
        # Stacks of new threads are so large that the address space has no room for one.
        stack = 1 << 28
        hard = resource.getrlimit(resource.RLIMIT_STACK)[1]
        size = stack if hard == resource.RLIM_INFINITY else min(stack, hard)
        run("""
import pathlib, resource, threading, vptz
client = vptz.Client()
connected, ended = threading.Event(), threading.Event()
def connect():
    client.connect("no-thread")
    connected.set()
    ended.wait()  # keeps its stack from other threads
threading.Thread(target=connect, daemon=True).start()
assert connected.wait(10)
pages = int(pathlib.Path("/proc/self/statm").read_text().split()[0])
limit = pages * resource.getpagesize() + (4 << 20)
before = resource.getrlimit(resource.RLIMIT_AS)
resource.setrlimit(resource.RLIMIT_AS, (limit, before[1]))
try:
    threading.Thread(target=int).start()
except RuntimeError:
    pass
else:
    raise SystemExit("there was room for a thread")
for _ in range(3):
    client.stop(1)
resource.setrlimit(resource.RLIMIT_AS, before)
client.stop(1)
ended.set()
""", lambda: resource.setrlimit(resource.RLIMIT_STACK, (size, hard)))


if __name__ == "__main__":
    unittest.main()
