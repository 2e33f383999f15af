"""What the functions of nivora_cs give: plain named tuples, which pickle."""

from typing import List, NamedTuple, Optional, Tuple


class Unit(NamedTuple):
    """A unit of coordinates. metres is 0 for degrees, code is MapInfo's number."""

    name: str
    metres: float
    code: int


class Area(NamedTuple):
    """A part of the earth in degrees; east exceeds 180 when it crosses the 180th meridian."""

    west: float
    south: float
    east: float
    north: float
    name: str


class GeographicBounds(NamedTuple):
    """Degrees; west exceeds east when they cross the 180th meridian."""

    west: float
    south: float
    east: float
    north: float
    north_pole: bool
    south_pole: bool


class Grid(NamedTuple):
    """A file that an operation reads its shifts from."""

    name: str
    path: str
    url: str
    available: bool


class Operation(NamedTuple):
    """A way from one system to the other. accuracy: metres, None when unknown."""

    name: str
    accuracy: Optional[float]
    codes: List[str]
    area: str
    ballpark: bool
    grids: List[Grid]
    definition: str


class Hit(NamedTuple):
    """A system that was found; CoordSystem(text) makes it."""

    name: str
    text: str
    code: Optional[int]
    category: str
    withdrawn: bool


class Guess(NamedTuple):
    """Systems that put data on the same ground, the likeliest first."""

    codes: List[str]
    names: List[str]
    assumptions: List[str]
    centre: Tuple[float, float]
    share: float
    spread_m: float


class Parameter(NamedTuple):
    """A figure of a fit with its standard deviation in the same unit."""

    name: str
    unit: str
    value: float
    deviation: float


class Residual(NamedTuple):
    """What is left at a control point: metres on the ground."""

    name: str
    east_m: float
    north_m: float
    length_m: float
    probability: float
    suspect: bool
