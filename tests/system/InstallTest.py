"""What cmake --install puts in place works there, away from the build."""

import os
import pathlib
import subprocess
import tempfile
import unittest

import harness


class InstallTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        stage = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.root = stage / "usr"
        subprocess.run([os.environ["ZAN_CMAKE"], "--install", os.environ["ZAN_BUILD"], "--prefix",
                        "/usr"], env={**os.environ, "DESTDIR": str(stage)}, check=True,
                       stdout=subprocess.DEVNULL)

    def run_installed(self, program, *arguments):
        return subprocess.run([self.root / "bin" / program, *arguments], capture_output=True,
                              text=True, check=False, timeout=harness.DEADLINE)

    def test_programs_start(self):
        for program in ("agctl", "zedd"):
            result = self.run_installed(program, "--version")
            self.assertEqual((result.returncode, result.stderr), (0, ""), program)
            self.assertRegex(result.stdout, rf"^{program} \d")
        self.assertEqual(self.run_installed("sma-sim", "--help").returncode, 0)

    def test_supervisor_runs_with_the_installed_libraries(self):
        libraries = self.root / "lib" / "serviceOrchAG"
        with harness.Zedd(program=self.root / "bin" / "zedd") as zedd:
            mapped = {line.split(maxsplit=5)[-1] for line in
                      pathlib.Path(f"/proc/{zedd.pid}/maps").read_text().splitlines()}
            ours = sorted(path for path in mapped if "libserviceOrchAG" in path or "libzanfw" in path)
            listed = subprocess.run(
                [self.root / "bin" / "agctl", "--config", zedd.folder / "zedd.toml", "slot", "list"],
                capture_output=True, text=True, check=False, timeout=harness.DEADLINE)
            self.assertEqual(zedd.stop(), 0)
        self.assertEqual(ours, [str(libraries / "libserviceOrchAG.so"),
                                str((libraries / "libzanfw.so").resolve())])
        self.assertEqual((listed.returncode, listed.stderr), (0, ""))

    def test_completion_stands_where_bash_looks_for_it(self):
        script = self.root / "share" / "bash-completion" / "completions" / "agctl"
        self.assertEqual(script.read_text(), self.run_installed("agctl", "completion", "bash").stdout)
        result = subprocess.run(
            ["bash", "--norc", "-c",
             f'source "{script}"; COMP_WORDS=("{self.root}/bin/agctl" slot sh); COMP_CWORD=2; '
             'COMP_LINE="${COMP_WORDS[*]}"; _agctl; echo "${COMPREPLY[@]}"; complete -p agctl'],
            capture_output=True, text=True, check=False, timeout=harness.DEADLINE)
        self.assertEqual((result.stdout, result.stderr),
                         ("show\ncomplete -F _agctl agctl\n", ""))


if __name__ == "__main__":
    harness.main()
