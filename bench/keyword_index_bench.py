#!/usr/bin/env python3
"""Holds keyword search against tantivy on 100,000 chunks of 1,600 characters.

The words follow the frequencies of natural text, each document with words of its own subject; the
queries have two to six words, some of them questions in whole sentences. Before anything is timed,
both must match the same chunks, and their best ten must be nearly the same (tantivy's k1 is 1.2
and it rounds lengths, so they cannot always be equal). Ours and tantivy's work alternate, each on
one thread. tantivy's documents and queries are made and parsed before its clock starts.
"""
import argparse
import json
import os
import random
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

import numpy
import tantivy

COMMON = """the of and to a in is that for it as was with be by on not he his but at are this have
from or had an they which one you were all her she there would their we him been has when who will
no more if out so up said what its about than into them can only other time new some could these
two may first then do any like my now over such our me even most made after also well must before
through back years where much your way down should because long each just state those people too
how little good world make very year still see work men day""".split()
CHUNK_CHARACTERS = 1600
CHUNKS_PER_DOCUMENT = 100


def vocabulary(size, rng):
    """Words in order of frequency: English ones, then made-up ones that get longer."""
    parts = [c + v for c in "bcdfghjklmnprstvwz" for v in "aeiou"] + ["ar", "en", "ist", "on", "er"]
    words = list(COMMON)
    known = set(words)
    while len(words) < size:
        count = 2 + int(rng.random() * 1.5 + len(words) / size * 2)
        word = "".join(rng.choice(parts) for _ in range(count))
        if word not in known:
            known.add(word)
            words.append(word)
    return words


def write_corpus(path, chunks, words, seed):
    rng = numpy.random.default_rng(seed)
    weights = 1 / (numpy.arange(len(words)) + 2.7) ** 1.07
    steps = numpy.cumsum(weights / weights.sum())
    with open(path, "w") as file:
        for _ in range(chunks // CHUNKS_PER_DOCUMENT):
            subject = rng.integers(len(COMMON), len(words), 40)
            count = CHUNKS_PER_DOCUMENT * 360
            ranks = numpy.searchsorted(steps, rng.random(count)).clip(0, len(words) - 1)
            ranks = numpy.where(rng.random(count) < 0.05, rng.choice(subject, count), ranks)
            drawn = [words[rank] for rank in ranks]
            for i in range(CHUNKS_PER_DOCUMENT):
                chunk = drawn[i * 360 : (i + 1) * 360]
                sentences = [" ".join(chunk[j : j + 12]).capitalize() for j in range(0, 360, 12)]
                file.write(". ".join(sentences)[:CHUNK_CHARACTERS] + "\n")


def make_queries(words, count, seed):
    rng = random.Random(seed)

    def frequent():
        return words[rng.randrange(30, 400)]

    def middling():
        return words[rng.randrange(300, 5000)]

    def rare():
        return words[int(5000 * (len(words) / 5000) ** rng.random())]

    forms = [
        lambda: f"{middling()} {rare()}",
        lambda: f"{frequent()} {middling()}",
        lambda: f"{middling()} {middling()} {rare()}",
        lambda: f"what is the {middling()} of {rare()}",
        lambda: f"how does {middling()} work with {middling()}",
        lambda: f"where can the {frequent()} {middling()} be",
        lambda: f"{rare()} {rare()} {frequent()} {middling()}",
        lambda: f"why is there no {middling()} now",
    ]
    return [forms[i % len(forms)]() for i in range(count)]


class Ours:
    def __init__(self, corpus, queries):
        program = Path(os.environ["OMBREL_BENCH_BIN"]) / "KeywordIndexBench"
        self.process = subprocess.Popen(
            [program, corpus, queries], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True
        )

    def __call__(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def close(self):
        self.process.stdin.close()
        if self.process.wait() != 0:
            raise SystemExit("KeywordIndexBench failed")


class Peer:
    def __init__(self, texts, numbered=False):
        builder = tantivy.SchemaBuilder()
        builder.add_text_field("text", index_option="freq")
        if numbered:
            builder.add_unsigned_field("number", stored=True)
        self.schema = builder.build()
        if numbered:
            self.documents = [
                tantivy.Document(text=text, number=i) for i, text in enumerate(texts)
            ]
        else:
            self.documents = [tantivy.Document(text=text) for text in texts]

    def build(self):
        self.index = tantivy.Index(self.schema)
        start = time.perf_counter()
        writer = self.index.writer(heap_size=512_000_000, num_threads=1)
        for document in self.documents:
            writer.add_document(document)
        writer.commit()
        took = time.perf_counter() - start
        writer.wait_merging_threads()
        self.index.reload()
        self.searcher = self.index.searcher()
        return took

    def parse(self, queries):
        self.parsed = [self.index.parse_query(query, ["text"]) for query in queries]

    def queries(self):
        times = []
        for query in self.parsed:
            start = time.perf_counter()
            self.searcher.search(query, 10, count=False)
            times.append((time.perf_counter() - start) * 1e6)
        return times

    def results(self):
        found = []
        for query in self.parsed:
            result = self.searcher.search(query, 10)
            numbers = [self.searcher.doc(place)["number"][0] for _, place in result.hits]
            found.append((result.count, numbers))
        return found


def check_agreement(folder, words, queries):
    corpus, query_file = folder / "small.txt", folder / "queries.txt"
    write_corpus(corpus, 10_000, words, seed=2)
    ours = Ours(corpus, query_file)
    peer = Peer(corpus.read_text().splitlines(), numbered=True)
    peer.build()
    peer.parse(queries)
    shared = []
    for query, (count, best), (peer_count, peer_best) in zip(
        queries, ours("results"), peer.results(), strict=True
    ):
        if count != peer_count:
            raise SystemExit(f"{query!r} matches {count} chunks, with tantivy {peer_count}")
        shared.append(len(set(best) & set(peer_best)) / max(len(peer_best), 1))
    ours.close()
    if statistics.mean(shared) < 0.75:
        raise SystemExit(f"the best ten share only {statistics.mean(shared):.0%} with tantivy's")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--json", action="store_true", help="one JSON object a line")
    parser.add_argument("--chunks", type=int, default=100_000)
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()

    def report(name, ours, peer, unit):
        if options.json:
            line = {"name": name, "ours": ours, "peer": peer, "unit": unit, "ratio": peer / ours}
            print(json.dumps(line), flush=True)
        else:
            print(f"{name}: {ours:.4g} {unit}, {peer:.4g} {unit}, {peer / ours:.2f}", flush=True)

    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        words = vocabulary(200_000, random.Random(1))
        queries = make_queries(words, 400, seed=3)
        (folder / "queries.txt").write_text("".join(query + "\n" for query in queries))
        check_agreement(folder, words, queries)

        corpus = folder / "corpus.txt"
        write_corpus(corpus, options.chunks, words, seed=4)
        ours = Ours(corpus, folder / "queries.txt")
        peer = Peer(corpus.read_text().splitlines())
        builds, peer_builds = [], []
        for _ in range(min(options.rounds, 3)):
            builds.append(ours("build"))
            peer_builds.append(peer.build())
        peer.parse(queries)
        ours("queries")
        peer.queries()
        times, peer_times = [], []
        for _ in range(options.rounds):
            times.append(ours("queries"))
            peer_times.append(peer.queries())
        # Of each query the median over the rounds.
        times = sorted(map(statistics.median, zip(*times)))
        peer_times = sorted(map(statistics.median, zip(*peer_times)))
        size = f"{options.chunks:,} chunks"
        build = statistics.median(builds)
        report(f"keyword, first query over {size}", build, statistics.median(peer_builds), "s")
        report(f"keyword query over {size}, p50", *(statistics.median(t) for t in (times, peer_times)), "us")
        at95 = len(queries) * 95 // 100
        report(f"keyword query over {size}, p95", times[at95], peer_times[at95], "us")
        change = statistics.median(ours("change") for _ in range(9))
        report("keyword query after one document changed, against building all", change, build, "s")
        ours.close()


if __name__ == "__main__":
    main()
