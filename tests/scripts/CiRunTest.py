""".ci/run with stand-ins for the scripts that it calls: what it counts and when it fails."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

TEST = """#!/bin/bash
[[ ${BROKEN_BUILD-} != "$1" ]] || exit 2
bad=0
[[ ${RED-} != "$1" ]] || bad=2
mkdir -p "build/$1"
printf '<?xml version="1.0"?>\\n<testsuite name="x"\\n\\ttests="9"\\n\\tfailures="%s"\\n\\t' \\
  $bad >"build/$1/tests.xml"
printf 'disabled="0"\\n\\tskipped="1"\\n\\t>\\n\\t<testcase tests="70"/>\\n</testsuite>\\n' \\
  >>"build/$1/tests.xml"
[[ $bad == 0 ]]
"""

CHECK = """#!/bin/bash
[[ ${RED-} != "${0##*/}" ]]
"""


class CiRunTest(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="ci-test-"))
        self.addCleanup(shutil.rmtree, self.root)
        shutil.copytree(ROOT / ".ci", self.root / ".ci")
        (self.root / "scripts").mkdir()
        self.script("test", TEST)
        for name in ("check-format", "check-includes", "check-tidy", "fuzz"):
            self.script(name, CHECK)

    def script(self, name, text):
        path = self.root / "scripts" / name
        path.write_text(text)
        path.chmod(0o755)

    def run_ci(self, **environment):
        result = subprocess.run([self.root / ".ci/run"], env={**os.environ, **environment},
                                capture_output=True, text=True, timeout=30)
        self.assertEqual(result.stderr, "")
        return result.returncode, result.stdout.splitlines()

    def test_all_green_sums_runs_and_checks(self):
        code, lines = self.run_ci()
        self.assertEqual((code, lines[-1]), (0, "28 passed, 0 failed"))
        self.assertRegex("\n".join(lines), r"\n +\d+ s  tests, asan\n")

    def test_red_test_run_goes_on_and_fails(self):
        code, lines = self.run_ci(RED="asan")
        self.assertEqual((code, lines[-1]), (1, "26 passed, 2 failed"))
        self.assertRegex("\n".join(lines), r"\n +\d+ s  tests, asan  FAILED\n")

    def test_red_check_counts_as_one(self):
        for name in ("check-format", "check-includes", "check-tidy", "fuzz"):
            with self.subTest(name):
                code, lines = self.run_ci(RED=name)
                self.assertEqual((code, lines[-1]), (1, "27 passed, 1 failed"))

    def test_broken_build_is_a_failure_and_old_results_do_not_count(self):
        self.run_ci()
        code, lines = self.run_ci(BROKEN_BUILD="release")
        self.assertEqual((code, lines[-1]), (1, "20 passed, 1 failed"))


if __name__ == "__main__":
    unittest.main()
