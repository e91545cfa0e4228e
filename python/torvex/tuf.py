"""The binary files of a run: mesh, roughness, canopy, start fields and results."""

from __future__ import annotations

import math
from dataclasses import dataclass
from pathlib import Path

from torvex.arrays import Array, PathLike
from torvex.fields import FIELDS
from torvex.records import FormatError, read_records


def _fields_of(file_id: int) -> tuple[str, ...]:
    return tuple(field.name for field in FIELDS if file_id in field.files)


START_FIELDS = _fields_of(111)
_RESULT = _fields_of(112)


def _with_further(file_id: int) -> tuple[str, ...]:
    """The records of a result: fields of the k-l part stand behind the two numbers."""
    further = (name for name in _fields_of(file_id) if name not in _RESULT)
    return (*_RESULT, "iteration", "residual", *further)


# What follows the identifier and the extents. "iteration" and "residual" are single numbers.
_RECORDS: dict[int, tuple[str, ...]] = {
    101: ("xn", "yn", "zn"),
    102: ("z0",),
    103: ("xc", "yc", "zc"),
    104: ("gp_cf", "gp_density", "gp_length", "gp_z0"),
    111: START_FIELDS,
    112: _with_further(112),
    122: _with_further(122),
    132: _with_further(132),
}
_KINDS = {
    "xyz": (101,),
    "z0": (102,),
    "xyzc": (103,),
    "ccd": (104,),
    "vpkeinp": (111,),
    "vpkeout": (112, 122, 132),
}
_TWO_DIMENSIONAL = ("z0", "gp_z0")


@dataclass(frozen=True)
class TufFile:
    """A binary file: its arrays by name, file["u"]."""

    path: Path
    id: int
    extents: tuple[int, ...]
    arrays: dict[str, Array]
    iteration: int | None = None  # of results: the count in the name
    residual: float | None = None

    def __getitem__(self, name: str) -> Array:
        if name not in self.arrays:
            raise KeyError(f"{self.path} has no array {name}, only {', '.join(self.arrays)}")
        return self.arrays[name]


def read_tuf(path: PathLike, kind: str | None = None) -> TufFile:
    """Any of the binary files, told apart by the identifier in the first record:

    xyz      101            xn yn zn             mesh nodes [m]
    z0       102            z0                   roughness length of the ground [m], (ni, nj)
    xyzc     103            xc yc zc             cell centres [m]
    ccd      104            gp_cf gp_density gp_length gp_z0   canopy; the last may be missing
    vpkeinp  111            u v w p tke ted      start fields
    vpkeout  112, 122, 132  u v w p tke ted flxU flxV flxW vis pp, then lm (122),
                            or lm tkl viskl (132)

    `kind` is one of these names, and then no other file is accepted.
    """
    path = Path(path)
    accepted = _RECORDS.keys() if kind is None else _KINDS[kind]
    records = read_records(path)
    file_id = int(records[0].values("<i4", 1, "the identifier of the file")[0])
    if file_id not in accepted:
        expected = " or ".join(map(str, accepted)) + (f" ({kind})" if kind else "")
        raise FormatError(path, f"the identifier is {file_id}, expected {expected}")
    names = _RECORDS[file_id]
    missing_last = file_id == 104 and len(records) == 1 + len(names)
    if len(records) != 2 + len(names) and not missing_last:
        raise FormatError(
            path,
            f"{len(records)} records, expected {2 + len(names)} in a file with "
            f"the identifier {file_id}",
        )

    dimensions = 2 if names == ("z0",) else 3
    extents = tuple(int(n) for n in records[1].values("<i4", dimensions, "the array extents"))
    if min(extents) < 1:
        raise FormatError(path, f"the array extents are {extents}, expected positive numbers")

    arrays: dict[str, Array] = {}
    iteration: int | None = None
    residual: float | None = None
    for name, record in zip(names, records[2:]):
        if name == "iteration":
            iteration = int(record.values("<i4", 1, name)[0])
        elif name == "residual":
            residual = float(record.values("<f4", 1, name)[0])
        else:
            shape = extents[:2] if name in _TWO_DIMENSIONAL else extents
            values = record.values("<f4", math.prod(shape), f"{name} of {shape}")
            arrays[name] = values.reshape(shape, order="F")
    return TufFile(path, file_id, extents, arrays, iteration, residual)
