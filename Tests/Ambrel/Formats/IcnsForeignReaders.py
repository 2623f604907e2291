#!/usr/bin/env python3
"""Reads an icon file of the writer with readers that others wrote and compares every pixel.

Arguments: the program that writes the sample, the program icns2png.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

from PIL import IcnsImagePlugin, Image

# (size in points, scale) under which Pillow knows each of the seven pictures, by its pixels.
PILLOW_NAMES = {1024: (512, 2), 512: (512, 1), 256: (256, 1), 128: (128, 1), 64: (32, 2),
                32: (32, 1), 16: (16, 1)}
# The sizes that icns2png knows; it takes the type for 64 pixels for something else.
ICNSUTILS_SIZES = (1024, 512, 256, 32, 16)


def sample(side):
    """The picture that the sample holds, made a second time from its description."""
    pixels = bytearray()
    for y in range(side):
        for x in range(side):
            alpha = 255 - (x + y) * 254 // (side + side)
            pixels += bytes((x * 255 // side, y * 255 // side, (x ^ y) & 255, alpha))
    return bytes(pixels)


def check(condition, message):
    if not condition:
        sys.exit(message)


def check_pixels(image, side, reader):
    check(image.size == (side, side), f"{reader}: {image.size} instead of {side} pixels")
    check(image.convert("RGBA").tobytes() == sample(side), f"{reader}: other pixels at {side}")


def check_pillow(icon):
    with icon.open("rb") as stream:
        file = IcnsImagePlugin.IcnsFile(stream)
        names = {(width, scale) for width, _, scale in file.itersizes()}
        check(names == set(PILLOW_NAMES.values()), f"Pillow: finds {sorted(names)}")
        for side, (width, scale) in PILLOW_NAMES.items():
            check_pixels(file.getimage((width, width, scale)), side, "Pillow")
    with Image.open(icon) as image:
        image.load()
        check_pixels(image, 1024, "Pillow, greatest")


def run(*command):
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    check(result.returncode == 0, f"{command}: {result.stdout}{result.stderr}")
    return result.stdout


def check_icnsutils(icns2png, icon, folder):
    listing = run(icns2png, "-l", icon)
    for side in ICNSUTILS_SIZES:
        check(re.search(rf"\b{side}x{side}\b", listing), f"icns2png: no {side} in\n{listing}")
    run(icns2png, "-x", "-o", folder, icon)
    for side in ICNSUTILS_SIZES:
        with Image.open(folder / f"{icon.stem}_{side}x{side}x32.png") as image:
            check_pixels(image, side, "icns2png")


def main():
    program, icns2png = sys.argv[1:]
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        icon = folder / "sample.icns"
        run(program, icon)
        check_pillow(icon)
        check_icnsutils(icns2png, icon, folder)
    print("Pillow:", *PILLOW_NAMES, "icns2png:", *ICNSUTILS_SIZES)


if __name__ == "__main__":
    main()
