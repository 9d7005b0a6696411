"""Permutes the numbers of a form, keyed: each has one image, and no two have the same.

A number is a row of places, each with a radix of its own. Its two halves take turns: a keyed hash
of one is added to the other. That is the network of FF1 in NIST SP 800-38G, with its ten rounds and
its tweak; the sum is taken modulo each place's radix, and the hash is BLAKE2b.
"""

from __future__ import annotations

from functools import lru_cache
from typing import Any

import numpy as np
import pyarrow as pa

from vantrel.replacing.values.keys import digests

type Places = np.ndarray[tuple[int, int], np.dtype[np.uint8]]

TWEAK_BYTES = 16

_ROUNDS = 10
_WORDS_OF_A_DIGEST = 16  # of 32 bits, in which no radix leaves a bias that anybody could measure


def permuted(numbers: Places, radices: Places, tweaks: Places, key: bytes) -> Places:
    """Gives the image of each number among those of the same radices.

    Args:
        numbers: The numbers, one a row, each place less than its radix.
        radices: The radices, likewise.
        tweaks: For each row :data:`TWEAK_BYTES` that tell its form: others permute otherwise.
        key: What the hash is keyed with.
    """
    if numbers.shape[1] == 1:
        return _shuffled_places(numbers, radices, tweaks, key)
    middle = numbers.shape[1] // 2
    halves = numbers[:, :middle], numbers[:, middle:]
    of_halves = radices[:, :middle], radices[:, middle:]
    for number in range(_ROUNDS):
        (first, second), (radix, other) = halves, of_halves
        added = _hashed(number, tweaks, second, first.shape[1], key)
        halves = second, ((first + added) % radix).astype(np.uint8)
        of_halves = other, radix
    return np.hstack(halves)


def distinct(rows: Places) -> tuple[list[bytes], Any]:
    """Gives the distinct rows, and which of them each row is."""
    data = np.ascontiguousarray(rows)
    kind = pa.binary(data.shape[1])
    encoded = pa.FixedSizeBinaryArray.from_buffers(
        kind, len(data), [None, pa.py_buffer(data)]
    ).dictionary_encode()
    _, values = encoded.dictionary.buffers()
    found = np.frombuffer(values, dtype=f"V{data.shape[1]}", count=len(encoded.dictionary))
    return found.tolist(), encoded.indices.to_numpy()


def _hashed(number: int, tweaks: Places, half: Places, count: int, key: bytes) -> Any:
    """Hashes halves to so many words each; equal ones once."""
    messages, which = distinct(np.hstack([tweaks, half]))
    blocks = [
        digests(messages, key, bytes((number, block))).astype("<u8")
        for block in range(-(-count // _WORDS_OF_A_DIGEST))
    ]
    words = np.hstack(blocks).view("<u4")[:, :count]
    return words.astype(np.uint64)[which]


def _shuffled_places(numbers: Places, radices: Places, tweaks: Places, key: bytes) -> Places:
    """The same of numbers of one place, which have no halves: all that there are are shuffled."""
    forms, which = distinct(np.hstack([radices, tweaks]))
    orders = np.array([_order(form, key) for form in forms])
    made: Places = orders[which, numbers[:, 0]][:, np.newaxis]
    return made


@lru_cache(maxsize=10_000)
def _order(form: bytes, key: bytes) -> Any:
    radix = form[0]
    order = np.zeros(1 << 8, dtype=np.uint8)
    hashed = digests((bytes((each,)) for each in range(radix)), key, bytes((_ROUNDS,)) + form)
    order[:radix] = np.argsort(hashed[:, 0])
    return order
