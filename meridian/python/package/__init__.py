"""Rules for professional media work: the transcoder's command line, LUTs, rates and timecode, copying and names.

    import meridian

    arguments = meridian.TranscodeCliArguments(["-preset", "solvane_cloud"])
    arguments.video_frame_rate = 25
    arguments.command_line()

Names are those of the C++ library, with functions, properties and cases in lower case and words joined by underscores.
Texts and paths may hold any bytes, as os.fsdecode() has them.
"""

from meridian import _meridian

__version__ = _meridian.__version__
# Enumerations are made when they are asked for. Warning would hide Python's own.
__all__ = sorted({name for name in [*dir(_meridian), *_meridian._enumerations] if name[0] != "_"} - {"Warning"})
for _name in [*dir(_meridian), "Warning"]:
    if _name[0] != "_":
        globals()[_name] = getattr(_meridian, _name)
del _name


def __getattr__(name):
    if name not in _meridian._enumerations:
        raise AttributeError(f"module 'meridian' has no attribute {name!r}")
    _meridian._enumerations[name]()
    globals()[name] = getattr(_meridian, name)
    return globals()[name]


def __dir__():
    return sorted({*globals(), *__all__})
