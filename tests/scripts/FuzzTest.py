"""scripts/fuzz, run on a copy of scripts/ with stand-ins for cmake and the libFuzzer programs."""

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
"""

# Behaves as a libFuzzer program does: FINDS names the one that finds something, BREAKS the one that
# cannot even start.
PROGRAM = """#!/bin/bash
echo "${0##*/} $*" >>"$STATE/calls"
name=${0##*/fuzz_}
[[ ${BREAKS-} != "$name" ]] || { echo "cannot start"; exit 1; }
if [[ ${FINDS-} == "$name" ]]; then
  echo "property broken: a reply parses"
  echo "artifact_prefix='x'; Test unit written to build/fuzz/findings/$name-crash-1"
  exit 77
fi
for word; do
  [[ $word != -merge=1 ]] || { mv build/fuzz/found/$name/* "fuzz/corpus/$name"; exit 0; }
done
echo "#2 INITED cov: 12 ft: 3"
echo "#9000 DONE   cov: 345 ft: 3"
echo "stat::number_of_executed_units: 9000"
echo new >"build/fuzz/found/$name/new"
"""


class FuzzTest(unittest.TestCase):
    def setUp(self):
        self.state = pathlib.Path(tempfile.mkdtemp(prefix="fuzz-test-"))
        self.addCleanup(shutil.rmtree, self.state)
        shutil.copytree(ROOT / "scripts", self.state / "scripts")
        self.bin = self.state / "bin"
        self.program(self.bin / "cmake", RECORDER)
        for name in ("setup", "fetch-pugixml"):
            self.program(self.state / "scripts" / name, RECORDER)
        for name in ("heartbeat", "xml"):
            (self.state / "fuzz/corpus" / name).mkdir(parents=True)
            self.program(self.state / "build/fuzz/bin" / f"fuzz_{name}", PROGRAM)

    def program(self, path, text):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        path.chmod(0o755)

    def run_fuzz(self, *arguments, **environment):
        return subprocess.run(
            [self.state / "scripts/fuzz", *arguments],
            env={**os.environ, "PATH": f"{self.bin}:/usr/bin:/bin", "STATE": str(self.state),
                 **environment},
            stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=30)

    def calls(self, program=""):
        path = self.state / "calls"
        lines = path.read_text().splitlines() if path.exists() else []
        return [line for line in lines if line.startswith(program)]

    def test_without_arguments_prepares_and_runs_every_target_for_a_minute(self):
        result = self.run_fuzz()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([line.split()[0] for line in self.calls()][:4],
                         ["setup", "fetch-pugixml", "cmake", "cmake"])
        self.assertTrue(self.calls("cmake")[0].startswith("cmake --preset fuzz "))
        for name in ("heartbeat", "xml"):
            with self.subTest(name):
                run, = self.calls(f"fuzz_{name}")
                self.assertIn(" -max_total_time=60 ", run)
                self.assertIn(f" -artifact_prefix=build/fuzz/findings/{name}- ", run)
                self.assertTrue(run.endswith(f" build/fuzz/found/{name} fuzz/corpus/{name}"), run)
        self.assertIn("fuzz: heartbeat: 9000 inputs, coverage 345, no finding\n"
                      "fuzz: xml: 9000 inputs, coverage 345, no finding\n", result.stdout)

    def test_time_jobs_and_targets_are_heeded(self):
        result = self.run_fuzz("--for", "5", "--jobs", "1", "xml")
        self.assertEqual(result.returncode, 0, result.stderr)
        run, = self.calls("fuzz_")
        self.assertTrue(run.startswith("fuzz_xml "), run)
        self.assertIn(" -max_total_time=5 ", run)

    def test_finding_fails_and_says_how_to_run_it_again_but_the_others_run(self):
        result = self.run_fuzz(FINDS="heartbeat")
        self.assertEqual(result.returncode, 1)
        self.assertIn("property broken: a reply parses\n", result.stdout)
        self.assertIn(
            "fuzz: heartbeat: finding build/fuzz/findings/heartbeat-crash-1; reproduce: "
            "build/fuzz/bin/fuzz_heartbeat build/fuzz/findings/heartbeat-crash-1\n", result.stdout)
        self.assertIn("fuzz: xml: 9000 inputs, coverage 345, no finding\n", result.stdout)

    def test_program_that_cannot_start_fails_and_names_its_output(self):
        result = self.run_fuzz(BREAKS="xml")
        self.assertEqual(result.returncode, 1)
        self.assertIn("cannot start\n", result.stdout)
        self.assertIn("fuzz: xml: the program failed, see build/fuzz/logs/xml\n", result.stdout)

    def test_without_keep_the_corpus_stays(self):
        self.run_fuzz()
        self.assertEqual(list((self.state / "fuzz/corpus/xml").iterdir()), [])
        self.assertTrue((self.state / "build/fuzz/found/xml/new").exists())

    def test_keep_merges_into_the_corpus(self):
        result = self.run_fuzz("--keep", "xml")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn(" -merge=1 -set_cover_merge=1 -use_counters=0 fuzz/corpus/xml build/fuzz/found/xml", self.calls("fuzz_xml")[1])
        self.assertTrue((self.state / "fuzz/corpus/xml/new").exists())
        self.assertIn("fuzz: xml: 1 inputs are kept\n", result.stdout)

    def test_failed_build_runs_nothing_and_fails(self):
        self.assertEqual(self.run_fuzz(FAILS="cmake --build").returncode, 7)
        self.assertEqual(self.calls("fuzz_"), [])

    def test_wrong_arguments_are_refused_before_any_work(self):
        for arguments in (["--for"], ["--for", "0"], ["--for", "1m"], ["--for", "-1"], ["--jobs"],
                          ["--jobs", "x"], ["--fast"], ["yml"], ["xm"], ["xml", ""]):
            with self.subTest(arguments):
                result = self.run_fuzz(*arguments)
                self.assertEqual(result.returncode, 2, result.stderr)
        self.assertIn("there is no target 'yml', choose of: heartbeat xml",
                      self.run_fuzz("yml").stderr)
        self.assertEqual(self.calls(), [])

    def test_help_shows_usage_and_example(self):
        result = self.run_fuzz("--help")
        self.assertEqual(result.returncode, 0)
        self.assertIn("Usage: scripts/fuzz", result.stdout)
        self.assertIn("Example", result.stdout)
        self.assertNotIn("set -euo", result.stdout)


if __name__ == "__main__":
    unittest.main()
