"""agctl at a terminal."""

import fcntl
import os
import pty
import re
import select
import struct
import subprocess
import termios
import time
import unittest

import AgctlServer
from AgctlCase import APP, DEADLINE, SLOT, AgctlCase

COLUMNS, ROWS = 60, 10


class Terminal:
    """A program on a pseudo terminal, as its session's leader."""

    def __init__(self, arguments, env=None, columns=COLUMNS):
        self._master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", ROWS, columns, 0, 0))
        self._process = subprocess.Popen(
            arguments, stdin=slave, stdout=slave, stderr=slave, start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0),
            env={"TERM": "xterm", "LC_ALL": "C.UTF-8", "PATH": os.environ["PATH"], **(env or {})})
        os.close(slave)
        self._seen = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        os.close(self._master)

    def type(self, text):
        os.write(self._master, text.encode())

    @property
    def text(self):
        return self._seen.decode("utf-8", "replace")

    def wait_for(self, wanted):
        """What was written up to the first time that it matches."""
        deadline = time.monotonic() + DEADLINE
        while not re.search(wanted, self.text):
            if not self._read(deadline):
                raise AssertionError(f"no {wanted!r} in {self.text!r}")
        return self.text

    def end(self):
        """The exit code and all that was written."""
        deadline = time.monotonic() + DEADLINE
        while self._read(deadline):
            pass
        return self._process.wait(DEADLINE), self.text

    def _read(self, deadline):
        if not select.select([self._master], [], [], max(0, deadline - time.monotonic()))[0]:
            return False
        try:
            data = os.read(self._master, 65536)
        except OSError:  # everybody has left the other end
            data = b""
        self._seen += data
        return bool(data)


def displayed(text):
    """What the screen's lines are in the end, colours taken off. Knows what agctl writes."""
    lines, row = [""], 0
    for piece in re.findall(r"\x1b\[\d*[A-Za-z]|\r\n|\r|[^\x1b\r]+", text):
        if piece == "\r\n":
            row += 1
            lines += [""] * (row + 1 - len(lines))
        elif piece.endswith("A") and piece.startswith("\x1b"):
            row -= int(piece[2:-1])
            assert row >= 0
        elif piece == "\x1b[J":
            lines[row:] = [""]
        elif piece != "\r" and not piece.startswith("\x1b"):
            lines[row] += piece
    return lines


class TerminalTest(AgctlCase):
    def terminal(self, *arguments, **how):
        return self.enterContext(Terminal(self.arguments(*arguments), **how))

    def test_bar_grows_and_its_line_stays_one(self):
        job = self.add_job(AgctlServer.Job(17))
        terminal = self.terminal("job", "wait", 17, columns=100)
        terminal.wait_for(r"\[-{20}\] accepted")
        job.change(state="running", percentage=45)
        terminal.wait_for(r"\[#{9}-{11}\] running, 45 %")
        job.change(state="succeeded", percentage=100)
        code, text = terminal.end()
        self.assertEqual(code, 0)
        self.assertIn("\x1b[32m", text)
        bars = [line for line in displayed(text) if "[" in line]
        self.assertEqual(len(bars), 1, bars)
        self.assertRegex(bars[0], r"^job 17  slot 3  formatDisk  \[#{20}\] succeeded")

    def test_more_bars_than_rows_fit_the_screen(self):
        jobs = [self.add_job(AgctlServer.Job(number, slot=number)) for number in range(1, 13)]
        terminal = self.terminal("job", "wait", *range(1, 13))
        terminal.wait_for("and 4 more")
        for job in jobs:
            job.change(state="succeeded", percentage=100)
        code, text = terminal.end()
        self.assertEqual(code, 0)
        lines = displayed(text)
        self.assertEqual(sorted(int(re.match(r"job (\d+) ", line)[1]) for line in lines
                                if line.startswith("job ")), list(range(1, 13)))
        self.assertLessEqual(max(map(len, lines)), COLUMNS)
        for move in re.findall(r"\x1b\[(\d+)A", text):
            self.assertLess(int(move), ROWS)

    def test_interrupt_key_leaves_the_job_running(self):
        self.add_job(AgctlServer.Job(17))
        terminal = self.terminal("job", "wait", 17)
        terminal.wait_for("accepted")
        terminal.type("\x03")
        code, text = terminal.end()
        self.assertEqual(code, 8)
        self.assertIn("the job goes on; see how it ends with: agctl job wait 17", text)

    def test_what_destroys_is_asked_for(self):
        self.rules["POST /slots/3/format"] = 202, AgctlServer.Job(17).document
        for answer, code, orders in (("n", 1, 0), ("", 1, 0), ("y", 0, 1)):
            with self.subTest(answer):
                terminal = self.terminal("slot", "format", "3", columns=100)
                terminal.wait_for(r"Format the disk of the blade in slot 3\? .*\[y/N\] ")
                terminal.type(answer + "\n")
                ended, text = terminal.end()
                self.assertEqual(ended, code, text)
                self.assertEqual("nothing was done" in text, code == 1)
                self.assertEqual(len(self.server.asked()), orders)

    def test_tables_fit_the_screen(self):
        self.rules["GET /apps"] = 200, {"apps": [{**APP, "packageFile": "http://数据/" + "x" * 99}]}
        code, text = self.terminal("app", "list").end()
        self.assertEqual(code, 0)
        header, row = displayed(text)[:2]
        self.assertEqual(header, "APP   SLOT  PHASE    FAILED  VERSION  JOB  PACKAGE")
        self.assertRegex(row, r"^fw-1     3  stopped  no      1\.2        -  http://数据/x*…$")
        self.assertEqual(len(row) + 2, COLUMNS)  # two of its letters are two columns wide

    def test_colours_are_left_out_where_they_are_not_wanted(self):
        self.rules["GET /slots"] = 200, {"slots": [SLOT]}
        for env, coloured in (({}, True), ({"NO_COLOR": "1"}, False), ({"NO_COLOR": ""}, True),
                              ({"TERM": "dumb"}, False), ({"TERM": ""}, False)):
            with self.subTest(env):
                code, text = self.terminal("slot", "list", env=env).end()
                self.assertEqual(code, 0)
                self.assertEqual("\x1b[32malive\x1b[0m" in text, coloured, text)
                self.assertEqual("\x1b" in text, coloured, text)

    def test_terminal_without_cursor_gets_lines(self):
        self.add_job(AgctlServer.Job(17, state="failed", reason="refused", cause="it is so"))
        code, text = self.terminal("job", "wait", 17, env={"TERM": "dumb"}).end()
        self.assertEqual(code, 7)
        self.assertNotIn("\x1b", text)
        self.assertIn("agctl: job 17 (formatDisk of slot 3): failed, refused", text)

    def test_terminal_of_another_character_set_gets_ascii(self):
        # The second byte of this letter starts a control sequence for a terminal of 8-bit characters.
        self.rules["GET /apps"] = 200, {"apps": [{**APP, "version": "\u00db31m", "id": "\u2028"}]}
        code, text = self.terminal("app", "list", env={"LC_ALL": "C"}, columns=200).end()
        self.assertEqual(code, 0)
        self.assertTrue(re.sub("\x1b\\[\\d+m", "", text).isascii(), text)
        self.assertIn(r"\u00DB31m", text)

    def test_hostile_text_does_not_move_the_cursor(self):
        hostile = "\x1b[2J\x1b]0;owned\x07\n\n\x9b31m"
        job = self.add_job(AgctlServer.Job(17, cause=hostile, reason=hostile, verb=hostile))
        terminal = self.terminal("job", "wait", 17, columns=200)
        terminal.wait_for("accepted")
        job.change(state="failed")
        code, text = terminal.end()
        self.assertEqual(code, 7)
        self.assertIn("owned", text)
        for part in ("\x1b[2J", "\x1b]", "\x07", "\x9b", "\n\n"):
            self.assertNotIn(part, text.replace("\r", ""))


if __name__ == "__main__":
    unittest.main()
