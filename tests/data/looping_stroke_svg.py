#!/usr/bin/env python3
"""Works out, from the drawing rules alone, the SVG document of one looping stroke drawn in full.

The stroke goes once and a bit around a circle, so it crosses itself; the direction turns 35 degrees
from point to point (below the 45-degree corner threshold), so every inner segment is a filled
outline of varying width. Single precision is applied exactly where the rules narrow: the components
of the arms u1 and u2, the angles a, a', b, b', their sines and cosines, the distances l1 and l2, the
mean diameters, and the arc end offsets and span. Everything else is double.

Writes the stroke's points (for the test) and the expected document:
  looping_stroke_svg.py > looping_stroke.svg   (points go to standard error)
"""
import math
import struct
import sys


def f32(x):
    return struct.unpack('f', struct.pack('f', x))[0]


def mid(p, q):
    return ((p[0] + q[0]) * 0.5, (p[1] + q[1]) * 0.5)


def distance(p, q):
    d = math.sqrt((q[0] - p[0]) ** 2 + (q[1] - p[1]) ** 2)
    return 0.0001 if d == 0 else d


def fmt(*values):
    return ' '.join('%f' % v for v in values)


def arc(center, r, a0, a1):  # clockwise 0, scale 1
    span = f32(a1 - a0)
    large = int((abs(span) > math.pi) != True)
    dx, dy = f32(r * math.cos(a0)), f32(r * math.sin(a0))
    return 'A %s 0 %d 1 %s' % (fmt(r, r), large, fmt(center[0] - dx, center[1] - dy))


def stroke_element(data, width):
    return '<path d="%s" stroke="#000000" stroke-width="%f" stroke-linecap="round" fill = "none"  opacity="1.000000" />' % (data, f32(width))


def constant(o, d, w, c1, c2):
    return stroke_element('M %s C %s ' % (fmt(*o), fmt(c1[0], c1[1], c2[0], c2[1], d[0], d[1])), w)


def varying(o, d, w0, w1, c1, c2):
    u1 = (f32(c1[0] - o[0]), f32(c1[1] - o[1]))
    u2 = (f32(c2[0] - d[0]), f32(c2[1] - d[1]))
    a = f32(math.atan2(u1[1], u1[0]) - math.pi / 2)
    a2 = f32(a + math.pi)
    r0 = w0 * 0.5
    s1 = (o[0] + r0 * f32(math.cos(a)), o[1] + r0 * f32(math.sin(a)))
    s2 = (o[0] + r0 * f32(math.cos(a2)), o[1] + r0 * f32(math.sin(a2)))
    b = f32(math.atan2(u2[1], u2[0]) + math.pi / 2)
    b2 = f32(b + math.pi)
    r1 = w1 * 0.5
    e1 = (d[0] + r1 * f32(math.cos(b)), d[1] + r1 * f32(math.sin(b)))
    e2 = (d[0] + r1 * f32(math.cos(b2)), d[1] + r1 * f32(math.sin(b2)))
    l1, l2 = f32(distance(s1, e1)), f32(distance(s2, e2))
    m = (l1 + l2) * 0.5
    k1, k2 = l1 / m, l2 / m
    data = 'M %s ' % fmt(*s1)
    data += 'C %s ' % fmt(s1[0] + k1 * u1[0], s1[1] + k1 * u1[1], e1[0] + k1 * u2[0], e1[1] + k1 * u2[1], *e1)
    data += arc(d, r1, b, b2)
    data += 'C %s ' % fmt(e2[0] + k2 * u2[0], e2[1] + k2 * u2[1], s2[0] + k2 * u1[0], s2[1] + k2 * u1[1], *s2)
    data += arc(o, r0, a2, a)
    data += 'Z'
    return '<path d="%s" fill="#000000"  opacity="1.000000" />' % data


# The stroke: 12 points on a circle of radius 25 around (60, 50), 35 degrees apart, positions rounded
# to two decimals; diameters growing from 2.2; velocities along the direction of travel.
points = []
for k in range(12):
    t = math.radians(-90 + 35 * k)
    x, y = round(60 + 25 * math.cos(t), 2), round(50 + 25 * math.sin(t), 2)
    diameter = f32(round(2.2 + 0.37 * k, 2))
    points.append(((x, y), diameter, (-math.sin(t), math.cos(t))))

elements = []
(p0, d0, _) = points[0]
elements.append(stroke_element('M %s L %s ' % (fmt(*p0), fmt(*p0)), d0))
(p1, d1, _) = points[1]
m = mid(p0, p1)
elements.append(varying(p0, m, d0, f32(d0 + d1) * 0.5, mid(p0, m), mid(p0, m)))
for i in range(2, len(points)):
    (a, da, _), (b, db, vb), (c, dc, vc) = points[i - 2], points[i - 1], points[i]
    turn = math.degrees(math.acos(vb[0] * vc[0] + vb[1] * vc[1]))
    assert turn < 40, turn  # clearly below the corner threshold
    o, d = mid(a, b), mid(b, c)
    w0, w1 = f32(da + db) * 0.5, f32(db + dc) * 0.5
    elements.append(varying(o, d, w0, w1, mid(b, o), mid(b, d)))
    if i == len(points) - 1:
        elements.append(constant(d, c, w1, d, c))

sys.stdout.write('<svg style="border: 1px solid black" width="120.000000" height="100.000000" '
                 'viewBox="0 0 120.000000 100.000000" xmlns="http://www.w3.org/2000/svg">'
                 + ''.join(elements) + '</svg>')
for (p, d, v) in points:
    sys.stderr.write('{{%r, %r}, %.2ff, {%.17g, %.17g}},\n' % (p[0], p[1], d, v[0], v[1]))
