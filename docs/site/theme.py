"""The theme's script and style as a browser takes them. Debian keeps them in pieces, of which two lie where only a server that
is configured for it finds them, and its compiler of styles has lost the dark mode of who prefers it."""
from __future__ import annotations

import re
from pathlib import Path

import furo

from tree import BUILT

_STATIC = Path(furo.__file__).parent / "theme" / "furo" / "static"
_SHARED = Path("/usr/share")


def _script() -> str:
    """Without the import, which plain scripts can't do; what it brings stands in front."""

    def imported(match: re.Match[str]) -> str:
        return (_STATIC / "scripts" / match[1]).read_text(encoding="utf-8")

    return re.sub(r'^import \w+ from "\./([\w.-]+)";$', imported, (_STATIC / "scripts" / "furo.js").read_text(encoding="utf-8"),
                  flags=re.MULTILINE)


def _style() -> str:
    """With the style that it takes from the machine's folder of shared ones."""

    def imported(match: re.Match[str]) -> str:
        return (_SHARED / match[1]).read_text(encoding="utf-8")

    pieces = (_STATIC / "styles" / "furo.css").read_text(encoding="utf-8")
    style = re.sub(r"^@import url\(/(javascript/[\w./-]+)\);$", imported, pieces, flags=re.MULTILINE)
    return style if "prefers-color-scheme" in style else style + _dark(style)


def _dark(style: str) -> str:
    """The dark mode that can be chosen, for those who have chosen nothing but prefer it."""
    chosen = re.search(r'body\[data-theme="dark"\] \{([^}]*)\}', style)
    if not chosen:
        raise SystemExit("the theme has no dark mode")
    body = 'body:not([data-theme="light"])'
    return (f"@media screen and (prefers-color-scheme: dark) {{\n{body} {{{chosen[1]}}}\n"
            f"html {body} .only-light {{ display: none !important; }}\n{body} .only-dark {{ display: block !important; }}\n}}\n")


def write_static() -> None:
    for name, text in (("scripts/furo.js", _script()), ("styles/furo.css", _style())):
        file = BUILT / "static" / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
