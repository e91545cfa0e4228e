"""What is tried, step by step, for a direction that did not converge.

Each step holds all keys of the case but those that it names; relaxation factors are only lowered.
The factors of velocity take part in the result by some per cent in separated lees, and so does
RATIO: the step that worked is part of what is told of a direction.
"""

from __future__ import annotations

from collections.abc import Mapping
from dataclasses import dataclass

from torvex.case import Group
from torvex.study.case_text import StudyCase

_DEFAULTS = {"URFU": 0.5, "URFV": 0.5, "URFW": 0.5, "URFP": 0.2, "URFK": 0.5, "URFE": 0.5}
_LOW = {"URFU": 0.3, "URFV": 0.3, "URFW": 0.3, "URFP": 0.1, "URFK": 0.3, "URFE": 0.3}


@dataclass(frozen=True)
class Step:
    name: str
    changes: Mapping[str, str]  # keys of NML_NUMERICAL_SOLVER
    factor: int = 1  # on MAXIT
    anew: bool = False  # from the start fields; a diverged direction always begins there


def ladder(case: StudyCase) -> tuple[Step, ...]:
    """The steps in their order; the first, the case as it stands, is not among them."""
    group = Group(case.path, case.text, "NML_NUMERICAL_SOLVER")
    low = {}
    for key, value in _LOW.items():
        at_hand = group.real(key) if (key, 1) in group.words else _DEFAULTS[key]
        low[key] = f"{min(at_hand, value):g}"
    again = [Step("as many iterations again", {})]
    if case.accelerated:
        plain = {"ACCEL": "0"}
        again.append(Step("the plain iteration", plain, 2))
        low |= plain
    return (
        *again,
        Step("smaller relaxation factors", low, 2),
        Step("smaller factors, second pressure correction", low | {"DOUBLE_CORRECTION": "T"}, 2),
        Step("smaller factors, RATIO 0 (upwind)", low | {"RATIO": "0"}, 2, anew=True),
    )


def next_step(steps: tuple[Step, ...], tried: int, diverged: bool) -> int | None:
    """Number of the step to try behind `tried` (-1: only the case itself)."""
    number = tried + 1
    if number == 0 and diverged:
        number = 1  # more of the same would diverge again
    return number if number < len(steps) else None
