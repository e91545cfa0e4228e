"""Reads what a run of Torvex leaves behind into numpy arrays.

    import torvex
    d = torvex.Direction("build/demo/big_butte", 240)
    d.speed_at_height(50.0)          # map of the wind speed 50 m above ground [m/s], (ni, nj)
    d.u[i - 1, j - 1, k - 1]         # the u(i,j,k) of the documentation
    d.east, d.north                  # where the mesh columns stand [m], (ni, nj)

Arrays have the shape (ni, nj, nk) in Fortran order. Those of binary files are mapped, not loaded:
they are read-only (take .copy() to change one) and cost no memory until they are touched. A file
that is not what it should be raises FormatError, which names it and says what was expected.
"""

from torvex.arrays import PathLike
from torvex.case import Case, CaseSite, find_case, read_case
from torvex.direction import Direction, usable_directions
from torvex.fields import FIELDS, Field
from torvex.flow import Flow
from torvex.geodesy import metres_per_degree
from torvex.packages import MissingPackage
from torvex.profiles import LABEL_LIST, Label, Profile, Site, read_labels, read_profile
from torvex.records import MAX_SUBRECORD_BYTES, FormatError, Record, read_records
from torvex.results import OldResultWarning
from torvex.states import STATES, DirectionState, direction_states, wd_tag, wd_tags
from torvex.tables import MeshLog, RestartInfo, read_mesh_log, read_restart_info, read_view
from torvex.text_map import TextMap, read_map
from torvex.tuf import TufFile, read_tuf

__all__ = [
    "FIELDS",
    "LABEL_LIST",
    "MAX_SUBRECORD_BYTES",
    "STATES",
    "Case",
    "CaseSite",
    "Direction",
    "DirectionState",
    "Field",
    "Flow",
    "FormatError",
    "Label",
    "MeshLog",
    "MissingPackage",
    "OldResultWarning",
    "PathLike",
    "Profile",
    "Record",
    "RestartInfo",
    "Site",
    "TextMap",
    "TufFile",
    "direction_states",
    "find_case",
    "metres_per_degree",
    "read_case",
    "read_labels",
    "read_map",
    "read_mesh_log",
    "read_profile",
    "read_records",
    "read_restart_info",
    "read_tuf",
    "read_view",
    "usable_directions",
    "wd_tag",
    "wd_tags",
]
