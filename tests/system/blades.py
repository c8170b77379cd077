"""Runs the blades of sma-sim beside a test, which watches and disturbs them meanwhile."""

import json
import os
import socket
import subprocess

import harness


class Blades:
    """A running sma-sim with a control socket and a state file in a folder of the test's.

    It outlives its process: kill() ends that as a power cut does, start() goes on from its state.
    """

    def __init__(self, folder, slots, *options, scenario=None):
        self._control = folder / "blades.sock"
        self._output = folder / "blades.out"
        self._arguments = [os.environ["ZAN_SMA_SIM"], "--slots", slots, "--quiet",
                           "--control", self._control, "--state", folder / "blades.state", *options]
        if scenario is not None:
            (folder / "scenario.json").write_text(json.dumps(scenario))
            self._arguments += ["--scenario", folder / "scenario.json"]
        self._process = None

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.kill()

    def start(self):
        """Starts the process; it can be asked as soon as it opens its socket."""
        self._control.unlink(missing_ok=True)
        with open(self._output, "ab") as output:
            self._process = subprocess.Popen(self._arguments, stdin=subprocess.DEVNULL,
                                             stdout=output, stderr=output,
                                             preexec_fn=harness.die_with_parent)
        harness.wait_until(self._is_up, lambda: self._output.read_text())

    def _is_up(self):
        if self._process.poll() is not None:
            raise AssertionError(f"sma-sim ended: {self._output.read_text()}")
        return self._control.exists()

    def kill(self):
        if self._process is not None:
            self._process.kill()
            self._process.wait()
            self._process = None

    def ask(self, do, **values):
        """What the control socket answers to a request."""
        with socket.socket(socket.AF_UNIX) as client:
            client.settimeout(harness.DEADLINE)
            client.connect(str(self._control))
            client.sendall(json.dumps({"do": do, **values}).encode() + b"\n")
            answer = json.loads(client.makefile().readline())
        if not answer["ok"]:
            raise AssertionError(f"{do} {values}: {answer['error']}")
        return answer

    def state(self, slot):
        return self.ask("state", slot=slot)

    def instances(self, slot):
        """The instances of a blade, by identifier."""
        return {each["id"]: each for each in self.state(slot)["instances"]}

    def executed(self, slot):
        """How often a blade carried out each command, by command and instance."""
        return {(each["command"], each["app"]): each["count"]
                for each in self.state(slot)["executed"]}

    def disturb(self, slot, kind, **values):
        """Lets the next command to a blade go wrong."""
        self.ask("fault", slots=str(slot), kind=kind, **values)
