"""Encoding the request of a flow with knowledge attached, beside orjson and Python's own json, which
encode the same value. Ours also builds the request, from the project: that is counted in."""

import gc
import json
import os
import subprocess
import sys
import tempfile
import time

import orjson

PROGRAM = os.path.join(os.environ["OMBREL_BENCH_BIN"], "WireBench")
ROUNDS = 3
MEGABYTE = 1_000_000
WORKS = [(100_000, 384), (20_000, 0)]  # of which a peer, which needs it in memory, gets a tenth


def main():
    as_json = "--json" in sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        file = os.path.join(folder, "request.json")
        for chunks, dimension in WORKS:
            ours = json.loads(subprocess.run([PROGRAM, str(chunks), str(dimension), file],
                                             check=True, stdout=subprocess.PIPE).stdout)
            # The peer encodes a part of what ours encoded, as values of its own.
            small = json.loads(subprocess.run([PROGRAM, str(chunks // 10), str(dimension), file],
                                              check=True, stdout=subprocess.PIPE).stdout)
            with open(file, "rb") as stream:
                value = orjson.loads(stream.read())
            attachment = value["flow"]["firstAgent"]["ragAttachments"][0]
            if {len(chunk["embedding"]) for chunk in attachment["chunks"]} != {dimension} or len(
                    attachment["chunks"]) != chunks // 10:
                sys.exit("wire_bench: the peer reads another value")
            for name, dumps in (("orjson", orjson.dumps), ("json", json.dumps)):
                best = float("inf")
                for _ in range(ROUNDS):
                    gc.collect()
                    start = time.perf_counter()
                    dumps(value)
                    best = min(best, time.perf_counter() - start)
                our_speed = ours["bytes"] / (ours["building"] + ours["encoding"]) / MEGABYTE
                peer_speed = small["bytes"] / best / MEGABYTE
                work = f"encode a request of {chunks} chunks, {dimension} numbers each, beside {name}"
                if as_json:
                    print(json.dumps({"name": work, "ours": our_speed, "peer": peer_speed,
                                      "unit": "MB/s", "ratio": our_speed / peer_speed}), flush=True)
                else:
                    print(f"{work:75} {our_speed:8.0f} MB/s {peer_speed:8.0f} MB/s "
                          f"{our_speed / peer_speed:8.1f}", flush=True)


main()
