"""Writes docs/python-names.md: which name of Python stands for which of C++, and the other way round.

    python3 python/tools/make_names.py [--output FILE] [--missing]

A docstring ends with a line "C++: orx::name, orx::TOptions"; what is left out is in left_out.txt with its reason, a name (or
a pattern, orx::T*) and a reason to the line. Run it after a change of these; a test compares. --missing prints the public
names of C++ that are in neither.
"""
from __future__ import annotations

import argparse
import ast
import fnmatch
import re
from pathlib import Path

from cpp_names import TREE, public_names, words_of_headers

PACKAGE = TREE / "python" / "orxfunctions"
LEFT_OUT = TREE / "python" / "left_out.txt"
PAGE = TREE / "docs" / "python-names.md"


def _cpp_line(docstring: str | None) -> list[str]:
    match = re.search(r"^[ \t]*C\+\+: (.*)\Z", docstring or "", flags=re.MULTILINE | re.DOTALL)
    return re.findall(r"[A-Za-z_][\w:]*", match[1]) if match else []


def _documented_in(file: Path) -> dict[str, list[str]]:
    """Names of one source, classes with their members, and what their docstrings name of C++."""
    found: dict[str, list[str]] = {}

    def visit(body: list[ast.stmt], front: str) -> None:
        for node in body:
            if isinstance(node, (ast.FunctionDef, ast.ClassDef)):
                names = _cpp_line(ast.get_docstring(node))
                if names:
                    found[front + node.name] = found.get(front + node.name, []) + names
                if isinstance(node, ast.ClassDef):
                    visit(node.body, f"{front}{node.name}.")

    tree = ast.parse(file.read_text(encoding="utf-8"))
    if names := _cpp_line(ast.get_docstring(tree)):
        found[""] = names
    visit(tree.body, "")
    return found


def documented() -> dict[str, list[str]]:
    """Names of Python as users write them after `orxfunctions.`, with the names of C++ that they stand for."""
    found: dict[str, list[str]] = {}
    for file in sorted(PACKAGE.rglob("*.py")):
        parts = [part for part in file.relative_to(PACKAGE).with_suffix("").parts if not part.startswith("_")]
        for name, names in _documented_in(file).items():
            path = ".".join([*parts, name] if name else parts)
            found[path] = found.get(path, []) + names
    return found


def left_out() -> list[tuple[str, str]]:
    """Names or patterns of C++, each with the reason why Python does without."""
    lines = LEFT_OUT.read_text(encoding="utf-8").splitlines()
    pairs = [line.split(None, 1) for line in lines if line.strip() and not line.startswith("#")]
    return [(pair[0], pair[1].strip() if len(pair) > 1 else "") for pair in pairs]


def missing() -> list[str]:
    """Public names of C++ that no docstring names and that aren't left out. A class is named by its members, too."""
    named = {name for names in documented().values() for name in names}
    named |= {name.rpartition("::")[0] for name in named}
    patterns = [pattern for pattern, _ in left_out()]
    return [name for name in public_names()
            if name not in named and not any(fnmatch.fnmatchcase(name, pattern) for pattern in patterns)]


def unknown() -> list[str]:
    """What docstrings and the list of what is left out name, but the headers don't have."""
    public = public_names()
    words = words_of_headers()
    wrong = []
    for where, names in documented().items():
        for name in names:
            if not name.startswith("cv::") and name not in public and name.rpartition("::")[2] not in words:
                wrong.append(f"{where}: {name}")
    wrong += [f"left out: {pattern}" for pattern, _ in left_out()
              if not any(fnmatch.fnmatchcase(name, pattern) for name in public)
              and pattern.rpartition("::")[2] not in words]
    return wrong


def page_text() -> str:
    """The page, as Markdown."""
    by_name: dict[str, list[str]] = {}
    for where, names in documented().items():
        for name in names:
            if where not in by_name.setdefault(name, []):
                by_name[name].append(where)
    lines = ["# Names in Python and in C++", "",
             "Made by `python/tools/make_names.py` out of the docstrings of the [Python package](python.md); each ends with",
             "the names of C++ that it stands for. All are below `orxfunctions`.", "",
             "## From C++ to Python", "", "| C++ | Python |", "|---|---|"]
    lines += [f"| `{name}` | {', '.join(f'`{place}`' for place in sorted(by_name[name]))} |"
              for name in sorted(by_name, key=str.lower)]
    lines += ["", "## From Python to C++", "", "| Python | C++ |", "|---|---|"]
    lines += [f"| `{where or 'orxfunctions'}` | {', '.join(f'`{name}`' for name in dict.fromkeys(names))} |"
              for where, names in sorted(documented().items(), key=lambda item: item[0].lower())]
    lines += ["", "## Left out", "", "| C++ | why |", "|---|---|"]
    lines += [f"| `{name}` | {reason} |" for name, reason in sorted(left_out(), key=lambda item: item[0].lower())]
    return "\n".join(lines) + "\n"


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--output", type=Path, default=PAGE)
    parser.add_argument("--missing", action="store_true")
    arguments = parser.parse_args()
    if arguments.missing:
        print("\n".join([*missing(), *(f"not in the headers: {name}" for name in unknown())]))
    else:
        arguments.output.write_text(page_text(), encoding="utf-8")


if __name__ == "__main__":
    main()
