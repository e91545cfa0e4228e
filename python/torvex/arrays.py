"""Names of types that several modules share."""

import os
from typing import Any

import numpy as np
import numpy.typing as npt

Array = npt.NDArray[Any]  # of numbers, mostly of 32-bit reals
Bytes = npt.NDArray[np.uint8]
PathLike = str | os.PathLike[str]
