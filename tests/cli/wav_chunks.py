"""WAV files chunk by chunk: made for tests of the command, and taken apart to see what it wrote.

An annotation is (start sample, length in samples, label as bytes).
"""

import struct

from command import CommandTest, fmt_chunk, tone

SAMPLES = 24000  # three seconds at 8000 Hz


def chunk(name, content, size=None, padding=b"\0"):
    """One chunk; its size may be made to lie."""
    return name + struct.pack("<I", len(content) if size is None else size) + content + padding * (len(content) % 2)


def riff(*chunks, size=None, tail=b""):
    body = b"WAVE" + b"".join(chunks)
    return b"RIFF" + struct.pack("<I", len(body) if size is None else size) + body + tail


def point(identifier, sample, position=None):
    """A record of a "cue " chunk."""
    return struct.pack("<II4sIII", identifier, sample if position is None else position, b"data", 0, 0, sample)


def cue(*points, count=None):
    return chunk(b"cue ", struct.pack("<I", len(points) if count is None else count) + b"".join(points))


def ltxt(identifier, length, purpose=b"rgn ", text=b""):
    return chunk(b"ltxt", struct.pack("<II4sHHHH", identifier, length, purpose, 0, 0, 0, 0) + text)


def labl(identifier, text, end=b"\0", name=b"labl", padding=b"\0"):
    return chunk(name, struct.pack("<I", identifier) + text + end, padding=padding)


def note(identifier, text):
    return labl(identifier, text, name=b"note")


def adtl(*chunks, name=b"LIST"):
    return chunk(name, b"adtl" + b"".join(chunks))


def smpl(*loops, count=None):
    """The chunk of a sampler, with loops (identifier, first sample, last sample)."""
    content = struct.pack("<9I", 0, 0, 125000, 60, 0, 0, 0, len(loops) if count is None else count, 0)
    return chunk(b"smpl", content + b"".join(struct.pack("<6I", identifier, 0, first, last, 0, 0)
                                            for identifier, first, last in loops))


def stored(tag, bits, align, channels=1, second=16000):
    """A "fmt " chunk that says all of it, true or not."""
    return chunk(b"fmt ", struct.pack("<HHIIHH", tag, channels, 8000, second, align, bits))


def audio(samples=SAMPLES, **fmt):
    """The chunks of audio, 16-bit samples unless told otherwise."""
    size = fmt.get("bits", 16) // 8 * fmt.get("channels", 1)
    return fmt_chunk(**fmt) + chunk(b"data", (tone(samples) * size)[:samples * size])


def annotation_chunks(*annotations, first=1):
    """The chunks as the library writes them."""
    points = []
    texts = []
    for identifier, (start, length, label) in enumerate(annotations, first):
        points.append(point(identifier, start))
        texts += [ltxt(identifier, length), labl(identifier, label)]
    return cue(*points) + adtl(*texts)


def annotated(*annotations, first=1, **fmt):
    """A file of three seconds with annotations, as the library writes it."""
    return riff(audio(**fmt), annotation_chunks(*annotations, first=first))


def chunks_of(content):
    """The (name, content) of all chunks in a row; fails where they do not fit."""
    chunks = []
    place = 0
    while place < len(content):
        name, size = struct.unpack_from("<4sI", content, place)
        if place + 8 + size + size % 2 > len(content):
            raise ValueError(f"chunk {name} at {place} is cut off")
        chunks.append((name, content[place + 8:place + 8 + size]))
        place += 8 + size + size % 2
    return chunks


def file_chunks(file):
    """The (name, content) of all chunks of a file."""
    (name, content), = chunks_of(file)
    if name != b"RIFF" or content[:4] != b"WAVE":
        raise ValueError("no WAV file")
    return chunks_of(content[4:])


def annotations_of(file):
    """What the file says, strictly: identifiers from 1, each with one length and one label."""
    points = []
    lengths = {}
    labels = {}
    for name, content in file_chunks(file):
        if name == b"cue ":
            count, = struct.unpack_from("<I", content)
            for i in range(count):
                identifier, position, data, _, _, sample = struct.unpack_from("<II4sIII", content, 4 + 24 * i)
                if (identifier, data, position) != (i + 1, b"data", sample):
                    raise ValueError(f"point {i} has the number {identifier}")
                points.append(sample)
        elif name == b"LIST" and content[:4] == b"adtl":
            for inner, text in chunks_of(content[4:]):
                identifier, = struct.unpack_from("<I", text)
                if inner == b"ltxt":
                    lengths[identifier], = struct.unpack_from("<I", text, 4)
                elif inner == b"labl":
                    if text[-1:] != b"\0":
                        raise ValueError("a label without an end")
                    labels[identifier] = text[4:-1]
    if not sorted(lengths) == sorted(labels) == list(range(1, len(points) + 1)):
        raise ValueError("points, lengths and labels do not fit")
    return [(start, lengths[i], labels[i]) for i, start in enumerate(points, 1)]


class AnnotationTest(CommandTest):
    """A test of 'murvane-audio annotations'."""

    def annotations(self, *arguments, **options):
        return self.run_here("annotations", *arguments, **options)

    def write_annotated(self, name, *annotations, **options):
        return self.write(name, annotated(*annotations, **options))

    def annotations_in(self, name):
        return annotations_of(self.read(name))

    def assert_told(self, result, *lines, output=None):
        """Exit code 0, these lines on standard error and, unless None, this on standard output."""
        self.assertEqual(self.messages(result), ["murvane-audio: " + line for line in lines])
        self.assertEqual(result.returncode, 0)
        if output is not None:
            self.assertEqual(result.stdout.decode(), output)
