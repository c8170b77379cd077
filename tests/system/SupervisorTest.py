"""zedd as an operator meets it: how it starts, refuses to start, listens to signals and ends."""

import os
import pathlib
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import time
import unittest

import harness


def run(*arguments, seconds=harness.DEADLINE):
    """Runs a zedd that is expected to end by itself."""
    return subprocess.run([os.environ["ZAN_ZEDD"], *map(str, arguments)], capture_output=True,
                          text=True, timeout=seconds, check=False)


class FolderTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zedd-test-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def configuration(self, text=None):
        path = self.folder / "zedd.toml"
        path.write_text(f'supervisor.state_dir = "{self.folder}/state"\n' if text is None else text)
        return path

    def assert_one_line(self, result, status, *pieces):
        self.assertEqual(result.returncode, status, result.stderr)
        lines = [line for line in result.stderr.splitlines() if line.startswith("zedd: ")]
        self.assertEqual(len(lines), 1, result.stderr)
        for piece in pieces:
            self.assertIn(piece, lines[0])


class ConfigurationTest(FolderTest):
    def test_sound_configuration_passes_the_check(self):
        self.assertEqual(run("--config", self.configuration(), "--check-config").returncode, 0)

    def test_unknown_key_names_file_line_key_and_the_nearest_one(self):
        path = self.configuration('[supervisor]\nstate_dir = "x"\nself_idd = 2\n')
        self.assert_one_line(run("--config", path), 2, "zedd.toml:3: ", "'supervisor.self_idd'",
                             "did you mean 'supervisor.self_id'?")

    def test_wrong_type_is_refused(self):
        path = self.configuration('[supervisor]\nstate_dir = "x"\n[log]\nlevel = "loud"\n')
        self.assert_one_line(run("--config", path), 2, "zedd.toml:4: ", "'log.level'")

    def test_missing_state_directory_key_is_refused(self):
        self.assert_one_line(run("--config", self.configuration("")), 2, "'supervisor.state_dir'")

    def test_unreadable_file_is_refused(self):
        self.assert_one_line(run("--config", self.folder / "none.toml"), 2, "none.toml",
                             "No such file")

    def test_unknown_override_is_refused(self):
        result = run("--config", self.configuration(), "--set", "log.levle=3")
        self.assert_one_line(result, 2, "'log.levle'", "did you mean 'log.level'?")

    def test_version_is_told(self):
        result = run("--version")
        self.assertEqual(result.returncode, 0)
        self.assertRegex(result.stdout, r"^zedd \d+\.\d+\.\d+\n$")


class RefusalToStartTest(FolderTest):
    def test_missing_library_is_named(self):
        result = run("--config", self.configuration(), "--set", "service.library=/none/lib.so")
        self.assert_one_line(result, 1, "/none/lib.so", "service.library")

    def test_state_directory_that_cannot_be_made(self):
        result = run("--config", self.configuration(), "--set", "supervisor.state_dir=/proc/none")
        self.assert_one_line(result, 1, "/proc/none")

    def test_log_file_that_cannot_be_written(self):
        result = run("--config", self.configuration(), "--set", "log.file=/none/zedd.log")
        self.assert_one_line(result, 1, "/none/zedd.log", "log.file")

    def test_database_of_a_newer_version_is_left_untouched(self):
        self.assert_database_refused(self.newer_database(), "newer version")

    def test_damaged_database_is_left_untouched(self):
        path = self.database()
        content = bytearray(path.read_bytes())
        content[100:3000] = b"\xff" * 2900
        path.write_bytes(content)
        self.assert_database_refused(path, "damaged")

    def test_damaged_name_is_told_in_one_printable_line(self):
        path = self.database()
        path.write_bytes(path.read_bytes().replace(b"runningVersion", b"runni\n\xe9\x1bersion"))
        self.assert_one_line(run("--config", self.configuration()), 1, str(path),
                             r"runni\x0A\xE9\x1Bersion")

    def test_file_that_is_no_database_is_left_untouched(self):
        path = self.database()
        path.write_bytes(b"this is no database" * 100)
        self.assert_database_refused(path, "engine.db")

    def database(self):
        zedd = harness.Zedd(folder=self.folder)
        with zedd:
            with harness.Blade(1) as blade:
                blade.register_validly()
            zedd.stop()
        return self.folder / "state" / "engine.db"

    def newer_database(self):
        path = self.database()
        connection = sqlite3.connect(path)
        connection.execute("PRAGMA user_version = 99")
        connection.close()
        return path

    def assert_database_refused(self, path, cause):
        before = {each.name: each.read_bytes() for each in path.parent.glob("engine.db*")}
        self.assert_one_line(run("--config", self.configuration()), 1, str(path), cause)
        after = {each.name: each.read_bytes() for each in path.parent.glob("engine.db*")}
        self.assertEqual(after, before)


class RunningTest(unittest.TestCase):
    def test_second_one_on_the_same_state_directory_is_refused(self):
        zedd = self.enterContext(harness.Zedd())
        result = run("--config", zedd.folder / "zedd.toml")
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"in use by process {zedd.pid}", result.stderr)
        self.assertEqual(self.enterContext(harness.Blade(1)).heartbeat().status, "510")

    def test_left_and_right_run_side_by_side(self):
        self.enterContext(harness.Zedd({"supervisor.self_id": 1}))
        self.enterContext(harness.Zedd({"supervisor.self_id": 2}))
        left = self.enterContext(harness.Blade(1, harness.LEFT_END_POINT))
        right = self.enterContext(harness.Blade(1, harness.RIGHT_END_POINT))
        tokens = {left.register_validly(), right.register_validly()}
        self.assertEqual(len(tokens), 2)
        self.assertEqual((left.heartbeat().status, right.heartbeat().status), ("100", "100"))

    def test_taken_port_is_logged_and_taken_over_when_it_is_free(self):
        first = self.enterContext(harness.Zedd())
        second = harness.Zedd()
        self.addCleanup(second.__exit__)
        second.launch()
        self.assertIsNotNone(second.log.wait_for(
            "An exception occurred while setting up server or worker end point: cannot "
            "bind 'tcp://127.0.0.1:5557': Address already in use"))
        self.assertNotIn("zedd: ready", second.output.text())
        first.stop()
        self.assertIsNotNone(second.output.wait_for("zedd: ready"))
        self.assertEqual(self.enterContext(harness.Blade(1)).heartbeat().status, "510")

    def test_hangup_rereads_the_log_level(self):
        zedd = self.enterContext(harness.Zedd({"log.level": 5}))
        blade = self.enterContext(harness.Blade(1))
        blade.heartbeat()
        self.assertNotIn("Handling SMA request", zedd.log.text())
        path = zedd.folder / "zedd.toml"
        path.write_text(path.read_text().replace("log.level = 5", "log.level = 4"))
        os.kill(zedd.pid, signal.SIGHUP)
        self.assertIsNotNone(zedd.log.wait_for("log level is 4"))
        blade.heartbeat()
        self.assertIsNotNone(zedd.log.wait_for("Handling SMA request"))

    def test_hangup_begins_a_new_log_file_where_the_old_one_was_moved_away(self):
        zedd, log = self.with_log_file()
        old = log.rename(log.with_suffix(".1"))
        os.kill(zedd.pid, signal.SIGHUP)
        harness.wait_until(lambda: log.exists() and "log level is 4" in log.read_text())
        self.assertEqual(log.stat().st_mode & 0o777, 0o600)
        before = old.read_text()
        with harness.Blade(1) as blade:
            blade.heartbeat()
        harness.wait_until(lambda: "Handling SMA request" in log.read_text())
        self.assertEqual(old.read_text(), before)

    def test_hangup_stays_with_the_old_log_file_when_there_can_be_no_new_one(self):
        zedd, log = self.with_log_file()
        old = log.rename(log.with_suffix(".1"))
        log.mkdir()
        os.kill(zedd.pid, signal.SIGHUP)
        harness.wait_until(lambda: "log level is 4" in old.read_text())
        self.assertIn(f"{log} cannot be opened: Is a directory", old.read_text())

    def with_log_file(self):
        folder = pathlib.Path(tempfile.mkdtemp(prefix="zedd-test-"))
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        log = folder / "zedd.log"
        return self.enterContext(harness.Zedd({"log.file": str(log)})), log

    def test_log_file_is_for_its_owner_only(self):
        _, log = self.with_log_file()
        self.assertEqual(log.stat().st_mode & 0o777, 0o600)

    def test_each_signal_ends_it_cleanly_within_two_seconds(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number), harness.Zedd() as zedd, harness.Blade(1) as blade:
                blade.register_validly()
                started = time.monotonic()
                os.kill(zedd.pid, number)
                self.assertEqual(zedd.stop(), 0)
                self.assertLess(time.monotonic() - started, 2)


class StartUpTest(FolderTest):
    def test_signal_at_any_moment_of_the_start_ends_it_cleanly(self):
        configuration = self.configuration()
        for line in ("start: engine at", "Initializing MsgHandler", "Waiting for channel init",
                     "Channel initialized", "bootstrap done") * 8:
            process = subprocess.Popen(
                [os.environ["ZAN_ZEDD"], "--config", configuration, "--set", "log.level=5"],
                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                text=True, preexec_fn=harness.die_with_parent)
            self.addCleanup(process.kill)
            log = harness.Lines(process.stderr)
            log.wait_for(line)
            process.send_signal(signal.SIGTERM)
            self.assertEqual(process.wait(harness.DEADLINE), 0, f"after '{line}'\n{log.text()}")
            log.join()


class RemoteEngineTest(unittest.TestCase):
    def test_signal_ends_a_zedd_that_waits_for_its_engine_and_a_registration(self):
        with tempfile.TemporaryDirectory(prefix="zedd-test-") as name:
            folder = pathlib.Path(name)
            configuration = folder / "zedd.toml"
            configuration.write_text(f'supervisor.state_dir = "{name}/state"\n'
                                     f'dme.endpoint = "ipc://{name}/engine"\n'
                                     f'log.file = "{name}/zedd.log"\nlog.level = 1\n')
            process = subprocess.Popen([os.environ["ZAN_ZEDD"], "--config", configuration])
            self.addCleanup(process.kill)
            with harness.Blade(1) as blade:
                blade.send("serviceOrchAG.register", blade.register_document())
                self.assert_comes(folder / "zedd.log", "ValidateBladeState : wait...")
                started = time.monotonic()
                process.send_signal(signal.SIGTERM)
                self.assertEqual(process.wait(harness.DEADLINE), 0)
                self.assertLess(time.monotonic() - started, 2)

    def assert_comes(self, path, text):
        harness.wait_until(lambda: path.exists() and text in path.read_text(errors="replace"),
                           lambda: f"no line with '{text}'")


if __name__ == "__main__":
    harness.main()
