#!/usr/bin/env python3
"""What an installed studio consists of, and the Debian package of it.

    packaging_test.py BUILD_FOLDER

Needs no rights: it installs below a temporary folder and takes the package apart.
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = None
GERMAN = "Baut KI-Funktionen aus den eigenen Dokumenten."


def run(*command, **options):
    result = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, check=False, timeout=240, **options)
    if result.returncode != 0:
        raise AssertionError(f"{command} ended with {result.returncode}:\n{result.stdout}")
    return result.stdout


def qt_tool(name):
    return Path(run("qtpaths6", "--query", "QT_HOST_BINS").strip()) / name


class Installed(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        run("cmake", "--install", BUILD, "--prefix", "/usr",
            env=dict(os.environ, DESTDIR=str(cls.folder / "root")))
        cls.usr = cls.folder / "root/usr"
        cls.share = cls.usr / "share"
        runtime = cls.folder / "runtime"
        runtime.mkdir(mode=0o700)
        cls.environment = {name: value for name, value in os.environ.items()
                           if not name.startswith(("OMBREL_", "XDG_", "LC_", "LANG"))}
        cls.environment.update(HOME=str(cls.folder), XDG_RUNTIME_DIR=str(runtime),
                               QT_QPA_PLATFORM="offscreen", LC_ALL="C.UTF-8")

    def call(self, program, *arguments, **changes):
        return run(self.usr / "bin" / program, *arguments, env=dict(self.environment, **changes))

    def test_every_file_has_its_place(self):
        programs = ["bin/ombrel", "bin/ombrel-studio", "libexec/ombrel/ombrel-pdf-helper",
                    "share/ombrel/models/install-models"]
        files = ["share/applications/ombrel-studio.desktop",
                 "share/mime/packages/ombrel-studio.xml",
                 "share/icons/hicolor/scalable/apps/ombrel-studio.svg",
                 "share/icons/hicolor/scalable/mimetypes/application-x-ombrel-project.svg",
                 "share/man/man1/ombrel.1", "share/man/man1/ombrel-studio.1",
                 "share/doc/ombrel-studio/copyright"]
        for name in ("samples", "OmbrelRuntime", "OmbrelStudioCore"):
            self.assertTrue((self.share / "ombrel" / name).is_dir(), name)
        for package in ("OmbrelRuntime", "OmbrelStudioCore"):
            files.append(f"share/ombrel/{package}/Package.swift")
            self.assertTrue(list((self.share / "ombrel" / package).glob("Sources/**/*.swift")))
        for sample in (ROOT / "resources/samples").iterdir():
            self.assertTrue((self.share / "ombrel/samples" / sample.name).exists(), sample.name)
        for name in programs + files:
            path = self.usr / name
            self.assertTrue(path.is_file() and not path.is_symlink(), name)
            self.assertEqual(os.access(path, os.X_OK), name in programs, name)

    def test_nothing_else_and_no_link_is_installed(self):
        top = {path.relative_to(self.usr).as_posix() for path in self.usr.glob("*")}
        self.assertEqual(top, {"bin", "libexec", "share"})
        self.assertEqual({path.name for path in self.share.glob("*")},
                         {"applications", "doc", "icons", "man", "mime", "ombrel"})
        self.assertFalse([path for path in self.usr.rglob("*") if path.is_symlink()])

    def test_every_library_that_is_compiled_in_has_its_license_told(self):
        told = (self.share / "doc/ombrel-studio/copyright").read_text(encoding="utf-8")
        self.assertTrue(told.startswith("Format: https://www.debian.org/doc/packaging-manuals/"))
        used = re.findall(r"^License: (.+)$", told, re.MULTILINE)
        for name in {word for line in used for word in line.split(" and ")}:
            self.assertIn(f"\nLicense: {name}\n ", told)
        included = set()
        for source in (ROOT / "src").rglob("*.[ch]*"):
            included |= set(re.findall(r"#include <(rapidjson|CLI|tl)/",
                                       source.read_text(encoding="utf-8")))
        self.assertEqual(included, {"rapidjson", "CLI", "tl"})
        for library in ("RapidJSON", "CLI11", "expected"):
            self.assertIn(f"({library})", told)

    def test_the_programs_run_from_there(self):
        version = self.call("ombrel", "--version").strip()
        self.assertRegex(version, r"^\d+\.\d+\.\d+$")
        self.assertEqual(self.call("ombrel-studio", "--version").strip(), f"Ombrel Studio {version}")

    def test_the_helper_reads_a_pdf_there(self):
        shown = self.call("ombrel", "chunk", self.share / "ombrel/samples/weather-mast.pdf")
        self.assertIn("mast", shown.lower())

    def test_the_manual_names_every_command(self):
        commands = re.findall(r"^  ([a-z]+) {2,}", self.call("ombrel", "--help").split(
            "Subcommands:")[1].split("A first session")[0], re.MULTILINE)
        self.assertGreater(len(commands), 15)
        manual = (self.share / "man/man1/ombrel.1").read_text(encoding="utf-8")
        section = manual.split(".SH COMMANDS")[1].split(".SH")[0]
        named = {word for line in section.splitlines() if re.match(r"\.BR? ", line)
                 for word in re.findall(r"[a-z]+", line[3:])}
        self.assertEqual(named, set(commands))

    def test_the_desktop_knows_program_and_projects(self):
        entry = self.share / "applications/ombrel-studio.desktop"
        self.assertEqual(run("desktop-file-validate", entry), "")
        keys = dict(re.findall(r"^(\w+)=(.*)$", entry.read_text(encoding="utf-8"), re.MULTILINE))
        icons = self.share / "icons/hicolor/scalable"
        self.assertTrue((icons / "apps" / (keys["Icon"] + ".svg")).is_file())
        self.assertTrue((self.usr / "bin" / keys["TryExec"]).is_file())
        space = "{http://www.freedesktop.org/standards/shared-mime-info}"
        tree = ElementTree.parse(self.share / "mime/packages/ombrel-studio.xml")
        kind = tree.getroot().find(space + "mime-type")
        self.assertIn(kind.get("type"), keys["MimeType"].split(";"))
        icon = kind.find(space + "icon").get("name")
        self.assertTrue((icons / "mimetypes" / (icon + ".svg")).is_file())
        self.assertEqual(kind.find(space + "glob").get("pattern"), "*.ombrel")

    def test_a_translation_beside_the_programs_is_shown(self):
        source = self.folder / "ombrel-studio_de.ts"
        source.write_text(
            '<?xml version="1.0"?><!DOCTYPE TS><TS version="2.1" language="de"><context>'
            "<name>Main</name><message><source>Builds on-device AI features from your own documents."
            f"</source><translation>{GERMAN}</translation></message></context></TS>",
            encoding="utf-8")
        folder = self.share / "ombrel/translations"
        folder.mkdir(exist_ok=True)
        compiled = folder / "ombrel-studio_de.qm"
        run(qt_tool("lrelease"), source, "-qm", compiled)
        self.addCleanup(folder.rmdir)
        self.addCleanup(compiled.unlink)
        self.assertIn(GERMAN, self.call("ombrel-studio", "--help", LC_ALL="de_AT.UTF-8"))
        self.assertNotIn(GERMAN, self.call("ombrel-studio", "--help", LC_ALL="fr_FR.UTF-8"))


class Translations(unittest.TestCase):
    def test_every_text_is_found_with_the_class_that_looks_it_up(self):
        with tempfile.TemporaryDirectory() as folder:
            collected = Path(folder) / "studio_de.ts"
            told = run(qt_tool("lupdate"), "-I", ROOT / "src", ROOT / "src/shell",
                       "-locations", "none", "-ts", collected)
            for complaint in ("Qualifying with unknown", "lacks Q_OBJECT", "Cannot invoke tr"):
                self.assertNotIn(complaint, told)
            contexts = {context.findtext("name"): len(context.findall("message"))
                        for context in ElementTree.parse(collected).getroot().iter("context")}
        self.assertIn("ombrel::WelcomeView", contexts)
        self.assertIn("ombrel::RecoveryDialog", contexts)
        self.assertGreater(sum(contexts.values()), 400)


class DebianPackage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        run("cpack", "--config", Path(BUILD) / "CPackConfig.cmake", "-B", folder.name,
            cwd=folder.name)
        cls.package, = Path(folder.name).glob("*.deb")

    def field(self, name):
        return run("dpkg-deb", "--field", self.package, name).strip()

    def test_it_says_what_it_is(self):
        self.assertEqual(self.field("Package"), "ombrel-studio")
        self.assertTrue(self.package.name.startswith(f"ombrel-studio_{self.field('Version')}_"))
        self.assertIn("Build on-device AI features", self.field("Description"))

    def test_it_depends_on_what_it_loads(self):
        needed = {entry.split()[0] for entry in self.field("Depends").split(", ")}
        for package in ("libc6", "libqt6widgets6", "libqt6gui6", "libqt6svg6", "libicu72", "libcurl4",
                        "libcld2-0", "libpoppler-cpp0v5", "python3"):
            self.assertIn(package, needed)
        self.assertFalse([package for package in needed if package.endswith("-dev")])

    def test_it_holds_the_files_below_usr_for_root(self):
        lines = [line for line in run("dpkg-deb", "--contents", self.package).splitlines()
                 if not line.startswith("d")]
        for name in ("bin/ombrel", "bin/ombrel-studio", "libexec/ombrel/ombrel-pdf-helper",
                     "share/ombrel/models/install-models", "share/ombrel/OmbrelRuntime/Package.swift",
                     "share/ombrel/OmbrelStudioCore/Package.swift", "share/man/man1/ombrel.1"):
            self.assertTrue(any(line.endswith(" ./usr/" + name) for line in lines), name)
        for line in lines:
            self.assertIn(" root/root ", line)
            self.assertIn(" ./usr/", line)


if __name__ == "__main__":
    BUILD = sys.argv.pop(1)
    unittest.main()
