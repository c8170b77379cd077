"""No job is lost, none is done twice, and how each ended comes out, whatever goes wrong on blades.

Replies are lost, late, short and double, work fails, rests and is forgotten, and last reports are
not sent, at random, while operators send application instances through their lives.
"""

import collections
import os
import pathlib
import random
import time

import harness
from LaneCase import LANES, SLOTS, LaneCase

# How long faults are made; ZAN_FAULT_SECONDS asks for more.
SECONDS = float(os.environ.get("ZAN_FAULT_SECONDS", "15"))
SEED = int(os.environ.get("ZAN_FAULT_SEED", "7"))
FAULTS = (
    {"kind": "lateReply", "delayMs": 300},
    {"kind": "shortReply"},
    {"kind": "doubleReply"},
    {"kind": "refuse"},
    {"kind": "fail"},
    {"kind": "stall", "lastsMs": 500},
    {"kind": "stall", "lastsMs": 4000},
    {"kind": "runBackwards"},
    {"kind": "loseReport"},
    {"kind": "loseReport"},
    {"kind": "loseReport"},
    {"kind": "die", "moment": "work", "lastsMs": 300},
)
# A command waits ten seconds for its reply, and all others wait for it: one in so many.
SILENT = (
    {"kind": "ignore"},
    {"kind": "noReply"},
    {"kind": "die", "moment": "reply", "lastsMs": 300},
)
SILENT_SHARE = 0.02
# The exchanges that got no reply, one after the other, and a pause of half a minute after one.
SETTLED = 90.0


class Sizes:
    """What a running process takes, read again and again."""

    def __init__(self, pid):
        self._status = pathlib.Path(f"/proc/{pid}/status")
        self._rows = []
        self.most_threads = 0

    def read(self):
        fields = dict(line.split(":", 1) for line in self._status.read_text().splitlines())
        kilobytes, threads = int(fields["VmRSS"].split()[0]), int(fields["Threads"])
        self._rows.append(kilobytes)
        self.most_threads = max(self.most_threads, threads)

    def told(self):
        """Memory at the begin, at three points between and at the end."""
        points = [self._rows[(len(self._rows) - 1) * part // 4] // 1024 for part in range(5)]
        return f"{'..'.join(map(str, points))} MB, at most {self.most_threads} threads"


class JobFaultTest(LaneCase):
    LOG_LEVEL = 5

    def test_jobs_outlast_every_fault(self):
        chance = random.Random(SEED)
        sizes = Sizes(self.zedd.pid)
        kinds = collections.Counter()
        for lane in self.lanes:
            lane.start()
        begin = noted = time.monotonic()
        while time.monotonic() - begin < SECONDS:
            slot = chance.choice(SLOTS)
            if not self.blades.state(slot)["faults"]:  # or hardly a command would go well
                fault = chance.choice(SILENT if chance.random() < SILENT_SHARE else FAULTS)
                kinds[fault["kind"]] += 1
                self.blades.disturb(slot, **fault)
            time.sleep(chance.uniform(0, 0.4))
            if time.monotonic() - noted > 5:
                self.note_settled()
                sizes.read()
                noted = time.monotonic()
        sizes.read()
        self.blades.ask("clear")
        for lane in self.lanes:
            lane.stop()
        # What nobody knows is shown by the next reports, for the blades live.
        harness.wait_until(lambda: not self.open_jobs() and not self.unknown_jobs(),
                           self.unknown_jobs, SETTLED)
        jobs = self.all_over(SETTLED)
        print(f"{SECONDS:.0f} s, {dict(kinds)}; {self.told(jobs)}; {sizes.told()}")
        self.assert_told(jobs)
        self.assert_done_once(jobs)
        self.assertGreater(len(jobs), LANES, "hardly anything was ordered")


if __name__ == "__main__":
    harness.main()
