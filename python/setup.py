"""Builds the engine's module by CMake. Everything else stands in pyproject.toml."""

import os
import re
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = Path(__file__).resolve().parent.parent


def version() -> str:
    """The version of the whole project."""
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(\w+ VERSION ([0-9.]+)", text).group(1)


class CMakeBuild(build_ext):
    """One CMake build of the engine and its module, without any other part."""

    def build_extension(self, ext: Extension) -> None:
        out = Path(self.get_ext_fullpath(ext.name)).resolve().parent
        work = Path(self.build_temp).resolve()
        subprocess.run(
            [
                "cmake", "-S", str(ROOT), "-B", str(work), "-G", "Ninja",
                "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG",
                "-DQUOR_BUILD_PYTHON=ON", "-DQUOR_BUILD_HOST=OFF", "-DQUOR_BUILD_TESTS=OFF",
                f"-DPython_EXECUTABLE={sys.executable}",
            ],
            check=True,
        )
        subprocess.run(
            ["cmake", "--build", str(work), "--target", "quor_python",
             "--parallel", str(self.parallel or os.cpu_count() or 1)],
            check=True,
        )
        out.mkdir(parents=True, exist_ok=True)
        for module in (work / "python" / "quor").glob("_engine.*"):
            if module.suffix in (".so", ".pyd"):
                self.copy_file(str(module), str(out / module.name))


setup(
    version=version(),
    ext_modules=[Extension("quor._engine", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
)
