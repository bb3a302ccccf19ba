"""Namespaces in the reference: every header opens the same ones, so that they are no declarations, of which each may be
one alone, but frames around what a header declares in them."""
from __future__ import annotations

from typing import Any

from breathe.renderer import sphinxrenderer
from sphinx import addnodes
from sphinx.domains.cpp import DefinitionParser


class Namespace(sphinxrenderer.CPPTypeObject):
    def handle_signature(self, sig: str, signode: addnodes.desc_signature) -> Any:
        parser = DefinitionParser(sig, location=signode, config=self.env.config)
        name = parser.parse_namespace_object()
        parser.assert_end()
        around = self.env.temp_data["cpp:parent_symbol"]
        self.env.temp_data["cpp:last_symbol"] = around.add_name(name.nestedName, name.templatePrefix)
        signode += [addnodes.desc_sig_keyword("", "namespace"), addnodes.desc_sig_space(), addnodes.desc_name("", sig)]
        return name

    def add_target_and_index(self, ast: Any, sig: str, signode: addnodes.desc_signature) -> None:
        """Nothing leads to a frame."""


def setup(app: Any) -> dict[str, bool]:
    sphinxrenderer.DomainDirectiveFactory.cpp_classes["namespace"] = (Namespace, "type")
    return {"parallel_read_safe": True, "parallel_write_safe": True}
