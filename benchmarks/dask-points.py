#!/usr/bin/python3
"""benchmarks/dask-points.py [POINTS]: a partitioned table of points through nivora_cs on one core, in one process and on two
local workers of Dask. Needs PYTHONPATH=build/release/python, python3-dask and python3-distributed."""

import pickle
import statistics
import sys
import time

import dask.array
import numpy as np
from distributed import Client, LocalCluster

from nivora_cs import Transform

PARTITIONS = 20
RUNS = 3


def places(block_info=None, size=0):
    """Made by the worker, as a reader of files would."""
    seed = block_info[None]["chunk-location"][0]
    return np.random.default_rng(seed).uniform((36, 40), (42, 70), (size, 2))


def checked(points, transform):
    """What comes back over the wire: sums of a part."""
    result = transform(points, threads=1)
    return np.array([[np.nansum(result[:, 0]), np.isfinite(result[:, 0]).sum()]])


def median(work):
    times = []
    for _ in range(RUNS):
        begin = time.perf_counter()
        result = work()
        times.append(time.perf_counter() - begin)
    return statistics.median(times), result


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 10_000_000
    size = count // PARTITIONS
    way = Transform("EPSG:4284", "EPSG:32637")
    whole = np.concatenate([places({None: {"chunk-location": (i,)}}, size) for i in range(PARTITIONS)])
    one, expected = median(lambda: way(whole, threads=1))
    both, _ = median(lambda: way(whole))
    table = dask.array.map_blocks(
        places, size=size, chunks=((size,) * PARTITIONS, (2,)), dtype=float, meta=np.empty((0, 2))
    )
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as cluster:
        with Client(cluster) as client:
            table = client.persist(table)
            sums = table.map_blocks(checked, way, chunks=((1,) * PARTITIONS, (2,)), dtype=float)
            client.gather(client.submit(checked, np.zeros((1, 2)), way, pure=False))
            two, result = median(lambda: sums.compute().sum(axis=0))
    assert np.isclose(result[0], np.nansum(expected[:, 0]), rtol=1e-12) and result[1] == np.isfinite(expected[:, 0]).sum()
    print("| | seconds | million points a second |\n|---|---|---|")
    for title, seconds in (
        ("one core", one),
        ("one process, all cores", both),
        ("two workers of Dask", two),
    ):
        print(f"| {title} | {seconds:.2f} | {count / seconds / 1e6:.2f} |")
    print(f"\nA transformation is {len(pickle.dumps(way))} bytes on the wire.")


if __name__ == "__main__":
    main()
