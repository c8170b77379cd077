"""scripts/setup, run with stand-ins for dpkg-query, apt-get, sudo and id on its PATH."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOLS = ("bash", "cat", "comm", "dirname", "env", "grep", "sed", "sort", "wc")

DPKG_QUERY = """#!/bin/bash
# The installed packages are the lines of $STATE/installed.
for package; do
  if grep -qx -- "$package" "$STATE/installed"; then
    echo "installed $package"
  elif [[ $package != -* && $package != *Status* ]]; then
    echo "dpkg-query: no packages found matching $package" >&2
  fi
done
"""

APT_GET = """#!/bin/bash
echo "$*" >>"$STATE/apt-calls"
[[ ${APT_FAILS-} != "$1" ]] || exit 100
[[ $1 == install ]] || exit 0
for word in "${@:2}"; do
  [[ $word == -* ]] || echo "$word" >>"$STATE/installed"
done
"""

SUDO = """#!/bin/bash
echo "$*" >>"$STATE/sudo-calls"
exec "$@"
"""

ID = """#!/bin/bash
echo "$USER_ID"
"""


class SetupTest(unittest.TestCase):
    def setUp(self):
        self.state = pathlib.Path(tempfile.mkdtemp(prefix="setup-test-"))
        self.addCleanup(shutil.rmtree, self.state)
        self.bin = self.state / "bin"
        self.bin.mkdir()
        for tool in TOOLS:
            (self.bin / tool).symlink_to(shutil.which(tool, path="/usr/bin:/bin"))
        self.wanted = [
            line.strip()
            for line in (ROOT / "packaging/apt-packages.txt").read_text().splitlines()
            if line.strip() and not line.startswith("#")
        ]
        self.install(*self.wanted)
        self.stand_in("dpkg-query", DPKG_QUERY)
        self.stand_in("apt-get", APT_GET)
        self.stand_in("id", ID)

    def install(self, *packages):
        (self.state / "installed").write_text("".join(p + "\n" for p in packages))

    def stand_in(self, name, text):
        path = self.bin / name
        path.write_text(text)
        path.chmod(0o755)

    def run_setup(self, *arguments, user=0, **environment):
        return subprocess.run(
            [ROOT / "scripts/setup", *arguments],
            env={"PATH": str(self.bin), "STATE": str(self.state), "USER_ID": str(user),
                 **environment},
            stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=30)

    def calls(self, name):
        path = self.state / name
        return path.read_text().splitlines() if path.exists() else []

    def test_all_installed_nothing_is_called(self):
        result = self.run_setup()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("nothing to do", result.stdout)
        self.assertEqual(self.calls("apt-calls"), [])

    def test_two_missing_as_root_installs_just_those(self):
        self.install(*[p for p in self.wanted if p not in ("ninja-build", "libzmq3-dev")])
        result = self.run_setup()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("setup: missing: libzmq3-dev ninja-build\n", result.stdout)
        self.assertEqual(self.calls("apt-calls"), [
            "update -q",
            "install -q -y --no-install-recommends libzmq3-dev ninja-build"])
        self.assertEqual(self.calls("sudo-calls"), [])

    def test_check_tells_and_changes_nothing(self):
        self.install(*[p for p in self.wanted if p != "cmake"])
        result = self.run_setup("--check")
        self.assertEqual(result.returncode, 1)
        self.assertIn("setup: missing: cmake\n", result.stdout)
        self.assertEqual(self.calls("apt-calls"), [])

    def test_missing_as_user_with_sudo_goes_through_sudo(self):
        self.install(*[p for p in self.wanted if p != "cmake"])
        self.stand_in("sudo", SUDO)
        result = self.run_setup(user=1000)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.calls("sudo-calls")[-1],
                         "env DEBIAN_FRONTEND=noninteractive apt-get install -q -y "
                         "--no-install-recommends cmake")

    def test_missing_as_user_without_sudo_names_cause_and_remedy(self):
        self.install(*[p for p in self.wanted if p != "cmake"])
        result = self.run_setup(user=1000)
        self.assertEqual(result.returncode, 1)
        self.assertIn("neither root nor is there a sudo", result.stderr)
        self.assertIn("remedy: run as root", result.stderr)
        self.assertEqual(self.calls("apt-calls"), [])

    def test_no_apt_names_cause_and_remedy(self):
        (self.bin / "apt-get").unlink()
        result = self.run_setup()
        self.assertEqual(result.returncode, 1)
        self.assertIn("error: this system has no apt", result.stderr)
        self.assertIn("remedy: use Debian 12", result.stderr)

    def test_update_fails_is_reported_and_nothing_installed(self):
        self.install()
        result = self.run_setup(APT_FAILS="update")
        self.assertEqual(result.returncode, 1)
        self.assertIn("error: apt-get update failed", result.stderr)
        self.assertEqual(self.calls("apt-calls"), ["update -q"])

    def test_install_fails_is_reported(self):
        self.install()
        result = self.run_setup(APT_FAILS="install")
        self.assertEqual(result.returncode, 1)
        self.assertIn("error: apt-get install failed", result.stderr)

    def test_unknown_argument_is_refused(self):
        result = self.run_setup("--chek")
        self.assertEqual(result.returncode, 2)
        self.assertIn("unknown argument '--chek'", result.stderr)


if __name__ == "__main__":
    unittest.main()
