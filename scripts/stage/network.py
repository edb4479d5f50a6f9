"""Several machines on one: network namespaces on one Ethernet segment."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

PREFIX = f"bvh{os.getpid()}"
DISPLAYS = pathlib.Path("/tmp/.X11-unix")


def _ip(*arguments):
    subprocess.run(["ip", *arguments], check=True, capture_output=True, text=True, timeout=30)


def enter_with_rights():
    """Where the user is not root, runs this program anew in a user namespace in which it is."""
    if os.geteuid() == 0 or not shutil.which("unshare"):
        return
    as_root = [
        "unshare",
        "--user",
        "--map-root-user",
        "--net",
        "--mount",
        "sh",
        "-c",
        'mount -t tmpfs none /run && exec "$@"',
        "sh",
    ]
    if subprocess.run([*as_root, "true"], check=False, capture_output=True).returncode == 0:
        os.execvp("unshare", [*as_root, sys.executable, *sys.argv])


def is_permitted():
    """Whether this user, in this place, may make namespaces and join them."""
    try:
        network = Network("probe")
    except (OSError, subprocess.CalledProcessError):
        return False
    try:
        return (
            subprocess.run(
                network.command("probe", "true"), check=False, capture_output=True, timeout=30
            ).returncode
            == 0
        )
    finally:
        network.close()


class Network:
    """A bridge in a namespace of its own, and each machine joined to it by a cable."""

    def __init__(self, *machines):
        self._machines = machines
        self._displays = pathlib.Path(tempfile.mkdtemp(prefix="brevanholt-displays-"))
        if not DISPLAYS.exists():
            DISPLAYS.mkdir()
            DISPLAYS.chmod(0o1777)
        _ip("netns", "add", self.namespace("switch"))
        self._on("switch", "link", "add", "bridge", "type", "bridge")
        self._on("switch", "link", "set", "bridge", "up")
        for number, machine in enumerate(machines, 1):
            _ip("netns", "add", self.namespace(machine))
            self._on(
                "switch",
                "link",
                "add",
                machine,
                "type",
                "veth",
                "peer",
                "name",
                "eth0",
                "netns",
                self.namespace(machine),
            )
            self._on("switch", "link", "set", machine, "master", "bridge", "up")
            self._on(machine, "address", "add", f"{self.address(number)}/24", "dev", "eth0")
            self._on(machine, "link", "set", "lo", "up")
            self._on(machine, "link", "set", "eth0", "up")

    @staticmethod
    def namespace(machine):
        return f"{PREFIX}-{machine}"

    @staticmethod
    def address(number):
        return f"10.77.0.{number}"

    def address_of(self, machine):
        return self.address(self._machines.index(machine) + 1)

    def command(self, machine, *command):
        """The command that runs another as that machine, with its name as host name. X servers of
        different networks do not see each other's numbers, so each machine has its own sockets."""
        displays = self._displays / machine
        displays.mkdir(exist_ok=True)
        prepare = f'hostname "$0" && mount --bind "$1" {DISPLAYS} && shift && exec "$@"'
        return [
            "nsenter",
            f"--net=/run/netns/{self.namespace(machine)}",
            "unshare",
            "--uts",
            "--mount",
            "sh",
            "-c",
            prepare,
            machine,
            str(displays),
            *command,
        ]

    def slow_down(self, machine, rate):
        """Lets that machine send no faster, by a rate as tc has them: "200mbit"."""
        limit = ["tbf", "rate", rate, "burst", "256kb", "latency", "50ms"]
        subprocess.run(
            [
                "tc",
                "-netns",
                self.namespace(machine),
                "qdisc",
                "add",
                "dev",
                "eth0",
                "root",
                *limit,
            ],
            check=True,
            timeout=30,
        )

    def plug(self, machine, is_in):
        """Puts that machine's cable in, or pulls it."""
        self._on("switch", "link", "set", machine, "up" if is_in else "down")

    def close(self):
        for machine in ("switch", *self._machines):
            subprocess.run(
                ["ip", "netns", "delete", self.namespace(machine)],
                check=False,
                capture_output=True,
                timeout=30,
            )
        shutil.rmtree(self._displays, ignore_errors=True)

    def _on(self, machine, *arguments):
        _ip("-netns", self.namespace(machine), *arguments)
