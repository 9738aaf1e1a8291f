"""Builds the engine's module by CMake. Everything else stands in pyproject.toml."""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext
from setuptools.command.sdist import sdist
from wheel.bdist_wheel import bdist_wheel

HERE = Path(__file__).resolve().parent
# A source package has what the module is built from in a folder of its own.
PACKED = HERE / "engine"
ROOT = PACKED if PACKED.is_dir() else HERE.parent
PARTS = [
    "CMakeLists.txt", "CMakePresets.json", "LICENCE", "cmake", "include", "src", "advice", "bars",
    "python/CMakeLists.txt", "python/src", "host/old_glibc_program.c",
    "tools/lib.sh", "tools/libraries.sh", "tools/sources.sh",
]


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
                "cmake", "--preset", "python", "-S", str(ROOT), "-B", str(work),
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


class SourcePackage(sdist):
    """A source package that is built without a network: it brings the engine and its libraries."""

    def make_release_tree(self, base_dir: str, files: list) -> None:
        super().make_release_tree(base_dir, files)
        engine = Path(base_dir).resolve() / "engine"
        for part in PARTS:
            (engine / part).parent.mkdir(parents=True, exist_ok=True)
            copy = shutil.copytree if (ROOT / part).is_dir() else shutil.copy2
            copy(ROOT / part, engine / part)
        self.bring_libraries(engine / "sources")

    def bring_libraries(self, into: Path) -> None:
        if ROOT == PACKED:
            shutil.copytree(ROOT / "sources", into)
        else:
            script = ROOT / "tools" / "libraries.sh"
            subprocess.run([str(script), "--bring", str(into)], check=True)


def oldest_glibc(module: Path) -> int:
    """The newest version 2.N of glibc that a module has symbols of: no older one can load it."""
    versions = re.findall(rb"GLIBC_2\.(\d+)", module.read_bytes())
    return max((int(version) for version in versions), default=0)


class PortableWheel(bdist_wheel):
    """A wheel that is named after the systems that can load its module."""

    def get_tag(self) -> tuple:
        python, abi, platform = super().get_tag()
        modules = list(Path(self.bdist_dir or ".").rglob("_engine.*.so"))
        machine = platform.partition("linux_")[2]
        if platform.startswith("linux_") and modules and machine in ("x86_64", "aarch64"):
            needed = max(28, *(oldest_glibc(module) for module in modules), 0)
            platform = f"manylinux_2_{needed}_{machine}"
        return python, abi, platform


setup(
    version=version(),
    ext_modules=[Extension("quor._engine", sources=[])],
    cmdclass={"build_ext": CMakeBuild, "bdist_wheel": PortableWheel, "sdist": SourcePackage},
)
