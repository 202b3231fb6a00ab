#!/usr/bin/python3
"""Runs pellago on a pseudo-terminal 40 columns wide, as a narrow terminal pane would: the progress
line fits the width, TERM=dumb gets no escape sequences, a slow phase is named while it lasts,
--quiet draws nothing; the help wraps at 80 columns and ends with examples.

Usage: terminal_test.py PATH_OF_PELLAGO SOURCE_DIR
"""
import fcntl
import os
import re
import select
import shutil
import struct
import subprocess
import sys
import tempfile
import termios
import time
import unittest

PELLAGO, SOURCE_DIR = sys.argv[1], sys.argv[2]
SHEET = os.path.join(SOURCE_DIR, "examples", "log_sheet.xlsx")
PROJECT = os.path.join(SOURCE_DIR, "examples", "project.xml")
COLUMNS = 40
ERASE_LINE = "\x1b[K"


class Terminal:
    """pellago on the slave side of a pseudo-terminal; stdout and stderr both go to it."""

    def __init__(self, arguments, term, cwd):
        self.master, slave = os.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, COLUMNS, 0, 0))
        env = {key: value for key, value in os.environ.items() if key not in ("TERM", "COLUMNS")}
        env["TERM"] = term
        self.process = subprocess.Popen([PELLAGO] + arguments, stdin=subprocess.DEVNULL,
                                        stdout=slave, stderr=slave, env=env, cwd=cwd)
        os.close(slave)
        self.output = b""

    def read_until(self, text, timeout):
        """Reads until `text` has been shown or the program has ended; true when it was shown."""
        deadline = time.monotonic() + timeout
        while text.encode() not in self.output and time.monotonic() < deadline:
            ready, _, _ = select.select([self.master], [], [], 0.1)
            if ready and not self._read_some():
                break
        return text.encode() in self.output

    def finish(self):
        while self._read_some():
            pass
        os.close(self.master)
        return self.process.wait(timeout=60), self.output.decode()

    def _read_some(self):
        try:
            chunk = os.read(self.master, 4096)
        except OSError:  # EIO: the program ended and closed its side
            return False
        self.output += chunk
        return bool(chunk)


def run(arguments, term="xterm", cwd=None):
    terminal = Terminal(arguments, term, cwd)
    return terminal.finish()


class ProgressTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.output = os.path.join(self.folder, "out.xml")

    def tearDown(self):
        shutil.rmtree(self.folder)

    def progress_lines(self, shown):
        """What the progress line showed, one entry per redraw, before the summary."""
        progress = shown[: shown.index("visited ")]
        return [piece.replace(ERASE_LINE, "") for piece in progress.split("\r") if piece]

    def assert_fits(self, lines):
        for line in lines:
            self.assertLessEqual(len(line), COLUMNS - 1, repr(line))
            self.assertNotIn("\n", line)

    def test_bar_fits_a_narrow_terminal_is_cleared_and_quiet_draws_none(self):
        for term in ("xterm", "dumb", ""):
            status, shown = run(["merge", SHEET, PROJECT, self.output], term=term)
            self.assertEqual(status, 0, shown)
            lines = self.progress_lines(shown)
            self.assertTrue(any(re.fullmatch(r"merging clips \[#+\] 100% 6/6", line)
                                for line in lines), lines)
            self.assert_fits(lines)
            progress = shown[: shown.index("visited ")]
            self.assertTrue(progress.startswith("\r"), repr(shown))
            if term == "xterm":
                # Only erasing to the end of the line; the last one clears the bar.
                self.assertEqual(set(re.findall("\x1b[^K]*K", progress)), {ERASE_LINE})
                self.assertTrue(progress.endswith("\r" + ERASE_LINE), repr(shown))
            else:
                # No escape sequences: blanks over the bar, then back to the start of the line.
                self.assertNotIn("\x1b", shown)
                self.assertTrue(re.fullmatch(r".*\r +\r", progress, re.DOTALL), repr(shown))
        status, shown = run(["merge", "-q", SHEET, PROJECT, self.output])
        self.assertEqual(status, 0, shown)
        self.assertTrue(shown.startswith("visited 6 clips, changed 5; "), repr(shown))

    def test_a_slow_phase_is_named_while_it_lasts(self):
        # The export comes through a named pipe: reading it lasts until the test writes it.
        pipe = os.path.join(self.folder, "export.xml")
        os.mkfifo(pipe)
        terminal = Terminal(["merge", SHEET, pipe, self.output], "xterm", None)
        shown_while_waiting = terminal.read_until("reading XML (1 s)", timeout=30)
        with open(pipe, "wb") as fifo, open(PROJECT, "rb") as project:
            fifo.write(project.read())
        status, shown = terminal.finish()
        self.assertTrue(shown_while_waiting, repr(shown))
        self.assertEqual(status, 0, shown)
        lines = self.progress_lines(shown)
        self.assertEqual(lines[0], "reading XML")
        self.assertNotIn("reading sheet", shown)  # quick phases are not named
        self.assert_fits(lines)


class HelpTest(unittest.TestCase):
    def test_help_wraps_at_80_columns_and_merge_ends_with_two_examples(self):
        for command in ([], ["merge"], ["check"], ["inspect"], ["frames"]):
            status, shown = run(command + ["--help"], term="dumb")
            self.assertEqual(status, 0, shown)
            for line in shown.splitlines():
                self.assertLessEqual(len(line), 80, f"pellago {' '.join(command)} --help: {line}")
            if not command:
                # One summary line per command.
                self.assertRegex(shown, r"\n  merge [^\n]*\n  inspect ")
        _, shown = run(["merge", "--help"], term="dumb")
        examples = shown[shown.rindex("Examples:"):].splitlines()[1:]
        commands = [line.strip() for line in examples if line.startswith("  pellago merge ")]
        self.assertEqual(len(commands), 2, examples)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
