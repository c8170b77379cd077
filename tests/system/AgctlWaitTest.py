"""agctl waits for jobs of a scripted supervisor, also of one that is slow, dead or mad."""

import json
import signal
import subprocess
import threading
import time
import unittest

import AgctlServer
from AgctlCase import AGCTL, APP, DEADLINE, AgctlCase


class WaitCase(AgctlCase):
    def start(self, *arguments):
        process = subprocess.Popen(self.arguments(*arguments), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def wait_until(self, condition):
        deadline = time.monotonic() + DEADLINE
        while not condition():
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)

    def polls(self, job):
        return [asked for asked in self.server.asked() if asked.path == f"/jobs/{job}"]

    def format(self, job, slot=3, **members):
        """A job that formatting this slot's disk makes."""
        job = self.add_job(AgctlServer.Job(job, slot=slot, **members))
        self.rules[f"POST /slots/{slot}/format"] = lambda _: (202, job.document)
        return job


class FollowTest(WaitCase):
    def test_each_change_is_told_as_it_comes(self):
        job = self.format(17)
        process = self.start("slot", "format", 3, "--yes", "--wait")
        self.wait_until(lambda: len(self.polls(17)) == 1)
        job.change(state="running", percentage=40)
        self.wait_until(lambda: len(self.polls(17)) == 2)
        job.change(state="succeeded", percentage=100)
        out, err = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 0, err)
        subject = "agctl: job 17 (formatDisk of slot 3): "
        self.assertEqual(err.splitlines(), [subject + "accepted", subject + "running, 40 %",
                                            subject + "succeeded"])
        self.assertIn("succeeded", out)
        first, second = self.polls(17)
        self.assertEqual(first.query, {"waitMs": "60000", "revision": "1700"})
        self.assertEqual(second.query, {"waitMs": "60000", "revision": "1701"})

    def test_exit_code_tells_how_a_job_ended(self):
        for state, reason, code in (("succeeded", "", 0), ("succeeded", "seenDone", 0),
                                    ("failed", "deliverByPast", 6), ("failed", "refused", 7),
                                    ("failed", "failedOnBlade", 7), ("failed", "seenUndone", 7),
                                    ("failed", "cancelled", 1), ("unknown", "answerLost", 8),
                                    ("unknown", "finishByPast", 8)):
            with self.subTest(state=state, reason=reason):
                self.add_job(AgctlServer.Job(17, state=state, reason=reason, cause="so it is"))
                says = f"job 17 (formatDisk of slot 3) is {state}" if code else ""
                self.assert_ends(code, "job", "wait", 17, says=says)
                self.assertEqual(len(self.polls(17)), 1)  # nothing to wait for
                self.server.forget()

    def test_time_out_tells_an_offline_blade_from_a_slow_one(self):
        self.add_job(AgctlServer.Job(17, reason="waitsForBlade"))
        self.add_job(AgctlServer.Job(18, reason="notDelivered"))
        self.add_job(AgctlServer.Job(19, state="running", percentage=5))
        for job, code in ((17, 6), (18, 6), (19, 8)):
            started = time.monotonic()
            self.assert_ends(code, "job", "wait", job, "--timeout", 2,
                             says=("is still", "the job goes on", f"agctl job wait {job}"))
            self.assertLess(time.monotonic() - started, DEADLINE)
        self.assertLessEqual(int(self.polls(19)[1].query["waitMs"]), 2000)

    def test_several_jobs_are_followed_at_once_and_the_worst_counts(self):
        jobs = [self.format(slot, slot) for slot in (1, 2, 3)]
        process = self.start("slot", "format", "1-3", "--yes", "--wait", "-o", "json")
        self.wait_until(lambda: all(len(self.polls(slot)) == 1 for slot in (1, 2, 3)))
        jobs[2].change(state="succeeded")
        jobs[0].change(state="failed", reason="failedOnBlade", code=12)
        jobs[1].change(state="succeeded")
        out, err = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 7, err)
        self.assertEqual([(job["slot"], job["state"]) for job in map(json.loads, out.splitlines())],
                         [(1, "failed"), (2, "succeeded"), (3, "succeeded")])

    def test_every_target_has_its_line_in_its_place(self):
        self.format(1, 1, state="succeeded")
        self.rules["POST /slots/2/format"] = AgctlServer.problem(409, "job-in-the-way", job=9)
        self.format(3, 3)
        self.rules["GET /jobs/3"] = AgctlServer.problem(404, "unknown-job")
        result = self.assert_ends(5, "slot", "format", "1-3", "--yes", "--wait", "-o", "json")
        lines = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual([line.get("id", line.get("type")) for line in lines],
                         [1, "/problems/job-in-the-way", "/problems/unknown-job"])

    def test_many_jobs_are_asked_for_in_turns(self):
        jobs = [self.add_job(AgctlServer.Job(number, slot=number)) for number in range(1, 41)]
        process = self.start("job", "wait", *range(1, 41), "--timeout", DEADLINE)
        self.wait_until(lambda: all(len(self.polls(n)) >= 2 for n in range(1, 41)))
        for job in jobs:
            job.change(state="succeeded")
        _, err = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 0, err)
        self.assertFalse(any("waitMs" in asked.query for asked in self.server.asked()))

    def test_supervisor_that_starts_again_is_found_again(self):
        job = self.format(17)
        process = self.start("slot", "format", 3, "--yes", "--wait")
        self.wait_until(lambda: len(self.polls(17)) == 1)
        self.server.close()
        job.change(percentage=1)  # the poll is answered and the next one finds nobody
        time.sleep(0.2)
        self.server.listen()
        self.wait_until(lambda: len(self.polls(17)) == 2)
        job.change(state="unknown", reason="restarted")
        _, err = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 8, err)
        self.assertIn("asking again", err)

    def test_supervisor_that_stays_away_is_told_at_the_time_out(self):
        job = self.add_job(AgctlServer.Job(17))
        process = self.start("job", "wait", 17, "--timeout", 2)
        self.wait_until(lambda: len(self.polls(17)) == 2)
        self.server.close()
        job.change(percentage=1)  # the poll is answered and the next one finds nobody
        _, err = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 3, err)
        self.assertIn("no supervisor answers", err)

    def test_interrupt_leaves_the_job_running(self):
        # Also when the blade is not there, which has a code of its own at a time-out.
        for wanted, reason in ((signal.SIGINT, ""), (signal.SIGTERM, "waitsForBlade")):
            with self.subTest(wanted):
                self.server.forget()
                job = self.format(17, reason=reason)
                process = self.start("slot", "format", 3, "--yes", "--wait")
                self.wait_until(lambda: len(self.polls(17)) == 1)
                process.send_signal(wanted)
                _, err = process.communicate(timeout=DEADLINE)
                self.assertEqual(process.returncode, 8, err)
                self.assertIn("the job goes on; see how it ends with: agctl job wait 17", err)
                self.assertEqual([asked.method for asked in self.server.asked()], ["POST", "GET"])
                job.change()

    def interrupt_order(self, *arguments, slots="3", pause):
        """Interrupts agctl while the supervisor has its order and answers `pause` seconds later."""
        job = self.format(17)
        taken = threading.Event()

        def order(_):
            taken.set()
            time.sleep(pause)
            return 202, job.document
        self.rules["POST /slots/3/format"] = order
        process = self.start("slot", "format", slots, "--yes", *arguments)
        self.assertTrue(taken.wait(DEADLINE))
        process.send_signal(signal.SIGINT)
        return process

    def test_interrupt_between_order_and_answer_still_tells_the_job(self):
        for arguments, code in ((["--wait"], 8), ([], 0)):
            with self.subTest(arguments):
                process = self.interrupt_order(*arguments, pause=0.2)
                out, err = process.communicate(timeout=DEADLINE)
                self.assertEqual(process.returncode, code, err)
                self.assertIn("agctl job wait 17", err)
                self.assertIn("17", out)

    def test_interrupt_of_an_order_without_answer_says_that_it_may_have_been_taken(self):
        self.rules["POST /slots/3/format"] = self.server.hang
        process = self.start("slot", "format", 3, "--yes", "--wait")
        self.wait_until(self.server.asked)
        process.send_signal(signal.SIGTERM)
        _, err = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 8, err)
        self.assertIn("it may have done what was asked: interrupted", err)
        self.assertIn("agctl job list", err)

    def test_interrupt_leaves_the_other_targets_alone(self):
        process = self.interrupt_order("--wait", slots="3-5", pause=0.2)
        _, err = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 8, err)
        self.assertIn("slot 4: not ordered, since it was interrupted", err)
        self.assertIn("1 of 3 ordered, 2 refused", err)
        self.assertIn("agctl job wait 17", err)
        self.assertEqual(self.targets(), ["POST /api/v1/slots/3/format"])

    def test_supervisor_with_too_many_waits_is_asked_now_and_then(self):
        job = self.format(17)

        def get(asked):
            if "waitMs" in asked.query:
                return AgctlServer.problem(503, "too-many-waits")
            return job.get(asked)
        self.rules["GET /jobs/17"] = get
        process = self.start("slot", "format", 3, "--yes", "--wait")
        self.wait_until(lambda: len(self.polls(17)) == 2)
        job.change(state="succeeded")
        _, err = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 0, err)
        self.assertIn("asking now and then instead", err)
        self.assertEqual([("waitMs" in asked.query) for asked in self.polls(17)][:3],
                         [True, False, False])

    def test_time_zone_waits_for_every_blade(self):
        jobs = [self.add_job(AgctlServer.Job(n, "timeZone", n)) for n in (1, 2)]
        self.rules["PUT /timezone"] = lambda _: (
            202, {"timezone": "Asia/Tokyo", "jobs": [job.document for job in jobs]})
        process = self.start("timezone", "set", "Asia/Tokyo", "--wait")
        self.wait_until(lambda: self.polls(1) and self.polls(2))
        for job in jobs:
            job.change(state="succeeded")
        _, err = process.communicate(timeout=DEADLINE)
        self.assertEqual(process.returncode, 0, err)
        self.assertIn("2 blades are told", err)


def raw(*pieces, ends=True):
    """A rule that writes bytes to the connection; None waits a moment."""
    def write(connection):
        for piece in pieces:
            connection.sendall(piece)
        if not ends:
            threading.Event().wait(DEADLINE)
    return lambda _: write


class BadAnswerTest(WaitCase):
    def test_nobody_there(self):
        self.server.close()
        self.assert_ends(3, "slot", "list", says=("no supervisor answers at", "--socket"))
        self.assert_ends(3, "slot", "clear-logs", "1,2", says=("slot 1: ", "slot 2: "))

    def test_socket_without_a_listener_or_a_file_in_its_place(self):
        self.server.close()
        self.server.socket.write_text("")
        self.assert_ends(3, "slot", "list", says="Connection refused")

    def test_supervisor_that_never_answers(self):
        self.rules["GET /slots"] = self.rules["POST /apps/a/start"] = self.server.hang
        started = time.monotonic()
        self.assert_ends(3, "slot", "list", "--timeout", 0.3, says="did not answer")
        # It may have started it.
        self.assert_ends(8, "app", "start", "a", "--timeout", 0.3, says="may have done")
        self.assertLess(time.monotonic() - started, 10)

    def test_supervisor_that_drips(self):
        def drip(connection):
            connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n")
            while not self.server.ended.wait(0.05):
                connection.sendall(b" ")
        self.rules["GET /slots"] = lambda _: drip
        self.assert_ends(3, "slot", "list", "--timeout", 0.5, says="did not answer")

    def test_answers_that_are_none(self):
        head = b"HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n"
        deep = b"[" * 100000
        wide = b'{"a":{' + b",".join(b'"%d":1' % n for n in range(513)) + b"}}"
        for name, code, answer in (
                ("no HTTP", 1, raw(b"hello\r\n\r\n")),
                ("nothing", 3, raw()),
                ("half a head", 1, raw(b"HTTP/1.1 200 OK\r\nConte")),
                ("half a body", 3, raw(head + b"Content-Length: 100\r\n\r\n{\"slots\":")),
                ("no JSON", 1, (200, b"<html>")),
                ("empty", 1, (200, b"")),
                ("a list", 1, (200, [])),
                ("bad UTF-8", 1, (200, b'{"slots":"\xff"}')),
                ("deep", 1, (200, b'{"slots":' + deep)),
                ("wide", 1, (200, wide)),
                ("huge number", 1, (200, b'{"slots":1e999}')),
                ("elsewhere", 1, raw(b"HTTP/1.1 302 Found\r\nLocation: /api/v1/other\r\n"
                                     b"Content-Length: 0\r\n\r\n")),
                ("problem of another kind", 1, (500, b"<h1>\x1b[31m</h1>")),
                ("compressed", 1, raw(head + b"Content-Encoding: gzip\r\nContent-Length: 2\r\n\r\n"
                                             b"\x1f\x8b")),
                ("much", 1, raw(head + b"\r\n", *[b" " * (1 << 20)] * 65))):
            with self.subTest(name):
                self.rules["GET /slots"] = answer
                result = self.assert_ends(code, "slot", "list", says="agctl: remedy: ")
                self.assertEqual(result.stdout, "")
                self.assertNotIn("\x1b", result.stderr)
        self.assertNotIn("GET /api/v1/other", self.targets())

    def test_members_of_another_kind_are_left_out(self):
        self.rules["GET /slots"] = 200, {"slots": [1, None, {"slot": "x", "beats": []}]}
        self.rules["GET /apps"] = 200, {"apps": {"id": 1}}
        self.rules["GET /faults"] = 200, {"hooks": [{}], "faults": 1}
        for noun in ("slot", "app", "fault"):
            self.assert_ends(0, noun, "list")

    def test_order_whose_answer_cannot_be_read_may_have_been_taken(self):
        for answer in ((200, b"<html>"), raw(b"hello\r\n\r\n"), raw()):
            self.rules["POST /apps/a/start"] = answer
            self.assert_ends(8, "app", "start", "a", says="may have done what was asked")

    def test_job_that_is_none_is_no_success(self):
        for document in ({}, {"id": 17, "state": "done"}, {"id": "17", "state": "running"},
                         {"id": -1, "state": "running"}):
            with self.subTest(document):
                self.rules["POST /apps/a/start"] = 202, document
                self.assert_ends(1, "app", "start", "a", "--wait", says="is no job")

    def test_job_that_becomes_another_is_not_followed(self):
        self.rules["POST /apps/a/start"] = 202, AgctlServer.Job(17).document
        self.rules["GET /jobs/17"] = 200, AgctlServer.Job(18, state="succeeded").document
        self.assert_ends(1, "app", "start", "a", "--wait", says="another job")
        self.rules["GET /jobs/17"] = AgctlServer.problem(404, "unknown-job")
        self.assert_ends(4, "app", "start", "a", "--wait", says="unknown-job")

    def test_supervisor_that_does_not_wait_is_not_asked_without_pause(self):
        self.rules["GET /jobs/17"] = 200, AgctlServer.Job(17).document
        self.assert_ends(8, "job", "wait", 17, "--timeout", 1)
        self.assertLess(len(self.polls(17)), 10)

    def test_environment_leads_nowhere_else(self):
        self.rules["GET /apps"] = 200, {"apps": [APP]}
        proxy = "http://127.0.0.1:1"
        self.assert_ends(0, "app", "list", env={"http_proxy": proxy, "all_proxy": proxy,
                                                "HTTP_PROXY": proxy, "ALL_PROXY": proxy})

    def test_path_longer_than_an_address(self):
        self.rules["GET /apps"] = 200, {"apps": []}
        folder = self.server.folder / ("d" * 90) / ("e" * 200)
        folder.mkdir(parents=True)
        link = folder / "admin.sock"
        link.symlink_to(self.server.socket)

        def run(socket):
            return subprocess.run([AGCTL, "--socket", socket, "app", "list"], capture_output=True,
                                  text=True, timeout=DEADLINE, check=False)
        self.assertEqual(run(link).returncode, 0)
        link.unlink()
        for socket, cause in ((link, "No such file or directory"),
                              (folder / "f" / "admin.sock", "No such file or directory"),
                              (folder / ("s" * 100), "File name too long")):
            result = run(socket)
            self.assertEqual(result.returncode, 3)
            self.assertIn(f"no supervisor answers at {socket}: {cause}\n", result.stderr)

    def test_socket_comes_from_option_configuration_or_environment(self):
        self.rules["GET /apps"] = 200, {"apps": []}
        configuration = self.server.folder / "zedd.toml"
        configuration.write_text(f'[supervisor]\nstate_dir = "{self.server.folder}"\n')
        program = self.arguments()[0]
        for arguments, env in ((["--config", str(configuration)], {}),
                               ([], {"AGCTL_SOCKET": str(self.server.socket)})):
            result = subprocess.run([program, *arguments, "app", "list"], env=env,
                                    capture_output=True, timeout=DEADLINE, check=False)
            self.assertEqual(result.returncode, 0, result.stderr)
        configuration.write_text("[supervisor]\nstate_dirr = 1\n")
        result = subprocess.run([program, "--config", str(configuration), "app", "list"],
                                capture_output=True, text=True, timeout=DEADLINE, check=False)
        self.assertEqual(result.returncode, 2)
        self.assertIn("did you mean 'supervisor.state_dir'", result.stderr)


if __name__ == "__main__":
    unittest.main()
