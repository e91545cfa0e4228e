"""Packages beyond numpy, imported when they are needed."""

from __future__ import annotations

import importlib
from typing import Any

# Module, and the Debian package that holds it.
_DEBIAN = {
    "click": "python3-click",
    "jinja2": "python3-jinja2",
    "matplotlib": "python3-matplotlib",
    "osgeo": "python3-gdal",
    "pandas": "python3-pandas",
    "pyproj": "python3-pyproj",
    "rich": "python3-rich",
    "scipy": "python3-scipy",
}


class MissingPackage(ImportError):
    """A package that a part of this one needs is not installed."""


def need(module: str) -> Any:
    """The module, or MissingPackage with the name of what to install."""
    try:
        return importlib.import_module(module)
    except ImportError as problem:
        name = module.partition(".")[0]
        raise MissingPackage(
            f"{name} is needed here and cannot be imported ({problem}); install the package "
            f"{_DEBIAN.get(name, name)}"
        ) from problem
