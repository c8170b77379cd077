"""A zedd that dies at any moment comes back with every token that a blade was told."""

import os
import random
import time
import unittest

import harness

# How often zedd is killed; ZAN_KILL_ROUNDS asks for more.
ROUNDS = int(os.environ.get("ZAN_KILL_ROUNDS", "8"))
AGENTS = 6
SLOTS_OF_AGENT = 400


class Agent(harness.Companion):
    """Registers one fresh slot after the other and notes the tokens that it is told."""

    def __init__(self, number, told, seed):
        super().__init__()
        self._slots = range(1 + number * SLOTS_OF_AGENT, 1 + (number + 1) * SLOTS_OF_AGENT)
        self._told = told
        self._random = random.Random(seed)

    def work(self):
        for slot in self._random.sample(self._slots, len(self._slots)):
            with harness.Blade(slot) as blade:
                for _ in range(2):  # the first reply tells the token with "come again"
                    reply = self._register(blade)
                    if reply is None:
                        return
                    self._note(slot, reply)

    def _register(self, blade):
        blade.send("serviceOrchAG.register", blade.register_document())
        while not self._stopping.is_set():
            reply = blade.receive_if_any(0.05)
            if reply is not None:
                return reply
        return None

    def _note(self, slot, reply):
        token = reply.text("token")
        if reply.status in ("100", "510") and token:
            self._told.setdefault(slot, set()).add(token)


class KillTest(unittest.TestCase):
    def test_tokens_that_were_told_are_the_tokens_held(self):
        zedd = self.enterContext(harness.Zedd({"log.level": 8}))
        told = {}
        moments = random.Random(7)
        for round_ in range(ROUNDS):
            agents = [Agent(number, told, seed=100 * round_ + number) for number in range(AGENTS)]
            for agent in agents:
                agent.start()
            time.sleep(moments.uniform(0.05, 0.6))
            zedd.kill()
            for agent in agents:
                agent.stop()
            zedd.start()
            self.assert_held(told, round_)
        self.assertGreater(len(told), 10 * ROUNDS, "hardly anything was registered")

    def assert_held(self, told, round_):
        """Each slot knows the one token that was told, and no other."""
        for slot, tokens in told.items():
            self.assertEqual(len(tokens), 1, f"slot {slot} was told several tokens")
            with self.subTest(round=round_, slot=slot), harness.Blade(slot) as blade:
                token = next(iter(tokens))
                self.assertEqual(blade.register(token=token).status, "100")
                self.assertEqual(blade.register(token="x" + token).status, "511")


if __name__ == "__main__":
    harness.main()
