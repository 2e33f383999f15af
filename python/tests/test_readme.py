"""The lines of README.md print what it says."""

import contextlib
import io
import pathlib
import re
import unittest

README = pathlib.Path(__file__).parents[2] / "README.md"


class Readme(unittest.TestCase):
    def test_five_lines(self):
        text = README.read_text(encoding="utf-8")
        said, lines = re.search(r"print\n`([^`]*)`:\n\n```python\n(.*?)```", text, re.S).groups()
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            exec(compile(lines, str(README), "exec"), {})  # noqa: S102
        self.assertEqual(printed.getvalue().strip(), said)


if __name__ == "__main__":
    unittest.main()
