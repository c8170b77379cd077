"""No job is lost, none is done twice, and each comes to an end that is told, whoever dies when.

The supervisor and the blades' simulator are killed at random moments while operators send
application instances through their lives.
"""

import collections
import os
import random
import time

import harness
from LaneCase import LaneCase

# How often something is killed; ZAN_KILL_ROUNDS asks for more.
ROUNDS = int(os.environ.get("ZAN_KILL_ROUNDS", "12"))
SEED = int(os.environ.get("ZAN_KILL_SEED", "7"))
# The engine pauses up to half a minute between two attempts to deliver a command.
SETTLED = 60.0


class JobKillTest(LaneCase):
    def setUp(self):
        super().setUp()
        self.moments = random.Random(SEED)

    def test_jobs_outlast_whoever_is_killed(self):
        for lane in self.lanes:
            lane.start()
        kinds = collections.Counter()
        begin = time.monotonic()
        for _ in range(ROUNDS):
            time.sleep(self.moments.uniform(0.2, 1.4))
            victims = self.moments.choice(("zedd", "blades", "both"))
            kinds[victims] += 1
            self.kill(victims)
            self.note_settled()
        for lane in self.lanes:
            lane.stop()
        seconds = time.monotonic() - begin
        self.kill("blades")  # or some of them wait half a minute for the answer of a dead zedd
        jobs = self.all_over(SETTLED)
        self.assert_told(jobs)
        self.assert_done_once(jobs)
        # The work of these blades never fails, but what is sent twice is refused the second time.
        refused = [job for job in jobs.values()
                   if job.get("reason") in ("failedOnBlade", "refused")]
        self.assertEqual(refused, [])
        print(f"{ROUNDS} rounds in {seconds:.0f} s, killed: {dict(kinds)}; {self.told(jobs)}")
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


if __name__ == "__main__":
    harness.main()
