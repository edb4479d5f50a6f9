"""Tests that start the program and end it."""

import subprocess
import unittest

from stage.host import Host, visible_window, wait_until
from stage.remote import Remote


class HostTest(unittest.TestCase):
    """A test that starts hosts and ends them."""

    def start(self, *options, **how):
        host = Host(*options, **how)
        self.addCleanup(host.stop)
        return host

    def run_beside(self, *command, **how):
        """Runs another program until the test ends."""
        process = subprocess.Popen(command, stderr=subprocess.DEVNULL, **how)
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)

    def run_scenario(self, scenario, *arguments, **how):
        return self.start(scenario=scenario, arguments=arguments, **how).report()


class RemoteTest(HostTest):
    """A test that starts hosts with a page that it controls."""

    def start_remote(self, *options, **how):
        """Starts the program and returns it and its page, once the page listens."""
        remote = Remote()
        host = self.start(*options, scenario="remote", arguments=remote.arguments, **how)
        wait_until(visible_window, "the window")
        remote.events()
        return host, remote
