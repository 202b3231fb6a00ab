"""Merges the log notes of an Excel log sheet (.xls or .xlsx) into a Final Cut Pro XML document."""

import datetime
import os
from typing import Callable, ClassVar, Optional, Union

__version__: str

_Path = Union[str, os.PathLike[str]]

class Error(ValueError):
    """A log sheet or document that cannot be merged; the message says which file, clip or row."""

    row: Optional[int]
    """The sheet row (2: the first data row), or None when not known."""
    column: Optional[Column]
    """The column of the cell at fault, or None."""
    clip: Optional[ClipRef]
    """The clip being merged, or None."""

class NotALogSheet(Error):
    """A sheet path whose extension is not .xls or .xlsx: nothing was read or written."""

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

class MergePhase:
    """The stages of a merge, in the order it goes through."""

    reading_sheet: ClassVar[MergePhase]
    reading_xml: ClassVar[MergePhase]
    merging_clips: ClassVar[MergePhase]
    writing: ClassVar[MergePhase]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...

class RecoveredErrors:
    """What the XML parser repaired in a document that is not well-formed."""

    @property
    def count(self) -> int:
        """Errors repaired; 0 for a sound document."""
    @property
    def line(self) -> int:
        """The first error's line (from 1; 0 when the parser did not say)."""
    @property
    def column(self) -> int: ...
    @property
    def message(self) -> str: ...

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
    @property
    def rows_not_fully_applied(self) -> int:
        """Row applications that left out a value the clip cannot take (a marker outside its
        media, a timecode that is none)."""
    @property
    def clip_items_logged(self) -> int:
        """Clip items of sequences logged by rows that named no master clip."""
    @property
    def recovered(self) -> RecoveredErrors:
        """When its count is not 0, clips after the first error may be missing."""

class FindingKind:
    """What a check found."""

    unmatched_name: ClassVar[FindingKind]
    near_header: ClassVar[FindingKind]
    ignored_marker_header: ClassVar[FindingKind]
    good_not_yes: ClassVar[FindingKind]
    unknown_marker_color: ClassVar[FindingKind]
    not_a_timecode: ClassVar[FindingKind]
    outside_media: ClassVar[FindingKind]
    out_before_in: ClassVar[FindingKind]
    position_limit: ClassVar[FindingKind]
    shared_clip_name: ClassVar[FindingKind]
    repeated_name: ClassVar[FindingKind]
    marker_already_present: ClassVar[FindingKind]
    earlier_subclip: ClassVar[FindingKind]
    three_field_timecode: ClassVar[FindingKind]
    time_of_day_cell: ClassVar[FindingKind]
    timecode_without_digits: ClassVar[FindingKind]
    number_in_text_column: ClassVar[FindingKind]
    in_out_on_single_row: ClassVar[FindingKind]
    word_case: ClassVar[FindingKind]
    merge_fails: ClassVar[FindingKind]
    recovered_xml: ClassVar[FindingKind]
    in_out_on_clip_item: ClassVar[FindingKind]
    aux_not_written: ClassVar[FindingKind]
    good_word_unknown: ClassVar[FindingKind]
    cell_without_header: ClassVar[FindingKind]
    header_alias: ClassVar[FindingKind]
    date_in_text_column: ClassVar[FindingKind]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...

class Severity:
    """note: often meant; warning: probably not what was meant; error: the merge would fail."""

    note: ClassVar[Severity]
    warning: ClassVar[Severity]
    error: ClassVar[Severity]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...

class ChangeKind:
    """What a change does to the document."""

    text_set: ClassVar[ChangeKind]
    attribute_set: ClassVar[ChangeKind]
    added: ClassVar[ChangeKind]
    removed: ClassVar[ChangeKind]
    subclip_made: ClassVar[ChangeKind]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __int__(self) -> int: ...

class Column:
    """A column of the sheet as a spreadsheet shows it."""

    @property
    def header(self) -> str: ...
    @property
    def letter(self) -> str:
        """"A", "B", ... "AA"."""

class ClipRef:
    """A clip of the document."""

    @property
    def name(self) -> str: ...
    @property
    def id(self) -> Optional[str]: ...

class Finding:
    """Something in the sheet that a check found."""

    @property
    def kind(self) -> FindingKind: ...
    @property
    def severity(self) -> Severity: ...
    @property
    def row(self) -> Optional[int]:
        """The sheet row as the spreadsheet numbers it (2: the first data row)."""
    @property
    def column(self) -> Optional[Column]: ...
    @property
    def clip(self) -> Optional[ClipRef]: ...
    @property
    def message(self) -> str: ...
    @property
    def suggestion(self) -> str:
        """Empty when there is nothing to suggest."""

class Change:
    """One difference a merge makes to the document."""

    @property
    def kind(self) -> ChangeKind: ...
    @property
    def row(self) -> Optional[int]: ...
    @property
    def clip(self) -> Optional[ClipRef]: ...
    @property
    def element(self) -> str:
        """Path from the clip ("logginginfo/scene"), or from the root outside every clip."""
    @property
    def old_text(self) -> Optional[str]: ...
    @property
    def new_text(self) -> Optional[str]: ...
    @property
    def content(self) -> list[tuple[str, str]]:
        """(path below the element, text) of every leaf, for added, removed and subclip_made."""

class CheckReport:
    """What a check found."""

    @property
    def merge(self) -> MergeReport: ...
    @property
    def findings(self) -> list[Finding]: ...
    @property
    def changes(self) -> list[Change]:
        """Empty unless asked for."""
    @property
    def error(self) -> Optional[str]:
        """The message the merge would fail with."""

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
    def headers(
        self,
    ) -> list[Union[str, float, bool, datetime.date, datetime.datetime, datetime.time, None]]:
        """The header row as it is."""
    @property
    def rows(self) -> list[SheetRow]:
        """The rows below the header row to the last, blank rows included."""

def merge(
    sheet: _Path,
    xml: _Path,
    output: _Path,
    *,
    progress: Union[
        Callable[[int, int], Optional[bool]],
        Callable[[int, int, MergePhase], Optional[bool]],
        None,
    ] = None,
    recover: Optional[bool] = None,
    classic: bool = False,
    worksheet: Optional[str] = None,
) -> MergeReport:
    """Merges `sheet` into the document `xml` and writes the result to `output` (may be `xml`;
    "-" is standard output).

    progress(done, total) is called once with done == 0 and then after every clip; a progress
    that takes a third argument gets the MergePhase too, and is also called, with 0 and 0, as
    reading the sheet, reading the XML and writing begin. Returning False, or raising, cancels
    before the next clip: nothing is written. A sheet not named .xls or .xlsx raises
    NotALogSheet. A document that is not well-formed raises pellago.Error, or with
    recover=True is merged as far as it could be recovered (see MergeReport.recovered); classic
    rules recover unless recover=False. Raises OSError for files
    that cannot be read or written, pellago.Error for anything else that stops the merge;
    nothing is written then. classic=True merges by the classic rules, as the Ruby module does.
    worksheet="Log" reads the worksheet of that name instead of the first with a Name header.
    """

def check(
    sheet: _Path,
    xml: _Path,
    *,
    changes: bool = False,
    recover: Optional[bool] = None,
    classic: bool = False,
    worksheet: Optional[str] = None,
) -> CheckReport:
    """Runs the merge in memory, writing nothing: the findings about the sheet and, with
    changes=True, every change the merge would make. A merge that would fail gives its message
    in `error` (and a merge_fails finding); a file that cannot be read raises OSError.
    """

def inspect(sheet: _Path, *, worksheet: Optional[str] = None) -> Sheet:
    """The log sheet as the merge reads it (the worksheet named, else the first with a Name
    header); raises NotALogSheet when `sheet` is not an .xls or .xlsx file."""

def to_frames(timecode: str, rate: float, display_format: str) -> int:
    """The frame count of a timecode at `rate` fps; display_format "DF" counts drop frames.
    Raises ValueError for a rate that is not above 0 and a text that is not a timecode."""
