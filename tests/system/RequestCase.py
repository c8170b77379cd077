"""What the tests of single requests share: a zedd, and a blade that it knows."""

import unittest

import harness

REGISTERED_SLOT = 20


class RequestCase(unittest.TestCase):
    """One zedd for all tests of a class, with a registered blade; each test has its own slots."""

    @classmethod
    def setUpClass(cls):
        cls.zedd = cls.enterClassContext(harness.Zedd())
        cls.enterClassContext(harness.Blade(REGISTERED_SLOT)).register_validly()

    def blade(self, slot):
        return self.enterContext(harness.Blade(slot))

    def assert_refused(self, reply, subject, status, root, message, content_type="nox-xml:1"):
        self.assertEqual(
            (reply.subject, reply.content_type, reply.status, reply.root, reply.code,
             reply.message),
            (subject, content_type, status, root, status, message))
