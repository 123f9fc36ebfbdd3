"""The exceptions and warnings of the package."""

from __future__ import annotations


class _Report:
    """What errors and warnings have in common."""

    code: ErrorCode | None
    place: str
    detail: str
    remedy: str

    def __init__(
        self, message: str, code: ErrorCode | None = None, place: str = "", detail: str = "", remedy: str = ""
    ) -> None:
        super().__init__(message)
        self.code = code
        self.place = place
        self.detail = detail
        self.remedy = remedy

    def __str__(self) -> str:
        return self.args[0]

    def _facts(self):
        return type(self), self.args, self.code, self.place, self.detail, self.remedy, getattr(self, "errno", None)

    def __eq__(self, other: object) -> bool:
        return self._facts() == other._facts() if isinstance(other, _Report) else NotImplemented

    def __hash__(self) -> int:
        return hash(self._facts())

    def __reduce__(self):
        state = {name: value for name in ("errno", "strerror", "filename")
                 if (value := getattr(self, name, None)) is not None}
        kind = vars(type(self)).get("_public", type(self))
        facts = self.args[0], self.code, self.place, self.detail, self.remedy
        return make, (kind, getattr(self, "errno", None), *facts), state


class Error(_Report, Exception):
    """Says what failed, where, and what to do: the base of all errors of the package.

    str(error) is one line for a person, with control characters escaped.
    code is a member of an enumeration, such as LutErrorCode.not_opened; None for JSON.
    place is the path, flag or word that the error is about; detail what is known beyond the code; remedy what to do.
    Each of these three may be the empty text.

    An error of a file is an OSError. Where the operating system gave the reason it has errno, strerror and filename, and
    is also of the class that Python has for the number: except FileNotFoundError and PermissionError catch it.
    """


class Warning(_Report, UserWarning):
    """Says what was noticed while the work went on: the base of all warnings of the package.

    It has the members of Error. Warnings are returned, not raised; warnings.warn() accepts them.
    """


class PropertyError(Error, ValueError):
    """A property cannot be set, or there is none of the name."""


class TranscodeError(Error, ValueError):
    """An entry of an argument vector was rejected. Returned by explain(), not raised."""


class TranscodeWarning(Warning):
    """A setting or a dropped word of an argument vector deserves attention."""


class TimecodeError(Error, ValueError):
    """A timecode labels no frame, or a frame number has no timecode."""


class LutError(Error, OSError):
    """A file cannot be read as a LUT. With an errno it is also the exception of that number: FileNotFoundError."""


class LutWarning(Warning):
    """Something may surprise about a LUT that was read. In the LUT's list of warnings, not raised."""


class ImageError(Error, ValueError):
    """A LUT cannot be applied to an image."""


class TreeWalkError(Error, OSError):
    """A directory could not be read during a walk, or a link not be followed."""


class ClaimError(Error, OSError):
    """Files could not be created under unused names."""


class MediaAnalysisBasicOptionsError(Error, ValueError):
    """The basic options would stop the media-analysis tool. Returned, not raised."""


class MediaAnalysisImageOptionsError(Error, ValueError):
    """The image options would stop the media-analysis tool. Returned, not raised."""


class MediaAnalysisCLIWarning(Warning):
    """A word of the analysis tool's vector is not in the options that were read from it."""


class MediaAnalysisCLIWritingWarning(Warning):
    """An option of the analysis tool does not read back from its own vector."""


class DecodingError(Error, ValueError):
    """A JSON document does not have the documented form. place is the JSON pointer of the value."""


class EncodingError(Error, ValueError):
    """JSON cannot hold a text, because it is not valid UTF-8. place is the JSON pointer of the value."""


_classes: dict[tuple[type, type], type] = {}


def make(cls, errno, *facts):
    """Makes an error or warning. With an error number it is also what Python raises for it, such as FileNotFoundError."""
    standard = type(OSError(errno, ""))
    if issubclass(cls, OSError) and not issubclass(cls, standard):
        namespace = {"__doc__": cls.__doc__, "__module__": cls.__module__, "_public": cls}
        if (cls, standard) not in _classes:
            _classes.setdefault((cls, standard), type(cls.__name__, (cls, standard), namespace))
        cls = _classes[cls, standard]
    return cls(*facts)


for _class in list(globals().values()):
    if isinstance(_class, type) and _class is not _Report:
        _class.__module__ = "meridian"
