"""The installed module is imported from its folder, argv[1], and brings its types."""

import pathlib
import sys

import vptz

folder = pathlib.Path(sys.argv[1])
assert pathlib.Path(vptz.__file__).parent == folder, vptz.__file__
for name in ("py.typed", "_vptz.pyi"):
    assert (folder / name).is_file(), name
assert vptz.explain(-1006)[0] == "out_of_range"
