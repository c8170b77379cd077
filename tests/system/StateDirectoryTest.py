"""What becomes of the state directory under a running zedd: full, moved away, deleted.

Whatever zedd has granted is there after a restart; what it cannot store it does not grant.
"""

import contextlib
import ctypes
import os
import pathlib
import shutil
import tempfile
import unittest

import harness
from admin import AdminConnection
from orders import Operator

_CLONE_NEWNS = 0x00020000
_MS_REC, _MS_PRIVATE = 1 << 14, 1 << 18
_libc = ctypes.CDLL(None, use_errno=True)


class StateCase(unittest.TestCase):
    def setUp(self):
        self.zedd = harness.Zedd({"log.level": 5}, folder=self.make_folder())
        self.enterContext(self.zedd)
        self.operator = Operator(self.zedd)
        self.count = 0

    def make_folder(self):
        return self.enterContext(tempfile.TemporaryDirectory(prefix="zedd-test-"))

    @property
    def state(self):
        return self.zedd.folder / "state"

    def create(self):
        """Status and document of an answer to a new instance, and its name."""
        self.count += 1
        app = f"a{self.count}"
        status, document = self.operator.ask("/apps", "POST", {
            "id": app, "slot": 1, "app": {"packageFile": "http://10.0.0.1/fw-1.0.pkg"}})
        return status, document, app

    def admit(self):
        with harness.Blade(1) as blade:
            blade.register_validly()

    def findings(self):
        return [finding["text"] for finding in
                self.operator.granted(200, "/health")["findings"]]

    def assert_not_granted(self):
        status, problem, app = self.create()
        self.assertEqual((status, problem["type"]), (503, "/problems/not-stored"))
        self.assert_registration_is_put_off()
        self.assertEqual(self.findings(),
                         ["changes cannot be stored; orders and registrations are put off"])
        return app

    def assert_registration_is_put_off(self):
        with harness.Blade(2) as blade:
            reply = blade.register()
            self.assertEqual((reply.status, reply.text("token")), ("510", ""))

    def assert_granted_again(self):
        harness.wait_until(lambda: not self.findings(), lambda: self.zedd.log.text())
        status, document, app = self.create()
        self.assertEqual(status, 201, document)
        return app

    def assert_there(self, *apps):
        for app in apps:
            self.operator.app(app)


class MountedCase(StateCase):
    """The state directory is a small file system of its own."""

    def setUp(self):
        super().setUp()
        self.admit()

    def make_folder(self):
        folder = super().make_folder()
        state = pathlib.Path(folder) / "state"
        state.mkdir()
        if _libc.mount(b"tmpfs", os.fsencode(state), b"tmpfs", 0, b"size=1m,mode=700") != 0:
            self.skipTest("no mounts are allowed here")
        self.addCleanup(_libc.umount2, os.fsencode(state), 2)
        return folder

    def fill(self):
        """Leaves no room, and creates instances until one is not granted: those that were."""
        with contextlib.suppress(OSError), open(self.state / "fill", "ab", buffering=0) as file:
            while True:
                file.write(b"x" * 512)
        apps = []
        while True:
            status, _, app = self.create()
            if status != 201:
                return apps
            apps.append(app)

    def test_full_one_grants_nothing_until_there_is_room(self):
        apps = self.fill()
        app = self.assert_not_granted()
        (self.state / "fill").unlink()
        apps.append(self.assert_granted_again())
        self.assertIsNotNone(self.zedd.log.wait_for("changes are stored again"))
        self.zedd.kill()
        self.zedd.start()
        self.assert_there(*apps)
        self.assertEqual(self.operator.ask(f"/apps/{app}")[0], 404)

    def test_full_one_lets_the_process_end_and_start(self):
        apps = self.fill()
        self.assertEqual(self.zedd.stop(), 0)
        try:
            self.zedd.start()
        except AssertionError as error:
            self.assertIn("free some space on its file system", str(error))
        self.zedd.kill()
        (self.state / "fill").unlink()
        self.zedd.start()
        self.assert_there(*apps)


class MovedTest(StateCase):
    def setUp(self):
        super().setUp()
        self.admit()
        self.app = self.create()[2]

    def test_moved_one_grants_nothing_until_it_is_back(self):
        elsewhere = self.zedd.folder / "elsewhere"
        self.state.rename(elsewhere)
        self.assert_registration_is_put_off()
        self.assertIn("was deleted, moved or replaced", self.zedd.log.text())
        elsewhere.rename(self.state)
        self.assert_there(self.app, self.assert_granted_again())

    def test_deleted_one_grants_nothing(self):
        with contextlib.closing(AdminConnection(self.zedd)) as admin:
            admin.connect()  # later nothing leads to the socket
            shutil.rmtree(self.state)
            self.assert_registration_is_put_off()
            status, _, problem = admin.ask("/api/v1/apps", "POST", {
                "id": "late", "slot": 1, "app": {"packageFile": "x"}})
            self.assertEqual((status, problem["type"]), (503, "/problems/not-stored"))
            self.assertEqual(admin.ask("/api/v1/health")[2]["status"], "degraded")
        self.assertEqual(self.zedd.stop(), 0)
        self.assertIn("could not be stored and end with this process", self.zedd.log.text())
        self.zedd.start()
        self.assertEqual(self.operator.ask(f"/apps/{self.app}")[0], 404)


def main():
    harness.enter_own_network()
    # Mounts of its own, too; where that is not allowed, neither are mounts.
    if _libc.unshare(_CLONE_NEWNS) == 0:
        _libc.mount(b"none", b"/", None, _MS_REC | _MS_PRIVATE, None)
    unittest.main()


if __name__ == "__main__":
    main()
