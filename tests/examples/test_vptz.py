"""The module vptz against a real service; python_test starts what it needs."""

import ast
import gc
import pathlib
import threading
import time
import unittest

import vptz
from vptz import _vptz

SECONDS = 10.0


def wait_until(condition):
    deadline = time.monotonic() + SECONDS
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.01)
    return True


class Connected(unittest.TestCase):
    def setUp(self):
        self.client = vptz.Client()
        self.client.connect("python-test")
        self.addCleanup(self.client.disconnect)
        self.camera = self.client.device(1)


class LifecycleTest(unittest.TestCase):
    def test_version(self):
        self.assertEqual(vptz.Client().version(), "0.1.0")

    def test_an_address_without_a_broker_is_a_connection_error(self):
        with self.assertRaises(ConnectionError):
            vptz.Client().connect("x", "unix:/nonexistent/bus.sock")

    def test_a_command_without_a_connection_says_so(self):
        with self.assertRaises(vptz.VptzError) as caught:
            vptz.Client().status()
        self.assertEqual((caught.exception.code, caught.exception.name), (-1, "NOT_SENT"))

    def test_the_context_manager_leaves_the_bus(self):
        with vptz.Client() as client:
            client.connect("context")
            self.assertEqual(client.status(), 0)
        with self.assertRaises(vptz.VptzError):
            client.status()


class DevicesTest(Connected):
    def test_devices_are_listed_with_their_profiles(self):
        devices = self.client.devices()
        self.assertEqual(len(devices), self.client.device_count())
        camera = devices[0]
        self.assertEqual(camera.protocol, "ONVIF")
        self.assertEqual(camera.ptz_list[0].node, "ptz0")
        self.assertEqual([media.node for media in camera.media_list], ["main", "sub"])
        self.assertEqual(camera.ptz_list[0].pan.position_range, (-170.0, 170.0))
        self.assertGreater(len(camera.ptz_list[0].presets), 0)

    def test_an_unknown_device_is_none(self):
        self.assertIsNone(self.client.device(4711))

    def test_a_device_keeps_its_client_alive(self):
        client = vptz.Client()
        client.connect("short-lived")
        camera = client.devices()[0]
        del client
        gc.collect()
        camera.stop()

    def test_neither_record_nor_repr_shows_credentials(self):
        self.assertFalse(hasattr(self.camera, "authorization"))
        self.assertEqual(repr(self.camera), "<vptz.Device 1 ONVIF>")


class MotionTest(Connected):
    def position(self):
        return self.client.ptz_profile(1, "ptz0").pan

    def test_a_camera_moves_to_a_position_and_stops_there(self):
        self.camera.absolute_move(pan=5.0, pan_speed=80.0)
        self.assertTrue(wait_until(lambda: self.position().position == 5.0 and self.position().speed == 0.0))

    def test_a_continuous_move_is_stopped(self):
        self.camera.continuous_move(pan=-20.0)
        self.camera.stop()
        self.assertTrue(wait_until(lambda: self.position().speed == 0.0))

    def test_a_refusal_carries_its_code(self):
        with self.assertRaises(vptz.VptzError) as caught:
            self.camera.absolute_move(pan=999.0)
        self.assertEqual((caught.exception.code, caught.exception.name), (-1006, "REFUSED"))
        self.assertIn("-1006", str(caught.exception))

    def test_a_profile_that_is_not_there_is_refused(self):
        with self.assertRaises(vptz.VptzError):
            self.camera.stop(idx=9)


class SignalsTest(Connected):
    def test_a_signal_reaches_its_callback_while_other_threads_run(self):
        arrived = threading.Event()
        payloads = []

        def on_finish(payload):
            payloads.append(payload)
            arrived.set()

        self.client.subscribe("finish/search_device", on_finish)
        self.client.search()
        self.assertTrue(arrived.wait(SECONDS))
        self.assertIsInstance(payloads[0], bytes)
        self.client.unsubscribe("finish/search_device")

    def test_a_callback_that_raises_harms_nobody(self):
        arrived = threading.Event()

        def on_finish(payload):
            arrived.set()
            raise ValueError("of the application's own")

        unraisable = []
        import sys

        before, sys.unraisablehook = sys.unraisablehook, unraisable.append
        self.addCleanup(setattr, sys, "unraisablehook", before)
        self.client.subscribe("finish/search_device", on_finish)
        self.client.search()
        self.assertTrue(arrived.wait(SECONDS))
        self.assertTrue(wait_until(lambda: unraisable))
        self.assertEqual(self.client.status(), 0)


class OtherCommandsTest(Connected):
    def test_power_is_switched(self):
        self.assertEqual(self.client.power_status(), 1)
        self.client.power_off()
        self.assertEqual(self.client.power_status(), 0)
        self.client.power_on()

    def test_a_picture_is_set(self):
        self.camera.set_imaging_settings(brightness=70.0)
        self.assertEqual(self.client.media_profile(1, "main").brightness, 70.0)

    def test_an_address_is_mapped(self):
        self.client.enable_nat(1, vptz.NATType.MEDIA)
        inside = self.client.device(1).media_list[0]
        self.assertNotEqual(inside.nat_url, "")
        self.client.disable_nat(1, vptz.NATType.MEDIA)


class StubTest(unittest.TestCase):
    def test_the_stub_names_what_the_module_has(self):
        path = pathlib.Path(_vptz.__file__).with_name("_vptz.pyi")
        declared = {}
        for node in ast.parse(path.read_text()).body:
            if isinstance(node, ast.ClassDef):
                names = [item.name for item in node.body if isinstance(item, ast.FunctionDef)]
                names += [item.target.id for item in node.body if isinstance(item, ast.AnnAssign)]
                declared[node.name] = {name for name in names if not name.startswith("__")}
        present = {
            name: {member for member in vars(value) if not member.startswith("__")}
            for name, value in vars(_vptz).items()
            if isinstance(value, type) and name not in ("VptzError", "NATType")
        }
        for name in ("VptzError", "NATType"):
            declared.pop(name)
        self.assertEqual(declared, present)

    def test_everything_public_is_documented(self):
        for kind in (_vptz.Client, _vptz.Device):
            for name, member in vars(kind).items():
                if callable(member) and not name.startswith("_"):
                    self.assertIn("\n", member.__doc__.strip(), f"{kind.__name__}.{name}")


if __name__ == "__main__":
    unittest.main()
