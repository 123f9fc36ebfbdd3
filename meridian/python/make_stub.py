"""Writes the type stub of the built package, from the module itself: python3 make_stub.py <stub>

Constants, enumerations and classes are those of the module, and the types are those of its signatures, so that nothing
is listed twice. What has no type in the module, such as an attribute that is an object, stops the build.
"""

import enum
import inspect
import re
import sys
import textwrap
from pathlib import Path

import meridian

HEADER = '''"""{doc}"""

from collections.abc import Callable, Iterable, Iterator, Mapping
from fractions import Fraction
from os import PathLike
from typing import Any, ClassVar, Generic, SupportsFloat, SupportsIndex, TypeVar, Union, overload
import builtins
import enum

_StrOrBytesPath = Union[str, bytes, PathLike[str], PathLike[bytes]]
_Buffer = Any  # Any object with a buffer, such as a numpy array, which annotations of this Python cannot say.

_Self = TypeVar("_Self")
_Get = TypeVar("_Get", covariant=True)
_Set = TypeVar("_Set", contravariant=True)


class _Settable(Generic[_Get, _Set]):
    """A property that accepts more types than it returns."""

    @overload
    def __get__(self, owner: None, kind: type) -> _Settable[_Get, _Set]: ...
    @overload
    def __get__(self, owner: object, kind: type) -> _Get: ...
    def __set__(self, owner: object, value: _Set) -> None: ...


__version__: str
'''

# How pybind11 writes types, and how annotations write them. The classes have attributes of some of these names.
SPELLINGS = [
    (r"\bmeridian\.(?=[A-Z])", ""),
    (r"\bOptional\[((?:[^\[\]]|\[[^\[\]]*\])*)\]", r"\1 | None"),
    (r"\bList\[", "list["),
    (r"\bTuple\[", "tuple["),
    (r"\bDict\[", "dict["),
    (r"\b(StrOrBytesPath|Buffer)\b", r"_\1"),
    (r" = <(\w+\.\w+): [^>]*>", " = ..."),
    (r" = \(\)", " = ..."),
    (r"\bdict(?!\[)", "dict[Any, Any]"),
]
# What Python itself fixes.
OBJECT_METHODS = {
    "__eq__": "(self, other: object, /) -> bool",
    "__hash__": "(self) -> int",
    "__repr__": "(self) -> str",
    "__reduce__": "(self) -> tuple[Any, ...]",
    "__copy__": "(self: _Self) -> _Self",
    "__deepcopy__": "(self: _Self, memo: dict[Any, Any]) -> _Self",
    "__getstate__": "(self) -> tuple[Any, ...]",
    "__setstate__": "(self, state: tuple[Any, ...], /) -> None",
}
PROPERTY_TYPES = {p.name: (p.annotation, p.accepted_annotation) for p in meridian.transcode_properties()}


def spelled(text):
    for pattern, replacement in SPELLINGS:
        text = re.sub(pattern, replacement, text)
    return text


def signature_of(name, function):
    """Returns the parameters and the result of a function, and its docstring."""
    if name in OBJECT_METHODS:
        return OBJECT_METHODS[name], None
    if inspect.isfunction(function):
        return python_signature(function), function.__doc__
    doc = function.__doc__ or ""
    first, _, rest = doc.partition("\n")
    found = re.fullmatch(r"\w*(\(.*\) -> .*)", first)
    if not found:
        raise SystemExit(f"{name}: no signature in {first!r}")
    signature = spelled(found[1])
    signature = re.sub(r"\(self: [^,)]+", "(self", signature)
    signature = re.sub(r"(arg0: [^,()]+)\)", r"\1, /)", signature)
    if "-> object" in signature and name != "property_value":
        raise SystemExit(f"{name}: its result has no type: {signature}")
    return signature, rest.strip()


def python_signature(function):
    """Returns the signature of a function of Python, whose annotations are texts."""
    parts = []
    for parameter in inspect.signature(function).parameters.values():
        text = parameter.name
        if parameter.annotation is not parameter.empty:
            text += f": {parameter.annotation}"
        elif parts:
            raise SystemExit(f"{function.__qualname__}: {parameter.name} has no type")
        if parameter.default is not parameter.empty:
            text += " = ..."
        if parameter.kind is parameter.VAR_POSITIONAL:
            text = "*" + text
        parts.append(text)
    result = function.__annotations__.get("return")
    if result is None:
        raise SystemExit(f"{function.__qualname__}: its result has no type")
    return f"({', '.join(parts)}) -> {result}"


def docstring(doc, indent):
    if not doc:
        return f"{indent}...\n"
    paragraphs = inspect.cleandoc(doc).split("\n\n")
    wrapped = [part if part.startswith(" ") else textwrap.fill(part, 116 - len(indent)) for part in paragraphs]
    lines = textwrap.indent("\n\n".join(wrapped), indent).replace("\\", "\\\\").replace('"""', r"\"\"\"")
    tail = " " if lines.endswith('"') else ""
    return f'{indent}"""{lines.lstrip()}{tail}"""\n'


def function_stub(name, function, indent="", decorator=""):
    signature, doc = signature_of(name, function)
    return f"{decorator}{indent}def {name}{signature}:\n{docstring(doc, indent + '    ')}"


def property_stub(owner, name, value, indent):
    accepted = None
    if owner is meridian.TranscodeCliArguments and name in PROPERTY_TYPES:
        kind, accepted = map(spelled, PROPERTY_TYPES[name])
    else:
        kind = signature_of("", value.fget)[0].rpartition(" -> ")[2]
        if value.fset is not None:
            accepted = re.split(r"arg\d: ", signature_of("", value.fset)[0])[-1].rpartition(")")[0].removesuffix(", /")
    if accepted not in (None, kind):
        return f"{indent}{name}: _Settable[{kind}, {accepted}]\n{docstring(value.__doc__, indent)}"
    text = f"{indent}@builtins.property\n{indent}def {name}(self) -> {kind}:\n"
    text += docstring(value.__doc__, indent + "    ")
    if value.fset is not None:
        text += f"{indent}@{name}.setter\n{indent}def {name}(self, value: {kind}) -> None: ...\n"
    return text


def member_stub(owner, name, value, indent):
    if isinstance(value, property):
        return property_stub(owner, name, value, indent)
    if isinstance(value, staticmethod):
        return function_stub(name, value.__func__, indent, f"{indent}@staticmethod\n")
    if isinstance(value, type):
        return class_stub(name, value, indent)
    if callable(value):
        return function_stub(name, value, indent)
    return f"{indent}{name}: ClassVar[{type(value).__name__}]\n"


def is_shown(name, value):
    if (name == "__hash__" and value is None) or isinstance(value, type(object.__init__)):
        return False
    return name in OBJECT_METHODS or name in (
        "__init__", "__iter__", "__next__", "__len__", "__getitem__", "__contains__", "__enter__", "__exit__",
        "__float__", "__fspath__", "__copy__", "__deepcopy__", "__str__") or not name.startswith("_")


def class_stub(name, cls, indent=""):
    bases = [base.__name__ for base in cls.__bases__ if base.__name__ not in ("object", "pybind11_object", "_Report")]
    if bases == ["Enum"]:
        bases = ["enum.Enum"]
    members = dict(cls.__dict__)
    if "_Report" in (base.__name__ for base in cls.__bases__):
        members = {**cls.__bases__[0].__dict__, **members}
    inner = indent + "    "
    text = f"{indent}class {name}{'(' + ', '.join(bases) + ')' if bases else ''}:\n{docstring(cls.__doc__, inner)}"
    for member, kind in members.get("__annotations__", {}).items():
        text += f"{inner}{member}: {kind}\n"
        members.pop(member, None)
    if issubclass(cls, enum.Enum):
        text += "".join(f"{inner}{member.name} = {member.value!r}\n" for member in cls)
        members = {key: value for key, value in members.items()
                   if isinstance(value, property) and not key.startswith("_")}
    if members.get("__hash__", ()) is None:
        text += f"{inner}__hash__: ClassVar[None]  # type: ignore[assignment]\n"
    for member, value in members.items():
        if is_shown(member, value):
            text += member_stub(cls, member, value, inner)
    return text


def stub():
    text = HEADER.format(doc=meridian.__doc__)
    names = [*meridian.__all__, "Warning"]
    classes = [name for name in names if isinstance(getattr(meridian, name), type)]
    # Bases first.
    for name in sorted(classes, key=lambda name: (len(getattr(meridian, name).__mro__), name)):
        text += "\n" + class_stub(name, getattr(meridian, name))
    for name in names:
        value = getattr(meridian, name)
        if name in classes:
            continue
        text += "\n" + function_stub(name, value) if callable(value) else f"{name}: {type(value).__name__}\n"
    return text


if __name__ == "__main__":
    Path(sys.argv[1]).write_text(stub(), encoding="utf-8")
