#!/usr/bin/env python3
"""The studio as a program: its starts and ends.

    studio_program_test.py STUDIO
"""
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

STUDIO = None


def wait_until(condition, what):
    end = time.monotonic() + 60
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"it never came: {what}")
        time.sleep(0.02)


class StudioProgram(unittest.TestCase):
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

    def test_it_tells_its_version_without_a_window(self):
        result = subprocess.run([STUDIO, "--version"], env=self.environment, text=True,
                                capture_output=True, timeout=60, check=True)
        self.assertRegex(result.stdout, r"^Ombrel Studio \d+\.\d+")

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


if __name__ == "__main__":
    STUDIO = sys.argv.pop(1)
    unittest.main()
