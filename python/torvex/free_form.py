"""Numbers and lines of text files, in the notation that Fortran programs read and write."""

from __future__ import annotations

import itertools
import math
import re
from collections.abc import Iterable, Iterator
from pathlib import Path

from torvex.arrays import PathLike
from torvex.records import FormatError


# A real with a D exponent, or one without a letter, as Fortran programs write them.
_FORTRAN_REAL = re.compile(r"([+-]?(?:\d+\.?\d*|\.\d+))(?:[dDqQ]([+-]?\d+)|([+-]\d+))")


def real(word: str) -> float:
    """Raises ValueError where the word is no number."""
    odd = _FORTRAN_REAL.fullmatch(word)
    if odd:
        return float(f"{odd[1]}e{odd[2] or odd[3]}")
    if "_" in word:
        raise ValueError(word)
    return float(word)


def free_form(lines: Iterable[str]) -> Iterator[str | None]:
    """The words of free-form input: blanks or a comma between them, 3*0.5 for a repeated word,
    None for one left out between two commas; a slash ends it all."""
    word_open = False  # the last word still owns the comma that may follow
    for line in lines:
        for word in re.findall(r"[^\s,/]+|[,/]", line):
            if word == "/":
                return
            if word == ",":
                if not word_open:
                    yield None
                word_open = False
                continue
            word_open = True
            count, star, value = word.partition("*")
            if star and count.isdecimal() and int(count) > 0:
                yield from itertools.repeat(value or None, int(count))
            else:
                yield word


def read_reals(path: PathLike, lines: Iterable[str], count: int, where: str) -> list[float]:
    """`count` reals in free form; `where` says in a message which they are."""
    words = list(itertools.islice(free_form(lines), count))
    values = []
    for word in words:
        try:
            values.append(real(word or "nothing"))
        except ValueError:
            raise FormatError(path, f"{where}: {word or 'nothing'}, expected a number") from None
    if len(values) < count:
        raise FormatError(path, f"{where}: {len(values)} values, expected {count}")
    return values


def read_counts(path: PathLike, lines: Iterable[str], count: int, where: str) -> list[int]:
    values = read_reals(path, lines, count, where)
    if any(value != math.floor(value) for value in values):
        raise FormatError(path, f"{where}: {values}, expected whole numbers")
    return [int(value) for value in values]


def lines_of(path: PathLike) -> list[str]:
    text = Path(path).read_text(encoding="utf-8", errors="replace")
    return [line.rstrip("\r") for line in text.split("\n")]


def line_at(path: PathLike, lines: list[str], number: int, what: str) -> list[str]:
    if number > len(lines) or not lines[number - 1].strip():
        raise FormatError(path, f"line {number} is missing, expected {what}")
    return lines[number - 1 : number]
