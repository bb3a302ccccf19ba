"""Configuration of the site: `scripts/docs` runs Sphinx with it on the pages that docs/site/assemble.py put together."""
import re
import sys
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent
BUILT = TREE / "build" / "docs"
sys.path.insert(0, str(TREE / "docs" / "site"))

_numbers = dict(re.findall(r"define ORX_VERSION_(MAJOR|MINOR|PATCH) (\d+)", (TREE / "orxFunctions" / "api.h").read_text()))

project = "orxFunctions"
author = "the orxFunctions developers"
copyright = author
release = version = f"{_numbers['MAJOR']}.{_numbers['MINOR']}.{_numbers['PATCH']}"

extensions = ["myst_parser", "breathe", "sphinx.ext.autodoc", "sphinx.ext.napoleon", "cpp_namespaces"]
highlight_language = "none"
pygments_style = "friendly"
pygments_dark_style = "native"

exclude_patterns = ["included/**"]
myst_heading_anchors = 4
myst_enable_extensions = ["colon_fence"]
# HTML pages that are copied beside the site: the notebooks.
html_extra_path = [str(BUILT / "extra")]

breathe_projects = {"orxFunctions": str(BUILT / "xml")}
breathe_default_project = "orxFunctions"
breathe_show_include = False
breathe_order_parameters_first = False
breathe_domain_by_extension = {"h": "cpp"}
# What Doxygen leaves of our marks in front of a declaration (they are macros).
cpp_id_attributes = ["ORX_API", "ORX_PRIVATE", "ZUL_API", "VD_EXPORT"]

autodoc_member_order = "bysource"
autodoc_typehints = "signature"
autodoc_default_options = {"members": True, "show-inheritance": True}
napoleon_google_docstring = False
napoleon_use_rtype = False
napoleon_preprocess_types = False

html_theme = "furo"
html_title = f"orxFunctions {release}"
html_static_path = [str(TREE / "docs" / "site" / "static"), str(BUILT / "static")]
html_favicon = str(TREE / "docs" / "site" / "static" / "favicon.svg")
html_css_files = ["site.css"]
html_copy_source = False
html_show_sphinx = False
html_theme_options = {"navigation_with_keys": True}
