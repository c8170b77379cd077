"""What a real zedd answers to the reports of sma-sim's blades, those that are odd on purpose too."""

import harness
import simulator

OK = {"status": 100, "message": "OK"}
NO_REPLY = "no reply"


def no_tag(tag, request):
    return {"status": 505, "message": f"No <{tag}> tag found in the {request} request"}


def no_value(value, tag):
    return {"status": 505, "message":
            f'Invalid value "{value}" found for <{tag}> in the commandProgressUpdate request'}


INVALID_COMMAND = {"status": 500, "message": "Invalid Command"}
NO_FAILED_ID = no_tag("appInstanceId", "appFailure")
NO_ID = no_tag("appInstanceId", "commandProgressUpdate")

# Whatever a platform report lacks, the rest of it counts.
ODD_PLATFORM_REPORTS = {
    "platform-wrong-action": INVALID_COMMAND,
    "platform-oversized": NO_REPLY,
}

ODD_FAILURES = {
    "failure-with-action": INVALID_COMMAND,
    "failure-malformed-xml": NO_FAILED_ID,
    "failure-empty-document": NO_FAILED_ID,
    "failure-wrong-root": NO_FAILED_ID,
    "failure-nested": NO_FAILED_ID,
    "failure-no-id": NO_FAILED_ID,
    "failure-two-ids": OK,
    "failure-empty-id": OK,
    "failure-blank-id": OK,
    "failure-unknown-id": OK,
    "failure-hostile-id": OK,
    "failure-megabyte-id": OK,
}

ODD_PROGRESS = {
    "progress-wrong-action": INVALID_COMMAND,
    "progress-malformed-xml": NO_ID,
    "progress-empty-document": NO_ID,
    "progress-wrong-root": NO_ID,
    "progress-nested": NO_ID,
    "progress-no-id": NO_ID,
    "progress-no-command": no_tag("operCmd", "commandProgressUpdate"),
    "progress-no-percentage": no_tag("operProgress", "commandProgressUpdate"),
    "progress-no-status": no_tag("operStatus", "commandProgressUpdate"),
    "progress-no-code": no_tag("code", "commandProgressUpdate"),
    "progress-no-ack": no_tag("ack", "commandProgressUpdate"),
    "progress-no-error": OK,
    "progress-empty-id": no_value("", "appInstanceId"),
    "progress-empty-command": no_value("", "operCmd"),
    "progress-empty-percentage": OK,
    "progress-empty-status": no_value("", "operStatus"),
    "progress-empty-code": no_value("", "code"),
    "progress-empty-ack": NO_REPLY,
    "progress-blank-values": OK,
    "progress-unknown-id": OK,
    "progress-hostile-id": OK,
    "progress-unknown-command": no_value("polishApp", "operCmd"),
    "progress-prefixed-command": OK,
    "progress-two-prefixes": no_value("y.startApp", "operCmd"),
    "progress-platform-start": OK,
    "progress-percentage-word": OK,
    "progress-percentage-beyond": OK,
    "progress-percentage-negative": OK,
    "progress-unknown-status": no_value("paused", "operStatus"),
    "progress-capital-status": no_value("Running", "operStatus"),
    "progress-code-word": OK,
    "progress-capital-ack": OK,
    "progress-ack-no": NO_REPLY,
    "progress-hostile-error": OK,
    "progress-megabyte-error": OK,
}


class SimulatorReportTest(simulator.SimulatorCase):
    def play(self, expected):
        """Each odd request from a blade of its own; blade 1 stays as it should be."""
        slots = {str(slot): name for slot, name in enumerate(expected, start=2)}
        scenario = {
            "blades": [{"slots": slot, "faults": [
                {"fault": name, "at": 0.5, "expect": expected[name]}]}
                       for slot, name in slots.items()],
            "expect": [{"slots": f"1-{len(slots) + 1}", "state": "registered",
                        "counts": {"strays": 0}},
                       {"slots": "1", "counts": {"beats": {"min": 1}, "unanswered": 0}}],
        }
        status, result = self.simulate(scenario, "--slots", f"1-{len(slots) + 1}", "--report", "0",
                                       "--for", "50", "--until-judged")
        self.assertEqual((status, result["failures"]), (0, []))
        self.assertEqual(result["totals"]["odd"], len(slots))

    def test_each_odd_platform_report_gets_its_reply(self):
        names = [name for name in simulator.list_faults() if name.startswith("platform-")]
        self.assertGreater(len(names), 60)
        self.play({name: ODD_PLATFORM_REPORTS.get(name, OK) for name in names})

    def test_all_odd_reports_are_played(self):
        names = {*simulator.list_faults()} - {*ODD_FAILURES} - {*ODD_PROGRESS}
        self.assertEqual({name for name in names if not name.startswith("platform-")},
                         {"malformed-xml", "truncated-xml", "oversized-xml", "wrong-part-count",
                          "wrong-content-type", "unknown-command", "foreign-subject"})

    def test_platforms_are_reported_and_taken(self):
        scenario = {"expect": [
            {"slots": "1-20", "state": "registered",
             "counts": {"reports": {"min": 3}, "unanswered": 0},
             "replies": {"reports": {"100": {"min": 3}, "506": 0, "508": 0}}}]}
        status, result = self.simulate(
            scenario, "--slots", "1-20", "--report", "0.5", "--apps", "3", "--fail-chance", "0.3",
            "--work-chance", "0.3", "--for", "8")
        self.assertEqual((status, result["failures"]), (0, []))
        totals = result["totals"]
        for kind in ("failures", "progress", "quiet_progress"):
            self.assertGreater(totals["requests"][kind]["sent"], 0, kind)
        self.assertEqual(totals["requests"]["quiet_progress"]["statuses"], {})

    def test_each_odd_failure_report_gets_its_reply(self):
        names = [name for name in simulator.list_faults() if name.startswith("failure-")]
        self.assertEqual(names, list(ODD_FAILURES))
        self.play(ODD_FAILURES)

    def test_each_odd_progress_report_gets_its_reply(self):
        names = [name for name in simulator.list_faults() if name.startswith("progress-")]
        self.assertEqual(names, list(ODD_PROGRESS))
        self.play(ODD_PROGRESS)

    def test_report_before_registering_is_told_to_register(self):
        refusal = {"status": 510, "message": "SMA is not register with slot 1"}
        scenario = {"blades": [{"slots": "1", "faults": [
            {"fault": name, "at": 0, "early": True, "expect": refusal}
            for name in ("platform-blank-values", "failure-blank-id", "progress-blank-values")]}]}
        status, result = self.simulate(scenario, "--slots", "1", "--report", "0", "--for", "50",
                                       "--until-judged")
        self.assertEqual((status, result["failures"]), (0, []))

    def test_progress_is_acknowledged_where_wished_and_only_there(self):
        def progress(at, expect, **fields):
            return {"action": "progress", "at": at, "every": 0.2, "expect": expect, **fields}

        scenario = {
            "blades": [
                {"slots": "1", "actions": [
                    progress(0, OK, command="upgradeApp", version="2.0"),
                    progress(0, OK, app="-1", command="formatDisk"),
                    progress(0, OK, app=2, command="startApp", ends="failed")]},
                {"slots": "2", "actions": [
                    progress(0, NO_REPLY, command="stopApp", ack=False, steps=3)]},
                {"slots": "3", "actions": [
                    {"action": "app-failure", "at": 0.5, "app": 2, "expect": OK}]}],
            "expect": [
                {"slots": "1", "counts": {"progress": 15, "quiet_progress": 0},
                 "replies": {"progress": {"100": 15}}},
                {"slots": "2", "counts": {"progress": 0, "quiet_progress": 4, "strays": 0}},
                {"slots": "3", "counts": {"failures": 1}, "replies": {"failures": {"100": 1}}}]}
        status, result = self.simulate(scenario, "--slots", "1-3", "--report", "0", "--for", "50",
                                       "--until-judged")
        self.assertEqual((status, result["failures"]), (0, []))

    def test_reply_that_is_not_the_expected_one_fails_the_run(self):
        scenario = {"blades": [{"slots": "1", "faults": [
            {"fault": "progress-no-ack", "at": 0.5, "expect": OK},
            {"fault": "progress-capital-ack", "at": 0.5, "expect": NO_REPLY}]}]}
        status, result = self.simulate(scenario, "--slots", "1", "--report", "0", "--for", "50",
                                       "--until-judged")
        self.assertEqual(status, 1)
        self.assertCountEqual(result["failures"], [
            'slot 1: progress-no-ack at 0.5 s got 505 '
            '"No <ack> tag found in the commandProgressUpdate request", expected 100 "OK"',
            'slot 1: progress-capital-ack at 0.5 s got 100 "OK", expected no reply'])


if __name__ == "__main__":
    harness.main()
