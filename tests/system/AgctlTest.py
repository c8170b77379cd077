"""agctl against a scripted supervisor."""

import json
import unittest

import AgctlServer
from AgctlCase import APP, SLOT, AgctlCase


class ShowTest(AgctlCase):
    def test_slots_are_a_table_with_aligned_columns(self):
        self.rules["GET /slots"] = 200, {"slots": [SLOT, {**SLOT, "slot": 12, "name": "数据",
                                                          "state": "silent"}]}
        result = self.assert_ends(0, "slot", "list")
        self.assertEqual(result.stdout.splitlines(), [
            "SLOT  NAME  STATE   ADMISSION  RUNS  BEATS  MISSED  LAST BEAT",
            "   3  left  alive   valid      2.4      17       1  2 s ago",
            "  12  数据  silent  valid      2.4      17       1  2 s ago"])
        self.assertEqual(result.stderr, "")

    def test_json_is_the_supervisors_document_in_one_line(self):
        document = {"slots": [SLOT], "big": 18446744073709551615, "text": "ü\x9b\u202e"}
        self.rules["GET /slots"] = 200, document
        result = self.assert_ends(0, "slot", "list", "-o", "json")
        self.assertEqual(result.stdout.count("\n"), 1)
        self.assertEqual(json.loads(result.stdout), document)
        self.assertTrue(result.stdout.isascii())

    def test_several_slots_are_all_tried_and_the_worst_counts(self):
        self.rules["GET /slots/3"] = self.rules["GET /slots/5"] = 200, SLOT
        self.rules["GET /slots/4"] = AgctlServer.problem(404, "unknown-slot")
        result = self.assert_ends(4, "slot", "show", "3-5", "-o", "json",
                                  says=("slot 4: It is refused: because of unknown-slot",
                                        "remedy: see the slots with: agctl slot list", "2 of 3 slots shown"))
        lines = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual([line.get("target") for line in lines], [None, "slot 4", None])
        self.assertEqual(lines[1]["type"], "/problems/unknown-slot")
        self.assertEqual(self.targets(), [f"GET /api/v1/slots/{slot}" for slot in (3, 4, 5)])

    def test_what_a_blade_says_does_not_reach_the_terminal_raw(self):
        hostile = "\x1b]0;owned\x07\r\n\x9b31m\u202e\x7f"
        self.rules["GET /apps"] = 200, {"apps": [{**APP, "version": hostile, "id": hostile}]}
        self.rules["GET /apps/x"] = 200, {hostile: {hostile: [hostile, {hostile: hostile}]}}
        self.rules["GET /apps/y"] = AgctlServer.problem(404, "unknown-app", detail=hostile,
                                                        title=hostile, remedy=hostile)
        for arguments, code in ((["app", "list"], 0), (["app", "show", "x"], 0),
                                (["app", "show", "y"], 4), (["app", "show", "y", "-o", "json"], 4)):
            with self.subTest(arguments):
                result = self.assert_ends(code, *arguments)
                text = result.stdout + result.stderr
                for character in "\x1b\x07\r\x9b\u202e\x7f":
                    self.assertNotIn(character, text)
                self.assertIn("owned", text)

    def test_instances_and_jobs_named_like_nouns_are_found(self):
        self.rules["GET /apps/job"] = self.rules["GET /apps/.."] = 200, APP
        self.assert_ends(0, "app", "show", "job")
        self.assert_ends(0, "app", "show", "..")
        self.assertEqual(self.targets(), ["GET /api/v1/apps/job", "GET /api/v1/apps/.."])

    def test_filters_become_the_query(self):
        self.rules["GET /jobs"] = 200, {"jobs": [AgctlServer.Job(17, app="fw-1").document]}
        result = self.assert_ends(0, "job", "list", "--slot", 3, "--app", "fw-1", "--state",
                                  "failed,unknown", "--before", 99, "--limit", 5)
        self.assertEqual(self.server.asked()[0].query,
                         {"slot": "3", "app": "fw-1", "state": "failed,unknown", "before": "99",
                          "limit": "5"})
        self.assertIn("2026-01-01 00:00:00Z", result.stdout)


class RefusalTest(AgctlCase):
    def test_what_cannot_be_is_refused_before_anything_is_sent(self):
        for arguments in (
                ["slot", "format", "0", "--yes"], ["slot", "format", "4-1", "--yes"],
                ["slot", "format", "1,,2", "--yes"], ["slot", "format", "--yes"],
                ["slot", "format", "1", "--yes", "--unknown"], ["slot", "format", "1", "2"],
                ["slot", "log-level", "1", "loud"], ["slot", "list", "-o", "xml"],
                ["slot", "list", "--timeout", "0"], ["slot", "list", "--timeout", "nan"],
                ["slot", "list", "--timeout", "-1"], ["slot", "list", "--timeout", "1e9"],
                ["app", "show", "a/b"], ["app", "show", "x" * 129], ["app", "list", "--slot", "0"],
                ["app", "create", "a", "--slot", "1"],
                ["app", "create", "a", "--slot", "1", "--package", "p", "--cores", "0"],
                ["app", "create", "a", "--slot", "1", "--package", "p", "--disk", "4294967296"],
                ["app", "create", "a", "--slot", "1", "--package", "p\x1b"],
                ["app", "upgrade", "a"], ["job", "show", "0"], ["job", "show", "x"],
                ["job", "list", "--limit", "1001"], ["job", "list", "--state", "lost"],
                ["timezone", "set", "x" * 256], ["fault", "clear"],
                ["fault", "clear", "a", "--all"], ["fault", "set", "a"],
                ["fault", "set", "a", "--action", "explode"], ["slot"], ["hat", "list"], []):
            with self.subTest(arguments):
                result = self.assert_ends(2, *arguments, says="agctl: ")
                self.assertEqual(result.stdout, "")
        self.assertEqual(self.targets(), [])

    def test_what_destroys_wants_a_word_and_can_be_looked_at_first(self):
        job = AgctlServer.Job(0).document
        self.rules["POST /slots/3/format"] = 200, {"would": job}
        self.rules["DELETE /apps/fw-1"] = 200, {"wouldDelete": APP}
        for arguments in (["slot", "format", "3"], ["slot", "deregister", "3"],
                          ["app", "uninstall", "fw-1"], ["app", "delete", "fw-1"]):
            with self.subTest(arguments):
                self.assert_ends(2, *arguments, says="--yes")
        self.assertEqual(self.targets(), [])
        result = self.assert_ends(0, "slot", "format", "3", "--dry-run", says="nothing was done")
        self.assertIn("formatDisk", result.stdout)
        self.assert_ends(0, "app", "delete", "fw-1", "--dry-run", says="nothing was done")
        self.assertEqual(self.targets(), ["POST /api/v1/slots/3/format?dryRun=true",
                                          "DELETE /api/v1/apps/fw-1?dryRun=true"])

    def test_problems_end_with_the_code_of_their_cause(self):
        for status, kind, code in ((404, "unknown-app", 4), (409, "job-in-the-way", 5),
                                   (409, "wrong-state", 5), (409, "already-there", 5),
                                   (400, "bad-value", 2), (503, "too-many-jobs", 1),
                                   (503, "not-stored", 1), (503, "too-many-connections", 3),
                                   (404, "unknown-path", 1), (500, "internal", 1)):
            with self.subTest(kind):
                self.rules["POST /apps/fw-1/start"] = AgctlServer.problem(status, kind, job=17)
                self.assert_ends(code, "app", "start", "fw-1", says="because of " + kind)
        self.rules["POST /apps/fw-1/start"] = AgctlServer.problem(409, "job-in-the-way", job=17)
        self.assert_ends(5, "app", "start", "fw-1", says="agctl job show 17")


class OrderTest(AgctlCase):
    def test_order_tells_the_job_and_how_to_wait_for_it(self):
        self.rules["POST /slots/3/log-level"] = 202, AgctlServer.Job(17, "logLevel").document
        result = self.assert_ends(0, "slot", "log-level", "3", "debug", "--deliver-within", 1.5,
                                  "--finish-within", 2, says="agctl job wait 17")
        self.assertIn("17  logLevel", result.stdout)
        asked, = self.server.asked()
        self.assertEqual(asked.document(), {"level": "debug", "deliverWithinMs": 1500,
                                            "finishWithinMs": 2000})
        self.assertEqual(asked.headers["Content-Type"], "application/json")

    def test_every_slot_is_tried(self):
        for slot in (1, 3):
            self.rules[f"POST /slots/{slot}/clear-logs"] = (
                202, AgctlServer.Job(slot, "clearSystemLogs", slot).document)
        self.rules["POST /slots/2/clear-logs"] = AgctlServer.problem(409, "job-in-the-way", job=9)
        result = self.assert_ends(5, "slot", "clear-logs", "1-3", "-o", "json", says=(
            "slot 2: It is refused", "2 of 3 ordered, 1 refused", "agctl job wait 1 3"))
        lines = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual([line.get("id", line.get("target")) for line in lines], [1, "slot 2", 3])

    def test_instance_is_created_from_file_and_options(self):
        self.rules["POST /apps"] = 201, APP
        file = self.server.folder / "app.json"
        file.write_text('{"id": "old", "slot": 1, "app": {"packageFile": "p", "reqDataHdd": 7},'
                        ' "ldu": {"name": "l"}}')
        self.assert_ends(0, "app", "create", "fw-1", "--file", file, "--slot", 3, "--cores", 2,
                         "--disk", 1025, "--vdp", says="agctl app install fw-1")
        self.assertEqual(self.server.asked()[0].document(), {
            "id": "fw-1", "slot": 3, "app": {"packageFile": "p", "reqDataHdd": 2, "vdp": True},
            "ldu": {"name": "l"}, "resource": {"reqCpuCores": 2, "reqDataHdd": 1025}})
        self.assert_ends(0, "app", "create", "fw-1", "--file", "-", stdin=file.read_text())
        self.assertEqual(self.server.asked()[1].document()["slot"], 1)
        for text in ("", "[]", '{"app": 3, "slot": 1}', "{" * 100, "x" * 70000):
            with self.subTest(text[:20]):
                self.assert_ends(2, "app", "create", "fw-1", "--file", "-", stdin=text)
        self.assertEqual(len(self.server.asked()), 2)

    def test_rest_of_the_verbs_ask_for_what_they_say(self):
        job = AgctlServer.Job(5, "upgrade", app="fw-1").document
        self.rules.update({
            "POST /apps/fw-1/upgrade": (202, job), "POST /jobs/5/cancel": (200, job),
            "DELETE /apps/fw-1": (204, None), "GET /timezone": (200, {"timezone": "UTC"}),
            "PUT /timezone": (202, {"timezone": "Asia/Tokyo", "jobs": [job]}),
            "GET /faults": (200, {"hooks": ["a b/c", "d"], "faults": [
                {"hook": "d", "action": "delay", "delayMs": 5, "times": 2}]}),
            "PUT /faults/a b/c": (200, {"action": "fail"}), "DELETE /faults": (204, None)})
        self.assert_ends(0, "app", "upgrade", "fw-1", "--package", "p", "--version", "2")
        self.assert_ends(0, "job", "cancel", 5, says="job 5 (upgrade of app fw-1) is accepted")
        self.assert_ends(0, "app", "delete", "fw-1", "--yes", says="fw-1 is deleted")
        self.assert_ends(0, "timezone", "show")
        self.assert_ends(0, "timezone", "set", "Asia/Tokyo", says="1 blade is told")
        self.assertIn("a b/c", self.assert_ends(0, "fault", "list").stdout)
        self.assert_ends(0, "fault", "set", "a b/c", "--action", "fail", "--times", 2)
        self.assert_ends(0, "fault", "clear", "--all")
        asked = self.server.asked()
        self.assertEqual(asked[0].document(), {"packageFile": "p", "version": "2"})
        self.assertEqual(asked[4].document(), {"timezone": "Asia/Tokyo"})
        self.assertEqual(asked[6].raw_target, "/api/v1/faults/a%20b%2Fc")
        self.assertEqual(asked[6].document(), {"action": "fail", "times": 2})


if __name__ == "__main__":
    unittest.main()
