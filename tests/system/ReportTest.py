"""What a blade reports: its platform, failures of applications, the progress of commands."""

import json
import os
import subprocess

import harness
from RequestCase import RequestCase


class ReportTest(RequestCase):
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
        self.assert_refused(reply, "sma_slot20.appFailure", "505", "appFailureResponse",
                            "No <appInstanceId> tag found in the appFailure request")

    def test_progress_with_a_wrong_value_names_it(self):
        tags = {"appInstanceId": 1, "operCmd": "x.y.installApp", "operProgress": 1,
                "operStatus": "paused", "code": 100, "ack": "no"}
        reply = self.blade(20).request("serviceOrchAG.commandProgress.update", harness.document(
            "commandProgressUpdateRequest", tags))
        self.assert_refused(reply, "sma_slot20.commandProgress.update", "505",
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
        self.assert_refused(reply, "sma_slot20.commandProgress.update", "505",
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

    # --- the platform

    def report(self, blade, document):
        reply = blade.request("serviceOrchAG.platformInfo.update", document)
        self.assertEqual((reply.subject, reply.status, reply.root, reply.message),
                         (f"{blade.identity}.platformInfo.update", "100",
                          "platformInfoUpdateResponse", "OK"))

    def registered(self, slot):
        blade = self.blade(slot)
        blade.register_validly()
        return blade

    def test_platform_report_is_kept_in_megabytes(self):
        self.report(self.registered(5), PLATFORM % "app-5")
        model = dump(self.zedd, "sys/chassis-1/slot-5")
        self.assertEqual(model["monitor"], {
            "osVersion": "2.4.1", "sysUptime": "12 days", "cpuMinus1": 0.25, "cpuMinus5": 1.5,
            "cpuMinus15": 2.0, "memTotal": 1, "memFree": 0, "memUsed": 2, "appsMemTotal": 4,
            "diskCount": 1})
        self.assertEqual(model["monitor/disk-1"], {
            "diskName": "sda1", "diskTotal": 0, "diskFree": 2, "diskUsed": 1,
            "diskMountPoint": "/"})
        self.assertEqual(model["reported-app-5"], {
            "appInstanceId": "app-5", "state": 3, "externalSoftwareManagement": True,
            "installedVersion": "1.0"})

    def test_next_report_replaces_the_one_before(self):
        blade = self.registered(6)
        self.report(blade, PLATFORM % "app-6")
        self.report(blade, "<platformInfoUpdateRequest><OsVersion>2.5</OsVersion>"
                    "</platformInfoUpdateRequest>")
        model = dump(self.zedd, "sys/chassis-1/slot-6")
        self.assertEqual(model["monitor"], {"osVersion": "2.5"})
        self.assertEqual([name for name in model if name.startswith(("monitor/", "reported-"))], [])

    def test_report_of_a_thousand_disks_is_taken_and_holds_up_nobody(self):
        blade, other = self.registered(7), self.registered(8)
        disks = "".join(f"<Disk><DiskName>{disk}</DiskName></Disk>" for disk in range(1000))
        blade.send("serviceOrchAG.platformInfo.update",
                   "<platformInfoUpdateRequest><DiskFilesystem><minus1>" + disks +
                   "</minus1></DiskFilesystem></platformInfoUpdateRequest>")
        self.assertEqual(other.heartbeat().status, "100")
        self.assertEqual(blade.receive().status, "100")
        model = dump(self.zedd, "sys/chassis-1/slot-7")
        self.assertEqual(model["monitor"], {"diskCount": 1000})
        self.assertEqual(len([name for name in model if name.startswith("monitor/disk-")]), 64)

    def test_document_nested_too_deep_is_a_report_without_content(self):
        blade = self.registered(9)
        self.report(blade, "<platformInfoUpdateRequest><OsVersion>2.5</OsVersion>" +
                    "<a>" * 1000 + "</a>" * 1000 + "</platformInfoUpdateRequest>")
        self.assertEqual(dump(self.zedd, "sys/chassis-1/slot-9")["monitor"], {})

    # --- the engine hears of failures and progress

    def test_failed_instance_is_marked(self):
        blade = self.registered(10)
        self.report(blade, PLATFORM % "app-10")
        blade.request("serviceOrchAG.appFailure", harness.document(
            "appFailureRequest", {"appInstanceId": " app-10\n"}))
        blade.register_validly()  # the engine's answer comes after its work on the failure
        reported = dump(self.zedd, "sys/chassis-1/slot-10")["reported-app-10"]
        self.assertEqual((reported["isFailed"], reported["failures"]), (True, 1))

    def test_progress_is_kept_below_what_it_concerns(self):
        blade = self.registered(14)
        self.report(blade, PLATFORM % "app-14")
        for tags in ({"appInstanceId": "app-14", "operCmd": "a.stopApp", "operStatus": "failed",
                      "code": 508, "operProgress": 30, "errorDesc": " no reason "},
                     {"appInstanceId": -1, "operCmd": "formatDisk", "operStatus": "succeeded"},
                     {"appInstanceId": -1, "operCmd": "uploadPlatformImage", "code": 506}):
            self.assertEqual(blade.request("serviceOrchAG.commandProgress.update",
                                           progress(**tags)).status, "100")
        blade.register_validly()  # the engine's answer comes after its work on the reports
        model = dump(self.zedd, "sys/chassis-1/slot-14")
        self.assertEqual(model["reported-app-14/operation-stopApp"], {
            "command": "stopApp", "percentage": 30, "status": "failed", "code": 508,
            "errorText": " no reason "})
        self.assertEqual(model["operation-formatDisk"],
                         {"command": "formatDisk", "status": "succeeded"})
        self.assertEqual(model["operation-uploadPlatformImage"], {
            "command": "uploadPlatformImage", "percentage": 50, "status": "failed", "code": 506})


def progress(**changes):
    return harness.document("commandProgressUpdateRequest", {
        "appInstanceId": 1, "operCmd": "installApp", "operProgress": 50, "operStatus": "running",
        "code": 102, "ack": "true", "errorDesc": "", **changes})


PLATFORM = """
<platformInfoUpdateRequest>
  <OsVersion> 2.4.1 </OsVersion>
  <Sysuptime>12 days</Sysuptime>
  <Cpu><minus1>0.25</minus1><minus5>1.5</minus5><minus15>2</minus15></Cpu>
  <Memory><minus1>
    <MemTotalKB>1025</MemTotalKB><MemFreeKB>1023</MemFreeKB><MemUsedKB>1025</MemUsedKB>
  </minus1></Memory>
  <AppsMemory><CurrentSnapshot><MemTotalKB>4096</MemTotalKB></CurrentSnapshot></AppsMemory>
  <DiskFilesystem><minus1><Disk>
    <DiskName>sda1</DiskName><DiskTotalKB>1023</DiskTotalKB><DiskFreeKB>2048</DiskFreeKB>
    <DiskUsedKB>1</DiskUsedKB><DiskMountPoint>/</DiskMountPoint>
  </Disk></minus1></DiskFilesystem>
  <application>
    <appInstanceId>%s</appInstanceId><adminStatus>enable</adminStatus>
    <operStatus>stopped</operStatus><installedVersion>1.0</installedVersion>
    <externalSoftwareManagement>true</externalSoftwareManagement>
  </application>
</platformInfoUpdateRequest>
"""


def dump(zedd, name):
    """The properties of the objects below one of the model, by their names from there.

    The times, which differ from run to run, are left out.
    """
    printed = subprocess.run([os.environ["ZAN_ZEDD"], "--config", zedd.folder / "zedd.toml",
                              "--dump-model", name], capture_output=True, text=True,
                             timeout=harness.DEADLINE, check=True).stdout
    return {each["dn"].removeprefix(name + "/"): {
        key: value for key, value in each["properties"].items() if not key.endswith("At")}
            for each in json.loads(printed)["objects"]}


if __name__ == "__main__":
    harness.main()
