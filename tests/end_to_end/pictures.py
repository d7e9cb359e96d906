# SPDX-License-Identifier: MIT
"""What a screenshot shows, in numbers."""

import os
import subprocess
import tempfile


def colors_of(rectangle):
    """How often each colour is seen in (x, y, width, height) of the screen, as {(r, g, b): count}."""
    x, y, width, height = rectangle
    with tempfile.TemporaryDirectory() as folder:
        picture = os.path.join(folder, "screen.png")
        subprocess.run(["import", "-window", "root", picture], check=True)
        listing = subprocess.run(
            ["convert", picture, "-crop", f"{width}x{height}+{x}+{y}", "+repage", "-alpha", "off", "-depth", "8",
             "-define", "histogram:unique-colors=true", "-format", "%c", "histogram:info:-"],
            check=True, capture_output=True, text=True).stdout
    counts = {}
    for line in listing.splitlines():
        count, rest = line.split(":", 1)
        code = rest.split("#")[1][:6]
        counts[tuple(int(code[i:i + 2], 16) for i in (0, 2, 4))] = int(count)
    return counts


def pixels(rectangle):
    """What is seen in (x, y, width, height) of the screen, for comparing."""
    x, y, width, height = rectangle
    return subprocess.run(
        ["import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage", "-depth", "8", "rgb:-"],
        check=True, capture_output=True).stdout


def background(counts):
    return max(counts, key=counts.get)


def _luminance(color):
    channels = [value / 255 for value in color]
    linear = [value / 12.92 if value <= 0.04045 else ((value + 0.055) / 1.055) ** 2.4 for value in channels]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(one, other):
    """The ratio that WCAG defines; 4.5 is its level AA for text."""
    darker, lighter = sorted((_luminance(one), _luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)


def text_contrast(counts):
    """Between the background and whatever in the area differs most from it."""
    ground = background(counts)
    return max(contrast(ground, color) for color in counts)
