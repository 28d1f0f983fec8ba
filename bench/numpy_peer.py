"""Reads samples of 16 bits as microvolts in blocks of one second through a NumPy memmap, three times; prints the
seconds that each pass took.

    numpy_peer.py FILE OFFSET SAMPLES CHANNELS BLOCK
"""

import sys
import time

import numpy

path, offset, samples, channels, block = sys.argv[1], *map(int, sys.argv[2:])
factors = numpy.full(channels, 0.5, dtype=numpy.float32)
out = numpy.empty((block, channels), dtype=numpy.float32)
for _ in range(3):
    started = time.perf_counter()
    stored = numpy.memmap(path, dtype="<i2", mode="r", offset=offset, shape=(samples, channels))
    for start in range(0, samples, block):
        numpy.multiply(stored[start : start + block], factors, out=out)
    print(time.perf_counter() - started)
