#!/usr/bin/env python3
"""Runs `ombrel flow` as a user would. Usage: flow_command_test.py OMBREL [TESTCASE…]"""
import json
import sys
import unittest

import command_line_test
from command_line_test import CommandLineTest

DESCRIPTION = {
    "kind": "Conversational",
    "maxHops": 4,
    "startInput": ["request=What the customer wrote", "urgent:Bool?"],
    "contextFields": ["history"],
    "nodes": [
        {"branch": {"field": "amount", "operator": "greaterThan", "value": "100"},
         "name": "isLarge", "position": [700, 40.5]},
        {"end": "large"},
        {"end": "small", "carriesOutput": False},
    ],
    "edges": [
        ["Start", "Triage"], ["Triage.refund", "Refund desk"], ["Refund desk", "isLarge"],
        ["isLarge.true", "status"], ["status", "large"], ["isLarge.false", "small"],
    ],
}
TRACE = [
    {"kind": "flowStarted", "detail": "Give it back", "elapsedMS": 0},
    {"kind": "nodeEntered", "detail": "input: Give it back", "elapsedMS": 1, "node": "Triage"},
    {"kind": "promptBuilt", "detail": "…", "elapsedMS": 1, "node": "Triage", "tokenEstimate": 9},
    {"kind": "outputReceived", "detail": "refund", "elapsedMS": 5},
    {"kind": "routeTaken", "detail": "refund", "elapsedMS": 5},
    {"kind": "nodeEntered", "detail": "input: Give it back", "elapsedMS": 6, "node": "Refund desk"},
    {"kind": "outputReceived", "detail": "amount: 120", "elapsedMS": 8},
    {"kind": "branch", "detail": "amount > 100 -> true", "elapsedMS": 8},
    {"kind": "toolCalled", "detail": "{}", "elapsedMS": 8, "node": "status"},
    {"kind": "flowFinished", "detail": ".large: {}", "elapsedMS": 9},
]


class FlowCommandTest(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.ombrel("new", self.project)

    def flow(self, *arguments, **options):
        return self.json("flow", self.project, *arguments, **options)

    def refused(self, *arguments, status=1):
        self.ombrel("flow", self.project, *arguments, status=status)
        return self.errors

    def add_agents(self):
        self.ombrel("agent", self.project, "add", "Triage")
        self.ombrel("agent", self.project, "set", "Triage", "--output-case", "refund",
                    "--output-case", "other")
        self.ombrel("agent", self.project, "add", "Refund desk")
        self.ombrel("agent", self.project, "set", "Refund desk", "--output-json", "-",
                    text=json.dumps({"object": {"_0": [{
                        "id": "00000000-0000-4000-8000-000000000001", "name": "amount",
                        "kind": {"int": {}}, "isOptional": False}]}}))
        self.ombrel("tool", self.project, "add", "status")

    def add_described(self, description=None):
        self.add_agents()
        return self.flow("add", "Support", "--from", "-",
                         text=json.dumps(description or DESCRIPTION))

    @staticmethod
    def ids(flow):
        """The ids of nodes by kind and what tells them apart."""
        kinds = [(*node["kind"], *node["kind"].values(), node["id"]) for node in flow["nodes"]]
        return {kind: [id for k, _, id in kinds if k == kind] for kind, _, _ in kinds}


class Drawing(FlowCommandTest):
    def test_a_new_flow_has_a_start_and_two_issues(self):
        made = self.flow("add")
        self.assertEqual(made["name"], "New Flow 1")
        self.assertEqual([node["kind"] for node in made["nodes"]], [{"start": {}}])
        self.assertEqual(self.flow("list"), [{
            "id": made["id"], "name": "New Flow 1", "kind": "Single-shot", "nodes": 1, "edges": 0,
            "errors": 1, "warnings": 1}])
        self.assertEqual(self.flow(), self.flow("list"))
        self.assertEqual(self.json("show", self.project)["flows"], [made])

    def test_a_description_becomes_a_flow(self):
        made = self.add_described()
        self.assertEqual(made["name"], "Support")
        self.assertEqual(made["kind"], "Conversational")
        self.assertEqual((made["maxHops"], made["maxHistoryTokens"]), (4, 2000))
        self.assertEqual([(field["name"], field["kind"], field["isOptional"])
                          for field in made["startInput"]],
                         [("request", {"string": {}}, False), ("urgent", {"bool": {}}, True)])
        self.assertEqual(made["contextFields"][0]["name"], "history")
        ids = self.ids(made)
        edges = [(edge["fromNodeID"], edge.get("fromPort"), edge["toNodeID"])
                 for edge in made["edges"]]
        triage, desk = ids["agent"]
        large, small = ids["end"]
        self.assertEqual(edges, [
            (ids["start"][0], None, triage), (triage, "refund", desk),
            (desk, None, ids["branch"][0]), (ids["branch"][0], "true", ids["tool"][0]),
            (ids["tool"][0], None, large), (ids["branch"][0], "false", small)])
        positions = {node["id"]: node["position"] for node in made["nodes"]}
        self.assertEqual(positions[ids["branch"][0]], [700, 40.5])
        self.assertEqual(positions[ids["start"][0]], [80, 160])
        self.assertEqual(len(set(map(tuple, positions.values()))), len(positions))
        self.assertEqual(self.flow("validate", "Support"), [])

    def test_a_whole_record_is_taken_as_it_is(self):
        made = self.add_described()
        copied = self.flow("add", "--from", self.write("flow.json", json.dumps(made)))
        self.assertNotEqual(copied["id"], made["id"])
        self.assertEqual(dict(copied, id=made["id"]), made)

    def test_a_description_that_is_wrong_changes_nothing(self):
        self.add_agents()
        for change, problem in [
            ({"edges": [["Start", "Nobody"]]},
             "“Nobody” is neither a node nor an agent or a tool."),
            ({"edges": [["Triage", "status"]]},
             "“Triage” is no output. “Triage” has: Triage.refund, Triage.other."),
            ({"edges": [["Triage.sales", "status"]]}, "“Triage.sales” is no output."),
            ({"edges": [["Start", "Triage"], ["Start", "status"]]},
             "“Start” is connected twice."),
            ({"nodes": [{"end": "x"}], "edges": [["x", "Triage"]]},
             "“x” has no output to connect."),
            ({"nodes": [{"end": "x"}, {"end": "x"}], "edges": [["Start", "x"]]},
             "Several nodes are called “x”."),
            ({"nodes": [{"agent": "Nobody"}]}, "There is no agent named “Nobody”."),
            ({"nodes": [{"tool": "Triage"}]}, "There is no tool named “Triage”."),
            ({"nodes": [{"end": "x", "tool": "status"}]}, "nodes[0]: expected one of the keys"),
            ({"nodes": [{"branch": {"operator": "equals"}}]},
             "nodes[0].branch.field: the key is missing"),
            ({"node": []}, "there is nothing called “node”"),
            ({"edges": [["Start"]]}, "edges[0]: expected 2 elements"),
            ({"kind": "Chat"}, "kind: expected one of \"Single-shot\", \"Conversational\""),
            ({"startInput": ["x:Text"]}, "there is no type “Text”"),
        ]:
            with self.subTest(change):
                path = self.write("flow.json", json.dumps(change))
                status = 2 if "startInput" in change else 1
                self.assertIn(problem, self.refused("add", "--from", path, status=status))
        self.refused("add", "--from", self.write("flow.json", "{"))
        self.refused("add", "--from", "missing.json")
        self.assertEqual(self.flow(), [])

    def test_nodes_and_connections_are_drawn_one_by_one(self):
        self.add_agents()
        self.flow("add", "Support")
        self.flow("node", "Support", "agent", "Triage")
        self.flow("node", "Support", "agent", "Refund desk", "--at", "12.5", "-30")
        self.flow("node", "Support", "branch", "amount", "lessThan", "5")
        self.flow("node", "Support", "end", "done", "--no-output")
        self.flow("connect", "Support", "Start", "Triage")
        self.flow("connect", "Support", "Triage.refund", "done")
        self.flow("connect", "Support", "Triage.refund", "Refund desk")
        drawn = self.flow("connect", "Support", "amount.true", "done")
        self.assertEqual([list(node["kind"])[0] for node in drawn["nodes"]],
                         ["start", "agent", "agent", "branch", "end"])
        self.assertEqual(drawn["nodes"][2]["position"], [12.5, -30])
        self.assertEqual(drawn["nodes"][3]["position"], [800, 140])
        self.assertEqual(drawn["nodes"][3]["kind"],
                         {"branch": {"field": "amount", "operator": "lessThan", "value": "5"}})
        self.assertEqual(drawn["nodes"][4]["kind"],
                         {"end": {"caseName": "done", "carriesOutput": False}})
        self.assertEqual([edge.get("fromPort") for edge in drawn["edges"]],
                         [None, "refund", "true"])
        self.assertEqual(len(self.flow("disconnect", "Support", "Triage.refund")["edges"]), 2)
        self.assertIn("“Triage.refund” isn't connected.",
                      self.refused("disconnect", "Support", "Triage.refund"))
        moved = self.flow("move-node", "Support", "done", "1", "2")
        self.assertEqual(moved["nodes"][4]["position"], [1, 2])
        end = moved["nodes"][4]["id"]
        self.assertEqual(len(self.flow("remove-node", "Support", end)["edges"]), 1)
        self.assertIn("Start can't be removed.", self.refused("remove-node", "Support", "Start"))
        self.assertIn("There is no node “done” in “Support”. There are: Refund desk, Start, Triage,"
                      " amount.", self.refused("connect", "Support", "Start", "done"))
        laid_out = self.flow("lay-out", "Support")
        self.assertEqual(laid_out["nodes"][1]["position"], [340, 160])

    def test_settings_copies_and_removal(self):
        self.flow("add", "Support")
        changed = self.flow("set", "Support", "--name", "Chat", "--kind", "Conversational",
                            "--max-hops", "3", "--max-history-tokens", "400", "--input",
                            "message", "--input", "count:Int", "--context", "history")
        self.assertEqual((changed["name"], changed["kind"], changed["maxHops"],
                          changed["maxHistoryTokens"]), ("Chat", "Conversational", 3, 400))
        self.assertEqual([field["name"] for field in changed["startInput"]], ["message", "count"])
        self.assertEqual(self.flow("set", "Chat", "--no-context")["contextFields"], [])
        self.refused("set", "Chat", "--max-hops", "51", status=2)
        self.refused("set", "Chat", "--kind", "Talk", status=2)
        copy = self.flow("duplicate", "Chat")
        self.assertEqual(copy["name"], "Chat copy")
        self.assertEqual([row["name"] for row in self.flow("remove", "Chat")], ["Chat copy"])
        self.assertIn("There is no flow named “Chat”.", self.refused("show", "Chat"))

    def test_people_see_names(self):
        self.add_described()
        shown = self.ombrel("flow", self.project, "show", "Support")
        self.assertRegex(shown, r"Triage\.refund +Refund desk")
        self.assertRegex(shown, r"Branch +amount +greaterThan 100")
        self.assertIn("request:String, urgent:Bool?", shown)


class Checking(FlowCommandTest):
    def test_errors_make_validate_fail(self):
        made = self.flow("add", "Support")
        self.assertEqual(self.flow("validate", "Support", status=1), [
            {"severity": "error", "message": "Start isn't connected to anything.",
             "nodeID": made["nodes"][0]["id"]},
            {"severity": "warning",
             "message": "No End node is reachable from Start — this flow can never finish."}])
        self.assertIn("“Support” has 1 error.", self.errors)
        self.assertIn("Start isn't connected", self.ombrel("flow", self.project, "validate",
                                                           "Support", status=1))
        self.assertIn("“Support” has 1 error.", self.refused("spec", "Support"))

    def test_warnings_do_not(self):
        self.add_described(dict(DESCRIPTION, nodes=DESCRIPTION["nodes"] + [{"end": "stray"}]))
        issues = self.flow("validate", "Support")
        self.assertEqual([issue["message"] for issue in issues],
                         ["End (.stray) isn't reachable from Start."])

    def test_spec_is_the_tree_that_is_run(self):
        self.add_described()
        spec = self.flow("spec", "Support")
        self.assertEqual(list(spec), ["name", "kind", "maxHops", "maxHistoryTokens", "startInput",
                                      "contextFields", "firstAgent", "routing"])
        self.assertEqual(spec["firstAgent"]["name"], "Triage")
        cases = spec["routing"]["byCase"]["_0"]
        self.assertEqual(cases["other"], {"end": {"caseName": "other", "carriesOutput": False}})
        desk = cases["refund"]["agent"]
        self.assertEqual(desk["_0"]["name"], "Refund desk")
        self.assertEqual(desk["next"], {"single": {"_0": {"branch": {
            "field": "amount", "operator": "greaterThan", "value": "100",
            "then": {"tool": {
                "_0": {"name": "status", "mockResponseJSON": "{}"},
                "next": {"end": {"caseName": "large", "carriesOutput": True}}}},
            "otherwise": {"end": {"caseName": "small", "carriesOutput": False}}}}}})
        self.assertEqual(json.loads(self.ombrel("flow", self.project, "spec", "Support")), spec)

    def test_a_flow_that_begins_without_an_agent_has_no_spec(self):
        self.flow("add", "Support", "--from", "-",
                  text=json.dumps({"nodes": [{"end": "x"}], "edges": [["Start", "x"]]}))
        self.assertEqual(self.flow("validate", "Support"), [])
        self.assertIn("Start isn't connected to an agent.", self.refused("spec", "Support"))


class Replay(FlowCommandTest):
    def lines(self, events):
        return "".join(json.dumps(event) + "\n" for event in events) + "RESULT: .large: {}\n"

    def test_a_recorded_trace_gives_the_path(self):
        made = self.add_described()
        ids = self.ids(made)
        path = self.write("trace.jsonl", "Building…\n" + self.lines(TRACE))
        shown = self.flow("replay", "Support", path)
        self.assertEqual(shown["flowID"], made["id"])
        self.assertEqual(shown["visitedNodeIDs"], [
            ids["start"][0], *ids["agent"], ids["branch"][0], ids["tool"][0], ids["end"][0]])
        self.assertEqual(set(shown["visitedEdgeIDs"]),
                         {edge["id"] for edge in made["edges"][:5]})
        self.assertEqual(shown["values"][ids["agent"][0]],
                         {"input": "Give it back", "output": "refund", "tokenEstimate": 9,
                          "step": 2})
        self.assertEqual((shown["isLive"], shown["succeeded"]), (False, True))
        self.assertEqual(shown["banner"], "Run path · 6 steps")
        self.assertNotIn("failedNodeID", shown)
        text = self.ombrel("flow", self.project, "replay", "Support", "-", text=self.lines(TRACE))
        self.assertIn("Run path · 6 steps", text)
        self.assertRegex(text, r"2 +Agent +Triage +Give it back +refund")

    def test_a_trace_that_ends_in_an_error_fails_its_node(self):
        ids = self.ids(self.add_described())
        events = TRACE[:2] + [{"kind": "error", "detail": "No model", "elapsedMS": 2}]
        shown = self.flow("replay", "Support", "-", text=self.lines(events))
        self.assertEqual(shown["failedNodeID"], ids["agent"][0])
        self.assertIs(shown["succeeded"], False)
        self.assertIn("failed: No model", self.ombrel("flow", self.project, "replay", "Support",
                                                      "-", text=self.lines(events)))

    def test_a_trace_that_stops_shows_a_run_that_goes_on(self):
        ids = self.ids(self.add_described())
        shown = self.flow("replay", "Support", "-", text=self.lines(TRACE[:2]))
        self.assertEqual((shown["isLive"], shown["activeNodeID"]), (True, ids["agent"][0]))
        self.assertEqual(shown["banner"], "Running · step 2")

    def test_a_file_without_steps_is_refused(self):
        self.flow("add", "Support")
        path = self.write("trace.jsonl", "RESULT: .done\n\xff\n")
        self.assertIn("There is no step of a run", self.refused("replay", "Support", path))


if __name__ == "__main__":
    command_line_test.OMBREL = sys.argv.pop(1)
    unittest.main()
