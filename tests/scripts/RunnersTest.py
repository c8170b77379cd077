"""scripts/test and scripts/bench, run on a copy of scripts/ with stand-ins for cmake and ctest."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

RECORDER = """#!/bin/bash
echo "${0##*/} $*" >>"$STATE/calls"
[[ ${FAILS-} != "${0##*/} $1" ]] || exit 7
[[ ${0##*/} != ctest ]] || echo "100% tests passed, 0 tests failed out of 3"
"""


class RunnersTest(unittest.TestCase):
    def setUp(self):
        self.state = pathlib.Path(tempfile.mkdtemp(prefix="runners-test-"))
        self.addCleanup(shutil.rmtree, self.state)
        shutil.copytree(ROOT / "scripts", self.state / "scripts")
        self.bin = self.state / "bin"
        self.bin.mkdir()
        for name in ("cmake", "ctest"):
            self.program(self.bin / name, RECORDER)
        self.program(self.state / "scripts/setup", "#!/bin/bash\necho setup ran\n")
        self.benchmarks = self.state / "build/release/bin"

    def program(self, path, text):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(0o755)

    def run_script(self, name, *arguments, **environment):
        return subprocess.run(
            [self.state / "scripts" / name, *arguments],
            env={**os.environ, "PATH": f"{self.bin}:/usr/bin:/bin", "STATE": str(self.state),
                 **environment},
            stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=30)

    def calls(self):
        path = self.state / "calls"
        return path.read_text().splitlines() if path.exists() else []

    def test_test_without_arguments_runs_release_and_ctest_speaks_last(self):
        result = self.run_script("test")
        self.assertEqual(result.returncode, 0, result.stderr)
        configure, build, ctest = self.calls()
        self.assertEqual(configure, "cmake --preset release --log-level=WARNING")
        self.assertTrue(build.startswith("cmake --build --preset release -j "), build)
        self.assertEqual(
            ctest, f"ctest --preset release --output-junit {self.state}/build/release/tests.xml")
        self.assertEqual(result.stdout.splitlines()[-1],
                         "100% tests passed, 0 tests failed out of 3")

    def test_test_with_preset_and_filter_hands_both_on(self):
        self.run_script("test", "asan", "-R", "msg lyr")
        self.assertTrue(self.calls()[0].startswith("cmake --preset asan "))
        self.assertTrue(self.calls()[2].endswith("/build/asan/tests.xml -R msg lyr"))

    def test_test_when_build_fails_runs_no_test_and_fails(self):
        result = self.run_script("test", FAILS="cmake --build")
        self.assertEqual(result.returncode, 7)
        self.assertEqual(len(self.calls()), 2)

    def test_test_when_a_test_fails_fails(self):
        self.assertEqual(self.run_script("test", FAILS="ctest --preset").returncode, 7)

    def test_test_wrong_arguments_are_refused_before_any_work(self):
        for arguments in (["-R"], ["--fast"], ["asan", "tsan"]):
            with self.subTest(arguments):
                self.assertEqual(self.run_script("test", *arguments).returncode, 2)
        self.assertEqual(self.calls(), [])

    def test_bench_without_names_runs_all(self):
        self.program(self.benchmarks / "bench_xml", "#!/bin/bash\necho ran xml\n")
        self.program(self.benchmarks / "bench_log", "#!/bin/bash\necho ran log\n")
        result = self.run_script("bench")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("== log\nran log\n== xml\nran xml\n", result.stdout)

    def test_bench_unknown_name_runs_none_and_tells_the_choice(self):
        self.program(self.benchmarks / "bench_xml", "#!/bin/bash\necho ran xml\n")
        result = self.run_script("bench", "xml", "yml")
        self.assertEqual(result.returncode, 1)
        self.assertNotIn("ran xml", result.stdout)
        self.assertIn("there is no benchmark 'yml'", result.stderr)
        self.assertIn("choose of: xml", result.stderr)

    def test_bench_without_programs_fails(self):
        result = self.run_script("bench")
        self.assertEqual(result.returncode, 1)
        self.assertIn("there is no benchmark in", result.stderr)

    def test_help_of_every_script_shows_usage_and_example(self):
        for name in ("test", "bench"):
            with self.subTest(name):
                result = self.run_script(name, "--help")
                self.assertEqual(result.returncode, 0)
                self.assertIn(f"Usage: scripts/{name}", result.stdout)
                self.assertIn("Example", result.stdout)
                self.assertNotIn("set -euo", result.stdout)


if __name__ == "__main__":
    unittest.main()
