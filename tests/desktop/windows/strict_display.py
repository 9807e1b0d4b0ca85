# SPDX-License-Identifier: MIT
"""A display that lets nobody type until it is told to: the real one seen through a socket of its own."""
import os
import pathlib
import socket
import threading

FOLDER = pathlib.Path("/tmp/.X11-unix")


class StrictDisplay:
    """Hides the extension that types from clients that connect before `allow_typing`."""

    def __init__(self, number=77):
        self.name = f":{number}"
        self.hidden = {b"XTEST": b"XTES_"}
        self.path = FOLDER / f"X{number}"
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(str(self.path))
        self.listener.listen()
        threading.Thread(target=self.accept_all, daemon=True).start()

    def allow_typing(self):
        self.hidden = {}

    def end(self):
        self.listener.close()
        self.path.unlink()

    def accept_all(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:  # this display has ended
                return
            server = socket.socket(socket.AF_UNIX)
            server.connect(str(FOLDER / f"X{os.environ['DISPLAY'].lstrip(':')}"))
            # Shared memory is handed over beside the stream, which does not pass here.
            names = {b"MIT-SHM": b"MIT-SH_", **self.hidden}
            threading.Thread(target=pass_on, args=(client, server, names), daemon=True).start()
            threading.Thread(target=pass_on, args=(server, client, {}), daemon=True).start()


def pass_on(source, target, names):
    try:
        while data := source.recv(1 << 16):
            for name, other in names.items():
                data = data.replace(name, other)
            target.sendall(data)
        target.shutdown(socket.SHUT_RDWR)
    except OSError:  # the other side was faster
        pass
    finally:
        source.close()
