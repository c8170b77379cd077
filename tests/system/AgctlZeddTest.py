"""agctl, a real zedd and the blades of sma-sim."""

import json
import os
import pathlib
import re
import subprocess
import tempfile
import time
import unittest

import harness

PACKAGE = "http://10.0.0.1/fw-1.2.pkg"


SLOTS = (1, 2, 3, 4)
CHASSIS = '[chassis]\nmodel = "standard"\nserial = "JX1"\n' + "".join(
    f'[[slot]]\nnumber = {slot}\nserial = "B{slot}"\n' for slot in SLOTS)


class ZeddCase(unittest.TestCase):
    def setUp(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (folder / "chassis.toml").write_text(CHASSIS)
        self.zedd = self.enterContext(harness.Zedd({"dme.chassis": str(folder / "chassis.toml")},
                                                   folder))

    def simulate(self, *slots):
        """Starts blades that report often and work fast; returns when all are alive."""
        process = subprocess.Popen(
            [os.environ["ZAN_SMA_SIM"], "--slots", ",".join(map(str, slots)), "--beat", "0.5", "--report", "1",
             "--apps", "0", "--command-time", "0.5", "--quiet"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        deadline = time.monotonic() + harness.DEADLINE
        while not self.alive().issuperset(slots):
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.05)

    def alive(self):
        return {slot["slot"] for slot in self.document("slot", "list")["slots"]
                if slot["state"] == "alive"}

    def agctl(self, code, *arguments, says=()):
        """Runs it; its exit code is `code`, and each text of `says` is on standard error."""
        result = subprocess.run(
            [os.environ["ZAN_AGCTL"], "--config", self.zedd.folder / "zedd.toml",
             *map(str, arguments)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
            timeout=2 * harness.DEADLINE, check=False)
        self.assertEqual(result.returncode, code, f"{arguments}\n{result.stderr}{result.stdout}")
        for text in (says,) if isinstance(says, str) else says:
            self.assertIn(text, result.stderr)
        return result

    def document(self, *arguments, code=0):
        return json.loads(self.agctl(code, *arguments, "-o", "json").stdout)

    def create(self, app="fw-1", slot=3):
        self.agctl(0, "app", "create", app, "--slot", slot, "--package", PACKAGE, "--cores", 2,
                   "--memory", 2048, "--disk", 3000)


class OrderTest(ZeddCase):
    """What needs no blade."""

    def test_described_instance_is_shown_and_forgotten(self):
        self.create()
        app = self.document("app", "show", "fw-1")
        self.assertEqual((app["id"], app["slot"], app["phase"]), ("fw-1", 3, "absent"))
        resource = app["parts"]["resource"]
        self.assertEqual([resource[name] for name in ("reqCpuCores", "maxAllowedRam",
                                                      "reqDataHdd")], [2, 2048, 3000])
        self.assertEqual(app["parts"]["app"]["reqDataHdd"], 3)
        self.assertEqual([app["id"] for app in self.document("app", "list")["apps"]], ["fw-1"])
        self.agctl(5, "app", "create", "fw-1", "--slot", 3, "--package", PACKAGE)
        self.agctl(0, "app", "delete", "fw-1", "--dry-run", says="nothing was done")
        self.agctl(0, "app", "delete", "fw-1", "--yes")
        self.agctl(4, "app", "show", "fw-1")

    def test_what_is_shown_describes_another_instance(self):
        self.create()
        file = self.zedd.folder / "app.json"
        file.write_text(json.dumps(self.document("app", "show", "fw-1")["parts"]))
        self.agctl(0, "app", "create", "fw-2", "--file", file)
        first, second = (self.document("app", "show", app)["parts"] for app in ("fw-1", "fw-2"))
        self.assertEqual({**first, "id": "fw-2"}, second)

    def test_what_cannot_be_ordered_is_refused_with_its_code(self):
        self.create()
        self.agctl(5, "app", "start", "fw-1", says="install it first")
        self.agctl(5, "app", "start", "fw-1", "--dry-run", says="install it first")
        self.agctl(4, "app", "start", "fw-2")
        self.agctl(4, "slot", "clear-logs", 9)
        self.agctl(4, "job", "wait", 99)
        self.agctl(2, "timezone", "set", "Nowhere/Land")
        self.agctl(2, "app", "create", "b", "--file", "/dev/null")
        self.agctl(4, "fault", "set", "none", "--action", "crash")

    def test_preview_makes_no_job(self):
        self.create()
        self.agctl(0, "app", "install", "fw-1", "--dry-run", says="nothing was done")
        self.agctl(0, "slot", "format", 3, "--dry-run", says="nothing was done")
        self.assertEqual(self.document("job", "list")["jobs"], [])

    def test_blade_that_is_not_there_is_offline(self):
        self.agctl(6, "slot", "log-level", 3, "debug", "--deliver-within", 1, "--wait")
        job, = self.document("job", "list")["jobs"]
        self.assertEqual((job["state"], job["reason"]), ("failed", "deliverByPast"))

    def test_job_that_waits_can_be_given_up(self):
        job = self.document("slot", "clear-logs", 3)["id"]
        self.agctl(5, "slot", "clear-logs", 3, says=f"agctl job show {job}")
        self.assertEqual(self.document("job", "cancel", job)["reason"], "cancelled")
        self.agctl(1, "job", "wait", job, says="cancelled")
        self.agctl(5, "job", "cancel", job)

    def test_faults_are_set_listed_and_cleared(self):
        hook = self.document("fault", "list")["hooks"][0]
        self.agctl(2, "fault", "set", hook, "--action", "delay", says="remedy: say for how many")
        self.agctl(0, "fault", "set", hook, "--action", "delay", "--delay-ms", 5, "--times", 2)
        self.assertEqual(self.document("fault", "list")["faults"],
                         [{"hook": hook, "action": "delay", "delayMs": 5, "times": 2}])
        self.agctl(0, "fault", "clear", "--all")
        self.assertEqual(self.document("fault", "list")["faults"], [])


class LongPathTest(unittest.TestCase):
    """A state directory whose path is longer than a socket's address."""

    def test_supervisor_is_reached(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory())) / ("d" * 200)
        folder.mkdir()
        with harness.Zedd({}, folder) as zedd:
            for words in (["--config", str(folder / "zedd.toml")],
                          ["--socket", str(folder / "state" / "admin.sock")]):
                result = subprocess.run([os.environ["ZAN_AGCTL"], *words, "slot", "list"],
                                        capture_output=True, text=True, timeout=harness.DEADLINE,
                                        check=False)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertEqual(zedd.stop(), 0)
            self.assertFalse((folder / "state" / "admin.sock").exists())


class BladeTest(ZeddCase):
    """What blades carry out."""

    def test_instance_lives_and_ends(self):
        self.simulate(3)
        self.create()
        for verb, phase in (("install", "stopped"), ("start", "started"), ("stop", "stopped")):
            job = self.document("app", verb, "fw-1", "--wait")
            self.assertEqual((job["state"], job["percentage"]), ("succeeded", 100))
            self.assertEqual(self.document("app", "show", "fw-1")["phase"], phase)
        self.agctl(0, "app", "upgrade", "fw-1", "--package", "http://10.0.0.1/fw-1.3.pkg",
                   "--version", "1.3", "--wait")
        self.assertEqual(self.document("app", "show", "fw-1")["version"], "1.3")
        self.agctl(0, "app", "clear-logs", "fw-1", "--wait")
        self.agctl(5, "app", "delete", "fw-1", "--yes")
        self.agctl(0, "app", "uninstall", "fw-1", "--yes", "--wait")
        self.agctl(0, "app", "delete", "fw-1", "--yes")
        # What was created with the defaults goes its way without a line that looks like an error.
        self.assertEqual([line for line in self.zedd.log.all() if re.match(r"\S+ [6-9] ", line)], [])

    def test_states_of_an_instance_have_names(self):
        self.create()
        self.simulate(3)
        self.agctl(0, "app", "install", "fw-1", "--wait")
        self.agctl(0, "app", "start", "fw-1", "--wait")
        harness.wait_until(lambda: (self.document("app", "show", "fw-1")["reported"]
                                    or {}).get("state") == 7)
        app = self.document("app", "show", "fw-1")
        self.assertEqual((app["believed"]["expectedState"], app["believed"]["expectedStateName"]),
                         (7, "started"))
        self.assertEqual((app["reported"]["state"], app["reported"]["stateName"]), (7, "started"))
        for words in (("app", "show", "fw-1"), ("slot", "show", "3")):
            text = self.agctl(0, *words).stdout
            self.assertRegex(text, r"expectedState +started\n")
            self.assertRegex(text, r" state +started\n")
            self.assertNotIn("tateName", text)

    def test_equipment_is_written_and_lets_an_instance_start(self):
        self.simulate(3)
        self.create()
        self.agctl(0, "app", "install", "fw-1", "--wait")
        self.agctl(0, "slot", "set", 3, "--serial", "")
        self.agctl(2, "app", "start", "fw-1", says="serial")
        self.agctl(0, "slot", "set", 3, "--serial", "B33", "--dry-run", says="nothing was done")
        self.agctl(2, "app", "start", "fw-1", "--dry-run")
        slot = self.document("slot", "set", 3, "--serial", "B33", "--name", "left")
        self.assertEqual(slot, {"slot": 3, "name": "left", "model": "", "serial": "B33"})
        chassis = self.document("chassis", "set", "--serial", "JX2")
        self.assertEqual(chassis, {"name": "", "model": "standard", "serial": "JX2"})
        self.zedd.kill()
        self.zedd.start()
        self.assertEqual(self.document("slot", "show", 3)["serial"], "B33")
        self.assertEqual(self.document("chassis", "show")["serial"], "JX2")
        self.agctl(0, "app", "start", "fw-1", "--wait")
        self.agctl(2, "slot", "set", 3, "--serial", "0", says="is no serial")
        self.agctl(2, "slot", "set", 3)
        self.agctl(4, "slot", "set", 9, "--serial", "B9")

    def test_slots_are_told_together(self):
        self.simulate(*SLOTS)
        result = self.agctl(4, "slot", "log-level", "1-5", "debug", "--wait", "-o", "json",
                            says="4 of 5 ordered, 1 refused")
        lines = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual([line.get("state") for line in lines], ["succeeded"] * 4 + [None])
        self.agctl(0, "slot", "clear-logs", "1,2", "--wait")
        self.agctl(0, "timezone", "set", "Europe/Berlin", "--wait", says="4 blades are told")
        self.agctl(0, "slot", "format", "2", "--yes", "--wait")
        self.agctl(0, "slot", "deregister", "4", "--yes", "--wait")

    def test_failure_on_the_blade_is_told(self):
        self.simulate(3)
        hook = next(hook for hook in self.document("fault", "list")["hooks"]
                    if hook.startswith("FINJ_FSM_FAIL_") and "Install" in hook)
        self.create()
        self.agctl(0, "fault", "set", hook, "--action", "fail", "--times", 1)
        self.agctl(7, "app", "install", "fw-1", "--wait", says="is failed")

    def test_job_outlives_a_killed_supervisor(self):
        job = self.document("slot", "log-level", 3, "debug")["id"]
        self.zedd.kill()
        self.agctl(3, "job", "show", job)
        self.zedd.start()
        self.simulate(3)
        self.agctl(0, "job", "wait", job, "--timeout", 2 * harness.DEADLINE)


if __name__ == "__main__":
    harness.main()
