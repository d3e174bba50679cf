"""Validating a flow, beside graph libraries for Python that only answer two of its questions on the
same graph: which nodes Start reaches, and into which nodes several edges lead. Both start from the
flow's lists of nodes and edges, as a refresh of the editor does. Unit: validations a second; the
last line holds a flow of 1,000 nodes against the goal of 1 ms."""

import json
import os
import random
import subprocess
import sys
import tempfile
import time
import uuid

import networkx
import rustworkx

PROGRAM = os.path.join(os.environ["OMBREL_BENCH_BIN"], "FlowValidatorBench")
ROUNDS = 5
GOAL = 1000  # validations a second: 1 ms each


def made_id(source):
    return str(uuid.UUID(int=source.getrandbits(128), version=4)).upper()


def drawing(nodes, shape):
    """A flow of branches: a tree, a row, or one with as many mistakes as it can have."""
    source = random.Random(7)
    ids = [made_id(source) for _ in range(nodes)]
    kinds = [{"start": {}}, {"agent": {"_0": made_id(source)}}]
    edges = [(0, 1, None)]

    def branch():
        return {"branch": {"field": "x", "operator": "contains", "value": "y"}}

    def end(i):
        return {"end": {"caseName": f"case{i}", "carriesOutput": True}}

    if shape == "row":  # a branch behind a branch: what is upstream is far away
        kinds += [branch() if i % 2 == 0 else end(i) for i in range(2, nodes)]
        edges.append((1, 2, None))
        for i in range(2, nodes - 1, 2):
            edges.append((i, i + 1, "false"))
            if i + 2 < nodes:
                edges.append((i, i + 2, "true"))
    else:
        inner = nodes // 2
        kinds += [branch() if i < inner else end(i) for i in range(2, nodes)]
        edges.append((1, 2, None))
        child = 3
        for i in range(2, inner):
            for port in ("true", "false"):
                if child < nodes:
                    edges.append((i, child, port))
                    child += 1
        if shape == "broken":
            edges = [edge for edge in edges if source.random() < 0.7]
            edges += [(source.randrange(2, nodes), source.randrange(2, nodes), "true")
                      for _ in range(nodes // 4)]
    return {
        "id": made_id(source), "name": "Flow", "kind": "Single-shot", "maxHops": 6,
        "maxHistoryTokens": 2000, "startInput": [], "contextFields": [],
        "nodes": [{"id": ids[i], "kind": kind, "position": [0, 0]}
                  for i, kind in enumerate(kinds)],
        "edges": [{"id": made_id(source), "fromNodeID": ids[a], "toNodeID": ids[b],
                   **({"fromPort": port} if port else {})} for a, b, port in edges],
    }


def with_networkx(nodes, edges):
    graph = networkx.MultiDiGraph()
    graph.add_nodes_from(nodes)
    graph.add_edges_from(edges)
    reached = networkx.descendants(graph, nodes[0])
    return ([node for node in nodes[1:] if node not in reached],
            [node for node, degree in graph.in_degree() if degree > 1])


def with_rustworkx(nodes, edges):
    places = {node: place for place, node in enumerate(nodes)}
    graph = rustworkx.PyDiGraph()
    graph.add_nodes_from(nodes)
    graph.add_edges_from_no_data([(places[a], places[b]) for a, b in edges])
    reached = rustworkx.descendants(graph, 0)
    return ([node for place, node in enumerate(nodes) if place and place not in reached],
            [node for place, node in enumerate(nodes) if graph.in_degree(place) > 1])


def show(as_json, name, ours, peer):
    if as_json:
        print(json.dumps({"name": name, "ours": ours, "peer": peer, "unit": "validations/s",
                          "ratio": ours / peer}), flush=True)
    else:
        print(f"{name:62} {ours:9.0f}/s {peer:9.0f}/s {ours / peer:8.1f}", flush=True)


def main():
    as_json = "--json" in sys.argv[1:]
    slowest = 0.0
    with tempfile.TemporaryDirectory() as folder:
        for shape in ("tree", "row", "broken"):
            flow = drawing(1000, shape)
            path = os.path.join(folder, f"{shape}.json")
            with open(path, "w") as file:
                json.dump(flow, file)
            nodes = [node["id"] for node in flow["nodes"]]
            edges = [(edge["fromNodeID"], edge["toNodeID"]) for edge in flow["edges"]]
            for name, peer in (("networkx", with_networkx), ("rustworkx", with_rustworkx)):
                our_best = peer_best = float("inf")
                for _ in range(ROUNDS):
                    done = subprocess.run([PROGRAM, path, "50"], check=True,
                                          stdout=subprocess.PIPE)
                    found = json.loads(done.stdout)
                    our_best = min(our_best, found["median"])
                    for _ in range(20):
                        start = time.perf_counter()
                        unreachable, merging = peer(nodes, edges)
                        peer_best = min(peer_best, time.perf_counter() - start)
                    if (sorted(unreachable) != found["unreachable"]
                            or sorted(merging) != found["merging"]):
                        sys.exit(f"flow_validator_bench: {name} and we see different graphs")
                slowest = max(slowest, our_best)
                show(as_json, f"validate a {shape} of 1,000 nodes, beside {name}", 1 / our_best,
                     1 / peer_best)
    show(as_json, "validate the slowest of these, beside the goal of 1 ms", 1 / slowest, GOAL)


main()
