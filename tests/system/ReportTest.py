"""What a blade reports of its applications: failures and the progress of commands."""

import unittest

import harness


class ReportTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.zedd = cls.enterClassContext(harness.Zedd())
        registered = cls.enterClassContext(harness.Blade(20))
        registered.register_validly()

    def blade(self, slot):
        return self.enterContext(harness.Blade(slot))

    def assert_refused(self, reply, subject, root, message):
        self.assertEqual((reply.subject, reply.status, reply.root, reply.code, reply.message),
                         (subject, "505", root, "505", message))

    def test_app_failure_of_a_registered_blade_is_acknowledged(self):
        blade = self.blade(11)
        blade.register_validly()
        reply = blade.request("serviceOrchAG.appFailure", harness.document(
            "appFailureRequest", {"appInstanceId": "  17\n"}))
        self.assertEqual((reply.status, reply.root, reply.message),
                         ("100", "appFailureResponse", "OK"))

    def test_progress_with_ack_is_acknowledged(self):
        blade = self.blade(12)
        blade.register_validly()
        reply = blade.request("serviceOrchAG.commandProgress.update", progress(ack="True"))
        self.assertEqual(reply.subject, "sma_slot12.commandProgress.update")
        self.assertEqual((reply.status, reply.root, reply.message),
                         ("100", "commandProgressUpdateResponse", "OK"))

    def test_progress_of_a_disk_format_needs_no_registration(self):
        reply = self.blade(13).request("serviceOrchAG.commandProgress.update",
                                       progress(appInstanceId=-1, operCmd="x.formatDisk"))
        self.assertEqual((reply.status, reply.message), ("100", "OK"))

    def test_app_failure_without_instance_is_refused(self):
        reply = self.blade(20).request("serviceOrchAG.appFailure", "<appFailureRequest/>")
        self.assert_refused(reply, "sma_slot20.appFailure", "appFailureResponse",
                            "No <appInstanceId> tag found in the appFailure request")

    def test_progress_with_a_wrong_value_names_it(self):
        tags = {"appInstanceId": 1, "operCmd": "x.y.installApp", "operProgress": 1,
                "operStatus": "paused", "code": 100, "ack": "no"}
        reply = self.blade(20).request("serviceOrchAG.commandProgress.update", harness.document(
            "commandProgressUpdateRequest", tags))
        self.assert_refused(reply, "sma_slot20.commandProgress.update",
                            "commandProgressUpdateResponse",
                            'Invalid value "y.installApp" found for <operCmd> in the '
                            "commandProgressUpdate request")
        tags["operCmd"] = "installApp"
        reply = self.blade(20).request("serviceOrchAG.commandProgress.update", harness.document(
            "commandProgressUpdateRequest", tags))
        self.assertEqual(reply.message, 'Invalid value "paused" found for <operStatus> in the '
                         "commandProgressUpdate request")

    def test_progress_without_a_needed_tag_names_it(self):
        reply = self.blade(20).request("serviceOrchAG.commandProgress.update", harness.document(
            "commandProgressUpdateRequest", {"appInstanceId": 1, "operCmd": "stopApp"}))
        self.assert_refused(reply, "sma_slot20.commandProgress.update",
                            "commandProgressUpdateResponse",
                            "No <operProgress> tag found in the commandProgressUpdate request")

    def test_progress_without_ack_gets_no_reply(self):
        blade = self.blade(4)
        blade.register_validly()
        tags = {"appInstanceId": 1, "operCmd": "startApp", "operProgress": 1,
                "operStatus": "running", "code": 102, "ack": "no"}
        mark = len(self.zedd.log.all())
        blade.send("serviceOrchAG.commandProgress.update",
                   harness.document("commandProgressUpdateRequest", tags))
        self.assertIsNotNone(self.zedd.log.wait_for(
            "Triggering UpgradeProgress method for slot = 4 , operCmd = startApp, percentage = 1, "
            "MesgId =  sma_slot4-3, appInstanceId = 1", after=mark))
        for _ in range(10):
            self.assertEqual(blade.heartbeat().status, "100")
        self.assertFalse(blade.has_reply())


def progress(**changes):
    return harness.document("commandProgressUpdateRequest", {
        "appInstanceId": 1, "operCmd": "installApp", "operProgress": 50, "operStatus": "running",
        "code": 102, "ack": "true", "errorDesc": "", **changes})


if __name__ == "__main__":
    harness.main()
