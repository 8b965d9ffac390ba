"""Drives pan-tilt-zoom cameras through the service "vptz".

    import vptz

    with vptz.Client() as client:
        client.connect("my-application")
        camera = client.device(1)
        camera.absolute_move(pan=30.0, pan_speed=20.0)
        camera.wait_until_still()

Failed and refused calls raise VptzError, whose `code` and `name` tell why.
Ctrl-C ends a call at once, and the client can be used afterwards:

    try:
        camera.continuous_move(pan=10.0)
        input("moves until you press Enter or Ctrl-C")
    finally:
        camera.stop()
"""

from ._vptz import (
    NOT_COMMANDED,
    Axis,
    Client,
    Device,
    MediaProfile,
    NATMapping,
    NATType,
    NetworkDeviceParams,
    Preset,
    PtzProfile,
    SerialDeviceParams,
    UnknownDeviceError,
    VptzError,
    explain,
    search_result,
    updated_device,
)

__all__ = [
    "NOT_COMMANDED",
    "Axis",
    "Client",
    "Device",
    "MediaProfile",
    "NATMapping",
    "NATType",
    "NetworkDeviceParams",
    "Preset",
    "PtzProfile",
    "SerialDeviceParams",
    "UnknownDeviceError",
    "VptzError",
    "explain",
    "search_result",
    "updated_device",
]
