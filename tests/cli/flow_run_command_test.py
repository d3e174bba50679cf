#!/usr/bin/env python3
"""Runs `ombrel flow run`, `chat` and `export` as a user would, with scripts in the place of the
Swift tools. Usage: flow_run_command_test.py OMBREL [TESTCASE…]"""
import json
import os
import pty
import re
import signal
import subprocess
import sys
import time
import unittest
from pathlib import Path

import command_line_test
from command_line_test import CommandLineTest


def event(kind, detail, **more):
    return json.dumps({"kind": kind, "detail": detail, "elapsedMS": 1, **more})


PATH_EVENTS = [event("flowStarted", "hi"), event("nodeEntered", "input: hi", node="Writer"),
               event("promptBuilt", "the prompt", tokenEstimate=7), event("outputReceived", "yes"),
               event("flowFinished", ".done: yes")]


class FlowRunTest(CommandLineTest):
    def setUp(self):
        super().setUp()
        for name in ("core/.build/debug", "runtime", "bin", "tmp"):
            (self.folder / name).mkdir(parents=True)
        self.environment |= {
            "OMBREL_RUNTIME_PATH": str(self.folder / "runtime"),
            "OMBREL_STUDIO_CORE_PATH": str(self.folder / "core"),
            "XDG_CACHE_HOME": str(self.folder / "cache"), "TMPDIR": str(self.folder / "tmp"),
            "PATH": f"{self.folder / 'bin'}:/usr/bin:/bin"}
        self.script("bin/swift", "exit 0")
        self.script("bin/swiftc", "exit 0")
        self.studio_cli("echo 'RESULT: .done'")
        self.ombrel("new", self.project, "--name", "My Shop")
        self.ombrel("agent", self.project, "add", "Writer")
        self.add_flow("Support", "Single-shot", ["request", "count:Int?", "urgent:Bool?"])
        self.add_flow("Helpdesk", "Conversational", ["message"])

    def script(self, name, text):
        path = self.folder / name
        path.write_text("#!/bin/sh\n" + text + "\n")
        path.chmod(0o755)

    def studio_cli(self, text):
        self.script("core/.build/debug/StudioCLI", text)

    def add_flow(self, name, kind, fields):
        description = {"kind": kind, "startInput": fields, "nodes": [{"end": "done"}],
                       "edges": [["Start", "Writer"], ["Writer", "done"]]}
        self.ombrel("flow", self.project, "add", name, "--from", "-", text=json.dumps(description))

    def flow(self, *arguments, **options):
        return self.ombrel("flow", self.project, *arguments, **options)

    def request(self):
        return json.loads((self.folder / "request").read_text())

    def keep_request(self):
        self.studio_cli(f"cp \"$1\" {self.folder / 'request'}\necho 'RESULT: .done'")

    def events(self):
        return "\n".join(f"echo '{line}'" for line in PATH_EVENTS)


class Run(FlowRunTest):
    def test_prints_the_result_alone(self):
        self.studio_cli("echo '▸ Running…' >&2\necho 'RESULT: .done: one\u2028two'")
        self.assertEqual(self.flow("run", "Support"), ".done: one\ntwo\n")
        self.assertEqual(self.errors, "")

    def test_shows_the_path_beside_the_result(self):
        self.studio_cli(self.events() + "\necho 'RESULT: .done: yes'")
        self.assertEqual(self.flow("run", "Support"), ".done: yes\n")
        self.assertIn("Run path · 3 steps", self.errors)

    def test_tells_outcome_trace_and_highlight_as_json(self):
        self.studio_cli(self.events() + "\necho 'RESULT: .done: yes'")
        told = json.loads(self.flow("run", "Support", "--json"))
        self.assertEqual(told["outcome"]["resultLines"], ["RESULT: .done: yes"])
        self.assertEqual([e["kind"] for e in told["outcome"]["trace"]],
                         ["flowStarted", "nodeEntered", "promptBuilt", "outputReceived",
                          "flowFinished"])
        self.assertNotIn("errorMessage", told["outcome"])
        self.assertIs(told["highlight"]["succeeded"], True)
        self.assertEqual(len(told["highlight"]["visitedNodeIDs"]), 3)

    def test_hands_the_input_over_by_its_types(self):
        self.keep_request()
        self.flow("run", "Support", "--input", "request=a=b", "--input", "count=12",
                  "--input", "urgent=yes")
        self.assertEqual(json.loads(self.request()["inputJSON"]),
                         {"request": "a=b", "count": 12, "urgent": True})
        self.flow("run", "Support", "--input-json",
                  '{"request": "x", "count": 3, "urgent": false}')
        self.assertEqual(json.loads(self.request()["inputJSON"]),
                         {"request": "x", "count": 3, "urgent": False})
        self.flow("run", "Support", "--input", "request=@-", text="from\nstdin")
        self.assertEqual(json.loads(self.request()["inputJSON"])["request"], "from\nstdin")

    def test_refuses_input_that_it_does_not_know(self):
        self.flow("run", "Support", "--input", "wish=x", status=2)
        self.assertIn("“Support” has no input field “wish”, but: request, count, urgent.",
                      self.errors)
        self.flow("run", "Support", "--input", "request", status=2)
        self.assertIn("is not of the form NAME=VALUE", self.errors)
        for text in ("[1]", "{"):
            self.flow("run", "Support", "--input-json", text, status=2)
            self.assertIn("The input is not a JSON object", self.errors)

    def test_shows_what_the_tools_said_when_the_run_fails(self):
        self.studio_cli("echo 'error: no such thing' >&2\necho '✗ The model is gone.' >&2\nexit 3")
        self.flow("run", "Support", status=1)
        self.assertEqual(self.errors, "error: no such thing\nThe model is gone.\n"
                         "ombrel: Run failed (exit 3) — see the console tab.\n")
        told = json.loads(self.flow("run", "Support", "--json", status=1))
        self.assertEqual(told["outcome"]["errorMessage"],
                         "Run failed (exit 3) — see the console tab.")

    def test_tells_the_program_that_there_is_no_model(self):
        self.studio_cli("echo \"RESULT: $OMBREL_MODEL_URL$OMBREL_MODEL_ERROR\"")
        self.assertRegex(self.flow("run", "Support"), "(not installed|No model is installed)")

    def test_refuses_a_conversation_and_a_flow_with_errors(self):
        self.flow("run", "Helpdesk", status=1)
        self.assertIn("use `ombrel flow chat`", self.errors)
        self.flow("disconnect", "Support", "Writer")
        self.flow("run", "Support", status=1)
        self.assertIn("“Support” has errors. `ombrel flow validate` lists them.", self.errors)

    def test_leaves_the_project_as_it_is(self):
        before = Path(self.project).read_bytes()
        self.flow("run", "Support", "--input", "request=x")
        self.assertEqual(Path(self.project).read_bytes(), before)

    def test_stopping_ends_what_was_started_and_removes_the_request(self):
        self.studio_cli(f"sleep 1000 &\necho $! > {self.folder / 'id.part'}\n"
                        f"mv {self.folder / 'id.part'} {self.folder / 'id'}\nwait")
        run = subprocess.Popen([command_line_test.OMBREL, "flow", self.project, "run", "Support"],
                               env=self.environment, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE)
        # The test's limit of time fails it when one of these never comes.
        while not (self.folder / "id").exists():
            time.sleep(0.01)
        self.assertEqual(len(os.listdir(self.folder / "tmp")), 1)
        run.send_signal(signal.SIGINT)
        _, errors = run.communicate()
        self.assertEqual((run.returncode, errors.decode()), (1, "ombrel: Stopped.\n"))
        self.assertEqual(os.listdir(self.folder / "tmp"), [])
        stat = Path("/proc") / (self.folder / "id").read_text().strip() / "stat"
        while self.state(stat) not in ("gone", "Z", "X"):
            time.sleep(0.01)
        self.assertIn(self.state(stat), ("gone", "Z", "X"))

    @staticmethod
    def state(stat):
        try:
            return stat.read_text().rpartition(") ")[2][0]
        except (FileNotFoundError, ProcessLookupError):
            return "gone"

    def test_a_terminal_shows_phases_and_steps_as_they_come(self):
        self.studio_cli("echo '▸ Compiling the flow…' >&2\necho compiled >&2\n" + self.events() +
                        f"\nwhile [ ! -e {self.folder / 'gate'} ]; do sleep 0.01; done\n"
                        "echo 'RESULT: .done: yes'")
        mine, theirs = pty.openpty()
        run = subprocess.Popen([command_line_test.OMBREL, "flow", self.project, "run", "Support"],
                               env=self.environment, stdout=subprocess.PIPE, stderr=theirs)
        os.close(theirs)
        shown = b""
        # The two streams of a tool come in no order.
        while b"  3 done" not in shown or b"compiled\r\n" not in shown:
            shown += os.read(mine, 65536)
        (self.folder / "gate").touch()
        output, _ = run.communicate()
        self.assertEqual(output.decode(), ".done: yes\n")
        # What the progress line shows is drawn over.
        text = re.sub(r"\r\x1b\[K([^\r\n]*(?=\r[^\n]))?", "", shown.decode())
        lines = text.replace("\r", "").splitlines()
        for expected in (["▸ Checking Ombrel's build tools are up to date…",
                          "▸ Compiling the flow…", "compiled"],
                         ["  1 Start", "  2 Writer", "  3 done"]):
            self.assertEqual([line for line in lines if line in expected], expected, shown)


class Chat(FlowRunTest):
    def setUp(self):
        super().setUp()
        # One reply for each message: its number.
        self.studio_cli(
            "/usr/bin/python3 - \"$1\" <<'END'\nimport json, sys\n"
            "messages = json.loads(json.load(open(sys.argv[1]))['inputJSON'])\n"
            "for number, message in enumerate(messages):\n"
            "    print('RESULT: %d %s' % (number + 1, message))\nEND")

    def test_answers_every_message_in_turn(self):
        self.assertEqual(self.flow("chat", "Helpdesk", "--message", "one", "--message", "two"),
                         "1 one\n2 two\n")

    def test_reads_lines_from_standard_input(self):
        self.assertEqual(self.flow("chat", "Helpdesk", text="one\n\n  \ntwo"), "1 one\n2 two\n")

    def test_tells_all_turns_as_json(self):
        told = json.loads(self.flow("chat", "Helpdesk", "--json", "--message", "one",
                                    "--message", "two"))
        self.assertEqual(told["turns"], [{"message": "one", "reply": "1 one"},
                                         {"message": "two", "reply": "2 two"}])
        self.assertEqual(told["outcome"]["resultLines"], ["RESULT: 1 one", "RESULT: 2 two"])

    def test_goes_on_after_a_message_that_failed(self):
        self.studio_cli("if [ -e failed ]; then echo 'RESULT: a'; echo 'RESULT: b'; else "
                        "touch failed; exit 1; fi")
        self.assertEqual(self.flow("chat", "Helpdesk", text="one\ntwo\n"), "b\n")
        self.assertIn("Run failed (exit 1)", self.errors)

    def test_fails_when_the_last_message_has_no_reply(self):
        self.studio_cli("exit 1")
        self.assertEqual(self.flow("chat", "Helpdesk", "--message", "one", status=1), "")
        self.assertIn("The last message has no reply.", self.errors)

    def test_refuses_a_single_shot_flow(self):
        self.flow("chat", "Support", "--message", "one", status=1)
        self.assertIn("use `ombrel flow run`", self.errors)


class Export(FlowRunTest):
    def test_tells_where_the_package_is(self):
        self.script("bin/swift", f"cp \"$5\" {self.folder / 'request'}\necho EXPORT_SUCCEEDED")
        self.assertEqual(self.flow("export", "out"),
                         f"Export succeeded.\n{self.folder / 'out' / 'MyShop'}\n")
        request = self.request()
        self.assertEqual(request["packageName"], "MyShop")
        self.assertEqual(request["destinationDirectory"], str(self.folder / "out"))
        self.assertEqual([flow["name"] for flow in request["flows"]], ["Support", "Helpdesk"])
        self.assertEqual(self.flow("export", "out", "--name", "Other").splitlines()[1],
                         str(self.folder / "out" / "Other"))

    def test_names_the_flows_that_were_left_out(self):
        self.script("bin/swift", "echo EXPORT_SUCCEEDED")
        self.flow("disconnect", "Support", "Start")
        told = json.loads(self.flow("export", "out", "--json"))
        self.assertEqual(told, {"isSuccess": True, "rawOutput": "EXPORT_SUCCEEDED\n",
                                "message": "Export succeeded. (skipped, had errors: Support)"})

    def test_fails_with_what_the_tool_said(self):
        self.script("bin/swift", "echo 'no room' >&2; exit 1")
        self.flow("export", "out", status=1)
        self.assertIn("no room", self.errors)
        self.assertIn("ombrel: Export failed — see the details below.", self.errors)


if __name__ == "__main__":
    command_line_test.OMBREL = sys.argv.pop(1)
    unittest.main()
