"""Tests of the Python module pellago, run by CTest with Debian's pytest.

Environment: PYTHONPATH holds the built module, PELLAGO_CLI is the pellago program (merges are
compared with its output), PELLAGO_MAKE_EXPORT the generator of large exports
(make_merge_bench), PELLAGO_SOURCE_DIR the repository.
"""

import ast
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import threading
import time

import shutil
import pytest
import xlsxwriter

import pellago

CLI = os.environ["PELLAGO_CLI"]
MAKE_EXPORT = os.environ["PELLAGO_MAKE_EXPORT"]
SOURCE = pathlib.Path(os.environ["PELLAGO_SOURCE_DIR"])
EXAMPLES = SOURCE / "examples"
CHECK_SHEETS = SOURCE / "tests" / "check" / "data"
WORKBOOKS = SOURCE / "tests" / "workbook" / "data"
SHEET = EXAMPLES / "log_sheet.xlsx"
PROJECT = EXAMPLES / "project.xml"
CLIPS_IN_PROJECT = 6


def run_cli(*arguments):
    return subprocess.run([CLI, *map(str, arguments)], capture_output=True, text=True, check=True)


@pytest.fixture
def broken(tmp_path):
    """The example export with a clip's <duration> taken out: a merge fails at sheet row 2."""
    path = tmp_path / "broken.xml"
    path.write_text(PROJECT.read_text().replace("<duration>1500</duration>", ""))
    return path


def test_merge_writes_what_the_program_writes(tmp_path):
    expected = tmp_path / "cli.xml"
    run_cli("merge", "--quiet", SHEET, PROJECT, expected)
    output = tmp_path / "python.xml"

    report = pellago.merge(SHEET, str(PROJECT), output)

    assert output.read_bytes() == expected.read_bytes()
    assert (report.outcome, report.clips_visited, report.clips_changed, report.subclips_made,
            report.markers_added, report.rows_unmatched) == (pellago.Outcome.merged, 6, 5, 3, 6, 1)
    assert repr(report).startswith("MergeReport(outcome=Outcome.merged, clips_visited=6,")

    with pytest.raises(pellago.NotALogSheet, match="log.csv is not a log sheet"):
        pellago.merge(tmp_path / "log.csv", PROJECT, tmp_path / "none.xml")
    assert not (tmp_path / "none.xml").exists()

    assert run_cli("--version").stdout == f"pellago {pellago.__version__}\n"
    assert pellago.to_frames("01:00:00;00", 29.97, "DF") == 107892
    for timecode, rate in (("01:00:00:00", 0), ("01:00:00:00", -25), ("01:00:00:00", float("nan")),
                           ("TBD", 25)):
        with pytest.raises(ValueError):
            pellago.to_frames(timecode, rate, "NDF")


def test_progress_is_called_per_clip_and_can_cancel(tmp_path):
    calls, clips = [], range(CLIPS_IN_PROJECT + 1)
    report = pellago.merge(SHEET, PROJECT, tmp_path / "out.xml",
                           progress=lambda done, total: calls.append((done, total)))
    assert report.outcome == pellago.Outcome.merged
    assert calls == [(done, CLIPS_IN_PROJECT) for done in clips]

    # A callback that takes the phase hears every phase begin, from the start of reading.
    calls, phase = [], pellago.MergePhase
    pellago.merge(SHEET, PROJECT, tmp_path / "out.xml", progress=lambda *report: calls.append(report))
    assert calls == [(0, 0, phase.reading_sheet), (0, 0, phase.reading_xml),
                     *[(done, CLIPS_IN_PROJECT, phase.merging_clips) for done in clips],
                     (0, 0, phase.writing)]

    output = tmp_path / "earlier.xml"
    output.write_text("earlier output")
    report = pellago.merge(SHEET, PROJECT, output, progress=lambda done, total: done < 2)
    assert (report.outcome, report.clips_visited) == (pellago.Outcome.cancelled, 2)
    report = pellago.merge(SHEET, PROJECT, output, progress=lambda done, total, phase: False)
    assert (report.outcome, report.clips_visited) == (pellago.Outcome.cancelled, 0)
    assert output.read_text() == "earlier output"

    def interrupt(done, total):
        if done == 3:
            raise KeyboardInterrupt
    with pytest.raises(KeyboardInterrupt):
        pellago.merge(SHEET, PROJECT, output, progress=interrupt)
    assert output.read_text() == "earlier output"
    assert sorted(path.name for path in tmp_path.iterdir()) == ["earlier.xml", "out.xml"]


def test_a_damaged_document_is_refused_unless_recovered(tmp_path):
    project = PROJECT.read_text()
    cut = tmp_path / "cut.xml"
    cut.write_text(project[: project.index('<clip id="B001_C002_0611CD">') + 40])
    warning = run_cli("merge", "--quiet", "--recover", SHEET, cut, tmp_path / "cli.xml").stderr

    report = pellago.merge(SHEET, cut, tmp_path / "python.xml", recover=True)

    recovered = report.recovered
    assert (report.clips_visited, recovered.count > 0, recovered.line > 1) == (4, True, True)
    assert f"line {recovered.line}" in warning and recovered.message in warning
    with pytest.raises(pellago.Error, match="is not well-formed XML: line "):
        pellago.merge(SHEET, cut, tmp_path / "strict.xml")
    assert not (tmp_path / "strict.xml").exists()


def as_json(report):
    """The report in the shape of `pellago check --json --changes`."""
    clip = lambda ref: ref and {"name": ref.name, "id": ref.id}
    findings = [{"kind": f.kind.name, "severity": f.severity.name, "row": f.row,
                 "column": f.column and {"header": f.column.header, "letter": f.column.letter},
                 "clip": clip(f.clip), "message": f.message, "suggestion": f.suggestion or None}
                for f in report.findings]
    changes = [{"kind": c.kind.name, "row": c.row, "clip": clip(c.clip), "element": c.element,
                "old": c.old_text, "new": c.new_text,
                "content": [{"element": path, "text": text} for path, text in c.content]}
               for c in report.changes]
    summary = {name: getattr(report.merge, name) for name in (
        "clips_visited", "clips_changed", "subclips_made", "markers_added", "rows_unmatched")}
    return {"error": report.error, "summary": summary, "findings": findings, "changes": changes}


def test_check_gives_what_the_program_prints_as_objects(tmp_path, broken):
    sheet = CHECK_SHEETS / "check_mistakes.xlsx"
    printed = subprocess.run(
        [CLI, "check", "--json", "--changes", sheet, PROJECT], capture_output=True, text=True
    )
    assert printed.returncode == 4

    report = pellago.check(sheet, PROJECT, changes=True)

    assert as_json(report) == json.loads(printed.stdout)
    assert pellago.check(sheet, PROJECT).changes == []

    # A merge that would fail is part of the report, and the merge's error says where it arose; a
    # file that cannot be read raises.
    merge_error = subprocess.run([CLI, "merge", SHEET, broken, tmp_path / "out.xml"],
                                 capture_output=True, text=True).stderr
    report = pellago.check(SHEET, broken)
    assert merge_error == f"pellago: {report.error}\n"
    assert (report.findings[-1].kind, report.findings[-1].severity) == (
        pellago.FindingKind.merge_fails, pellago.Severity.error)
    with pytest.raises(pellago.Error) as at_clip:
        pellago.merge(SHEET, broken, tmp_path / "out.xml")
    assert (at_clip.value.row, at_clip.value.column) == (2, None)
    assert (at_clip.value.clip.name, at_clip.value.clip.id) == ("A001_C001_0611AB",) * 2
    with pytest.raises(FileNotFoundError, match=str(tmp_path / "missing.xml")):
        pellago.check(SHEET, tmp_path / "missing.xml")
    with pytest.raises(pellago.Error):
        pellago.check(tmp_path / "log.XLSX", PROJECT, classic=True)
    assert sorted(path.name for path in tmp_path.iterdir()) == ["broken.xml"]


def test_an_error_at_a_cell_says_its_row_and_column(tmp_path):
    sheet = tmp_path / "log.xlsx"
    with xlsxwriter.Workbook(sheet) as workbook:
        worksheet = workbook.add_worksheet()
        rows = [["Name", "Scene", "Log Note"], ["A001_C001_0611AB", "1"], ["B", "2", "ring\a"]]
        for number, row in enumerate(rows):
            worksheet.write_row(number, 0, row)
    with pytest.raises(pellago.Error) as at_cell:
        pellago.merge(sheet, PROJECT, tmp_path / "out.xml")
    assert (at_cell.value.row, at_cell.value.clip) == (3, None)
    assert (at_cell.value.column.header, at_cell.value.column.letter) == ("Log Note", "C")
    assert pellago.Error("made in Python").row is None


MEMORY_LIMITED_MERGE = """
import resource, sys, pellago
size = next(int(line.split()[1]) * 1024 for line in open("/proc/self/status")
            if line.startswith("VmSize:"))
limit = size + (64 << 20)
resource.setrlimit(resource.RLIMIT_AS, (limit, limit))
try:
    pellago.merge(*sys.argv[1:])
except MemoryError:
    print("MemoryError")
"""


def test_failures_raise_the_matching_exception_and_write_nothing(tmp_path):
    output = tmp_path / "out.xml"

    with pytest.raises(FileNotFoundError) as missing:
        pellago.merge(SHEET, tmp_path / "missing.xml", output)
    assert str(tmp_path / "missing.xml") in str(missing.value)

    # A small file whose shared strings take far more than the limit once read.
    bomb = WORKBOOKS / "shared_bomb.xlsx"
    child = subprocess.run([sys.executable, "-c", MEMORY_LIMITED_MERGE, bomb, PROJECT, output],
                           capture_output=True, text=True, check=True)
    assert child.stdout == "MemoryError\n"

    assert list(tmp_path.iterdir()) == []


def test_inspect_gives_the_sheet_as_python_values(tmp_path):
    sheet = pellago.inspect(SHEET)
    assert sheet.headers[:3] == ["Name", "Subclip Name", "In"]
    first = sheet.rows[0]
    assert first.number == 2
    assert (first.fields["Name"], first.fields["Good"]) == ("A001_C001_0611AB", "Yes")
    assert [(m.timecode, m.name, m.comment, m.color) for m in first.markers] == [
        ("10:00:05:00", "Slate", "", "red"), ("10:00:42:12", "Laugh", None, "green")]
    with pytest.raises(pellago.NotALogSheet):
        pellago.inspect(tmp_path / "log.xls.bak")

    # Row 1 alone: its cells keep their kinds.
    headers_only = tmp_path / "headers.xlsx"
    workbook = xlsxwriter.Workbook(str(headers_only))
    workbook.add_worksheet().write_row(0, 0, ["Name", 12.5, None, "Scene"])
    workbook.close()
    sheet = pellago.inspect(headers_only)
    assert (sheet.headers, sheet.rows) == (["Name", 12.5, None, "Scene"], [])
    # A file name that is not UTF-8, as os.listdir gives it: a str with surrogate escapes.
    odd = os.fsdecode(os.fsencode(str(tmp_path)) + b"/\xff.xlsx")
    shutil.copy(headers_only, os.fsencode(odd))
    assert pellago.inspect(odd).headers[0] == "Name"


def test_other_threads_run_while_a_large_merge_works(tmp_path):
    project, log_sheet = tmp_path / "project.xml", tmp_path / "log.xlsx"
    subprocess.run([MAKE_EXPORT, project, log_sheet, "5000"], check=True)
    ticks, done = [], threading.Event()

    def tick():
        while not done.is_set():
            ticks.append(time.monotonic())
            time.sleep(0.001)

    ticker = threading.Thread(target=tick)
    ticker.start()
    try:
        started = time.monotonic()
        report = pellago.merge(log_sheet, project, tmp_path / "out.xml")
        ended = time.monotonic()
    finally:
        done.set()
        ticker.join()

    assert report.clips_visited == 5000
    during = [t for t in ticks if started < t < ended]
    assert len(during) >= 20, f"{len(during)} ticks in a merge of {ended - started:.2f} s"


def test_the_stub_declares_what_the_module_defines_and_its_enums_the_librarys_names():
    """The stub declares every public name and member; the library's one list of each enum's
    names (kinds.def) is the module's enum, value by value, and the stub's, in order; the README
    names each value."""
    stub = ast.parse((pathlib.Path(pellago.__file__).parent / "pellago.pyi").read_text())
    declared = {node.name if hasattr(node, "name") else node.target.id for node in stub.body
                if isinstance(node, (ast.ClassDef, ast.FunctionDef, ast.AnnAssign))}
    defined = {name for name in dir(pellago) if not name.startswith("_")} | {"__version__"}
    assert declared == defined
    for name in defined - {"__version__", "Error"}:
        members = next(n for n in stub.body if getattr(n, "name", None) == name)
        if isinstance(members, ast.ClassDef):
            stubbed = {getattr(n, "name", None) or n.target.id for n in members.body
                       if isinstance(n, (ast.FunctionDef, ast.AnnAssign))}
            public = {m for m in vars(getattr(pellago, name)) if not m.startswith("_")}
            assert public - {"name", "value"} <= stubbed, name

    listed = (SOURCE / "src" / "check" / "kinds.def").read_text()
    readme = (SOURCE / "README.md").read_text()
    for enum, macro in ((pellago.FindingKind, "FINDING_KIND"), (pellago.Severity, "SEVERITY"),
                        (pellago.ChangeKind, "CHANGE_KIND")):
        names = re.findall(rf"^PELLAGO_{macro}\((\w+)\)$", listed, re.MULTILINE)
        assert names, macro
        values = {name: int(value) for name, value in enum.__members__.items()}
        assert values == {name: value for value, name in enumerate(names)}
        declared = next(node for node in stub.body if getattr(node, "name", None) == enum.__name__)
        assert [n.target.id for n in declared.body if isinstance(n, ast.AnnAssign)] == names
        assert [name for name in names if f"`{name}`" not in readme] == []
