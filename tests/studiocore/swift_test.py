#!/usr/bin/env python3
"""Runs the tests of a Swift package: swift_test.py PACKAGE SCRATCH_FOLDER."""
import os
import shutil
import subprocess
import sys


def main():
    package, scratch = sys.argv[1:]
    swift = shutil.which("swift")
    if not swift:
        print("There is no Swift tool chain (swift, 6.2 or later) on the PATH.")
        return 1 if os.environ.get("CI") == "true" else 77
    return subprocess.call(
        [swift, "test", "--package-path", package, "--scratch-path", scratch])


if __name__ == "__main__":
    sys.exit(main())
