"""Ctrl-C ends each call at once, and the client can be used afterwards."""

from __future__ import annotations

import os
import signal
import subprocess
import sys
import threading
import time
import unittest
from typing import Callable

import vptz
from support import SECONDS, Connected, Interrupt, locked_database, sockets, stopped, wait_until

PROMPT = 0.1  # seconds


class InterruptTest(Connected):
    def interrupt(self, call: Callable[[], object]) -> None:
        with Interrupt() as interrupt:
            with self.assertRaises(KeyboardInterrupt):
                call()
            self.assertLess(interrupt.delay(), PROMPT)

    def test_a_call_that_waits_for_an_answer(self) -> None:
        with stopped("BROKER"):
            self.interrupt(lambda: self.client.status(timeout=30))
        self.assertEqual(self.client.status(), 0)

    def test_a_call_that_the_service_does_not_answer(self) -> None:
        with stopped("SERVICE"):
            self.interrupt(lambda: self.camera.continuous_move(pan=5.0, timeout=30))
        self.camera.stop()
        self.assertTrue(wait_until(self.is_still))

    def test_connecting(self) -> None:
        client = vptz.Client()
        with stopped("BROKER"):
            self.interrupt(lambda: client.connect("python-test"))
        self.assertEqual(client.wait_for_service(), 0)

    def test_a_lookup_that_waits_for_the_database(self) -> None:
        with locked_database():
            self.interrupt(self.client.devices)
            begin = time.monotonic()
            self.camera.stop()
            self.assertLess(time.monotonic() - begin, 1.0)
        self.assertTrue(wait_until(lambda: len(self.client.devices()) > 0))

    def test_a_command_that_waits_for_the_database_is_not_sent_afterwards(self) -> None:
        self.camera.absolute_move(pan=0.0)
        self.camera.wait_until_still()
        preset = next(one for one in self.camera.ptz_list[0].presets if one.pan != 0.0)
        with locked_database():
            self.interrupt(lambda: self.client.goto_preset_by_id(1, preset.preset_id))
        self.client.devices()  # the database is free: the abandoned call has gone on
        time.sleep(0.2)
        self.assertEqual(self.client.ptz_profile(1, "ptz0").pan.position, 0.0)

    def test_searching(self) -> None:
        self.interrupt(lambda: [self.client.search(scope="", wait=True, limit=30.0) for _ in range(100)])
        self.assertEqual(self.client.status(), 0)

    def test_waiting_for_a_device(self) -> None:
        self.interrupt(lambda: self.client.wait_for_device(4711, limit=30.0))

    def test_waiting_until_a_camera_is_still(self) -> None:
        self.camera.continuous_move(pan=1.0)
        self.interrupt(lambda: self.camera.wait_until_still())
        self.camera.stop()

    def test_waiting_while_another_thread_calls(self) -> None:
        begun = threading.Event()

        def call() -> None:
            begun.set()
            with self.assertRaises(vptz.VptzError):
                self.client.status(timeout=2)

        with stopped("SERVICE"):
            thread = threading.Thread(target=call)
            thread.start()
            begun.wait(SECONDS)
            self.interrupt(self.client.status)
            thread.join()
        self.assertEqual(self.client.status(), 0)

    def test_the_stop_of_a_finally_arrives_after_the_move_that_was_interrupted(self) -> None:
        with stopped("BROKER") as broker:
            with Interrupt():
                try:
                    self.camera.continuous_move(pan=20.0, timeout=30)
                except KeyboardInterrupt:
                    os.kill(broker, signal.SIGCONT)
                    begin = time.monotonic()
                    self.camera.stop()
                    self.assertLess(time.monotonic() - begin, 1.0)
        self.assertTrue(wait_until(self.is_still, 2.0))

    def test_a_signal_arrives_after_an_interrupt(self) -> None:
        arrived = threading.Event()
        self.client.subscribe("finish/search_device", lambda payload: arrived.set())
        with stopped("BROKER"):
            self.interrupt(lambda: self.client.status(timeout=30))
        self.client.search()
        self.assertTrue(arrived.wait(SECONDS))

    def test_many_interrupts_leave_no_connection_behind(self) -> None:
        before = sockets()
        for _ in range(5):
            with stopped("SERVICE"):
                with Interrupt(after=0.02):
                    with self.assertRaises(KeyboardInterrupt):
                        self.client.status(timeout=30)
            self.assertEqual(self.client.status(), 0)
        self.assertEqual(sockets(), before)


class HandlerTest(Connected):
    def test_a_handler_that_does_not_raise_leaves_the_call_alone(self) -> None:
        calls = []
        before = signal.signal(signal.SIGUSR1, lambda *_: calls.append(1))
        self.addCleanup(signal.signal, signal.SIGUSR1, before)
        with stopped("SERVICE") as service:
            threading.Timer(0.4, os.kill, (service, signal.SIGCONT)).start()
            with Interrupt(signal.SIGUSR1, after=0.1):
                self.assertEqual(self.client.status(timeout=5), 0)
        self.assertEqual(calls, [1])

    def test_a_handler_stops_a_camera_during_a_call(self) -> None:
        stops = []

        def stop(*_: object) -> None:
            self.camera.stop()
            stops.append(time.monotonic())

        before = signal.signal(signal.SIGUSR1, stop)
        self.addCleanup(signal.signal, signal.SIGUSR1, before)
        self.camera.continuous_move(pan=10.0)
        with locked_database():
            with Interrupt(signal.SIGUSR1, after=0.1) as interrupt:
                self.client.devices()  # waits for the database
        self.assertLess(stops[0] - interrupt.sent_at, 1.0)
        self.assertTrue(wait_until(self.is_still))


class EndTest(unittest.TestCase):
    """The end of the interpreter while a call is under way."""

    def end(self, program: str) -> None:
        begin = time.monotonic()
        result = subprocess.run([sys.executable, "-X", "dev", "-c", program], capture_output=True, text=True,
                                timeout=30)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertLess(time.monotonic() - begin, 10.0)

    def test_a_daemon_thread_in_a_call(self) -> None:
        with stopped("SERVICE"):
            self.end("""
import threading, time, vptz
client = vptz.Client()
client.connect("end")
for _ in range(3):
    threading.Thread(target=client.status, args=(20,), daemon=True).start()
time.sleep(0.1)
""")

    def test_daemon_threads_that_call_without_pause(self) -> None:
        for _ in range(5):
            self.end("""
import threading, time, vptz
clients = [vptz.Client() for _ in range(3)]
def call(client):
    while True:
        client.status()
for client in clients:
    client.connect("end")
    threading.Thread(target=call, args=(client,), daemon=True).start()
time.sleep(0.1)
""")

    def test_an_abandoned_call_and_a_locked_database(self) -> None:
        with locked_database():
            self.end("""
import os, signal, threading, vptz
client = vptz.Client()
threading.Timer(0.1, os.kill, (os.getpid(), signal.SIGINT)).start()
try:
    client.devices()
except KeyboardInterrupt:
    pass
""")

    def test_a_callback_that_does_not_end(self) -> None:
        self.end("""
import threading, time, vptz
client = vptz.Client()
client.connect("end")
arrived = threading.Event()
def callback(payload):
    arrived.set()
    while True:
        time.sleep(0.001)
client.subscribe("finish/search_device", callback)
client.search()
assert arrived.wait(10)
""")

    def test_a_stop_at_exit(self) -> None:
        self.end("""
import atexit, vptz
client = vptz.Client()
client.connect("end")
camera = client.device(1)
atexit.register(camera.stop)
""")

    def test_a_child_made_by_fork(self) -> None:
        self.end("""
import os, vptz
client = vptz.Client()
client.connect("end")
client.status()
child = os.fork()
if child == 0:
    try:
        client.status()
    except vptz.VptzError as error:
        assert error.name == "ENOTCONN", error
        own = vptz.Client()
        own.connect("child")
        assert own.status() == 0
        del client, own
        raise SystemExit(0)
assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
assert client.status() == 0
""")


if __name__ == "__main__":
    unittest.main()
