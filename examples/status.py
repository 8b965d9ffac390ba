"""Waits for the service and lists the cameras with their profiles and presets."""

import vptz


def show(device: vptz.Device) -> None:
    print(f"device {device.id}: {device.host_name} ({device.protocol}), logged in: {device.authorized}")
    for profile in device.ptz_list:
        names = ", ".join(preset.name for preset in profile.presets)
        print(f"  PTZ {profile.id} {profile.node}: pan {profile.pan.position_range}, presets {names or '-'}")
    for media in device.media_list:
        print(f"  media {media.id} {media.node}: {media.width} x {media.height}")


def main() -> None:
    with vptz.Client() as client:
        client.connect("status-example")
        client.wait_for_service()
        for device in client.devices():
            show(device)


if __name__ == "__main__":
    main()
