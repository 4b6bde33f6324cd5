"""WAV files and their windows, for the reference computation of features."""

import struct

import numpy as np

from reference.features import running_mean


def decode_pcm(data, bits):
    if bits == 8:
        return (np.frombuffer(data, np.uint8).astype(float) - 128.0) / 128.0
    if bits == 24:
        octets = np.frombuffer(data, np.uint8).reshape(-1, 3).astype(np.int64)
        values = octets[:, 0] | octets[:, 1] << 8 | octets[:, 2] << 16
        return np.where(values < 1 << 23, values, values - (1 << 24)) / float(1 << 23)
    return np.frombuffer(data, f"<i{bits // 8}") / float(1 << bits - 1)


def decode_mu_law(data):
    """ITU-T G.711: a sign, 3 bits of segment and 4 of step, all complemented."""
    code = ~np.frombuffer(data, np.uint8) & 0xFF
    magnitude = ((((code & 0x0F).astype(int) << 3) + 132) << (code >> 4 & 7)) - 132
    return np.where(code & 0x80, -magnitude, magnitude) / 32768.0


def decode_a_law(data):
    """ITU-T G.711: every second bit inverted; the first two segments share a step."""
    code = np.frombuffer(data, np.uint8) ^ 0x55
    segment = code >> 4 & 7
    step = ((code & 0x0F).astype(int) << 4) + 8
    magnitude = np.where(segment == 0, step, (step + 256) << np.maximum(segment, 1) - 1)
    return np.where(code & 0x80, magnitude, -magnitude) / 32768.0


def read_wav(path):
    """(samples, full scale 1.0; sampling rate) of a mono RIFF/WAVE file."""
    with open(path, "rb") as file:
        content = file.read()
    if content[:4] != b"RIFF" or content[8:12] != b"WAVE":
        raise ValueError(f"{path} is no RIFF/WAVE file")
    at, form = 12, None
    while at + 8 <= len(content):
        name, size = struct.unpack_from("<4sI", content, at)
        body = content[at + 8 : at + 8 + size]
        at += 8 + size + size % 2
        if name == b"fmt ":
            form = struct.unpack_from("<HHIIHH", body)
            code = struct.unpack_from("<H", body, 24)[0] if form[0] == 0xFFFE else form[0]
        elif name == b"data" and form is not None:
            _, channels, rate, _, _, bits = form
            data = body[: len(body) - len(body) % max(1, bits // 8)]
            if channels != 1:
                raise ValueError(f"{path} is not mono")
            if code == 1 and bits in (8, 16, 24, 32):
                return decode_pcm(data, bits), rate
            if code == 3 and bits in (32, 64):
                return np.frombuffer(data, f"<f{bits // 8}").astype(float), rate
            if code in (6, 7):
                return (decode_a_law if code == 6 else decode_mu_law)(data), rate
            raise ValueError(f"{path}: encoding {code} with {bits} bits")
    raise ValueError(f"{path} holds no audio")


def cut_windows(samples, rate, window_ms, overlap_ms, suppress_dc=False):
    """(matrix of a window per row; time of each window's end, in seconds)."""
    size = max(1, rate * window_ms // 1000)
    overlap = rate * overlap_ms // 1000
    if overlap >= size:
        raise ValueError("the overlap is not shorter than the window")
    if len(samples) < size:
        return np.empty((0, size)), np.empty(0)
    windows = np.lib.stride_tricks.sliding_window_view(samples, size)[:: size - overlap]
    if suppress_dc:
        windows = windows - running_mean(windows.mean(axis=1, keepdims=True))
    return windows, window_ms / 1000.0 + np.arange(len(windows)) * (window_ms - overlap_ms) / 1000.0
