#!/usr/bin/env python3
"""Prints what an undo checkpoint costs: its work, our time, the peer's time, and their ratio.

There is no other program to hold it against, so the peers are limits that CheckpointBench measures
in the same run, in turn with ours: copying the least that a snapshot must hold of each document
(its name, its path, a reference to its chunks), which nothing can beat that keeps them apart, and
copying the chunks themselves, which is what sharing them saves.
"""
import argparse
import json
import os
import subprocess
from pathlib import Path


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--json", action="store_true", help="one JSON object a line")
    options = parser.parse_args()
    program = Path(os.environ["OMBREL_BENCH_BIN"]) / "CheckpointBench"
    output = subprocess.run([program], check=True, capture_output=True, text=True).stdout
    for line in output.splitlines():
        result = json.loads(line)
        result["ratio"] = round(result["peer"] / result["ours"], 3)
        if options.json:
            print(json.dumps(result))
        else:
            print("{name}: {ours} {unit}, {peer} {unit}, {ratio}".format(**result))


if __name__ == "__main__":
    main()
