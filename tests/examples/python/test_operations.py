"""Python offers every operation of the C++ headers, and page and stub name what it offers."""

from __future__ import annotations

import ast
import os
import pathlib
import re
import unittest
from typing import Dict, Set

from vptz import _vptz

SOURCE = pathlib.Path(os.environ["VPTZ_TEST_SOURCE"])

# Operations that are called otherwise than their C++ names in small letters.
CLIENT = {
    "Release": "disconnect",
    "Init": "connect",
    "LoadDevices": "devices",
    "GetVptzTimeout": "timeout",
    "CallSync": "call",
    "SubscribeSignal": "subscribe",
    "SubscribeAllSignal": "subscribe_all",
    "SubscribeSearchDeviceFinishSignal": "subscribe_search_finish",
    "SubscribeUpdateDevicesSignal": "subscribe_updates",
    "UnsubscribeSignal": "unsubscribe",
    "UnSubscribeSearchDeviceFinishSignal": "unsubscribe_search_finish",
    "UnSubscribeUpdateDevicesSignal": "unsubscribe_updates",
    "GetStatus": "status",
    "SearchDevice": "search",
    "AddRS232Device": "add_rs232_device",
    "AddOnvifDeviceManually": "add_onvif_device",
    "QueryDeviceById": "device",
    "QueryDeviceAll": "devices",
    "QueryDeviceByProtocol": "devices_by_protocol",
    "QueryDeviceCount": "device_count",
    "QueryPtzCountByDevice": "ptz_count",
    "QueryMediaCountByDevice": "media_count",
    "QueryPresetCountByPtz": "preset_count",
    "UpdateDeviceControlProtocol": "update_control_protocol",
    "UpdateAllRS232Devices": "update_all_rs232_devices",
    "PtzStop": "stop",
    "EnableNAT": "enable_nat",
    "DisableNAT": "disable_nat",
    "QueryNATuri": "nat_uri",
    "SetMediaInfoNAT": "set_media_info_nat",
    "ClearNAT": "clear_nat",
    "AddUSBttyDevice": "add_usb_tty",
    "RemoveUSBttyDevice": "remove_usb_tty",
    "FlushUSBttydevices": "flush_usb_ttys",
    "EnableReset2P0": "enable_reset_2p0",
    "DisableReset2P0": "disable_reset_2p0",
    "PowerOnDevices": "power_on",
    "PowerOffDevices": "power_off",
    "GetDevicesPowerStatus": "power_status",
    "QueryPtzProfiles": "ptz_profile",
    "QueryMediaProfiles": "media_profile",
}
DEVICE = {
    "GetPtzById": "ptz",
    "GetMediaById": "media",
    "LoadDeviceInfo": "load_info",
    "SetSlaveDevice": "set_slave",
    "SetSlaveDeviceById": "set_slave_by_id",
    "UpdateDevice": "update",
    "UpdateDeviceControlProtocol": "update_control_protocol",
    "UpdateDeviceInfo": "update_info",
    "UpdateDeviceInfoFull": "update_info_full",
    "EnableNAT": "enable_nat",
    "DisableNAT": "disable_nat",
    "QueryNATuri": "nat_uri",
    "PtzStop": "stop",
}

# What has no use in Python: it does nothing, or concerns the registry, which
# Python's copies take the place of.
NOT_OFFERED = {"HandleUpdateSignal", "ClearDevices", "Init", "Deinit", "SetVptzClient"}


def operations(header: str) -> Set[str]:
    text = re.sub(r"//[^\n]*", "", (SOURCE / "include/vptz" / header).read_text())
    public = text[text.index("public:"):text.index("private:")]
    declaration = re.compile(r"^  (?!explicit|using)[\w:<>*&, ]+[ *&](\w+)\(", re.MULTILINE)
    return {name for name in declaration.findall(public) if name not in ("VptzClient", "CVptzDevice")}


def small(name: str) -> str:
    return re.sub(r"(?<!^)(?=[A-Z])", "_", name).lower()


def methods(kind: type) -> Set[str]:
    return {name for name, member in vars(kind).items() if callable(member) and not name.startswith("_")}


class OperationsTest(unittest.TestCase):
    def check(self, header: str, kind: type, names: Dict[str, str]) -> None:
        found = operations(header)
        self.assertGreater(len(found), 50)
        offered = methods(kind)
        missing = {name for name in found if names.get(name, small(name)) not in offered}
        self.assertEqual(missing - NOT_OFFERED, set())
        self.assertEqual(set(names) - found, set(), "named here, but not in the header")

    def test_the_client_offers_every_operation(self) -> None:
        self.check("vptz_client.h", _vptz.Client, CLIENT)

    def test_the_device_offers_every_operation(self) -> None:
        self.check("vptz_device.h", _vptz.Device, DEVICE)


class StubTest(unittest.TestCase):
    def test_the_stub_names_what_the_module_has(self) -> None:
        declared: Dict[str, Set[str]] = {}
        for node in ast.parse(pathlib.Path(str(_vptz.__file__)).with_name("_vptz.pyi").read_text()).body:
            if isinstance(node, ast.ClassDef):
                names = {item.name for item in node.body if isinstance(item, ast.FunctionDef)}
                names |= {item.target.id for item in node.body
                          if isinstance(item, ast.AnnAssign) and isinstance(item.target, ast.Name)}
                declared[node.name] = {name for name in names if not name.startswith("__")}
        present = {name: {member for member in vars(kind) if not member.startswith("__")}
                   for name, kind in vars(_vptz).items() if isinstance(kind, type)}
        present["VptzError"] |= {"code", "name"}  # of each error
        self.assertEqual(declared, present)

    def test_everything_public_is_documented(self) -> None:
        for kind in (_vptz.Client, _vptz.Device):
            for name in methods(kind):
                text = str(getattr(kind, name).__doc__)
                self.assertIn("\n", text.strip(), f"{kind.__name__}.{name}")


class PageTest(unittest.TestCase):
    def test_the_page_lists_each_method_once(self) -> None:
        page = (SOURCE / "docs/python.md").read_text()
        for kind in (_vptz.Client, _vptz.Device):
            section = page[page.index(f"### {kind.__name__}"):]
            section = section[:section.find("\n#", 1)]
            listed = re.findall(r"^\| `(\w+)\(", section, re.MULTILINE)
            self.assertEqual(sorted(listed), sorted(methods(kind)))


if __name__ == "__main__":
    unittest.main()
