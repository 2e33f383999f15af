"""The system of a MapInfo file as its CoordSys clause has it, where GDAL's Python knows only its own datums."""

import os
import shutil
import tempfile

from . import _core

_HEADER = 64 * 1024  # a clause stands within so many bytes, the data behind it


def read_system(path):
    """The CoordSystem of a .mif, .tab or .map file, or of one with text of any notation (.prj, .wkt).

    path: a text or pathlib.Path; a .tab is read with the .map beside it. The clause counts as it stands: datum, figures,
    Affine and Bounds. Error with code "file-failed" when the file cannot be read."""
    return _core.CoordSystem("@" + os.fsdecode(path))


def write_mif_system(path, system):
    """Puts the system's CoordSys clause into the header of a .mif file in place of the one that it has.

    For files that GDAL wrote, whose clause is the nearest that its driver knows. system: a CoordSystem or a text for
    one. Coordinates stay as they are: they must be in that system. The file is written anew beside itself and takes its
    place when it is complete. ValueError when it has no header of a MIF, Error when the system has no clause."""
    path = os.fsdecode(path)
    clause = b"CoordSys " + _core.CoordSystem(system).coordsys.encode("latin-1")
    with open(path, "rb") as source:
        header = source.read(_HEADER)
        place, length = _core._clause_place(header)
        if place < 0:
            raise ValueError(f"{path} has no header of a MIF")
        line_end = b"\r\n" if b"\r\n" in header else b"\n"
        made, name = tempfile.mkstemp(dir=os.path.dirname(os.path.abspath(path)), suffix=".mif")
        try:
            with open(made, "wb") as target:
                target.write(header[:place] + clause + line_end + header[place + length :])
                shutil.copyfileobj(source, target)
            shutil.copymode(path, name)
            os.replace(name, path)
        except BaseException:
            os.unlink(name)
            raise
