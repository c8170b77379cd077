"""Operators that send application instances through their lives, and what their jobs came to.

For tests that let blades, supervisor or commands go wrong meanwhile.
"""

import collections
import http.client
import pathlib
import tempfile
import unittest

import harness
from blades import Blades
from orders import OVER, Operator, chassis

SLOTS = (1, 2, 3, 4)
LANES = 8
PACKAGE = "http://10.0.0.1/fw-1.0.pkg"
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


class LaneCase(unittest.TestCase):
    """A supervisor, blades, and lanes of orders; what became of every job that was accepted."""

    LOG_LEVEL = 8

    def setUp(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (folder / "chassis.toml").write_text(chassis(*SLOTS))
        self.zedd = self.enterContext(harness.Zedd({
            "log.level": self.LOG_LEVEL, "dme.chassis": str(folder / "chassis.toml"),
            "dme.settle_after": 1}))
        self.blades = self.enterContext(Blades(
            folder, f"{SLOTS[0]}-{SLOTS[-1]}", "--apps", "0", "--beat", "0.1", "--report", "0.3",
            "--command-time", "0.05"))
        self.operator = Operator(self.zedd)
        self.lanes = [Lane(number, self.zedd) for number in range(LANES)]
        self._settled = {}  # by number: the jobs that were seen in their last state

    def note_settled(self):
        """Sees that no accepted job is lost, and keeps what is final.

        The supervisor keeps only the latest of these.
        """
        accepted = [job for lane in self.lanes for job in list(lane.accepted)]
        for job in self.operator.granted(200, "/jobs?limit=1000&state=succeeded,failed")["jobs"]:
            self._settled[job["id"]] = job
        for job in accepted:
            if job["id"] not in self._settled:
                status, found = self.operator.ask(f"/jobs/{job['id']}")
                self.assertEqual(status, 200, f"{job} was accepted and is lost: {found}")
            else:
                found = self._settled[job["id"]]
            for field in ("verb", "app", "slot"):
                self.assertEqual(found[field], job[field], found)

    def all_over(self, seconds):
        """Every job that was accepted and every other that is there, once all of them are over."""
        harness.wait_until(lambda: not self.open_jobs(), self.open_jobs, seconds)
        unknown = self.unknown_jobs()
        self.note_settled()
        return {**{job["id"]: job for job in unknown}, **self._settled}

    def open_jobs(self):
        return self.operator.granted(200, "/jobs?state=accepted,sending,running")["jobs"]

    def unknown_jobs(self):
        return self.operator.granted(200, "/jobs?limit=1000&state=unknown")["jobs"]

    def assert_told(self, jobs):
        for job in jobs.values():
            self.assertIn(job["state"], OVER)
            if job["state"] != "succeeded":
                self.assertTrue(job.get("reason") and job.get("cause"), job)

    def assert_done_once(self, jobs):
        """The blades carried out nothing that was not ordered, and nothing twice."""
        sent = self.count_by_work(job for job in jobs.values() if job["attempts"])
        succeeded = self.count_by_work(job for job in jobs.values() if job["state"] == "succeeded")
        executed = collections.Counter()
        for slot in SLOTS:
            executed.update(self.blades.executed(slot))
        for what, count in executed.items():
            self.assertLessEqual(count, sent[what], f"{what} was carried out too often")
        for what, count in succeeded.items():
            self.assertGreaterEqual(executed[what], count, f"{what} was not carried out")
        received = sum(self.blades.state(slot)["received"] for slot in SLOTS)
        self.assertLessEqual(received, sum(1 for job in jobs.values() if job["attempts"]))

    @staticmethod
    def count_by_work(jobs):
        """How many of the jobs there are for each command and instance."""
        return collections.Counter((COMMANDS[job["verb"]], job["app"]) for job in jobs)

    @staticmethod
    def told(jobs):
        """What became of the jobs, for people."""
        states = collections.Counter(job["state"] for job in jobs.values())
        reasons = collections.Counter(job.get("reason") for job in jobs.values())
        return f"{len(jobs)} jobs, {dict(states)}, {dict(reasons)}"
