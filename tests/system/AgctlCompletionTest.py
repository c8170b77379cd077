"""bash completes agctl's command lines."""

import os
import pathlib
import subprocess
import tempfile
import unittest

import AgctlServer
from AgctlCase import AGCTL, APP, DEADLINE, SLOT, AgctlCase
from AgctlTerminalTest import Terminal

BIN = str(pathlib.Path(AGCTL).parent)
BASH = ["bash", "--noprofile", "--norc"]


class CompletionTest(AgctlCase):
    def setUp(self):
        super().setUp()
        self.env = {**os.environ, "PATH": BIN + ":" + os.environ["PATH"],
                    "AGCTL_SOCKET": str(self.server.socket)}

    def complete(self, *words, line=None, before=""):
        """What bash would offer for the last word, after readline split the line as given."""
        program = f"""
            set -u
            {before}
            source <(agctl completion bash)
            COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMP_LINE=$LINE COMP_POINT=${{#LINE}}
            _agctl
            for word in "${{COMPREPLY[@]}}"; do printf '%s\\n' "$word"; done
        """
        result = subprocess.run([*BASH, "-c", program, "bash", *words], capture_output=True,
                                env={**self.env, "LINE": line or " ".join(words)}, text=True,
                                timeout=DEADLINE, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout.split("\n")[:-1]

    def test_script_registers_itself(self):
        result = subprocess.run([*BASH, "-c", "source <(agctl completion bash); complete -p agctl"],
                                env=self.env, capture_output=True, text=True, timeout=DEADLINE,
                                check=True)
        self.assertEqual(result.stdout, "complete -F _agctl agctl\n")

    def test_words_of_the_tables(self):
        self.assertEqual(self.complete("agctl", "sl"), ["slot"])
        self.assertEqual(self.complete("agctl", "job", ""), ["list", "show", "wait", "cancel"])
        self.assertEqual(self.complete("agctl", "app", "start", "x", "--wa"), ["--wait"])
        self.assertEqual(self.server.asked(), [])

    def test_what_the_supervisor_has(self):
        self.rules["GET /slots"] = 200, {"slots": [SLOT, {**SLOT, "slot": 12}]}
        self.rules["GET /apps"] = 200, {"apps": [APP, {**APP, "id": "fw:2"}]}
        self.rules["GET /jobs"] = 200, {"jobs": [AgctlServer.Job(17).document]}
        self.assertEqual(self.complete("agctl", "slot", "show", ""), ["3", "12"])
        self.assertEqual(self.complete("agctl", "app", "start", "fw"), ["fw-1", "fw:2"])
        self.assertEqual(self.complete("agctl", "job", "wait", ""), ["17"])

    def test_words_that_readline_splits(self):
        self.rules["GET /apps"] = 200, {"apps": [{**APP, "id": "fw:2"}, {**APP, "id": "fw:31"}]}
        # Only what follows the colon or the equals sign is replaced.
        self.assertEqual(self.complete("agctl", "app", "start", "fw", ":", "3",
                                       line="agctl app start fw:3"), ["31"])
        self.assertEqual(self.complete("agctl", "app", "start", "fw", ":",
                                       line="agctl app start fw:"), ["2", "31"])
        self.assertEqual(self.complete("agctl", "--output", "=", "j", line="agctl --output=j"),
                         ["json"])
        self.assertEqual(self.complete("agctl", "app", "start", "fw:3",
                                       before="COMP_WORDBREAKS=' '"), ["fw:31"])

    def test_supervisor_that_was_typed_is_asked(self):
        self.rules["GET /slots"] = 200, {"slots": [SLOT]}
        with tempfile.TemporaryDirectory() as folder:
            configuration = pathlib.Path(folder) / "z.toml"
            configuration.write_text(f'[supervisor]\nstate_dir = "{self.server.folder}"\n')
            self.env.update(AGCTL_SOCKET="/nowhere", HOME=folder)
            for file in (str(configuration), "~/z.toml", f"'{configuration}'"):
                self.assertEqual(self.complete("agctl", "--config", file, "slot", "show", ""),
                                 ["3"], file)

    def test_files(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "zedd one.toml").write_text("")
            self.assertEqual(self.complete("agctl", "--config", folder + "/ze"),
                             [folder + "/zedd one.toml"])
            self.assertEqual(self.complete("agctl", "--config", "=", folder + "/ze",
                                           line=f"agctl --config={folder}/ze"),
                             [folder + "/zedd one.toml"])

    def test_nothing_and_silence_without_a_supervisor(self):
        for socket in ("/nowhere", str(self.server.folder)):
            self.env["AGCTL_SOCKET"] = socket
            self.assertEqual(self.complete("agctl", "slot", "show", ""), [])
        self.rules["GET /slots"] = AgctlServer.problem(500, "internal")
        self.env["AGCTL_SOCKET"] = str(self.server.socket)
        self.assertEqual(self.complete("agctl", "slot", "show", ""), [])
        self.assertEqual(self.complete("agctl", "--config", "/nowhere.toml", "slot", "show", ""),
                         [])

    def test_supervisor_that_hangs_is_not_waited_for_long(self):
        self.rules["GET /slots"] = self.server.hang
        self.assertEqual(self.complete("agctl", "slot", "show", ""), [])

    def test_names_are_not_obeyed(self):
        with tempfile.TemporaryDirectory() as folder:
            hostile = [f"$(touch {folder}/a)", f"`touch {folder}/b`", "*", "\x1b[2J", "x y", "ok"]
            self.rules["GET /apps"] = 200, {"apps": [{**APP, "id": name} for name in hostile]}
            self.assertEqual(self.complete("agctl", "app", "start", ""), ["ok"])
            self.complete("agctl", "app", "start", f"$(touch {folder}/c)", "")
            self.assertEqual(os.listdir(folder), [])

    def test_at_a_prompt(self):
        self.rules["GET /apps"] = 200, {"apps": [{**APP, "id": "fw:2"}]}
        self.rules["POST /apps/fw:2/start"] = 202, AgctlServer.Job(17).document
        terminal = self.enterContext(Terminal([*BASH, "-i"], env={**self.env, "PS1": "> "},
                                              columns=200))
        terminal.wait_for("> ")
        terminal.type("source <(agctl completion bash)\n")
        terminal.type("agctl app sta\tf\t\n")
        terminal.wait_for("agctl job wait 17")  # what it completed was run
        self.assertIn("POST /api/v1/apps/fw:2/start", self.targets())


if __name__ == "__main__":
    unittest.main()
