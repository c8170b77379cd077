"""sma-sim at a real zedd: faults of the session, and the expectations that judge a run."""

import harness
import simulator

FAULTS = {
    # slot: fault, the replies by status that it must bring, its requests without a reply
    "2": ({"fault": "malformed-xml", "at": 1}, {"100": {"min": 2}}, 0),
    "3": ({"fault": "truncated-xml", "at": 1}, {"100": {"min": 2}}, 0),
    "4": ({"fault": "wrong-part-count", "at": 1}, {"100": {"min": 2}}, 1),
    "5": ({"fault": "wrong-content-type", "at": 1, "times": 2}, {"501": 2}, 0),
    "6": ({"fault": "unknown-command", "at": 1}, {"500": 1}, 0),
    "7": ({"fault": "foreign-subject", "at": 1, "times": 3}, {"100": {"min": 2}}, 3),
    "8": ({"fault": "silence", "at": 1, "for": 1.5}, {"100": {"min": 2}}, 0),
    "9": ({"fault": "duplicate-beats", "at": 0, "for": 9}, {"100": {"min": 4}}, 0),
}


class SimulatorTest(simulator.SimulatorCase):
    def test_each_fault_costs_its_own_blade_at_most(self):
        scenario = {
            "blades": [{"slots": slot, "faults": [fault]}
                       for slot, (fault, _, _) in FAULTS.items()],
            "expect": [{"slots": slot, "state": "registered", "statuses": statuses,
                        "counts": {"odd_unanswered": unanswered, "unanswered": 0}}
                       for slot, (_, statuses, unanswered) in FAULTS.items()]
            + [{"slots": "1,10", "state": "registered",
                "counts": {"beats": {"min": 5}, "unanswered": 0}}],
        }
        status, result = self.simulate(scenario, "--slots", "1-10", "--for", "5")
        self.assertEqual(result["failures"], [])
        self.assertEqual(status, 0)

    def test_oversized_document_costs_the_connection_and_nobody_else(self):
        scenario = {
            "blades": [{"slots": "2", "faults": [{"fault": "oversized-xml", "at": 1}]}],
            "expect": [{"slots": "1", "state": "registered",
                        "counts": {"beats": {"min": 5}, "unanswered": 0}},
                       {"slots": "2", "counts": {"odd_unanswered": 1}}],
        }
        status, result = self.simulate(scenario, "--slots", "1-2", "--for", "5")
        self.assertEqual((status, result["failures"]), (0, []))

    def test_wrong_token_is_refused_and_an_empty_one_taken(self):
        scenario = {
            "blades": [{"slots": "2", "faults": [{"fault": "wrong-token", "at": 1.5}]},
                       {"slots": "3", "faults": [{"fault": "empty-token", "at": 1.5}]}],
            "expect": [{"slots": "2", "state": "refused", "statuses": {"511": {"min": 1}}},
                       {"slots": "3", "state": "registered", "has_token": True,
                        "statuses": {"511": 0}, "counts": {"registers": 3}}],
        }
        status, result = self.simulate(scenario, "--slots", "1-3", "--for", "4")
        self.assertEqual((status, result["failures"]), (0, []))

    def test_expectation_that_does_not_hold_fails_the_run(self):
        status, result = self.simulate(
            {"expect": [{"slots": "1", "counts": {"beats": 0}}]}, "--slots", "1", "--for", "3")
        self.assertEqual(status, 1)
        self.assertRegex(result["failures"][0], r"^slot 1: beats is \d+, expected 0$")


if __name__ == "__main__":
    harness.main()
