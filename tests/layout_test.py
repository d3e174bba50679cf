#!/usr/bin/env python3
"""What holds for the files of the source tree, whatever they do.

    layout_test.py [BUILD_FOLDER]

Includes run along the arrows of the architecture and in no circle, headers have their guard, every
test file is built (told by the compile_commands.json of BUILD_FOLDER), what the studio shows can be
translated, and no text holds marks of unfinished work or references that a reader of the tree
cannot follow.
"""
import json
import os
import re
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]

# What each folder of src/ may include, besides itself.
BASE = {"platform", "core"}
MIDDLE = {"knowledge", "retrieval", "evaluation", "agents", "flows", "generable", "export"}
ARROWS = {
    "platform": set(),
    "core": {"platform"},
    "retrieval": BASE,
    "knowledge": BASE | {"retrieval"},
    "evaluation": BASE | {"retrieval"},
    "agents": BASE | {"retrieval"},
    "flows": BASE | {"retrieval", "agents"},
    "generable": BASE,
    "export": BASE | {"retrieval"},
    "cli": BASE | MIDDLE,
    "shell": BASE | MIDDLE,
}

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)
QT_HEADER = re.compile(r"^(?:Qt\w*/)?Q[A-Za-z]\w*(?:\.h)?$")
PRAGMA_ONCE = re.compile(r"^#pragma once$", re.MULTILINE)
# The literals are in pieces so that this file does not hold the words that it looks for.
UNWANTED = [
    ("a reference to another document", re.compile(r"\bPart [0-9]+\.[0-9]+\b")),
    ("a mark of unfinished work", re.compile(r"\b(?:TO" r"DO|FIX" r"ME|XX" r"X)\b")),
    ("a test that is switched off", re.compile(r"\bGTEST_" r"SKIP\b|\bDISABLED" r"_[A-Z]\w*")),
]
# Words handed to what shows them, past tr().
SHOWN = re.compile(
    r"\b(?:set(?:Text|WindowTitle|ToolTip|PlaceholderText|Title|Subtitle|StatusTip|WhatsThis"
    r"|AccessibleName|AccessibleDescription|Prefix|Suffix|HeaderLabels?|DisabledReason|Label)"
    r"|addAction|addItem|addTab|addRow|showOrHide|makeButton|TextLabel|ElidedLabel|SectionTitle|Badge"
    r"|StatTile|ChoiceTile|QCheckBox|QRadioButton|QLabel|QPushButton|QAction|QGroupBox|alert|confirm)"
    r"\s*\(\s*(?:(?:QStringLiteral|QLatin1String|QString|QString::fromUtf8|toQt)\s*\(\s*)?"
    r'(?:u8?)?"((?:[^"\\]|\\.)*)"')
NOT_A_LETTER = re.compile(r"\\u[0-9a-fA-F]{4}|\\.|%L?[0-9n]")
WORD = re.compile(r"[A-Za-z]{2}")
# Folders whose files are not ours to word: build results, and inputs of tests and fuzz targets.
SKIPPED_FOLDERS = {".git", ".cache", "build", "corpus", "data", "__pycache__"}


def files_below(folder):
    for where, folders, names in os.walk(folder):
        folders[:] = sorted(f for f in folders if f not in SKIPPED_FOLDERS)
        for name in sorted(names):
            yield Path(where) / name


def text_of(path):
    """The text of a file; nothing for a file that is not text."""
    try:
        return path.read_text(encoding="utf-8")
    except (UnicodeDecodeError, OSError):
        return None


def include_faults(source_root):
    """Includes of the files in src/ against the arrows, and their circles."""
    faults = []
    graph = {}
    for path in files_below(source_root):
        if path.suffix not in (".h", ".cpp"):
            continue
        name = path.relative_to(source_root).as_posix()
        folder = name.split("/")[0]
        graph[name] = []
        if folder not in ARROWS:
            faults.append(f"src/{name}: the folder {folder} has no place in the architecture")
            continue
        for mark, target in INCLUDE.findall(path.read_text(encoding="utf-8")):
            if QT_HEADER.match(target) and folder != "shell":
                faults.append(f"src/{name}: includes {target}, and only shell/ knows Qt")
            if mark == "<":
                continue
            if not (source_root / target).is_file():
                faults.append(f"src/{name}: includes {target}, which is not in src/")
                continue
            graph[name].append(target)
            into = target.split("/")[0]
            if into != folder and into not in ARROWS[folder]:
                faults.append(f"src/{name}: includes {target}, but {folder} may not use {into}")
    circle = find_circle(graph)
    if circle:
        faults.append("a circle of includes: " + " -> ".join(circle))
    return faults


def find_circle(graph):
    """The files of one circle, the first of them again at the end; empty when there is none."""
    done = set()
    for start in graph:
        path, pending = [], [(start, iter(graph[start]))]
        while pending:
            name, targets = pending[-1]
            if name not in path:
                path.append(name)
            target = next(targets, None)
            if target is None:
                done.add(name)
                path.pop()
                pending.pop()
            elif target in path:
                return path[path.index(target):] + [target]
            elif target not in done:
                pending.append((target, iter(graph.get(target, []))))
    return []


def guard_faults(root):
    return [
        f"{path.relative_to(root)}: a header without #pragma once"
        for folder in ("src", "tests")
        for path in files_below(root / folder)
        if path.suffix == ".h" and not PRAGMA_ONCE.search(path.read_text(encoding="utf-8"))
    ]


def unbuilt_test_faults(root, build):
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    built = {os.path.realpath(os.path.join(c["directory"], c["file"])) for c in commands}
    return [
        f"{path.relative_to(root)}: no target builds this test"
        for path in files_below(root / "tests")
        if path.name.endswith("Test.cpp") and os.path.realpath(path) not in built
    ]


def untranslated_faults(root):
    faults = []
    for path in files_below(root / "src/shell"):
        if path.suffix not in (".h", ".cpp"):
            continue
        text = path.read_text(encoding="utf-8")
        for found in SHOWN.finditer(text):
            if WORD.search(NOT_A_LETTER.sub(" ", found.group(1))):
                line = text.count("\n", 0, found.start()) + 1
                faults.append(f"{path.relative_to(root)}:{line}: shown without tr(): {found.group(1)}")
    return faults


def word_faults(root):
    faults = []
    for path in files_below(root):
        text = text_of(path)
        if text is None:
            continue
        for what, pattern in UNWANTED:
            for found in pattern.finditer(text):
                line = text.count("\n", 0, found.start()) + 1
                faults.append(f"{path.relative_to(root)}:{line}: {what}: {found.group()}")
    return faults


class Layout(unittest.TestCase):
    build = None

    def assert_none(self, faults):
        self.assertFalse(faults, "\n" + "\n".join(faults))

    def test_includes_follow_the_arrows(self):
        self.assert_none(include_faults(ROOT / "src"))

    def test_headers_have_their_guard(self):
        self.assert_none(guard_faults(ROOT))

    def test_every_test_is_built(self):
        self.assertIsNotNone(self.build, "call this with the build folder as argument")
        self.assert_none(unbuilt_test_faults(ROOT, self.build))

    def test_what_is_shown_can_be_translated(self):
        self.assert_none(untranslated_faults(ROOT))

    def test_words_belong(self):
        self.assert_none(word_faults(ROOT))

    def test_every_folder_of_the_architecture_is_known(self):
        folders = {path.name for path in (ROOT / "src").iterdir() if path.is_dir()}
        self.assertGreaterEqual(folders, {"platform", "core"})
        self.assertLessEqual(folders, set(ARROWS))


class SelfCheck(unittest.TestCase):
    """Each check finds its fault in a small tree that has it, and nothing in one that has not."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name).resolve()
        self.write("src/platform/Text.h", "#pragma once\n#include <string>\n")
        self.write("src/core/Agent.h", '#pragma once\n#include "platform/Text.h"\n')
        self.write("src/shell/Window.cpp", '#include <QMainWindow>\n#include "core/Agent.h"\n')
        self.write("tests/core/AgentTest.cpp", "")
        self.write_commands("tests/core/AgentTest.cpp")

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def write_commands(self, *names):
        commands = [{"directory": str(self.root), "file": name, "command": "c++"} for name in names]
        self.write("build/compile_commands.json", json.dumps(commands))

    def faults(self):
        return (include_faults(self.root / "src") + guard_faults(self.root)
                + unbuilt_test_faults(self.root, self.root / "build")
                + untranslated_faults(self.root) + word_faults(self.root))

    def assert_found(self, *parts):
        faults = self.faults()
        self.assertEqual(len(faults), 1, faults)
        for part in parts:
            self.assertIn(part, faults[0])

    def test_a_good_tree_has_no_faults(self):
        self.assertEqual(self.faults(), [])

    def test_an_include_against_an_arrow(self):
        self.write("src/platform/Date.cpp", '#include "core/Agent.h"\n')
        self.assert_found("src/platform/Date.cpp", "platform may not use core")

    def test_an_include_between_neighbours(self):
        self.write("src/flows/Runner.h", "#pragma once\n")
        self.write("src/agents/Runner.cpp", ' #  include "flows/Runner.h" // as it was\n')
        self.assert_found("agents may not use flows")

    def test_each_allowed_arrow(self):
        for folder in ARROWS:
            self.write(f"src/{folder}/Empty.h", "#pragma once\n")
        for folder, targets in ARROWS.items():
            lines = [f'#include "{target}/Empty.h"\n' for target in sorted(targets)]
            self.write(f"src/{folder}/User.cpp", "".join(lines))
        self.assertEqual(self.faults(), [])

    def test_no_two_folders_use_each_other(self):
        for folder, targets in ARROWS.items():
            for target in targets:
                self.assertNotIn(folder, ARROWS[target], f"{folder} and {target}")

    def test_qt_outside_the_shell(self):
        for header in ("QString", "QtCore/QString", "qt.h", "queue"):
            self.write("src/core/Uses.cpp", f"#include <{header}>\n")
            if header.startswith("Q"):
                self.assert_found("only shell/ knows Qt", header)
            else:
                self.assertEqual(self.faults(), [])

    def test_an_include_of_nothing(self):
        self.write("src/core/Uses.cpp", '#include "Agent.h"\n')
        self.assert_found("includes Agent.h, which is not in src/")

    def test_an_unknown_folder(self):
        self.write("src/utils/Strings.cpp", "")
        self.assert_found("the folder utils has no place")

    def test_a_circle(self):
        self.write("src/core/A.h", '#pragma once\n#include "core/B.h"\n#include "core/Agent.h"\n')
        self.write("src/core/B.h", '#pragma once\n#include "core/C.h"\n')
        self.write("src/core/C.h", '#pragma once\n#include "core/Agent.h"\n#include "core/A.h"\n')
        self.assert_found("a circle", "core/A.h -> core/B.h -> core/C.h -> core/A.h")

    def test_two_ways_to_a_file_are_no_circle(self):
        self.write("src/core/A.h", '#pragma once\n#include "core/B.h"\n#include "core/Agent.h"\n')
        self.write("src/core/B.h", '#pragma once\n#include "core/Agent.h"\n')
        self.assertEqual(self.faults(), [])

    def test_a_header_without_guard(self):
        self.write("src/core/Bare.h", "// #pragma once\n")
        self.assert_found("src/core/Bare.h", "#pragma once")

    def test_a_test_that_is_not_built(self):
        self.write("tests/core/Lost/FlowTest.cpp", "")
        self.assert_found("tests/core/Lost/FlowTest.cpp", "no target builds this test")

    def test_words_past_the_translator(self):
        for shown in ('setText("Ready")', 'setToolTip(\n    QStringLiteral("%1 chunks").arg(2))',
                      'new TextLabel(toQt("Why"))', 'makeButton(u"Ask\\u2026")'):
            self.write("src/shell/Window.cpp", f"\n  label->{shown};\n")
            self.assert_found("src/shell/Window.cpp:2:", "without tr()")

    def test_signs_and_translated_words(self):
        self.write("src/shell/Window.cpp", 'a->setText(tr("Ready"));\nb->setText("\\u00b7 %1");\n'
                   'c->setObjectName("ready");\nd->setText(QStringLiteral("?"));\n')
        self.assertEqual(self.faults(), [])

    def test_words(self):
        for word in ("Part " + "3.1", "TO" + "DO", "FIX" + "ME", "XX" + "X",
                     "GTEST_" + "SKIP", "DISABLED" + "_Slow"):
            for name in ("src/core/Words.cpp", "docs/guide.md", "run"):
                self.write(name, f"first\n// see {word}: later\n")
                self.assert_found(f"{name}:2:", word)
                (self.root / name).unlink()

    def test_words_that_only_look_alike(self):
        self.write("docs/guide.md", "Part 3 of 1.2, mktemp XXXXXX, todos, Part I.2, PREFIXME\n")
        self.write("fuzz/corpus/x", "TO" + "DO")
        (self.root / "image.png").write_bytes(b"\xff\xfe" + b"TO" + b"DO")
        self.assertEqual(self.faults(), [])


if __name__ == "__main__":
    if len(sys.argv) > 1 and not sys.argv[1].startswith("-"):
        Layout.build = Path(sys.argv.pop(1)).resolve()
    unittest.main()
