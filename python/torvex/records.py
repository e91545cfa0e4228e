"""Sequential files of binary records, mapped into memory."""

from __future__ import annotations

from dataclasses import dataclass
from pathlib import Path

import numpy as np

from torvex.arrays import Array, Bytes, PathLike


class FormatError(ValueError):
    """A file is not what its name says: the file, what was expected, and what stands there."""

    def __init__(self, path: PathLike, message: str) -> None:
        super().__init__(f"{path}: {message}")
        self.path = Path(path)


# The most data bytes of a subrecord.
MAX_SUBRECORD_BYTES = 2147483639


@dataclass(frozen=True)
class Record:
    """One record of a binary file; in more than one piece where it was cut into subrecords."""

    path: Path
    number: int  # in the file, from 1
    pieces: tuple[Bytes, ...]  # views of the mapped file, bytes

    @property
    def nbytes(self) -> int:
        return sum(piece.nbytes for piece in self.pieces)

    def values(self, dtype: str, count: int, what: str) -> Array:
        """`count` values of four bytes; a view of the file unless the record was cut."""
        if self.nbytes != 4 * count:
            raise FormatError(
                self.path,
                f"record {self.number} has {self.nbytes} bytes, expected {4 * count} ({what})",
            )
        whole = self.pieces[0] if len(self.pieces) == 1 else np.concatenate(self.pieces)
        return whole.view(dtype)


def read_records(path: PathLike) -> list[Record]:
    """All records of a sequential binary file, little-endian.

    A record is one or more subrecords: length, data, length again, the lengths in four bytes. A
    negative length in front says that the record goes on in the next subrecord, a negative length
    behind that a subrecord precedes. Only the lengths are looked at here, all of them.
    """
    path = Path(path)
    if path.stat().st_size == 0:
        raise FormatError(path, "the file is empty, expected binary records")
    data = np.memmap(path, dtype=np.uint8, mode="r").view(np.ndarray)

    records: list[Record] = []
    pieces: list[Bytes] = []

    def length_at(at: int) -> int:
        if at + 4 > data.size:
            raise FormatError(
                path,
                f"the file ends at byte {data.size} within a length of record "
                f"{len(records) + 1}",
            )
        return int(data[at : at + 4].view("<i4")[0])

    at = 0
    while at < data.size or pieces:
        front = length_at(at)
        record = f"record {len(records) + 1}"
        if abs(front) > MAX_SUBRECORD_BYTES:
            raise FormatError(
                path,
                f"byte {at}: the length {front} in front of {record} is beyond "
                f"{MAX_SUBRECORD_BYTES}",
            )
        end = at + 4 + abs(front)
        if end > data.size:
            raise FormatError(
                path, f"the file ends at byte {data.size}, but {record} goes on to " f"byte {end}"
            )
        behind = length_at(end)
        expected = -abs(front) if pieces else abs(front)
        if behind != expected:
            raise FormatError(
                path, f"byte {end}: the length behind {record} is {behind}, expected " f"{expected}"
            )
        pieces.append(data[at + 4 : end])
        if front >= 0:
            records.append(Record(path, len(records) + 1, tuple(pieces)))
            pieces = []
        at = end + 4
    return records
