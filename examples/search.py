"""Searches for cameras, and tells what the service announces meanwhile."""

from typing import Optional

import vptz


# Runs on a thread of the message bus.
def on_update(device_id: Optional[int]) -> None:
    print("rows have changed of", "some device" if device_id is None else f"device {device_id}")


def main() -> None:
    with vptz.Client() as client:
        client.connect("search-example")
        client.subscribe_updates(on_update)
        found = client.search(wait=True, limit=30.0)
        print(f"{found} found, {client.device_count()} known")


if __name__ == "__main__":
    main()
