"""Chunking beside text splitters for Python, on ASCII Markdown and on text of every script.

The peers cut by other rules, so what has to agree is that nothing is lost: without overlap, all
text but white space is in the chunks, ours and theirs. Sizes are in characters: 1,000 a chunk
(250 of our tokens), 10 percent overlap."""

import gc
import glob
import json
import logging
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import time

import langchain_text_splitters as langchain
import semantic_text_splitter as semantic

PROGRAM = os.path.join(os.environ["OMBREL_BENCH_BIN"], "ChunkingBench")
TOKENS, SIZE, OVERLAP = 250, 1000, 10
ROUNDS = 3
MEGABYTE = 1_000_000
LARGE, SMALL = 32 * MEGABYTE, 2 * MEGABYTE  # small where a peer would take minutes


def ascii_markdown(length):
    """The README files that packages installed; where there are few, made-up words."""
    files = sorted(glob.glob("/usr/share/doc/**/README.md", recursive=True))
    text = "\n\n".join(pathlib.Path(file).read_text(errors="ignore") for file in files)
    text = text.replace("\r", "").encode("ascii", "ignore")
    if len(text) < MEGABYTE // 4:
        text = written_in(["abcdefghijklmnopqrstuvwxyz"], MEGABYTE).encode()
    return (text * (length // len(text) + 1))[:length]


def written_in(alphabets, length):
    source = random.Random(1)
    pieces, size = [], 0
    while size < length:
        alphabet = source.choice(alphabets)
        line = source.choice(["", "", "", "", "", "", "", "", "# ", "## ", "### "])
        for _ in range(source.randrange(3, 60)):
            line += "".join(source.choices(alphabet, k=source.randrange(1, 9))) + " "
        line += source.choice(["\n", "\n\n"])
        pieces.append(line)
        size += len(line.encode())
    return "".join(pieces)


def span(first, last):
    return [chr(scalar) for scalar in range(first, last + 1)]


def every_script(length):
    alphabets = [
        span(0x61, 0x7A), span(0xE0, 0xF6), span(0x3B1, 0x3C9), span(0x430, 0x44F),
        span(0x627, 0x63A), span(0x5D0, 0x5EA), span(0x915, 0x939) + ["\u094d", "\u093f", "\u093e"],
        span(0xE01, 0xE2E) + ["\u0e31", "\u0e34", "\u0e48"], span(0x4E00, 0x5FFF),
        span(0xAC00, 0xB3FF), ["👍🏽", "👩\u200d👩\u200d👧", "🇩🇪", "❤\ufe0f", "😀"],
        ["e\u0301", "a\u0308", "o\u0302\u0323"],
    ]
    text = written_in(alphabets, min(length, 4 * MEGABYTE)).encode()
    return (text * (length // len(text) + 1))[:length].decode(errors="ignore").encode()


def ours(strategy, file, overlap):
    done = subprocess.run([PROGRAM, strategy, file, str(TOKENS), str(overlap)],
                          check=True, stdout=subprocess.PIPE)
    return json.loads(done.stdout)


def ink(text):
    return len(text.encode().translate(None, b" \t\n\v\f\r"))


# What each strategy is held against: the peer's name, how it is made for an overlap in
# characters, and how much text it is given.
PEERS = {
    "fixed": [
        ("semantic-text-splitter", lambda over: semantic.TextSplitter(SIZE, over).chunks, SMALL),
        ("langchain character", lambda over: langchain.CharacterTextSplitter(
            separator="", chunk_size=SIZE, chunk_overlap=over).split_text, SMALL),
    ],
    "paragraph": [
        ("semantic-text-splitter", lambda over: semantic.TextSplitter(SIZE, over).chunks, SMALL),
        ("langchain paragraph", lambda over: langchain.CharacterTextSplitter(
            separator="\n\n", chunk_size=SIZE, chunk_overlap=over).split_text, LARGE),
    ],
    "headingAware": [
        ("semantic-text-splitter Markdown",
         lambda over: semantic.MarkdownSplitter(SIZE, over).chunks, SMALL),
        ("langchain Markdown", lambda over: langchain.MarkdownTextSplitter(
            chunk_size=SIZE, chunk_overlap=over).split_text, LARGE),
    ],
}


def check_nothing_is_lost(strategy, name, peer, text, file):
    if strategy == "headingAware":  # heading lines go into the breadcrumb
        kept = "\n".join(line for line in text.split("\n") if not line.startswith("#"))
        pathlib.Path(file).write_text(kept)
        text = kept
    else:
        pathlib.Path(file).write_text(text)
    expected = ink(text)
    for who, found in (("ours", ours(strategy, file, 0)["ink"]),
                       (name, sum(ink(chunk) for chunk in peer(0)(text)))):
        if found != expected:
            sys.exit(f"chunking_bench: {who}, {strategy}: {found} of {expected} bytes are kept")


def main():
    as_json = "--json" in sys.argv[1:]
    logging.disable(logging.WARNING)  # a peer warns about every paragraph over the size
    with tempfile.TemporaryDirectory() as folder:
        file = os.path.join(folder, "text.md")
        for kind, make in (("ASCII Markdown", ascii_markdown), ("every script", every_script)):
            whole = make(LARGE)
            for strategy, peers in PEERS.items():
                for name, peer, size in peers:
                    data = whole[:size].decode(errors="ignore").encode()
                    text = data.decode()
                    check_nothing_is_lost(strategy, name, peer, text[:MEGABYTE // 8], file)
                    pathlib.Path(file).write_bytes(data)
                    split = peer(SIZE * OVERLAP // 100)
                    our_best = peer_best = float("inf")
                    for _ in range(ROUNDS):
                        our_best = min(our_best, ours(strategy, file, OVERLAP)["seconds"])
                        gc.collect()
                        start = time.perf_counter()
                        split(text)
                        peer_best = min(peer_best, time.perf_counter() - start)
                    our_speed = len(data) / our_best / MEGABYTE
                    peer_speed = len(data) / peer_best / MEGABYTE
                    work = f"chunk {strategy}, {kind}, beside {name}"
                    if as_json:
                        print(json.dumps({"name": work, "ours": our_speed, "peer": peer_speed,
                                          "unit": "MB/s", "ratio": our_speed / peer_speed}),
                              flush=True)
                    else:
                        print(f"{work:75} {our_speed:8.0f} MB/s {peer_speed:8.1f} MB/s "
                              f"{our_speed / peer_speed:8.1f}", flush=True)


main()
