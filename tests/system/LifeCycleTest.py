"""Applications and blades through their lives, ordered with agctl or with curl.

ZAN_FRONT_END says with which. What the engine answers is compared with what the simulated blades
did.
"""

import os
import pathlib
import tempfile
import unittest

import harness
from blades import Blades
from orders import (AgctlFrontEnd, CONFLICT, CurlFrontEnd, DONE, FAILED, NOT_FOUND, OFFLINE,
                    Operator, chassis)

FRONT_END = {"agctl": AgctlFrontEnd, "curl": CurlFrontEnd}[os.environ.get("ZAN_FRONT_END", "agctl")]

PACKAGE, NEWER_PACKAGE = "http://10.0.0.1/fw-1.0.pkg", "http://10.0.0.1/fw-1.1.pkg"
FOREIGN_SLOT = 3
SCENARIO = {"blades": [{"slots": str(FOREIGN_SLOT), "token": "token-of-another-chassis"}]}


class LifeCase(unittest.TestCase):
    """A zedd, simulated blades in three slots, one from another chassis, and a front end."""

    command_time = 0.2

    def setUp(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (folder / "chassis.toml").write_text(chassis(1, 2, FOREIGN_SLOT))
        self.zedd = self.enterContext(harness.Zedd({
            "dme.chassis": str(folder / "chassis.toml"), "dme.settle_after": 1}))
        self.operator = Operator(self.zedd)
        self.orders = FRONT_END(self.zedd)
        self.blades = self.enterContext(Blades(
            folder, f"1-{FOREIGN_SLOT}", "--apps", "0", "--beat", "0.2", "--report", "0.5",
            "--command-time", str(self.command_time), scenario=SCENARIO))
        self.await_slot(1, admission="valid")
        self.await_slot(2, admission="valid")
        self.await_slot(FOREIGN_SLOT, admission="foreign")

    def await_slot(self, number, **wanted):
        harness.wait_until(lambda: wanted.items() <= self.operator.slot(number).items(),
                           lambda: self.operator.slot(number))

    def await_job(self, number, **wanted):
        harness.wait_until(lambda: wanted.items() <= self.operator.job(number).items(),
                           lambda: self.operator.job(number))

    def assert_ends(self, ended, exit_code, /, **wanted):
        """The operator's command ended so, and what it was answered last has these values."""
        self.assertEqual(ended.code, exit_code, ended.documents)
        self.assertLessEqual(wanted.items(), ended.documents[-1].items(), ended.documents[-1])

    def assert_app(self, app, **wanted):
        found = self.operator.app(app)
        self.assertLessEqual(wanted.items(), found.items(), found)

    def assert_on_blade(self, slot, app, **wanted):
        """What the blade itself says of the instance; none wanted: it has no such instance."""
        found = self.blades.instances(slot)
        if not wanted:
            self.assertNotIn(app, found)
        else:
            self.assertLessEqual(wanted.items(), found[app].items(), found)

    def create(self, app="fw", slot=1):
        self.assert_ends(self.orders.create(app, slot, PACKAGE), DONE, phase="absent", slot=slot)
        return app

    def do(self, verb, app, **values):
        self.assert_ends(self.orders.app(verb, app, **values), DONE, state="succeeded",
                         percentage=100, attempts=1)


class ApplicationTest(LifeCase):
    def test_applications_on_two_blades_live_their_lives(self):
        for slot in (1, 2):
            self.create(f"fw-{slot}", slot)
        for slot in (1, 2):
            with self.subTest(slot=slot):
                self.live(slot, f"fw-{slot}")
        for slot in (1, 2):
            self.assertEqual(self.blades.executed(slot), {
                (command, f"fw-{slot}"): 1 for command in
                ("installApp", "startApp", "upgradeApp", "clearLogData", "stopApp", "uninstallApp")})

    def live(self, slot, app):
        self.assert_on_blade(slot, app)
        self.step(slot, app, "install", "stopped", running=False, version="1.0")
        self.step(slot, app, "start", "started", running=True, version="1.0")
        self.do("upgrade", app, package=NEWER_PACKAGE, version="1.1")
        self.assert_app(app, phase="started", version="1.1", packageFile=NEWER_PACKAGE)
        self.assert_on_blade(slot, app, version="1.1")
        self.step(slot, app, "clear-logs", "started", version="1.1")
        self.step(slot, app, "stop", "stopped", running=False, version="1.1")
        self.assertEqual(self.orders.delete(app).code, CONFLICT)
        self.step(slot, app, "uninstall", "absent")
        self.assertEqual(self.orders.delete(app).code, DONE)
        self.assertEqual(self.orders.app("install", app).code, NOT_FOUND)

    def step(self, slot, app, verb, phase, **on_blade):
        self.do(verb, app)
        self.assert_app(app, phase=phase, job=0)
        self.assert_on_blade(slot, app, **on_blade)

    def test_what_is_out_of_turn_is_refused_and_not_sent(self):
        app = self.create()
        for verb in ("start", "stop", "uninstall", "upgrade", "clear-logs"):
            values = {"package": NEWER_PACKAGE} if verb == "upgrade" else {}
            with self.subTest(verb):
                self.assertEqual(self.orders.app(verb, app, **values).code, CONFLICT)
        self.assertEqual(self.orders.create(app, 2, PACKAGE).code, CONFLICT)
        self.assertEqual(self.blades.executed(1), {})


class BladeTest(LifeCase):
    def test_foreign_blade_is_formatted_and_joins(self):
        waiting = self.orders.slot("log-level", FOREIGN_SLOT, level="debug", deliver_within=0.5)
        self.assert_ends(waiting, OFFLINE, state="failed", reason="deliverByPast", attempts=0)
        self.assert_ends(self.orders.slot("format", FOREIGN_SLOT), DONE, state="succeeded")
        self.await_slot(FOREIGN_SLOT, admission="valid")
        self.assertTrue(self.blades.state(FOREIGN_SLOT)["hasToken"])
        self.assert_ends(self.orders.slot("log-level", FOREIGN_SLOT, level="debug"), DONE)
        self.assertEqual(self.blades.executed(FOREIGN_SLOT),
                         {("formatDisk", ""): 1, ("platformLogLevel.set", ""): 1})

    def test_blades_are_set_and_cleared(self):
        self.assert_ends(self.orders.slot("log-level", 1, level="critical"), DONE,
                         argument="critical")
        self.assertEqual(self.blades.state(1)["logLevel"], "critical")
        self.assertEqual(self.blades.state(2)["logLevel"], "info")
        self.assert_ends(self.orders.slot("clear-logs", 2), DONE, state="succeeded")
        self.assertEqual(self.blades.state(2)["clearedLogs"], [{"app": "", "count": 1}])
        ended = self.orders.set_time_zone("Europe/Berlin")
        self.assertEqual(ended.code, DONE, ended.documents)
        for slot in (1, 2):
            self.assertEqual(self.blades.state(slot)["timeZone"], "CET-1CEST,M3.5.0,M10.5.0/3")
        self.assertEqual(self.operator.granted(200, "/timezone")["timezone"], "Europe/Berlin")

    def test_blade_that_was_let_go_comes_back_by_itself(self):
        before = self.operator.slot(2)["registrations"]
        self.assert_ends(self.orders.slot("deregister", 2), DONE, state="succeeded")
        harness.wait_until(lambda: self.operator.slot(2)["registrations"] > before)
        self.await_slot(2, admission="valid")


class FaultTest(LifeCase):
    def test_offline_blade_is_waited_for_and_then_given_up(self):
        app = self.create()
        self.blades.kill()
        self.zedd.kill()
        self.zedd.start()  # and no blade registers
        self.assert_ends(self.orders.app("install", app, deliver_within=1.5), OFFLINE,
                         state="failed", reason="deliverByPast")
        self.assert_app(app, phase="absent")
        # One that comes in time is told.
        job = self.operator.order(f"/apps/{app}/install")
        self.await_job(job["id"], state="accepted")
        self.blades.start()
        self.assertEqual(self.operator.await_end(job)["state"], "succeeded")
        self.assertEqual(self.blades.executed(1), {("installApp", app): 1})

    def test_refusal_of_the_blade_fails_the_job(self):
        app = self.create()
        self.blades.disturb(1, "refuse", code=508)
        self.assert_ends(self.orders.app("install", app), FAILED, state="failed", code=508)
        self.assert_on_blade(1, app)
        self.do("install", app)

    def test_work_that_fails_fails_the_job(self):
        app = self.create()
        self.do("install", app)
        self.blades.disturb(1, "fail", code=512)
        self.assert_ends(self.orders.app("start", app), FAILED, state="failed",
                         reason="failedOnBlade", code=512)
        # Whether it runs nevertheless, the blade's next report shows.
        harness.wait_until(lambda: self.operator.app(app)["phase"] == "stopped",
                           lambda: self.operator.app(app))
        self.assert_on_blade(1, app, running=False)
        self.do("start", app)

    def test_report_of_the_platform_settles_a_job_whose_end_was_lost(self):
        app = self.create()
        self.blades.disturb(1, "loseReport")
        job = self.operator.order(f"/apps/{app}/install", finishWithinMs=1000)
        self.await_job(job["id"], state="succeeded", reason="seenDone")
        self.assert_app(app, phase="stopped", job=0)

    def test_report_of_the_platform_settles_a_job_that_never_came(self):
        app = self.create()
        self.blades.disturb(1, "ignore")
        job = self.operator.order(f"/apps/{app}/install")
        self.await_job(job["id"], state="unknown", reason="answerLost")
        self.await_job(job["id"], state="failed", reason="seenUndone")
        self.assert_app(app, phase="absent", job=0)
        self.do("install", app)


class RestartTest(LifeCase):
    command_time = 1.5

    def test_work_goes_on_while_the_supervisor_starts_anew(self):
        app = self.create()
        job = self.operator.order(f"/apps/{app}/install")
        self.await_job(job["id"], state="running")
        self.zedd.kill()
        self.zedd.start()
        self.assertEqual(self.operator.await_end(job)["state"], "succeeded")
        self.assert_app(app, phase="stopped", job=0)
        self.assertEqual(self.blades.executed(1), {("installApp", app): 1})

    def test_command_that_was_being_sent_is_not_sent_again(self):
        app = self.create()
        self.blades.disturb(1, "lateReply", delayMs=3000)
        job = self.operator.order(f"/apps/{app}/install")
        harness.wait_until(lambda: self.blades.executed(1))
        self.assertEqual(self.operator.job(job["id"])["state"], "sending")
        self.zedd.kill()
        self.zedd.start()
        found = self.operator.job(job["id"])
        self.assertIn(found["state"], ("unknown", "running", "succeeded"), found)
        self.await_job(job["id"], state="succeeded")
        self.assertEqual(self.blades.executed(1), {("installApp", app): 1})

    def test_blade_that_dies_amid_the_work_is_asked_what_it_has(self):
        app = self.create()
        self.blades.disturb(1, "die", moment="work", lastsMs=300)
        job = self.operator.order(f"/apps/{app}/install", finishWithinMs=2000)
        self.await_job(job["id"], state="failed", reason="seenUndone")
        self.do("install", app)
        self.assert_app(app, phase="stopped")


if __name__ == "__main__":
    harness.main()
