#!/usr/bin/env python3
"""Prints how soon the studio shows its first window, and what memory it takes at most until then and
a second after: the work, ours, the peer's, and their ratio, above 1 where we are ahead.

The peer is a text editor of Debian made with Qt: featherpad, a small one. Both start with an empty
home, warm files and a display of their own (Xvfb), in turn; times are from the start of the process
until its window is on the display and holds more than one colour. Medians of ROUNDS.
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from Xlib import X, display, error

ROUNDS = 7
PEER = "featherpad"


class Screen:
    """A display of our own."""

    def __enter__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1600x1000x24", "-nolisten", "tcp"],
            pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as told:
            self.name = ":" + told.readline().strip()
        self.connection = display.Display(self.name)
        self.root = self.connection.screen().root
        self.root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self.connection.sync()
        return self

    def __exit__(self, *_):
        self.connection.close()
        self.server.terminate()
        self.server.wait()

    def drain(self):
        self.connection.sync()
        while self.connection.pending_events():
            self.connection.next_event()

    def wait_for_drawn_window(self, process):
        """Returns when a window of a fair size is shown and drawn."""
        while True:
            if self.connection.pending_events() == 0:
                if process.poll() is not None:
                    raise RuntimeError(f"{process.args[0]} ended without a window")
                time.sleep(0.001)
                continue
            event = self.connection.next_event()
            if event.type == X.MapNotify and not event.override:
                while self.is_drawn(event.window) is False:
                    time.sleep(0.001)
                if self.is_drawn(event.window):
                    return

    @staticmethod
    def is_drawn(window):
        """None for what is no window of the program: too small, or gone."""
        try:
            size = window.get_geometry()
            if size.width < 200 or size.height < 200:
                return None
            pixels = window.get_image(0, 0, size.width, size.height, X.ZPixmap, 0xFFFFFFFF).data
        except error.XError:
            return None
        return pixels != pixels[:4] * (len(pixels) // 4)


def peak_memory(pid):
    status = Path(f"/proc/{pid}/status").read_text(encoding="ascii")
    return int(status.split("VmHWM:")[1].split()[0]) / 1024


def start(screen, program, home):
    """Seconds until the first window, and the most memory in MB."""
    runtime = home / "runtime"
    runtime.mkdir(mode=0o700, exist_ok=True)
    environment = {name: value for name, value in os.environ.items()
                   if not name.startswith(("XDG_", "QT_", "DBUS_", "WAYLAND_"))}
    environment.update(DISPLAY=screen.name, HOME=str(home), XDG_RUNTIME_DIR=str(runtime),
                       DBUS_SESSION_BUS_ADDRESS="disabled:", QT_QPA_PLATFORM="xcb")
    screen.drain()
    began = time.perf_counter()
    process = subprocess.Popen([program], env=environment, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    try:
        screen.wait_for_drawn_window(process)
        seconds = time.perf_counter() - began
        time.sleep(1)
        return seconds, peak_memory(process.pid)
    finally:
        process.kill()
        process.wait()
        shutil.rmtree(runtime)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--json", action="store_true", help="one JSON object a line")
    options = parser.parse_args()
    for program, package in ((PEER, PEER), ("Xvfb", "xvfb")):
        if not shutil.which(program):
            sys.exit(f"startup_bench: install {package}: "
                     f"apt-get install --no-install-recommends {package}")
    studio = os.path.join(os.environ["OMBREL_BENCH_BIN"], "ombrel-studio")
    with tempfile.TemporaryDirectory() as folder, Screen() as screen:
        homes = {program: Path(folder) / str(at) for at, program in enumerate((studio, PEER))}
        results = {program: [] for program in homes}
        for home in homes.values():
            home.mkdir()
        for at in range(ROUNDS + 1):
            for program, home in homes.items():
                result = start(screen, program, home)
                if at > 0:  # the first time files are read from the disk
                    results[program].append(result)
    for at, name, unit, factor in ((0, "start until the first window", "ms", 1000),
                                   (1, "memory at most, with the first window", "MB", 1)):
        ours, peers = (round(factor * statistics.median(result[at] for result in results[program]), 1)
                       for program in (studio, PEER))
        ratio = round(peers / ours, 3)
        if options.json:
            print(json.dumps({"name": f"{name}, beside {PEER}", "ours": ours, "peer": peers,
                              "unit": unit, "ratio": ratio}))
        else:
            print(f"{name}, beside {PEER}: {ours} {unit}, {peers} {unit}, {ratio}")


if __name__ == "__main__":
    main()
