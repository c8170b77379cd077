"""The blades of sma-sim and the commands of a gateway that this program plays."""

import json
import os
import pathlib
import socket
import subprocess
import tempfile
import time
import unittest
import xml.etree.ElementTree as ElementTree

import zmq

import harness

GATEWAY = "tcp://127.0.0.1:5557"
LISTEN_BASE = 20000
# A register request that is lost with a connection is made again after 25 seconds.
LOST_AND_AGAIN = 40.0


def app_document(command, app, **tags):
    return harness.document(f"{command}Request", {"appInstanceId": app, **tags})


def install_document(app, package):
    return harness.document("installAppRequest", {
        "packageFile": package, "appInstanceId": app, "reqDataHdd": 3072, "installType": "lxc",
        "installTimeout": 600, "uninstallTimeout": 300})


def start_document(app, slot):
    return harness.document("startAppRequest", {
        "hdrVersion": 1, "appInstanceId": app, "installType": "lxc", "reqCpuCores": 6,
        "maxAllowedRam": 32768, "reqDataHdd": 40960, "interfaceList": "",
        "appAGIPPort": "127.128.254.1:5556", "mgmtBootstrapVersion": "2.1", "chassis": "CH1",
        "slot": slot})


def upgrade_document(app, url):
    return app_document("upgradeApp", app, url=url, upgradeTimeout=900, reqDataHdd=5120)


class Gateway:
    """The gateway as blades see it: takes their requests, answers 100, and sends them commands."""

    def __init__(self):
        self._context = zmq.Context()
        self._server = self._socket(zmq.ROUTER)
        self._server.bind(GATEWAY)
        self._channels = {}  # by slot
        self._sent = 0
        self.requests = []  # (slot, command, document) in order
        self.tokens = {}  # by slot: what a blade must hold; others are refused

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._context.destroy(linger=0)

    def _socket(self, kind):
        socket = self._context.socket(kind)
        socket.linger = 0
        return socket

    def serve(self, seconds):
        """Takes what arrives within a time, at least what lies there."""
        deadline = time.monotonic() + seconds
        while self._server.poll(max(0, deadline - time.monotonic()) * 1000):
            self._answer(*self._server.recv_multipart())

    def _answer(self, peer, subject, content, message_id, identity, body):
        slot = int(identity.decode().removeprefix("sma_slot"))
        command = subject.decode().removeprefix("serviceOrchAG.")
        root = ElementTree.fromstring(body)
        self.requests.append((slot, command, root))
        status, token = b"100", self.tokens.get(slot, "t1")
        if command == "register" and (root.findtext("token") or token) != token:
            status = b"511"
        if command == "commandProgress.update" and root.findtext("ack") != "true":
            return
        reply = (f"<r><response><code>{status.decode()}</code><message>OK</message></response>"
                 f"<token>{token}</token></r>")
        self._server.send_multipart(
            [peer, identity + b"." + command.encode(), content, message_id, status, reply.encode()])

    def wait_for(self, condition, seconds=harness.DEADLINE):
        """Serves until the condition holds; its value."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            value = condition()
            if value:
                return value
            self.serve(0.05)
        raise AssertionError("what was waited for did not come")

    def connect(self, slot):
        """The channel to a blade, made when it is first needed."""
        if slot not in self._channels:
            self._channels[slot] = self._socket(zmq.DEALER)
            self._channels[slot].connect(f"tcp://127.0.0.1:{LISTEN_BASE + slot}")
        return self._channels[slot]

    def send(self, slot, command, document, message_id=None):
        """Sends a command and returns its message id."""
        channel = self.connect(slot)
        self._sent += 1
        message_id = message_id or str(self._sent)
        channel.send_multipart(
            [part.encode() for part in (f"sma_slot{slot}.{command}", "nox-xml:1", message_id,
                                        "serviceOrchAG", document)])
        return message_id

    def receive(self, slot, seconds=harness.DEADLINE):
        """The parts of the next reply of a blade, None if none comes in time."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            self.serve(0)
            if self._channels[slot].poll(20):
                return [part.decode("utf-8", "replace")
                        for part in self._channels[slot].recv_multipart()]
        return None

    def command(self, slot, command, document):
        """Sends a command; status and text of the reply."""
        message_id = self.send(slot, command, document)
        parts = self.receive(slot)
        if parts is None or len(parts) != 5 or parts[2] != message_id:
            raise AssertionError(f"reply to {command}: {parts}")
        response = ElementTree.fromstring(parts[4]).find("response")
        if response.findtext("code") != parts[3]:
            raise AssertionError(f"{parts[3]} and {parts[4]}")
        return parts[3], response.findtext("message")

    def disconnect(self, slot):
        """Drops the channel to a blade and what it has not sent."""
        self._channels.pop(slot).close()

    # --- what blades have said

    def said(self, slot, command):
        return [root for of, name, root in self.requests if (of, name) == (slot, command)]

    def is_registered(self, slot):
        return self.said(slot, "heartbeat") or self.said(slot, "platformInfo.update")

    def progress(self, slot, command):
        """Instance, percentage, status and code of each report of a command."""
        return [tuple(root.findtext(tag)
                      for tag in ("appInstanceId", "operProgress", "operStatus", "code"))
                for root in self.said(slot, "commandProgress.update")
                if root.findtext("operCmd") == command]

    def has_ended(self, slot, command):
        return [each for each in self.progress(slot, command) if each[2] != "running"]

    def instances(self, slot):
        """Version and state of each instance in the blade's latest report, by its id."""
        reports = self.said(slot, "platformInfo.update")
        return {app.findtext("appInstanceId"): (app.findtext("installedVersion"),
                                                app.findtext("operStatus"))
                for app in (reports[-1] if reports else [])
                if app.tag == "application"}


class Control:
    """The control socket of a running simulator."""

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(harness.DEADLINE)
        self._socket.connect(str(path))
        self._answers = self._socket.makefile()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._answers.close()
        self._socket.close()

    def _answer(self, do, fields):
        self._socket.sendall(json.dumps({"do": do, **fields}).encode() + b"\n")
        return json.loads(self._answers.readline())

    def ask(self, do, **fields):
        """The answer to a request that is not refused."""
        answer = self._answer(do, fields)
        if not answer["ok"]:
            raise AssertionError(answer["error"])
        return answer

    def error(self, do, **fields):
        """Why a request is refused."""
        return self._answer(do, fields)["error"]


class BladeCommandsTest(unittest.TestCase):
    def setUp(self):
        self.gateway = self.enterContext(Gateway())
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def start_blades(self, *arguments, slots="1"):
        process = subprocess.Popen(
            [os.environ["ZAN_SMA_SIM"], "--slots", slots, "--gateway", GATEWAY, "--beat", "0.2",
             "--report", "0.5", "--command-time", "0.4", "--quiet", *arguments],
            stdout=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def start_blade(self, *arguments):
        process = self.start_blades(*arguments)
        self.gateway.wait_for(lambda: self.gateway.is_registered(1))
        return process

    def carry_out(self, command, document, instances):
        """A command that is taken, and what the blade reports in the end."""
        self.gateway.requests.clear()
        self.assertEqual(self.gateway.command(1, command, document), ("100", "OK"))
        self.gateway.wait_for(lambda: self.gateway.has_ended(1, command))
        progress = self.gateway.progress(1, command)
        self.assertEqual([each[1] for each in progress], ["0", "25", "50", "75", "100"])
        self.assertEqual([each[2] for each in progress], ["running"] * 4 + ["succeeded"])
        self.gateway.wait_for(lambda: self.gateway.instances(1) == instances)

    def test_instance_lives_through_all_commands(self):
        self.start_blade("--apps", "0")
        self.carry_out("installApp", install_document("a1", "/pkg/fw-1.2.pkg"),
                       {"a1": ("1.2", "stopped")})
        self.carry_out("startApp", start_document("a1", 1), {"a1": ("1.2", "running")})
        self.carry_out("upgradeApp", upgrade_document("a1", "/pkg/fw-1.3.pkg"),
                       {"a1": ("1.3", "running")})
        self.carry_out("stopApp", app_document("stopApp", "a1"), {"a1": ("1.3", "stopped")})
        self.carry_out("uninstallApp", app_document("uninstallApp", "a1"), {})

    def test_settings_are_done_with_the_reply(self):
        self.start_blade("--apps", "1")
        for command, document in {
                "platformLogLevel.set": harness.document("platformLogLevelSetRequest",
                                                         {"logLevel": "warning"}),
                "settings.update": harness.document("platformSettingsUpdate",
                                                    {"timezone": "UTC0", "logLevel": "info"}),
                "clearLogData": app_document("clearLogData", "slot1-app1")}.items():
            self.assertEqual(self.gateway.command(1, command, document), ("100", "OK"))
        self.gateway.serve(1)
        self.assertEqual(self.gateway.said(1, "commandProgress.update"), [])

    def test_what_is_wrong_is_refused(self):
        self.start_blade("--apps", "1")
        for command, document, status in (
                ("reboot", "<rebootRequest/>", "500"),
                ("stopApp", "no xml", "503"),
                ("stopApp", "<stopAppRequest/>", "505"),
                ("stopApp", app_document("stopApp", "a9"), "504"),
                ("startApp", start_document("slot1-app1", 1), "508"),
                ("installApp", install_document("slot1-app1", "/p"), "508")):
            self.assertEqual(self.gateway.command(1, command, document)[0], status, command)
        self.gateway.wait_for(lambda: self.gateway.progress(1, "installApp"))
        self.assertEqual(self.gateway.progress(1, "installApp"),
                         [("slot1-app1", "0", "failed", "508")])
        self.assertEqual(self.gateway.progress(1, "startApp"),
                         [("slot1-app1", "0", "failed", "508")])

    def test_foreign_blade_joins_by_the_format_of_its_disk(self):
        self.gateway.tokens[1] = "t2"
        scenario = self.folder / "foreign.json"
        scenario.write_text('{"blades": [{"slots": "1", "token": "of another chassis"}]}')
        self.start_blades("--apps", "2", "--scenario", scenario)
        self.gateway.wait_for(lambda: self.gateway.said(1, "register"))
        self.assertFalse(self.gateway.is_registered(1))
        document = harness.document("formatDiskRequest", {"token": "t2"})
        self.assertEqual(self.gateway.command(1, "formatDisk", document), ("100", "OK"))
        self.gateway.wait_for(lambda: self.gateway.is_registered(1))
        self.assertEqual(self.gateway.progress(1, "formatDisk")[-1],
                         ("-1", "100", "succeeded", "100"))
        self.assertEqual(self.gateway.said(1, "register")[-1].findtext("token"), "t2")
        self.gateway.wait_for(lambda: self.gateway.said(1, "platformInfo.update"))
        self.assertEqual(self.gateway.instances(1), {})

    def test_repeated_message_is_carried_out_once(self):
        self.start_blade("--apps", "1")
        document = app_document("stopApp", "slot1-app1")
        for _ in range(3):
            self.gateway.send(1, "stopApp", document, "77")
        replies = [self.gateway.receive(1) for _ in range(3)]
        self.assertEqual(replies[0][2:4], ["77", "100"])
        self.assertEqual(replies, [replies[0]] * 3)
        self.gateway.wait_for(lambda: self.gateway.has_ended(1, "stopApp"))
        self.gateway.serve(1)
        self.assertEqual(len(self.gateway.progress(1, "stopApp")), 5)

    def start_with_faults(self, *faults):
        scenario = self.folder / "faults.json"
        scenario.write_text(json.dumps({"blades": [{"slots": "1", "command_faults": faults}]}))
        return self.start_blade("--apps", "1", "--scenario", scenario)

    def test_replies_go_wrong_on_purpose(self):
        self.start_with_faults({"kind": "ignore"}, {"kind": "noReply"},
                               {"kind": "lateReply", "delayMs": 700}, {"kind": "shortReply"},
                               {"kind": "doubleReply"}, {"kind": "refuse", "code": 512})
        document = "<clearLogDataRequest/>"
        self.gateway.send(1, "clearLogData", document)
        self.gateway.send(1, "clearLogData", document)
        self.assertIsNone(self.gateway.receive(1, 0.5))
        began = time.monotonic()
        self.assertEqual(self.gateway.command(1, "clearLogData", document), ("100", "OK"))
        self.assertGreater(time.monotonic() - began, 0.6)
        self.gateway.send(1, "clearLogData", document)
        self.assertEqual(len(self.gateway.receive(1)), 3)
        self.gateway.send(1, "clearLogData", document)
        self.assertEqual(self.gateway.receive(1), self.gateway.receive(1))
        self.assertEqual(self.gateway.command(1, "clearLogData", document)[0], "512")
        self.assertEqual(self.gateway.command(1, "clearLogData", document), ("100", "OK"))

    def test_progress_goes_wrong_on_purpose(self):
        self.start_with_faults({"kind": "stall", "lastsMs": 600}, {"kind": "runBackwards"},
                               {"kind": "loseReport"}, {"kind": "fail", "code": 514})
        self.gateway.command(1, "stopApp", app_document("stopApp", "slot1-app1"))
        self.gateway.wait_for(lambda: ("slot1-app1", "50", "running", "100")
                              in self.gateway.progress(1, "stopApp"))
        self.gateway.serve(0.3)
        self.assertEqual(len(self.gateway.progress(1, "stopApp")), 3)
        self.gateway.wait_for(lambda: self.gateway.has_ended(1, "stopApp"))
        self.gateway.command(1, "startApp", start_document("slot1-app1", 1))
        self.gateway.wait_for(lambda: self.gateway.has_ended(1, "startApp"))
        self.assertEqual([each[1] for each in self.gateway.progress(1, "startApp")],
                         ["0", "75", "50", "25", "100"])
        self.gateway.command(1, "upgradeApp", upgrade_document("slot1-app1", "fw-9.9.pkg"))
        self.gateway.wait_for(
            lambda: self.gateway.instances(1) == {"slot1-app1": ("9.9", "running")})
        self.assertEqual(len(self.gateway.progress(1, "upgradeApp")), 4)
        self.gateway.requests.clear()
        self.gateway.command(1, "stopApp", app_document("stopApp", "slot1-app1"))
        self.gateway.wait_for(lambda: self.gateway.has_ended(1, "stopApp"))
        self.assertEqual(self.gateway.progress(1, "stopApp")[-1],
                         ("slot1-app1", "75", "failed", "514"))

    def test_blade_that_dies_comes_back_with_token_and_instances(self):
        for moment in ("work", "reply"):
            with self.subTest(moment=moment):
                process = self.start_with_faults(
                    {"kind": "die", "lastsMs": 600, "moment": moment})
                self.gateway.send(1, "stopApp", app_document("stopApp", "slot1-app1"))
                self.assertEqual(self.gateway.receive(1, 0.3) is None, moment == "reply")
                self.gateway.requests.clear()
                self.gateway.wait_for(lambda: self.gateway.said(1, "register"))
                self.assertEqual(self.gateway.said(1, "register")[0].findtext("token"), "t1")
                self.gateway.wait_for(lambda: self.gateway.said(1, "platformInfo.update"))
                self.assertEqual(self.gateway.instances(1), {"slot1-app1": ("1.1", "running")})
                self.assertFalse(self.gateway.has_ended(1, "stopApp"))
                self.assertEqual(
                    self.gateway.command(1, "stopApp", app_document("stopApp", "slot1-app1")),
                    ("100", "OK"))
                process.kill()
                process.wait()
                self.gateway.requests.clear()

    def start_controlled(self, *arguments):
        path = self.folder / "control"
        process = self.start_blade("--control", path, *arguments)
        self.control = self.enterContext(Control(path))
        return process

    def test_control_socket_sets_faults_and_tells_the_state(self):
        self.start_controlled("--apps", "1")
        self.assertEqual((self.folder / "control").stat().st_mode & 0o777, 0o600)
        self.control.ask("fault", slots="1", kind="noReply", command="stopApp")
        self.gateway.send(1, "stopApp", app_document("stopApp", "slot1-app1"))
        self.assertIsNone(self.gateway.receive(1, 0.3))
        self.gateway.wait_for(lambda: self.gateway.has_ended(1, "stopApp"))
        self.gateway.command(1, "platformLogLevel.set", harness.document(
            "platformLogLevelSetRequest", {"logLevel": "error"}))
        state = self.control.ask("state", slot=1)
        self.assertEqual(state["executed"], [
            {"command": "platformLogLevel.set", "app": "", "count": 1},
            {"command": "stopApp", "app": "slot1-app1", "count": 1}])
        self.assertEqual((state["logLevel"], state["hasToken"], state["faults"]),
                         ("error", True, []))
        self.assertEqual([(app["id"], app["running"]) for app in state["instances"]],
                         [("slot1-app1", False)])
        self.assertIn("unknown key 'speed'", self.control.error("fault", kind="fail", speed=1))
        self.assertIn("slot 2", self.control.error("state", slot=2))

    def test_stalled_work_goes_on_when_the_faults_are_cleared(self):
        self.start_controlled("--apps", "1")
        self.control.ask("fault", kind="stall")
        self.gateway.command(1, "stopApp", app_document("stopApp", "slot1-app1"))
        self.gateway.serve(1)
        self.assertEqual(len(self.gateway.progress(1, "stopApp")), 3)
        self.assertEqual(self.control.ask("state", slot=1)["instances"][0]["underWay"], "stopApp")
        self.control.ask("clear")
        self.gateway.wait_for(lambda: self.gateway.has_ended(1, "stopApp"))

    def test_blade_dies_on_request_and_comes_back(self):
        self.start_controlled("--apps", "1")
        for lasts in (0, 1, 20, 400):
            self.gateway.requests.clear()
            self.control.ask("die", slot=1, lastsMs=lasts)
            self.gateway.wait_for(lambda: self.gateway.said(1, "register"), LOST_AND_AGAIN)
            self.assertEqual(self.gateway.said(1, "register")[0].findtext("token"), "t1")
            self.assertEqual(self.gateway.command(1, "clearLogData", "<clearLogDataRequest/>"),
                             ("100", "OK"))

    def test_killed_simulator_starts_again_as_the_same_blades(self):
        arguments = ("--apps", "1", "--state", self.folder / "state")
        process = self.start_controlled(*arguments)
        self.gateway.command(1, "installApp", install_document("a1", "fw-1.2.pkg"))
        self.gateway.wait_for(lambda: self.gateway.has_ended(1, "installApp"))
        self.gateway.command(1, "settings.update", harness.document(
            "platformSettingsUpdate", {"timezone": "CET-1", "logLevel": "debug"}))
        self.gateway.command(1, "stopApp", app_document("stopApp", "slot1-app1"))
        process.kill()
        process.wait()
        self.gateway.requests.clear()
        self.start_controlled(*arguments)
        self.assertEqual(self.gateway.said(1, "register")[0].findtext("token"), "t1")
        state = self.control.ask("state", slot=1)
        self.assertEqual(state["executed"], [
            {"command": "installApp", "app": "a1", "count": 1},
            {"command": "settings.update", "app": "", "count": 1},
            {"command": "stopApp", "app": "slot1-app1", "count": 1}])
        self.assertEqual((state["timeZone"], state["logLevel"]), ("CET-1", "debug"))
        # What was under way is forgotten.
        self.assertEqual([(app["id"], app["version"], app["running"], app["underWay"])
                          for app in state["instances"]],
                         [("slot1-app1", "1.1", True, ""), ("a1", "1.2", False, "")])

    def test_no_command_is_lost_or_doubled_while_the_simulator_is_killed(self):
        arguments = ("--apps", "1", "--state", self.folder / "state")
        answered = 0
        for _ in range(15):
            process = self.start_controlled(*arguments)
            for _ in range(5):
                self.gateway.command(1, "clearLogData", "<clearLogDataRequest/>")
                answered += 1
            self.gateway.send(1, "clearLogData", "<clearLogDataRequest/>")
            process.kill()
            process.wait()
            self.gateway.disconnect(1)
            self.gateway.requests.clear()
        self.start_controlled(*arguments)
        count = self.control.ask("state", slot=1)["executed"][0]["count"]
        self.assertGreaterEqual(count, answered)
        self.assertLessEqual(count, answered + 15)

    def test_garbage_on_the_command_port_harms_nobody(self):
        self.start_blade("--apps", "1")
        channel = self.gateway.connect(1)
        for parts in ([b"x"], [b"x"] * 4, [b"x"] * 15, [b"\xff"] * 5, [b"a" * 500000] * 5):
            channel.send_multipart(parts)
        channel.send_multipart([b"sma_slot1.stopApp", b"nox-xml:1", b"1", b"x", b"<" * 100000])
        self.assertEqual(self.gateway.receive(1)[3], "500")
        self.assertEqual(self.gateway.receive(1)[3], "503")
        self.assertEqual(self.gateway.command(1, "clearLogData", "<clearLogDataRequest/>"),
                         ("100", "OK"))

    def test_port_that_is_taken_is_named(self):
        self.start_blade()
        result = subprocess.run([os.environ["ZAN_SMA_SIM"], "--slots", "1", "--for", "1"],
                                capture_output=True, text=True, timeout=60, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn("tcp://127.0.0.1:20001", result.stderr)

    def test_ports_of_the_system_are_not_taken(self):
        result = subprocess.run(
            [os.environ["ZAN_SMA_SIM"], "--slots", "1", "--listen-base", "60000", "--for", "1"],
            capture_output=True, text=True, timeout=60, check=False)
        self.assertEqual(result.returncode, 1)
        self.assertIn("60001", result.stderr)


if __name__ == "__main__":
    harness.main()
