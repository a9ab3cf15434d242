"""The example in Python that a page of the docs shows, and what the page says it prints."""

import contextlib
import io
import re


def run(page):
    """What the first example of the page with its output, a path, prints, and what is shown."""
    code, shown = re.search(r"```python\n(.*?)```\n+prints\n+```\n(.*?)```",
                            page.read_text(encoding="utf-8"), re.DOTALL).groups()
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(code, {})
    return printed.getvalue(), shown
