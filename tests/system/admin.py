"""Talks to the admin interface of a running zedd, for the system tests."""

import http.client
import json
import socket

import harness


class AdminConnection(http.client.HTTPConnection):
    """HTTP over the Unix socket of a zedd's state directory."""

    def __init__(self, zedd, seconds=harness.DEADLINE):
        super().__init__("zedd", timeout=seconds)
        self._path = zedd.folder / "state" / "admin.sock"

    def connect(self):
        self.sock = connect(self._path, self.timeout)

    def ask(self, path, method="GET", body=None):
        """Status, content type and document of an answer, None for one without content.

        The body is a document too; none is sent for None.
        """
        headers = {} if body is None else {"Content-Type": "application/json"}
        self.request(method, path, None if body is None else json.dumps(body), headers)
        response = self.getresponse()
        content = response.read()
        return (response.status, response.getheader("Content-Type"),
                json.loads(content) if content else None)


def connect(path, seconds=harness.DEADLINE):
    """A connected socket; what the system says when nobody listens."""
    client = socket.socket(socket.AF_UNIX)
    try:
        client.settimeout(seconds)
        client.connect(str(path))
    except OSError:
        client.close()
        raise
    return client
