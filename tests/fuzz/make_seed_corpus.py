#!/usr/bin/env python3
"""Encodes the shared benchmark signatures as fuzzer seeds: session inputs in corpus/, a strokes
document in corpus_json/, a record file in corpus_record/ and, from a time series the library wrote (tests/fuzz/time_series_seed.xml),
shortened ones in corpus_xml/, and numbers to format (a double and a count of decimals) in corpus_numbers/.

Each stroke lands, moves through its samples and lifts; time passes after each stroke so that the
record is prepared, and the session ends with "Done". Every session seed is written twice: for the
engine (first byte 0) and for the host API (first byte 1). The regression inputs already in corpus/
are given their host twins too. Usage: make_seed_corpus.py DATA_DIR FUZZ_DIR
"""
import csv
import json
import os
import struct
import sys

BEGIN, MOVE, END, SETTING, DONE, ADVANCE = 0, 1, 2, 6, 10, 11


def position(v):  # the fuzzer reads positions 0 to 255 in 1/256 steps
    return struct.pack('<H', min(int(round(v * 256)), 0xFEFF))


def encode(strokes, settings=b''):
    out = bytearray(settings)
    for stroke in strokes:
        previous = stroke[0][2]
        for i, (x, y, t) in enumerate(stroke):
            dt = max(0, min(127, int(round(t - previous))))
            previous = t
            if i == 0:
                out += bytes([BEGIN, 0, dt]) + position(x) + position(y)
            else:
                out += bytes([MOVE, 1, dt]) + position(x) + position(y)
        out += bytes([END, 1, ADVANCE, 15])
    return bytes(out + bytes([DONE, 0, ADVANCE, 50]))


def read(path):
    strokes = {}
    with open(path) as f:
        for row in csv.DictReader(f):
            # A quarter of the size, within the fuzzer's range of plain positions.
            strokes.setdefault(int(row['stroke']), []).append(
                (float(row['x']) / 4, float(row['y']) / 4, float(row['t_ms'])))
    return [strokes[k] for k in sorted(strokes)]


data, fuzz = sys.argv[1], sys.argv[2]
out = os.path.join(fuzz, 'corpus')
os.makedirs(out, exist_ok=True)
multi = read(os.path.join(data, 'points_multi_20x100.csv'))
single = read(os.path.join(data, 'points_single_5000.csv'))
seeds = {
    'multi_20x100': encode(multi),
    'multi_first_3_strokes': encode(multi[:3]),
    'single_first_400': encode([single[0][:400]]),
    # Export scale 2, date, hash and clipping on, then two strokes.
    'settings_then_strokes': encode(multi[3:5], b''.join(bytes([SETTING, 0, which]) + position(value)
                                                         for which, value in [(0, 2), (3, 1), (5, 1), (6, 1)])),
}
# "Done" at once after a stroke, then a finger lands before the record is made, and is cancelled
# somewhere else; then the view is resized and "Done" again.
CANCEL, RESIZE = 3, 5
quick = encode(multi[:1])[:-6]  # the stroke, without the waits and the final "Done"
landing = bytes([BEGIN, 0, 5]) + position(10) + position(10) + bytes([MOVE, 1, 5]) + position(20) + position(12)
cancel_elsewhere = bytes([CANCEL, 0x11]) + position(40) + position(30)
resize = bytes([RESIZE, 0]) + position(0) + position(0) + position(200) + position(150)
seeds['done_then_touch'] = quick + bytes([DONE, 0]) + landing + cancel_elsewhere + resize + bytes([DONE, 0, ADVANCE, 50])
for name, data in seeds.items():
    for level, prefix in ((b'\x00', 'engine_'), (b'\x01', 'host_')):
        with open(os.path.join(out, prefix + name), 'wb') as f:
            f.write(level + data)
for name in os.listdir(out):
    if name.startswith('regression-engine-'):
        with open(os.path.join(out, name), 'rb') as f:
            data = f.read()
        with open(os.path.join(out, name.replace('regression-engine-', 'regression-host-')), 'wb') as f:
            f.write(b'\x01' + data[1:])

# The strokes document of the first two strokes, as the library writes it.
os.makedirs(os.path.join(fuzz, 'corpus_json'), exist_ok=True)
points = [[{'altitude': 1.5707963705062866, 'ax': 0.0, 'ay': 0.0, 'azimuth': 0.0, 'diameter': 3.1111114025115967,
            'id': 100 + 50 * s + i, 'pressure': 0.5, 't': t / 1000, 'vx': 0.0, 'vy': 0.0, 'x': x, 'y': y}
           for i, (x, y, t) in enumerate(stroke[:50])] for s, stroke in enumerate(multi[:2])]
# The readers' fuzzers take the input as it is after a first byte 0, and make a document of it after a
# first byte 1: the byte sequences below make a valid one, and one with a member of the wrong type.
document = json.dumps({'format': 'scrivlet-strokes', 'strokes': points, 'version': 1}, separators=(',', ':'),
                      sort_keys=True)
made_valid, made_wrong = b'\x01' + bytes(range(1, 200)), b'\x01' + bytes([1, 6, 0] + list(range(7, 120)))
with open(os.path.join(fuzz, 'corpus_json', 'two_strokes'), 'wb') as f:
    f.write(b'\x00' + document.encode())
for name, data in {'made_valid': made_valid, 'made_format_of_wrong_type': made_wrong}.items():
    for folder in ('corpus_json', 'corpus_record'):
        os.makedirs(os.path.join(fuzz, folder), exist_ok=True)
        with open(os.path.join(fuzz, folder, name), 'wb') as f:
            f.write(data)
# A record file as the library writes it, of the same two strokes.
record = {'device': {'model': 'x86_64', 'pixelsPerInch': 401, 'screenScale': 1.0}, 'format': 'scrivlet-record',
          'frame': [10.5, 20.25, 120.0, 60.0], 'hash': '0F1E2D3C4B', 'png': 'iVBORw0KGgoAAAANSUhEUg==',
          'strokes': json.loads(document), 'timestamp': 786000000.5, 'version': 1}
with open(os.path.join(fuzz, 'corpus_record', 'two_strokes'), 'wb') as f:
    f.write(b'\x00' + json.dumps(record, separators=(',', ':'), sort_keys=True).encode())

# Time series: the whole document, and the same with all but its first eight samples left out.
os.makedirs(os.path.join(fuzz, 'corpus_xml'), exist_ok=True)
with open(os.path.join(fuzz, 'time_series_seed.xml')) as f:
    document = f.read()
head, _, rest = document.partition('<sig:SamplePoint>')
samples = ('<sig:SamplePoint>' + rest).split('</sig:SamplePoint>')
short = head + '</sig:SamplePoint>'.join(samples[:8]) + '</sig:SamplePoint>' + document[document.index('</sig:SamplePointList>'):]
for name, text in {'wave': document, 'wave_first_8': short}.items():
    with open(os.path.join(fuzz, 'corpus_xml', name), 'w') as f:
        f.write(text)

# Numbers: exact halves that round to even, the 2^32 bound of the fast path, extremes.
os.makedirs(os.path.join(fuzz, 'corpus_numbers'), exist_ok=True)
numbers = [(0.0, 6), (-0.0, 6), (0.5, 0), (2.5, 0), (0.125, 2), (4294967295.5, 0), (4294967296.0, 3), (1e300, 6),
           (5e-324, 9), (123.4567895, 6), (-1000.5, 1)]
for i, (value, decimals) in enumerate(numbers):
    with open(os.path.join(fuzz, 'corpus_numbers', 'seed%02d' % i), 'wb') as f:
        f.write(struct.pack('<d', value) + bytes([decimals]))
