"""Reading declarations out of Swift source beside tree-sitter's Swift grammar: on the sources of
the fuzz corpus, made large, and on the interfaces of the Swift tool chain where there is one.

Times are of the processor. The peer makes a whole syntax tree and we keep declarations only; what both know, and what has to
agree, is the types by name, in their order."""

import gc
import glob
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

import tree_sitter
import tree_sitter_swift

PROGRAM = os.path.join(os.environ["OMBREL_BENCH_BIN"], "GenerableBench")
CORPUS = pathlib.Path(__file__).resolve().parents[1] / "fuzz/corpus"
SAMPLES = ["GenerableParserFuzz/Recipes.swift", "GenerableConversionFuzz/Travel.swift",
           "SwiftLexerFuzz/Localization.swift"]
MEGABYTE = 1_000_000
SIZE = 6 * MEGABYTE
ROUNDS = 3
DECLARED = re.compile(r"\b((?:struct|enum|class|actor|protocol) )([A-Z]\w*)")
BODIES = {"source_file", "class_body", "enum_class_body", "protocol_body"}


def corpus_source():
    """The samples again and again, with other names each time."""
    samples = "\n".join((CORPUS / name).read_text() for name in SAMPLES)
    copies = (DECLARED.sub(rf"\g<1>\g<2>{i}", samples) for i in range(SIZE))
    return grown(copies)


def tool_chain_source():
    compiler = shutil.which("swiftc") or ""
    root = pathlib.Path(compiler).resolve().parents[1] if compiler else pathlib.Path("/nowhere")
    files = sorted(glob.glob(str(root / "lib/swift/**/*.swiftinterface"), recursive=True))
    return grown(pathlib.Path(file).read_text(errors="ignore") for file in files
                 if ".private." not in file)


def grown(pieces):
    whole, size = [], 0
    for piece in pieces:
        whole.append(piece)
        size += len(piece.encode())
        if size >= SIZE:
            break
    return "\n".join(whole).encode()


def type_names(tree):
    """The names of the structures, enumerations, classes and actors outside functions."""
    names, pending = [], [tree.root_node]
    while pending:
        node = pending.pop()
        if node.type == "class_declaration":
            name = node.child_by_field_name("name")
            if name.type == "type_identifier":  # an extension's is a user_type
                names.append(name.text.decode())
        pending.extend(child for child in reversed(node.children)
                       if child.type in BODIES
                       or child.type in ("class_declaration", "protocol_declaration"))
    return names


def ours(*arguments):
    return subprocess.run([PROGRAM, *arguments], check=True, stdout=subprocess.PIPE).stdout


def main():
    as_json = "--json" in sys.argv[1:]
    parser = tree_sitter.Parser(tree_sitter.Language(tree_sitter_swift.language()))
    with tempfile.TemporaryDirectory() as folder:
        file = os.path.join(folder, "source.swift")
        for kind, source in (("written source", corpus_source()),
                             ("interfaces of the tool chain", tool_chain_source())):
            if not source:
                continue
            pathlib.Path(file).write_bytes(source)
            found = ours("--names", file).decode().split("\n")[:-1]
            tree = parser.parse(source)
            expected = type_names(tree)
            # Where the peer meets syntax that it does not know, it may lose a type.
            if found != expected and not (tree.root_node.has_error and found):
                sys.exit(f"generable_bench: {kind}: we find {len(found)} types, the peer "
                         f"{len(expected)}")
            our_best = peer_best = float("inf")
            for _ in range(ROUNDS):
                our_best = min(our_best, json.loads(ours(file))["seconds"])
                gc.collect()
                start = time.process_time()
                tree = parser.parse(source)
                peer_best = min(peer_best, time.process_time() - start)
            our_speed = len(source) / our_best / MEGABYTE
            peer_speed = len(source) / peer_best / MEGABYTE
            work = f"read {kind}, beside tree-sitter"
            if as_json:
                print(json.dumps({"name": work, "ours": our_speed, "peer": peer_speed,
                                  "unit": "MB/s", "ratio": our_speed / peer_speed}), flush=True)
            else:
                print(f"{work:60} {our_speed:8.0f} MB/s {peer_speed:8.1f} MB/s "
                      f"{our_speed / peer_speed:8.1f}", flush=True)


main()
