"""The compiled part of a wheel: CMake builds it with the whole tree around this folder.

The wheel brings the libraries and camera modules of orxFunctions inside the package, found by their place beside the core.
OpenCV is taken from the system, in the version that the wheel was built on.
"""
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, find_packages, setup
from setuptools.command.build_ext import build_ext

HERE = Path(__file__).resolve().parent
TREE = HERE.parent
WORK = TREE / "build" / "wheel"


def version() -> str:
    text = (TREE / "orxFunctions" / "api.h").read_text(encoding="utf-8")
    return ".".join(re.findall(r"define ORX_VERSION_(?:MAJOR|MINOR|PATCH) ([0-9]+)", text))


class CMakeBuild(build_ext):
    """Builds and installs the components that a wheel holds, and takes over what is not written in Python."""

    def build_extension(self, ext: Extension) -> None:
        stage = WORK / "stage"
        options = {"CMAKE_BUILD_TYPE": "Release", "ORX_BUILD_PYTHON": "ON", "ORX_BUILD_TESTS": "OFF",
                   "ORX_BUILD_EXAMPLES": "OFF", "CMAKE_INSTALL_LIBDIR": "orxfunctions", "ORX_PYTHON_FOLDER": "."}
        generator = ["-G", "Ninja"] if shutil.which("ninja") else []
        subprocess.run(["cmake", "-S", str(TREE), "-B", str(WORK), *generator,
                        *(f"-D{name}={value}" for name, value in options.items())], check=True)
        subprocess.run(["cmake", "--build", str(WORK), "--parallel", str(os.cpu_count() or 1)], check=True)
        shutil.rmtree(stage, ignore_errors=True)
        for component in ("runtime", "python"):
            subprocess.run(["cmake", "--install", str(WORK), "--prefix", str(stage), "--component", component, "--strip"],
                           check=True)
        target = Path(self.build_lib).resolve() if not self.inplace else HERE
        for file in sorted((stage / "orxfunctions").rglob("*.so*")):
            if is_wanted(file):
                goal = target / file.relative_to(stage)
                goal.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy2(file, goal)


def is_wanted(file: Path) -> bool:
    """A wheel holds no links: of a library and the links to it only the file by the name that others ask for."""
    text = subprocess.run(["readelf", "-d", str(file)], check=True, capture_output=True, text=True).stdout
    asked = re.search(r"\(SONAME\).*\[(.*)\]", text)
    return asked is None or asked.group(1) == file.name or not (file.parent / asked.group(1)).exists()


if sys.platform != "linux":
    raise SystemExit("orxfunctions: wheels are built on Linux")
WORK.mkdir(parents=True, exist_ok=True)
setup(
    version=version(),
    packages=find_packages(str(HERE), include=["orxfunctions", "orxfunctions.*"]),
    package_data={"orxfunctions": ["py.typed", "*.pyi"]},
    ext_modules=[Extension("orxfunctions._core", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
    # Nothing is written into the sources.
    options={"build": {"build_base": str(WORK / "python")}, "egg_info": {"egg_base": str(WORK)}},
    zip_safe=False,
)
