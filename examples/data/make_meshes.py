#!/usr/bin/env python3
"""Writes the meshes of the window scene: a hook, a wall with a window, a pillar and a beam.

Lengths are in millimetres. The hook is a J of round bar in the plane x = 0: a long and a short leg along z, joined by a
half circle at the bottom. Held as it is at start and goal, flat before the wall, it is far wider than the window: it gets
through only by turning, leg first and then around its bend.

Run it in any folder; the files are written beside the script.
"""

import math
import os
import struct

# The hook, measured along the middle of its bar.
BAR_RADIUS = 4.0
BEND_RADIUS = 60.0
LONG_LEG = 80.0
SHORT_LEG = 40.0
AROUND = 24  # corners of the bar's section

# The wall stands across the x axis.
WALL_SIZE = 600.0
WALL_THICKNESS = 6.0
WINDOW_Y = 96.0
WINDOW_Z = 96.0


def hook_middle():
    """Points of the bar's middle with their directions, from the tip of the long leg to that of the short one."""
    line = []
    for i in range(36):
        line.append(((0.0, -BEND_RADIUS, LONG_LEG * (1.0 - i / 36.0)), (0.0, 0.0, -1.0)))
    for i in range(37):
        a = math.pi * i / 36.0
        line.append(((0.0, -BEND_RADIUS * math.cos(a), -BEND_RADIUS * math.sin(a)),
                     (0.0, math.sin(a), -math.cos(a))))
    for i in range(1, 21):
        line.append(((0.0, BEND_RADIUS, SHORT_LEG * i / 20.0), (0.0, 0.0, 1.0)))
    return line


def hook():
    """The bar with half balls for ends. The origin is the middle of the box around it."""
    rings = []  # (centre, direction, radius)
    middle = hook_middle()
    first, last = middle[0], middle[-1]
    caps = [math.pi / 2.0 * i / 6.0 for i in range(1, 6)]
    for a in caps:
        out = BAR_RADIUS * math.cos(a)
        rings.append((tuple(c - out * d for c, d in zip(*first)), first[1], BAR_RADIUS * math.sin(a)))
    rings += [(c, d, BAR_RADIUS) for c, d in middle]
    for a in reversed(caps):
        out = BAR_RADIUS * math.cos(a)
        rings.append((tuple(c + out * d for c, d in zip(*last)), last[1], BAR_RADIUS * math.sin(a)))

    lift = 0.5 * (LONG_LEG - BEND_RADIUS)  # from the bend's middle to the middle of the box
    vertices = []
    for centre, direction, radius in rings:
        # The section is spanned by x and the direction turned by a quarter in the plane of the hook.
        side = (0.0, -direction[2], direction[1])
        for j in range(AROUND):
            b = 2.0 * math.pi * j / AROUND
            vertices.append((radius * math.cos(b), centre[1] + radius * math.sin(b) * side[1],
                             centre[2] + radius * math.sin(b) * side[2] - lift))
    tips = []
    for (centre, direction), sign in ((first, -1.0), (last, 1.0)):
        tips.append(len(vertices))
        vertices.append((0.0, centre[1] + sign * BAR_RADIUS * direction[1],
                         centre[2] + sign * BAR_RADIUS * direction[2] - lift))

    triangles = []
    for i in range(len(rings) - 1):
        for j in range(AROUND):
            k = (j + 1) % AROUND
            a, b, c, d = i * AROUND + j, i * AROUND + k, (i + 1) * AROUND + k, (i + 1) * AROUND + j
            triangles += [(a, b, c), (a, c, d)]
    end = (len(rings) - 1) * AROUND
    for j in range(AROUND):
        k = (j + 1) % AROUND
        triangles.append((tips[0], k, j))
        triangles.append((tips[1], end + j, end + k))
    return outward(vertices, triangles)


def wall():
    """Four sides and four inner sides around the window, each cut in two."""
    vertices = []
    for x in (-0.5 * WALL_THICKNESS, 0.5 * WALL_THICKNESS):
        for y, z in ((WALL_SIZE, WALL_SIZE), (WINDOW_Y, WINDOW_Z)):
            for sy, sz in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
                vertices.append((x, 0.5 * sy * y, 0.5 * sz * z))
    triangles = []
    for i in range(4):
        j = (i + 1) % 4
        for a, b, c, d in ((i, 4 + i, 4 + j, j), (8 + i, 8 + j, 12 + j, 12 + i), (i, j, 8 + j, 8 + i),
                           (4 + i, 12 + i, 12 + j, 4 + j)):
            triangles += [(a, b, c), (a, c, d)]
    return outward(vertices, triangles)


def pillar(x, y, radius, height, sides=24):
    """An upright prism."""
    vertices = []
    for z in (-0.5 * height, 0.5 * height):
        for j in range(sides):
            b = 2.0 * math.pi * j / sides
            vertices.append((x + radius * math.cos(b), y + radius * math.sin(b), z))
    low, high = len(vertices), len(vertices) + 1
    vertices += [(x, y, -0.5 * height), (x, y, 0.5 * height)]
    triangles = []
    for j in range(sides):
        k = (j + 1) % sides
        triangles += [(j, k, sides + k), (j, sides + k, sides + j), (low, k, j), (high, sides + j, sides + k)]
    return outward(vertices, triangles)


def box(lowest, highest):
    vertices = [((lowest, highest)[i & 1][0], (lowest, highest)[i >> 1 & 1][1], (lowest, highest)[i >> 2][2])
                for i in range(8)]
    triangles = [(0, 2, 1), (1, 2, 3), (4, 5, 6), (5, 7, 6), (0, 1, 4), (1, 5, 4),
                 (2, 6, 3), (3, 6, 7), (0, 4, 2), (2, 4, 6), (1, 3, 5), (3, 7, 5)]
    return outward(vertices, triangles)


def outward(vertices, triangles):
    """Turns all triangles round if the solid is inside out."""
    volume = 0.0
    for a, b, c in triangles:
        (ax, ay, az), (bx, by, bz), (cx, cy, cz) = vertices[a], vertices[b], vertices[c]
        volume += ax * (by * cz - bz * cy) + ay * (bz * cx - bx * cz) + az * (bx * cy - by * cx)
    if volume < 0.0:
        triangles = [(a, c, b) for a, b, c in triangles]
    return vertices, triangles


def write_obj(path, mesh):
    vertices, triangles = mesh
    with open(path, "w", encoding="ascii", newline="\n") as out:
        out.write("# written by make_meshes.py\n")
        for vertex in vertices:
            out.write("v %.6g %.6g %.6g\n" % vertex)
        for a, b, c in triangles:
            out.write("f %d %d %d\n" % (a + 1, b + 1, c + 1))


def write_stl(path, mesh):
    vertices, triangles = mesh
    with open(path, "wb") as out:
        out.write(b"written by make_meshes.py".ljust(80, b" "))
        out.write(struct.pack("<I", len(triangles)))
        for triangle in triangles:
            p, q, r = (vertices[i] for i in triangle)
            u = [q[k] - p[k] for k in range(3)]
            v = [r[k] - p[k] for k in range(3)]
            n = [u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]]
            length = math.sqrt(sum(c * c for c in n)) or 1.0
            out.write(struct.pack("<12fH", *[c / length for c in n], *p, *q, *r, 0))


def main():
    folder = os.path.dirname(os.path.abspath(__file__))
    write_obj(os.path.join(folder, "hook.obj"), hook())
    write_stl(os.path.join(folder, "wall.stl"), wall())
    write_obj(os.path.join(folder, "pillar.obj"), pillar(-120.0, 150.0, 20.0, 400.0))
    write_stl(os.path.join(folder, "beam.stl"), box((90.0, -200.0, -190.0), (130.0, 200.0, -150.0)))


if __name__ == "__main__":
    main()
