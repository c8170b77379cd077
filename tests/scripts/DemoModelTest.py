"""scripts/demo-model, given the dump that the demo makes and dumps that differ in one thing."""

import copy
import json
import pathlib
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SLOT = "sys/chassis-1/slot-"


def slot_objects(number):
    """What the model holds of one of the slots 1 to 7, by name."""
    dn = SLOT + str(number)
    objects = {
        dn: ("slot", {"number": number, "hasToken": True}),
        dn + "/monitor": ("monitor", {
            "osVersion": "2.4.1", "cpuMinus1": 1.5, "cpuMinus5": 2.25, "cpuMinus15": 3.125,
            "memTotal": 65536, "memFree": 49152, "memUsed": 16384, "appsMemTotal": 2048,
            "diskCount": 2}),
        dn + "/monitor/disk-%2F": ("diskFileSystem", {
            "diskName": "sda1", "diskTotal": 1000, "diskFree": 600, "diskUsed": 400,
            "diskMountPoint": "/"}),
        dn + "/monitor/disk-%2Fvar": ("diskFileSystem", {
            "diskName": "sda2", "diskTotal": 1000, "diskFree": 750, "diskUsed": 250,
            "diskMountPoint": "/var"}),
    }
    for app in (1, 2):
        name = f"slot{number}-app{app}"
        objects[f"{dn}/app-{name}"] = ("appInstance", {
            "appInstanceId": name, "expectedVersion": f"1.{app}", "expectedState": 7})
        objects[f"{dn}/reported-{name}"] = ("reportedAppInstance", {
            "appInstanceId": name, "installedVersion": f"1.{app}", "state": 7})
    return objects


def demo_objects():
    objects = {"sys": ("system", {}), "sys/chassis-1": ("chassis", {"id": 1}),
               SLOT + "8": ("slot", {"number": 8, "hasToken": True})}
    for number in range(1, 8):
        objects.update(slot_objects(number))
    objects[SLOT + "5/reported-slot5-app2"][1]["installedVersion"] = "0.9"
    objects[SLOT + "5/app-slot5-app2/fault-otherVersion"] = ("fault", {
        "kind": "otherVersion", "detail": "expected 1.2, reported 0.9"})
    objects[SLOT + "6/reported-slot6-app1"][1]["state"] = 3
    objects[SLOT + "6/app-slot6-app1"][1].update(isFailed=True, failures=1)
    objects[SLOT + "6/app-slot6-app1/fault-otherState"] = ("fault", {
        "kind": "otherState", "detail": "expected running, reported stopped"})
    objects[SLOT + "7/app-slot7-app2/operation-upgradeApp"] = ("operation", {
        "command": "upgradeApp", "percentage": 3, "status": "running"})
    return objects


def run(objects, *options):
    text = json.dumps({"objects": [{"dn": dn, "class": name, "properties": properties}
                                   for dn, (name, properties) in objects.items()]})
    return subprocess.run([ROOT / "scripts/demo-model", *options], input=text, capture_output=True,
                          text=True, timeout=30, check=False)


class DemoModelTest(unittest.TestCase):
    def setUp(self):
        self.objects = copy.deepcopy(demo_objects())

    def assert_complains(self, *lines):
        result = run(self.objects, "--quiet")
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertEqual(result.stderr.splitlines(), list(lines))

    def test_demo_as_it_should_be_is_shown_whole(self):
        result = run(self.objects)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        lines = result.stdout.splitlines()
        self.assertEqual(lines[:3], [
            "slot 1  load 1.50 2.25 3.12    memory 16.0 GB of 64.0 GB    disks / 40%, /var 25%",
            "        slot1-app1  version 1.1   running",
            "        slot1-app2  version 1.2   running"])
        for line in ("        slot5-app2  version 0.9   running   "
                     "otherVersion: expected 1.2, reported 0.9",
                     "        slot6-app1  version 1.1   stopped   FAILED  "
                     "otherState: expected running, reported stopped",
                     "        upgradeApp of slot7-app2: 3%, running",
                     "slot 8  has reported nothing"):
            self.assertIn(line, lines)

    def test_blade_that_has_not_reported_is_told(self):
        for dn in [dn for dn in self.objects if dn.startswith(SLOT + "3/")]:
            del self.objects[dn]
        self.assert_complains("slot 3: has reported nothing")

    def test_slot_that_is_missing_is_told(self):
        for dn in [dn for dn in self.objects if (dn + "/").startswith(SLOT + "3/")]:
            del self.objects[dn]
        self.assert_complains("slot 3: is not there")

    def test_memory_and_disks_must_add_up(self):
        self.objects[SLOT + "1/monitor"][1]["memFree"] = 1
        del self.objects[SLOT + "2/monitor/disk-%2F"]
        self.objects[SLOT + "4/monitor/disk-%2F"][1]["diskUsed"] = 2000
        self.objects[SLOT + "7/monitor"][1]["cpuMinus1"] = 0
        self.assert_complains("slot 1: memory that does not add up",
                              "slot 2: 1 disks, 2 reported",
                              "slot 4: disk sda1 with 2000 MB in use",
                              "slot 7: a load of 0")

    def test_fault_that_should_or_should_not_be_there_is_told(self):
        self.objects[SLOT + "1/app-slot1-app1/fault-missing"] = ("fault", {"kind": "missing"})
        del self.objects[SLOT + "5/app-slot5-app2/fault-otherVersion"]
        self.objects[SLOT + "6/app-slot6-app1"][1]["isFailed"] = False
        result = run(self.objects, "--quiet")
        self.assertEqual(result.returncode, 1)
        told = result.stderr.splitlines()
        self.assertEqual([line.split(" is ")[0] for line in told],
                         ["slot 1: slot1-app1", "slot 5: slot5-app2", "slot 6: slot6-app1"])

    def test_instance_more_or_less_is_told(self):
        del self.objects[SLOT + "2/reported-slot2-app2"]
        self.objects[SLOT + "3/reported-mail"] = ("reportedAppInstance", {
            "appInstanceId": "mail", "state": 7})
        result = run(self.objects, "--quiet")
        self.assertEqual(result.returncode, 1)
        self.assertEqual([line.split(" ")[1] for line in result.stderr.splitlines()], ["2:", "3:"])

    def test_operation_must_be_under_way_and_the_only_one(self):
        self.objects[SLOT + "7/app-slot7-app2/operation-upgradeApp"][1]["percentage"] = 0
        self.assert_complains("slot 7: an operation that is running at 0%")

    def test_foreign_blade_must_not_have_reported(self):
        self.objects[SLOT + "8/monitor"] = ("monitor", {})
        self.assert_complains("slot 8: has reported without being admitted, "
                              "or no token was made for it")


if __name__ == "__main__":
    unittest.main()
