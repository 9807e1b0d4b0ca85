#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Takes a picture of a Wayland session: an editor, the settings and, while one speaks, the card.

usage: wayland_pictures.py PARLIVO FILE

Run by tools/screenshots in a session of sway, of KWin, and of labwc where that is installed. KWin shows its
screen on the X server; the others are asked for it.
"""
import os
import pathlib
import subprocess
import sys
import time

_, PARLIVO, FILE = sys.argv

import windows  # noqa: E402 (takes the program from the command line)

TEXT = "Cara Anna,\n\nil treno arriva alle dieci e un quarto: ci vediamo al binario, come l'altra volta.\n"
WIDTH = 960  # of the picture, in pixels
X_SERVER = os.environ["DISPLAY"]
IS_KDE = "wayland-kwin" in os.environ["WAYLAND_DISPLAY"]


def enter_session():
    """From here on programs are started as in a Wayland session."""
    os.environ.update(XDG_SESSION_TYPE="wayland", GDK_BACKEND="wayland", GTK_IM_MODULE="wayland")
    for name in ("DISPLAY", "QT_QPA_PLATFORM"):
        os.environ.pop(name, None)


def screen():
    kde = ["import", "-display", X_SERVER, "-window", "root", "-strip", "-define", "png:exclude-chunks=date", "png:-"]
    command = kde if IS_KDE else ["grim", "-t", "png", "-"]
    return subprocess.run(command, check=True, capture_output=True).stdout


def rest(seconds=20):
    """Waits until the screen has not changed for a while, which is when what was started has been drawn."""
    end = time.monotonic() + seconds
    before = None
    while (now := screen()) != before and time.monotonic() < end:
        before = now
        time.sleep(1)


def arrange():
    """sway tiles; the settings look as they are on a floating window. Gives back what shows the background."""
    if "SWAYSOCK" in os.environ:
        subprocess.run(["swaymsg", "-q", "for_window", "[app_id=it.parlivo.Parlivo]", "floating enable"], check=True)
    return subprocess.Popen(["swaybg", "-c", "#3b5b6d"], stderr=subprocess.DEVNULL)


def start_editor():
    note = pathlib.Path(os.environ["TMPDIR"], "lettera.txt")
    note.write_text(TEXT, encoding="utf-8")
    as_a_user = ["unshare", "--user", "--map-user=1000"] if os.geteuid() == 0 else []
    return subprocess.Popen([*as_a_user, "mousepad", "--disable-server", note], stderr=subprocess.DEVNULL)


def main():
    enter_session()
    background = arrange()
    windows.store({"onboardingDone": True, "cleanupLevel": "none"})
    model = pathlib.Path(os.environ["HOME"], "Projects/Parlivo/models/ggml-large-v3-turbo-q8_0.bin")
    model.parent.mkdir(parents=True)
    model.symlink_to(windows.DEMO / "ggml-model.bin")
    editor = start_editor()
    parlivo = subprocess.Popen([PARLIVO])
    try:
        windows.wait_for("the program", windows.is_up)
        rest()
        windows.command("--settings")
        rest()
        windows.command("--toggle")
        windows.wait_for("the recording", lambda: windows.state() == "recording")
        time.sleep(2)  # for the card to swing
        picture = screen()
        subprocess.run(["convert", "png:-", "-resize", f"{WIDTH}x", "-strip", "+dither", "-colors", "64", f"png8:{FILE}"],
                       input=picture, check=True)  # fmt: skip
        print(FILE)
    finally:
        parlivo.terminate()
        parlivo.wait()
        editor.kill()
        background.kill()


main()
