"""The device's identity from one run to the next, and payloads sealed and opened over the channel."""

import base64
import configparser
import os
import pathlib
import stat
import unittest

from host import HostTest

DEFAULTS = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "brevanholt/defaults.ini"
KEY = "brevanholtAgreementPrivateKey"
CHANGED = "The sealed payload was changed, or sealed with another key."


def platform_error(message):
    return {"error": ["platform_error", message, None]}


def stored_key():
    file = configparser.ConfigParser(interpolation=None)
    file.optionxform = str
    file.read(DEFAULTS)
    return base64.b64decode(file["Defaults"][KEY], validate=True)


class IdentityTest(HostTest):

    def run_once(self):
        host = self.start(scenario="identity")
        results = host.report()
        self.assertEqual(host.stop(), 0)
        return results

    def test_lasts_and_seals(self):
        results = self.run_once()
        public_key = results["publicKey"]
        self.assertRegex(public_key, "^04[0-9a-f]{128}$")
        self.assertEqual(len(stored_key()), 32)
        self.assertEqual(stat.S_IMODE(DEFAULTS.stat().st_mode), 0o600)
        self.assertEqual(stat.S_IMODE(DEFAULTS.parent.stat().st_mode), 0o700)
        self.assertEqual(results["peer"], {"sameKey": True, "peerOpens": True, "deviceOpens": True})
        for size in ("empty", "large"):
            self.assertEqual(results[size], {"sealed": 28, "opened": True,
                                             "flipped": platform_error(CHANGED)})
        self.assertEqual(results["badPoint"], platform_error(
            "The public key is not an uncompressed P-256 point of 65 bytes."))
        self.assertEqual(results["badKey"], platform_error(
            "An AES key has 16, 24 or 32 bytes, not 5."))

        self.assertEqual(self.run_once()["publicKey"], public_key)

        cut = base64.b64encode(stored_key()[:31]).decode()
        DEFAULTS.write_text(f"[Defaults]\n{KEY}={cut}\n")
        new_key = self.run_once()["publicKey"]
        self.assertNotEqual(new_key, public_key)
        self.assertEqual(len(stored_key()), 32)
        self.assertEqual(self.run_once()["publicKey"], new_key)

    def test_sets_a_damaged_file_aside(self):
        DEFAULTS.parent.mkdir(exist_ok=True)
        DEFAULTS.write_bytes(b"\0" * 100)
        self.run_once()
        self.assertEqual(len(stored_key()), 32)
        aside, = DEFAULTS.parent.glob("defaults.ini.damaged-*")
        self.assertEqual(aside.read_bytes(), b"\0" * 100)


if __name__ == "__main__":
    unittest.main(verbosity=2)
