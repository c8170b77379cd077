"""scripts/fetch-pugixml, run on a copy of scripts/ with stand-ins for dpkg-query and apt."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

DPKG_QUERY = """#!/bin/bash
[[ -n ${VERSION-} ]] || exit 1
echo -n "$VERSION"
"""

# "source" leaves an unpacked package in the current folder.
APT_GET = """#!/bin/bash
for word; do
  case $word in
    update | source) verb=$word ;;
    Dir::Etc::SourceParts=*) rm -rf "$STATE/sources"; cp -r "${word#*=}" "$STATE/sources" ;;
  esac
done
echo "$verb ${!#}" >>"$STATE/calls"
[[ ${FAILS-} != "$verb" ]] || exit 100
[[ $verb == source ]] || exit 0
mkdir -p pugixml-1.13/src
echo code >"pugixml-1.13/src/${FILE-pugixml.cpp}"
"""


class FetchPugixmlTest(unittest.TestCase):
    def setUp(self):
        self.state = pathlib.Path(tempfile.mkdtemp(prefix="fetch-test-"))
        self.addCleanup(shutil.rmtree, self.state)
        shutil.copytree(ROOT / "scripts", self.state / "scripts")
        self.bin = self.state / "bin"
        self.bin.mkdir()
        self.program("dpkg-query", DPKG_QUERY)
        self.program("apt-get", APT_GET)
        self.program("dpkg-source", "#!/bin/bash\n")
        self.program("apt-config", f"#!/bin/bash\necho \"folder='{self.state}/apt/'\"\n")
        (self.state / "apt/sources.list.d").mkdir(parents=True)

    def program(self, name, text):
        (self.bin / name).write_text(text)
        (self.bin / name).chmod(0o755)

    def run_fetch(self, *arguments, version="1.13-0.2", **environment):
        return subprocess.run(
            [self.state / "scripts/fetch-pugixml", *arguments],
            env={**os.environ, "PATH": f"{self.bin}:/usr/bin:/bin", "STATE": str(self.state),
                 "VERSION": version, **environment},
            stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=30)

    def calls(self):
        path = self.state / "calls"
        return path.read_text().splitlines() if path.exists() else []

    def in_build(self):
        return sorted(path.name for path in (self.state / "build").iterdir())

    def test_fetches_the_source_of_the_installed_version_and_leaves_nothing_else(self):
        result = self.run_fetch()
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(self.calls(), ["update update", "source pugixml=1.13-0.2"])
        self.assertEqual((self.state / "build/pugixml/src/pugixml.cpp").read_text(), "code\n")
        self.assertEqual(self.in_build(), ["pugixml"])
        self.assertEqual(result.stdout.splitlines()[-1],
                         "fetch-pugixml: pugixml 1.13-0.2 is in build/pugixml")

    def test_asks_the_configured_places_for_source_packages_only(self):
        folder = self.state / "apt"
        (folder / "sources.list").write_text(
            "# main\ndeb [arch=amd64] http://a bookworm main\ndeb-src http://b bookworm main\n")
        (folder / "sources.list.d/c.list").write_text(" deb http://c ./\n")
        (folder / "sources.list.d/d.sources").write_text(
            "Types: deb deb-src\nURIs: http://d\nSigned-By: /d.gpg\n\nTypes: deb\nURIs: http://e\n")
        self.run_fetch()
        written = self.state / "sources"
        self.assertEqual((written / "machine.list").read_text(),
                         "deb-src [arch=amd64] http://a bookworm main\ndeb-src http://c ./\n")
        self.assertEqual(
            (written / "d.sources").read_text(),
            "Types: deb-src\nURIs: http://d\nSigned-By: /d.gpg\n\nTypes: deb-src\nURIs: http://e\n")

    def test_second_time_does_nothing_until_the_version_changes(self):
        self.run_fetch()
        self.run_fetch()
        self.assertEqual(len(self.calls()), 2)
        self.run_fetch(version="1.13-0.3")
        self.assertEqual(self.calls()[-1], "source pugixml=1.13-0.3")

    def test_unreadable_source_elsewhere_does_not_matter(self):
        result = self.run_fetch(FAILS="update")
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_no_source_package_keeps_what_is_there_and_tells_a_remedy(self):
        self.run_fetch()
        result = self.run_fetch(version="2", FAILS="source")
        self.assertEqual(result.returncode, 1)
        self.assertIn("there is no source package pugixml 2 to be had", result.stderr)
        self.assertIn("remedy:", result.stderr)
        self.assertEqual(self.in_build(), ["pugixml"])

    def test_package_without_the_file_fails(self):
        result = self.run_fetch(FILE="other.cpp")
        self.assertEqual(result.returncode, 1)
        self.assertIn("holds no src/pugixml.cpp", result.stderr)
        self.assertEqual(self.in_build(), [])

    def test_library_not_installed_fails_before_any_work(self):
        result = self.run_fetch(version="")
        self.assertEqual(result.returncode, 1)
        self.assertIn("remedy: run scripts/setup", result.stderr)
        self.assertEqual(self.calls(), [])

    def test_wrong_argument_is_refused(self):
        self.assertEqual(self.run_fetch("--now").returncode, 2)
        self.assertEqual(self.calls(), [])


if __name__ == "__main__":
    unittest.main()
