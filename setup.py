"""Builds the Python module pellago with the project's CMake build, for pip.

The version is the one set in CMakeLists.txt; the module and its stub pellago.pyi go into the
wheel. Run `pip install --no-build-isolation .` from the checkout.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).parent.resolve()


def cmake_version():
    cmake_lists = (ROOT / "CMakeLists.txt").read_text()
    return re.search(r"project\(pellago VERSION ([0-9.]+)", cmake_lists)[1]


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        build = pathlib.Path(self.build_temp).resolve() / "cmake"
        subprocess.run(
            [
                "cmake", "-S", str(ROOT), "-B", str(build),
                "-DCMAKE_BUILD_TYPE=Release",
                f"-DPython_EXECUTABLE={sys.executable}",
                "-DPELLAGO_TESTS=OFF", "-DPELLAGO_RUBY_MODULE=OFF", "-DPELLAGO_INSTALL=OFF",
            ],
            check=True,
        )
        jobs = str(os.cpu_count() or 1)
        subprocess.run(
            ["cmake", "--build", str(build), "--target", "pellago_python", "-j", jobs], check=True
        )
        module = pathlib.Path(self.get_ext_fullpath(ext.name))
        module.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(build / "python" / module.name, module)
        shutil.copyfile(ROOT / "src" / "python" / "pellago.pyi", module.parent / "pellago.pyi")


setup(
    version=cmake_version(),
    ext_modules=[Extension("pellago", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
)
