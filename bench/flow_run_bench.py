#!/usr/bin/env python3
"""How long a flow that was built before takes from Run to the first line of its trace, beside
`swift build` alone.

Three works: a run of the flow as it was, whose peer is a build that finds nothing to do; and a run
after its instructions or the value of a branch were edited, whose peer is a build of the same
package after one line of its code was changed. Both get everything else ready beforehand, and take
turns; the figures are medians in seconds.
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROUNDS = 5


class Studio:
    """The program that runs the flow."""

    def __init__(self, cache):
        program = Path(os.environ["OMBREL_BENCH_BIN"]) / "FlowRunBench"
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True, env=dict(os.environ, XDG_CACHE_HOME=str(cache)))

    def run(self, change):
        """The seconds of one run, and the folder of the flow's package."""
        print(change, file=self.process.stdin, flush=True)
        line = self.process.stdout.readline()
        if not line:
            sys.exit("The flow gave no trace.")
        seconds, folder = line.rstrip("\n").split(" ", 1)
        return float(seconds), Path(folder)


class Package:
    """A copy of the flow's package that is built by itself."""

    def __init__(self, original, folder):
        shutil.copytree(original, folder, ignore=shutil.ignore_patterns(".build"))
        self.folder = folder
        self.code = folder / "Sources/FlowProgram/Flow.swift"
        self.original = self.code.read_text()
        self.changes = 0

    def build(self, changed):
        """The seconds of one build."""
        if changed:
            self.changes += 1
            self.code.write_text(self.original + f"\nprivate let change = {self.changes}\n")
        start = time.perf_counter()
        subprocess.run(["swift", "build", "--package-path", self.folder, "--product",
                        "FlowProgram"], check=True, stdout=subprocess.DEVNULL)
        return time.perf_counter() - start


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--json", action="store_true", help="one JSON object a line")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="ombrel-bench-") as folder:
        studio = Studio(Path(folder) / "cache")
        _, original = studio.run("nothing")
        package = Package(original, Path(folder) / "package")
        package.build(True)
        works = [("run an unchanged flow to its first trace line", "nothing", False),
                 ("run a flow with other instructions to its first trace line", "instructions",
                  True),
                 ("run a flow with another branch value to its first trace line", "branch", True)]
        for name, change, is_changed in works:
            ours, peer = [], []
            for _ in range(ROUNDS):
                ours.append(studio.run(change)[0])
                peer.append(package.build(is_changed))
            result = {"name": name, "ours": round(statistics.median(ours), 3),
                      "peer": round(statistics.median(peer), 3), "unit": "s"}
            result["ratio"] = round(result["peer"] / result["ours"], 3)
            if options.json:
                print(json.dumps(result), flush=True)
            else:
                print("{name}: {ours} {unit}, {peer} {unit}, {ratio}".format(**result), flush=True)
        studio.process.stdin.close()
        studio.process.wait()


if __name__ == "__main__":
    main()
