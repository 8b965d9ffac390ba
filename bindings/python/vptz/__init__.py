"""Drives pan-tilt-zoom cameras through the service "vptz".

    import vptz

    with vptz.Client() as client:
        client.connect("my-application")
        camera = client.device(1)
        camera.absolute_move(pan=30.0, pan_speed=20.0)
        camera.stop()

Failed and refused calls raise VptzError, whose `code` and `name` tell why.
"""

from ._vptz import (
    NOT_COMMANDED,
    Axis,
    Client,
    Device,
    MediaProfile,
    NATMapping,
    NATType,
    Preset,
    PtzProfile,
    VptzError,
)

__all__ = [
    "NOT_COMMANDED",
    "Axis",
    "Client",
    "Device",
    "MediaProfile",
    "NATMapping",
    "NATType",
    "Preset",
    "PtzProfile",
    "VptzError",
]
