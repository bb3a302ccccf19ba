"""Which names of C++ the package stands for."""
from __future__ import annotations

import importlib
import sys
from pathlib import Path

TOOLS = Path(__file__).resolve().parent.parent / "tools"
sys.path.insert(0, str(TOOLS))
cpp_names = importlib.import_module("cpp_names")
make_names = importlib.import_module("make_names")

HEADER = '''
// class TInAComment {};
#ifndef GUARD
#define TWO_LINES class TInAMacro \\
    { }
class TGlobal;
namespace orx {
class ORX_API TExported : public TBase {
  public:
    ORX_API void member(int a = f({1}));
    struct TInside { int a; };
};
struct TOptions { double low = 0.5; std::string text = "class TInAText {"; };
enum TKind : int { kOne, kTwo };
enum class TColour { kRed };
struct TAnnounced;
ORX_API std::vector<cv::Point2f> find(const cv::Mat& image, const TOptions& options = TOptions());
inline int notExported() { return 1; }
ORX_API extern TAppSys appSys;
namespace detail { ORX_API void hidden(); }
template <typename T> class TPolled { T value; };
}  // namespace orx
ORX_API void atTheTop();
#endif
'''


def test_headers_are_read_as_a_compiler_does() -> None:
    assert cpp_names.names_in(HEADER) == {"orx::TExported", "orx::TOptions", "orx::TKind", "orx::TColour", "orx::find",
                                          "orx::appSys", "orx::TPolled", "atTheTop"}


def test_names_of_the_library_are_found() -> None:
    names = cpp_names.public_names()
    assert names["ORXEdge::edgesSubPixMetric"] == "orxFunctions/analysis/subpixel_edges_metric.h"
    assert {"orx::TMultiCamera", "orx::TFitLoss", "TCircleFit", "orx::lastRefusal", "zul::toUtf8"} <= set(names)
    assert len(names) > 300


def test_docstrings_name_what_there_is() -> None:
    assert make_names.documented()["analysis.threshold_level"] == ["orx::getThresholdValue", "orx::TThresholdMethod"]
    assert make_names.unknown() == []
    assert [name for name, reason in make_names.left_out() if not reason] == [], "left out without a reason"


def test_every_public_name_is_named_or_left_out() -> None:
    assert make_names.missing() == [], "name them in a docstring's last line, or in python/left_out.txt with the reason"


def test_page_of_names_is_that_of_the_docstrings() -> None:
    assert make_names.PAGE.read_text(encoding="utf-8") == make_names.page_text(), "run python/tools/make_names.py"
