#!/usr/bin/env python3
"""Prints how fast packages are generated: the work, our MB a second, the peer's, and their ratio.

There is no other generator of these files, so the peers are what PackageGeneratorBench measures in
the same run, in turn with ours: writing the finished bytes of Chunks.swift in the same way, which
is the limit, and printing the numbers with printf.
"""
import argparse
import json
import os
import subprocess
import tempfile
from pathlib import Path


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--json", action="store_true", help="one JSON object a line")
    options = parser.parse_args()
    program = Path(os.environ["OMBREL_BENCH_BIN"]) / "PackageGeneratorBench"
    with tempfile.TemporaryDirectory(prefix="ombrel-bench-") as folder:
        output = subprocess.run([program, folder], check=True, capture_output=True,
                                text=True).stdout
    for line in output.splitlines():
        result = json.loads(line)
        result["ratio"] = round(result["ours"] / result["peer"], 3)
        if options.json:
            print(json.dumps(result))
        else:
            print("{name}: {ours} {unit}, {peer} {unit}, {ratio}".format(**result))


if __name__ == "__main__":
    main()
