"""Starts zedd for a system test and talks to it as a blade's agent does.

A test program imports this module and ends with harness.main(). It then runs in a network namespace
of its own, because the gateway's end points are fixed; where the kernel does not allow that, the
programs wait for each other at a lock file.
"""

import contextlib
import ctypes
import fcntl
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import unittest
import xml.etree.ElementTree as ElementTree

import zmq

LEFT_END_POINT = "tcp://127.0.0.1:5557"
RIGHT_END_POINT = "tcp://127.0.0.1:6557"
# How long anything may take that a healthy zedd does at once; generous, for the sanitizers' sake.
DEADLINE = 20.0

_CLONE_NEWUSER = 0x10000000
_CLONE_NEWNET = 0x40000000
_PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None, use_errno=True)
_lock = None


def main():
    """Runs the calling module's test cases."""
    enter_own_network()
    unittest.main()


def enter_own_network():
    """Gives this process a loopback of its own, or the sole use of the common one.

    Must come before the first thread.
    """
    if not (_unshare_as_root() or _unshare_as_user()):
        _wait_for_lock()
        return
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True, env={
        **os.environ, "PATH": os.environ.get("PATH", "") + ":/usr/sbin:/sbin"})


def _unshare_as_root():
    return os.geteuid() == 0 and _libc.unshare(_CLONE_NEWNET) == 0


def _unshare_as_user():
    user, group = os.geteuid(), os.getegid()
    if _libc.unshare(_CLONE_NEWUSER | _CLONE_NEWNET) != 0:
        return False
    pathlib.Path("/proc/self/setgroups").write_text("deny")
    pathlib.Path("/proc/self/uid_map").write_text(f"0 {user} 1")
    pathlib.Path("/proc/self/gid_map").write_text(f"0 {group} 1")
    return True


def _wait_for_lock():
    global _lock  # held until the process ends
    _lock = open(pathlib.Path(tempfile.gettempdir()) / "zedd-system-tests.lock", "w")
    fcntl.flock(_lock, fcntl.LOCK_EX)


def die_with_parent():
    """For a child process: the test's end, however it comes, is the child's."""
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)


def wait_until(condition, state=lambda: "", seconds=DEADLINE):
    """Waits until a condition holds; an assertion that tells the state if it does not in time."""
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError(f"not so within {seconds} s: {state()}")
        time.sleep(0.01)


class Companion(threading.Thread):
    """Works beside a test until the test stops it. What goes wrong in it fails the test."""

    def __init__(self):
        super().__init__(daemon=True)
        self._stopping = threading.Event()
        self._error = None

    def work(self):
        """What a derived class does; it ends soon after _stopping is set."""
        raise NotImplementedError

    def run(self):
        try:
            self.work()
        except Exception as error:  # for the test's thread
            self._error = error

    def stop(self):
        """Waits for the end and raises what the work raised."""
        self._stopping.set()
        self.join()
        if self._error is not None:
            raise self._error


class Lines:
    """The lines of one output stream, read as they come."""

    def __init__(self, stream):
        self._lines, self._ended = [], False
        self._changed = threading.Condition()
        self._thread = threading.Thread(target=self._read, args=(stream,), daemon=True)
        self._thread.start()

    def _read(self, stream):
        with stream:
            for line in stream:
                with self._changed:
                    self._lines.append(line.rstrip("\n"))
                    self._changed.notify_all()
        with self._changed:
            self._ended = True
            self._changed.notify_all()

    def all(self):
        with self._changed:
            return list(self._lines)

    def text(self):
        return "\n".join(self.all())

    def has_ended(self):
        with self._changed:
            return self._ended

    def join(self):
        """Waits until the stream has ended."""
        self._thread.join(DEADLINE)

    def wait_for(self, wanted, seconds=DEADLINE, after=0):
        """The first line that contains the text, None if the stream ends or time runs out.

        The first `after` lines are passed over.
        """
        deadline = time.monotonic() + seconds
        seen = after
        with self._changed:
            while True:
                for line in self._lines[seen:]:
                    if wanted in line:
                        return line
                seen = len(self._lines)
                left = deadline - time.monotonic()
                if self._ended or left <= 0:
                    return None
                self._changed.wait(left)


class Zedd:
    """A running zedd with a state folder and a configuration of its own.

    settings are configuration keys and values, e.g. {"log.level": 1}. The program is ZAN_ZEDD of the
    environment. Use it in a with statement: leaving ends the process.
    """

    def __init__(self, settings=None, folder=None, program=None):
        self._program = program or os.environ["ZAN_ZEDD"]
        self._own_folder = folder is None
        self.folder = pathlib.Path(folder or tempfile.mkdtemp(prefix="zedd-test-"))
        self._settings = {"supervisor.state_dir": str(self.folder / "state"),
                          "supervisor.self_id": 1, "log.level": 4, **(settings or {})}
        self._process = self.output = self.log = None

    def __enter__(self):
        try:
            self.start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.kill()
        if self._own_folder:
            shutil.rmtree(self.folder, ignore_errors=True)

    def launch(self):
        """Starts the process, which need not become ready."""
        (self.folder / "state").mkdir(mode=0o700, exist_ok=True)
        configuration = self.folder / "zedd.toml"
        configuration.write_text(as_toml(self._settings))
        self._process = subprocess.Popen(
            [self._program, "--config", configuration], stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, errors="replace",
            preexec_fn=die_with_parent)
        self.output, self.log = Lines(self._process.stdout), Lines(self._process.stderr)

    def start(self, seconds=DEADLINE):
        """Starts the process and waits until it is ready to serve."""
        self.launch()
        if self.output.wait_for("zedd: ready", seconds) is None:
            self.kill(grace=1 if self.output.has_ended() else 0)
            raise AssertionError(
                f"zedd was not ready within {seconds} s (exit status {self._process.returncode})\n"
                f"{self.output.text()}\n{self.log.text()}")

    def stop(self, seconds=DEADLINE):
        """Asks the process to end; its exit status, or an assertion if it does not end."""
        self._process.send_signal(signal.SIGTERM)
        try:
            status = self._process.wait(seconds)
        except subprocess.TimeoutExpired:
            self.kill()
            raise AssertionError(f"zedd did not end within {seconds} s of SIGTERM\n"
                                 + self.log.text()) from None
        self._join()
        return status

    def kill(self, grace=0):
        """Ends the process at once, as a power cut does.

        A process that is about to end by itself may do so within the grace, in seconds.
        """
        if self._process is not None:
            with contextlib.suppress(subprocess.TimeoutExpired):
                self._process.wait(grace)
            self._process.kill()
            self._process.wait()
            self._join()

    def _join(self):
        self.output.join()
        self.log.join()

    @property
    def pid(self):
        return self._process.pid

    def is_running(self):
        return self._process.poll() is None


def as_toml(settings):
    """A TOML text of dotted keys; values are texts, numbers, booleans and lists of them."""
    return "".join(f"{key} = {_toml_value(value)}\n" for key, value in settings.items())


def _toml_value(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, (list, tuple)):
        return "[" + ", ".join(_toml_value(v) for v in value) + "]"
    if isinstance(value, str):
        return '"' + value.replace("\\", "\\\\").replace('"', '\\"') + '"'
    return str(value)


class Reply:
    """A reply's five parts and what its document says; an empty body has no document."""

    def __init__(self, parts):
        self.parts = parts
        self.subject, self.content_type, self.message_id, self.status, self.body = (
            part.decode("utf-8", "replace") for part in parts)
        self.document = ElementTree.fromstring(self.body) if self.body else None

    def text(self, path):
        """The text of the element at a path below the root, None if there is no such element."""
        element = self.document.find(path)
        return None if element is None else element.text or ""

    @property
    def root(self):
        return self.document.tag

    @property
    def code(self):
        return self.text("response/code")

    @property
    def message(self):
        return self.text("response/message")


class Blade:
    """A blade's agent as far as the gateway can see: one DEALER socket on the request channel."""

    _context = None

    def __init__(self, slot, end_point=LEFT_END_POINT):
        Blade._context = Blade._context or zmq.Context()
        self.identity = f"sma_slot{slot}"
        self.slot = slot
        self._sent = 0
        self._socket = Blade._context.socket(zmq.DEALER)
        self._socket.linger = 0
        self._socket.connect(end_point)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._socket.close()

    def next_message_id(self):
        self._sent += 1
        return f"{self.identity}-{self._sent}"

    def send_parts(self, *parts):
        self._socket.send_multipart([p if isinstance(p, bytes) else p.encode() for p in parts])

    def send(self, subject, body, identity=None, content_type="nox-xml:1", message_id=None):
        """Sends a five-part request and returns its message id."""
        message_id = message_id or self.next_message_id()
        self.send_parts(subject, content_type, message_id,
                        self.identity if identity is None else identity, body)
        return message_id

    def receive(self, seconds=DEADLINE):
        """The next reply; an assertion if none comes in time or if it has not five parts."""
        if not self._socket.poll(seconds * 1000):
            raise AssertionError(f"no reply for {self.identity} within {seconds} s")
        parts = self._socket.recv_multipart()
        if len(parts) != 5:
            raise AssertionError(f"a reply of {len(parts)} parts: {parts}")
        return Reply(parts)

    def receive_if_any(self, seconds):
        """The next reply, or None if none comes in time."""
        return self.receive() if self._socket.poll(seconds * 1000) else None

    def request(self, subject, body, **fields):
        """Sends a request and returns the reply to it."""
        message_id = self.send(subject, body, **fields)
        reply = self.receive()
        if reply.message_id != message_id:
            raise AssertionError(f"reply to '{reply.message_id}', not to '{message_id}'")
        return reply

    def has_reply(self):
        """Whether a reply lies unread, without waiting."""
        return bool(self._socket.poll(0))

    # --- the requests of a well-behaved agent

    def register_document(self, token="", port=45000, **changes):
        """What "register" carries; changes replace tags or, with None, leave them out."""
        tags = {"bladeSlotId": self.slot, "ip": "127.0.0.1", "port": port, "token": token,
                "authorizedPubKey": "", "bladeCurrTime": "0", "upTime": "1", **changes}
        return document("registerRequest", tags)

    def register(self, token="", **changes):
        """Sends "register" and returns the reply."""
        return self.request("serviceOrchAG.register", self.register_document(token, **changes))

    def heartbeat(self, count=1, timer=10):
        return self.request("serviceOrchAG.heartbeat",
                            document("heartbeatRequest", {"count": count, "timer": timer}))

    def register_validly(self):
        """Registers as a blade without a token of its own does; returns the slot's token."""
        reply = self.register()
        if reply.code == "510":
            reply = self.register()
        if reply.code != "100":
            raise AssertionError(f"{self.identity} was not accepted: {reply.body}")
        return reply.text("token")


def document(root, tags):
    """A request document: one element under the root for each tag whose value is not None."""
    element = ElementTree.Element(root)
    for tag, value in tags.items():
        if value is not None:
            ElementTree.SubElement(element, tag).text = str(value)
    return ElementTree.tostring(element, encoding="unicode")
