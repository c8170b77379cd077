"""No job is lost, none is done twice, and each comes to an end that is told, whoever dies when.

The supervisor and the blades' simulator are killed at random moments while operators send
application instances through their lives.
"""

import collections
import http.client
import os
import pathlib
import random
import tempfile
import time
import unittest

import harness
from blades import Blades
from orders import OVER, Operator, chassis

# How often something is killed; ZAN_KILL_ROUNDS asks for more.
ROUNDS = int(os.environ.get("ZAN_KILL_ROUNDS", "12"))
SEED = int(os.environ.get("ZAN_KILL_SEED", "7"))
SLOTS = (1, 2, 3, 4)
LANES = 8
PACKAGE = "http://10.0.0.1/fw-1.0.pkg"
# The engine pauses up to half a minute between two attempts to deliver a command.
SETTLED = 60.0
COMMANDS = {"install": "installApp", "start": "startApp", "stop": "stopApp",
            "uninstall": "uninstallApp"}


class Gone(Exception):
    """The supervisor went away before it answered."""


class Lane(harness.Companion):
    """An operator that sends one instance after the other through its life."""

    def __init__(self, number, zedd):
        super().__init__()
        self._operator = Operator(zedd)
        self._number, self._slot = number, SLOTS[number % len(SLOTS)]
        self._count = 0
        self._done = set()  # verbs that succeeded for the instance of the moment
        self.accepted = []  # jobs as they were answered, all of them

    def work(self):
        while not self._stopping.is_set():
            try:
                self._step()
            except Gone:
                self._stopping.wait(0.02)

    @property
    def _app(self):
        return f"k{self._number}-{self._count}"

    def _step(self):
        status, app = self._ask(f"/apps/{self._app}")
        if status == 404:
            self._ask("/apps", "POST", {"id": self._app, "slot": self._slot,
                                        "app": {"packageFile": PACKAGE}})
        elif app["job"]:
            self._ask(f"/jobs/{app['job']}?waitMs=1000")
        elif app["phase"] == "absent" and "install" in self._done:
            self._ask(f"/apps/{self._app}", "DELETE")
            self._count, self._done = self._count + 1, set()
        else:
            self._order(app["phase"])

    def _order(self, phase):
        verb = {"absent": "install", "started": "stop",
                "stopped": "uninstall" if "start" in self._done else "start"}.get(phase)
        if verb is None:  # until a report of the blade tells what there is
            self._stopping.wait(0.05)
            return
        status, job = self._ask(f"/apps/{self._app}/{verb}", "POST", {"finishWithinMs": 3000})
        if status != 202:  # a report may have come between the look and the order
            self._stopping.wait(0.02)
            return
        self.accepted.append(job)
        status, job = self._ask(f"/jobs/{job['id']}?waitMs=5000")
        if status == 200 and job["state"] == "succeeded":
            self._done.add(verb)

    def _ask(self, *request):
        try:
            return self._operator.ask(*request)
        except (OSError, http.client.HTTPException, ValueError) as error:
            raise Gone from error


class JobKillTest(unittest.TestCase):
    def setUp(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (folder / "chassis.toml").write_text(chassis(*SLOTS))
        self.zedd = self.enterContext(harness.Zedd({
            "log.level": 8, "dme.chassis": str(folder / "chassis.toml"), "dme.settle_after": 1}))
        self.blades = self.enterContext(Blades(
            folder, f"{SLOTS[0]}-{SLOTS[-1]}", "--apps", "0", "--beat", "0.1", "--report", "0.3",
            "--command-time", "0.05"))
        self.operator = Operator(self.zedd)
        self.moments = random.Random(SEED)
        self.settled = {}  # by number: the jobs that were seen in their last state

    def test_jobs_outlast_whoever_is_killed(self):
        lanes = [Lane(number, self.zedd) for number in range(LANES)]
        for lane in lanes:
            lane.start()
        kinds = collections.Counter()
        begin = time.monotonic()
        for _ in range(ROUNDS):
            time.sleep(self.moments.uniform(0.2, 1.4))
            victims = self.moments.choice(("zedd", "blades", "both"))
            kinds[victims] += 1
            self.kill(victims)
            self.note_settled(lanes)
        for lane in lanes:
            lane.stop()
        seconds = time.monotonic() - begin
        self.kill("blades")  # or some of them wait half a minute for the answer of a dead zedd
        jobs = self.all_settled(lanes)
        self.assert_told(jobs)
        self.assert_done_once(jobs)
        print(f"{ROUNDS} rounds in {seconds:.0f} s, killed: {dict(kinds)}; {len(jobs)} jobs, "
              f"{dict(collections.Counter(job['state'] for job in jobs.values()))}, "
              f"{dict(collections.Counter(job.get('reason') for job in jobs.values()))}")
        self.assertGreater(len(jobs), ROUNDS, "hardly anything was ordered")

    def kill(self, victims):
        if victims in ("zedd", "both"):
            self.zedd.kill()
        if victims in ("blades", "both"):
            self.blades.kill()
        if victims in ("zedd", "both"):
            self.zedd.start()
        if victims in ("blades", "both"):
            self.blades.start()

    def note_settled(self, lanes):
        """Sees that no accepted job is lost, and keeps what is final.

        The supervisor keeps only the latest of these.
        """
        accepted = [job for lane in lanes for job in list(lane.accepted)]
        for job in self.operator.granted(200, "/jobs?limit=1000&state=succeeded,failed")["jobs"]:
            self.settled[job["id"]] = job
        for job in accepted:
            if job["id"] not in self.settled:
                status, found = self.operator.ask(f"/jobs/{job['id']}")
                self.assertEqual(status, 200, f"{job} was accepted and is lost: {found}")
            else:
                found = self.settled[job["id"]]
            for field in ("verb", "app", "slot"):
                self.assertEqual(found[field], job[field], found)

    def all_settled(self, lanes):
        """Every job that was accepted and every other that is there, once all of them are over."""
        harness.wait_until(lambda: not self.open_jobs(), self.open_jobs, SETTLED)
        unknown = self.operator.granted(200, "/jobs?limit=1000&state=unknown")["jobs"]
        self.note_settled(lanes)
        return {**{job["id"]: job for job in unknown}, **self.settled}

    def open_jobs(self):
        return self.operator.granted(200, "/jobs?state=accepted,sending,running")["jobs"]

    def assert_told(self, jobs):
        for job in jobs.values():
            self.assertIn(job["state"], OVER)
            if job["state"] != "succeeded":
                self.assertTrue(job.get("reason") and job.get("cause"), job)

    def assert_done_once(self, jobs):
        """The blades carried out nothing that was not ordered, and nothing twice."""
        sent = collections.Counter((COMMANDS[job["verb"]], job["app"]) for job in jobs.values()
                                   if job["attempts"])
        succeeded = collections.Counter((COMMANDS[job["verb"]], job["app"])
                                        for job in jobs.values() if job["state"] == "succeeded")
        executed = collections.Counter()
        for slot in SLOTS:
            executed.update(self.blades.executed(slot))
        for what, count in executed.items():
            self.assertLessEqual(count, sent[what], f"{what} was carried out too often")
        for what, count in succeeded.items():
            self.assertGreaterEqual(executed[what], count, f"{what} was not carried out")
        received = sum(self.blades.state(slot)["received"] for slot in SLOTS)
        self.assertLessEqual(received, sum(1 for job in jobs.values() if job["attempts"]))
        # The work of these blades never fails, but what is sent twice is refused the second time.
        refused = [job for job in jobs.values()
                   if job.get("reason") in ("failedOnBlade", "refused")]
        self.assertEqual(refused, [])


if __name__ == "__main__":
    harness.main()
