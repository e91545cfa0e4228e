"""The files of a run whose fields are functions of true east, north and height above ground.

Wind, pressure, turbulence energy and ground are linear in east and north, and those of the air in
the logarithm of the height, so that every interpolation that claims it finds them again exactly.
"""

import math
import struct
from pathlib import Path

import numpy as np

# Mesh lines and heights of the centres above ground at x = 0 [m]; columns rise downwind.
X = np.array([-900, -700, -400, -150, 0, 130, 320, 640, 800.0])
Y = np.array([-700, -450, -210, -60, 90, 260, 500, 710.0])
HEIGHTS = np.array([0, 2, 6, 14, 30, 62, 126, 254, 510.0])
STRETCH = 1e-4
Z0 = 0.1

# Constant, per m east, per m north, per ln(m).
PARTS = {
    "east": (3.0, 1e-3, -5e-4, 0.6),
    "north": (-2.0, 4e-4, 9e-4, 0.3),
    "up": (0.1, 2e-4, 3e-4, 0.05),
    "p": (-4.0, 2e-3, 1e-3, 0.7),
    "tke": (1.5, 3e-4, -2e-4, -0.1),
    "ground": (400.0, 0.05, -0.03, 0.0),
}


def value(part, east, north, height=1.0):
    constant, per_east, per_north, per_log = PARTS[part]
    return constant + per_east * east + per_north * north + per_log * np.log(height)


def downwind(angle):
    """Unit vector towards which a wind from `angle` blows: east and north."""
    bearing = math.radians(angle + 180)
    return math.sin(bearing), math.cos(bearing)


def places():
    """Mesh x and y of the columns, and the heights above ground of all centres."""
    x, y = np.meshgrid(X, Y, indexing="ij")
    return x, y, HEIGHTS * (1 + STRETCH * x)[:, :, None]


def east_north(angle, x, y):
    east, north = downwind(angle)
    # The left of the wind is a quarter turn against the clock: (-north, east).
    return x * east - y * north, x * north + y * east


def fields(angle):
    x, y, height = places()
    e, n = (part[:, :, None] for part in east_north(angle, x, y))
    air = np.maximum(height, 0.5)  # the logarithm at the ground is never asked for
    wind_east, wind_north = value("east", e, n, air), value("north", e, n, air)
    east, north = downwind(angle)
    ones = np.ones_like(height)
    return {
        "xc": x[:, :, None] * ones,
        "yc": y[:, :, None] * ones,
        "zc": value("ground", e, n) + height,
        "u": wind_east * east + wind_north * north,
        "v": wind_north * east - wind_east * north,
        "w": value("up", e, n, air),
        "p": value("p", e, n, air),
        "tke": value("tke", e, n, air),
    }


def record(values, kind="<f4"):
    data = np.asarray(values, kind).tobytes(order="F")
    return struct.pack("<i", len(data)) + data + struct.pack("<i", len(data))


def tuf(file_id, extents, *records):
    return record([file_id], "<i4") + record(extents, "<i4") + b"".join(records)


def write(directory, angle, centre, geodetic_system):
    """The files of one direction; centre: longitude and latitude in degrees."""
    directory = Path(directory)
    tenths = round(angle * 10)
    stem = f"restart-{tenths // 10:03d}_{tenths % 10}-"
    f = fields(angle)
    shape = f["u"].shape
    nothing = np.zeros(shape)
    rest = [record(f.get(name, nothing)) for name in "u v w p tke ted a b c d e".split()]
    files = {
        "xyzc.tuf": tuf(103, shape, *(record(f[name]) for name in ("xc", "yc", "zc"))),
        "z0.tuf": tuf(102, shape[:2], record(np.full(shape[:2], Z0))),
        "vpkeout_00009.tuf": tuf(112, shape, *rest, record([9], "<i4"), record([0.0])),
        "restart.info": b"9\n 0 0 0 0\n",
    }
    for name, data in files.items():
        (directory / (stem + name)).write_bytes(data)
    (directory / "torvex.tin").write_text(
        f"&NML_CASEFILE\n CENT_LON = {centre[0]}, 0, 0, CENT_LAT = {centre[1]}, 0, 0\n"
        f" GS = {geodetic_system}\n/\n&NML_SITE /\n"
    )
