"""The Audacious player with a home of its own, which holds the plug-in under test."""

import os
import pathlib
import shutil
import subprocess
import threading
import time

from commands import InFolder

PLUGIN = pathlib.Path(os.environ["AUDACIOUS_PLUGIN"])
PLAYER = pathlib.Path(shutil.which("audacious"))
INSTALLED = PLAYER.parents[1]
PLUGINS = pathlib.Path(os.environ["AUDACIOUS_PLUGINS"])  # the player's own
SETTINGS = """[audacious]
output_bit_depth=-1
software_volume_control=TRUE
"""
SOUND_DEVICE = """pcm.!default {{
    type file; slave.pcm {{ type null }}; file "{}"; format "raw"
}}
"""


class PlayerTest(InFolder):
    """Each test has its own player; what that plays ends up in a file, as it was decoded."""

    def setUp(self):
        super().setUp()
        # The player finds its plug-ins relative to its own place.
        prefix = self.folder / "prefix"
        self.player = prefix / "bin" / PLAYER.name
        self.input = prefix / PLUGINS.relative_to(INSTALLED) / "Input"
        self.player.parent.mkdir(parents=True)
        shutil.copy(PLAYER, self.player)
        self.input.mkdir(parents=True)
        for path in [*PLUGINS.iterdir(), *(PLUGINS / "Input").iterdir()]:
            place = prefix / path.relative_to(INSTALLED)
            if path.name != "Input" and path.name != PLUGIN.name:
                place.symlink_to(path)
        (self.input / PLUGIN.name).symlink_to(PLUGIN)

        self.captured = self.folder / "captured.raw"
        device = self.folder / "asound.conf"
        device.write_text(SOUND_DEVICE.format(self.captured))
        self.environment = os.environ | {
            "HOME": str(self.folder),
            "XDG_CONFIG_HOME": str(self.folder),
            "ALSA_CONFIG_PATH": str(device),
            "LC_ALL": "C.UTF-8",
        }
        self.settings()

    def settings(self, text="enable_replay_gain=FALSE\n"):
        folder = self.folder / "audacious"
        folder.mkdir(exist_ok=True)
        (folder / "config").write_text(SETTINGS + text)

    def start(self, *paths):
        """Starts to play files; the player quits after the last. Its log is in a file."""
        self.launch("-q", *paths)

    def start_controlled(self, *paths):
        """Starts to play files; the player then listens to tool()."""
        self.launch(*paths)
        # It owns its name on the bus before it can answer, and dies of a question in between.
        self.until(lambda: "Matched " in self.log.read_text(), "the player looks into files")

    def launch(self, *arguments):
        self.log = self.folder / "log"
        environment = self.environment | {"LD_PRELOAD": os.environ["AUDACIOUS_PRELOAD"]}
        with open(self.log, "w", encoding="utf-8") as log:
            self.process = subprocess.Popen(
                list(map(str, [self.player, "-H", "-p", "-V", *arguments])),
                env=environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        self.addCleanup(self.process.wait)
        self.addCleanup(self.process.kill)

    def wait(self):
        """Until the player has quit by itself; answers its log."""
        self.assertEqual(self.process.wait(timeout=60), 0,
                         self.log.read_text()[-2000:])
        return self.log.read_text()

    def play(self, *paths):
        """Plays files to their end; answers the sound and the log."""
        self.captured.unlink(missing_ok=True)
        self.start(*paths)
        log = self.wait()
        return self.captured.read_bytes() if self.captured.exists() else b"", log

    def tool(self, *arguments):
        """What the player, started as controlled, answers to its remote control."""
        return subprocess.run(["audtool", *map(str, arguments)], env=self.environment, timeout=20,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL
                              ).stdout.decode().strip()

    def until(self, holds, what):
        for _ in range(600):
            if holds():
                return
            time.sleep(0.05)
        self.fail(f"not in half a minute: {what}\n{self.log.read_text()[-2000:]}")


class SlowDevice:
    """Takes sound a little at a time, as loudspeakers do; the player waits for it meanwhile."""

    def __init__(self, path, bytes_a_second=4_000_000):
        os.mkfifo(path)
        # Also for writing, so that it stays open while the player has it closed.
        self.pipe = os.open(path, os.O_RDWR | os.O_NONBLOCK)
        self.pause = 65536 / bytes_a_second
        self.sound = b""
        self.ending = False
        self.thread = threading.Thread(target=self.take)
        self.thread.start()

    def take(self):
        while True:
            try:
                self.sound += os.read(self.pipe, 65536)
            except BlockingIOError:
                if self.ending:
                    return
            time.sleep(self.pause)

    def finish(self):
        """Takes what the player, which has quit, has left."""
        self.ending = True
        self.thread.join()

    def close(self):
        self.finish()
        os.close(self.pipe)
