"""The fields of the flow that files keep, in the order of their records.

Written by `cmake --build build --target reference` from the table that the program works with.
"""

from typing import NamedTuple


class Field(NamedTuple):
    name: str
    unit: str
    long_name: str
    files: tuple[int, ...]  # identifiers of the files that hold it


FIELDS = (
    Field("u", "m/s", "velocity along the mesh axis i", (111, 112, 122, 132)),
    Field("v", "m/s", "velocity along the mesh axis j", (111, 112, 122, 132)),
    Field("w", "m/s", "vertical velocity", (111, 112, 122, 132)),
    Field("p", "Pa", "pressure", (111, 112, 122, 132)),
    Field("tke", "m2/s2", "turbulence energy", (111, 112, 122, 132)),
    Field("ted", "m2/s3", "dissipation of turbulence energy", (111, 112, 122, 132)),
    Field("flxU", "m3/s", "volume flux through the east face", (112, 122, 132)),
    Field("flxV", "m3/s", "volume flux through the north face", (112, 122, 132)),
    Field("flxW", "m3/s", "volume flux through the top face", (112, 122, 132)),
    Field("vis", "kg/(m s)", "effective viscosity", (112, 122, 132)),
    Field("pp", "Pa", "pressure correction", (112, 122, 132)),
    Field("lm", "m", "mixing length", (122, 132)),
    Field("tkl", "m2/s2", "turbulence energy of the k-l part", (132,)),
    Field("viskl", "kg/(m s)", "viscosity of the k-l part", (132,)),
)
