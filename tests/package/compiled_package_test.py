#!/usr/bin/env python3
"""Generated packages, built by the Swift tool chain, hold and find what the studio does.

    compiled_package_test.py PACKAGE_SAMPLES

PACKAGE_SAMPLES is the program that writes the packages. All of them are built in one go, unchanged,
with warnings as errors, against stand-ins for the frameworks that they use, and one program calls
them all. Without a tool chain the exit status is 77, or 1 where CI is "true".
"""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent

RUNNER_MANIFEST = """// swift-tools-version: 6.2
import PackageDescription

let package = Package(
    name: "Runner",
    dependencies: [{dependencies}],
    targets: [.executableTarget(name: "Runner", dependencies: [{products}])]
)
"""

# Reads lines from standard input: what to do, and with which package.
RUNNER_HEAD = """
func hex(_ text: String) -> String {
    let digits = Array("0123456789abcdef".utf8)
    var result: [UInt8] = []
    for byte in text.utf8 {
        result.append(digits[Int(byte >> 4)])
        result.append(digits[Int(byte & 15)])
    }
    return String(decoding: result, as: UTF8.self)
}
func text(_ hex: Substring) -> String {
    let digits = Array(hex.utf8).map { $0 < 97 ? $0 - 48 : $0 - 87 }
    let bytes = stride(from: 0, to: digits.count, by: 2).map { digits[$0] << 4 | digits[$0 + 1] }
    return String(decoding: bytes, as: UTF8.self)
}
struct Found {
    let id: String
    let fields: String
}
func bits(_ number: Double) -> String {
    number.isNaN ? "nan" : String(number.bitPattern, radix: 16)
}
struct Broken: Error, LocalizedError {
    var errorDescription: String? { "the fan stopped" }
}
struct Package {
    let search: (String, Int) -> [Found]
    let searchByDefault: (String) -> [Found]
    let answer: (String, Int, Int) async -> String
}
"""
RUNNER_PACKAGE = """
packages["{name}"] = Package(
    search: {{ {name}.search($0, topK: $1).map {{ chunk in
        Found(id: chunk.id, fields: ([
            chunk.id, hex(chunk.text), String(chunk.tokenCount), hex(chunk.searchText),
            hex(chunk.packText), String(chunk.packTokenCount), hex(chunk.breadcrumbString),
        ] + chunk.embedding.map(bits)).joined(separator: " "))
    }} }},
    searchByDefault: {{ {name}.search($0).map {{ Found(id: $0.id, fields: "") }} }},
    answer: {{ await {name}.answer($0, topK: $1, contextBudget: $2) }})
"""
RUNNER_TAIL = """
while let line = readLine() {
    let parts = line.split(separator: " ", omittingEmptySubsequences: false)
    let package = packages[String(parts[1])]!
    switch parts[0] {
    case "search":
        print((package.search(text(parts[3]), Int(parts[2])!).map(\\.id)).joined(separator: " "))
    case "default":
        print((package.searchByDefault(text(parts[2])).map(\\.id)).joined(separator: " "))
    case "fields":
        let found = package.search(text(parts[2]), Int.max)
        print(found.count)
        for chunk in found {
            print(chunk.fields)
        }
    default:
        // answer PACKAGE BUDGET STATE QUESTION: the answer, then what the model was asked
        StandInModel.prompts = []
        StandInModel.reply = "The pump."
        StandInModel.error = parts[3] == "broken" ? Broken() : nil
        StandInModel.availability =
            parts[3] == "unavailable" ? .unavailable(.modelNotReady) : .available
        print(hex(await package.answer(text(parts[4]), 6, Int(parts[2])!)))
        print(StandInModel.prompts.map { hex($0.instructions) + "," + hex($0.prompt) }
            .joined(separator: " "))
    }
}
"""

NOTHING = "Nothing in the indexed content matched this question closely enough to answer."
INSTRUCTIONS = ("Answer the question using only the provided context. If the answer isn't in the "
                "context, say you don't know.")


def run(command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        raise RuntimeError(f"{command} ended with {done.returncode}:\n"
                           + done.stdout.decode("utf-8", "replace")[-8000:])
    return done.stdout


def encoded(text):
    return text.encode("utf-8").hex()


class CompiledPackages(unittest.TestCase):
    samples = None

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="ombrel-packages-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        run([cls.samples, "packages", cls.folder / "samples"])
        cls.names = cls.lines("packages.txt")
        cls.build()

    @classmethod
    def lines(cls, name):
        return (cls.folder / "samples" / name).read_text(encoding="utf-8").split("\n")[:-1]

    @classmethod
    def build(cls):
        modules = cls.folder / "modules"
        modules.mkdir()
        for name in ("FoundationModels", "NaturalLanguage"):
            run(["swiftc", "-swift-version", "6", "-parse-as-library", "-emit-module",
                 "-emit-library", "-static", "-module-name", name, HERE / f"{name}.swift",
                 "-o", modules / f"lib{name}.a", "-module-link-name", name,
                 "-emit-module-path", modules / f"{name}.swiftmodule"])
        runner = cls.folder / "runner"
        (runner / "Sources/Runner").mkdir(parents=True)
        (runner / "Package.swift").write_text(RUNNER_MANIFEST.format(
            dependencies=", ".join(f'.package(path: "../samples/packages/{name}")'
                                   for name in cls.names),
            products=", ".join(f'.product(name: "{name}", package: "{name}")'
                               for name in cls.names)), encoding="utf-8")
        imports = "".join(f"import {name}\n" for name in ["Foundation", "FoundationModels"]
                          + cls.names)
        (runner / "Sources/Runner/main.swift").write_text(
            imports + RUNNER_HEAD + "var packages: [String: Package] = [:]\n"
            + "".join(RUNNER_PACKAGE.format(name=name) for name in cls.names) + RUNNER_TAIL,
            encoding="utf-8")
        run(["swift", "build", "--package-path", runner, "--disable-automatic-resolution",
             "-Xswiftc", "-warnings-as-errors", "-Xswiftc", "-I", "-Xswiftc", modules,
             "-Xlinker", f"-L{modules}"])
        cls.program = runner / ".build/debug/Runner"

    def ask(self, lines):
        done = subprocess.run([self.program], input="".join(f"{line}\n" for line in lines),
                              capture_output=True, encoding="utf-8",
                              env={**os.environ,
                                   "OMBREL_VECTORS": str(self.folder / "samples/vectors.txt")})
        self.assertEqual(done.returncode, 0, done.stderr[-4000:])
        return done.stdout.split("\n")[:-1]

    def test_packages_find_what_the_studio_finds(self):
        queries = [line.split(" ") for line in self.lines("queries.txt")]
        expected = [line.split(" ") for line in self.lines("expected.txt")]
        self.assertGreaterEqual(len(queries), 300)
        self.assertEqual(len(expected), 8 * len(queries))
        answers = self.ask(f"search {package} {queries[int(number)][0]} {queries[int(number)][1]}"
                           for package, number, *_ in expected)
        hits = 0
        for (package, number, *rest), answer in zip(expected, answers, strict=True):
            middle = rest.index("|")
            studio = rest[:middle]
            scores = dict(part.split("=") for part in rest[middle + 1:])
            found = answer.split(" ") if answer else []
            what = f"{package}, query {bytes.fromhex(queries[int(number)][1]).decode()!r}"
            # Chunks of exactly equal scores may change places.
            self.assertEqual([scores[id] for id in studio], [scores.get(id) for id in found], what)
            self.assertEqual(len(set(found)), len(found), what)
            hits += len(found)
        self.assertGreater(hits, 8 * len(queries))

    def test_searching_without_a_number_finds_the_settings_number(self):
        answers = self.ask([f"search KeywordLiteralRAG 6 {encoded('the')}",
                            f"default KeywordLiteralRAG {encoded('the')}"])
        self.assertEqual(len(answers[0].split(" ")), 6)
        self.assertEqual(answers[0], answers[1])

    def test_packages_hold_every_field_of_every_chunk(self):
        expected = {}
        for line in self.lines("chunks.txt"):
            package, fields = line.split(" ", 1)
            expected.setdefault(package, []).append(fields)
        self.assertEqual(set(expected), {"P2024Caf\u00e9RAG", "EveryLiteralRAG"})
        for package, fields in expected.items():
            count, *found = self.ask([f"fields {package} {encoded('every')}"])
            self.assertEqual(int(count), len(fields))
            self.assertEqual(sorted(found), sorted(fields))

    def test_packages_without_chunks_find_nothing(self):
        for package in ("EmptyRAG", "EmptyCompactRAG"):
            answers = self.ask([f"search {package} 6 {encoded('battery')}",
                                f"answer {package} 3000 available {encoded('battery')}"])
            self.assertEqual(answers, ["", encoded(NOTHING), ""])

    def answer(self, question, budget=3000, state="available"):
        answer, prompts = self.ask([f"answer AnswersRAG {budget} {state} {encoded(question)}"])
        return (bytes.fromhex(answer).decode(),
                [tuple(bytes.fromhex(part).decode() for part in prompt.split(","))
                 for prompt in prompts.split(" ") if prompt])

    def test_an_answer_is_asked_for_with_the_chunks_in_order(self):
        answer, prompts = self.answer("pump")
        self.assertEqual(answer, "The pump.")
        self.assertEqual(prompts, [(INSTRUCTIONS,
                                    "Context:\n[1] Guide > Start: pump pump pump\n\n"
                                    "[2] Guide > Start: pump pump filler words\n\n"
                                    "[3] Guide > Start: pump with many more filler words around it"
                                    "\n\nQuestion: pump")])

    def test_a_chunk_over_the_budget_leaves_its_number_out(self):
        _, prompts = self.answer("pump", budget=50)
        self.assertEqual(prompts[0][1],
                         "Context:\n[1] Guide > Start: pump pump pump\n\n"
                         "[3] Guide > Start: pump with many more filler words around it"
                         "\n\nQuestion: pump")

    def test_the_model_is_asked_even_when_nothing_fits(self):
        answer, prompts = self.answer("pump", budget=1)
        self.assertEqual(answer, "The pump.")
        self.assertEqual(prompts[0][1], "Context:\n\n\nQuestion: pump")

    def test_nothing_found_is_said_without_the_model(self):
        self.assertEqual(self.answer("zebra"), (NOTHING, []))

    def test_a_failing_model_is_told(self):
        answer, prompts = self.answer("pump", budget=50, state="broken")
        self.assertEqual(answer, "Retrieved 2 chunk(s), but the on-device model failed to answer: "
                                 "the fan stopped")
        self.assertEqual(len(prompts), 1)

    def test_an_unavailable_model_is_told(self):
        self.assertEqual(self.answer("pump", state="unavailable"),
                         ("Retrieved 3 chunk(s). On-device model unavailable (modelNotReady) "
                          "\u2014 enable Apple Intelligence to generate an answer.", []))

    def test_every_scalar_reads_the_same(self):
        program = self.folder / "scalars"
        run(["swiftc", "-O", HERE / "Scalars.swift", "-o", program])
        ours = run([self.samples, "scalars"]).decode().splitlines()
        swift = run([program]).decode().splitlines()
        self.assertEqual(len(ours), 0x110000 - 0x800)
        self.assertEqual(len(swift), len(ours))
        different = [f"studio {a}, Swift {b}" for a, b in zip(ours, swift) if a != b]
        self.assertFalse(different, f"{len(different)} scalars:\n" + "\n".join(different[:40]))


def tool_chain_fault():
    """Why generated packages cannot be built here; nothing when they can."""
    if not shutil.which("swift") or not shutil.which("swiftc"):
        return "there is no Swift tool chain (swift, 6.2 or later) on the PATH"
    try:
        run(["swift", "--version"])
    except (RuntimeError, OSError) as error:
        return f"the Swift tool chain does not run: {error}"
    return None


if __name__ == "__main__":
    CompiledPackages.samples = sys.argv.pop(1)
    fault = tool_chain_fault()
    if fault:
        print(f"Left out: the test of compiled packages, since {fault}.", file=sys.stderr)
        sys.exit(1 if os.environ.get("CI") == "true" else 77)
    unittest.main()
