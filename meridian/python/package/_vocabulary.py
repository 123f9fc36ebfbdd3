"""Makes the enumerations and typed texts, from what the extension module reads in the library's tables."""

from __future__ import annotations

import enum


class Enumeration(enum.Enum):
    """Base of the closed enumerations. A member's value is the text or number in which it is written and stored."""

    @property
    def description(self) -> str:
        """The display text, in English."""
        return type(self)._columns[self._name_][0]


class ErrorCode(Enumeration):
    """Base of the codes of errors and warnings."""

    @property
    def remedy(self) -> str:
        """What to do about it, as an imperative clause; empty if there is no general remedy."""
        return type(self)._columns[self._name_][1]


class TypedText(str):
    """Base of the texts whose type says what they mean. A value equals the str of the same text.

    The named constants are the known ones, and any other text is allowed, too.
    """

    __slots__ = ()

    def __repr__(self) -> str:
        return f"{type(self).__name__}({str.__repr__(self)})"


def restore(cls, name, *arguments):
    """Returns a pickled value: an attribute of its class, or what a function of the class returns."""
    attribute = getattr(cls, name)
    return attribute(*arguments) if arguments else attribute


def make_enumeration(name, doc, rows):
    """Makes an enumeration of rows of (member, value, description, remedy or None)."""
    base = Enumeration if rows[0][3] is None else ErrorCode
    made = base(name, [row[:2] for row in rows], module="meridian")
    made.__doc__ = doc
    made._columns = {row[0]: row[2:] for row in rows}
    return made


def make_typed_text(name, doc):
    """Makes a type of typed texts."""
    return type(name, (TypedText,), {"__slots__": (), "__doc__": doc, "__module__": "meridian"})


Enumeration.__module__ = ErrorCode.__module__ = TypedText.__module__ = "meridian"
