"""Claimed files as a context manager."""

from __future__ import annotations

import os


class Claim:
    """The empty files that were created under unused names, in order.

    As a context manager it removes them if the block raises, so that no unfinished output is left:

        with meridian.claim_file("/out/clip.mov") as claim:
            transcode(claim[0].path)

    A file that was replaced by another one in the meantime is kept.
    """

    def __init__(self, files: list[ClaimedFile]) -> None:
        """Makes the claim of files that exist, as claim_file() and its siblings do. A missing file is not an error, and is
        never removed."""
        self._files = files
        # The working directory may change meanwhile.
        self._places = [os.path.abspath(file.path) for file in files]
        self._identities = [self._identity(place) for place in self._places]

    @property
    def files(self) -> list[ClaimedFile]:
        """The files."""
        return list(self._files)

    @property
    def paths(self) -> list[str]:
        """The paths of the files."""
        return [file.path for file in self._files]

    def remove(self) -> None:
        """Removes the files. Raises OSError if one cannot be removed, after trying the others; those that are gone are
        not an error."""
        failure = None
        for place, identity in zip(self._places, self._identities):
            if identity is not None and self._identity(place) == identity:
                try:
                    os.unlink(place)
                except FileNotFoundError:
                    pass
                except OSError as error:
                    failure = failure or error
        if failure is not None:
            raise failure

    def __len__(self) -> int:
        return len(self._files)

    def __getitem__(self, index: int) -> ClaimedFile:
        return self._files[index]

    def __iter__(self) -> Iterator[ClaimedFile]:
        return iter(self._files)

    def __enter__(self) -> Claim:
        return self

    def __exit__(self, kind: object, error: object, traceback: object) -> None:
        if kind is not None:
            self.remove()

    def __repr__(self) -> str:
        return f"<Claim of {', '.join(map(repr, self.paths))}>"

    @staticmethod
    def _identity(path: str) -> tuple[int, int] | None:
        try:
            found = os.lstat(path)
        except OSError:
            return None
        return found.st_dev, found.st_ino


Claim.__module__ = "meridian"
