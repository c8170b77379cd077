"""Runs sma-sim at a real zedd, for the system tests that judge what its blades get."""

import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import harness


class SimulatorCase(unittest.TestCase):
    def setUp(self):
        self.enterContext(harness.Zedd())
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def simulate(self, scenario, *arguments):
        path = self.folder / "scenario.json"
        path.write_text(json.dumps(scenario))
        result = subprocess.run(
            [os.environ["ZAN_SMA_SIM"], "--beat", "0.5", "--json", "--quiet", "--scenario", path,
             *arguments], capture_output=True, text=True, timeout=60, check=False)
        self.assertTrue(result.stdout, result.stderr)
        return result.returncode, json.loads(result.stdout)


def list_faults():
    """The odd requests that sma-sim can send, by name."""
    return subprocess.run([os.environ["ZAN_SMA_SIM"], "--list-faults"], capture_output=True,
                          text=True, timeout=60, check=True).stdout.split()
