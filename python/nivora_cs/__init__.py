"""Coordinate systems and transformations: PROJ text, WKT, EPSG codes, MapInfo CoordSys strings, files.

    >>> from nivora_cs import CoordSystem, Transform
    >>> CoordSystem('CoordSys Earth Projection 8, 1001, "m", 39, 0, 1, 7500000, 0').code
    28407
    >>> x, y = Transform("EPSG:4326", "EPSG:32637")(37.6173, 55.7558)

x is always longitude or easting and comes first; angles are degrees. Lists of points are NumPy arrays of shape
(n, 2). What the library refuses is an Error with a code.
"""

import os as _os

from . import _core
from ._core import CoordSystem, Error, Fit, Transform, calibrate, find, guess, start
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
    "start",
]

for _type in (CoordSystem, Error, Fit, Transform, calibrate, find, guess, start):
    try:
        _type.__module__ = __name__
    except AttributeError:  # functions of the compiled part
        pass


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
