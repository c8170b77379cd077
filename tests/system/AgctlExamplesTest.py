"""The examples that agctl's help ends with, run as they stand on a chassis like the demo's."""

import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import harness

AGCTL = pathlib.Path(os.environ["ZAN_AGCTL"])
SLOTS = range(1, 10)  # in the last one there is no blade
CHASSIS = '[chassis]\nname = "demo"\nmodel = "C8"\nserial = "CH1"\n' + "".join(
    f"""[[slot]]
number = {slot}
model = "B2"
serial = "BL{slot}"
apps = [{{id = "slot{slot}-app1", version = "1.1", state = "started"}},
        {{id = "slot{slot}-app2", version = "1.2", state = "started"}}]
""" for slot in SLOTS)
# The one example that needs a job in a certain state, whatever its number is.
CANCEL = "agctl job cancel 17"


class ExamplesTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (self.folder / "chassis.toml").write_text(CHASSIS)
        self.zedd = self.enterContext(
            harness.Zedd({"dme.chassis": str(self.folder / "chassis.toml")}, self.folder))

    def run_line(self, line):
        """Runs a line in a shell that finds agctl, and agctl the supervisor."""
        return subprocess.run(
            ["bash", "-c", line], stdin=subprocess.DEVNULL, capture_output=True, text=True,
            env={**os.environ, "PATH": f"{AGCTL.parent}:{os.environ['PATH']}",
                 "AGCTL_SOCKET": str(self.folder / "state" / "admin.sock")},
            cwd=self.folder, timeout=3 * harness.DEADLINE, check=False)

    def words(self, *typed):
        return self.run_line("agctl completion words -- " + " ".join(typed) + " ''").stdout.split()

    def examples(self):
        """Of every verb, in the order of the help."""
        for noun in self.words():
            for verb in self.words(noun):
                text = self.run_line(f"agctl {noun} {verb} --help").stdout
                examples = re.findall(r"^(?:Example: |  )(agctl .*)$", text, re.MULTILINE)
                self.assertTrue(examples, text)
                yield from examples

    def simulate(self):
        process = subprocess.Popen(
            [os.environ["ZAN_SMA_SIM"], "--slots", "1-8", "--beat", "0.5", "--report", "1",
             "--command-time", "0.5", "--quiet"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            preexec_fn=harness.die_with_parent)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        harness.wait_until(lambda: self.run_line("agctl slot list").stdout.count(" valid ") == 8)

    def test_every_example_works(self):
        self.simulate()
        ran = 0
        for example in self.examples():
            with self.subTest(example):
                if example == CANCEL:
                    job = json.loads(self.run_line("agctl slot clear-logs 9 -o json").stdout)
                    example = example.replace("17", str(job["id"]))
                result = self.run_line(example)
                self.assertEqual(result.returncode, 0, result.stderr)
                ran += 1
        self.assertGreater(ran, 30)


if __name__ == "__main__":
    harness.main()
