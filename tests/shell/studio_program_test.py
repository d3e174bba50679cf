#!/usr/bin/env python3
"""The studio as a program: its starts and ends.

    studio_program_test.py STUDIO
"""
import os
import plistlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

STUDIO = None


def values_in(plist):
    """The strings of a property list, however deep."""
    if isinstance(plist, dict):
        plist = list(plist.values())
    if isinstance(plist, list):
        return [text for value in plist for text in values_in(value)]
    return [plist] if isinstance(plist, str) else []


def wait_until(condition, what):
    end = time.monotonic() + 60
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"it never came: {what}")
        time.sleep(0.02)


class Program(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        runtime = self.folder / "runtime"
        runtime.mkdir(mode=0o700)
        self.environment = dict(
            os.environ, QT_QPA_PLATFORM="offscreen", HOME=str(self.folder),
            XDG_RUNTIME_DIR=str(runtime), XDG_CONFIG_HOME=str(self.folder / "config"),
            XDG_DATA_HOME=str(self.folder / "data"), XDG_CACHE_HOME=str(self.folder / "cache"),
            DBUS_SESSION_BUS_ADDRESS="disabled:")

    def start(self, *arguments):
        process = subprocess.Popen([STUDIO, *arguments], env=self.environment,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def wait_until_it_listens(self):
        wait_until(lambda: list((self.folder / "runtime").glob("ombrel-studio-*")), "the socket")


class StartsAndEnds(Program):
    def test_it_tells_its_version_without_a_window(self):
        self.environment.pop("DISPLAY", None)
        for platform in ("offscreen", "xcb"):
            self.environment["QT_QPA_PLATFORM"] = platform
            for asked, told in (("--version", r"^Ombrel Studio \d+\.\d+"), ("--help", r"FILE…")):
                result = subprocess.run([STUDIO, asked], env=self.environment, text=True,
                                        capture_output=True, timeout=60, check=True)
                self.assertRegex(result.stdout, told)

    def test_a_second_start_hands_over_and_ends(self):
        first = self.start()
        self.wait_until_it_listens()
        second = subprocess.run([STUDIO], env=self.environment, timeout=60, check=False)
        self.assertEqual(second.returncode, 0)
        self.assertIsNone(first.poll())

    def test_a_request_to_terminate_ends_it_cleanly(self):
        for sent in (signal.SIGTERM, signal.SIGINT):
            studio = self.start()
            self.wait_until_it_listens()
            studio.send_signal(sent)
            self.assertEqual(studio.wait(timeout=60), 0, studio.stderr.read())
            self.assertFalse(list((self.folder / "runtime").glob("ombrel-studio-*")))

    def test_it_starts_again_after_it_was_killed(self):
        studio = self.start()
        self.wait_until_it_listens()
        socket = next((self.folder / "runtime").glob("ombrel-studio-*"))
        left_behind = socket.stat().st_ino
        studio.kill()
        studio.wait()
        self.assertTrue(socket.exists())
        again = self.start()
        wait_until(lambda: socket.exists() and socket.stat().st_ino != left_behind,
                   "the socket of the new one")
        probe = subprocess.run([STUDIO], env=self.environment, timeout=60, check=False)
        self.assertEqual(probe.returncode, 0)
        self.assertIsNone(again.poll())

    def test_a_file_that_does_not_exist_is_told_and_it_runs_on(self):
        studio = self.start(str(self.folder / "absent.ombrel"))
        self.wait_until_it_listens()
        studio.terminate()
        self.assertEqual(studio.wait(timeout=60), 0)


class Killed(Program):
    """On a display of its own, by the keyboard."""

    def setUp(self):
        super().setUp()
        read, write = os.pipe()
        display = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1600x1000x24", "-nolisten", "tcp",
             "-noreset"],
            pass_fds=[write], stderr=subprocess.DEVNULL)
        self.addCleanup(display.wait)
        self.addCleanup(display.terminate)
        os.close(write)
        with os.fdopen(read) as told:
            self.environment["DISPLAY"] = ":" + told.readline().strip()
        self.environment["QT_QPA_PLATFORM"] = "xcb"

    def xdotool(self, *arguments):
        return subprocess.run(["xdotool", *arguments], env=self.environment, text=True, timeout=60,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout

    def shows(self, title):
        return self.xdotool("search", "--onlyvisible", "--name", title).split()

    def press(self, title, keys):
        wait_until(lambda: self.shows(title), f"the window {title}")
        self.xdotool("windowfocus", "--sync", self.shows(title)[0])
        self.xdotool("key", keys)

    def kept(self):
        """The projects that are kept for recovery, as far as they are whole."""
        return [plistlib.loads(path.read_bytes()) for path in self.folder.rglob("*.ombrel")]

    def test_what_a_killed_studio_had_not_saved_is_offered(self):
        studio = self.start()
        self.press("Welcome", "ctrl+n")
        self.press("Untitled", "ctrl+shift+n")
        wait_until(self.kept, "the project that is kept for recovery")
        self.assertIn("New Agent 1", values_in(self.kept()))
        studio.kill()
        studio.wait()

        again = self.start()
        wait_until(lambda: self.shows("Recover projects"), "the offer")
        self.assertFalse(self.shows("Untitled"))
        self.press("Recover projects", "Return")
        wait_until(lambda: self.shows("Untitled"), "the recovered project")
        again.terminate()
        self.assertEqual(again.wait(timeout=60), 0)
        # It is not saved yet: it is offered again.
        self.assertIn("New Agent 1", values_in(self.kept()))

    def test_what_was_open_is_open_again_after_a_request_to_terminate(self):
        studio = self.start()
        self.press("Welcome", "ctrl+n")
        self.press("Untitled", "ctrl+shift+n")
        wait_until(self.kept, "the project that is kept for recovery")
        studio.kill()
        studio.wait()
        kept, = self.folder.rglob("*.ombrel")
        project = kept.rename(self.folder / "Fernhill.ombrel")

        studio = self.start(str(project))
        wait_until(lambda: self.shows("Fernhill"), "the project")
        wait_until(lambda: "Fernhill" in (self.folder / "config/Ombrel/studio.ini").read_text(),
                   "the note of what is open")
        studio.terminate()
        self.assertEqual(studio.wait(timeout=60), 0)
        self.start()
        wait_until(lambda: self.shows("Fernhill"), "the project, again")


if __name__ == "__main__":
    STUDIO = sys.argv.pop(1)
    unittest.main()
