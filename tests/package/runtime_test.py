#!/usr/bin/env python3
"""The runtime of compiled flows, built by the Swift tool chain.

    runtime_test.py units|search|frameworks RUNTIME_SAMPLES SCRATCH_FOLDER

units runs the package's own tests. search has the runtime search what RUNTIME_SAMPLES wrote, and
compares with what the studio finds. frameworks builds it against stand-ins for the frameworks that
it uses where there are any. Nothing is built in the source tree. Without a tool chain the exit
status is 77, or 1 where CI is "true".
"""
import os
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
PACKAGE = HERE.parents[1] / "packages" / "OmbrelRuntime"
STRICT = ["-Xswiftc", "-warnings-as-errors"]
ENVIRONMENT = {**os.environ, "OMBREL_RUNTIME": str(PACKAGE)}

SCHEMA = ("Output{title(What it is called): String; count?(): Int; prices(): [Double]; "
          "kind(): kind<a|b>; inner(): inner{open(): Bool}} true")
ANSWERS = [
    "Be kind./Hi",
    '{"title":"' + SCHEMA + '","prices":[1,2.5],"kind":"b","inner":{"open":true}}',
    "The on-device model is unavailable (modelNotReady) \u2014 enable Apple Intelligence.",
    "[4.0, 5.0]",
]


def run(command, **options):
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, env=ENVIRONMENT, check=False, **options)
    output = done.stdout.decode("utf-8", "replace")
    if done.returncode != 0:
        sys.exit(f"{command} ended with {done.returncode}:\n{output[-12000:]}")
    return output


def build_probe(scratch, extra=()):
    """The program that shows what the runtime does. Its folder is copied, so that the tool chain
    writes nothing beside the sources."""
    package = scratch / "package"
    shutil.rmtree(package, ignore_errors=True)
    shutil.copytree(HERE / "runtime", package)
    run(["swift", "build", "--package-path", package, "--scratch-path", scratch / "build",
         "--disable-automatic-resolution", *STRICT, *extra])
    return scratch / "build/debug/RuntimeProbe"


def check_units(scratch):
    output = run(["swift", "test", "--package-path", PACKAGE, "--scratch-path", scratch, *STRICT])
    last = [line for line in output.splitlines() if "Test run with" in line][-1]
    print(last)
    if "passed" not in last or int(last.split("with ")[1].split(" ")[0]) < 80:
        sys.exit(f"Tests are missing:\n{output[-4000:]}")


def check_search(samples, scratch):
    folder = scratch / "samples"
    shutil.rmtree(folder, ignore_errors=True)
    run([samples, folder])
    run([build_probe(scratch), "search", folder])
    hits = 0
    for name in ("small", "large", "empty"):
        expected = (folder / f"{name}.expected").read_text().splitlines()
        queries = (folder / f"{name}.queries").read_text().splitlines()
        assert len(expected) == 3 * len(queries) and len(queries) >= 10, name
        for form in ("memory", "file"):
            found = (folder / f"{name}.{form}").read_text().splitlines()
            assert len(found) == len(expected), (name, form)
            for studio, runtime in zip(expected, found):
                if studio != runtime:
                    query = queries[int(studio.split(" ")[1])]
                    sys.exit(f"{name}, {form}, query {query[:200]}:\nstudio  {studio[:2000]}\n"
                             f"runtime {runtime[:2000]}")
                hits += studio.count("=")
    print(f"{hits} hits are the same")
    if hits < 10000:
        sys.exit("That is too few to say something.")


def check_frameworks(scratch):
    modules = scratch / "modules"
    shutil.rmtree(modules, ignore_errors=True)
    modules.mkdir(parents=True)
    for name in ("FoundationModels", "NaturalLanguage"):
        run(["swiftc", "-swift-version", "6", "-parse-as-library", "-emit-module", "-emit-library",
             "-static", "-module-name", name, HERE / "runtime" / f"{name}.swift",
             "-o", modules / f"lib{name}.a", "-module-link-name", name,
             "-emit-module-path", modules / f"{name}.swiftmodule"])
    probe = build_probe(scratch, ["-Xswiftc", "-I", "-Xswiftc", modules,
                                  "-Xlinker", f"-L{modules}"])
    answers = run([probe, "model"]).splitlines()
    if answers != ANSWERS:
        sys.exit("\n".join(["expected:", *ANSWERS, "got:", *answers]))


def tool_chain_fault():
    """Why nothing can be built here; nothing when it can."""
    if not shutil.which("swift") or not shutil.which("swiftc"):
        return "there is no Swift tool chain (swift, 6.2 or later) on the PATH"
    if subprocess.run(["swift", "--version"], capture_output=True, check=False).returncode != 0:
        return "the Swift tool chain does not run"
    return None


def main():
    what, samples, scratch = sys.argv[1], sys.argv[2], Path(sys.argv[3])
    fault = tool_chain_fault()
    if fault:
        print(f"Left out: the test of the runtime of flows, since {fault}.", file=sys.stderr)
        sys.exit(1 if os.environ.get("CI") == "true" else 77)
    scratch.mkdir(parents=True, exist_ok=True)
    if what == "units":
        check_units(scratch)
    elif what == "search":
        check_search(samples, scratch)
    else:
        check_frameworks(scratch)


if __name__ == "__main__":
    main()
