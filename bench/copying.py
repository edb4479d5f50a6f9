"""Other ways to bring files from one machine of a network to another: scp, rsync, and the least that
a transfer has to do. All have the files on the other side's disk when they end."""

import pathlib
import shutil
import subprocess
import tempfile
import time

from stage.host import BINARY, wait_until
from usage import processor_seconds, seconds_of_children

LIMIT = 600
PORT = 2222
BOUND = pathlib.Path(BINARY).parent / "transfer_bound"


class Copying:
    """One way. `command` is what sends a source; it runs as the sender."""

    def __init__(self, name, network, sender, server, target):
        self.name = name
        self._network = network
        self._sender = sender
        self.server = server
        self._target = target

    def command(self, source):
        raise NotImplementedError

    def begin(self, source):
        return subprocess.Popen(
            self._network.command(self._sender, *map(str, self.command(source))),
            stderr=subprocess.DEVNULL,
        )

    def send(self, source):
        """The time that it takes, and the processor time of both sides together, in seconds."""
        used = seconds_of_children() + processor_seconds(self.server.pid)
        began = time.monotonic()
        with self.begin(source) as process:
            code = process.wait(LIMIT)
        self.flush()
        took = time.monotonic() - began
        if code != 0:
            raise RuntimeError(f"{self.name} ended with {code}")
        used = seconds_of_children() + processor_seconds(self.server.pid) - used
        self.clear()
        return took, used

    def flush(self):
        """Where the program leaves that to the system."""

    def clear(self):
        for copy in self._target.iterdir():
            shutil.rmtree(copy) if copy.is_dir() else copy.unlink()


class SecureCopy(Copying):
    def __init__(self, shell, **how):
        super().__init__("scp, then sync", **how)
        self._shell = shell

    def command(self, source):
        return ["scp", "-q", "-r", "-P", PORT, *self._shell.options, source, self._shell.target]

    def flush(self):
        subprocess.run(["sync", "-f", str(self._target)], check=True)


class RemoteSync(Copying):
    def __init__(self, shell, **how):
        super().__init__("rsync --fsync, aes128-gcm", **how)
        self._shell = shell

    def command(self, source):
        shell = ["ssh", "-c", "aes128-gcm@openssh.com", "-p", PORT, *self._shell.options]
        remote = " ".join(map(str, shell))
        return ["rsync", "-a", "--whole-file", "--fsync", "-e", remote, source, self._shell.target]


class Bound(Copying):
    """Reads, seals, sends; receives, opens, writes, flushes, renames; nothing else."""

    def __init__(self, address, **how):
        super().__init__("the bound", **how)
        self._address = address

    def command(self, source):
        files = sorted(source.iterdir()) if source.is_dir() else [source]
        return [BOUND, "send", self._address, PORT + 1, *files]


class SecureShell:
    """A server on the receiver, and how the sender reaches it."""

    def __init__(self, network, receiver, folder, target):
        for key in ("host", "user"):
            subprocess.run(
                ["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / key], check=True
            )
        pathlib.Path("/run/sshd").mkdir(exist_ok=True)
        server = {
            "Port": PORT,
            "HostKey": folder / "host",
            "PidFile": "none",
            "UsePAM": "no",
            "AuthorizedKeysFile": folder / "user.pub",
            "StrictModes": "no",
            "PermitRootLogin": "yes",
            "Subsystem": "sftp internal-sftp",
        }
        client = {
            "IdentityFile": folder / "user",
            "StrictHostKeyChecking": "no",
            "UserKnownHostsFile": "/dev/null",
            "LogLevel": "ERROR",
        }
        self.options = options_of(client)
        self.target = f"root@{network.address_of(receiver)}:{target}/"
        command = ["/usr/sbin/sshd", "-D", "-f", "/dev/null", *options_of(server)]
        self.server = subprocess.Popen(network.command(receiver, *command))


def options_of(values):
    return [part for name, value in values.items() for part in ("-o", f"{name}={value}")]


class OtherWays:
    """All of them, with their servers."""

    def __init__(self, network, sender, receiver):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="brevanholt-copies-"))
        target = self._folder / "copies"
        target.mkdir()
        shell = SecureShell(network, receiver, self._folder, target)
        command = network.command(receiver, str(BOUND), "receive", str(PORT + 1), str(target))
        bound = subprocess.Popen(command)
        self._servers = (shell.server, bound)
        how = {"network": network, "sender": sender, "target": target}
        self.all = (
            Bound(network.address_of(receiver), server=bound, **how),
            SecureCopy(shell, server=shell.server, **how),
            RemoteSync(shell, server=shell.server, **how),
        )
        small = self._folder / "small"
        small.touch()
        for way in self.all:
            wait_until(lambda way=way: way.begin(small).wait(30) == 0, way.name, 20)
            way.clear()

    def close(self):
        for server in self._servers:
            server.kill()
            server.wait()
        shutil.rmtree(self._folder)
