# SPDX-License-Identifier: MIT
"""Films a display and makes a small animation of it, with a line below the picture that tells what goes on."""

import subprocess
import tempfile
import time
from pathlib import Path

FRAMES_A_SECOND = 10
LARGEST = 1_500_000  # bytes of an animation that a page may load
BAND, WRITING = 36, 13  # height of the line and of its letters, pixels
LEAD = 0.8  # seconds before the first line
LAST_SECONDS = 2.5  # how long the last picture stands before it begins again
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


class Film:
    """Runs from its making on. Times are those of time.time(), which the recorder writes beside each frame."""

    def __init__(self, display, size):
        self._folder = tempfile.TemporaryDirectory()
        self._raw = Path(self._folder.name, "film.mkv")
        self._captions = []  # (time, text)
        self._recorder = subprocess.Popen(
            ["ffmpeg", "-loglevel", "error", "-y", "-copyts", "-f", "x11grab", "-draw_mouse", "0",
             "-framerate", str(FRAMES_A_SECOND), "-video_size", "%dx%d" % size, "-i", display,
             "-c:v", "ffv1", self._raw], stdin=subprocess.PIPE)  # fmt: skip

    def wait_until_running(self):
        end = time.monotonic() + 30
        while not (self._raw.exists() and self._raw.stat().st_size):
            if time.monotonic() > end or self._recorder.poll() is not None:
                raise OSError("the recorder (ffmpeg) did not start")
            time.sleep(0.02)

    def caption(self, text):
        """What stands below the picture from now on."""
        self._captions.append((time.time(), text))

    def close(self):
        self._recorder.kill()
        self._recorder.wait()
        self._folder.cleanup()

    def save(self, animation):
        """Ends the recording and writes it as a GIF; an OSError if that is larger than a page may load."""
        self._recorder.communicate(b"q", timeout=30)
        palette = "split[a][b];[a]palettegen=max_colors=96:stats_mode=full[p];[b][p]paletteuse=dither=none"
        start = self._captions[0][0] - LEAD
        graph = ",".join([f"setpts=PTS-{start}/TB,trim=start=0,fps={FRAMES_A_SECOND}",
                          f"pad=iw:ih+{BAND}:0:0:0x20303c", *self._writing(start),
                          f"tpad=stop_mode=clone:stop_duration={LAST_SECONDS}", palette])  # fmt: skip
        subprocess.run(["ffmpeg", "-loglevel", "error", "-y", "-copyts", "-i", self._raw, "-vf", graph,
                        "-loop", "0", animation], check=True)  # fmt: skip
        if animation.stat().st_size > LARGEST:
            raise OSError(f"the animation has {animation.stat().st_size} bytes, more than {LARGEST}")

    def _writing(self, start):
        begins = [at - start for at, _ in self._captions]
        for number, (begin, end) in enumerate(zip(begins, begins[1:] + [1e6])):
            file = Path(self._folder.name, f"caption-{number}")
            file.write_text(self._captions[number][1], encoding="utf-8")
            yield (f"drawtext=fontfile={FONT}:textfile={file}:expansion=none:fontcolor=white:fontsize={WRITING}"
                   f":x=16:y=h-{(BAND + WRITING) // 2}:enable='between(t,{begin:.2f},{end - 0.01:.2f})'")
