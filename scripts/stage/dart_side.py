"""Commands for the Dart application of scripts/flutter-bundle, which connects to a socket and does
what it is told there: JSON messages behind their size, in either direction."""

import json
import pathlib
import socket
import struct
import tempfile
import threading

from stage.host import TIME_LIMIT, wait_until


class DartSide:
    """One application, connected to a socket of its own. What it reports is kept: `events` are
    (target, name, data), `properties` are its window's."""

    def __init__(self):
        self.address = str(pathlib.Path(tempfile.mkdtemp()) / "dart")
        self._server = socket.socket(socket.AF_UNIX)
        self._server.bind(self.address)
        self._server.listen()
        self._server.settimeout(TIME_LIMIT)
        self._connection = None
        self._lock = threading.Lock()
        self.details = None
        self.events = []
        self.properties = {}
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self):
        try:
            while True:
                connection, _ = self._server.accept()
                self._receive(connection)
        except OSError:
            pass

    def _receive(self, connection):
        stream = connection.makefile("rb")
        while size := stream.read(4):
            message = json.loads(stream.read(struct.unpack(">I", size)[0]))
            payload = message["payload"]
            if message["action"] == "registerWebClient":
                self._connection = connection
                page = {"i": "page", "t": "page", "p": "", "c": []}
                session = {"id": payload["sessionId"], "controls": {"page": page}}
                self._send(
                    "registerWebClient", {"session": session, "appInactive": False, "error": ""}
                )
                self.details = payload
            elif message["action"] == "pageEventFromWeb":
                event = (payload["eventTarget"], payload["eventName"], payload["eventData"])
                self.events.append(event)
            elif message["action"] == "updateControlProps":
                for properties in payload["props"]:
                    self.properties.update(properties)

    def _send(self, action, payload):
        data = json.dumps({"action": action, "payload": payload}).encode()
        with self._lock:
            self._connection.sendall(struct.pack(">I", len(data)) + data)

    def wait(self):
        """Waits until the application runs, and returns what it said of itself."""
        return wait_until(lambda: self.details, "the Dart application")

    def set(self, **properties):
        """Sets properties of the application's window and page."""
        self._send("updateControlProps", {"props": [{"i": "page", **properties}]})

    def add(self, *controls):
        self._send("addPageControls", {"controls": list(controls), "trimIDs": []})

    def close(self):
        self._server.close()
        if self._connection:
            self._connection.close()
