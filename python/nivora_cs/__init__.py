"""Coordinate systems and transformations: PROJ text, WKT, EPSG codes, MapInfo CoordSys strings, files.

    >>> from nivora_cs import CoordSystem, Transform
    >>> CoordSystem('CoordSys Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0').code
    28407
    >>> x, y = Transform("EPSG:4326", "EPSG:32637")(37.6173, 55.7558)

x is always longitude or easting and comes first; angles are degrees. Lists of points are NumPy arrays of shape
(n, 2). What the library refuses is an Error with a code.
"""

import copyreg as _copyreg
import ctypes as _ctypes
import os as _os

_current, _main = (getattr(_ctypes.pythonapi, f"PyInterpreterState_{which}") for which in ("Get", "Main"))
_current.restype = _main.restype = _ctypes.c_void_p
if _current() != _main():  # the compiled part would wait for a lock for ever
    raise ImportError("nivora_cs works in the main interpreter of a process alone")

from . import _core
from ._core import CoordSystem, Error, Fit, Transform, calibrate, find, guess, start
from ._files import read_system, write_mif_system
from ._types import (
    Area,
    GeographicBounds,
    Grid,
    Guess,
    Hit,
    Operation,
    Parameter,
    Residual,
    Unit,
)

__all__ = [
    "Area",
    "CoordSystem",
    "Error",
    "Fit",
    "GeographicBounds",
    "Grid",
    "Guess",
    "Hit",
    "Operation",
    "Parameter",
    "Residual",
    "Transform",
    "Unit",
    "calibrate",
    "find",
    "guess",
    "read_system",
    "start",
    "write_mif_system",
]

for _type in (CoordSystem, Error, Fit, Transform, calibrate, find, guess, read_system, start, write_mif_system):
    try:
        _type.__module__ = __name__
    except AttributeError:  # functions of the compiled part
        pass


def _reduced(self, protocol):
    """By way of __getstate__() in every protocol: the oldest two would make an object without its compiled part."""
    return _copyreg.__newobj__, (type(self),), self.__getstate__()


CoordSystem.__reduce_ex__ = Transform.__reduce_ex__ = _reduced


def _resources():
    """The catalogues: where the environment says, beside the package, or where they were installed."""
    here = _os.path.dirname(_os.path.abspath(__file__))
    for place in (
        _os.environ.get("NIVORA_CS_RESOURCES", ""),
        _os.path.join(here, "resources"),
        _os.path.normpath(_os.path.join(here, _core.data_from_package)),
    ):
        if place and _os.path.isdir(place):
            return place
    return ""


_core._set_resources(_resources())
