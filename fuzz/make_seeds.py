#!/usr/bin/env python3
"""Writes seeds into corpus/: small WAV files, each with one feature or one defect, and lists of annotations."""

import pathlib
import struct

FOLDER = pathlib.Path(__file__).parent / "corpus"


def chunk(identifier, content, size=None, padding=b"\0"):
    """A chunk; `size` is what its header says if that is not the truth."""
    declared = len(content) if size is None else size
    return identifier + struct.pack("<I", declared) + content + (padding if len(content) % 2 else b"")


def riff(*chunks, size=None, kind=b"RIFF", form=b"WAVE"):
    return chunk(kind, form + b"".join(chunks), size, padding=b"")


def cue(count, *records):
    return chunk(b"cue ", struct.pack("<I", count) + b"".join(records))


def record(identifier, sample):
    # identifier, position, chunk with the sample, chunk start, block start, sample offset
    return struct.pack("<II4sIII", identifier, sample, b"data", 0, 0, sample)


def labelled_text(identifier, length):
    # identifier, sample length, purpose, country, language, dialect, code page
    return chunk(b"ltxt", struct.pack("<II4sHHHH", identifier, length, b"rgn ", 0, 0, 0, 0))


def label(identifier, text):
    return chunk(b"labl", struct.pack("<I", identifier) + text + b"\0")


# PCM, mono, 8000 samples and 16000 bytes per second, blocks of 2 bytes, 16 bits
FMT = chunk(b"fmt ", struct.pack("<HHIIHH", 1, 1, 8000, 16000, 2, 16))
DATA = chunk(b"data", struct.pack("<4h", 0, 1000, -1000, 32767))
ODD_DATA = chunk(b"data", b"\x01\x02\x03")
UNPADDED_DATA = chunk(b"data", b"\x01\x02\x03", padding=b"")
ADTL = chunk(b"LIST", b"adtl" + labelled_text(1, 2) + label(1, b"SF_440"))
INFO = chunk(b"LIST", b"INFO" + chunk(b"ISFT", b"seed\0"))

PARSER = {
    "plain": riff(FMT, DATA),
    "annotated": riff(FMT, DATA, cue(2, record(1, 0), record(2, 3)), ADTL, INFO),
    "format_with_extra_bytes": riff(chunk(b"fmt ", FMT[8:] + b"\x02\0\x2a\x2b"), DATA),
    "lower_case_list": riff(FMT, DATA, chunk(b"list", b"adtl" + label(0, b"x"))),
    "nonzero_padding": riff(FMT, chunk(b"data", b"\x01\x02\x03", padding=b"Q"), INFO),
    "missing_padding": riff(FMT, UNPADDED_DATA, INFO),
    "missing_padding_at_end": riff(FMT, UNPADDED_DATA),
    "trailing_bytes": riff(FMT, DATA) + b"TAG and more",
    "rest_like_64_bit_sizes": riff(FMT, DATA, b"ds64\0\0\0") + b"\0",
    "second_file_behind": riff(FMT, DATA) + riff(FMT, DATA),
    "chunks_after_riff_end": riff(FMT, DATA, ADTL, size=4 + len(FMT) + len(DATA)),
    "riff_size_zero": riff(FMT, DATA, size=0),
    "riff_size_short": riff(FMT, ODD_DATA, size=4 + len(FMT) + len(ODD_DATA) - 1),
    "streamed_sizes": riff(FMT, chunk(b"data", b"\0\0\x01\0", size=0xFFFFFFFF), size=0xFFFFFFFF),
    "cut_off_by_riff_end": riff(FMT, chunk(b"data", b"\1\2\3", size=0xFFFFFFFF), size=4 + len(FMT) + 8 + 3) + INFO,
    "truncated_list": riff(FMT, DATA, ADTL)[:-9],
    "label_past_its_list": riff(FMT, DATA, chunk(b"LIST", b"adtl" + chunk(b"labl", b"\x01\0\0\0ab", size=600)), INFO),
    "list_of_no_chunks": riff(FMT, chunk(b"LIST", b"misc" + b"just text, no chunks"), DATA),
    "cue_count_too_large": riff(FMT, DATA, cue(1000, record(1, 0))),
    "cue_count_too_small": riff(FMT, DATA, cue(1, record(1, 0), record(2, 1))),
    "cue_without_count": riff(FMT, DATA, chunk(b"cue ", b"\x01\0")),
    "zero_filler": riff(FMT, DATA, b"\0" * 20),
    "nested_lists": riff(FMT, chunk(b"LIST", b"aaaa" + chunk(b"LIST", b"bbbb" + INFO)), DATA),
    "rf64": riff(chunk(b"ds64", b"\0" * 28), FMT, DATA, kind=b"RF64", size=0xFFFFFFFF),
    "header_only": riff(),
}


def adtl(*chunks):
    return chunk(b"LIST", b"adtl" + b"".join(chunks))


def interval(identifier, text):
    return labelled_text(identifier, 2) + label(identifier, text)


# What can be read as a list of annotations, and what just cannot.
ANNOTATED_FILE = {
    "from_zero": riff(FMT, DATA, cue(2, record(0, 0), record(1, 2)), adtl(interval(0, b"SF_440"), interval(1, b"b"))),
    "from_one": riff(FMT, DATA, cue(1, record(1, 1)), ADTL, INFO),
    "gaps": riff(FMT, DATA, cue(2, record(2, 0), record(5, 2)), adtl(interval(5, b"b"), interval(2, b"AM_1000x50"))),
    "list_before_cue": riff(FMT, adtl(interval(0, b"a")), cue(1, record(0, 3)), DATA),
    "lower_case_list": riff(FMT, DATA, cue(1, record(0, 1)), chunk(b"list", b"adtl" + interval(0, b"x"))),
    "two_lists": riff(FMT, DATA, cue(1, record(0, 1)), adtl(labelled_text(0, 1)), adtl(label(0, b"x"))),
    "notes_and_others": riff(FMT, DATA, cue(1, record(0, 1)),
                             adtl(interval(0, b"x"), chunk(b"note", b"\0\0\0\0n\0"), chunk(b"file", b"abcd"))),
    "no_interval": riff(FMT, DATA, cue(1, record(0, 1)), adtl(label(0, b"x"))),
    "no_label": riff(FMT, DATA, cue(1, record(0, 1)), adtl(labelled_text(0, 1))),
    "no_cue": riff(FMT, DATA, ADTL),
    "past_the_end": riff(FMT, DATA, cue(1, record(0, 0xFFFFFFFF)), adtl(labelled_text(0, 0xFFFFFFFF), label(0, b"x"))),
    "huge_identifier": riff(FMT, DATA, cue(1, record(0xFFFFFFFF, 0)), ADTL),
    "odd_data": riff(FMT, ODD_DATA, cue(1, record(0, 1)), adtl(interval(0, b"x"))),
    "padding_like_an_identifier": riff(FMT, chunk(b"junk", b"\1", padding=b"l"), labelled_text(0, 1),
                                       chunk(b"ata\x08", b""), DATA),
    "truncated": riff(FMT, DATA, cue(1, record(1, 1)), ADTL)[:-9],
    "stereo": riff(chunk(b"fmt ", struct.pack("<HHIIHH", 1, 2, 8000, 32000, 4, 16)), DATA),
    "no_bits": riff(chunk(b"fmt ", struct.pack("<HHIIHH", 1, 1, 8000, 16000, 2, 0)), DATA),
}


def annotation(start, stop, text):
    """As the round trip reads it: times in samples where the kind is even, in seconds where it is odd."""
    times = b"".join(b"\0" + struct.pack("<H", t) if isinstance(t, int) else b"\1" + struct.pack("<d", t)
                     for t in (start, stop))
    return times + bytes([len(text)]) + text


def annotations(rate, samples, *items):
    return struct.pack("<IH", rate, samples) + b"".join(items)


ANNOTATION_ROUNDTRIP = {
    "none": annotations(8000, 100),
    "two": annotations(8000, 24000, annotation(4000, 8000, b"SF_440"), annotation(16000, 20000, b"AM_1000x50")),
    "beyond_the_end": annotations(8000, 101, annotation(200, 300, b"late"), annotation(50, 300, b"cut")),
    "no_times": annotations(44100, 10, annotation(float("nan"), float("inf"), b"x"), annotation(-1.0, 1e300, b"")),
    "backwards": annotations(1, 1000, annotation(900, 100, b"Gr\xc3\xbc\xc3\x9fe")),
}

CORPORA = {
    "parser": (PARSER, ".wav"),
    "annotated_file": (ANNOTATED_FILE, ".wav"),
    "annotation_roundtrip": (ANNOTATION_ROUNDTRIP, ""),
}

if __name__ == "__main__":
    for corpus, (seeds, ending) in CORPORA.items():
        (FOLDER / corpus).mkdir(parents=True, exist_ok=True)
        for name, content in seeds.items():
            (FOLDER / corpus / f"{name}{ending}").write_bytes(content)
