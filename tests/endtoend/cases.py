"""Tests that start the program and end it."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

import dbus
import dbusmock

from stage.host import BINARY, Host, visible_window, wait_until
from stage.remote import Remote

BUILD = pathlib.Path(BINARY).parents[1]
SERVICES = pathlib.Path("/usr/share/dbus-1/services")
BUS = """<busconfig><type>session</type><listen>unix:path={folder}/bus</listen>
<policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/>
</policy><servicedir>{folder}</servicedir></busconfig>"""


def install(prefix):
    """Installs the program that was built."""
    command = ["cmake", "--install", BUILD, "--prefix", prefix]
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)


class HostTest(unittest.TestCase):
    """A test that starts hosts and ends them."""

    def start(self, *options, **how):
        host = Host(*options, **how)
        self.addCleanup(host.stop)
        return host

    def new_folder(self):
        folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        return folder

    def run_beside(self, *command, **how):
        """Runs another program until the test ends."""
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        process = subprocess.Popen(command, **{**quiet, **how})
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)
        return process

    def run_scenario(self, scenario, *arguments, **how):
        return self.start(scenario=scenario, arguments=arguments, **how).report()

    def start_bus(self, without=None):
        """A bus that can start every service of the session except `without`."""
        folder = self.new_folder()
        for service in SERVICES.glob("*.service"):
            if f"Name={without}" not in service.read_text().split():
                (folder / service.name).symlink_to(service)
        (folder / "config").write_text(BUS.format(folder=folder))
        self.run_beside("dbus-daemon", f"--config-file={folder}/config", "--nofork", "--nopidfile")
        wait_until((folder / "bus").exists, "the bus")
        return f"unix:path={folder}/bus"

    def mock(self, name, path=None, interface=None, template=None, system=False, address=None):
        """Starts a mocked service and returns the interface that controls it. The object's path and
        interface are derived from the name unless they are given."""
        variable = "DBUS_SYSTEM_BUS_ADDRESS" if system else "DBUS_SESSION_BUS_ADDRESS"
        address = address or os.environ[variable]
        path = path or "/" + name.replace(".", "/")
        what = ("--template", template) if template else (name, path, interface or name)
        where = "--system" if system else "--session"
        command = (sys.executable, "-m", "dbusmock", where, *what)
        self.run_beside(*command, env={**os.environ, variable: address})
        bus = dbus.bus.BusConnection(address)
        wait_until(lambda: bus.name_has_owner(name), name)
        return dbus.Interface(bus.get_object(name, path), dbusmock.MOCK_IFACE)


class RemoteTest(HostTest):
    """A test that starts hosts with a page that it controls."""

    def start_remote(self, *options, **how):
        """Starts the program and returns it and its page, once the page listens."""
        remote = Remote()
        host = self.start(*options, scenario="remote", arguments=remote.arguments, **how)
        wait_until(visible_window, "the window")
        remote.events()
        return host, remote
