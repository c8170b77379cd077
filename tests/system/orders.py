"""Orders operations of a running zedd and follows them, for the system tests."""

import contextlib
import dataclasses
import json
import os
import subprocess

import harness
from admin import AdminConnection

OVER = ("succeeded", "failed", "unknown")
# How a person's command ends, as agctl tells it by its exit code.
DONE, NOT_FOUND, CONFLICT, OFFLINE, FAILED, UNKNOWN = 0, 4, 5, 6, 7, 8


def chassis(*slots):
    """A chassis' description with all that applications need to be started."""
    return '[chassis]\nmodel = "C8"\nserial = "CH1"\n' + "".join(
        f'[[slot]]\nnumber = {slot}\nmodel = "B2"\nserial = "BL{slot}"\n' for slot in slots)


class Operator:
    """An operator at the admin interface. What is not granted is an assertion."""

    def __init__(self, zedd):
        self._zedd = zedd

    def ask(self, path, method="GET", body=None):
        """Status and document of an answer. Raises what the connection does when zedd goes away."""
        with contextlib.closing(AdminConnection(self._zedd, 90)) as connection:
            status, _, document = connection.ask("/api/v1" + path, method, body)
        return status, document

    def granted(self, wanted, path, method="GET", body=None):
        status, document = self.ask(path, method, body)
        if status != wanted:
            raise AssertionError(f"{method} {path}: {status} {document}")
        return document

    def create(self, slot, app, package, **fields):
        """Describes an instance."""
        return self.granted(201, "/apps", "POST",
                            {"id": app, "slot": slot, "app": {"packageFile": package}, **fields})

    def order(self, path, **body):
        """Orders an operation, e.g. "/apps/fw/install", and returns the job."""
        return self.granted(202, path, "POST", body)

    def job(self, number):
        return self.granted(200, f"/jobs/{number}")

    def await_end(self, job, seconds=harness.DEADLINE):
        """The job once it is final or unknown; an assertion if it is not in time."""
        found = self.granted(200, f"/jobs/{job['id']}?waitMs={int(seconds * 1000)}")
        if found["state"] not in OVER:
            raise AssertionError(f"not over after {seconds} s: {found}")
        return found

    def app(self, app):
        return self.granted(200, f"/apps/{app}")

    def slot(self, number):
        return self.granted(200, f"/slots/{number}")


@dataclasses.dataclass
class Ended:
    """How a command of an operator's ended, and the documents that it was answered."""
    code: int
    documents: list

    @property
    def job(self):
        return self.documents[-1]


class CurlFrontEnd:
    """Orders with curl, as a script would."""

    _OF_PROBLEM = {404: NOT_FOUND, 409: CONFLICT}

    def __init__(self, zedd):
        self._socket = zedd.folder / "state" / "admin.sock"

    def curl(self, method, path, body=None):
        """Status and document."""
        content = [] if body is None else [
            "--header", "Content-Type: application/json", "--data", json.dumps(body)]
        result = subprocess.run(
            ["curl", "--silent", "--show-error", "--unix-socket", self._socket, "--request", method,
             "--write-out", "\n%{http_code}", *content, f"http://zedd/api/v1{path}"],
            capture_output=True, text=True, timeout=90, check=True)
        document, _, status = result.stdout.rpartition("\n")
        return int(status), json.loads(document) if document else None

    def create(self, app, slot, package):
        return self._end(*self.curl("POST", "/apps", {"id": app, "slot": slot,
                                                      "app": {"packageFile": package}}))

    def delete(self, app):
        return self._end(*self.curl("DELETE", f"/apps/{app}"))

    def app(self, verb, app, **values):
        return self._order("POST", f"/apps/{app}/{verb}", values)

    def slot(self, verb, slot, **values):
        return self._order("POST", f"/slots/{slot}/{verb}", values)

    def set_time_zone(self, zone):
        return self._order("PUT", "/timezone", {"timezone": zone})

    def _order(self, method, path, values):
        names = {"package": "packageFile", "deliver_within": "deliverWithinMs",
                 "finish_within": "finishWithinMs"}
        body = {names.get(name, name): int(value * 1000) if name.endswith("within") else value
                for name, value in values.items()}
        status, document = self.curl(method, path, body)
        if status != 202:
            return self._end(status, document)
        jobs = [self.curl("GET", f"/jobs/{job['id']}?waitMs=60000")[1]
                for job in document.get("jobs", [document])]
        return Ended(max(map(self._code_of, jobs)), jobs)

    def _end(self, status, document):
        code = DONE if status < 300 else self._OF_PROBLEM.get(status, 1)
        return Ended(code, [document])

    @staticmethod
    def _code_of(job):
        if job["state"] == "failed":
            return OFFLINE if job["reason"] == "deliverByPast" else FAILED
        return DONE if job["state"] == "succeeded" else UNKNOWN


class AgctlFrontEnd:
    """Orders with agctl, as a person would."""

    def __init__(self, zedd):
        self._socket = zedd.folder / "state" / "admin.sock"

    def agctl(self, *words):
        """Exit code and the printed documents."""
        result = subprocess.run(
            [os.environ["ZAN_AGCTL"], "--socket", self._socket, "-o", "json", *map(str, words)],
            capture_output=True, text=True, timeout=90, check=False, stdin=subprocess.DEVNULL)
        return Ended(result.returncode, [json.loads(line) for line in result.stdout.splitlines()])

    def create(self, app, slot, package):
        return self.agctl("app", "create", app, "--slot", slot, "--package", package)

    def delete(self, app):
        return self.agctl("app", "delete", app, "--yes")

    def app(self, verb, app, **values):
        return self.agctl("app", verb, app, "--wait", *self._options(verb, values))

    def slot(self, verb, slot, **values):
        level = [values.pop("level")] if "level" in values else []
        return self.agctl("slot", verb, slot, *level, "--wait", *self._options(verb, values))

    def set_time_zone(self, zone):
        return self.agctl("timezone", "set", zone, "--wait")

    @staticmethod
    def _options(verb, values):
        yes = ["--yes"] if verb in ("uninstall", "format", "deregister") else []
        return yes + [word for name, value in values.items()
                      for word in ("--" + name.replace("_", "-"), value)]
