#!/usr/bin/env python3
"""Prints how fast the list of chunks scrolls: the work, our frames a second, the peer's, the ratio.

The peer is Qt's own QListView in the studio's style, with rows of one line and one height:
ChunkListBench measures both in turn, without a display.
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
    program = Path(os.environ["OMBREL_BENCH_BIN"]) / "ChunkListBench"
    output = subprocess.run([program], check=True, capture_output=True, text=True).stdout
    for line in output.splitlines():
        result = json.loads(line)
        result["ratio"] = round(result["ours"] / result["peer"], 3)
        if options.json:
            print(json.dumps(result))
        else:
            print("{name}: {ours} {unit}, {peer} {unit}, {ratio}".format(**result))


if __name__ == "__main__":
    main()
