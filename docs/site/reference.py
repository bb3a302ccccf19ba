"""The reference: a page a public header, a page a module of Python."""
from __future__ import annotations

import ast
import re

from tree import ROOMS, TREE, documented_headers, room_of, write

MODULES = ["analysis", "fitting", "segmentation", "matching", "measuring", "calibration", "camera", "drawing", "files", "batch",
           "errors"]

# What a page shows. In C a structure and its typedef are one name, which C++ has once.
_SECTIONS = ["briefdescription", "detaileddescription", "innerclass", "innernamespace", "define", "enum", "typedef", "func",
             "var", "public-type", "public-func", "public-attrib", "public-static-func", "public-static-attrib", "friend",
             "protected-func", "protected-attrib", "user-defined"]


def page_of(header: str) -> str:
    return "reference/" + re.sub(r"\W", "-", header.removeprefix("orxFunctions/").removesuffix(".h"))


def subject_of(header: str) -> str:
    """The first sentence of what a header says about itself."""
    text = (TREE / header).read_text(encoding="utf-8")
    comment = re.match(r"/\*(.*?)\*/", text, flags=re.DOTALL)
    if comment:
        text = re.sub(r"^ \*", "", comment[1], flags=re.MULTILINE)
    else:
        lines = text.splitlines()
        end = next(i for i, line in enumerate(lines) if not line.startswith("//"))
        text = "\n".join(line.removeprefix("//") for line in lines[:end])
    text = " ".join(text.split("\n\n")[0].split())
    return re.split(r"(?<=[.:]) ", text)[0].rstrip(".:")


def _titled(text: str, line: str = "=") -> str:
    return f"{text}\n{line * len(text)}\n\n"


def _literal(text: str) -> str:
    """Marks of reStructuredText taken as they are."""
    return re.sub(r"([\\*`|_])", r"\\\1", text)


def write_cpp_pages() -> None:
    index = _titled("Reference of the C++ interface")
    index += ("A page a header, out of its comments. A host includes ``orxFunctions/orxfunctions.h`` alone, which includes all but"
              " the two\nfor toolkits and that of driver modules. The words *reentrant*, *thread-safe* and *one thread at a time*"
              " are\n:doc:`told there <orxfunctions>`; :doc:`a table </numbers/thread-safety>` has them for every class.\n\n")
    headers = documented_headers()
    for room, title in ROOMS.items():
        own = [header for header in headers if room_of(header) == room]
        index += _titled(title, "-")
        index += "\n".join(f"- :doc:`{header} </{page_of(header)}>`: {_literal(subject_of(header))}" for header in own) + "\n\n"
        index += ".. toctree::\n   :hidden:\n\n" + "".join(f"   /{page_of(header)}\n" for header in own) + "\n"
    write("reference/index.rst", index)
    for header in headers:
        sections = _SECTIONS if not header.startswith("drivers/") else [kind for kind in _SECTIONS if kind != "typedef"]
        write(page_of(header) + ".rst", _titled(header.rpartition("/")[2]) + f"``#include \"{header}\"``\n\n"
              f".. doxygenfile:: {header}\n   :sections: {' '.join(sections)}\n")


def write_python_pages() -> None:
    index = _titled("Reference of the Python package")
    index += ("A page a module, out of its docstrings; :doc:`names of C++ and Python </python-names>` side by side;"
              " :doc:`the guide </python>`.\n\n")
    for module in MODULES:
        file = TREE / "python" / "orxfunctions" / module
        file = file / "__init__.py" if file.is_dir() else file.with_suffix(".py")
        docstring = ast.get_docstring(ast.parse(file.read_text(encoding="utf-8"))) or ""
        index += f"- :doc:`orxfunctions.{module} <{module}>`: {_literal(docstring.splitlines()[0])}\n"
        name = f"orxfunctions.{module}"
        write(f"python/{module}.rst", _titled(name) + f".. automodule:: {name}\n")
    index += "\n.. toctree::\n   :hidden:\n\n" + "".join(f"   {module}\n" for module in MODULES)
    index += "\n.. automodule:: orxfunctions\n   :no-undoc-members:\n   :exclude-members: " + ", ".join(MODULES) + "\n"
    write("python/index.rst", index)
