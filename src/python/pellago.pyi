"""Merges the log notes of an Excel log sheet (.xls or .xlsx) into a Final Cut Pro XML document."""

import os
from typing import Callable, ClassVar, Optional, Union

__version__: str

_Path = Union[str, os.PathLike[str]]

class Error(ValueError):
    """A log sheet or document that cannot be merged; the message says which file, clip or row."""

class Outcome:
    """How a merge ended."""

    merged: ClassVar[Outcome]
    not_a_log_sheet: ClassVar[Outcome]
    cancelled: ClassVar[Outcome]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...

class MergeReport:
    """What a merge did."""

    @property
    def outcome(self) -> Outcome: ...
    @property
    def clips_visited(self) -> int: ...
    @property
    def clips_changed(self) -> int:
        """Clips that at least one sheet row was applied to."""
    @property
    def subclips_made(self) -> int:
        """Subclip copies made for further rows naming one clip."""
    @property
    def markers_added(self) -> int: ...
    @property
    def rows_unmatched(self) -> int:
        """Data rows, blank rows not counted, whose Name matched no clip."""

class Marker:
    """A marker of a sheet row; name, comment and color are None when the sheet lacks the column."""

    @property
    def timecode(self) -> str: ...
    @property
    def name(self) -> Optional[str]: ...
    @property
    def comment(self) -> Optional[str]: ...
    @property
    def color(self) -> Optional[str]:
        """Lower-cased."""

class SheetRow:
    """A data row of a log sheet."""

    @property
    def number(self) -> int:
        """The row number in the worksheet (from 2)."""
    @property
    def fields(self) -> dict[str, str]:
        """Ordinary column header -> cell text (numbers as "12.0")."""
    @property
    def markers(self) -> list[Marker]: ...

class Sheet:
    """A log sheet as the merge reads it."""

    @property
    def headers(self) -> list[Union[str, float, None]]:
        """Row 1 as it is."""
    @property
    def rows(self) -> list[SheetRow]:
        """The rows from 2 to the last, blank rows included."""

def merge(
    sheet: _Path,
    xml: _Path,
    output: _Path,
    *,
    progress: Optional[Callable[[int, int], Optional[bool]]] = None,
) -> MergeReport:
    """Merges `sheet` into the document `xml` and writes the result to `output` (may be `xml`).

    progress(done, total) is called once with done == 0 and then after every clip; returning
    False, or raising, cancels: nothing is written. A sheet not named .xls or .xlsx gives
    Outcome.not_a_log_sheet. Raises OSError for files that cannot be read or written,
    pellago.Error for anything else that stops the merge; nothing is written then.
    """

def inspect(sheet: _Path) -> Optional[Sheet]:
    """The log sheet as the merge reads it; None when `sheet` is not an .xls or .xlsx file."""

def to_frames(timecode: str, rate: float, display_format: str) -> int:
    """The frame count of a timecode at `rate` fps; display_format "DF" counts drop frames."""
