"""The same manifest spread over a cluster with Dask: a bag of paths,
checked a partition at a time on each worker process, gathered into one
pandas frame.

    python3 cluster.py FOLDER [WORKERS]

starts a local cluster of WORKERS processes (2 when not given); on a real
cluster, give Client the scheduler's address instead.
"""

import sys

import dask.bag
import distributed
import pandas

import sondara
from manifest import row, wav_paths


def check_partition(paths):
    """The rows of one partition, checked on the worker's own thread: the
    cluster spreads the work, so each worker checks one file at a time."""
    return [row(result) for result in sondara.check_many(paths, jobs=1)]


def cluster_manifest(client, paths, partitions):
    """The manifest of paths, in their order, checked on the client's workers."""
    bag = dask.bag.from_sequence(paths, npartitions=partitions)
    rows = client.compute(bag.map_partitions(check_partition), sync=True)
    return pandas.DataFrame(rows)


def main():
    folder = sys.argv[1]
    workers = int(sys.argv[2]) if len(sys.argv) == 3 else 2
    with distributed.LocalCluster(n_workers=workers, threads_per_worker=1, processes=True) as cluster:
        with distributed.Client(cluster) as client:
            frame = cluster_manifest(client, wav_paths(folder), partitions=4 * workers)
    print(frame.verdict.value_counts().to_string())


if __name__ == "__main__":
    main()
