#!/usr/bin/python3
"""benchmarks/python.py: nivora_cs beside pyproj in one run, as a table of Markdown. Needs PYTHONPATH=build/release/python
and pyproj. Each figure is the median of seven runs that alternate between the two."""

import statistics
import sys
import time

import numpy as np
import pyproj

import nivora_cs

RUNS = 7
POINTS = 1_000_000
CALLS = 20_000


def seconds(work):
    begin = time.perf_counter()
    work()
    return time.perf_counter() - begin


def beside(title, count, unit, ours, theirs):
    """A line of the table; count: into how many pieces a run's time is divided."""
    ours(), theirs()
    pairs = [(seconds(ours), seconds(theirs)) for _ in range(RUNS)]
    own, other = (statistics.median(times) / count * {"ms": 1e3, "us": 1e6}[unit] for times in zip(*pairs))
    print(f"| {title} | {own:.3f} {unit} | {other:.3f} {unit} | {own / other:.3f} |")
    return own / other


def calls(function):
    return lambda: [function(37.5, 55.5) for _ in range(CALLS)]


def makers(make, texts):
    """New texts for every run, so that no cache has them."""
    groups = iter([texts[i :: RUNS + 1] for i in range(RUNS + 1)])
    return lambda: [make(text) for text in next(groups)]


def main():
    rng = np.random.default_rng(1)
    points = rng.uniform((36, 40), (42, 70), (POINTS, 2))
    x, y = points[:, 0].copy(), points[:, 1].copy()
    print(f"pyproj {pyproj.__version__}, PROJ {pyproj.proj_version_str}, NumPy {np.__version__}\n")
    print("| work | nivora_cs | pyproj | ratio |\n|---|---|---|---|")
    ratios = []
    for title, source in (("WGS 84 to UTM", "EPSG:4326"), ("with a shift of datum", "EPSG:4284")):
        ours = nivora_cs.Transform(source, "EPSG:32637")
        theirs = pyproj.Transformer.from_crs(source, "EPSG:32637", always_xy=True)
        ratios += [
            beside(f"1,000,000 points, {title}, all cores", 1, "ms", lambda: ours(points), lambda: theirs.transform(x, y)),
            beside("the same on one thread", 1, "ms", lambda: ours(points, threads=1), lambda: theirs.transform(x, y)),
            beside("the same as x and y", 1, "ms", lambda: ours(x, y, threads=1), lambda: theirs.transform(x, y)),
            beside(f"a scalar call, {title}", CALLS, "us", calls(ours), calls(theirs.transform)),
        ]
    codes = [code for code in range(2000, 3000) if code_exists(code)][: 40 * (RUNS + 1)]
    texts = [f"EPSG:{code}" for code in codes]
    count = len(texts) // (RUNS + 1)
    ratios.append(beside("a system from a code, first time", count, "us", makers(nivora_cs.CoordSystem, texts), makers(pyproj.CRS, texts)))
    ratios.append(beside("a system from the same code", CALLS // 20, "us", lambda: [nivora_cs.CoordSystem("EPSG:32637") for _ in range(CALLS // 20)], lambda: [pyproj.CRS("EPSG:32637") for _ in range(CALLS // 20)]))
    wkt = [pyproj.CRS(text).to_wkt() for text in texts]
    ratios.append(beside("a system from WKT", count, "us", makers(nivora_cs.CoordSystem, wkt), makers(pyproj.CRS, wkt)))
    texts = [f"+proj=tmerc +lon_0={i / 3} +x_0=500000 +ellps=krass +units=m +type=crs" for i in range(count * (RUNS + 1))]
    ratios.append(beside("a system from PROJ text", count, "us", makers(nivora_cs.CoordSystem, texts), makers(pyproj.CRS, texts)))
    return 0 if max(ratios) <= 1.05 else 1


def code_exists(code):
    """Whether PROJ computes the system: some of the register's methods it only knows by name."""
    try:
        crs = pyproj.CRS(code)
        pyproj.Transformer.from_crs(crs, 4326)
        return crs.is_projected
    except (pyproj.exceptions.CRSError, pyproj.exceptions.ProjError):
        return False


if __name__ == "__main__":
    sys.exit(main())
