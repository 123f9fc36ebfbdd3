#!/usr/bin/env python3
"""Draws a LUT's response to a grey ramp beside its inverse.

    plot_lut.py show.cube show.png

The inverse is that of each channel along the ramp: the input that gives an output. It needs numpy and matplotlib.
"""

import sys
from pathlib import Path

import meridian

try:
    import matplotlib
    import numpy

    matplotlib.use("Agg")
    from matplotlib import pyplot
except ImportError as error:
    sys.exit(f"{error.name} is not installed; install it, on Debian with: apt install python3-matplotlib")

COLORS = {"red": "#d6453d", "green": "#3a9a4b", "blue": "#3b6fd4"}


def main() -> int:
    if len(sys.argv) != 3:
        print(f"usage: {sys.argv[0]} LUT IMAGE", file=sys.stderr)
        return 2
    meridian.set_logger(lambda level, message: None)  # the error says it
    try:
        lut = meridian.ParsedLutFile(sys.argv[1])
    except meridian.LutError as error:
        print(error, file=sys.stderr)
        return 1

    # One row of grey pixels is an image of height 1.
    inputs = numpy.linspace(0, 1, 1024, dtype=numpy.float32)
    ramp = numpy.repeat(inputs[None, :, None], 3, axis=2)
    outputs = lut.apply(ramp, domain=meridian.LutInputDomain.declared)[0]

    figure, (forward, inverse) = pyplot.subplots(1, 2, figsize=(11, 5.4), sharex=True, sharey=True)
    for channel, (name, color) in enumerate(COLORS.items()):
        curve = outputs[:, channel]
        rising = numpy.maximum.accumulate(curve)
        forward.plot(inputs, curve, color=color, label=name, linewidth=1.8)
        reached = (inputs >= rising[0]) & (inputs <= rising[-1])
        inverse.plot(inputs[reached], numpy.interp(inputs[reached], rising, inputs), color=color, linewidth=1.8)
    for axes, title in ((forward, "LUT"), (inverse, "inverse")):
        axes.plot([0, 1], [0, 1], color="#999999", linewidth=0.8, linestyle="--")
        axes.set(title=title, xlabel="input", aspect="equal", xlim=(0, 1), ylim=(0, 1))
        axes.grid(color="#e6e6e6", linewidth=0.6)
        axes.spines[["top", "right"]].set_visible(False)
    forward.set_ylabel("output")
    forward.legend(frameon=False, loc="upper left")
    facts = lut.description
    figure.suptitle(f"{Path(lut.path).name}: {facts.dimensions.description}, {facts.size} points per axis"
                    if facts.dimensions is meridian.LutDimensions.cube else
                    f"{Path(lut.path).name}: {facts.dimensions.description}, {facts.rows} rows")
    figure.tight_layout()
    figure.savefig(sys.argv[2], dpi=120)
    return 0


if __name__ == "__main__":
    sys.exit(main())
