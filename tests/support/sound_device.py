"""A sound device that is a file."""

import struct

from commands import InFolder, atdp


class SoundDevice(InFolder):
    def odd_rate(self):
        """An AIFF file of 22254.5 Hz, as early computers recorded."""
        path = self.sox("odd.aiff", seconds=0.3, rate=22255)
        content = bytearray(path.read_bytes())
        at = content.index(b"COMM") + 16
        content[at : at + 10] = struct.pack(">HQ", 16383 + 14, int(22254.5 * 2**49))
        path.write_bytes(content)
        return path

    def play(self, device, *arguments):
        """Plays on a device, which is given as the inside of its configuration; FILE stands for
        one that takes everything and leaves it in a file. Answers the run and what came."""
        captured = self.folder / "captured.raw"
        captured.unlink(missing_ok=True)
        config = self.folder / "asound.conf"
        file = f'{{ type file; slave.pcm {{ type null }}; file "{captured}"; format "raw" }}'
        config.write_text("pcm.!default " + device.replace("FILE", file))
        result = atdp("play", *arguments, env={"ALSA_CONFIG_PATH": str(config)})
        return result, captured.read_bytes() if captured.exists() else b""

    # Without ALSA's own conversion, which atdp refuses, this one has one rate and that one two
    # channels. The latter holds half a second and no more.
    ONE_RATE = "{ type plug; slave { rate 48000; pcm FILE } }"
    TWO_CHANNELS = ("{ type multi; slaves.a { channels 2; pcm INNER }; "
                    "bindings [ { slave a; channel 0 } { slave a; channel 1 } ] }")
