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
# Without Warning, which would hide Python's own.
__all__ = [name for name in dir(_meridian) if not name.startswith("_") and name != "Warning"]
for _name in [*__all__, "Warning"]:
    globals()[_name] = getattr(_meridian, _name)
    if isinstance(globals()[_name], type) and globals()[_name].__module__ == "meridian._meridian":
        globals()[_name].__module__ = "meridian"
del _name
