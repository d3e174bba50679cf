#!/usr/bin/env python3
"""Holds exact vector search against FAISS's IndexFlatIP on 100,000 vectors of 384 numbers.

The vectors are gathered around centres as the embeddings of texts are. Ours ranks as doubles rank;
FAISS gets the same vectors normalised, in single precision. Before anything is timed, our best ten
must be exactly those of numpy in doubles, and FAISS's the same up to what single precision cannot
tell apart. Ours and FAISS's work alternate, each on one thread.
"""
import argparse
import json
import os
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

import faiss
import numpy

WANTED = 10


def make_vectors(count, dimension, rng, centres):
    chosen = centres[rng.integers(0, len(centres), count)]
    # Norms differ, as those of sums of words do.
    return (chosen + rng.normal(size=(count, dimension))) * rng.uniform(0.5, 2, (count, 1))


class Ours:
    def __init__(self, dimension, embeddings, queries):
        program = Path(os.environ["OMBREL_BENCH_BIN"]) / "VectorIndexBench"
        self.process = subprocess.Popen(
            [program, str(dimension), embeddings, queries],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )

    def __call__(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def close(self):
        self.process.stdin.close()
        if self.process.wait() != 0:
            raise SystemExit("VectorIndexBench failed")


def normalised(vectors):
    return vectors / numpy.linalg.norm(vectors, axis=1, keepdims=True)


def check_agreement(found, index, embeddings, queries):
    exact = normalised(queries) @ normalised(embeddings).T
    peers = index.search(normalised(queries).astype(numpy.float32), WANTED)[1]
    for ours, peer, similarities in zip(found, peers, exact, strict=True):
        best = numpy.argsort(-similarities, kind="stable")[:WANTED]
        if ours != best.tolist():
            raise SystemExit(f"the best are {best}, not {ours}")
        if abs(similarities[peer] - similarities[best]).max() > 1e-6:
            raise SystemExit(f"FAISS found {peer}, not {best}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--json", action="store_true", help="one JSON object a line")
    parser.add_argument("--chunks", type=int, default=100_000)
    parser.add_argument("--dimension", type=int, default=384)
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()

    def report(name, ours, peer, unit):
        if options.json:
            line = {"name": name, "ours": ours, "peer": peer, "unit": unit, "ratio": peer / ours}
            print(json.dumps(line), flush=True)
        else:
            print(f"{name}: {ours:.4g} {unit}, {peer:.4g} {unit}, {peer / ours:.2f}", flush=True)

    faiss.omp_set_num_threads(1)
    rng = numpy.random.default_rng(5)
    centres = rng.normal(size=(500, options.dimension))
    embeddings = make_vectors(options.chunks, options.dimension, rng, centres)
    queries = make_vectors(50, options.dimension, rng, centres)
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        embeddings.tofile(folder / "embeddings")
        queries.tofile(folder / "queries")
        ours = Ours(options.dimension, folder / "embeddings", folder / "queries")
        single = normalised(embeddings).astype(numpy.float32)
        index = faiss.IndexFlatIP(options.dimension)
        index.add(single)
        check_agreement(ours("results"), index, embeddings, queries)

        prepared = normalised(queries).astype(numpy.float32)
        times, peer_times = [], []
        for _ in range(options.rounds):
            times.append(ours("queries"))
            row = []
            for i in range(len(prepared)):
                start = time.perf_counter()
                index.search(prepared[i : i + 1], WANTED)
                row.append((time.perf_counter() - start) * 1e6)
            peer_times.append(row)
        # Of each query the median over the rounds, and of these the median.
        middle = [
            statistics.median(map(statistics.median, zip(*t))) for t in (times, peer_times)
        ]
        size = f"{options.chunks:,} x {options.dimension}"
        report(f"exact vector query over {size}, p50", *middle, "us")
        build = statistics.median(ours("build") for _ in range(3))
        change = statistics.median(ours("change") for _ in range(9))
        report("vector query after one document changed, against building all", change, build, "s")
        ours.close()


if __name__ == "__main__":
    main()
