"""Requests that get no reply at all, and that leave the workers serving."""

import unittest

import harness

HEARTBEAT = ("serviceOrchAG.heartbeat", "nox-xml:1", "1", "sma_slot3", "<heartbeatRequest/>")


class SilenceTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.zedd = cls.enterClassContext(harness.Zedd())

    def setUp(self):
        self.blade = self.enterContext(harness.Blade(3))

    def assert_silent(self, parts, line):
        """Sends the parts; they are dropped with the line, and the next reply is another's."""
        mark = len(self.zedd.log.all())
        self.blade.send_parts(*parts)
        found = self.zedd.log.wait_for(line, after=mark)
        self.assertIsNotNone(found, f"no line '{line}'\n{self.zedd.log.text()}")
        # More round trips than there are workers: the one that had the dropped request is back.
        for _ in range(10):
            self.assertEqual(self.blade.heartbeat().status, "510")
        self.assertFalse(self.blade.has_reply())
        return found

    def test_wrong_number_of_parts_is_dropped(self):
        for count in (1, 4, 6):
            with self.subTest(count):
                self.assert_silent((HEARTBEAT * 6)[:count],
                                   f"Received {count} message parts (should be 5)")

    def test_subject_of_another_service_is_dropped(self):
        self.assert_silent(("otherService.heartbeat",) + HEARTBEAT[1:],
                           "My identity passed was otherService, should be serviceOrchAG")

    def test_subject_with_a_longer_first_segment_is_dropped(self):
        self.assert_silent(("serviceOrchAGx.heartbeat",) + HEARTBEAT[1:],
                           "My identity passed was serviceOrchAGx, should be serviceOrchAG")

    def test_empty_subject_is_dropped(self):
        self.assert_silent(("",) + HEARTBEAT[1:],
                           "My identity passed was , should be serviceOrchAG")

    def test_subject_without_command_is_dropped(self):
        line = "The subject serviceOrchAG names no command"
        self.assert_silent(("serviceOrchAG",) + HEARTBEAT[1:], line)
        self.assert_silent(("serviceOrchAG", "nox-xml:2") + HEARTBEAT[2:], line)

    def test_identity_without_slot_is_dropped(self):
        for identity in ("blade1", "", "SMA_SLOT3", "sma_slo3"):
            with self.subTest(identity):
                self.assert_silent(HEARTBEAT[:3] + (identity,) + HEARTBEAT[4:],
                                   "run : caught standard exception: invalid client identity")

    def test_identity_of_slot_zero_is_dropped(self):
        for identity in ("sma_slot0", "sma_slot-0", "sma_slot000"):
            with self.subTest(identity):
                line = self.assert_silent(HEARTBEAT[:3] + (identity,) + HEARTBEAT[4:],
                                          "run : caught standard exception: invalid slot Id")
                self.assertNotIn("conversion", line)

    def test_identity_whose_slot_is_no_number_is_dropped(self):
        for identity in ("sma_slotX", "sma_slot3x", "sma_slot 3", "sma_slot2147483648",
                         "sma_slot"):
            with self.subTest(identity):
                self.assert_silent(
                    HEARTBEAT[:3] + (identity,) + HEARTBEAT[4:],
                    "run : caught standard exception: invalid slot Id conversion")

    def test_unknown_command_of_an_unreadable_identity_is_dropped(self):
        self.assert_silent(("serviceOrchAG.reboot", "nox-xml:1", "1", "blade1", ""),
                           "run : caught standard exception: invalid client identity")

    def test_control_characters_of_a_blade_do_not_reach_the_log(self):
        mark = len(self.zedd.log.all())
        self.blade.send_parts("evil\n\x1b[31mforged.heartbeat", *HEARTBEAT[1:])
        line = self.zedd.log.wait_for("My identity passed was evil", after=mark)
        self.assertIn("forged, should be serviceOrchAG", line)
        self.assertNotIn("\x1b", self.zedd.log.text())


if __name__ == "__main__":
    harness.main()
