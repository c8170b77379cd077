"""scripts/check-tidy and scripts/check-format, run on a small repository.

clang-tidy is a stand-in that writes down what it was asked; clang-format is the real one.
"""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

CLANG_TIDY = """#!/bin/bash
file=${@: -1}
echo "${file#"$STATE"/}" >>"$STATE/seen"
[[ -z ${SLOW-} ]] || exec sleep 60
grep -q BAD "$file" || exit 0
echo "$file:1:1: error: planted"
exit 1
"""


class CheckTest(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="tidy-test-"))
        self.addCleanup(shutil.rmtree, self.root)
        shutil.copytree(ROOT / "scripts", self.root / "scripts")
        shutil.copy(ROOT / ".clang-format", self.root)
        self.bin = self.root / ".bin"
        self.bin.mkdir()
        (self.bin / "clang-tidy").write_text(CLANG_TIDY)
        (self.bin / "clang-tidy").chmod(0o755)
        self.git("init", "-q", "-b", "main")
        (self.root / ".gitignore").write_text("/build/\n/seen\n/.bin/\n/scripts/\n")
        self.commands = []

    def git(self, *arguments):
        identity = ("-c", "user.name=t", "-c", "user.email=t@example.invalid",
                    "-c", "commit.gpgsign=false")
        subprocess.run(["git", "-C", self.root, *identity, *arguments], check=True,
                       capture_output=True)

    def write(self, path, text="int x;\n", command="ccache /usr/bin/c++ -O2 -fcoroutines -c "):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)
        if path.endswith(".cpp"):
            self.commands.append({"directory": str(self.root), "file": str(file),
                                  "command": command + path})
            (self.root / "build/release").mkdir(parents=True, exist_ok=True)
            (self.root / "build/release/compile_commands.json").write_text(
                json.dumps(self.commands))

    def commit(self):
        self.git("add", "-A")
        self.git("commit", "-q", "--allow-empty", "-m", "change")

    def run_script(self, name, *arguments, **environment):
        return subprocess.run(
            [self.root / "scripts" / name, *arguments],
            env={**os.environ, "PATH": f"{self.bin}:/usr/bin:/bin", "STATE": str(self.root),
                 **environment},
            stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60)

    def seen(self):
        path = self.root / "seen"
        return sorted(path.read_text().splitlines()) if path.exists() else []


class CheckTidyTest(CheckTest):
    def test_base_given_only_later_changes_are_looked_at(self):
        self.write("dme/Old.cpp")
        self.commit()
        self.write("dme/New.cpp")
        self.commit()
        self.write("dme/Uncommitted.cpp")
        result = self.run_script("check-tidy", "HEAD~1")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.seen(), ["dme/New.cpp", "dme/Uncommitted.cpp"])
        self.assertIn("2 of 2 changed sources looked at, 0 with findings", result.stdout)

    def test_finding_is_shown_and_fails(self):
        self.write("dme/A.cpp", "BAD\n")
        self.write("dme/B.cpp")
        self.commit()
        result = self.run_script("check-tidy")
        self.assertEqual(result.returncode, 1)
        self.assertIn("dme/A.cpp:1:1: error: planted", result.stdout)
        self.assertIn("2 of 2 changed sources looked at, 1 with findings", result.stdout)

    def test_changed_header_brings_its_source_or_its_test(self):
        for path in ("dme/A.h", "dme/A.cpp", "dme/B.h", "tests/dme/BTest.cpp", "dme/C.h"):
            self.write(path)
        self.commit()
        for path in ("dme/A.h", "dme/B.h", "dme/C.h"):
            (self.root / path).write_text("int y;\n")
        self.run_script("check-tidy", "HEAD")
        self.assertEqual(self.seen(), ["dme/A.cpp", "tests/dme/BTest.cpp"])

    def test_on_a_branch_starts_where_it_left_the_main_branch(self):
        self.write("dme/Main.cpp")
        self.commit()
        self.git("update-ref", "refs/remotes/origin/main", "HEAD")
        self.write("dme/Branch.cpp")
        self.commit()
        self.run_script("check-tidy")
        self.assertEqual(self.seen(), ["dme/Branch.cpp"])

    def test_on_the_main_branch_takes_the_last_twenty_commits(self):
        self.write("dme/First.cpp")
        self.commit()
        self.write("dme/Second.cpp")
        self.commit()
        for _ in range(19):
            self.commit()
        self.run_script("check-tidy")
        self.assertEqual(self.seen(), ["dme/Second.cpp"])

    def test_time_is_up_names_the_rest_and_ends(self):
        self.write("dme/A.cpp")
        self.commit()
        result = self.run_script("check-tidy", "--seconds", "0.3", SLOW="1")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("the time was up before these: dme/A.cpp\n", result.stdout)
        self.assertIn("0 of 1 changed sources looked at", result.stdout)

    def test_commands_are_translated_for_clang(self):
        self.write("dme/A.cpp")
        self.commit()
        self.run_script("check-tidy")
        entry, = json.loads((self.root / "build/release/tidy/compile_commands.json").read_text())
        self.assertEqual(entry["arguments"], ["/usr/bin/c++", "-O2", "-c", "dme/A.cpp"])

    def test_no_build_names_cause_and_remedy(self):
        self.commit()
        result = self.run_script("check-tidy")
        self.assertEqual(result.returncode, 2)
        self.assertIn("error: there is no build/release/compile_commands.json", result.stderr)
        self.assertIn("remedy: run scripts/test first", result.stderr)

    def test_unknown_base_names_cause(self):
        self.write("dme/A.cpp")
        self.commit()
        result = self.run_script("check-tidy", "no-such-commit")
        self.assertEqual(result.returncode, 2)
        self.assertIn("no-such-commit", result.stderr)


class CheckFormatTest(CheckTest):
    def test_file_out_of_format_is_named_then_put_right(self):
        self.write("dme/A.cpp", "int   x ;\n")
        self.write("dme/B.h", "int y;\n")
        self.commit()
        result = self.run_script("check-format")
        self.assertEqual(result.returncode, 1)
        self.assertIn("dme/A.cpp:1:", result.stderr)
        self.assertNotIn("dme/B.h", result.stderr)
        self.assertEqual(self.run_script("check-format", "--fix").returncode, 0)
        self.assertEqual((self.root / "dme/A.cpp").read_text(), "int x;\n")
        self.assertIn("2 files in format", self.run_script("check-format").stdout)

    def test_untracked_file_is_not_read(self):
        self.commit()
        self.write("dme/A.cpp", "int   x ;\n")
        self.assertEqual(self.run_script("check-format").returncode, 0)


if __name__ == "__main__":
    unittest.main()
