"""A supervisor's HTTP interface as a script: what agctl asks is recorded and answered by rules."""

import http.server
import json
import pathlib
import shutil
import socketserver
import tempfile
import threading
import urllib.parse


def problem(status, kind, **members):
    """An answer: a problem document."""
    return status, {"type": "/problems/" + kind, "title": members.pop("title", "It is refused"),
                    "status": status, "detail": members.pop("detail", "because of " + kind),
                    "remedy": members.pop("remedy", "do otherwise"), **members}


class Asked:
    """One request."""

    def __init__(self, method, target, headers, body):
        self.method = method
        parts = urllib.parse.urlsplit(target)
        self.path = urllib.parse.unquote(parts.path).removeprefix("/api/v1")
        self.raw_target = target
        self.query = dict(urllib.parse.parse_qsl(parts.query))
        self.headers = headers
        self.body = body

    def document(self):
        return json.loads(self.body)

    def __repr__(self):
        return f"{self.method} {self.raw_target}"


class _Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def address_string(self):
        return "unix"

    def log_message(self, *_):
        pass

    def _serve(self):
        length = int(self.headers.get("Content-Length", 0))
        asked = Asked(self.command, self.path, self.headers, self.rfile.read(length))
        answer = self.server.owner.answer(asked)
        if callable(answer):  # writes what it likes
            answer(self.connection)
            self.close_connection = True
            return
        status, document = answer
        body = b"" if document is None else (
            document if isinstance(document, bytes) else json.dumps(document).encode())
        self.send_response(status)
        if status != 204:
            self.send_header("Content-Type", "application/json")
            self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    do_GET = do_POST = do_PUT = do_PATCH = do_DELETE = _serve


class _Server(socketserver.ThreadingUnixStreamServer):
    daemon_threads = True
    request_queue_size = 64

    def handle_error(self, *_):
        pass  # a client that goes away is no error here


class Server:
    """Listens on a socket in a folder of its own while its with statement lasts.

    rules maps "GET /slots" to an answer or to a function of the request that makes one. An answer is
    (status, document), or a function that is handed the connection to write to.
    """

    def __init__(self, rules=None):
        self.rules = rules or {}
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="agctl-test-"))
        self.socket = self.folder / "admin.sock"
        self.ended = threading.Event()  # lets answers that hang go
        self._lock = threading.Lock()
        self._asked = []
        self._server = None

    def __enter__(self):
        self.listen()
        return self

    def __exit__(self, *_):
        self.ended.set()
        self.close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def listen(self):
        self._server = _Server(str(self.socket), _Handler)
        self._server.owner = self
        threading.Thread(target=self._server.serve_forever, args=(0.01,), daemon=True).start()

    def close(self):
        """Goes away: whoever connects from now on is refused."""
        if self._server is not None:
            self._server.shutdown()
            self._server.server_close()
            self.socket.unlink(missing_ok=True)
            self._server = None

    def answer(self, asked):
        with self._lock:
            self._asked.append(asked)
        rule = self.rules.get(f"{asked.method} {asked.path}")
        if rule is None:
            return problem(404, "unknown-path")
        return rule(asked) if callable(rule) else rule

    def asked(self):
        with self._lock:
            return list(self._asked)

    def forget(self):
        """As if nothing had been asked yet."""
        with self._lock:
            self._asked.clear()

    def hang(self, _):
        """A rule: takes the request and never answers."""
        return lambda connection: self.ended.wait()


class Job:
    """A job whose changes are scripted; answers long polls as a supervisor does."""

    def __init__(self, job, verb="formatDisk", slot=3, app=None, **members):
        self._changed = threading.Condition()
        self._document = {"id": job, "verb": verb, "slot": slot, **({"app": app} if app else {}),
                          "state": "accepted", "code": 0, "percentage": 0, "attempts": 0,
                          "acceptedAt": 1767225600000, "revision": job * 100, **members}

    @property
    def document(self):
        with self._changed:
            return dict(self._document)

    def change(self, **members):
        with self._changed:
            self._document.update(members)
            self._document["revision"] += 1
            self._changed.notify_all()

    def get(self, asked):
        """A rule for GET /jobs/N."""
        wait = int(asked.query.get("waitMs", 0)) / 1000
        with self._changed:
            if "revision" in asked.query:
                seen = int(asked.query["revision"])
                self._changed.wait_for(lambda: self._document["revision"] > seen, wait)
            return 200, dict(self._document)
