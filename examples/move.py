"""Moves a camera, and stops it whatever happens: also on Ctrl-C."""

import sys
import time

import vptz


def drive(camera: vptz.Device, seconds: float) -> None:
    end = time.monotonic() + seconds
    try:
        while time.monotonic() < end:
            camera.continuous_move(pan=15.0)  # again and again: the service stops what nobody drives
            time.sleep(0.2)
    finally:
        camera.stop()


def main() -> None:
    with vptz.Client() as client:
        client.connect("move-example")
        camera = client.devices()[0]
        try:
            camera.absolute_move(pan=10.0, tilt=5.0, pan_speed=60.0, tilt_speed=60.0)
            camera.wait_until_still()
            drive(camera, 1.0)
        except vptz.VptzError as error:
            sys.exit(f"camera {camera.id}: {error}")
        profile = camera.wait_until_still()
        print(f"camera {camera.id} stands at pan {profile.pan.position}, tilt {profile.tilt.position}")


if __name__ == "__main__":
    main()
