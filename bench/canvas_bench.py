"""Panning, zooming and moving on the canvas of a flow with 1,000 nodes and 1,200 connections, beside
a QGraphicsView whose scene holds Qt's own items for the same drawing, both drawn by the processor in
a window of 1280 by 800. Unit: frames a second, from the median time of a frame and from its 99th
percentile, each the best of five rounds. The last line holds the slowest of ours against the goal of
60 frames a second."""

import json
import os
import subprocess
import sys

PROGRAM = os.path.join(os.environ["OMBREL_BENCH_BIN"], "CanvasBench")
ROUNDS = 5
FRAMES = 200
GOAL = 60
WORKS = (("pan", "pan at full size"), ("panfar", "pan at a quarter of the size"),
         ("zoom", "zoom to and fro"), ("move", "drag a node"), ("moveall", "drag all nodes"))


def measured(who, work):
    done = subprocess.run([PROGRAM, who, work, str(FRAMES)], check=True, stdout=subprocess.PIPE)
    return json.loads(done.stdout)


def show(as_json, name, ours, peer):
    if as_json:
        print(json.dumps({"name": name, "ours": ours, "peer": peer, "unit": "frames/s",
                          "ratio": ours / peer}), flush=True)
    else:
        print(f"{name:62} {ours:9.0f}/s {peer:9.0f}/s {ours / peer:8.1f}", flush=True)


def main():
    as_json = "--json" in sys.argv[1:]
    slowest = 0.0
    for work, name in WORKS:
        rounds = [(measured("ours", work), measured("peer", work)) for _ in range(ROUNDS)]
        for key, which in (("median", ""), ("p99", ", slowest frames")):
            ours_best = min(ours[key] for ours, _ in rounds)
            peer_best = min(peer[key] for _, peer in rounds)
            show(as_json, f"{name}{which}, beside QGraphicsView", 1000 / ours_best,
                 1000 / peer_best)
        slowest = max(slowest, ours_best)
    show(as_json, "the slowest frames of these, beside the goal of 60", 1000 / slowest, GOAL)


main()
