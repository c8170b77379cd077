"""What others notice of commands that wait for blades which never answer."""

import contextlib
import socket
import threading
import time
import unittest

import harness
from orders import Operator

DEAD_SLOTS = (1, 2)
LIVE_SLOT = 5
# A command waits so long for its blade; what comes behind it may wait for one exchange.
EXCHANGE = 10.0
# A query needs microseconds of the engine's time; the rest is for a busy machine.
QUERY_BOUND = 0.050
LONGEST_QUERY = 1.0
RESOURCES = ("/health", "/chassis", "/slots", f"/slots/{LIVE_SLOT}", "/model", "/apps", "/apps/fw1",
             "/jobs", "/jobs?state=sending", "/timezone", "/faults")


class DeadBlade:
    """Registers, accepts connections and never says a word on them."""

    def __init__(self, slot):
        self._accepted = []
        self._listener = socket.create_server(("127.0.0.1", 0))
        self._thread = threading.Thread(target=self._accept, daemon=True)
        self._thread.start()
        with harness.Blade(slot) as blade:
            self._port = self._listener.getsockname()[1]
            for _ in range(2):  # the first reply tells the token with "come again"
                blade.register(port=self._port)

    def _accept(self):
        with contextlib.suppress(OSError):
            while True:
                self._accepted.append(self._listener.accept()[0])

    def close(self):
        self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()
        self._thread.join()
        for connection in self._accepted:
            connection.close()


class Stopwatch(harness.Companion):
    """Does something again and again and notes how long each time takes."""

    def __init__(self, action, pause):
        super().__init__()
        self._action, self._pause = action, pause
        self.seconds = []

    def work(self):
        while not self._stopping.wait(self._pause):
            begin = time.monotonic()
            self._action()
            self.seconds.append(time.monotonic() - begin)

    def share(self, part):
        return sorted(self.seconds)[int((len(self.seconds) - 1) * part)]


class JobLatencyTest(unittest.TestCase):
    def setUp(self):
        self.zedd = self.enterContext(harness.Zedd())
        self.operator = Operator(self.zedd)
        self.of_each_query = []
        for slot in DEAD_SLOTS:
            dead = DeadBlade(slot)
            self.addCleanup(dead.close)
            self.operator.create(slot, f"fw{slot}", "/packages/fw-1.0.pkg")
        self.live = self.enterContext(harness.Blade(LIVE_SLOT))
        self.live.register_validly()

    def test_queries_go_on_and_heartbeats_wait_for_one_exchange_at_most(self):
        queries = Stopwatch(self.query_all, 0.02)
        beats = Stopwatch(self.beat, 0.05)
        jobs = [self.operator.order(f"/apps/fw{slot}/install") for slot in DEAD_SLOTS]
        queries.start()
        beats.start()
        begin = time.monotonic()
        ends = [self.operator.await_end(job, 60) for job in jobs]
        took = time.monotonic() - begin
        queries.stop()
        beats.stop()
        for job in ends:
            self.assertEqual((job["state"], job["reason"]), ("unknown", "answerLost"), job)
        # They went out one after the other; one alone would take ten seconds at most.
        self.assertGreater(took, 1.5 * EXCHANGE)
        each = self.of_each_query
        print(f"{len(each)} queries: p99 {sorted(each)[int(len(each) * 0.99)] * 1000:.1f} ms, "
              f"longest {max(each) * 1000:.1f} ms; {len(beats.seconds)} heartbeats: "
              f"p50 {beats.share(0.5) * 1000:.1f} ms, longest {max(beats.seconds):.2f} s")
        self.assertGreater(len(each), 200)
        self.assertLess(sorted(each)[int(len(each) * 0.99)], QUERY_BOUND)
        self.assertLess(max(each), LONGEST_QUERY)
        self.assertLess(max(beats.seconds), EXCHANGE + 1)

    def query_all(self):
        for path in RESOURCES:
            begin = time.monotonic()
            self.operator.granted(200, path)
            self.of_each_query.append(time.monotonic() - begin)

    def beat(self):
        self.assertEqual(self.live.heartbeat().code, "100")


if __name__ == "__main__":
    harness.main()
