#!/usr/bin/env python3
"""Saving and opening a large project against copying the same bytes, and against plistlib.

The project has 50,000 chunks with embeddings of 384 numbers, a file of some 400 MB. The first peer
copies that file in the same durable way (read, write, synchronise, rename, synchronise the folder),
in turn with ours. The second, Python's plistlib, reads and writes a project of 2,000 chunks, since
the large one would take it minutes; it does not synchronise. Memory is the peak of a fresh process
against twice what the values themselves take on the heap.
"""
import argparse
import json
import os
import plistlib
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

PROGRAM = Path(os.environ["OMBREL_BENCH_BIN"]) / "ProjectFileBench"
CHUNKS = 50_000
CHUNKS_FOR_PLISTLIB = 2_000
ROUNDS = 5


def measure(*arguments):
    output = subprocess.run([PROGRAM, *map(str, arguments)], check=True, capture_output=True)
    return json.loads(output.stdout)


def median(results, key="seconds"):
    return statistics.median(result[key] for result in results)


def sum_of_embeddings(project):
    total = 0.0
    for chunks in project["ragIndexes"][0]["chunksByDocument"][1::2]:
        for chunk in chunks:
            for number in chunk["embedding"]:
                total += number
    return total


def against_copying(folder):
    saves, opens, copies = [], [], []
    for _ in range(ROUNDS):
        saves.append(measure("save", CHUNKS, folder / "project.ombrel"))
        copies.append(measure("copy", folder / "project.ombrel", folder / "copy.ombrel"))
        opens.append(measure("open", folder / "copy.ombrel"))
    if any(opened["sum"] != saves[0]["sum"] for opened in opens):
        raise SystemExit("what was opened is not what was saved")
    megabytes = (folder / "project.ombrel").stat().st_size / 1e6
    yield f"save {megabytes:.0f} MB, peer: copy the file", median(saves), median(copies), "s"
    yield f"open {megabytes:.0f} MB, peer: copy the file", median(opens), median(copies), "s"
    for work, results in (("save", saves), ("open", opens)):
        yield (f"peak memory of {work}, peer: twice the values", median(results, "peak") / 1e6,
               2 * median(results, "values") / 1e6, "MB")


def against_plistlib(folder):
    ours, theirs = folder / "small.ombrel", folder / "plistlib.ombrel"
    saves, opens, loads, dumps = [], [], [], []
    for _ in range(ROUNDS):
        saves.append(measure("save", CHUNKS_FOR_PLISTLIB, ours))
        opens.append(measure("open", ours))
        start = time.perf_counter()
        with open(ours, "rb") as file:
            project = plistlib.load(file)
        loads.append(time.perf_counter() - start)
        start = time.perf_counter()
        with open(theirs, "wb") as file:
            plistlib.dump(project, file, fmt=plistlib.FMT_BINARY, sort_keys=False)
        dumps.append(time.perf_counter() - start)
        expected = sum_of_embeddings(project)
        if opens[-1]["sum"] != expected or measure("open", theirs)["sum"] != expected:
            raise SystemExit("the two do not read the same")
        project = None
    megabytes = ours.stat().st_size / 1e6
    yield f"save {megabytes:.0f} MB, peer: plistlib", median(saves), statistics.median(dumps), "s"
    yield f"open {megabytes:.0f} MB, peer: plistlib", median(opens), statistics.median(loads), "s"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--json", action="store_true", help="one JSON object a line")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=PROGRAM.parent) as folder:
        folder = Path(folder)
        for comparison in (against_copying, against_plistlib):
            for name, ours, peer, unit in comparison(folder):
                result = {"name": name, "ours": round(ours, 4), "peer": round(peer, 4),
                          "unit": unit, "ratio": round(peer / ours, 3)}
                if options.json:
                    print(json.dumps(result), flush=True)
                else:
                    print("{name}: {ours} {unit}, {peer} {unit}, {ratio}".format(**result),
                          flush=True)


if __name__ == "__main__":
    main()
