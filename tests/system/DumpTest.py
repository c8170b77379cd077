"""The model read back: from a running zedd through its admin socket, from a stopped one by itself."""

import contextlib
import json
import os
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import threading
import time
import unittest

import harness
from admin import AdminConnection, connect

SLOT = "sys/chassis-1/slot-3"


PLATFORM = """
<platformInfoUpdateRequest>
  <OsVersion>2.4.1</OsVersion>
  <Cpu><minus1>0.1</minus1></Cpu>
  <DiskFilesystem><minus1><Disk><DiskName>sda1</DiskName></Disk></minus1></DiskFilesystem>
  <application>
    <appInstanceId>a/1</appInstanceId><operStatus>running</operStatus>
    <installedVersion>1.0</installedVersion>
  </application>
</platformInfoUpdateRequest>
"""


def dump(zedd, *name, configuration="zedd.toml"):
    return subprocess.run([os.environ["ZAN_ZEDD"], "--config", zedd.folder / configuration,
                           "--dump-model", *name],
                          capture_output=True, text=True, timeout=harness.DEADLINE, check=False)


def objects_of(result):
    """The printed objects by name."""
    return {each["dn"]: each for each in json.loads(result.stdout)["objects"]}


def trace_of(folder):
    """Everything that a look at a folder could change: bytes, times, entries."""
    def look(path):
        status = path.lstat()
        return (status.st_ino, status.st_mode, status.st_mtime_ns,
                path.read_bytes() if path.is_file() else b"")
    return {path.name: look(path) for path in [folder, *sorted(folder.iterdir())]}


class DumpCase(unittest.TestCase):
    def setUp(self):
        self.zedd = self.enterContext(harness.Zedd())
        self.state = self.zedd.folder / "state"

    def admit(self, slot=3):
        with harness.Blade(slot) as blade:
            return blade.register_validly()

    def assert_dumped(self, result, *pieces):
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        for piece in pieces:
            self.assertIn(piece, objects_of(result))

    def assert_one_line(self, result, status, *pieces):
        self.assertEqual((result.returncode, result.stdout), (status, ""))
        self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
        self.assertTrue(result.stderr.startswith("zedd: "), result.stderr)
        for piece in pieces:
            self.assertIn(piece, result.stderr)


class RunningDumpTest(DumpCase):
    def test_running_one_is_asked_and_tells_no_token(self):
        token = self.admit()
        result = dump(self.zedd)
        self.assert_dumped(result, "sys", "sys/chassis-1", SLOT)
        slot = objects_of(result)[SLOT]
        self.assertEqual((slot["class"], slot["properties"]["number"],
                          slot["properties"]["hasToken"]), ("slot", 3, True))
        self.assertEqual(len(token), 32)
        self.assertNotIn(token, result.stdout + self.socket_says("/api/v1/model")
                         + self.socket_says("/api/v1/slots/3"))
        self.assertEqual(result.stdout, self.socket_says("/api/v1/model"))

    def socket_says(self, path):
        with contextlib.closing(AdminConnection(self.zedd)) as admin:
            admin.request("GET", path)
            return admin.getresponse().read().decode()

    def test_part_of_the_tree_begins_at_the_name(self):
        self.admit(3)
        self.admit(30)
        result = dump(self.zedd, SLOT)
        self.assertEqual(list(objects_of(result)), [SLOT])

    def test_unknown_name_is_said(self):
        self.assert_one_line(dump(self.zedd, SLOT), 3, f"no object is named '{SLOT}'")

    def test_directory_that_is_in_use_stays_as_it_is(self):
        self.admit()
        before = trace_of(self.state)
        self.assert_dumped(dump(self.zedd), SLOT)
        self.assertEqual(trace_of(self.state), before)


class StoppedDumpTest(DumpCase):
    def assert_dumped_without_trace(self, *name):
        before = trace_of(self.state)
        result = dump(self.zedd, *name)
        self.assertEqual(trace_of(self.state), before)
        self.assert_dumped(result, SLOT)
        return result

    def test_stopped_one_prints_the_same_and_nothing_changes(self):
        token = self.admit()
        running = objects_of(dump(self.zedd))
        self.zedd.stop()
        result = self.assert_dumped_without_trace()
        self.assertNotIn(token, result.stdout)
        del running[SLOT]["properties"]["registrations"]  # counted since the start
        self.assertEqual(objects_of(result), running)
        self.assertEqual(list(objects_of(self.assert_dumped_without_trace(SLOT))), [SLOT])

    def test_killed_one_is_read_with_its_log_and_nothing_changes(self):
        self.admit()
        self.zedd.kill()
        self.assertGreater((self.state / "engine.db-wal").stat().st_size, 0)
        self.assertTrue(objects_of(self.assert_dumped_without_trace())[SLOT]["properties"]
                        ["hasToken"])
        self.zedd.start()
        self.assert_dumped(dump(self.zedd), SLOT)

    def test_copy_with_the_tokens_is_gone(self):
        self.admit()
        self.zedd.kill()
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([os.environ["ZAN_ZEDD"], "--config", self.zedd.folder / "zedd.toml",
                            "--dump-model"], check=True, stdout=subprocess.DEVNULL,
                           env={**os.environ, "TMPDIR": folder})
            self.assertEqual(os.listdir(folder), [])

    def test_unknown_name_is_said(self):
        self.zedd.stop()
        self.assert_one_line(dump(self.zedd, "sys/none"), 3, "no object is named 'sys/none'")

    def test_override_names_another_state_directory(self):
        self.zedd.stop()
        result = subprocess.run([os.environ["ZAN_ZEDD"], "--config", self.zedd.folder / "zedd.toml",
                                 "--set", f"supervisor.state_dir={self.zedd.folder}/none",
                                 "--dump-model"],
                                capture_output=True, text=True, check=False)
        self.assert_one_line(result, 1, f"{self.zedd.folder}/none/engine.db is not there")
        self.assertFalse((self.zedd.folder / "none").exists())

    def test_damaged_database_is_refused_as_zedd_refuses_it(self):
        self.zedd.stop()
        (self.state / "engine.db").write_bytes(b"this is no database" * 1000)
        self.assert_refused("engine.db is damaged (file is not a database)")

    def test_database_of_another_program_is_refused(self):
        self.zedd.stop()
        (self.state / "engine.db").unlink()
        with contextlib.closing(sqlite3.connect(self.state / "engine.db")) as other:
            other.execute("CREATE TABLE other (x)")
        self.assert_refused("engine.db is a database of another program")

    def assert_refused(self, cause):
        before = trace_of(self.state)
        self.assert_one_line(dump(self.zedd), 1, str(self.state), cause)
        self.assertEqual(trace_of(self.state), before)

    def test_dumps_and_starts_do_not_hinder_each_other(self):
        self.admit()
        # One of our own: a start writes the other anew.
        shutil.copy(self.zedd.folder / "zedd.toml", self.zedd.folder / "dump.toml")
        for _ in range(3):
            self.zedd.kill()
            results = []
            readers = [threading.Thread(target=lambda: results.append(
                dump(self.zedd, configuration="dump.toml"))) for _ in range(4)]
            for reader in readers:
                reader.start()
            self.zedd.start()
            for reader in readers:
                reader.join()
            self.assertEqual(len(results), 4)
            for result in results:
                self.assert_dumped(result, SLOT)


class AdminSocketTest(DumpCase):
    def setUp(self):
        super().setUp()
        self.admin = AdminConnection(self.zedd)
        self.addCleanup(self.admin.close)

    def test_socket_is_for_its_owner_and_goes_with_the_process(self):
        path = self.state / "admin.sock"
        self.assertTrue(path.is_socket())
        self.assertEqual(path.stat().st_mode & 0o777, 0o600)
        self.zedd.stop()
        self.assertFalse(path.exists())

    def test_socket_of_a_killed_one_is_replaced(self):
        self.zedd.kill()
        self.assertTrue((self.state / "admin.sock").is_socket())
        with self.assertRaises(ConnectionRefusedError):
            connect(self.state / "admin.sock")
        self.zedd.start()
        self.assertEqual(self.admin.ask("/api/v1/health")[0], 200)

    def test_second_supervisor_leaves_the_socket_to_the_first(self):
        second = subprocess.run([os.environ["ZAN_ZEDD"], "--config",
                                 self.zedd.folder / "zedd.toml"], capture_output=True, check=False)
        self.assertEqual(second.returncode, 1)
        self.assertEqual(self.admin.ask("/api/v1/health")[0], 200)

    def test_every_resource_answers_on_one_connection(self):
        self.admit()
        with harness.Blade(3) as blade:
            blade.heartbeat(count=7, timer=10)
        status, content_type, health = self.admin.ask("/api/v1/health")
        self.assertEqual((status, content_type), (200, "application/json"))
        self.assertEqual((health["status"], health["engine"]), ("ok", "embedded"))
        chassis = self.admin.ask("/api/v1/chassis")[2]
        self.assertEqual((chassis["epoch"], chassis["slots"]), (1, 1))
        self.assertEqual(objects_of(dump(self.zedd))["sys"]["properties"]["clusterId"],
                         chassis["clusterId"])
        slots = self.admin.ask("/api/v1/slots")[2]["slots"]
        self.assertEqual([slot["slot"] for slot in slots], [3])
        slot = self.wait_for_beat()
        self.assertEqual((slot["state"], slot["admission"], slot["hasToken"]),
                         ("alive", "valid", True))
        self.assertEqual((slot["beats"]["lastCount"], slot["beats"]["lastTimer"]), (7, 10))
        self.assertEqual((slot["monitor"], slot["instances"]), (None, []))

    def test_slot_shows_what_its_blade_reported(self):
        with harness.Blade(3) as blade:
            blade.register_validly()
            reply = blade.request("serviceOrchAG.platformInfo.update", PLATFORM)
            self.assertEqual(reply.message, "OK")
        slot = self.admin.ask("/api/v1/slots/3")[2]
        self.assertEqual((slot["monitor"]["osVersion"], slot["monitor"]["cpuMinus1"]),
                         ("2.4.1", 0.1))
        self.assertEqual([(disk["dn"], disk["diskName"]) for disk in slot["monitor"]["disks"]],
                         [(f"{SLOT}/monitor/disk-1", "sda1")])
        instance, = slot["instances"]
        self.assertEqual((instance["dn"], instance["source"], instance["installedVersion"]),
                         (f"{SLOT}/reported-a%2F1", "reported", "1.0"))
        self.assertEqual([fault["kind"] for fault in instance["faults"]], ["unexpected"])
        self.assert_dumped(dump(self.zedd, f"{SLOT}/reported-a%2F1"), f"{SLOT}/reported-a%2F1")

    def wait_for_beat(self):
        """The slot once the heartbeat, which nobody answers for, has reached the engine."""
        def slot():
            return self.admin.ask("/api/v1/slots/3")[2]
        harness.wait_until(lambda: slot()["beats"]["received"], slot)
        return slot()

    def test_what_cannot_be_asked_is_a_problem_with_a_remedy(self):
        for method, path, status, kind in (
                ("GET", "/api/v1/none", 404, "unknown-path"),
                ("GET", "/api/v1/slots/9", 404, "unknown-slot"),
                ("GET", "/api/v1/model?dn=none", 404, "unknown-object"),
                ("GET", "/api/v1/model?dm=sys", 400, "unknown-query-field"),
                ("GET", "/api/v1/model?dn=%zz", 400, "bad-target"),
                ("DELETE", "/api/v1/slots/3", 405, "unknown-method")):
            with self.subTest(path):
                answered, content_type, problem = self.admin.ask(path, method)
                self.assertEqual((answered, content_type), (status, "application/problem+json"))
                self.assertEqual((problem["type"], problem["status"]),
                                 ("/problems/" + kind, status))
                self.assertTrue(problem["title"] and problem["detail"] and problem["remedy"])

    def test_slow_clients_keep_nobody_waiting(self):
        slow = [self.enterContext(connect(self.state / "admin.sock")) for _ in range(10)]
        for client in slow:
            client.sendall(b"GET /api/v1/hea")
        self.assertEqual(self.admin.ask("/api/v1/health")[0], 200)
        self.assertTrue(self.admit())
        self.assert_dumped(dump(self.zedd), SLOT)
        slow[0].sendall(b"lth HTTP/1.1\r\nConnection: close\r\n\r\n")
        answer = slow[0].makefile("rb").read()
        self.assertTrue(answer.startswith(b"HTTP/1.1 200 OK\r\n"), answer)

    def test_clients_do_not_delay_the_end(self):
        idle = self.enterContext(connect(self.state / "admin.sock"))
        half = self.enterContext(connect(self.state / "admin.sock"))
        half.sendall(b"GET ")
        self.admin.ask("/api/v1/health")
        started = time.monotonic()
        os.kill(self.zedd.pid, signal.SIGTERM)
        self.assertEqual(self.zedd.stop(), 0)
        self.assertLess(time.monotonic() - started, 2)
        self.assertEqual(idle.recv(1), b"")


class RemoteEngineTest(unittest.TestCase):
    def test_supervisor_without_the_engine_says_where_it_is(self):
        zedd = harness.Zedd()  # for its folder; it is not started as one that becomes ready
        self.addCleanup(zedd.__exit__)
        end_point = f"ipc://{zedd.folder}/engine"
        (zedd.folder / "zedd.toml").write_text(harness.as_toml(
            {"supervisor.state_dir": f"{zedd.folder}/state", "dme.endpoint": end_point}))
        process = subprocess.Popen([os.environ["ZAN_ZEDD"], "--config", zedd.folder / "zedd.toml"],
                                   stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        # At first the process has not come to its state directory.
        harness.wait_until(lambda: "is not there" not in dump(zedd).stderr)
        result = dump(zedd)
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"the engine is expected at {end_point}", result.stderr)
        with contextlib.closing(AdminConnection(zedd)) as admin:
            self.assertEqual(admin.ask("/api/v1/health")[2]["status"], "starting")


if __name__ == "__main__":
    harness.main()
