"""The harness itself, with small programs in zedd's place."""

import pathlib
import sys
import tempfile
import unittest

import harness


class HarnessTest(unittest.TestCase):
    def program(self, *lines):
        file = tempfile.NamedTemporaryFile("w", prefix="stand-in-", delete=False)
        self.addCleanup(pathlib.Path(file.name).unlink)
        with file:
            file.write("\n".join((f"#!{sys.executable}", "import signal, sys",
                                  "def say(text): print(text, flush=True)") + lines))
        pathlib.Path(file.name).chmod(0o755)
        return file.name

    def test_ready_program_is_started_with_its_configuration_and_ends_on_request(self):
        program = self.program("signal.signal(signal.SIGTERM, lambda *_: sys.exit(3))",
                               "say(open(sys.argv[2]).read() + 'zedd: ready')", "signal.pause()")
        with harness.Zedd({"dme.chassis": 'a "b"', "log.level": 1}, program=program) as zedd:
            self.assertEqual(zedd.output.all(), [
                f'supervisor.state_dir = "{zedd.folder}/state"', "supervisor.self_id = 1",
                "log.level = 1", 'dme.chassis = "a \\"b\\""', "zedd: ready"])
            self.assertTrue(zedd.is_running())
            self.assertEqual(zedd.stop(), 3)
        self.assertFalse(zedd.folder.exists())

    def test_program_that_dies_is_told_with_its_status_and_output(self):
        program = self.program("sys.stderr.write('no disk\\n')", "sys.exit(7)")
        with self.assertRaisesRegex(AssertionError, r"exit status 7\)\n\nno disk"):
            harness.Zedd(program=program).__enter__()

    def test_program_that_is_never_ready_is_ended(self):
        zedd = harness.Zedd(program=self.program("signal.pause()"))
        with self.assertRaisesRegex(AssertionError, "not ready within 0.2 s"):
            zedd.start(seconds=0.2)
        self.assertFalse(zedd.is_running())
        zedd.__exit__()

    def test_program_that_does_not_end_is_ended(self):
        program = self.program("signal.signal(signal.SIGTERM, signal.SIG_IGN)",
                               "say('zedd: ready')", "while True: signal.pause()")
        with harness.Zedd(program=program) as zedd:
            with self.assertRaisesRegex(AssertionError, "did not end within 0.2 s"):
                zedd.stop(seconds=0.2)
            self.assertFalse(zedd.is_running())

    def test_lines_are_found_after_a_mark(self):
        program = self.program("say('one\\nzedd: ready\\none more')", "signal.pause()")
        with harness.Zedd(program=program) as zedd:
            self.assertEqual(zedd.output.wait_for("one"), "one")
            self.assertEqual(zedd.output.wait_for("one", after=1), "one more")
            self.assertIsNone(zedd.output.wait_for("two", seconds=0.05))

    def test_document_leaves_out_none_and_escapes(self):
        self.assertEqual(harness.document("r", {"a": 1, "b": None, "c": "<&"}),
                         "<r><a>1</a><c>&lt;&amp;</c></r>")


if __name__ == "__main__":
    harness.main()
