"""What the tests of agctl share: the program, and a scripted supervisor for it."""

import os
import subprocess
import unittest

import AgctlServer

AGCTL = os.environ["ZAN_AGCTL"]
SLOT = {"slot": 3, "name": "left", "state": "alive", "admission": "valid",
        "running": {"version": "2.4"},
        "beats": {"received": 17, "missed": 1, "sinceLastMs": 2400}}
APP = {"id": "fw-1", "dn": "sys/chassis-1/slot-3/app-fw-1", "slot": 3, "phase": "stopped",
       "version": "1.2", "packageFile": "http://10.0.0.1/fw-1.2.pkg", "isFailed": False, "job": 0}
# How long anything may take that ends at once; generous, for the sanitizers' sake.
DEADLINE = 30.0


class AgctlCase(unittest.TestCase):
    def setUp(self):
        self.server = self.enterContext(AgctlServer.Server())
        self.rules = self.server.rules

    def arguments(self, *arguments):
        return [AGCTL, "--socket", str(self.server.socket), *map(str, arguments)]

    def run_agctl(self, *arguments, stdin="", env=None):
        return subprocess.run(self.arguments(*arguments), input=stdin, capture_output=True,
                              text=True, timeout=DEADLINE, check=False,
                              env={**os.environ, **(env or {})})

    def assert_ends(self, code, *arguments, says=(), **how):
        """Runs it; its exit code is `code`, and each text of `says` is on standard error."""
        result = self.run_agctl(*arguments, **how)
        self.assertEqual(result.returncode, code, result.stderr + result.stdout)
        for text in (says,) if isinstance(says, str) else says:
            self.assertIn(text, result.stderr)
        return result

    def targets(self):
        return [str(asked) for asked in self.server.asked()]

    def add_job(self, job):
        self.rules[f"GET /jobs/{job.document['id']}"] = job.get
        return job
