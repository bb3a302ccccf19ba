"""What Doxygen leaves of lines that end within quotation marks: it keeps the break there, of which Breathe makes a paragraph."""
from __future__ import annotations

import xml.etree.ElementTree as ElementTree
from typing import Optional

from tree import BUILT

_AS_WRITTEN = {"verbatim", "programlisting", "preformatted"}


def _joined(text: Optional[str]) -> Optional[str]:
    return text and text.replace("\n", " ")


def _join(element: ElementTree.Element, within: bool) -> None:
    """Lines of paragraphs, but not of code in them."""
    if element.tag in _AS_WRITTEN:
        return
    within = within or element.tag == "para"
    if within:
        element.text = _joined(element.text)
    for child in element:
        _join(child, within)
        if within:
            child.tail = _joined(child.tail)


def join_lines() -> None:
    for file in sorted((BUILT / "xml").glob("*.xml")):
        tree = ElementTree.parse(file)
        _join(tree.getroot(), False)
        tree.write(file, encoding="utf-8", xml_declaration=True)
